#include "support/HostSetup.h"
#include "support/PlatformHost.h"
#include "support/TempFolder.h"
#include "support/WireTest.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <gtest/gtest.h>

// The building items of a project, from one writer to the next, through a platform.
namespace orlo::test {
namespace {

using Items = std::vector<ProjectItemConfig>;
using ItemIds = std::vector<std::wstring>;

class BuildingItemSession : public testing::Test
{
protected:
    std::shared_ptr<ICollaborationProject> load() { return ICollaborationProject::Load(L"p-1", error); }

    Items latest()
    {
        Items items;
        EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error)) << error.GetValue();
        return items;
    }
    std::wstring add(const std::wstring& content)
    {
        std::wstring id;
        EXPECT_TRUE(project->AddBuildingItem(id, revision, content, error)) << error.GetValue();
        latest();
        return id;
    }

    PlatformHost host;
    ErrorCode error;
    std::shared_ptr<ICollaborationProject> project = load();
    int revision = -1;
};

TEST_F(BuildingItemSession, itemsAreAddedChangedReadAndDeleted)
{
    EXPECT_TRUE(latest().empty());
    EXPECT_EQ(revision, 0);
    const std::wstring tower = add(LR"({"name":"塔楼"})");
    const std::wstring podium = add(LR"({"name":"裙楼"})");
    EXPECT_NE(tower, podium);
    EXPECT_EQ(revision, 2);
    EXPECT_TRUE(project->UpdateBuildingItem(revision, tower, LR"({"name":"主塔"})", error));

    Items items = latest();
    EXPECT_EQ(revision, 3);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].id, tower);
    EXPECT_EQ(items[0].type, ConfigType::SubItem);
    EXPECT_EQ(items[0].version, 2);
    EXPECT_EQ(items[0].configValue, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":{"name":"主塔"}})");
    EXPECT_FALSE(items[0].birthTime.empty());
    EXPECT_FALSE(items[0].creationTime.empty());
    EXPECT_EQ(items[1].id, podium);

    Items earlier;
    EXPECT_TRUE(project->GetBuildingItems(earlier, 1, error));
    ASSERT_EQ(earlier.size(), 1u);
    EXPECT_EQ(earlier[0].configValue, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":{"name":"塔楼"}})");
    EXPECT_FALSE(project->GetBuildingItems(earlier, 4)) << "there is no such revision";
    EXPECT_EQ(earlier.size(), 1u);

    EXPECT_TRUE(project->DeleteBuildingItem(revision, podium, error));
    items = latest();
    EXPECT_EQ(revision, 4);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].id, tower);
}

TEST_F(BuildingItemSession, anItemIsReadByItsVersionAndLatest)
{
    latest();
    const std::wstring tower = add(L"[1]");
    EXPECT_TRUE(project->UpdateBuildingItem(revision, tower, L"[2]", error));
    ProjectItemConfig item;
    EXPECT_TRUE(project->GetProjectItemConfig(item, tower, ConfigType::SubItem, 1, error));
    EXPECT_EQ(item.id, tower);
    EXPECT_EQ(item.configValue, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":[1]})");
    EXPECT_TRUE(project->GetLatestProjectItemConfig(item, tower, ConfigType::SubItem, error));
    EXPECT_EQ(item.version, 2);
    EXPECT_EQ(item.configValue, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":[2]})");
    EXPECT_FALSE(project->GetProjectItemConfig(item, tower, ConfigType::SubItem, 3));
    EXPECT_EQ(item.version, 2);
}

