#include "Faults.h"

#include "../Store/Json.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace orlo::platform {

namespace {

constexpr std::pair<FaultKind, const char*> kinds[] = {
    {FaultKind::Delay, "delay"},
    {FaultKind::Status, "status"},
    {FaultKind::ResetBeforeAnswer, "resetBeforeAnswer"},
    {FaultKind::ResetAfterBytes, "resetAfterBytes"},
    {FaultKind::CutBody, "cutBody"},
    {FaultKind::Stall, "stall"},
    {FaultKind::Garbage, "garbage"},
};

const char* textOf(FaultKind kind)
{
    return std::find_if(std::begin(kinds), std::end(kinds), [kind](const auto& row) { return row.first == kind; })->second;
}

void validate(const Fault& fault)
{
    if (fault.kind == FaultKind::Status && (fault.status < 200 || fault.status > 599))
        throw std::invalid_argument("a fault's status must lie between 200 and 599");
    if (fault.delayMilliseconds < 0)
        throw std::invalid_argument("a fault's delay must not be negative");
    if (fault.path.empty() || fault.path.front() != '/')
        throw std::invalid_argument("a fault's path must begin with a slash");
}

bool countsBytes(const Fault& fault)
{
    return fault.kind == FaultKind::ResetAfterBytes || fault.kind == FaultKind::CutBody || fault.kind == FaultKind::Stall;
}

/// Other bodies are read before anything can strike.
void validateOfRequest(const Fault& fault)
{
    if (!countsBytes(fault))
        throw std::invalid_argument("only a fault that counts bytes can be one of the request");
    if (fault.method != "PUT" || fault.path.compare(0, 7, "/blobs/") != 0)
        throw std::invalid_argument("a fault of the request needs the method PUT and a path below /blobs/");
}

} // namespace

FaultKind faultKindOf(const std::string& text)
{
    const auto found = std::find_if(std::begin(kinds), std::end(kinds), [&](const auto& row) { return row.second == text; });
    if (found == std::end(kinds))
        throw std::invalid_argument("unknown kind of fault: " + text);
    return found->first;
}

int FaultBook::add(const Fault& fault)
{
    validate(fault);
    if (fault.ofRequest)
        validateOfRequest(fault);
    const std::lock_guard lock(m_mutex);
    m_entries[++m_lastId] = Entry{fault, fault.calls, 0};
    return m_lastId;
}

bool FaultBook::matches(const Entry& entry, const std::string& method, const std::string& path)
{
    const Fault& fault = entry.fault;
    if (entry.left == 0 || (!fault.method.empty() && fault.method != method))
        return false;
    return fault.prefix ? path.compare(0, fault.path.size(), fault.path) == 0 : path == fault.path;
}

Strike FaultBook::strike(const std::string& method, const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    Strike result;
    for (auto& [id, entry] : m_entries) {
        if (!matches(entry, method, path))
            continue;
        entry.left -= entry.left > 0 ? 1 : 0;
        ++entry.struck;
        if (entry.fault.kind != FaultKind::Delay) {
            result.fault = entry.fault;
            break;
        }
        result.delay += std::chrono::milliseconds(entry.fault.delayMilliseconds);
    }
    return result;
}

int FaultBook::count(int id) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(id);
    return found == m_entries.end() ? 0 : found->second.struck;
}

std::string FaultBook::list() const
{
    const std::lock_guard lock(m_mutex);
    std::string all;
    for (const auto& [id, entry] : m_entries) {
        json::Object object;
        object.number("id", id).text("kind", textOf(entry.fault.kind));
        if (entry.fault.kind == FaultKind::Status)
            object.number("status", entry.fault.status);
        object.text("path", entry.fault.path).number("left", entry.left).number("struck", entry.struck);
        all += (all.empty() ? "" : ",") + object.str();
    }
    return "[" + all + "]";
}

void FaultBook::clear()
{
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

} // namespace orlo::platform
