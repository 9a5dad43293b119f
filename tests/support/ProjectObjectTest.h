#pragma once

#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <functional>
#include <memory>

namespace orlo::test {

/// The project "p-1", as a host holds it, on a scripted platform.
class ProjectObjectTest : public WireTest
{
protected:
    static std::shared_ptr<ICollaborationProject> projectOf(const std::wstring& id);

    std::shared_ptr<ICollaborationProject> project = projectOf(L"p-1");
};

/// An operation that sends one request through the retry loop and reads the answer.
struct RetriedOperation
{
    std::string method;
    std::string target;
    std::string body;          ///< of the request; empty for none
    std::wstring failureWords; ///< what is logged in front of a status that is not 200; empty where that is not logged
    std::function<bool(ErrorCode&)> succeeds;
    std::function<void()> prepare = [] {}; ///< called before each call, to expect what is sent earlier
    std::wstring afterwards = {};          ///< what the operation logs at its end when it fails; empty for nothing
    bool readsJson = true;                 ///< whether a body that is no JSON is a failure
};

/// Lets the request fail in every way: error statuses with and without another attempt, other statuses that are not 200,
/// a broken transport, a body that is no JSON. Expects the log, whole, the ErrorCode, and the number of requests.
void expectFailuresOf(const RetriedOperation& operation, ScriptedServer& server, LogCapture& log);

} // namespace orlo::test
