#pragma once

#include <BaseCommon/Platform.h>

#include <cpprest/streams.h>

#include <memory>
#include <string>

namespace orlo {

/// A file that is sent from where it lies, piece by piece, as it was when this was made. Its name may go meanwhile.
class FileBody : public std::enable_shared_from_this<FileBody>
{
public:
    /// Null if there is no file that can be read.
    static std::shared_ptr<const FileBody> open(const std::wstring& path);

    unsigned long long size() const { return m_version.size; }

    /// The bytes, once more for each attempt.
    concurrency::streams::istream stream() const;
    /// Throws std::runtime_error, in words for the host, if the file was written to since.
    void requireUnchanged() const;

private:
    utils::OpenFile m_file;
    utils::OpenFile::Version m_version;
};

} // namespace orlo
