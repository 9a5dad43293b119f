#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/NetworkProject/Teams/TeamWeb.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>
#include <OrloProjectManager/Teams/ICollaborationTeamManager.h>

#include <gmock/gmock.h>

// Teams made, found, and changed in their members.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* newTeamBody = R"({"name":"结构组","projectId":"p-1"})";
constexpr const char* folderBody = R"({"linkedFolderId":"f-1"})";
constexpr const char* memberTarget = "/teams/t-1/users/u-1";
constexpr const char* myTeamsTarget = "/users/account-1/projects/p-1/teams";

class TeamManagerWireTest : public WireTest
{
protected:
    ICollaborationTeamManager& manager = *ICollaborationTeamManager::Get();

    std::shared_ptr<ICollaborationTeam> create() { return manager.CreateTeam(L"结构组", L"p-1", error); }

    static std::vector<std::wstring> idsOf(const std::vector<std::shared_ptr<ICollaborationTeam>>& teams)
    {
        std::vector<std::wstring> ids;
        for (const auto& team : teams)
            ids.push_back(team->GetTeamId());
        return ids;
    }
};

TEST_F(TeamManagerWireTest, aTeamIsMadeAndKnownByItsId)
{
    server.expect("POST", "/v2/teams").body(newTeamBody).reply(200, R"({"code":10000,"data":{"id":"t-1"}})");
    EXPECT_EQ(create()->GetTeamId(), L"t-1");
    server.expect("POST", "/v2/teams").body(newTeamBody).reply(200, R"({"code":7,"data":{"id":"t-2"}})");
    EXPECT_EQ(manager.CreateTeam(L"结构组", L"p-1")->GetTeamId(), L"t-2") << "whatever the code";
    server.expect("POST", "/v2/teams").body(newTeamBody).reply(200, R"({"data":{"id":"t-3"}})");
    EXPECT_EQ(HttpClient::createTeam(L"结构组", L"p-1"), L"t-3");
    expectQuiet();
}

TEST_F(TeamManagerWireTest, anAnswerWithoutAnIdMakesATeamWithoutOne)
{
    for (const char* body : {R"({"code":10000})", R"({"data":{"id":7}})", R"({"data":["t-1"]})", R"({"data":null})", "[]"}) {
        server.expect("POST", "/v2/teams").body(newTeamBody).reply(200, body);
        const auto team = create();
        ASSERT_NE(team, nullptr) << body;
        EXPECT_EQ(team->GetTeamId(), L"") << body;
    }
    expectQuiet();
}

TEST_F(TeamManagerWireTest, withoutANameOrAProjectNothingIsSentAndTheTeamHasNoId)
{
    const auto nameless = manager.CreateTeam(L"", L"p-1", error);
    ASSERT_NE(nameless, nullptr);
    EXPECT_EQ(nameless->GetTeamId(), L"");
    expectGenericError(error, badInputValue, L"GenericError", L"name or projectId is empty.");
    error.Clear();
    EXPECT_EQ(manager.CreateTeam(L"n", L"", error)->GetTeamId(), L"");
    expectGenericError(error, badInputValue, L"GenericError", L"name or projectId is empty.");
    EXPECT_EQ(HttpClient::createTeam(L"", L"p-1"), L"");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TeamManagerWireTest, makingFailsAsEveryRequestingOperationDoes)
{
    expectFailuresOf({"POST", "/v2/teams", newTeamBody, L"OrloWebService::CreateTeam - code:",
                      [&](ErrorCode& ec) {
                          const auto team = manager.CreateTeam(L"结构组", L"p-1", ec);
                          EXPECT_NE(team, nullptr);
                          return team && !team->GetTeamId().empty();
                      }},
                     server, log);
}

TEST_F(TeamManagerWireTest, aTeamIsMadeOfAnyIdWithoutARequest)
{
    EXPECT_EQ(manager.GetTeam(L"任意")->GetTeamId(), L"任意");
    EXPECT_EQ(manager.GetTeam(L"")->GetTeamId(), L"");
    EXPECT_EQ(server.requestCount(), 0u);
    expectQuiet();
}

