#pragma once

#include "Stream.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace orlo::bench {

/// What a client asked for, with its body unless that goes to the store.
struct Request
{
    std::string method;
    std::string path;
    std::string body;
    std::string base; ///< of the addresses that are named in the answer, as the client sees this server
};

/// An answer: JSON, or a file.
struct Answer
{
    int status = 200;
    std::string json;
    const OpenFile* file = nullptr;
};

/// As much of the platform as a transfer and one small request need, with ready answers. Any thread.
class Platform
{
public:
    explicit Platform(std::string dataFolder);

    Answer answerTo(const Request& request);

    /// The body of an upload is read and forgotten; while the control asks for it, its checksum is taken.
    static bool takesBody(const Request& request) { return request.method == "PUT" && request.path == "/store"; }
    bool takeBody(Stream& stream, std::string_view begun, std::uint64_t size);

    void countConnection() { ++m_connections; }

    /// For the benchmark's own questions, apart from what is measured. Each gives and clears the numbers of connections and small
    /// requests, the size of the last upload and its checksum; /sums/on and /sums/off say whether that is taken.
    Answer answerToControl(const Request& request);

private:
    const OpenFile* open(const std::string& name);

    std::string m_folder;
    std::mutex m_mutex;
    std::map<std::string, OpenFile> m_files;
    std::atomic<std::uint64_t> m_connections{0};
    std::atomic<std::uint64_t> m_smallRequests{0};
    std::atomic<std::uint64_t> m_uploadSize{0};
    std::atomic<std::uint64_t> m_uploadSum{0};
    std::atomic<bool> m_sums{false};
};

} // namespace orlo::bench
