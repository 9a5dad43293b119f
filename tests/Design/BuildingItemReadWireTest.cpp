#include "support/ProjectObjectTest.h"

#include <gtest/gtest.h>

#include <limits>

namespace orlo::test {
namespace {

constexpr const char* latestItems = "/v2/p-1/config/binder/p-1/type/SubItem/latest";
constexpr const char* twoItems =
    R"({"code":10000,"data":[)"
    R"({"id":"7","version":3,"revision":11,"configValue":"{\"a\":1}","birthTime":"2024-03-01","creationTime":"2024-03-02"},)"
    R"({"id":"8","version":1,"revision":12,"configValue":"楼","birthTime":"2024-03-03","creationTime":"2024-03-04"}]})";
constexpr const char* oneItem = R"({"data":{"id":"99","version":3,"configValue":"{\"a\":1}","birthTime":"b","creationTime":"c"}})";
constexpr const char* oneConfig =
    R"({"data":{"id":"99","scopeEntityId":"scope-7","version":3,"configValue":"{\"a\":1}","birthTime":"b","creationTime":"c"}})";

const std::wstring itemsFailed = L"W [ORLOSDK]Failed to get latest building items.";
const std::wstring itemFailed = L"W [ORLOSDK]Failed to get latest building item.";
const std::wstring configsFailed = L"W [ORLOSDK]Failed to get latest configurations.";

ProjectItemConfig itemBefore()
{
    return {ConfigType::Coordinate, L"before", 9, L"before", L"before", L"before"};
}

void expectConfig(const ProjectItemConfig& config, ConfigType type, const std::wstring& id, int version, const std::wstring& value,
                  const std::wstring& birth, const std::wstring& creation)
{
    EXPECT_EQ(config.type, type);
    EXPECT_EQ(config.id, id);
    EXPECT_EQ(config.version, version);
    EXPECT_EQ(config.configValue, value);
    EXPECT_EQ(config.birthTime, birth);
    EXPECT_EQ(config.creationTime, creation);
}

void expectBefore(const ProjectItemConfig& config)
{
    expectConfig(config, ConfigType::Coordinate, L"before", 9, L"before", L"before", L"before");
}

class BuildingItemReadWireTest : public ProjectObjectTest
{
protected:
    /// The read fails on an answer with status 200 which lacks what it needs. `words`: the whole log.
    template <class Read>
    void expectUnusable(const char* target, const std::string& body, const std::wstring& words, const Read& read)
    {
        log.clear();
        server.expect("GET", target).reply(200, body);
        EXPECT_FALSE(read()) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{words}) << body;
    }

    std::vector<ProjectItemConfig> items{itemBefore()};
    ProjectItemConfig config = itemBefore();
    int revision = 5;
};

// The latest items

TEST_F(BuildingItemReadWireTest, theLatestItemsComeInOrderWithTheRevisionOfTheLast)
{
    server.expect("GET", latestItems).reply(200, twoItems);
    EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error));
    ASSERT_EQ(items.size(), 2u);
    expectConfig(items[0], ConfigType::SubItem, L"7", 3, L"{\"a\":1}", L"2024-03-01", L"2024-03-02");
    expectConfig(items[1], ConfigType::SubItem, L"8", 1, L"楼", L"2024-03-03", L"2024-03-04");
    EXPECT_EQ(revision, 12);
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, aProjectWithoutItemsHasTheRevisionZero)
{
    server.expect("GET", latestItems).reply(200, R"({"data":[]})");
    EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error));
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(revision, 0);
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theShortFormOfTheLatestItemsGivesTheSame)
{
    server.expect("GET", latestItems).reply(200, twoItems);
    server.expect("GET", latestItems).reply(404, "gone");
    EXPECT_TRUE(project->GetLatestBuildingItems(items, revision));
    EXPECT_EQ(items.size(), 2u);
    EXPECT_EQ(revision, 12);
    EXPECT_FALSE(project->GetLatestBuildingItems(items, revision));
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(revision, -1);
}

