#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Issues/IIssueManager.h>
#include <OrloProjectManager/NetworkProject/Issues/IssueWeb.h>

#include <cpprest/json.h>
#include <gmock/gmock.h>

// Lists of issues, by dataset and by team.
namespace orlo::test {
namespace {

using testing::IsEmpty;

constexpr const char* issuesOfDataset = "/issue/detail/bydatasetids?page=1";
constexpr const char* issuesOfTeam = "/issue/detail/t-1/byteamid?page=1&skipCloudify=0";
constexpr const char* twoIssues =
    R"({"code":0,"data":[{"id":7,"teamId":"t-1","teamName":"结构组","userId":"u-1","userName":"王","title":"门太窄","description":"二层",)"
    R"("file":"f","camera":"c","markCoordinate":"m","creationTime":"1","updateTime":"2","datasetId":"d-1","elementId":"e","elementName":"门",)"
    R"("memo":"已解决","type":"碰撞检测","issueDatasets":[{"isCurrent":1,"datasetId":"d-1","datasetName":"模型","teamId":"x","version":3},)"
    R"({"datasetId":"d-2"}]},{"memo":"free text"}]})";

class IssueListWireTest : public WireTest
{
protected:
    IIssueManager& manager = *IIssueManager::Get();
    IIssueManager::Issues out{2};

    void expectTwoIssues() const
    {
        ASSERT_EQ(out.size(), 2u);
        EXPECT_EQ(out[0]->GetId(), 7);
        EXPECT_EQ(out[0]->GetTeamId() + L"|" + out[0]->GetTeamName() + L"|" + out[0]->GetUserId() + L"|" + out[0]->GetUserName(),
                  L"t-1|结构组|u-1|王");
        EXPECT_EQ(out[0]->GetTitle() + L"|" + out[0]->GetDescription() + L"|" + out[0]->GetFile() + L"|" + out[0]->GetCamera() + L"|" +
                      out[0]->GetMarkCoordinate(),
                  L"门太窄|二层|f|c|m");
        EXPECT_EQ(out[0]->GetCreationTime() + L"|" + out[0]->GetUpdateTime() + L"|" + out[0]->GetElementId() + L"|" +
                      out[0]->GetElementName(),
                  L"1|2|e|门");
        EXPECT_EQ(out[0]->GetStatus(), EORLOIssueStatus::Resolved);
        EXPECT_EQ(out[0]->GetType(), EORLOIssueType::CollisionDetection);
        ASSERT_EQ(out[0]->GetDatasets().size(), 2u);
        EXPECT_TRUE(out[0]->GetDatasets()[0].isCurrent);
        EXPECT_EQ(out[0]->GetDatasets()[0].datasetId, "d-1");
        EXPECT_EQ(out[0]->GetDatasets()[0].datasetName, L"模型");
        EXPECT_EQ(out[0]->GetDatasets()[0].version, 3);
        EXPECT_EQ(out[0]->GetDatasets()[1].version, -1);
        EXPECT_EQ(out[1]->GetStatus(), EORLOIssueStatus::Open) << "free text";
        EXPECT_EQ(out[1]->GetId(), -1);
    }
};

TEST_F(IssueListWireTest, showsTheIssuesOfADatasetInTheOrderOfTheAnswer)
{
    server.expect("POST", issuesOfDataset).body(R"(["d-1"])").times(2).reply(200, twoIssues);
    EXPECT_TRUE(manager.GetIssueListByDatasetId("d-1", out, error));
    expectTwoIssues();
    EXPECT_TRUE(manager.GetIssueListByDatasetId("d-1", out));
    expectTwoIssues();
    expectQuiet();
}

TEST_F(IssueListWireTest, showsTheIssuesOfATeamInTheOrderOfTheAnswer)
{
    server.expect("GET", issuesOfTeam).reply(200, twoIssues);
    EXPECT_TRUE(manager.GetIssueListByTeamId("t-1", out, error));
    expectTwoIssues();
    expectQuiet();
}

TEST_F(IssueListWireTest, areAskedForByAnIdThatOneOfTheListsOwnIssuesHolds)
{
    const std::string id = "a-dataset-with-an-id-that-is-too-long-for-a-text-without-memory-of-its-own";
    out = {IIssue::Create(L"", L"", L"", L"", {{true, id, L"", 1}}, EORLOIssueType::Comments)};
    server.expect("POST", issuesOfDataset).body("[\"" + id + "\"]").reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.GetIssueListByDatasetId(out[0]->GetDatasets()[0].datasetId, out, error));
    EXPECT_THAT(out, IsEmpty());

