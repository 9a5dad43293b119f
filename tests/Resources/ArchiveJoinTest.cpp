#include <OrloProjectManager/Resources/ArchivePackage.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <stdexcept>

namespace orlo::test {
namespace {

using http::ORLOHTTPPayloadArchivePackage;
using http::ORLOHTTPPayloadArchivePackageVersion;
using http::ORLOHTTPPayloadArchiveUint;
using http::ORLOHTTPPayloadArchiveUnitVersion;
using http::ORLOHTTPPayloadDatasetVersion;

using JoinTexts = std::vector<std::wstring>;
using PackageVersions = std::vector<ORLOHTTPPayloadArchivePackageVersion>;

ORLOHTTPPayloadArchivePackage packageOf(const std::wstring& id)
{
    ORLOHTTPPayloadArchivePackage package;
    package.packageId = id;
    package.packageName = L"name of " + id;
    return package;
}

ORLOHTTPPayloadArchivePackageVersion versionOf(const std::wstring& packageId, int version, const JoinTexts& resources)
{
    ORLOHTTPPayloadArchivePackageVersion record;
    record.packageId = packageId;
    record.version = version;
    for (const std::wstring& resource : resources)
        record.contents.push_back({resource, L"i" + resource, L"t"});
    return record;
}

ORLOHTTPPayloadArchiveUnitVersion unitOf(int id, std::vector<int> datasetVersions = {}, const std::wstring& packageId = L"")
{
    ORLOHTTPPayloadArchiveUnitVersion unit;
    unit.id = id;
    unit.packageId = packageId.empty() ? L"i" + std::to_wstring(id) : packageId;
    unit.integratePackageName = L"unit " + std::to_wstring(id);
    unit.datasetVersions = std::move(datasetVersions);
    return unit;
}

ORLOHTTPPayloadDatasetVersion datasetOf(int id, std::int64_t size = 1, const std::string& datasetId = "d", int version = 1)
{
    ORLOHTTPPayloadDatasetVersion record;
    record.id = id;
    record.version = version;
    record.dataSetId = datasetId;
    record.size = size;
    return record;
}

/// The lists that the platform answers.
struct ArchiveLists
{
    std::vector<ORLOHTTPPayloadArchivePackage> packages;
    PackageVersions packageVersions;
    std::vector<ORLOHTTPPayloadArchiveUnitVersion> unitVersions;
    ArchiveStandardCodes standardCodes;
    std::vector<ORLOHTTPPayloadDatasetVersion> datasetVersions;

    ArchivePackages join() const
    {
        ArchivePackages tree = toArchivePackages(packages);
        const NewestArchiveVersions newest = newestArchiveVersions(packageVersions);
        const auto units = archiveUnitVersions(unitVersions, archiveResources(packageVersions, newest).resourceIds);
        addArchiveUnits(tree, newest, units, standardCodes, datasetVersions);
        return tree;
    }
};

/// The names of a package's units.
JoinTexts unitsOf(const IArchivePackage& package)
{
    JoinTexts names;
    for (const std::shared_ptr<IArchiveUnit>& unit : package.GetArchiveUnits())
        names.push_back(unit->GetName());
    return names;
}

std::vector<ArchiveDatasetEntry> datasetsOf(const IArchiveUnit& unit)
{
    std::vector<ArchiveDatasetEntry> datasets;
    EXPECT_TRUE(unit.GetDatasets(datasets));
    return datasets;
}

std::vector<int> datasetVersionsOf(const IArchiveUnit& unit)
{
    std::vector<int> ids;
    for (const ArchiveDatasetEntry& entry : datasetsOf(unit))
        ids.push_back(entry.versionId);
    return ids;
}

JoinTexts codesOf(const IArchiveUnit& unit)
{
    JoinTexts codes;
    EXPECT_TRUE(unit.GetStandardCodes(codes));
    return codes;
}

// One package each

TEST(ArchiveJoin, givesAUnitWhatItsVersionPointsAt)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"12"})};
    lists.unitVersions = {unitOf(12, {5, 4}, L"integrate-1")};
    lists.datasetVersions = {datasetOf(4, 30, "数据", 7), datasetOf(5, 12), datasetOf(6, 1000)};
    lists.standardCodes = {{12, {L"b", L"a"}}, {13, {L"another's"}}};
    const ArchivePackages tree = lists.join();
    ASSERT_EQ(tree.size(), 1u);
    EXPECT_EQ(tree[0]->GetId(), L"a");
    EXPECT_EQ(tree[0]->GetName(), L"name of a");
    ASSERT_EQ(tree[0]->GetArchiveUnits().size(), 1u);
    const IArchiveUnit& unit = *tree[0]->GetArchiveUnits()[0];
    EXPECT_EQ(unit.GetId(), L"integrate-1");
    EXPECT_EQ(unit.GetName(), L"unit 12");
    EXPECT_EQ(unit.GetTotalSize(), 42);
    EXPECT_EQ(datasetVersionsOf(unit), (std::vector<int>{5, 4})) << "in the order of the unit, not of the answer";
    EXPECT_EQ(datasetsOf(unit)[1].datasetId, L"数据");
    EXPECT_EQ(datasetsOf(unit)[1].version, 7);
    EXPECT_EQ(datasetsOf(unit)[1].size, 30);
    EXPECT_EQ(codesOf(unit), (JoinTexts{L"b", L"a"}));
}

