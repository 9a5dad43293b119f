#include "support/PlatformHost.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <gtest/gtest.h>

// What a sibling library does by the bridge, through a platform: it knows a modeling id, and versions of datasets.
namespace orlo::test {
namespace {

class BridgeSession : public testing::Test
{
protected:
    BridgeSession()
    {
        platform::DatasetSeed seed;
        seed.name = seed.id = "d-1";
        seed.folderId = "f-1";
        seed.ownerId = "account-1";
        seed.modelingDatasetId = "m-1";
        host.platform.change(platform::addDataset, seed);
    }

    PlatformHost host;
    IOrloBridge& bridge = *IOrloBridge::m_pBridge;
    ErrorCode error;
};

TEST_F(BridgeSession, theGridOfAModelIsReadByItsModelingId)
{
    const auto project = ICollaborationProject::Load(L"p-1", error);
    ASSERT_NE(project, nullptr);
    const auto grid = IAxisGrid::Create();
    const auto line = IAxisLine::Create();
    line->SetId(L"axis-1");
    line->SetEndPt({6000.0, 0.0, 0.0});
    grid->AddCurve(line);
    ASSERT_TRUE(project->UpdateAxisGrid(grid.get(), error)) << error.GetValue();

    EXPECT_EQ(bridge.GetProjectIdByModelingId(error, L"m-1"), L"p-1");
    std::vector<int> versions;
    EXPECT_TRUE(bridge.GetAxisGridAllVersions(L"m-1", versions, error));
    EXPECT_EQ(versions, std::vector<int>{1});
    std::string text;
    ASSERT_TRUE(bridge.GetAxisGridConfig(L"m-1", 1, text, error)) << error.GetValue();
    JsonWrapper answer;
    JsonWrapper document;
    std::string config;
    ASSERT_TRUE(answer.Parse(text) && answer.Get("configValue", config) && document.Parse(config));
    EXPECT_TRUE(document["data"]["axis"]["lines"].ToString().find("\"axis-1\"") != std::string::npos);
    std::wstring spaces;
    EXPECT_FALSE(bridge.GetSpaceConfig(L"m-1", 7, spaces, error)) << "there is no such version";
}

TEST_F(BridgeSession, aVersionIsMadePublishedAndRemembersWhatItWasBuiltOn)
{
    ASSERT_TRUE(bridge.CreateVersionByNumber(error, L"d-1", 4, L"{}", false, L"草图")) << error.GetValue();
    EXPECT_TRUE(bridge.MarkPublish("d-1", 4, L"定稿", error)) << error.GetValue();
    http::ORLOHTTPPayloadDatasetVersion version;
    ASSERT_TRUE(OrloWebService::GetDatasetVersionByMvd(error, version, "d-1", 4, L""));
    const std::wstring id = std::to_wstring(version.id);

    EXPECT_EQ(bridge.GetDatasetMeta(error, DatasetMetaKey::AxisGridVersions, id), L"") << "nobody has told it yet";
    error.Clear();
    EXPECT_TRUE(bridge.UpsertDatasetMeta(error, DatasetMetaKey::AxisGridVersions, L"[1]", id)) << error.GetValue();
    EXPECT_TRUE(bridge.UpsertDatasetMeta(error, DatasetMetaKey::SpaceConfigVersion, L"空间 3", id));
    EXPECT_TRUE(bridge.UpsertDatasetMeta(error, DatasetMetaKey::AxisGridVersions, L"[1,2]", id));
    EXPECT_EQ(bridge.GetDatasetMeta(error, DatasetMetaKey::AxisGridVersions, id), L"[1,2]");
    EXPECT_EQ(bridge.GetDatasetMeta(error, DatasetMetaKey::SpaceConfigVersion, id), L"空间 3");
    EXPECT_TRUE(error.isClear());
}

} // namespace
} // namespace orlo::test