    out = {IIssue::Create(L"", L"", L"", L"", {{true, id, L"", 1}}, EORLOIssueType::Comments)};
    const std::string target = "/issue/detail/" + id + "/byteamid?page=1&skipCloudify=0";
    server.expect("GET", target).reply(503);
    server.expect("GET", target).reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.GetIssueListByTeamId(out[0]->GetDatasets()[0].datasetId, out, error));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(IssueListWireTest, theListOfADatasetTakesPagesUpToAHundred)
{
    web::json::value json;
    for (const int page : {-1, 101}) {
        error.Clear();
        EXPECT_FALSE(OrloWebService::GetIssuesListByDataSetId(error, json, "d-1", page)) << page;
        expectGenericError(error, badInputValue, L"GenericError", L"dsId is empty or page < 0 or page > 100");
    }
    error.Clear();
    EXPECT_FALSE(OrloWebService::GetIssuesListByDataSetId(error, json, "", 1));
    expectGenericError(error, badInputValue, L"GenericError", L"dsId is empty or page < 0 or page > 100");
    EXPECT_EQ(server.requestCount(), 0u);
    error.Clear();
    for (const char* page : {"0", "100"}) {
        server.expect("POST", std::string("/issue/detail/bydatasetids?page=") + page).body(R"(["d-1"])").reply(200, R"({"code":0})");
        EXPECT_TRUE(OrloWebService::GetIssuesListByDataSetId(error, json, "d-1", std::stoi(page)));
    }
    expectQuiet();
}

TEST_F(IssueListWireTest, theListOfATeamTakesEveryPageThatIsNotNegative)
{
    web::json::value json;
    EXPECT_FALSE(OrloWebService::GetIssuesListByTeamId(error, json, "t-1", -1, false));
    expectGenericError(error, badInputValue, L"GetIssuesListByTeamId", L"参数错误");
    EXPECT_EQ(server.requestCount(), 0u);
    error.Clear();
    server.expect("GET", "/issue/detail/t-1/byteamid?page=0&skipCloudify=0").reply(200, R"({"code":0})");
    EXPECT_TRUE(OrloWebService::GetIssuesListByTeamId(error, json, "t-1", 0, false));
    server.expect("GET", "/issue/detail/t-1/byteamid?page=101&skipCloudify=1").reply(200, R"({"code":0})");
    EXPECT_TRUE(OrloWebService::GetIssuesListByTeamId(error, json, "t-1", 101, true));
    expectQuiet();
}

TEST_F(IssueListWireTest, onlyTheFirstPageIsAskedFor)
{
    std::string body = R"({"code":0,"total":900,"data":[{"id":1})";
    for (int id = 2; id <= 300; ++id)
        body += ",{\"id\":" + std::to_string(id) + "}";
    body += "]}";
    server.expect("GET", issuesOfTeam).reply(200, body);
    EXPECT_TRUE(manager.GetIssueListByTeamId("t-1", out, error));
    ASSERT_EQ(out.size(), 300u);
    EXPECT_EQ(out[299]->GetId(), 300);
    EXPECT_EQ(server.requestCount(), 1u);
}

TEST_F(IssueListWireTest, lieOnTheProjectService)
{
    host.change([](OrloConfig& config) {
        for (auto& [key, url] : config.serviceUrls) {
            if (key != L"project")
                url = L"http://127.0.0.1:1";
        }
    });
    server.expect("POST", issuesOfDataset).body(R"(["d-1"])").reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.GetIssueListByDatasetId("d-1", out, error));
    server.expect("GET", issuesOfTeam).reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.GetIssueListByTeamId("t-1", out, error));
    server.expect("PUT", "/issue").anyBody().reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.PostIssue(IIssue::Create(L"t", L"u", L"title", L"words", {}, EORLOIssueType::Comments), error));
    server.expect("POST", "/issue/solve").anyBody().reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.SolveIssue(L"u", 1, L"", error));
    expectQuiet();
}