TEST_F(BuildingItemReadWireTest, theLastRevisionThatIsToldStands)
{
    server.expect("GET", latestItems).reply(200, R"({"data":[{"revision":4},{"revision":2},{"id":"9"},{"revision":"6"}]})");
    EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error));
    EXPECT_EQ(items.size(), 4u);
    EXPECT_EQ(revision, 2);
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, itemsWithoutARevisionAreAFailure)
{
    for (const char* body : {R"({"data":[{"id":"7"}]})", R"({"data":[{"revision":-1}]})", R"({"data":[{"revision":-2147483648}]})",
                             R"({"data":[{"revision":3000000000}]})", R"({"data":[{"revision":1.5}]})", R"({"data":[null]})"}) {
        items = {itemBefore()};
        expectUnusable(latestItems, body, itemsFailed, [&] { return project->GetLatestBuildingItems(items, revision, error); });
        EXPECT_TRUE(items.empty()) << body;
        EXPECT_EQ(revision, -1) << body;
    }
}

TEST_F(BuildingItemReadWireTest, latestItemsThatAreNoArrayAreAFailure)
{
    for (const char* body : {"{}", R"({"code":10000})", R"({"data":null})", R"({"data":{}})", R"({"data":"[]"})", "[]", "7", "null", ""}) {
        items = {itemBefore()};
        revision = 5;
        expectUnusable(latestItems, body, itemsFailed, [&] { return project->GetLatestBuildingItems(items, revision, error); });
        EXPECT_TRUE(items.empty()) << body;
        EXPECT_EQ(revision, -1) << body;
    }
}

TEST_F(BuildingItemReadWireTest, fieldsOfAnotherTypeKeepTheirDefaults)
{
    server.expect("GET", latestItems)
        .reply(200, R"({"data":[{"id":7,"version":"3","revision":1,"configValue":{"a":1},"birthTime":null,"creationTime":[]},)"
                    R"({"id":"x","version":4294967296,"revision":2},null,7,"x",[]]})");
    EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error));
    ASSERT_EQ(items.size(), 6u);
    for (const std::size_t empty : {0u, 2u, 3u, 4u, 5u})
        expectConfig(items[empty], ConfigType::SubItem, L"", 0, L"", L"", L"");
    expectConfig(items[1], ConfigType::SubItem, L"x", 0, L"", L"", L"");
    EXPECT_EQ(revision, 2);
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theLatestItemsFailAsEveryRetriedOperationDoes)
{
    RequestingOperation read{"GET", latestItems, "", L"Project::GetLatestConfigByProjectIdAndOwnerId - code:",
                             [&](ErrorCode& ec) { return project->GetLatestBuildingItems(items, revision, ec); }};
    read.afterwards = itemsFailed;
    read.operationName = L"orlo::Project::GetLatestBuildingItems";
    read.goodAnswer = twoItems;
    expectFailuresOf(read, server, log);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(revision, -1);
    expectSuccessAtLast(read, server, log);
    EXPECT_EQ(items.size(), 2u);
}

// The items of a revision

