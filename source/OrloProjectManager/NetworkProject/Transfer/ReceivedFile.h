#pragma once

#include <OrloNetwork/Body/Inflate.h>
#include <OrloNetwork/Body/TempFile.h>

#include <cpprest/http_msg.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orlo {

/// What comes of one answer to a single download: a small file in memory, of a larger one the first of it, and all of it in a file beside
/// its place. What is packed is unpacked as it comes.
class ReceivedFile
{
public:
    /// With an empty place everything stays in memory.
    explicit ReceivedFile(std::wstring place);

    /// The head of the answer, before its body.
    void begin(const web::http::http_response& response);
    /// Throws std::runtime_error for what can't be unpacked. A file that can't be written is no failure here: see moveToPlace.
    void receive(const unsigned char* bytes, std::size_t count);
    /// Throws as receive does, where the end is missing.
    void end();

    /// The file, or the first MiB of it.
    const std::vector<unsigned char>& head() const { return m_head; }
    /// Whether there is more than the head.
    bool isLarge() const { return m_isLarge; }
    /// Flushes the large file and gives it its name.   Returns: false if that, or the writing before, failed; nothing stays then.
    bool moveToPlace();
    /// Nothing of the file is on the disk any more, and what still comes is dropped. Never throws.   Threads: any.
    void discard() noexcept;

private:
    void keep(const unsigned char* bytes, std::size_t count);
    void write(const unsigned char* bytes, std::size_t count);

    const std::wstring m_place;
    std::wstring m_temporaryName;
    bool m_isWanted = false; ///< an error's words are kept, and no more than those
    bool m_isPacked = false;
    bool m_isLarge = false;
    std::vector<unsigned char> m_head;
    std::optional<http::Inflater> m_inflater; ///< from the first byte on
    std::optional<http::TempFile> m_file;     ///< none where it couldn't be written
    // A failed transfer ends while what came before is still being written.
    std::mutex m_mutex;
    bool m_isDiscarded = false;
};

} // namespace orlo