TEST_F(IssueListWireTest, anEarlierErrorIsLoggedAndWipedWhereTheRequestIsRetried)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("POST", issuesOfDataset).body(R"(["d-1"])").reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.GetIssueListByDatasetId("d-1", out, error));
    expectGenericError(error, exceptionValue, L"GenericError", L"earlier");
    server.expect("GET", issuesOfTeam).reply(200, R"({"code":0})");
    EXPECT_TRUE(manager.GetIssueListByTeamId("t-1", out, error));
    expectClear(error);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::IssueManager::GetIssueListByDatasetId 传入的ErrorCode，已有错误存在:earlier",
                                  L"E@orlo::IssueManager::GetIssueListByTeamId 传入的ErrorCode，已有错误存在:earlier"}));
}

TEST_F(IssueListWireTest, anAnswerWithoutAListIsAnEmptyOne)
{
    for (const char* body : {R"({"code":0})", R"({"code":0,"data":null})", R"({"code":0,"data":{}})"}) {
        out.resize(2);
        server.expect("POST", issuesOfDataset).body(R"(["d-1"])").reply(200, body);
        EXPECT_TRUE(manager.GetIssueListByDatasetId("d-1", out, error)) << body;
        EXPECT_THAT(out, IsEmpty());
    }
    expectQuiet();
}

TEST_F(IssueListWireTest, aCodeOtherThanZeroIsAFailureWithoutAWord)
{
    for (const char* body : {R"({"code":10000,"data":[{}]})", R"({"data":[{}]})", R"({"code":"0","data":[{}]})",
                             R"({"code":4294967296,"data":[{}]})", R"({"code":null,"data":[{}]})", "[]", "7", "null"}) {
        out.resize(2);
        server.expect("POST", issuesOfDataset).body(R"(["d-1"])").reply(200, body);
        EXPECT_FALSE(manager.GetIssueListByDatasetId("d-1", out, error)) << body;
        EXPECT_THAT(out, IsEmpty());
        out.resize(2);
        server.expect("GET", issuesOfTeam).reply(200, body);
        EXPECT_FALSE(manager.GetIssueListByTeamId("t-1", out, error)) << body;
        EXPECT_THAT(out, IsEmpty());
    }
    expectQuiet();
}

TEST_F(IssueListWireTest, withoutADatasetNothingIsAskedAndTheListStays)
{
    EXPECT_FALSE(manager.GetIssueListByDatasetId("", out, error));
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(server.requestCount(), 0u);
    expectQuiet();
}

TEST_F(IssueListWireTest, withoutATeamNothingIsAskedAndTheListIsEmptied)
{
    EXPECT_FALSE(manager.GetIssueListByTeamId("", out, error));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_EQ(server.requestCount(), 0u);
    expectGenericError(error, badInputValue, L"GetIssuesListByTeamId", L"参数错误");
}

TEST_F(IssueListWireTest, theListOfADatasetFailsAsADirectRequestDoes)
{
    RequestingOperation list{"POST", issuesOfDataset, R"(["d-1"])", L"OrloWebService::GetIssuesListByDataSetId - code:",
                             [&](ErrorCode& ec) { return manager.GetIssueListByDatasetId("d-1", out, ec); }};
    list.frame = L"orlo::IssueManager::GetIssueListByDatasetId";
    expectFailuresOf(list, server, log);
}

TEST_F(IssueListWireTest, theListOfATeamFailsAsEveryRequestingOperationDoesInTheWordsOfTheOther)
{
    expectFailuresOf({"GET", issuesOfTeam, "", L"OrloWebService::GetIssuesListByDataSetId - code:",
                      [&](ErrorCode& ec) { return manager.GetIssueListByTeamId("t-1", out, ec); }},
                     server, log);
}

} // namespace
} // namespace orlo::test
