#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Teams/ICollaborationSharedRecord.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>
#include <OrloProjectManager/Teams/ICollaborationTeamManager.h>

#include <gmock/gmock.h>

// What a team tells of itself, its datasets, and what others share with it.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* sharedDatasets = "/v2/teams/t-1/permissionResource?type=TrustBy";
constexpr const char* sharedFolders = "/teams/t-1/permissionResource?type=TrustBy";
constexpr const char* oneDataset = R"({"code":10000,"data":[{"id":"d-1","name":"模型","type":"workunit","teamId":"t-1"}]})";

const std::wstring listingFailed = L"E [ORLOSDK]CollaborationTeam::GetTeamDatasetInfos - code:200";

class TeamObjectWireTest : public WireTest
{
protected:
    std::shared_ptr<ICollaborationTeam> team = ICollaborationTeamManager::Get()->GetTeam(L"t-1");
    std::shared_ptr<ICollaborationTeam> nameless = ICollaborationTeamManager::Get()->GetTeam(L"");
    std::vector<DatasetInfo> out = std::vector<DatasetInfo>(2);

    /// A direct request, with its failures.
    void expectDirectFailures(const char* method, const char* target, const char* body, const wchar_t* words, const wchar_t* frame,
                              const std::function<bool(ErrorCode&)>& succeeds)
    {
        RequestingOperation operation{method, target, body, words, succeeds};
        operation.frame = frame;
        expectFailuresOf(operation, server, log);
    }
};

TEST_F(TeamObjectWireTest, tellsItsRecord)
{
    server.expect("GET", "/teams/t-1").times(2).reply(200, R"({"code":10000,"data":{"id":"t-1","name":"结构组","status":"Paused"}})");
    const CollaborationTeamInfo info = team->GetTeamInfo(error);
    EXPECT_EQ(info.id, L"t-1");
    EXPECT_EQ(info.name, L"结构组");
    EXPECT_EQ(info.status, CollaborationTeamStatus::Paused);
    EXPECT_EQ(team->GetTeamInfo().name, L"结构组");
    expectQuiet();
}

TEST_F(TeamObjectWireTest, aRecordThatIsNoSuccessIsEmpty)
{
    server.expect("GET", "/teams/t-1").reply(200, R"({"code":10001,"data":{"id":"t-1"}})");
    EXPECT_EQ(team->GetTeamInfo(error).id, L"");
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]CollaborationTeam::GetTeamInfo - code:200"));
    expectClear(error);
    server.expect("GET", "/teams/").reply(404);
    EXPECT_EQ(nameless->GetTeamInfo(error).id, L"") << "an empty id is asked for all the same";
}

TEST_F(TeamObjectWireTest, theRecordFailsAsADirectRequestDoes)
{
    expectDirectFailures("GET", "/teams/t-1", "", L"CollaborationTeam::GetTeamInfo - code:", L"orlo::CollaborationTeam::GetTeamInfo",
                         [&](ErrorCode& ec) { return !team->GetTeamInfo(ec).id.empty(); });
}

TEST_F(TeamObjectWireTest, listsItsDatasetsByStatusAndAnyWithoutOne)
{
    server.expect("GET", "/teams/t-1/dataSets/byStatus?status=draft").reply(200, oneDataset);
    const std::vector<DatasetInfo> drafts = team->GetTeamDatasetInfos(DatasetStatus::Draft, error);
    ASSERT_EQ(drafts.size(), 1u);
    EXPECT_EQ(drafts[0].id, "d-1");
    EXPECT_EQ(drafts[0].name, L"模型");
    EXPECT_EQ(drafts[0].type, DatasetKind::Standard);
    server.expect("GET", "/teams/t-1/dataSets/byStatus?status=committed").reply(200, oneDataset);
    EXPECT_EQ(team->GetTeamDatasetInfos(DatasetStatus::Committed).size(), 1u);
    server.expect("GET", "/teams/t-1/dataSets/byStatus").reply(200, oneDataset);
    EXPECT_EQ(team->GetTeamDatasetInfos(DatasetStatus::Any, error).size(), 1u);
    server.expect("GET", "/teams/t-1/dataSets/byStatus?status=").reply(200, oneDataset);
    EXPECT_EQ(team->GetTeamDatasetInfos(static_cast<DatasetStatus>(9), error).size(), 1u);
    expectQuiet();
}

