#include "support/ProjectObjectTest.h"

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* bindTarget = "/design/config/data/bind";
constexpr const char* bindBody = R"({"configType":"SubItem","cfgId":"7","dataId":"d-1","projectId":"p-1"})";
constexpr const char* itemsOfDataset = "/design/config/data/by/design?dataId=d-1&projectId=p-1&type=SubItem";
constexpr const char* datasetsOfItem = "/design/config/data/by/cfg?cfgId=7&projectId=p-1&type=SubItem";
// Intended: both listings fail in these words.
const std::wstring listingFailed = L"E [ORLOSDK]Project::GetBuildingItemIdsByDatasetId error!";

using Ids = std::vector<std::wstring>;

class BuildingItemBindingWireTest : public ProjectObjectTest
{
protected:
    Ids ids{L"before"};
};

TEST_F(BuildingItemBindingWireTest, aDatasetIsBoundToAnItem)
{
    server.expect("POST", bindTarget).body(bindBody).times(2).reply(200, "<html>", "text/html");
    EXPECT_TRUE(project->AssociateDatasetAndBuildingItem(L"d-1", L"7", error));
    EXPECT_TRUE(project->AssociateDatasetAndBuildingItem(L"d-1", L"7"));
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, anyTextIsAnIdInABody)
{
    server.expect("POST", bindTarget).body(R"({"configType":"SubItem","cfgId":"","dataId":"数据\"1","projectId":"p-1"})").reply(200);
    EXPECT_TRUE(project->AssociateDatasetAndBuildingItem(L"数据\"1", L"", error));
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, bindingFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation bind{"POST", bindTarget, bindBody, L"Project::AssociateDatasetAndBuildingItem - code:",
                             [&](ErrorCode& ec) { return project->AssociateDatasetAndBuildingItem(L"d-1", L"7", ec); }};
    bind.afterwards = L"E [ORLOSDK]Project::AssociateDatasetAndBuildingItem error!";
    bind.operationName = L"orlo::Project::AssociateDatasetAndBuildingItem";
    bind.readsJson = false;
    expectFailuresOf(bind, server, log);
    expectSuccessAtLast(bind, server, log);
    server.expect("POST", bindTarget).body(bindBody).reply(404);
    EXPECT_FALSE(project->AssociateDatasetAndBuildingItem(L"d-1", L"7"));
}

TEST_F(BuildingItemBindingWireTest, theIdsOfItemsAreNumbersInDecimal)
{
    server.expect("GET", itemsOfDataset)
        .reply(200, R"({"data":[{"cfgId":7},{"cfgId":0},{"cfgId":-3},{"cfgId":4294967296},{"cfgId":9223372036854775807},{"cfgId":12.0}]})");
    EXPECT_TRUE(project->GetBuildingItemIdsByDatasetId(ids, L"d-1", error));
    EXPECT_EQ(ids, (Ids{L"before", L"7", L"0", L"-3", L"4294967296", L"9223372036854775807", L"12"}));
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, whatTellsNoItemIsLeftOut)
{
    server.expect("GET", itemsOfDataset).reply(200, R"({"data":[{"cfgId":"7"},{"cfgId":null},{"id":8},{},null,9,[1],{"cfgId":2}]})");
    EXPECT_TRUE(project->GetBuildingItemIdsByDatasetId(ids, L"d-1", error));
    EXPECT_EQ(ids, (Ids{L"before", L"2"}));
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, theIdsOfDatasetsAreTexts)
{
    server.expect("GET", datasetsOfItem).reply(200, R"({"data":[{"dataId":"d-2"},{"dataId":"数据"},{"dataId":""},{"dataId":"d-2"}]})");
    EXPECT_TRUE(project->GetDatasetIdsByBuildingItemId(ids, L"7", error));
    EXPECT_EQ(ids, (Ids{L"before", L"d-2", L"数据", L"", L"d-2"}));
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, whatTellsNoDatasetIsLeftOut)
{
    server.expect("GET", datasetsOfItem).reply(200, R"({"data":[{"dataId":7},{"dataId":null},{},null,"d-3",{"dataId":"d-2"}]})");
    EXPECT_TRUE(project->GetDatasetIdsByBuildingItemId(ids, L"7", error));
    EXPECT_EQ(ids, (Ids{L"before", L"d-2"}));
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, idsAreEncodedInAQuery)
{
    server.expect("GET", "/design/config/data/by/design?dataId=%E6%95%B0%20%26%3D%2B&projectId=p-1&type=SubItem")
        .reply(200, R"({"data":[]})");
    server.expect("GET", "/design/config/data/by/cfg?cfgId=&projectId=%E9%A1%B9&type=SubItem").reply(200, R"({"data":[]})");
    EXPECT_TRUE(project->GetBuildingItemIdsByDatasetId(ids, L"数 &=+", error));
    EXPECT_TRUE(projectOf(L"项")->GetDatasetIdsByBuildingItemId(ids, L"", error));
    EXPECT_EQ(ids, Ids{L"before"});
    expectQuiet();
}

