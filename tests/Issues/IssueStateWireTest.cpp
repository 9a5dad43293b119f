#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Issues/IIssueManager.h>

#include <gtest/gtest.h>

#include <ostream>

// The five changes of an issue's state, which are alike but for their paths.
namespace orlo::test {
namespace {

constexpr const char* changeBody = R"({"userId":"u-1","issueId":7,"memo":"换门"})";

struct StateChange
{
    std::string path;
    std::wstring name;
    bool (IIssueManager::*change)(const std::wstring&, int, const std::wstring&, ErrorCode&);
};

void PrintTo(const StateChange& change, std::ostream* out)
{
    *out << change.path;
}

class IssueStateWireTest : public WireTest, public testing::WithParamInterface<StateChange>
{
protected:
    bool change(ErrorCode& ec) { return (IIssueManager::Get()->*GetParam().change)(L"u-1", 7, L"换门", ec); }
    Expectation& expectChange() { return server.expect("POST", GetParam().path).body(changeBody); }
};

TEST_P(IssueStateWireTest, isSentAndASuccessWithTheCodeZero)
{
    expectChange().reply(200, R"({"code":0,"msg":"x"})");
    EXPECT_TRUE(change(error));
    expectQuiet();
}

TEST_P(IssueStateWireTest, withAnotherCodeIsRefusedInThePlatformsWordsUnderOneName)
{
    expectChange().reply(200, R"({"code":5,"msg":"已经关闭"})");
    EXPECT_FALSE(change(error));
    expectGenericError(error, badInputValue, L"SolveIssue", L"已经关闭");
    error.Clear();
    expectChange().reply(200, R"({"code":10000})");
    EXPECT_FALSE(change(error));
    expectGenericError(error, badInputValue, L"SolveIssue", L"");
    error.Clear();
    expectChange().reply(200, R"({"code":-1,"msg":7})");
    EXPECT_FALSE(change(error));
    expectGenericError(error, badInputValue, L"SolveIssue", L"");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_P(IssueStateWireTest, logsAnEarlierErrorUnderItsNameAndWipesIt)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    expectChange().reply(200, R"({"code":0})");
    EXPECT_TRUE(change(error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::IssueManager::" + GetParam().name + L" 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_P(IssueStateWireTest, withoutACodeIsAFailureWithoutAWord)
{
    for (const char* body : {"{}", R"({"code":"0"})", "[]", R"({"code":0.5})", R"({"code":4294967296})", R"({"code":null})", "null"}) {
        expectChange().reply(200, body);
        EXPECT_FALSE(change(error)) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_P(IssueStateWireTest, takesEverything)
{
    server.expect("POST", GetParam().path).body(R"({"userId":"","issueId":-1,"memo":""})").reply(200, R"({"code":0})");
    EXPECT_TRUE((IIssueManager::Get()->*GetParam().change)(L"", -1, L"", error));
}

TEST_P(IssueStateWireTest, failsAsEveryRequestingOperationDoesInWordsThatNameNoIssue)
{
    expectFailuresOf(
        {"POST", GetParam().path, changeBody, L"OrloWebService::CreateMessage - code:", [&](ErrorCode& ec) { return change(ec); }}, server,
        log);
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, IssueStateWireTest,
                         testing::Values(StateChange{"/issue/solve", L"SolveIssue", &IIssueManager::SolveIssue},
                                         StateChange{"/issue/close", L"CloseIssue", &IIssueManager::CloseIssue},
                                         StateChange{"/issue/submit", L"SubmitIssue", &IIssueManager::SubmitIssue},
                                         StateChange{"/issue/reopen", L"ReopenIssue", &IIssueManager::ReopenIssue},
                                         StateChange{"/issue/deal", L"DealIssue", &IIssueManager::DealIssue}),
                         [](const auto& tested) { return tested.param.path.substr(7); });

} // namespace
} // namespace orlo::test
