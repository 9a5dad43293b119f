#include "support/PlatformHost.h"
#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Resources/IArchivePackage.h>

#include <gtest/gtest.h>

// The archive packages of a project, as a host reads them from a platform.
namespace orlo::test {
namespace {

class ArchiveSession : public testing::Test
{
protected:
    /// A further version of the dataset, with a file of so many bytes.   Returns: its id.
    int addVersion(const std::string& datasetId, std::size_t bytes)
    {
        http::ORLOHTTPPayloadDatasetVersion data;
        data.dataSetId = datasetId;
        data.dataSetSourceFile = L"files/" + utils::toWstring(datasetId) + L"-" + std::to_wstring(bytes);
        host.platform.change(platform::addFile, utils::toString(data.dataSetSourceFile), std::string(bytes, 'x'));
        http::ORLOHTTPPayloadDatasetVersion version;
        EXPECT_TRUE(OrloWebService::CreateVersion(error, version, data)) << error.GetValue();
        return version.id;
    }
    int addUnit(const std::string& id, const std::string& name, const std::vector<int>& versions,
                const std::vector<std::string>& codes = {})
    {
        return host.platform.change(platform::addArchiveUnit, {"p-1", name, versions, codes, id});
    }
    std::string addPackage(const std::string& id, bool enabled = true)
    {
        return host.platform.change(platform::addArchivePackage, {"p-1", "包 " + id, id, "words", "r", "收件", "s", "发件", enabled});
    }
    bool get() { return project->GetArchivePackageList(packages, error); }