TEST_F(TeamObjectWireTest, aListOfDatasetsThatIsNoneIsEmpty)
{
    server.expect("GET", "/teams/t-1/dataSets/byStatus").reply(200, R"({"code":10000,"data":{"id":"d-1"}})");
    EXPECT_THAT(team->GetTeamDatasetInfos(DatasetStatus::Any, error), IsEmpty());
    expectQuiet();
    server.expect("GET", "/teams/t-1/dataSets/byStatus").reply(200, R"({"code":1,"data":[{"id":"d-1"}]})");
    EXPECT_THAT(team->GetTeamDatasetInfos(DatasetStatus::Any, error), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(listingFailed));
}

TEST_F(TeamObjectWireTest, theListOfDatasetsFailsAsADirectRequestDoes)
{
    expectDirectFailures("GET", "/teams/t-1/dataSets/byStatus", "", L"CollaborationTeam::GetTeamDatasetInfos - code:",
                         L"orlo::CollaborationTeam::GetTeamDatasetInfos",
                         [&](ErrorCode& ec) { return !team->GetTeamDatasetInfos(DatasetStatus::Any, ec).empty(); });
}

TEST_F(TeamObjectWireTest, listsOnesOwnDatasetsWhereAnyMeansDrafts)
{
    server.expect("POST", "/v2/search/dataSets/byTeams?status=committed").body(R"(["t-1"])").reply(200, oneDataset);
    EXPECT_TRUE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Committed, out, error));
    ASSERT_EQ(out.size(), 1u) << "in place of what the list held";
    EXPECT_EQ(out[0].id, "d-1");
    server.expect("POST", "/v2/search/dataSets/byTeams?status=draft").body(R"(["t-1"])").times(2).reply(200, oneDataset);
    EXPECT_TRUE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Any, out, error));
    EXPECT_TRUE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Draft, out));
    server.expect("POST", "/v2/search/dataSets/byTeams?status=").body(R"(["t-1"])").reply(200, oneDataset);
    EXPECT_TRUE(team->GetUserOwnsDatasetsInTeam(static_cast<DatasetStatus>(9), out, error));
    expectQuiet();
}

TEST_F(TeamObjectWireTest, ofATeamWithoutAnIdOnesOwnDatasetsAreNotAskedFor)
{
    EXPECT_FALSE(nameless->GetUserOwnsDatasetsInTeam(DatasetStatus::Draft, out, error));
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(server.requestCount(), 0u);
    expectQuiet();
}

TEST_F(TeamObjectWireTest, aTeamWithoutAnIdAsksForEverythingElseWithAnEmptyOne)
{
    const char* const none = R"({"code":10000,"data":[]})";
    server.expect("GET", "/teams//dataSets/byStatus").reply(200, none);
    EXPECT_THAT(nameless->GetTeamDatasetInfos(DatasetStatus::Any, error), IsEmpty());
    server.expect("GET", "/v2/teams//permissionResource?type=TrustBy").reply(200, none);
    EXPECT_THAT(nameless->GetTeamSharedDatasets(error), IsEmpty());
    server.expect("GET", "/teams//permissionResource?type=TrustBy").reply(200, none);
    EXPECT_THAT(nameless->GetTeamSharedFolders(error), IsEmpty());
    server.expect("POST", "/share/records").body(R"({"consumedId":""})").reply(200, none);
    EXPECT_THAT(nameless->GetCollaborationSharedRecords(error), IsEmpty());
    expectQuiet();
}

