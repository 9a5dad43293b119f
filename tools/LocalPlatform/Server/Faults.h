#pragma once

#include "../LocalPlatform.h"

#include <chrono>
#include <map>
#include <mutex>
#include <optional>

namespace orlo::platform {

/// The kind as control calls write it. Throws `std::invalid_argument` for another text.
FaultKind faultKindOf(const std::string& text);

/// What befalls one call.
struct Strike
{
    std::chrono::milliseconds delay{0};
    std::optional<Fault> fault;
};

/// The faults that wait for their calls, and the count of those that struck.
class FaultBook
{
public:
    /// Throws `std::invalid_argument` if the fault can't be carried out.
    int add(const Fault& fault);
    Strike strike(const std::string& method, const std::string& path);
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