TEST_F(BuildingItemReadWireTest, theItemsOfARevisionAreAppended)
{
    server.expect("GET", "/v2/p-1/sub_item/revision/12").reply(200, twoItems);
    EXPECT_TRUE(project->GetBuildingItems(items, 12, error));
    ASSERT_EQ(items.size(), 3u);
    expectBefore(items[0]);
    expectConfig(items[1], ConfigType::SubItem, L"7", 3, L"{\"a\":1}", L"2024-03-01", L"2024-03-02");
    expectConfig(items[2], ConfigType::SubItem, L"8", 1, L"楼", L"2024-03-03", L"2024-03-04");
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theRevisionGoesOutInDecimalWithItsSign)
{
    server.expect("GET", "/v2/p-1/sub_item/revision/-1").reply(200, R"({"data":[]})");
    server.expect("GET", "/v2/p-1/sub_item/revision/2147483647").reply(200, R"({"data":[]})");
    server.expect("GET", "/v2/p-1/sub_item/revision/-2147483648").reply(200, R"({"data":[]})");
    for (const int number : {-1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_TRUE(project->GetBuildingItems(items, number, error));
    EXPECT_EQ(items.size(), 1u);
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theShortFormOfTheItemsGivesTheSame)
{
    server.expect("GET", "/v2/p-1/sub_item/revision/12").reply(200, twoItems);
    server.expect("GET", "/v2/p-1/sub_item/revision/12").reply(404);
    EXPECT_TRUE(project->GetBuildingItems(items, 12));
    EXPECT_FALSE(project->GetBuildingItems(items, 12));
    EXPECT_EQ(items.size(), 3u);
}

TEST_F(BuildingItemReadWireTest, itemsThatAreNoArrayAreAFailure)
{
    for (const char* body : {"{}", R"({"data":null})", R"({"data":{"id":"7"}})", R"({"data":7})", "[]", "null", ""}) {
        expectUnusable("/v2/p-1/sub_item/revision/12", body, L"E [ORLOSDK]Project::GetBuildingItems error!",
                       [&] { return project->GetBuildingItems(items, 12, error); });
        ASSERT_EQ(items.size(), 1u) << body;
        expectBefore(items[0]);
    }
}

TEST_F(BuildingItemReadWireTest, theItemsFailAsEveryRetriedOperationDoes)
{
    RequestingOperation read{"GET", "/v2/p-1/sub_item/revision/12", "", L"Project::GetBuildingItems - code:",
                             [&](ErrorCode& ec) { return project->GetBuildingItems(items, 12, ec); }};
    read.afterwards = L"E [ORLOSDK]Project::GetBuildingItems error!";
    read.operationName = L"orlo::Project::GetBuildingItems";
    read.goodAnswer = twoItems;
    expectFailuresOf(read, server, log);
    ASSERT_EQ(items.size(), 1u);
    expectBefore(items[0]);
    expectSuccessAtLast(read, server, log);
}

// The latest version of one

TEST_F(BuildingItemReadWireTest, theLatestItemHasTheIdThatWasAskedFor)
{
    server.expect("GET", "/v2/p-1/sub_item/7/latest").reply(200, oneItem);
    EXPECT_TRUE(project->GetLatestProjectItemConfig(config, L"7", ConfigType::SubItem, error));
    expectConfig(config, ConfigType::SubItem, L"7", 3, L"{\"a\":1}", L"b", L"c");
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theIdMayBeThatOfTheRecordItself)
{
    config.id = L"7";
    server.expect("GET", "/v2/p-1/sub_item/7/latest").reply(200, oneItem);
    EXPECT_TRUE(project->GetLatestProjectItemConfig(config, config.id, ConfigType::SubItem, error));
    EXPECT_EQ(config.id, L"7");
}

TEST_F(BuildingItemReadWireTest, anItemOfWhichNothingIsToldHasItsIdAndDefaults)
{
    server.expect("GET", "/v2/p-1/sub_item/7/latest").reply(200, R"({"data":{"version":9999999999,"configValue":1}})");
    EXPECT_TRUE(project->GetLatestProjectItemConfig(config, L"7", ConfigType::SubItem, error));
    expectConfig(config, ConfigType::SubItem, L"7", 0, L"", L"", L"");
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, aLatestItemThatIsNoObjectIsAFailure)
{
    for (const char* body : {"{}", R"({"data":null})", R"({"data":[{"id":"7"}]})", R"({"data":"x"})", "[]", ""}) {
        expectUnusable("/v2/p-1/sub_item/7/latest", body, itemFailed,
                       [&] { return project->GetLatestProjectItemConfig(config, L"7", ConfigType::SubItem, error); });
        expectBefore(config);
    }
}

TEST_F(BuildingItemReadWireTest, theLatestItemFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation read{"GET", "/v2/p-1/sub_item/7/latest", "", L"Project::GetLatestBuildingItem - code:",
                             [&](ErrorCode& ec) { return project->GetLatestProjectItemConfig(config, L"7", ConfigType::SubItem, ec); }};
    read.afterwards = itemFailed;
    read.operationName = L"orlo::Project::GetLatestProjectItemConfig";
    read.goodAnswer = oneItem;
    expectFailuresOf(read, server, log);
    expectBefore(config);
    expectSuccessAtLast(read, server, log);
}

TEST_F(BuildingItemReadWireTest, theLatestConfigurationIsThatOfItsBinder)
{
    // Intended: the address of an elevation set says "SpaceConfig".
    const struct
    {
        ConfigType type;
        const char* target;
    } rows[] = {{static_cast<ConfigType>(3), "/v2/p-1/config/binder/7/type/SpaceConfig/latest"},
                {static_cast<ConfigType>(4), "/v2/p-1/config/binder/7/type/GridConfig/latest"},
                {static_cast<ConfigType>(5), "/v2/p-1/config/binder/7/type/Coordinate/latest"},
                {static_cast<ConfigType>(0), "/v2/p-1/config/binder/7/type/SpaceConfig/latest"},
                {static_cast<ConfigType>(1), "/v2/p-1/config/binder/7/type/GridConfig/latest"},
                {static_cast<ConfigType>(6), "/v2/p-1/config/binder/7/type//latest"}};
    for (const auto& row : rows) {
        config = itemBefore();
        server.expect("GET", row.target)
            .reply(200, R"({"data":[{"id":"99","scopeEntityId":"7","version":3,"configValue":"v","birthTime":"b","creationTime":"c"}]})");
        EXPECT_TRUE(project->GetLatestProjectItemConfig(config, L"7", row.type, error));
        expectConfig(config, row.type, L"7", 3, L"v", L"b", L"c");
    }
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theLatestConfigurationNeedsNoRevision)
{
    server.expect("GET", "/v2/p-1/config/binder/7/type/Coordinate/latest").reply(200, R"({"data":[{"revision":-4}]})");
    EXPECT_TRUE(project->GetLatestProjectItemConfig(config, L"7", ConfigType::Coordinate, error));
    expectConfig(config, ConfigType::Coordinate, L"", 0, L"", L"", L"");
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, anythingButOneLatestConfigurationIsAFailure)
{
    for (const char* body : {R"({"data":[]})", R"({"data":[{"scopeEntityId":"7"},{"scopeEntityId":"7"}]})", "{}", R"({"data":null})",
                             R"({"data":{"scopeEntityId":"7"}})", "[]", ""}) {
        expectUnusable("/v2/p-1/config/binder/7/type/SpaceConfig/latest", body, configsFailed,
                       [&] { return project->GetLatestProjectItemConfig(config, L"7", ConfigType::ItemElevationSet, error); });
        expectBefore(config);
    }
}

TEST_F(BuildingItemReadWireTest, theLatestConfigurationFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation read{
        "GET", "/v2/p-1/config/binder/7/type/GridConfig/latest", "", L"Project::GetLatestConfigByProjectIdAndOwnerId - code:",
        [&](ErrorCode& ec) { return project->GetLatestProjectItemConfig(config, L"7", ConfigType::ItemGridConfig, ec); }};
    read.afterwards = configsFailed;
    read.operationName = L"orlo::Project::GetLatestProjectItemConfig";
    read.goodAnswer = R"({"data":[{"scopeEntityId":"7","version":3}]})";
    expectFailuresOf(read, server, log);
    expectBefore(config);
    expectSuccessAtLast(read, server, log);
}

TEST_F(BuildingItemReadWireTest, theShortFormOfTheLatestGivesTheSame)
{
    server.expect("GET", "/v2/p-1/sub_item/7/latest").reply(200, oneItem);
    server.expect("GET", "/v2/p-1/sub_item/7/latest").reply(404);
    EXPECT_TRUE(project->GetLatestProjectItemConfig(config, L"7", ConfigType::SubItem));
    EXPECT_EQ(config.version, 3);
    EXPECT_FALSE(project->GetLatestProjectItemConfig(config, L"7", ConfigType::SubItem));
    EXPECT_EQ(config.version, 3);
}

// One version of one

TEST_F(BuildingItemReadWireTest, aVersionOfAnItemHasTheIdThatWasAskedFor)
{
    server.expect("GET", "/v2/p-1/sub_item/7/version/3").reply(200, oneItem);
    EXPECT_TRUE(project->GetProjectItemConfig(config, L"7", ConfigType::SubItem, 3, error));
    expectConfig(config, ConfigType::SubItem, L"7", 3, L"{\"a\":1}", L"b", L"c");
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, aVersionOfAConfigurationHasTheIdOfItsScope)
{
    const char* const targets[] = {"/v2/p-1/config/7/SpaceConfig/version/3", "/v2/p-1/config/7/GridConfig/version/3",
                                   "/v2/p-1/config/7/Coordinate/version/3"};
    for (int type = 3; type <= 5; ++type) {
        server.expect("GET", targets[type - 3]).reply(200, oneConfig);
        EXPECT_TRUE(project->GetProjectItemConfig(config, L"7", static_cast<ConfigType>(type), 3, error)) << type;
        expectConfig(config, static_cast<ConfigType>(type), L"scope-7", 3, L"{\"a\":1}", L"b", L"c");
    }
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, theVersionGoesOutInDecimalWithItsSign)
{
    server.expect("GET", "/v2/p-1/sub_item/7/version/-2147483648").reply(200, oneItem);
    server.expect("GET", "/v2/p-1/config/7/Coordinate/version/2147483647").reply(200, oneConfig);
    EXPECT_TRUE(project->GetProjectItemConfig(config, L"7", ConfigType::SubItem, std::numeric_limits<int>::min(), error));
    EXPECT_TRUE(project->GetProjectItemConfig(config, L"7", ConfigType::Coordinate, std::numeric_limits<int>::max(), error));
    expectQuiet();
}

TEST_F(BuildingItemReadWireTest, aVersionThatIsNoObjectIsAFailure)
{
    for (const char* body : {"{}", R"({"data":null})", R"({"data":[{"scopeEntityId":"7"}]})", R"({"data":true})", "[]", ""}) {
        expectUnusable("/v2/p-1/sub_item/7/version/3", body, L"E [ORLOSDK]Project::GetBuildingItem error!",
                       [&] { return project->GetProjectItemConfig(config, L"7", ConfigType::SubItem, 3, error); });
        expectUnusable("/v2/p-1/config/7/GridConfig/version/3", body, L"E [ORLOSDK]Project::GetProjectItemConfig error!",
                       [&] { return project->GetProjectItemConfig(config, L"7", ConfigType::ItemGridConfig, 3, error); });
        expectBefore(config);
    }
}

TEST_F(BuildingItemReadWireTest, aVersionOfAnItemFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation read{"GET", "/v2/p-1/sub_item/7/version/3", "", L"Project::GetBuildingItem - code:",
                             [&](ErrorCode& ec) { return project->GetProjectItemConfig(config, L"7", ConfigType::SubItem, 3, ec); }};
    read.afterwards = L"E [ORLOSDK]Project::GetBuildingItem error!";
    read.operationName = L"orlo::Project::GetProjectItemConfig";
    read.goodAnswer = oneItem;
    expectFailuresOf(read, server, log);
    expectBefore(config);
    expectSuccessAtLast(read, server, log);
}

TEST_F(BuildingItemReadWireTest, aVersionOfAConfigurationFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation read{
        "GET", "/v2/p-1/config/7/SpaceConfig/version/3", "", L"Project::GetProjectItemConfig - code:",
        [&](ErrorCode& ec) { return project->GetProjectItemConfig(config, L"7", ConfigType::ItemElevationSet, 3, ec); }};
    read.afterwards = L"E [ORLOSDK]Project::GetProjectItemConfig error!";
    read.operationName = L"orlo::Project::GetProjectItemConfig";
    read.goodAnswer = oneConfig;
    expectFailuresOf(read, server, log);
    expectBefore(config);
    expectSuccessAtLast(read, server, log);
}

TEST_F(BuildingItemReadWireTest, theShortFormOfAVersionGivesTheSame)
{
    server.expect("GET", "/v2/p-1/config/7/Coordinate/version/3").reply(200, oneConfig);
    server.expect("GET", "/v2/p-1/config/7/Coordinate/version/3").reply(404);
    EXPECT_TRUE(project->GetProjectItemConfig(config, L"7", ConfigType::Coordinate, 3));
    EXPECT_EQ(config.version, 3);
    EXPECT_FALSE(project->GetProjectItemConfig(config, L"7", ConfigType::Coordinate, 3));
}

// All of them

TEST_F(BuildingItemReadWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    for (const std::wstring& id : {std::wstring(L"楼"), std::wstring(L"7 8"), std::wstring(L"7\0008", 3)}) {
        error.Clear();
        EXPECT_FALSE(project->GetProjectItemConfig(config, id, ConfigType::SubItem, 3, error));
        EXPECT_EQ(error.GetValue(), exceptionValue);
        EXPECT_FALSE(projectOf(id)->GetBuildingItems(items, 3));
        EXPECT_FALSE(projectOf(id)->GetLatestBuildingItems(items, revision));
    }
    expectBefore(config);
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(BuildingItemReadWireTest, anEmptyIdGoesOutAsItStands)
{
    server.expect("GET", "/v2/p-1/sub_item//latest").reply(404, "no such item");
    EXPECT_FALSE(project->GetLatestProjectItemConfig(config, L"", ConfigType::SubItem, error));
    expectHttpError(error, errorStatusValue, L"HttpError", L"no such item", 404);
    expectBefore(config);
}

TEST_F(BuildingItemReadWireTest, anErrorOnEntryIsLoggedAndWiped)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", latestItems).reply(200, twoItems);
    EXPECT_TRUE(project->GetLatestBuildingItems(items, revision, error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetLatestBuildingItems 传入的ErrorCode，已有错误存在:earlier"});
}

} // namespace
} // namespace orlo::test