TEST(ArchiveJoin, keepsTheGreatestVersionWhereverItStands)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.unitVersions = {unitOf(1), unitOf(2), unitOf(3)};
    PackageVersions versions{versionOf(L"a", 9, {L"1"}), versionOf(L"a", 10, {L"2"}), versionOf(L"a", -1, {L"3"})};
    for (int order = 0; order < 6; ++order) {
        lists.packageVersions = versions;
        EXPECT_EQ(unitsOf(*lists.join().at(0)), JoinTexts{L"unit 2"}) << order;
        std::rotate(versions.begin(), versions.begin() + 1, versions.end());
        if (order == 2)
            std::swap(versions[0], versions[1]);
    }
}

TEST(ArchiveJoin, ofEqualVersionsKeepsTheLater)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 2, {L"1"}), versionOf(L"b", 2, {}), versionOf(L"a", 2, {L"2"}), versionOf(L"a", 1, {L"3"})};
    lists.unitVersions = {unitOf(1), unitOf(2), unitOf(3)};
    EXPECT_EQ(unitsOf(*lists.join().at(0)), JoinTexts{L"unit 2"});
}

TEST(ArchiveJoin, namesTheResourcesOfTheKeptVersionsInTheOrderOfTheAnswer)
{
    const PackageVersions versions{versionOf(L"z", 1, {L"1"}), versionOf(L"m", 2, {L"2", L"3", L"2"}),
                                   versionOf(L"a", 1, {L"4"}), versionOf(L"z", 2, {L"5"}),
                                   versionOf(L"m", 1, {L"6"}), versionOf(L"", 0, {L"", L"x"})};
    const ArchiveResources resources = archiveResources(versions, newestArchiveVersions(versions));
    EXPECT_EQ(resources.resourceIds, (JoinTexts{L"2", L"3", L"2", L"4", L"5", L"", L"x"}));
    EXPECT_EQ(resources.integratePackageIds, (JoinTexts{L"i2", L"i3", L"i2", L"i4", L"i5", L"i", L"ix"}));
}

TEST(ArchiveJoin, takesTheUnitVersionsThatAResourceNamesInDecimal)
{
    const ArchiveUnitVersions found = archiveUnitVersions({unitOf(12, {1}), unitOf(13), unitOf(-4), unitOf(0), unitOf(7), unitOf(12, {2})},
                                                          {L"12", L"-4", L"007", L"+13", L"x", L"", L"12 "});
    std::vector<int> ids;
    for (const auto& [id, version] : found)
        ids.push_back(id);
    EXPECT_EQ(ids, (std::vector<int>{-4, 12}));
    EXPECT_EQ(found.at(12).datasetVersions, std::vector<int>{2}) << "of those with the same id the last one";
}