TEST_F(BuildingItemSession, whoLosesTheRaceIsToldTheRevisionAndWinsTheNext)
{
    latest();
    const std::wstring tower = add(L"{}");
    host.platform.change(platform::addUser, {"user-2", "account-2", "token-secret-2"});
    host.platform.change(platform::grantPermission, "p-1", "account-2", "SubItem", {"Write"});
    const int read = revision;
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    EXPECT_TRUE(project->UpdateBuildingItem(read, tower, LR"("theirs")", error));
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});

    const auto expectLost = [](bool done, const http::HttpMessage& message) {
        EXPECT_FALSE(done);
        EXPECT_EQ(message.code, 40900);
        EXPECT_EQ(message.message, L"the revision is 2 now, not 1");
    };
    http::HttpMessage words;
    expectLost(project->UpdateBuildingItem(words, read, tower, LR"("ours")"), words);
    words = {};
    expectLost(project->DeleteBuildingItem(words, read, tower), words);
    words = {};
    std::wstring id = L"before";
    expectLost(project->AddBuildingItem(words, id, read, LR"("ours")"), words);
    EXPECT_EQ(id, L"before");

    words = {};
    EXPECT_EQ(latest().at(0).version, 2);
    EXPECT_TRUE(project->UpdateBuildingItem(words, revision, tower, LR"("ours")"));
    EXPECT_EQ(words.code, 0);
    EXPECT_EQ(words.message, L"");
    EXPECT_EQ(latest().at(0).configValue, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":"ours"})");
}

TEST_F(BuildingItemSession, aLostAnswerIsNotCarriedOutTwice)
{
    const RetryLimit retries(3);
    platform::Fault lost;
    lost.kind = platform::FaultKind::ResetBeforeAnswer;
    lost.path = "/v2/p-1/sub_item/0";
    lost.carryOut = true;
    host.platform.faults().add(lost);
    latest();
    http::HttpMessage words;
    std::wstring id;
    EXPECT_FALSE(project->AddBuildingItem(words, id, revision, L"{}"));
    EXPECT_EQ(words.message, L"the revision is 1 now, not 0") << "the repetition met what the first attempt had done";
    EXPECT_EQ(latest().size(), 1u);
}

TEST_F(BuildingItemSession, aProjectWhoseItemsAreAllGoneTakesNewOnes)
{
    latest();
    const std::wstring tower = add(L"{}");
    EXPECT_TRUE(project->DeleteBuildingItem(revision, tower, error));
    EXPECT_TRUE(latest().empty());
    EXPECT_EQ(revision, 0);
    add(L"{}");
    EXPECT_EQ(revision, 3);
}