    PlatformHost host;
    ErrorCode error;
    std::shared_ptr<ICollaborationProject> project = ICollaborationProject::Load(L"p-1", error);
    std::vector<std::shared_ptr<IArchivePackage>> packages;
};

TEST_F(ArchiveSession, theTreeHoldsTheNewestVersionsAndWhatTheyPointAt)
{
    const std::string tower = host.addDataset("塔楼");
    const std::string podium = host.addDataset("裙楼");
    const int towerFirst = addVersion(tower, 100);
    const int towerSecond = addVersion(tower, 250);
    const int podiumFirst = addVersion(podium, 7);
    const int old = addUnit("i-1", "结构", {towerFirst});
    const int structure = addUnit("i-1", "结构", {towerSecond, podiumFirst}, {"30-01.10", "标准"});
    const int plant = addUnit("i-2", "机电", {podiumFirst});
    addPackage("a-1");
    addPackage("a-2", false);
    addPackage("a-3");
    host.platform.change(platform::addArchiveVersion, "a-1", {old});
    host.platform.change(platform::addArchiveVersion, "a-2", {plant});
    host.platform.change(platform::addArchiveVersion, "a-1", {plant, structure});

    ASSERT_TRUE(get()) << error.GetValue();
    expectClear(error);
    ASSERT_EQ(packages.size(), 3u);
    EXPECT_EQ(packages[0]->GetId(), L"a-1");
    EXPECT_EQ(packages[0]->GetName(), L"包 a-1");
    EXPECT_EQ(packages[0]->GetProperty()->GetVersion(), 2);
    EXPECT_EQ(packages[0]->GetProperty()->GetProjectId(), L"p-1");
    EXPECT_EQ(packages[0]->GetProperty()->GetReceiverName(), L"收件");
    EXPECT_EQ(packages[0]->GetProperty()->GetSharerName(), L"发件");
    EXPECT_TRUE(packages[0]->GetProperty()->GetEnable());
    EXPECT_FALSE(packages[1]->GetProperty()->GetEnable());
    ASSERT_EQ(packages[0]->GetArchiveUnits().size(), 2u);
    EXPECT_EQ(packages[0]->GetArchiveUnits()[0]->GetName(), L"机电");
    const IArchiveUnit& unit = *packages[0]->GetArchiveUnits()[1];
    EXPECT_EQ(unit.GetId(), L"i-1");
    EXPECT_EQ(unit.GetTotalSize(), 257);
    std::vector<ArchiveDatasetEntry> datasets;
    EXPECT_TRUE(unit.GetDatasets(datasets));
    ASSERT_EQ(datasets.size(), 2u);
    EXPECT_EQ(datasets[0].datasetId, utils::toWstring(tower));
    EXPECT_EQ(datasets[0].version, 2);
    EXPECT_EQ(datasets[0].versionId, towerSecond);
    EXPECT_EQ(datasets[0].size, 250);
    EXPECT_EQ(datasets[1].datasetId, utils::toWstring(podium));
    std::vector<std::wstring> codes;
    EXPECT_TRUE(unit.GetStandardCodes(codes));
    EXPECT_EQ(codes, (std::vector<std::wstring>{L"30-01.10", L"标准"}));
    ASSERT_EQ(packages[1]->GetArchiveUnits().size(), 1u);
    EXPECT_EQ(packages[1]->GetArchiveUnits()[0]->GetTotalSize(), 7);
    EXPECT_TRUE(packages[2]->GetArchiveUnits().empty()) << "it has no version yet";
}

TEST_F(ArchiveSession, whatOthersAddIsSeenByTheNextCallAlone)
{
    addPackage("a-1");
    host.platform.change(platform::addArchiveVersion, "a-1", {addUnit("i-1", "first", {})});
    ASSERT_TRUE(get());
    const auto before = packages.at(0);
    host.platform.change(platform::addArchiveVersion, "a-1", {addUnit("i-2", "second", {})});
    EXPECT_EQ(before->GetArchiveUnits().at(0)->GetName(), L"first");
    ASSERT_TRUE(get());
    EXPECT_EQ(packages.at(0)->GetArchiveUnits().at(0)->GetName(), L"second");
}

TEST_F(ArchiveSession, aProjectWithoutPackagesOrUnitsGivesFalse)
{
    EXPECT_FALSE(get());
    expectClear(error);
    addPackage("a-1");
    EXPECT_FALSE(get());
    expectClear(error);
    EXPECT_TRUE(packages.empty());
    host.platform.change(platform::addArchiveVersion, "a-1", {addUnit("i-1", "unit", {})});
    EXPECT_TRUE(get());
    EXPECT_EQ(packages.size(), 1u);
}

TEST_F(ArchiveSession, onlyTheLastQuestionIsRepeated)
{
    const RetryLimit retries(3);
    addPackage("a-1");
    host.platform.change(platform::addArchiveVersion, "a-1", {addUnit("i-1", "unit", {})});
    const char* const direct[] = {"/archive-assignment/project/p-1/packages", "/v2/search/archive-packages/versions",
                                  "/search/integrate-packages/versions", "/integrate-packages/versions/standard/code"};
    for (const char* path : direct) {
        platform::Fault busy;
        busy.kind = platform::FaultKind::Status;
        busy.path = path;
        busy.status = 503;
        const int fault = host.platform.faults().add(busy);
        error.Clear();
        EXPECT_FALSE(get()) << path;
        EXPECT_TRUE(packages.empty()) << path;
        EXPECT_EQ(host.platform.faults().count(fault), 1) << path;
    }
    platform::Fault lost;
    lost.kind = platform::FaultKind::ResetBeforeAnswer;
    lost.path = "/v2/versions/byids";
    lost.calls = 2;
    error.Clear();
    const int fault = host.platform.faults().add(lost);
    EXPECT_TRUE(get());
    EXPECT_EQ(host.platform.faults().count(fault), 2);
    expectClear(error);
}

TEST_F(ArchiveSession, aTokenThatIsNoLongerGoodIsToldByTheFirstQuestion)
{
    addPackage("a-1");
    host.platform.change(platform::setRevoked, "token-secret-1", true);
    EXPECT_FALSE(get());
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_EQ(host.platform.requests().count("POST", "/v2/versions/byids"), 0u);
}

} // namespace
} // namespace orlo::test