TEST(ArchiveJoin, passesOverResourcesThatLeadNowhere)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"99", L"12", L"4294967308", L"-12", L"12", L"99999999999999999999"})};
    lists.unitVersions = {unitOf(12), unitOf(50)};
    EXPECT_EQ(unitsOf(*lists.join().at(0)), (JoinTexts{L"unit 12", L"unit 12"}));
}

TEST(ArchiveJoin, anIdThatIsNoNumberIsReadAsFarAsItIsOne)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"tower", L"", L"12b", L" 12", L"012", L"楼12"})};
    lists.unitVersions = {unitOf(12), unitOf(0)};
    EXPECT_EQ(unitsOf(*lists.join().at(0)), JoinTexts()) << "no resource names a version in decimal";
    lists.packageVersions[0].contents.push_back({L"12", L"i", L"t"});
    EXPECT_EQ(unitsOf(*lists.join().at(0)), (JoinTexts(4, L"unit 12")));
    // Intended: what is no number leads to the version 0, where a resource asks for it.
    lists.packageVersions[0].contents.push_back({L"0", L"i", L"t"});
    EXPECT_EQ(unitsOf(*lists.join().at(0)),
              (JoinTexts{L"unit 0", L"unit 0", L"unit 12", L"unit 12", L"unit 12", L"unit 0", L"unit 12", L"unit 0"}));
}

TEST(ArchiveJoin, aPackageWithoutAVersionHasNoUnits)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a"), packageOf(L"b")};
    lists.packageVersions = {versionOf(L"b", 1, {L"12"}), versionOf(L"none of the project's", 1, {L"12"})};
    lists.unitVersions = {unitOf(12)};
    const ArchivePackages tree = lists.join();
    ASSERT_EQ(tree.size(), 2u);
    EXPECT_EQ(unitsOf(*tree[0]), JoinTexts());
    EXPECT_EQ(unitsOf(*tree[1]), JoinTexts{L"unit 12"});
}

TEST(ArchiveJoin, leavesOutPackagesWithoutAnIdAndKeepsTheOrder)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"z"), packageOf(L""), packageOf(L"a"), packageOf(L""), packageOf(L"z")};
    lists.packageVersions = {versionOf(L"", 1, {L"12"}), versionOf(L"z", 1, {L"12"})};
    lists.unitVersions = {unitOf(12)};
    const ArchivePackages tree = lists.join();
    ASSERT_EQ(tree.size(), 3u);
    EXPECT_EQ(tree[0]->GetId() + tree[1]->GetId() + tree[2]->GetId(), L"zaz");
    EXPECT_EQ(unitsOf(*tree[0]), JoinTexts{L"unit 12"});
    EXPECT_EQ(unitsOf(*tree[2]), JoinTexts{L"unit 12"}) << "an id that stands twice gets its units twice";
}

TEST(ArchiveJoin, aUnitVersionWithoutDatasetsIsAUnitWithoutBytes)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"12", L"13"})};
    lists.unitVersions = {unitOf(12), unitOf(13, {77})};
    lists.datasetVersions = {datasetOf(4, 30)};
    const ArchivePackages tree = lists.join();
    ASSERT_EQ(tree.at(0)->GetArchiveUnits().size(), 2u);
    for (const std::shared_ptr<IArchiveUnit>& unit : tree[0]->GetArchiveUnits()) {
        EXPECT_TRUE(datasetsOf(*unit).empty());
        EXPECT_EQ(unit->GetTotalSize(), 0);
        EXPECT_TRUE(codesOf(*unit).empty());
    }
}

TEST(ArchiveJoin, everyAnsweredVersionOfAnIdIsAnEntryInTheOrderOfTheAnswer)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"12"})};
    lists.unitVersions = {unitOf(12, {4, 5, 4})};
    lists.datasetVersions = {datasetOf(4, 1, "first"), datasetOf(5, 10, "other"), datasetOf(4, 100, "second")};
    const auto unit = lists.join().at(0)->GetArchiveUnits().at(0);
    JoinTexts ids;
    for (const ArchiveDatasetEntry& entry : datasetsOf(*unit))
        ids.push_back(entry.datasetId);
    EXPECT_EQ(ids, (JoinTexts{L"first", L"second", L"other", L"first", L"second"}));
    EXPECT_EQ(unit->GetTotalSize(), 212);
}

