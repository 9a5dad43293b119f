#include <OrloProjectManager/Resources/ArchivePackage.h>

#include <gtest/gtest.h>

#include <limits>

namespace orlo::test {
namespace {

constexpr int most = std::numeric_limits<int>::max();

int totalOf(const std::vector<int>& sizes)
{
    ArchiveUnit unit(L"id", L"name");
    for (const int size : sizes)
        unit.add({L"d", 1, 2, size});
    std::vector<ArchiveDatasetEntry> datasets;
    EXPECT_TRUE(unit.GetDatasets(datasets));
    EXPECT_EQ(datasets.size(), sizes.size()) << "every entry is listed";
    return unit.GetTotalSize();
}

TEST(ArchivePackageProperty, handsOutTheFieldsOfItsRecord)
{
    const ArchivePackageProperty property(
        {L"id", L"name", L"desc", 7, L"receiver", L"receiverName", L"project", L"time", L"sharer", L"sharerName", true});
    EXPECT_EQ(property.GetPackageId(), L"id");
    EXPECT_EQ(property.GetPackageName(), L"name");
    EXPECT_EQ(property.GetDesc(), L"desc");
    EXPECT_EQ(property.GetVersion(), 7);
    EXPECT_EQ(property.GetReceiver(), L"receiver");
    EXPECT_EQ(property.GetReceiverName(), L"receiverName");
    EXPECT_EQ(property.GetSharer(), L"sharer");
    EXPECT_EQ(property.GetSharerName(), L"sharerName");
    EXPECT_EQ(property.GetProjectId(), L"project");
    EXPECT_EQ(property.GetCreateTime(), L"time");
    EXPECT_TRUE(property.GetEnable());
    EXPECT_FALSE(ArchivePackageProperty({}).GetEnable());
}

TEST(ArchivePackage, isCalledAsItsPropertySays)
{
    http::ORLOHTTPPayloadArchivePackage record;
    record.packageId = L"id";
    record.packageName = L"名";
    const auto property = std::make_shared<ArchivePackageProperty>(record);
    ArchivePackage package(property);
    EXPECT_EQ(package.GetId(), L"id");
    EXPECT_EQ(package.GetName(), L"名");
    EXPECT_EQ(package.GetProperty(), property);
    EXPECT_TRUE(package.GetArchiveUnits().empty());
    const auto unit = std::make_shared<ArchiveUnit>(L"u", L"n");
    package.add(unit);
    ASSERT_EQ(package.GetArchiveUnits().size(), 1u);
    EXPECT_EQ(package.GetArchiveUnits()[0], unit);
    EXPECT_EQ(&package.GetArchiveUnits(), &package.GetArchiveUnits());
}

TEST(ArchivePackage, withoutAPropertyHasTheOneEmptyTextForAnIdAndAName)
{
    const ArchivePackage package(nullptr);
    const ArchivePackage other(nullptr);
    EXPECT_EQ(package.GetId(), L"");
    EXPECT_EQ(package.GetName(), L"");
    EXPECT_EQ(&package.GetId(), &other.GetName());
    EXPECT_EQ(package.GetProperty(), nullptr);
}

TEST(ArchiveUnit, isEmptyAtFirst)
{
    const ArchiveUnit unit(L"id", L"名");
    EXPECT_EQ(unit.GetId(), L"id");
    EXPECT_EQ(unit.GetName(), L"名");
    EXPECT_EQ(unit.GetTotalSize(), 0);
    std::vector<ArchiveDatasetEntry> datasets(3);
    std::vector<std::wstring> codes{L"before"};
    EXPECT_TRUE(unit.GetDatasets(datasets));
    EXPECT_TRUE(unit.GetStandardCodes(codes));
    EXPECT_TRUE(datasets.empty()) << "what the caller had in the list is gone";
    EXPECT_TRUE(codes.empty());
}

TEST(ArchiveUnit, handsOutCopies)
{
    ArchiveUnit unit(L"id", L"name");
    unit.add({L"d-1", 3, 12, 100});
    unit.add({L"d-2", 1, 13, 20});
    unit.setStandardCodes({L"a", L"b"});
    std::vector<ArchiveDatasetEntry> datasets(1);
    std::vector<std::wstring> codes{L"before"};
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(unit.GetDatasets(datasets));
        ASSERT_EQ(datasets.size(), 2u);
        const auto [datasetId, version, versionId, size] = datasets[0];
        EXPECT_EQ(datasetId, L"d-1");
        EXPECT_EQ(version, 3);
        EXPECT_EQ(versionId, 12);
        EXPECT_EQ(size, 100);
        EXPECT_EQ(datasets[1].datasetId, L"d-2");
        EXPECT_TRUE(unit.GetStandardCodes(codes));
        EXPECT_EQ(codes, (std::vector<std::wstring>{L"a", L"b"}));
        datasets[0].datasetId = L"changed";
        codes[0] = L"changed";
    }
    EXPECT_EQ(unit.GetTotalSize(), 120);
}

TEST(ArchiveUnit, leavesNegativeSizesOutOfItsSum)
{
    EXPECT_EQ(totalOf({100, -30, 5}), 105);
    EXPECT_EQ(totalOf({-1}), 0);
    EXPECT_EQ(totalOf({0, 0}), 0);
    EXPECT_EQ(totalOf({std::numeric_limits<int>::min(), 1, std::numeric_limits<int>::min()}), 1);
}

TEST(ArchiveUnit, aSumThatDoesNotFitStaysAtTheLargestNumber)
{
    EXPECT_EQ(totalOf({most - 1, 1}), most);
    EXPECT_EQ(totalOf({most - 1, 2}), most);
    EXPECT_EQ(totalOf({most, most, most}), most);
    EXPECT_EQ(totalOf({most, 1, -5, 7}), most) << "and never comes back";
}

} // namespace
} // namespace orlo::test