TEST_F(BuildingItemBindingWireTest, bindingsThatAreNoArrayAreAFailureInTheSameWords)
{
    for (const char* body : {"{}", R"({"data":null})", R"({"data":{"cfgId":7,"dataId":"d"}})", R"({"data":7})", "[]", "null", ""}) {
        log.clear();
        server.expect("GET", itemsOfDataset).reply(200, body);
        EXPECT_FALSE(project->GetBuildingItemIdsByDatasetId(ids, L"d-1", error)) << body;
        server.expect("GET", datasetsOfItem).reply(200, body);
        EXPECT_FALSE(project->GetDatasetIdsByBuildingItemId(ids, L"7", error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), (Lines{listingFailed, listingFailed})) << body;
        EXPECT_EQ(ids, Ids{L"before"}) << body;
    }
}

TEST_F(BuildingItemBindingWireTest, theListingsFailAsEveryRetriedOperationDoes)
{
    RequestingOperation items{"GET", itemsOfDataset, "", L"Project::GetBuildingItemIdsByDatasetId - code:",
                              [&](ErrorCode& ec) { return project->GetBuildingItemIdsByDatasetId(ids, L"d-1", ec); }};
    items.afterwards = listingFailed;
    items.operationName = L"orlo::Project::GetBuildingItemIdsByDatasetId";
    items.goodAnswer = R"({"data":[{"cfgId":7}]})";
    expectFailuresOf(items, server, log);
    RequestingOperation datasets{"GET", datasetsOfItem, "", L"Project::GetDatasetIdsByBuildingItemId - code:",
                                 [&](ErrorCode& ec) { return project->GetDatasetIdsByBuildingItemId(ids, L"7", ec); }};
    datasets.afterwards = listingFailed;
    datasets.operationName = L"orlo::Project::GetDatasetIdsByBuildingItemId";
    datasets.goodAnswer = R"({"data":[{"dataId":"d-1"}]})";
    expectFailuresOf(datasets, server, log);
    EXPECT_EQ(ids, Ids{L"before"});
    expectSuccessAtLast(items, server, log);
    expectSuccessAtLast(datasets, server, log);
    EXPECT_EQ(ids, (Ids{L"before", L"7", L"d-1"}));
}

TEST_F(BuildingItemBindingWireTest, theShortFormsOfTheListingsGiveTheSame)
{
    server.expect("GET", itemsOfDataset).reply(200, R"({"data":[{"cfgId":7}]})");
    EXPECT_TRUE(project->GetBuildingItemIdsByDatasetId(ids, L"d-1"));
    server.expect("GET", datasetsOfItem).reply(200, R"({"data":[{"dataId":"d-1"}]})");
    EXPECT_TRUE(project->GetDatasetIdsByBuildingItemId(ids, L"7"));
    EXPECT_EQ(ids, (Ids{L"before", L"7", L"d-1"}));
    server.expect("GET", itemsOfDataset).reply(404);
    EXPECT_FALSE(project->GetBuildingItemIdsByDatasetId(ids, L"d-1"));
    server.expect("GET", datasetsOfItem).reply(404);
    EXPECT_FALSE(project->GetDatasetIdsByBuildingItemId(ids, L"7"));
}

} // namespace
} // namespace orlo::test
