#pragma once

#include <OrloNetwork/Export.h>

#include <cstddef>
#include <fstream>
#include <string>

namespace orlo::http {

/// A file that is being written under a temporary name, and goes with this object unless it is kept or moved to its place.
/// One thread at a time.
class ORLO_NETWORK_API TempFile
{
public:
    /// Opens nothing yet.
    explicit TempFile(std::wstring path);
    ~TempFile();

    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    /// Throws std::runtime_error if the file can't be opened or written, as on a full disk.
    void write(const void* bytes, std::size_t count);
    /// Closes the file, which then exists also without content. Throws as write does.
    void close();
    /// It has another name now.
    void keep() { m_exists = false; }
    /// Moves the closed file over the target, in one step. On failure the file stays under its temporary name.
    bool moveTo(const std::wstring& target);

private:
    void open();

    std::wstring m_path;
    std::ofstream m_file;
    bool m_exists = false;
};

} // namespace orlo::http
