#include "FileBody.h"

#include <OrloNetwork/Body/SourceBuffer.h>

#include <algorithm>
#include <stdexcept>

namespace orlo {

namespace {

constexpr const char* changed = "the file was changed while it was being uploaded";

} // namespace

std::shared_ptr<const FileBody> FileBody::open(const std::wstring& path)
{
    const auto body = std::make_shared<FileBody>();
    return body->m_file.open(path) && body->m_file.getVersion(body->m_version) ? body : nullptr;
}

concurrency::streams::istream FileBody::stream() const
{
    return http::SourceBuffer::stream([self = shared_from_this(), place = 0ULL](std::uint8_t* room, std::size_t size) mutable {
        const std::size_t wanted = static_cast<std::size_t>(std::min<unsigned long long>(size, self->size() - place));
        std::size_t got = 0;
        if (wanted > 0 && !self->m_file.read(place, room, wanted, got))
            throw std::runtime_error("the file can't be read");
        if (wanted > 0 && got == 0)
            throw std::runtime_error(changed);
        place += got;
        return got;
    });
}

void FileBody::requireUnchanged() const
{
    utils::OpenFile::Version now;
    if (!m_file.getVersion(now) || now != m_version)
        throw std::runtime_error(changed);
}

} // namespace orlo
