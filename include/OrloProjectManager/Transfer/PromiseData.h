#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace orlo {

/// The outcome of a transfer.
struct PromiseData
{
    PromiseData() = default;
    PromiseData(bool wasSuccessful, std::int32_t lastStatus, std::wstring text)
        : success(wasSuccessful), status(lastStatus), message(std::move(text))
    {}

    /// True only when the whole chain of requests finished well.
    bool success = false;
    /// The HTTP status of the step that decided, 200 on success; 400 for a refused input, 5555 for a local failure.
    std::int32_t status = -1;
    /// The result on success; the body of the failing step or the failure in words otherwise.
    std::wstring message;

    // Filled by no operation of this library.
    std::map<std::wstring, std::int64_t> counters;
    std::map<std::wstring, std::int64_t> sizes;
    std::string note;
};

} // namespace orlo