TEST_F(BuildingItemSession, anItemHasConfigurationsOfThreeTypes)
{
    latest();
    const std::wstring tower = add(L"{}");
    const struct
    {
        ConfigType type;
        std::wstring head;
    } rows[] = {{ConfigType::ItemElevationSet, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"ElevationSet","data":)"},
                {ConfigType::ItemGridConfig, LR"({"appKey":"BIM-MODEL","schemaVersion":4,"schemaKey":"GridConfig","data":)"},
                {ConfigType::Coordinate, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"Coordinate","data":)"}};
    for (const auto& row : rows) {
        ProjectItemConfig config;
        EXPECT_FALSE(project->GetLatestProjectItemConfig(config, tower, row.type)) << "there is none yet";
        EXPECT_TRUE(project->CreateProjectItemConfig(tower, row.type, L"[1]", error));
        EXPECT_TRUE(project->UpdateProjectItemConfig(tower, row.type, 1, L"[2]", error));
        EXPECT_TRUE(project->GetLatestProjectItemConfig(config, tower, row.type, error));
        EXPECT_EQ(config.type, row.type);
        EXPECT_EQ(config.id, tower);
        EXPECT_EQ(config.version, 2);
        EXPECT_EQ(config.configValue, row.head + L"[2]}");
        EXPECT_TRUE(project->GetProjectItemConfig(config, tower, row.type, 1, error));
        EXPECT_EQ(config.version, 1);
        EXPECT_EQ(config.configValue, row.head + L"[1]}");
        http::HttpMessage words;
        EXPECT_FALSE(project->UpdateProjectItemConfig(words, tower, row.type, 1, L"[3]"));
        EXPECT_EQ(words.message, L"the configuration has version 2 now, not 1");
        EXPECT_FALSE(project->CreateProjectItemConfig(words, tower, row.type, L"[3]"));
        EXPECT_EQ(words.message, L"the configuration has version 2 now, not 0");
    }
    const int before = revision;
    latest();
    EXPECT_EQ(revision, before) << "they aren't the items' own";
}

TEST_F(BuildingItemSession, datasetsAreBoundBothWays)
{
    latest();
    const std::wstring tower = add(L"{}");
    const std::wstring podium = add(L"{}");
    const std::wstring first = utils::toWstring(host.addDataset("结构"));
    const std::wstring second = utils::toWstring(host.addDataset("机电"));
    EXPECT_TRUE(project->AssociateDatasetAndBuildingItem(first, tower, error));
    EXPECT_TRUE(project->AssociateDatasetAndBuildingItem(first, podium, error));
    EXPECT_TRUE(project->AssociateDatasetAndBuildingItem(second, tower, error));
    EXPECT_FALSE(project->AssociateDatasetAndBuildingItem(L"none", tower));

    ItemIds found;
    EXPECT_TRUE(project->GetBuildingItemIdsByDatasetId(found, first, error));
    EXPECT_EQ(found, (ItemIds{tower, podium}));
    found.clear();
    EXPECT_TRUE(project->GetDatasetIdsByBuildingItemId(found, tower, error));
    EXPECT_EQ(found, (ItemIds{first, second}));
    EXPECT_TRUE(project->DeleteBuildingItem(revision, tower, error));
    found.clear();
    EXPECT_TRUE(project->GetBuildingItemIdsByDatasetId(found, first, error));
    EXPECT_EQ(found, ItemIds{podium}) << "what was bound to an item goes with it";
}

TEST_F(BuildingItemSession, whoMayNotWriteIsToldSo)
{
    host.platform.change(platform::addUser, {"user-2", "account-2", "token-secret-2"});
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    http::HttpMessage words;
    std::wstring id;
    EXPECT_FALSE(project->AddBuildingItem(words, id, 0, L"{}"));
    EXPECT_EQ(words.code, 40300);
    EXPECT_EQ(words.message, L"the account may not write in this project");
    EXPECT_TRUE(latest().empty()) << "reading is free";
}

TEST(BuildingItemRestart, whatWasStoredIsThereAfterARestart)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    std::wstring tower;
    ErrorCode error;
    const auto session = [&](const auto& work) {
        platform::LocalPlatform platform({data, 0, false});
        platform.start();
        platform.change(platform::addUser, {"user-1", "account-1", "token-secret-1"});
        const HostSetup host(platform.url());
        work(platform);
    };
    session([&](platform::LocalPlatform& platform) {
        platform.change(platform::addProject, {"Tower", "account-1", "p-1"});
        const auto project = ICollaborationProject::Load(L"p-1", error);
        ASSERT_NE(project, nullptr);
        EXPECT_TRUE(project->AddBuildingItem(tower, 0, L"[1]", error));
        EXPECT_TRUE(project->CreateProjectItemConfig(tower, ConfigType::Coordinate, L"[2]", error));
    });
    session([&](platform::LocalPlatform&) {
        const auto project = ICollaborationProject::Load(L"p-1", error);
        ASSERT_NE(project, nullptr);
        Items items;
        int revision = -1;
        EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error));
        ASSERT_EQ(items.size(), 1u);
        EXPECT_EQ(items[0].id, tower);
        EXPECT_EQ(revision, 1);
        ProjectItemConfig config;
        EXPECT_TRUE(project->GetLatestProjectItemConfig(config, tower, ConfigType::Coordinate, error));
        EXPECT_EQ(config.configValue, LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"Coordinate","data":[2]})");
        EXPECT_TRUE(project->UpdateBuildingItem(revision, tower, L"[3]", error));
    });
}

} // namespace
} // namespace orlo::test