TEST_F(TeamManagerWireTest, aTeamIsFoundByItsFolder)
{
    server.expect("POST", "/teams").body(folderBody).reply(200, R"({"code":7,"data":[{"name":"x"},{"id":"t-2"},{"id":"t-3"}]})");
    EXPECT_EQ(manager.GetTeamByFolder(L"f-1", error)->GetTeamId(), L"t-2") << "the first with an id, whatever the code";
    server.expect("POST", "/teams").body(folderBody).reply(200, R"({"data":[{"id":null},{"id":7},{"id":""}]})");
    EXPECT_EQ(manager.GetTeamByFolder(L"f-1")->GetTeamId(), L"");
    expectQuiet();
}

TEST_F(TeamManagerWireTest, aFolderWithoutATeamGivesOneWithoutAnId)
{
    for (const char* body : {R"({"code":10000,"data":[]})", R"({"data":{"id":"t-1"}})", R"({"code":10000})", "[]"}) {
        server.expect("POST", "/teams").body(folderBody).reply(200, body);
        const auto team = manager.GetTeamByFolder(L"f-1", error);
        ASSERT_NE(team, nullptr);
        EXPECT_EQ(team->GetTeamId(), L"") << body;
    }
    expectQuiet();
}

TEST_F(TeamManagerWireTest, theSearchByFolderFailsAsEveryRequestingOperationDoesWithoutTheTag)
{
    RequestingOperation search{"POST", "/teams", folderBody, L"OrloWebService::getTeamIdByFolderId - code:",
                               [&](ErrorCode& ec) { return !HttpClient::getTeamIdByFolderId(L"f-1", ec).empty(); }};
    search.afterwards = L"E [ORLOSDK]HttpClient::getTeamIdByFolderId OrloWebService::getTeamIdByFolderId error";
    search.isTagged = false;
    expectFailuresOf(search, server, log);
}

TEST_F(TeamManagerWireTest, aTeamIsFoundByItsDataset)
{
    server.expect("GET", "/v2/dataSets/d-1").times(2).reply(200, R"({"code":10000,"data":{"id":"d-1","teamId":"t-1"}})");
    EXPECT_EQ(manager.GetTeamByDataset("d-1", error)->GetTeamId(), L"t-1");
    EXPECT_EQ(manager.GetTeamByDataset(L"d-1")->GetTeamId(), L"t-1");
    expectQuiet();
}

TEST_F(TeamManagerWireTest, anEarlierErrorDoesNotStopTheSearchByDataset)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", "/v2/dataSets/d-1").reply(200, R"({"code":10000,"data":{"id":"d-1","teamId":"t-1"}})");
    EXPECT_EQ(manager.GetTeamByDataset("d-1", error)->GetTeamId(), L"t-1");
    expectGenericError(error, exceptionValue, L"GenericError", L"earlier");
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::ProjectManager::GetDatasetInfo 传入的ErrorCode，已有错误存在:earlier"))
        << "the request's own frame tells it, and nobody else";
}

TEST_F(TeamManagerWireTest, aDatasetThatIsNotFoundGivesATeamWithoutAnId)
{
    server.expect("GET", "/v2/dataSets/d-1").reply(404, "no");
    const auto team = manager.GetTeamByDataset("d-1", error);
    ASSERT_NE(team, nullptr);
    EXPECT_EQ(team->GetTeamId(), L"");
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 404);
}

TEST_F(TeamManagerWireTest, theSearchByDatasetFailsAsADirectRequestDoesAndGivesATeamAllTheSame)
{
    RequestingOperation search{"GET", "/v2/dataSets/d-1", "", L"OrloWebService::GetDatasetInfo - code:", [&](ErrorCode& ec) {
                                   const auto team = manager.GetTeamByDataset("d-1", ec);
                                   EXPECT_NE(team, nullptr);
                                   return team && !team->GetTeamId().empty();
                               }};
    search.frame = L"orlo::ProjectManager::GetDatasetInfo";
    expectFailuresOf(search, server, log);
}

TEST_F(TeamManagerWireTest, anEarlierErrorIsLoggedAndWipedWhereTheRequestIsRetried)
{
    const auto fail = [&] {
        log.clear();
        error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    };
    fail();
    server.expect("POST", "/v2/teams").body(newTeamBody).reply(200, "{}");
    create();
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationTeamManager::CreateTeam 传入的ErrorCode，已有错误存在:earlier"));
    fail();
    server.expect("POST", "/teams").body(folderBody).reply(200, "{}");
    manager.GetTeamByFolder(L"f-1", error);
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationTeamManager::GetTeamByFolder 传入的ErrorCode，已有错误存在:earlier",
                                         L"E@orlo::HttpClient::getTeamIdByFolderId 传入的ErrorCode，已有错误存在:earlier"));
    fail();
    server.expect("GET", myTeamsTarget).reply(200, R"({"code":10001})");
    manager.GetMyTeamsByProject(L"p-1", error);
    expectGenericError(error, exceptionValue, L"GenericError", L"earlier");
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationTeamManager::GetMyTeamsByProject 传入的ErrorCode，已有错误存在:earlier"));
}