TEST_F(TeamObjectWireTest, lieOnTheProjectService)
{
    host.change([](OrloConfig& config) {
        for (auto& [key, url] : config.serviceUrls) {
            if (key != L"project")
                url = L"http://127.0.0.1:1";
        }
    });
    const char* const none = R"({"code":10000,"data":[]})";
    server.expect("GET", "/teams/t-1").reply(200, R"({"code":10000,"data":{}})");
    team->GetTeamInfo(error);
    server.expect("GET", "/teams/t-1/dataSets/byStatus").reply(200, none);
    team->GetTeamDatasetInfos(DatasetStatus::Any, error);
    server.expect("GET", sharedDatasets).reply(200, none);
    team->GetTeamSharedDatasets(error);
    server.expect("GET", sharedFolders).reply(200, none);
    team->GetTeamSharedFolders(error);
    server.expect("POST", "/v2/search/dataSets/byTeams?status=draft").body(R"(["t-1"])").reply(200, none);
    EXPECT_TRUE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Draft, out, error));
    server.expect("POST", "/share/records").body(R"({"consumedId":"t-1"})").reply(200, none);
    team->GetCollaborationSharedRecords(error);
    server.expect("POST", "/share/contents").body(R"(["r-1"])").reply(200, none);
    HttpClient::getShareContentById(L"r-1", error);
    server.expect("POST", "/permission/query").body(R"({"visitor":"t-1","visitorType":"Team"})").reply(200, none);
    HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::Folder, error);
    expectQuiet();
}

TEST_F(TeamObjectWireTest, anEarlierErrorIsLoggedAndWipedWhereTheRequestIsRetried)
{
    const std::wstring words = L" 传入的ErrorCode，已有错误存在:earlier";
    const auto fail = [&] {
        log.clear();
        error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    };
    fail();
    server.expect("POST", "/teams/t-1/users/u-1").reply(200, R"({"code":10000})");
    EXPECT_TRUE(team->AddMember(L"u-1", error));
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationTeam::AddMember" + words));
    fail();
    server.expect("POST", "/share/records").body(R"({"consumedId":"t-1"})").reply(200, R"({"data":[{"id":"r-1"}]})");
    const auto records = team->GetCollaborationSharedRecords(error);
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationTeam::GetCollaborationSharedRecords" + words,
                                         L"E@orlo::HttpClient::getShareRecordByTeamId" + words));
    ASSERT_EQ(records.size(), 1u);
    fail();
    server.expect("POST", "/share/contents").body(R"(["r-1"])").reply(200, "{}");
    EXPECT_THAT(records[0]->GetSharedDataSets(error), IsEmpty());
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationSharedRecord::GetSharedDataSets" + words,
                                         L"E@orlo::HttpClient::getShareContentById" + words));
    fail();
    server.expect("POST", "/permission/query").body(R"({"visitor":"t-1","visitorType":"Team"})").reply(200, "{}");
    EXPECT_THAT(HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::Folder, error), IsEmpty());
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::HttpClient::getResourceId" + words));
    fail();
    server.expect("GET", "/teams/t-1").reply(200, R"({"code":10000})");
    EXPECT_EQ(team->GetTeamInfo(error).id, L"");
    expectGenericError(error, exceptionValue, L"GenericError", L"earlier");
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::CollaborationTeam::GetTeamInfo" + words));
}

TEST_F(TeamObjectWireTest, listsOnesOwnDatasetsOfSeveralTeamsInTheOrderOfTheCaller)
{
    const std::vector<std::wstring> teams{L"t-2", L"", L"t-1"};
    server.expect("POST", "/v2/search/dataSets/byTeams?status=draft").body(R"(["t-2","","t-1"])").times(2).reply(200, oneDataset);
    EXPECT_TRUE(ICollaborationTeam::GetUserOwnsDatasetsInTeams(teams, DatasetStatus::Draft, out, error));
    EXPECT_EQ(out.size(), 1u);
    EXPECT_TRUE(ICollaborationTeam::GetUserOwnsDatasetsInTeams(teams, DatasetStatus::Any, out));
    out.resize(3);
    EXPECT_FALSE(ICollaborationTeam::GetUserOwnsDatasetsInTeams({}, DatasetStatus::Draft, out, error));
    EXPECT_EQ(out.size(), 3u);
    expectQuiet();
}

