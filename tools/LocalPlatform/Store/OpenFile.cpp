#include "OpenFile.h"

#include "../Server/Answer.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace orlo::platform {

namespace {

constexpr std::size_t pieceSize = 1024 * 1024;

} // namespace

Descriptor::~Descriptor()
{
    if (m_number >= 0)
        ::close(m_number);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1))
{}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(m_number, other.m_number);
    return *this;
}

OpenFile::OpenFile(const std::filesystem::path& file) : m_descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC))
{
    struct stat facts = {};
    if (m_descriptor.number() < 0 && errno != ENOENT)
        throw std::system_error(errno, std::generic_category(), "can't read a stored file");
    if (m_descriptor.number() < 0 || ::fstat(m_descriptor.number(), &facts) != 0)
        throw Refusal(404, "no such file");
    m_size = facts.st_size;
}

void OpenFile::read(const std::function<void(std::string_view)>& use) const
{
    std::vector<char> buffer(pieceSize);
    off_t at = 0;
    while (at < m_size) {
        const ssize_t count = ::pread(m_descriptor.number(), buffer.data(), buffer.size(), at);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            throw std::runtime_error("can't read a stored file");
        use({buffer.data(), static_cast<std::size_t>(count)});
        at += count;
    }
}

} // namespace orlo::platform
