#pragma once

#include "WireTest.h"

#include <functional>
#include <string>

namespace orlo::test {

/// An operation that sends one request, with what it does where that fails. The request goes through the retry loop, or out directly.
struct RequestingOperation
{
    std::string method;
    std::string target;
    std::string body;          ///< of the request; empty for none
    std::wstring failureWords; ///< what is logged in front of a status that is not 200; empty where that is not logged
    std::function<bool(ErrorCode&)> succeeds;
    std::function<void()> prepare = [] {}; ///< called before each call, to expect what is sent earlier
    std::wstring afterwards = {};          ///< what the operation logs at its end when it fails; empty for nothing
    bool readsJson = true;                 ///< whether a body that is no JSON is a failure
    std::string goodAnswer = {};           ///< a body that would be a success with status 200
    std::wstring frame = {};               ///< the name in the log's lines, of one that asks directly; empty for one that is retried
    bool tellsProgress = false;            ///< whether it logs information, which is left out here
    bool isTagged = true;                  ///< whether the tag stands before the failure words
    std::wstring operationName = {};       ///< under which it tells of an error on entry; empty where that isn't looked at
};

/// Lets the request fail in every way: error statuses with and without another attempt, other statuses that are not 200,
/// a broken transport, a body that is no JSON, and a status again for an operation with a name that is handed an error. Expects the log,
/// whole, the ErrorCode, and the number of requests.
void expectFailuresOf(const RequestingOperation& operation, ScriptedServer& server, LogCapture& log);

/// Lets the first three attempts fail, each in its own way, and the last one get the good answer. Expects the log, whole, and a clear
/// ErrorCode.
/// goOn: called before, to expect what is sent later.   told: what is logged at the end.
void expectSuccessAtLast(
    const RequestingOperation& operation, ScriptedServer& server, LogCapture& log, const std::function<void()>& goOn = [] {},
    const Lines& told = {});

} // namespace orlo::test
