#include "StagedBlob.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace orlo::platform {

namespace {

[[noreturn]] void fail()
{
    throw std::system_error(errno, std::generic_category(), "can't write a file");
}

} // namespace

StagedBlob::StagedBlob(std::filesystem::path file)
    : m_file(std::move(file)), m_descriptor(::open(m_file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600))
{
    if (m_descriptor.number() < 0)
        fail();
}

StagedBlob::~StagedBlob()
{
    if (!m_file.empty())
        ::unlink(m_file.c_str());
}

void StagedBlob::append(std::string_view bytes)
{
    m_length += static_cast<std::int64_t>(bytes.size());
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor.number(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            fail();
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void StagedBlob::moveTo(const std::filesystem::path& target)
{
    std::filesystem::rename(m_file, target);
    m_file.clear();
}

} // namespace orlo::platform
