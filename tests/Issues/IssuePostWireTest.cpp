#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Issues/IIssueManager.h>

#include <gmock/gmock.h>

// A new issue, with the versions of its datasets looked up before.
namespace orlo::test {
namespace {

using testing::ElementsAre;

constexpr const char* plainIssue =
    R"({"teamId":"t-1","userId":"u-1","title":"门太窄","description":"二层","elementId":"","elementName":"","file":"","memo":"Open",)"
    R"("markCoordinate":"","camera":"","issueDatasets":[]})";
constexpr const char* versionThree = "/v2/datasets/d-1/version/3?onlySuccess=false&mvd=base";
constexpr const char* versionFour = "/v2/datasets/d-2/version/4?onlySuccess=false&mvd=base";

class IssuePostWireTest : public WireTest
{
protected:
    static std::shared_ptr<IIssue> issueOn(const std::vector<IssuedDataSet>& datasets)
    {
        return IIssue::Create(L"t-1", L"u-1", L"门太窄", L"二层", datasets, EORLOIssueType::CollisionDetection);
    }
    bool post(const std::shared_ptr<IIssue>& issue) { return IIssueManager::Get()->PostIssue(issue, error); }
};

TEST_F(IssuePostWireTest, isSentWithoutItsType)
{
    server.expect("PUT", "/issue").body(plainIssue).times(2).reply(200, R"({"code":0})");
    EXPECT_TRUE(post(issueOn({})));
    EXPECT_TRUE(IIssueManager::Get()->PostIssue(issueOn({})));
    expectQuiet();
}

TEST_F(IssuePostWireTest, isSentWithAllThatWasSet)
{
    const auto issue = issueOn({});
    issue->SetElementId(L"e");
    issue->SetElementName(L"门");
    issue->SetFile(L"f");
    issue->SetStatus(EORLOIssueStatus::Closed);
    issue->SetMarkCoordinate(L"m");
    issue->SetCamera(L"c");
    server.expect("PUT", "/issue")
        .body(R"({"teamId":"t-1","userId":"u-1","title":"门太窄","description":"二层","elementId":"e","elementName":"门","file":"f",)"
              R"("memo":"Closed","markCoordinate":"m","camera":"c","issueDatasets":[]})")
        .reply(200, R"({"code":0})");
    EXPECT_TRUE(post(issue));
}

TEST_F(IssuePostWireTest, namesTheVersionsOfItsDatasetsByTheirIds)
{
    server.expect("GET", versionThree).reply(200, R"({"code":10000,"data":{"id":33}})");
    server.expect("GET", versionFour).reply(200, R"({"code":10000,"data":{"id":44}})");
    server.expect("PUT", "/issue")
        .body(
            R"({"teamId":"t-1","userId":"u-1","title":"门太窄","description":"二层","elementId":"","elementName":"","file":"","memo":"Open",)"
            R"("markCoordinate":"","camera":"","issueDatasets":[{"isCurrent":true,"versionId":33},{"isCurrent":false,"versionId":44}]})")
        .reply(200, R"({"code":0})");
    EXPECT_TRUE(post(issueOn({{true, "d-1", L"x", 3}, {false, "d-2", L"y", 4}})));
    expectQuiet();
}

TEST_F(IssuePostWireTest, withAVersionThatIsNotFoundIsNotSent)
{
    server.expect("GET", versionThree).reply(200, R"({"code":10000,"data":{"id":33}})");
    server.expect("GET", versionFour).reply(404, "no");
    EXPECT_FALSE(post(issueOn({{true, "d-1", L"x", 3}, {false, "d-2", L"y", 4}})));
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 404);
    EXPECT_EQ(server.count("PUT", "/issue"), 0u);
}

TEST_F(IssuePostWireTest, onADatasetWithoutAnIdIsNotSent)
{
    EXPECT_FALSE(post(issueOn({{true, "", L"x", 3}})));
    expectHttpError(error, exceptionValue, L"Invalid argument", L"datasetId is empty", 0);
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(IssuePostWireTest, onADatasetWithoutAVersionNamesItsLatest)
{
    server.expect("GET", "/v2/datasets/d-1/version/latest?onlySuccess=true&mvd=base").reply(503);
    server.expect("GET", "/v2/datasets/d-1/version/latest?onlySuccess=true&mvd=base").reply(200, R"({"data":{"id":55,"version":9}})");
    server.expect("PUT", "/issue")
        .body(
            R"({"teamId":"t-1","userId":"u-1","title":"门太窄","description":"二层","elementId":"","elementName":"","file":"","memo":"Open",)"
            R"("markCoordinate":"","camera":"","issueDatasets":[{"isCurrent":true,"versionId":55}]})")
        .reply(200, R"({"code":0})");
    EXPECT_TRUE(post(issueOn({{true, "d-1", L"x", -1}})));
    expectClear(error);
}

TEST_F(IssuePostWireTest, isSentOnceAndAnEarlierErrorStaysWhereNoVersionIsLookedUp)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("PUT", "/issue").body(plainIssue).reply(200, R"({"code":0})");
    EXPECT_TRUE(post(issueOn({})));
    expectGenericError(error, exceptionValue, L"GenericError", L"earlier");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::IssueManager::PostIssue 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_F(IssuePostWireTest, withoutATeamAUserATitleOrADescriptionIsNotSent)
{
    const auto expectRefused = [&](const std::shared_ptr<IIssue>& issue) {
        error.Clear();
        EXPECT_FALSE(post(issue));
        expectGenericError(error, badInputValue, L"GenericError", L"PostIssue：参数输入有误!");
    };
    auto issue = issueOn({{true, "d-1", L"x", 3}});
    issue->SetTeamId(L"");
    expectRefused(issue);
    issue = issueOn({});
    issue->SetUserId(L"");
    expectRefused(issue);
    issue = issueOn({});
    issue->SetTitle(L"");
    expectRefused(issue);
    issue = issueOn({});
    issue->SetDescription(L"");
    expectRefused(issue);
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(IssuePostWireTest, thatIsNoneIsAnException)
{
    EXPECT_FALSE(post(nullptr));
    expectHttpError(error, exceptionValue, L"HttpError", L"there is no issue", 5555);
    EXPECT_FALSE(IIssueManager::Get()->PostIssue(nullptr));
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(IssuePostWireTest, anAnswerThatCannotBeReadIsASuccess)
{
    for (const char* body :
         {"<html>", "", "[]", "{}", R"({"code":"7"})", R"({"code":4294967301})", "7", "null", R"({"code":0,"msg":"x"})"}) {
        server.expect("PUT", "/issue").body(plainIssue).reply(200, body);
        EXPECT_TRUE(post(issueOn({}))) << body;
    }
    server.expect("PUT", "/issue").body(plainIssue).reply(200, "fine", "text/plain");
    EXPECT_TRUE(post(issueOn({})));
    expectQuiet();
}

TEST_F(IssuePostWireTest, anotherCodeIsAFailureWithoutAWord)
{
    server.expect("PUT", "/issue").body(plainIssue).reply(200, R"({"code":10000})");
    EXPECT_FALSE(post(issueOn({})));
    expectQuiet();
}

TEST_F(IssuePostWireTest, failsAsADirectRequestDoes)
{
    RequestingOperation sent{"PUT", "/issue", plainIssue, L"OrloWebService::PostIssue - code:",
                             [&](ErrorCode& ec) { return IIssueManager::Get()->PostIssue(issueOn({}), ec); }};
    sent.frame = L"orlo::IssueManager::PostIssue";
    sent.readsJson = false;
    expectFailuresOf(sent, server, log);
}

} // namespace
} // namespace orlo::test