TEST_F(TeamObjectWireTest, onesOwnDatasetsThatAreNoListEmptyTheListWithoutALine)
{
    server.expect("POST", "/v2/search/dataSets/byTeams?status=draft").body(R"(["t-1"])").reply(200, R"({"code":10000,"data":{}})");
    EXPECT_FALSE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Draft, out, error));
    EXPECT_THAT(out, IsEmpty());
    expectQuiet();
}

TEST_F(TeamObjectWireTest, onesOwnDatasetsThatFailLeaveTheListAlone)
{
    server.expect("POST", "/v2/search/dataSets/byTeams?status=draft").body(R"(["t-1"])").reply(200, R"({"code":1,"data":[]})");
    EXPECT_FALSE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Draft, out, error));
    EXPECT_EQ(out.size(), 2u);
    EXPECT_THAT(log.lines(), ElementsAre(listingFailed)) << "in the words of the other listing";
}

TEST_F(TeamObjectWireTest, onesOwnDatasetsFailAsADirectRequestDoes)
{
    expectDirectFailures("POST", "/v2/search/dataSets/byTeams?status=draft", R"(["t-1"])",
                         L"CollaborationTeam::GetTeamDatasetInfos - code:", L"orlo::CollaborationTeam::GetUserOwnsDatasetsInTeam",
                         [&](ErrorCode& ec) { return team->GetUserOwnsDatasetsInTeam(DatasetStatus::Draft, out, ec); });
    expectDirectFailures(
        "POST", "/v2/search/dataSets/byTeams?status=draft", R"(["t-1"])", L"CollaborationTeam::GetTeamDatasetInfos - code:",
        L"orlo::ICollaborationTeam::GetUserOwnsDatasetsInTeams",
        [&](ErrorCode& ec) { return ICollaborationTeam::GetUserOwnsDatasetsInTeams({L"t-1"}, DatasetStatus::Draft, out, ec); });
    EXPECT_EQ(out.size(), 2u);
}

TEST_F(TeamObjectWireTest, listsWhatDatasetsOthersShare)
{
    server.expect("GET", sharedDatasets)
        .times(2)
        .reply(200, R"({"code":10000,"data":[{"teamId":"t-2","teamName":"机电组","resources":[{"type":"DataSet","resourceId":"d-1"},)"
                    R"({"type":"Folder","resourceId":"f-1"},{"type":7,"resourceId":"d-2"},{"type":"dataset","resourceId":"d-3"},)"
                    R"({"type":"DataSet","resourceId":8},{"type":"DataSet","resourceId":"d-4"}]},{"teamId":5,"resources":{}},7]})");
    const std::vector<TeamSharedDatasetInfo> shared = team->GetTeamSharedDatasets(error);
    ASSERT_EQ(shared.size(), 3u);
    EXPECT_EQ(shared[0].teamId, L"t-2");
    EXPECT_EQ(shared[0].teamName, L"机电组");
    EXPECT_THAT(shared[0].datasetIds, ElementsAre(L"d-1", L"d-4"));
    EXPECT_EQ(shared[1].teamId, L"");
    EXPECT_THAT(shared[1].datasetIds, IsEmpty());
    EXPECT_EQ(team->GetTeamSharedDatasets().size(), 3u);
    expectQuiet();
}

