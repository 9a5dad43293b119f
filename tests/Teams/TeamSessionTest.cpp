#include "support/PlatformHost.h"

#include <BaseCommon/ErrorCode.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Teams/ICollaborationSharedRecord.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>
#include <OrloProjectManager/Teams/ICollaborationTeamManager.h>

#include <gmock/gmock.h>

// Two users and their teams, through a platform.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TeamSession : public testing::Test
{
protected:
    TeamSession()
    {
        host.platform.change(platform::addUser, {"user-2", "account-2", "token-secret-2"});
        host.platform.change(platform::addTeam, {"p-1", "结构组", "t-1"});
        host.platform.change(platform::addTeam, {"p-1", "机电组", "t-2"});
    }

    static void signInSecond() { UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"}); }

    std::vector<std::wstring> myTeams()
    {
        std::vector<std::wstring> names;
        for (const auto& team : manager.GetMyTeamsByProject(L"p-1", error))
            names.push_back(team->GetTeamInfo(error).name);
        EXPECT_TRUE(error.isClear()) << error.GetValue();
        return names;
    }
    std::string dataset(const std::string& team)
    {
        platform::DatasetSeed seed;
        seed.name = seed.id = "d-" + team;
        seed.teamId = team;
        seed.ownerId = "account-1";
        return host.platform.change(platform::addDataset, seed);
    }

    PlatformHost host;
    ICollaborationTeamManager& manager = *ICollaborationTeamManager::Get();
    ErrorCode error;
};

TEST_F(TeamSession, aTeamIsMadeAndTakesAMember)
{
    const auto team = manager.CreateTeam(L"暖通组", L"p-1", error);
    ASSERT_TRUE(error.isClear());
    const CollaborationTeamInfo info = team->GetTeamInfo(error);
    EXPECT_EQ(info.name, L"暖通组");
    EXPECT_EQ(info.projectId, L"p-1");
    EXPECT_EQ(info.status, CollaborationTeamStatus::Working);
    EXPECT_EQ(manager.GetTeamByFolder(info.linkedFolderId, error)->GetTeamId(), team->GetTeamId());

    signInSecond();
    EXPECT_THAT(myTeams(), IsEmpty());
    EXPECT_TRUE(team->AddMember(L"account-2", error));
    EXPECT_THAT(myTeams(), ElementsAre(L"暖通组"));
    EXPECT_TRUE(HttpClient::deleteUserFromTeam(team->GetTeamId(), L"account-2"));
    EXPECT_THAT(myTeams(), IsEmpty());
    EXPECT_FALSE(HttpClient::deleteUserFromTeam(team->GetTeamId(), L"account-2")) << "who is gone can't go";
}

TEST_F(TeamSession, theTeamsOfAProjectAreListed)
{
    std::vector<CollaborationTeamInfo> teams;
    EXPECT_TRUE(HttpClient::getTeamInfosInProject(L"p-1", teams));
    ASSERT_EQ(teams.size(), 3u);
    EXPECT_EQ(teams[1].id, L"t-1");
    EXPECT_EQ(teams[2].name, L"机电组");
    EXPECT_FALSE(HttpClient::getTeamInfosInProject(L"p-9", teams));
}

TEST_F(TeamSession, datasetsAreListedByTeamAndByOwner)
{
    dataset("t-1");
    EXPECT_EQ(manager.GetTeamByDataset("d-t-1", error)->GetTeamId(), L"t-1");
    const auto team = manager.GetTeam(L"t-1");
    EXPECT_EQ(team->GetTeamDatasetInfos(DatasetStatus::Any, error).size(), 1u);
    EXPECT_EQ(team->GetTeamDatasetInfos(DatasetStatus::Draft, error).size(), 1u);
    EXPECT_THAT(team->GetTeamDatasetInfos(DatasetStatus::Committed, error), IsEmpty());
    std::vector<DatasetInfo> own;
    EXPECT_TRUE(team->GetUserOwnsDatasetsInTeam(DatasetStatus::Any, own, error));
    EXPECT_EQ(own.size(), 1u);
    signInSecond();
    EXPECT_TRUE(ICollaborationTeam::GetUserOwnsDatasetsInTeams({L"t-1", L"t-2"}, DatasetStatus::Draft, own, error));
    EXPECT_THAT(own, IsEmpty()) << "they are the other user's";
    EXPECT_TRUE(error.isClear());
}

TEST_F(TeamSession, whatATeamSharesReachesTheOther)
{
    const std::string shared = dataset("t-1");
    ASSERT_TRUE(host.addVersion(shared));
    platform::ShareSeed share;
    share.shareId = "t-1";
    share.consumedId = "t-2";
    share.name = "一审";
    share.contents = {{shared, 1}};
    host.platform.change(platform::addShare, share);
    host.platform.change(platform::addTrust, {"t-1", "t-2", "DataSet", shared});
    host.platform.change(platform::addTrust, {"t-1", "t-2", "Folder", "f-1"});

    const auto receiver = manager.GetTeam(L"t-2");
    const auto records = receiver->GetCollaborationSharedRecords(error);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]->GetName(), L"一审");
    EXPECT_EQ(records[0]->GetStatus(), CollaborationShareStatus::Shared);
    EXPECT_EQ(records[0]->GetShareId(), L"t-1");
    const auto datasets = records[0]->GetSharedDataSets(error);
    ASSERT_EQ(datasets.size(), 1u);
    EXPECT_EQ(datasets[0].name, L"d-t-1");
    EXPECT_THAT(datasets[0].versions, ElementsAre(1));
    const auto trusted = receiver->GetTeamSharedDatasets(error);
    ASSERT_EQ(trusted.size(), 1u);
    EXPECT_EQ(trusted[0].teamName, L"结构组");
    EXPECT_THAT(trusted[0].datasetIds, ElementsAre(L"d-t-1"));
    ASSERT_EQ(receiver->GetTeamSharedFolders(error).size(), 1u);
    EXPECT_EQ(receiver->GetTeamSharedFolders(error)[0].resourceId, L"f-1");
    EXPECT_THAT(HttpClient::getResourceId(L"t-2", ORLOSubjectType::Team, ORLOResourceType::DataSet, error), ElementsAre(L"d-t-1"));
    EXPECT_THAT(manager.GetTeam(L"t-1")->GetCollaborationSharedRecords(error), IsEmpty()) << "it gave, and received nothing";
    EXPECT_TRUE(error.isClear());
}

} // namespace
} // namespace orlo::test
