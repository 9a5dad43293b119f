#pragma once

#include "../transfers/Process.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace orlo::bench {

/// How a row of the table reaches the server.
struct Way
{
    bool tls = false;
    bool closes = false; ///< the server closes after each answer
};

/// What the server has seen since it was asked last.
struct Counts
{
    std::uint64_t connections = 0;
    std::uint64_t smallRequests = 0;
    std::uint64_t uploadSize = 0;
    std::uint64_t uploadSum = 0;
};

/// The server in a process of its own.
class Origin
{
public:
    explicit Origin(const std::filesystem::path& folder);

    int port(const Way& way) const { return m_ports[(way.tls ? 2 : 0) + (way.closes ? 1 : 0)]; }
    const std::string& caFile() const { return m_caFile; }

    /// Gives the counts and begins them anew.
    Counts takeCounts() const;
    /// Whether the server takes the checksums of uploads, which costs it time.
    void takeSums(bool on) const;

private:
    std::string ask(const std::string& path) const;

    PlatformProcess m_process;
    int m_ports[5];
    std::string m_caFile;
};

} // namespace orlo::bench