TEST_F(TeamObjectWireTest, listsWhatFoldersOthersShare)
{
    server.expect("GET", sharedFolders)
        .times(2)
        .reply(200, R"({"code":10000,"data":[{"teamId":"t-2","teamName":"机电组","resourceId":"f-1"},{},7]})");
    const std::vector<TeamSharedFolderInfo> shared = team->GetTeamSharedFolders(error);
    ASSERT_EQ(shared.size(), 3u);
    EXPECT_EQ(shared[0].teamId, L"t-2");
    EXPECT_EQ(shared[0].teamName, L"机电组");
    EXPECT_EQ(shared[0].resourceId, L"f-1");
    EXPECT_EQ(shared[2].resourceId, L"");
    EXPECT_EQ(team->GetTeamSharedFolders().size(), 3u);
    expectQuiet();
}

TEST_F(TeamObjectWireTest, sharedDatasetsThatAreNoListAreNoneAndSharedFoldersAnException)
{
    for (const char* body : {R"({"code":10000,"data":{}})", R"({"code":10000})", R"({"code":10000,"data":"x"})"}) {
        log.clear();
        error.Clear();
        server.expect("GET", sharedDatasets).reply(200, body);
        EXPECT_THAT(team->GetTeamSharedDatasets(error), IsEmpty());
        expectQuiet();
        server.expect("GET", sharedFolders).reply(200, body);
        EXPECT_THAT(team->GetTeamSharedFolders(error), IsEmpty());
        EXPECT_EQ(error.GetValue(), exceptionValue);
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0].rfind(L"E@orlo::CollaborationTeam::GetTeamSharedFolders [END_API_IMPLEMENTATION]", 0), 0u);
    }
}

TEST_F(TeamObjectWireTest, whatOthersShareFailsAsADirectRequestDoes)
{
    expectDirectFailures("GET", sharedDatasets, "", L"CollaborationTeam::GetTeamSharedDatasets - code:",
                         L"orlo::CollaborationTeam::GetTeamSharedDatasets",
                         [&](ErrorCode& ec) { return !team->GetTeamSharedDatasets(ec).empty(); });
    expectDirectFailures("GET", sharedFolders, "", L"CollaborationTeam::GetTeamSharedFolders - code:",
                         L"orlo::CollaborationTeam::GetTeamSharedFolders",
                         [&](ErrorCode& ec) { return !team->GetTeamSharedFolders(ec).empty(); });
}

TEST_F(TeamObjectWireTest, takesAMember)
{
    server.expect("POST", "/teams/t-1/users/u-1").times(2).reply(200, R"({"code":10000})");
    EXPECT_TRUE(team->AddMember(L"u-1", error));
    EXPECT_TRUE(team->AddMember(L"u-1"));
    expectQuiet();
    for (const auto& [to, user] : {std::pair{team, L""}, std::pair{nameless, L"u-1"}}) {
        error.Clear();
        EXPECT_FALSE(to->AddMember(user, error));
        expectGenericError(error, badInputValue, L"GenericError", L"AddUserToTeam:参数输入有误");
    }
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(TeamObjectWireTest, takingAMemberFailsAsEveryRequestingOperationDoes)
{
    expectFailuresOf({"POST", "/teams/t-1/users/u-1", "", L"OrloWebService::AddUserToTeam - code:",
                      [&](ErrorCode& ec) { return team->AddMember(L"u-1", ec); }},
                     server, log);
}

TEST_F(TeamObjectWireTest, listsTheRecordsOfWhatItReceived)
{
    server.expect("POST", "/share/records")
        .body(R"({"consumedId":"t-1"})")
        .times(2)
        .reply(200, R"({"code":7,"data":[{"id":"r-1","shareId":"t-2","consumedId":"t-1","name":"一审","status":"Consumed"},)"
                    R"({"id":"r-2","status":"Lost"}]})");
    const auto records = team->GetCollaborationSharedRecords(error);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0]->GetName(), L"一审");
    EXPECT_EQ(records[0]->GetShareId(), L"t-2");
    EXPECT_EQ(records[0]->GetStatus(), CollaborationShareStatus::Consumed);
    EXPECT_EQ(records[1]->GetStatus(), CollaborationShareStatus::Temporary) << "a text that nobody knows";
    EXPECT_EQ(team->GetCollaborationSharedRecords().size(), 2u);
    expectQuiet();

    server.expect("POST", "/share/contents")
        .body(R"(["r-1"])")
        .times(2)
        .reply(200, R"({"data":[{"dataSet":{"id":"d-1","name":"模型"},"versions":[{"version":3},{"version":"4"},{},7,{"version":5}]},)"
                    R"({"versions":[{"version":1}]},{"dataSet":["x"]}]})");
    const auto datasets = records[0]->GetSharedDataSets(error);
    ASSERT_EQ(datasets.size(), 3u);
    EXPECT_EQ(datasets[0].id, L"d-1");
    EXPECT_EQ(datasets[0].name, L"模型");
    EXPECT_THAT(datasets[0].versions, ElementsAre(3, 5));
    EXPECT_EQ(datasets[1].id, L"");
    EXPECT_THAT(datasets[1].versions, ElementsAre(1));
    EXPECT_EQ(records[0]->GetSharedDataSets().size(), 3u) << "asked for each time";
    expectQuiet();
}

