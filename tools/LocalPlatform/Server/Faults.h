#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace orlo::platform {

enum class FaultKind {
    Delay,             ///< Waits `delayMilliseconds`, then goes on; another fault may strike the same call after it.
    Status,            ///< Answers `status` with `body`, or with an envelope that names the status when `body` is empty.
    ResetBeforeAnswer, ///< The connection is reset (RST) before the first byte of the answer.
    ResetAfterBytes,   ///< The connection is reset after `bytes` bytes of the answer, head included.
    CutBody,           ///< Content-Length tells the whole body, `bytes` bytes of it are sent, then the connection is closed.
    Stall,             ///< After `bytes` bytes of the body nothing moves for `delayMilliseconds`, then the call goes on.
    Garbage            ///< Status 200, Content-Type application/json, and a `body` that is no JSON.
};

struct Fault
{
    FaultKind kind = FaultKind::Status;
    std::string path{};        ///< Decoded, without the query: "/projects". Calls under "/_control/" are never struck.
    std::string method{};      ///< Empty: every method.
    bool prefix = false;       ///< True: `path` is the beginning of the paths that are struck.
    int calls = 1;             ///< How many calls are struck; below 0: all of them.
    int status = 503;          ///< Status
    std::string body{};        ///< Status, Garbage
    std::size_t bytes = 0;     ///< ResetAfterBytes, CutBody, Stall
    int delayMilliseconds = 0; ///< Delay, Stall
    bool carryOut = false;     ///< True: the call does its work before the fault eats the answer. Faults with `bytes` always do.
    /// True: `bytes` counts what was read of the request's body, which is never stored when the connection ends there. For the faults with
    /// `bytes`, the method "PUT" and paths below "/blobs/".
    bool ofRequest = false;
};

/// The kind as control calls write it. Throws `std::invalid_argument` for another text.
FaultKind faultKindOf(const std::string& text);

/// What befalls one call.
struct Strike
{
    std::chrono::milliseconds delay{0};
    std::optional<Fault> fault;
};

/// The faults that wait for their calls, and the count of those that struck. Any thread may call.
class FaultBook
{
public:
    /// Returns the fault's id. The oldest fault that matches and has calls left strikes. Throws `std::invalid_argument` for a fault that
    /// can't be carried out: a status outside 200 to 599, a negative delay, a path without a slash at its head.
    int add(const Fault& fault);
    Strike strike(const std::string& method, const std::string& path);
    /// How often the fault has struck; 0 for an unknown id. Counts are kept until `clear`.
    int count(int id) const;
    /// JSON array: id, kind, path, left and struck of every fault, and the status of those that answer with one.
    std::string list() const;
    void clear();

private:
    struct Entry
    {
        Fault fault;
        int left = 0;
        int struck = 0;
    };

    static bool matches(const Entry& entry, const std::string& method, const std::string& path);

    mutable std::mutex m_mutex;
    std::map<int, Entry> m_entries;
    int m_lastId = 0;
};

} // namespace orlo::platform
