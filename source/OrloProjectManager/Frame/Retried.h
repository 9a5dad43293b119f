#pragma once

#include <OrloNetwork/NetworkCommon.h>

#include <optional>
#include <utility>

namespace orlo {

/// Runs a web function through the retry loop.   Returns: what it returned, or the empty result where no attempt returned one.
template <class Result, class... Parameters, class... Arguments>
Result retried(Result (*webFunction)(ErrorCode&, Parameters...), ErrorCode& error, Arguments&&... arguments)
{
    return http::SendNormalRequestWithRetry(webFunction, Result(), error, std::forward<Arguments>(arguments)...);
}

/// The same for a web function that fills a record.   Returns: the record, none where the web function failed. All attempts fill the same
/// one: what a failed attempt has left in it is still there for the next.
///
///     const auto records = fetched(&OrloWebService::GetSampleProjects, error);
///     if (!records)
///         return false;
template <class Record, class... Parameters, class... Arguments>
std::optional<Record> fetched(bool (*webFunction)(ErrorCode&, Record&, Parameters...), ErrorCode& error, Arguments&&... arguments)
{
    std::optional<Record> record(std::in_place);
    if (!retried(webFunction, error, *record, std::forward<Arguments>(arguments)...))
        record.reset();
    return record;
}

} // namespace orlo