TEST_F(TeamObjectWireTest, sharesAreReadFieldByField)
{
    server.expect("POST", "/share/records")
        .body(R"({"consumedId":"t-1"})")
        .reply(200, R"({"data":[{"id":"r-1","shareId":"t-2","consumedId":"t-1","name":"一审","status":"Lost"},)"
                    R"({"id":null,"shareId":7,"consumedId":[],"name":{},"status":true},null]})");
    const auto records = HttpClient::getShareRecordByTeamId(L"t-1", error);
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0]->getId() + L"|" + records[0]->getShareId() + L"|" + records[0]->getConsumedId() + L"|" + records[0]->getName() +
                  L"|" + records[0]->getStatus(),
              L"r-1|t-2|t-1|一审|Lost")
        << "the status as it came";
    for (std::size_t i = 1; i < 3; ++i)
        EXPECT_EQ(records[i]->getId() + records[i]->getShareId() + records[i]->getConsumedId() + records[i]->getName() +
                      records[i]->getStatus(),
                  L"");
    server.expect("POST", "/share/contents")
        .body(R"(["r-1"])")
        .reply(200,
               R"({"code":500,"data":[{"dataSet":{"id":"d-1","name":"模型"},"versions":[{"version":3},{"version":4294967299},)"
               R"({"version":1.5},{"version":null},{"version":-1}]},{"dataSet":{"id":7,"name":null},"versions":{"version":3}},null]})");
    const auto contents = HttpClient::getShareContentById(L"r-1", error);
    ASSERT_EQ(contents.size(), 3u);
    EXPECT_EQ(contents[0]->getId() + L"|" + contents[0]->getName(), L"d-1|模型");
    EXPECT_THAT(contents[0]->getVersions(), ElementsAre(3, -1));
    for (std::size_t i = 1; i < 3; ++i) {
        EXPECT_EQ(contents[i]->getId() + contents[i]->getName(), L"");
        EXPECT_THAT(contents[i]->getVersions(), IsEmpty());
    }
    expectQuiet();
}

TEST_F(TeamObjectWireTest, sharesThatAreNoListAreNone)
{
    server.expect("POST", "/share/records").body(R"({"consumedId":"t-1"})").reply(200, R"({"data":{}})");
    EXPECT_THAT(HttpClient::getShareRecordByTeamId(L"t-1", error), IsEmpty());
    server.expect("POST", "/share/contents").body(R"([""])").reply(200, R"([{}])");
    EXPECT_THAT(HttpClient::getShareContentById(L"", error), IsEmpty());
    expectQuiet();
}