TEST(ArchiveJoin, manyAnsweredVersionsOfAnIdKeepTheOrderOfTheAnswer)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"12"})};
    lists.unitVersions = {unitOf(12, {4})};
    std::vector<int> expected;
    for (int i = 0; i < 500; ++i) {
        lists.datasetVersions.push_back(datasetOf(i % 2 == 0 ? 4 : 1000 - i, 1, "d", i));
        if (i % 2 == 0)
            expected.push_back(i);
    }
    std::vector<int> numbers;
    const ArchivePackages tree = lists.join();
    for (const ArchiveDatasetEntry& entry : datasetsOf(*tree.at(0)->GetArchiveUnits().at(0)))
        numbers.push_back(entry.version);
    EXPECT_EQ(numbers, expected);
}

TEST(ArchiveJoin, sizesBeyondThirtyTwoBitsAreTheNearestLimit)
{
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"12"})};
    lists.unitVersions = {unitOf(12, {1, 2, 3, 4, 5, 6, 7})};
    lists.datasetVersions = {datasetOf(1, 2147483648),
                             datasetOf(2, std::numeric_limits<std::int64_t>::max()),
                             datasetOf(3, std::numeric_limits<std::int64_t>::min()),
                             datasetOf(4, -2147483649),
                             datasetOf(5, 2147483647),
                             datasetOf(6, -1),
                             datasetOf(7, 0)};
    const auto unit = lists.join().at(0)->GetArchiveUnits().at(0);
    std::vector<int> sizes;
    for (const ArchiveDatasetEntry& entry : datasetsOf(*unit))
        sizes.push_back(entry.size);
    EXPECT_EQ(sizes, (std::vector<int>{most, most, least, least, most, -1, 0}));
    EXPECT_EQ(unit->GetTotalSize(), most);
}

// A whole tree

/// 50 packages with one to four versions of their own numbers, in random order; what they should be joined to is known from their making.
class RandomArchive
{
public:
    explicit RandomArchive(unsigned seed) : m_random(seed)
    {
        for (int package = 0; package < 50; ++package)
            addPackage(L"package-" + std::to_wstring(package));
        std::shuffle(lists.packageVersions.begin(), lists.packageVersions.end(), m_random);
        std::shuffle(lists.unitVersions.begin(), lists.unitVersions.end(), m_random);
        std::shuffle(lists.datasetVersions.begin(), lists.datasetVersions.end(), m_random);
    }

    ArchiveLists lists;
    std::vector<JoinTexts> expectedUnits;
    std::map<std::wstring, std::vector<int>> expectedDatasets; ///< by the names of units

private:
    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }

    void addPackage(const std::wstring& id)
    {
        lists.packages.push_back(packageOf(id));
        const int versions = 1 + upTo(3);
        int number = upTo(100);
        JoinTexts units;
        for (int version = 0; version < versions; ++version, number += 1 + upTo(5)) {
            JoinTexts resources;
            units.clear();
            for (int unit = upTo(6); unit > 0; --unit)
                resources.push_back(addUnit(units));
            lists.packageVersions.push_back(versionOf(id, number, resources));
        }
        expectedUnits.push_back(units);
    }

    std::wstring addUnit(JoinTexts& names)
    {
        const int id = ++m_lastUnit * 7;
        std::vector<int> datasets;
        for (int dataset = upTo(4); dataset > 0; --dataset) {
            datasets.push_back(++m_lastDataset * 3);
            lists.datasetVersions.push_back(datasetOf(datasets.back(), datasets.back()));
        }
        std::shuffle(datasets.begin(), datasets.end(), m_random);
        lists.unitVersions.push_back(unitOf(id, datasets));
        names.push_back(L"unit " + std::to_wstring(id));
        lists.standardCodes[id] = {L"code of " + names.back()};
        expectedDatasets[names.back()] = datasets;
        return std::to_wstring(id);
    }

    std::mt19937 m_random;
    int m_lastUnit = 0;
    int m_lastDataset = 0;
};