TEST_F(TeamManagerWireTest, lieOnTheProjectService)
{
    host.change([](OrloConfig& config) {
        for (auto& [key, url] : config.serviceUrls) {
            if (key != L"project")
                url = L"http://127.0.0.1:1";
        }
    });
    server.expect("POST", "/v2/teams").body(newTeamBody).reply(200, "{}");
    create();
    server.expect("POST", "/teams").body(folderBody).reply(200, "{}");
    manager.GetTeamByFolder(L"f-1", error);
    server.expect("GET", myTeamsTarget).reply(200, "{}");
    manager.GetMyTeamsByProject(L"p-1", error);
    server.expect("POST", memberTarget).reply(200, R"({"code":10000})");
    EXPECT_TRUE(HttpClient::addUserToTeam(L"t-1", L"u-1"));
    server.expect("DELETE", memberTarget).reply(200, R"({"code":10000})");
    EXPECT_TRUE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1"));
    server.expect("GET", "/projects/p-1/teams").reply(200, "{}");
    std::vector<CollaborationTeamInfo> teams;
    EXPECT_TRUE(HttpClient::getTeamInfosInProject(L"p-1", teams));
    expectQuiet();
}

TEST_F(TeamManagerWireTest, myTeamsAreListedInTheOrderOfTheAnswer)
{
    server.expect("GET", myTeamsTarget).times(2).reply(200, R"({"code":10000,"data":[{"id":"t-2"},7,{"id":8},{"name":"x"},{"id":"t-1"}]})");
    EXPECT_THAT(idsOf(manager.GetMyTeamsByProject(L"p-1", error)), ElementsAre(L"t-2", L"t-1"));
    EXPECT_THAT(idsOf(manager.GetMyTeamsByProject(L"p-1")), ElementsAre(L"t-2", L"t-1"));
    expectQuiet();
}

TEST_F(TeamManagerWireTest, anOddAnswerAboutMyTeamsIsAnEmptyListAndNoError)
{
    for (const char* body : {R"({"code":10001,"data":[{"id":"t-1"}]})", R"({"data":[{"id":"t-1"}]})", R"({"code":10000,"data":{}})",
                             R"({"code":10000})", "[]", "7"}) {
        server.expect("GET", myTeamsTarget).reply(200, body);
        EXPECT_THAT(manager.GetMyTeamsByProject(L"p-1", error), IsEmpty()) << body;
    }
    expectQuiet();
}

TEST_F(TeamManagerWireTest, withoutAUserMyTeamsAreAskedForWithAnEmptyAccount)
{
    UserSession::SignOut();
    server.expect("GET", "/users//projects/p-1/teams").reply(200, R"({"code":10000,"data":[]})");
    EXPECT_THAT(manager.GetMyTeamsByProject(L"p-1", error), IsEmpty());
}

TEST_F(TeamManagerWireTest, myTeamsFailAsADirectRequestDoes)
{
    RequestingOperation mine{"GET", myTeamsTarget, "", L"CollaborationTeamManager::GetMyTeamsByProject - code:",
                             [&](ErrorCode& ec) { return !manager.GetMyTeamsByProject(L"p-1", ec).empty(); }};
    mine.frame = L"orlo::CollaborationTeamManager::GetMyTeamsByProject";
    expectFailuresOf(mine, server, log);
}

TEST_F(TeamManagerWireTest, theTeamsOfAProjectAreListedWithoutAnObject)
{
    std::vector<CollaborationTeamInfo> teams(3);
    server.expect("GET", "/projects/p-1/teams").reply(200, R"({"code":10000,"data":[{"id":"t-1","status":"Unheard","name":7}]})");
    EXPECT_TRUE(HttpClient::getTeamInfosInProject(L"p-1", teams));
    ASSERT_EQ(teams.size(), 1u);
    EXPECT_EQ(teams[0].id, L"t-1");
    EXPECT_EQ(teams[0].name, L"");
    EXPECT_EQ(teams[0].status, CollaborationTeamStatus::Working) << "a text that nobody knows";
    server.expect("GET", "/projects/p-1/teams").reply(404);
    EXPECT_FALSE(HttpClient::getTeamInfosInProject(L"p-1", teams));
}