TEST_F(TeamObjectWireTest, sharesFailAsEveryRequestingOperationDoesWithoutTheTag)
{
    RequestingOperation records{"POST", "/share/records", R"({"consumedId":"t-1"})", L"OrloWebService::getShareRecordByTeamId - code:",
                                [&](ErrorCode& ec) { return !team->GetCollaborationSharedRecords(ec).empty(); }};
    records.isTagged = false;
    expectFailuresOf(records, server, log);
    RequestingOperation contents{"POST", "/share/contents", R"(["r-1"])", L"OrloWebService::getShareContentById - code:",
                                 [&](ErrorCode& ec) { return !HttpClient::getShareContentById(L"r-1", ec).empty(); }};
    contents.isTagged = false;
    expectFailuresOf(contents, server, log);
}

TEST_F(TeamObjectWireTest, theResourcesOfAVisitorAreThoseOfOneType)
{
    const char* const mixed = R"({"data":[{"resourceType":"Folder","resourceId":"f-1"},{"resourceType":"DataSet","resourceId":"d-1"},7,)"
                              R"({"resourceType":"DataSet"},{"resourceType":"dataset","resourceId":"d-2"},)"
                              R"({"resourceType":"DataSet","resourceId":"d-3"}]})";
    server.expect("POST", "/permission/query").body(R"({"visitor":"t-1","visitorType":"Team"})").reply(200, mixed);
    EXPECT_THAT(HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::DataSet, error), ElementsAre(L"d-1", L"d-3"));
    server.expect("POST", "/permission/query").body(R"({"visitor":"u-1","visitorType":"Personal"})").reply(200, mixed);
    EXPECT_THAT(HttpClient::getResourceId(L"u-1", ORLOSubjectType::Personal, ORLOResourceType::Folder, error), ElementsAre(L"f-1"));
    server.expect("POST", "/permission/query").body(R"({"visitor":"r-1","visitorType":"Role"})").reply(200, mixed);
    EXPECT_THAT(HttpClient::getResourceId(L"r-1", ORLOSubjectType::Role, ORLOResourceType::Version, error), IsEmpty());
    server.expect("POST", "/permission/query").body(R"({"visitor":"t-1","visitorType":"Team"})").times(2).reply(200, mixed);
    EXPECT_THAT(HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::Project, error), IsEmpty());
    EXPECT_THAT(HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, static_cast<ORLOResourceType>(9), error), IsEmpty());
    server.expect("POST", "/permission/query")
        .body(R"({"visitor":"t-1","visitorType":"Team"})")
        .times(2)
        .reply(200, R"({"data":[{"resourceType":"Version","resourceId":"v-1"},{"resourceType":"Project","resourceId":"p-1"}]})");
    EXPECT_THAT(HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::Version, error), ElementsAre(L"v-1"));
    EXPECT_THAT(HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::Project, error), ElementsAre(L"p-1"));
    server.expect("POST", "/permission/query").body(R"({"visitor":"","visitorType":""})").reply(200, R"({"data":{}})");
    EXPECT_THAT(HttpClient::getResourceId(L"", static_cast<ORLOSubjectType>(9), ORLOResourceType::Project, error), IsEmpty());
    expectQuiet();
}

TEST_F(TeamObjectWireTest, theResourcesOfAVisitorFailAsEveryRequestingOperationDoesWithoutTheTag)
{
    RequestingOperation resources{
        "POST", "/permission/query", R"({"visitor":"t-1","visitorType":"Team"})", L"OrloWebService::getResourceId - code:",
        [&](ErrorCode& ec) { return !HttpClient::getResourceId(L"t-1", ORLOSubjectType::Team, ORLOResourceType::DataSet, ec).empty(); }};
    resources.isTagged = false;
    resources.afterwards = L"E [ORLOSDK]HttpClient::getResourceId OrloWebService::getResourceId error";
    expectFailuresOf(resources, server, log);
}

} // namespace
} // namespace orlo::test