TEST(ArchiveJoin, joinsFiftyPackagesWhoseListsComeInAnyOrder)
{
    std::random_device entropy;
    for (int round = 0; round < 20; ++round) {
        const unsigned seed = entropy();
        SCOPED_TRACE("seed " + std::to_string(seed));
        const RandomArchive archive(seed);
        const ArchivePackages tree = archive.lists.join();
        ASSERT_EQ(tree.size(), 50u);
        for (std::size_t i = 0; i < tree.size(); ++i) {
            EXPECT_EQ(tree[i]->GetId(), archive.lists.packages[i].packageId);
            EXPECT_EQ(unitsOf(*tree[i]), archive.expectedUnits[i]);
            for (const std::shared_ptr<IArchiveUnit>& unit : tree[i]->GetArchiveUnits()) {
                const std::vector<int>& datasets = archive.expectedDatasets.at(unit->GetName());
                EXPECT_EQ(datasetVersionsOf(*unit), datasets);
                EXPECT_EQ(unit->GetTotalSize(), std::accumulate(datasets.begin(), datasets.end(), 0));
                EXPECT_EQ(codesOf(*unit), JoinTexts{L"code of " + unit->GetName()});
            }
        }
    }
}

// Answers that mean harm

TEST(ArchiveJoin, aUnitInManyPackagesIsMadeOnce)
{
    constexpr int count = 2000;
    ArchiveLists lists;
    std::vector<int> datasets;
    for (int i = 0; i < count; ++i) {
        const std::wstring id = L"p" + std::to_wstring(i);
        lists.packages.push_back(packageOf(id));
        lists.packageVersions.push_back(versionOf(id, 1, {L"12"}));
        datasets.push_back(i);
        lists.datasetVersions.push_back(datasetOf(i));
    }
    lists.unitVersions = {unitOf(12, datasets)};
    const ArchivePackages tree = lists.join();
    ASSERT_EQ(tree.size(), static_cast<std::size_t>(count));
    const auto unit = tree[0]->GetArchiveUnits().at(0);
    EXPECT_EQ(unit->GetTotalSize(), count);
    for (const auto& package : tree) {
        ASSERT_EQ(package->GetArchiveUnits().size(), 1u);
        EXPECT_EQ(package->GetArchiveUnits()[0], unit) << "copies would hold four million entries";
    }
}

TEST(ArchiveJoin, versionsThatAreNamedAndAnsweredOverAndOverAreRefused)
{
    ArchiveLists lists;
    lists.packages = {packageOf(L"a")};
    lists.packageVersions = {versionOf(L"a", 1, {L"12"})};
    lists.unitVersions = {unitOf(12, std::vector<int>(2000, 4))};
    lists.datasetVersions.assign(2000, datasetOf(4));
    EXPECT_THROW(lists.join(), std::length_error);
}

TEST(ArchiveJoin, aPackageThatIsListedOverAndOverWithAllItsUnitsIsRefused)
{
    ArchiveLists lists;
    lists.packages.assign(2001, packageOf(L"a"));
    lists.packageVersions = {versionOf(L"a", 1, JoinTexts(2000, L"12"))};
    lists.unitVersions = {unitOf(12)};
    EXPECT_THROW(lists.join(), std::length_error);
    lists.packages.pop_back();
    EXPECT_EQ(lists.join().size(), 2000u) << "four million are joined";
}

TEST(ArchiveJoin, listsWithNothingGiveNothing)
{
    EXPECT_TRUE(ArchiveLists().join().empty());
    ArchiveLists lists;
    lists.packageVersions = {versionOf(L"a", 1, {L"12"})};
    lists.unitVersions = {unitOf(12, {4})};
    lists.datasetVersions = {datasetOf(4)};
    EXPECT_TRUE(lists.join().empty());
}

} // namespace
} // namespace orlo::test