TEST_F(TeamManagerWireTest, theTeamsAreAskedForByAnIdThatOneOfTheListsOwnTeamsHolds)
{
    std::vector<CollaborationTeamInfo> teams(1);
    teams[0].projectId = L"a-project-with-an-id-that-is-too-long-for-a-text-without-memory-of-its-own";
    const char* const ofProject = "/projects/a-project-with-an-id-that-is-too-long-for-a-text-without-memory-of-its-own/teams";
    server.expect("GET", ofProject).reply(503);
    server.expect("GET", ofProject).reply(200, R"({"code":10000,"data":[{"id":"t-1"},{"id":"t-2"}]})");
    EXPECT_TRUE(HttpClient::getTeamInfosInProject(teams[0].projectId, teams));
    EXPECT_EQ(teams.size(), 2u);
}

TEST_F(TeamManagerWireTest, aMemberIsAddedAndTakenAway)
{
    server.expect("POST", memberTarget).reply(200, R"({"code":10000})");
    EXPECT_TRUE(HttpClient::addUserToTeam(L"t-1", L"u-1"));
    server.expect("DELETE", memberTarget).reply(200, R"({"code":10000})");
    EXPECT_TRUE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1"));
    expectQuiet();
}

TEST_F(TeamManagerWireTest, anAnswerWithoutTheMarkIsAFailureWithTheStatus200)
{
    for (const char* body : {R"({"code":10001})", R"({"code":"10000"})", "{}", "[]"}) {
        log.clear();
        server.expect("POST", memberTarget).reply(200, body);
        EXPECT_FALSE(HttpClient::addUserToTeam(L"t-1", L"u-1")) << body;
        server.expect("DELETE", memberTarget).reply(200, body);
        EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1")) << body;
        EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]OrloWebService::AddUserToTeam - code:200",
                                             L"E [ORLOSDK]OrloWebService::DeleteUserFromTeam - code:200"));
    }
}

TEST_F(TeamManagerWireTest, withoutATeamOrAUserNoMemberIsSent)
{
    EXPECT_FALSE(HttpClient::addUserToTeam(L"", L"u-1"));
    EXPECT_FALSE(HttpClient::addUserToTeam(L"t-1", L""));
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"", L"u-1"));
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"t-1", L""));
    EXPECT_FALSE(OrloWebService::DeleteUserFromTeam(error, L"", L"u-1"));
    expectGenericError(error, badInputValue, L"GenericError", L"DeleteUserFromTeam::参数输入有误");
    error.Clear();
    EXPECT_FALSE(OrloWebService::DeleteUserFromTeam(error, L"t-1", L""));
    expectGenericError(error, badInputValue, L"GenericError", L"DeleteUserFromTeam::参数输入有误");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TeamManagerWireTest, addingIsRepeatedAndTakingAwayIsNot)
{
    server.expect("POST", memberTarget).times(4).reply(503);
    EXPECT_FALSE(HttpClient::addUserToTeam(L"t-1", L"u-1"));
    server.expect("DELETE", memberTarget).reply(503);
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1"));
    EXPECT_EQ(server.count("POST", memberTarget), 4u);
    EXPECT_EQ(server.count("DELETE", memberTarget), 1u);
}

TEST_F(TeamManagerWireTest, takingAMemberAwayFailsAsADirectRequestDoes)
{
    server.expect("DELETE", memberTarget).reset();
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1"));
    EXPECT_THAT(log.lines(), IsEmpty());
    server.expect("DELETE", memberTarget).reply(201, R"({"code":10000})");
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1"));
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]OrloWebService::DeleteUserFromTeam - code:201"));
    log.clear();
    server.expect("DELETE", memberTarget).reply(200, "<html>");
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(L"t-1", L"u-1"));
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(
        log.lines()[0].rfind(L"E@orlo::HttpClient::deleteUserFromTeam [END_API_IMPLEMENTATION][A generic exception caught] message[", 0),
        0u);
}

} // namespace
} // namespace orlo::test
