#include "support/ProjectObjectTest.h"

#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace orlo::test {
namespace {

constexpr const char* itemDocumentText =
    R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":{"z":1,"a":"楼","l":[1,2.5,null,true]}})";
const std::wstring itemContent = LR"( { "z" : 1, "a" : "楼", "l" : [1, 2.5, null, true] } )";
constexpr const char* gridDocumentText = R"({"appKey":"BIM-MODEL","schemaVersion":4,"schemaKey":"GridConfig","data":[]})";
constexpr const char* staleAnswer = R"({"code":40900,"message":"版本已过期","data":null})";

constexpr ConfigType itemElevations = static_cast<ConfigType>(3);
constexpr ConfigType itemGrid = static_cast<ConfigType>(4);
constexpr ConfigType itemCoordinate = static_cast<ConfigType>(5);

class BuildingItemWriteWireTest : public ProjectObjectTest
{
protected:
    using Write = std::function<bool(const std::wstring&)>;

    /// All that store a content, by the words with which they fail.
    std::vector<std::pair<std::wstring, Write>> writes()
    {
        return {
            {L"AddBuildingItem", [&](const std::wstring& content) { return project->AddBuildingItem(subItemId, 4, content, error); }},
            {L"UpdateBuildingItem", [&](const std::wstring& content) { return project->UpdateBuildingItem(4, L"7", content, error); }},
            {L"CreateProjectItemConfig",
             [&](const std::wstring& content) { return project->CreateProjectItemConfig(L"7", itemGrid, content, error); }},
            {L"UpdateProjectItemConfig",
             [&](const std::wstring& content) { return project->UpdateProjectItemConfig(L"7", itemGrid, 2, content, error); }},
        };
    }

    void expectRefusedEverywhere(const std::wstring& content, const std::string& about)
    {
        for (const auto& [name, write] : writes()) {
            log.clear();
            error.Clear();
            EXPECT_FALSE(write(content)) << about;
            expectGenericError(error, badInputValue, L"GenericError", L"the content can't be read as JSON");
            EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::" + name + L" error!"});
        }
        EXPECT_EQ(subItemId, L"before");
        EXPECT_EQ(server.connectionCount(), 0u) << about;
    }

    std::wstring subItemId = L"before";
    http::HttpMessage message{7, L"before"};
};

// Adding

TEST_F(BuildingItemWriteWireTest, anItemIsAddedInItsWrapper)
{
    server.expect("POST", "/v2/p-1/sub_item/4").body(itemDocumentText).reply(200, R"({"code":10000,"data":{"id":"9"}})");
    EXPECT_TRUE(project->AddBuildingItem(subItemId, 4, itemContent, error));
    EXPECT_EQ(subItemId, L"9");
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, theWrapperIsSentAsJson)
{
    server.expect("POST", "/v2/p-1/sub_item/4")
        .anyBody()
        .header("Content-Type", "application/json; charset=utf-8")
        .reply(200, R"({"data":{"id":"9"}})");
    EXPECT_TRUE(project->AddBuildingItem(subItemId, 4, L"{}", error));
}

TEST_F(BuildingItemWriteWireTest, anAddedItemWithoutAnIdIsAFailure)
{
    for (const char* body : {"{}", R"({"data":null})", R"({"data":{}})", R"({"data":{"id":9}})", R"({"data":{"id":null}})",
                             R"({"data":[{"id":"9"}]})", R"({"data":"9"})", R"({"id":"9"})", "[]", ""}) {
        log.clear();
        server.expect("POST", "/v2/p-1/sub_item/4").body(itemDocumentText).reply(200, body);
        EXPECT_FALSE(project->AddBuildingItem(subItemId, 4, itemContent, error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::AddBuildingItem error!"});
        EXPECT_EQ(subItemId, L"before");
    }
}

TEST_F(BuildingItemWriteWireTest, addingFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation add{"POST", "/v2/p-1/sub_item/4", itemDocumentText, L"Project::AddBuildingItem - code:",
                            [&](ErrorCode& ec) { return project->AddBuildingItem(subItemId, 4, itemContent, ec); }};
    add.afterwards = L"E [ORLOSDK]Project::AddBuildingItem error!";
    add.operationName = L"orlo::Project::AddBuildingItem";
    add.goodAnswer = R"({"data":{"id":"9"}})";
    expectFailuresOf(add, server, log);
    EXPECT_EQ(subItemId, L"before");
    expectSuccessAtLast(add, server, log);
    EXPECT_EQ(subItemId, L"9");
}

TEST_F(BuildingItemWriteWireTest, theRevisionOfAWriterGoesOutInDecimalWithItsSign)
{
    server.expect("POST", "/v2/p-1/sub_item/-1").anyBody().reply(200, R"({"data":{"id":"9"}})");
    server.expect("PUT", "/v2/p-1/sub_item/7/2147483647").anyBody().reply(200);
    server.expect("DELETE", "/v2/p-1/sub_item/7/-2147483648").reply(200);
    EXPECT_TRUE(project->AddBuildingItem(subItemId, -1, L"{}", error));
    EXPECT_TRUE(project->UpdateBuildingItem(std::numeric_limits<int>::max(), L"7", L"{}", error));
    EXPECT_TRUE(project->DeleteBuildingItem(std::numeric_limits<int>::min(), L"7", error));
    expectQuiet();
}

// Changing and deleting

TEST_F(BuildingItemWriteWireTest, anItemIsUpdatedInItsWrapper)
{
    server.expect("PUT", "/v2/p-1/sub_item/7/4").body(itemDocumentText).reply(200, "<html>", "text/html");
    EXPECT_TRUE(project->UpdateBuildingItem(4, L"7", itemContent, error)) << "the status is all that counts";
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, updatingFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation update{"PUT", "/v2/p-1/sub_item/7/4", itemDocumentText, L"Project::UpdateBuildingItem - code:",
                               [&](ErrorCode& ec) { return project->UpdateBuildingItem(4, L"7", itemContent, ec); }};
    update.afterwards = L"E [ORLOSDK]Project::UpdateBuildingItem error!";
    update.operationName = L"orlo::Project::UpdateBuildingItem";
    update.readsJson = false;
    expectFailuresOf(update, server, log);
    expectSuccessAtLast(update, server, log);
}

TEST_F(BuildingItemWriteWireTest, anItemIsDeletedWithoutABody)
{
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(200);
    EXPECT_TRUE(project->DeleteBuildingItem(4, L"7", error));
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, deletingFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation del{"DELETE", "/v2/p-1/sub_item/7/4", "", L"Project::DeleteBuildingItem - code:",
                            [&](ErrorCode& ec) { return project->DeleteBuildingItem(4, L"7", ec); }};
    del.afterwards = L"E [ORLOSDK]Project::DeleteBuildingItem error!";
    del.operationName = L"orlo::Project::DeleteBuildingItem";
    del.readsJson = false;
    expectFailuresOf(del, server, log);
    expectSuccessAtLast(del, server, log);
}

// Configurations

TEST_F(BuildingItemWriteWireTest, aConfigurationIsCreatedUnderOneTextAndWrappedUnderAnother)
{
    // Intended: an elevation set lies under "SpaceConfig", and grids have the schema version 4.
    server.expect("POST", "/v2/p-1/sub_item/7/config/type/SubItem")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":{}})")
        .reply(200);
    server.expect("POST", "/v2/p-1/sub_item/7/config/type/SpaceConfig")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"ElevationSet","data":{}})")
        .reply(200);
    server.expect("POST", "/v2/p-1/sub_item/7/config/type/GridConfig")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":4,"schemaKey":"GridConfig","data":{}})")
        .reply(200);
    server.expect("POST", "/v2/p-1/sub_item/7/config/type/Coordinate")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"Coordinate","data":{}})")
        .reply(200);
    for (int type = 2; type <= 5; ++type)
        EXPECT_TRUE(project->CreateProjectItemConfig(L"7", static_cast<ConfigType>(type), L"{}", error)) << type;
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, aTypeWithoutAWrapperIsCreatedFromAnEmptyText)
{
    const char* const targets[] = {"/v2/p-1/sub_item/7/config/type/SpaceConfig", "/v2/p-1/sub_item/7/config/type/GridConfig",
                                   "/v2/p-1/sub_item/7/config/type/"};
    int row = 0;
    for (const int type : {0, 1, 6}) {
        server.expect("POST", targets[row++]).body("").reply(200);
        EXPECT_TRUE(project->CreateProjectItemConfig(L"7", static_cast<ConfigType>(type), L"{}", error)) << type;
    }
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, creatingFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation create{"POST", "/v2/p-1/sub_item/7/config/type/GridConfig", gridDocumentText,
                               L"Project::CreateProjectItemConfig - code:",
                               [&](ErrorCode& ec) { return project->CreateProjectItemConfig(L"7", itemGrid, L"[]", ec); }};
    create.afterwards = L"E [ORLOSDK]Project::CreateProjectItemConfig error!";
    create.operationName = L"orlo::Project::CreateProjectItemConfig";
    create.readsJson = false;
    expectFailuresOf(create, server, log);
    expectSuccessAtLast(create, server, log);
}

TEST_F(BuildingItemWriteWireTest, aConfigurationIsUpdatedInItsWrapper)
{
    server.expect("PUT", "/v2/p-1/config/subItem/7/type/SpaceConfig/version/2")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"ElevationSet","data":{}})")
        .reply(200);
    server.expect("PUT", "/v2/p-1/config/subItem/7/type/GridConfig/version/-2")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":4,"schemaKey":"GridConfig","data":{}})")
        .reply(200);
    server.expect("PUT", "/v2/p-1/config/subItem/7/type/Coordinate/version/2147483647")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"Coordinate","data":{}})")
        .reply(200);
    EXPECT_TRUE(project->UpdateProjectItemConfig(L"7", itemElevations, 2, L"{}", error));
    EXPECT_TRUE(project->UpdateProjectItemConfig(L"7", itemGrid, -2, L"{}", error));
    EXPECT_TRUE(project->UpdateProjectItemConfig(L"7", itemCoordinate, std::numeric_limits<int>::max(), L"{}", error));
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, anUpdateOfAnItemOrAProjectsConfigurationIsRefused)
{
    for (const int type : {2, 1, 0, -1, std::numeric_limits<int>::min()}) {
        log.clear();
        error.Clear();
        EXPECT_FALSE(project->UpdateProjectItemConfig(L"7", static_cast<ConfigType>(type), 2, L"{}", error)) << type;
        expectGenericError(error, badInputValue, L"GenericError", L"UpdateProjectItemConfig::参数输入有误");
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::UpdateProjectItemConfig error!"});
    }
    error.Clear();
    EXPECT_FALSE(project->UpdateProjectItemConfig(L"7", ConfigType::SubItem, 2, L"no JSON", error)) << "the type is looked at first";
    expectGenericError(error, badInputValue, L"GenericError", L"UpdateProjectItemConfig::参数输入有误");
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(BuildingItemWriteWireTest, updatingAConfigurationFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation update{"PUT", "/v2/p-1/config/subItem/7/type/GridConfig/version/2", gridDocumentText,
                               L"Project::UpdateProjectItemConfig - code:",
                               [&](ErrorCode& ec) { return project->UpdateProjectItemConfig(L"7", itemGrid, 2, L"[]", ec); }};
    update.afterwards = L"E [ORLOSDK]Project::UpdateProjectItemConfig error!";
    update.operationName = L"orlo::Project::UpdateProjectItemConfig";
    update.readsJson = false;
    expectFailuresOf(update, server, log);
    expectSuccessAtLast(update, server, log);
}

// Contents

TEST_F(BuildingItemWriteWireTest, aContentThatIsNoJsonIsRefusedAndSendsNothing)
{
    for (const std::wstring& content :
         {std::wstring(), std::wstring(L" "), std::wstring(L"{"), std::wstring(L"{}x"), std::wstring(L"text"), std::wstring(L"{'a':1}"),
          std::wstring(L"{\"a\":1e999}"), std::wstring(L"{}\0{}", 5), std::wstring(L"\xFEFF{}")})
        expectRefusedEverywhere(content, utils::toString(content));
}

TEST_F(BuildingItemWriteWireTest, aContentThatIsNestedTooDeeplyIsRefusedAndSendsNothing)
{
    for (const std::size_t depth : {1001u, 200000u})
        expectRefusedEverywhere(std::wstring(depth, L'[') + std::wstring(depth, L']'), "nested");
}

TEST_F(BuildingItemWriteWireTest, aContentThatIsNestedAThousandTimesGoesOut)
{
    const std::string nested = std::string(1000, '[') + std::string(1000, ']');
    server.expect("PUT", "/v2/p-1/sub_item/7/4")
        .body(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":)" + nested + "}")
        .reply(200);
    EXPECT_TRUE(project->UpdateBuildingItem(4, L"7", utils::toWstring(nested), error));
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, anyJsonIsAContentAndKeepsItsOrderAndItsNumbers)
{
    for (const char* content : {"null", "7", "\"text\"", "[]", R"({"b":1,"a":2,"b":3})", "[18446744073709551615,-9223372036854775808,0.1]",
                                R"({"schemaKey":"other","data":{"data":"\u0001\"\\😀"}})"}) {
        server.expect("PUT", "/v2/p-1/sub_item/7/4")
            .body(std::string(R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SubItem","data":)") + content + "}")
            .reply(200);
        EXPECT_TRUE(project->UpdateBuildingItem(4, L"7", utils::toWstring(std::string(content)), error)) << content;
    }
    expectQuiet();
}

// The forms that tell the platform's words

TEST_F(BuildingItemWriteWireTest, theWordsAboutAStaleRevisionAreHandedOver)
{
    const auto expectWords = [&](bool done) {
        EXPECT_FALSE(done);
        EXPECT_EQ(message.code, 40900);
        EXPECT_EQ(message.message, L"版本已过期");
        message = {7, L"before"};
    };
    server.expect("POST", "/v2/p-1/sub_item/4").body(itemDocumentText).reply(409, staleAnswer);
    expectWords(project->AddBuildingItem(message, subItemId, 4, itemContent));
    server.expect("PUT", "/v2/p-1/sub_item/7/4").body(itemDocumentText).reply(409, staleAnswer);
    expectWords(project->UpdateBuildingItem(message, 4, L"7", itemContent));
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(409, staleAnswer);
    expectWords(project->DeleteBuildingItem(message, 4, L"7"));
    server.expect("POST", "/v2/p-1/sub_item/7/config/type/GridConfig").body(gridDocumentText).reply(409, staleAnswer);
    expectWords(project->CreateProjectItemConfig(message, L"7", itemGrid, L"[]"));
    server.expect("PUT", "/v2/p-1/config/subItem/7/type/GridConfig/version/2").body(gridDocumentText).reply(409, staleAnswer);
    expectWords(project->UpdateProjectItemConfig(message, L"7", itemGrid, 2, L"[]"));
    EXPECT_EQ(subItemId, L"before");
}

TEST_F(BuildingItemWriteWireTest, aSuccessHasNoWords)
{
    const auto expectDone = [&](bool done) {
        EXPECT_TRUE(done);
        EXPECT_EQ(message.code, 7);
        EXPECT_EQ(message.message, L"before");
    };
    server.expect("POST", "/v2/p-1/sub_item/4").body(itemDocumentText).reply(200, R"({"code":1,"message":"x","data":{"id":"9"}})");
    expectDone(project->AddBuildingItem(message, subItemId, 4, itemContent));
    EXPECT_EQ(subItemId, L"9");
    server.expect("PUT", "/v2/p-1/sub_item/7/4").body(itemDocumentText).reply(200);
    expectDone(project->UpdateBuildingItem(message, 4, L"7", itemContent));
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(200);
    expectDone(project->DeleteBuildingItem(message, 4, L"7"));
    server.expect("POST", "/v2/p-1/sub_item/7/config/type/GridConfig").body(gridDocumentText).reply(200);
    expectDone(project->CreateProjectItemConfig(message, L"7", itemGrid, L"[]"));
    server.expect("PUT", "/v2/p-1/config/subItem/7/type/GridConfig/version/2").body(gridDocumentText).reply(200);
    expectDone(project->UpdateProjectItemConfig(message, L"7", itemGrid, 2, L"[]"));
    expectQuiet();
}

TEST_F(BuildingItemWriteWireTest, aFailureWithoutWordsLeavesTheMessageAlone)
{
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(404, "<html>");
    EXPECT_FALSE(project->DeleteBuildingItem(message, 4, L"7"));
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(204);
    EXPECT_FALSE(project->DeleteBuildingItem(message, 4, L"7"));
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").times(4).reset();
    EXPECT_FALSE(project->DeleteBuildingItem(message, 4, L"7"));
    EXPECT_FALSE(project->UpdateBuildingItem(message, 4, L"7", L"no JSON"));
    EXPECT_EQ(message.code, 7);
    EXPECT_EQ(message.message, L"before");
}

TEST_F(BuildingItemWriteWireTest, theWordsOfTheLastAttemptStand)
{
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(503, R"({"code":50300,"message":"busy"})");
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(409, staleAnswer);
    EXPECT_FALSE(project->DeleteBuildingItem(message, 4, L"7"));
    EXPECT_EQ(message.code, 40900);
    EXPECT_EQ(message.message, L"版本已过期");
}

// All of them

TEST_F(BuildingItemWriteWireTest, aWriterWithAnIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    for (const std::wstring& id : {std::wstring(L"楼"), std::wstring(L"7 8"), std::wstring(L"7\0008", 3)}) {
        error.Clear();
        EXPECT_FALSE(project->DeleteBuildingItem(4, id, error));
        EXPECT_EQ(error.GetValue(), exceptionValue);
        error.Clear();
        EXPECT_FALSE(project->CreateProjectItemConfig(id, itemGrid, L"[]", error));
        EXPECT_EQ(error.GetValue(), exceptionValue);
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(BuildingItemWriteWireTest, anEmptyIdOfAWriterGoesOutAsItStands)
{
    server.expect("DELETE", "/v2/p-1/sub_item//4").reply(404, "no such item");
    EXPECT_FALSE(project->DeleteBuildingItem(4, L"", error));
    expectHttpError(error, errorStatusValue, L"HttpError", L"no such item", 404);
}

TEST_F(BuildingItemWriteWireTest, anEarlierErrorOfAWriterIsLoggedAndWiped)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("DELETE", "/v2/p-1/sub_item/7/4").reply(200);
    EXPECT_TRUE(project->DeleteBuildingItem(4, L"7", error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::DeleteBuildingItem 传入的ErrorCode，已有错误存在:earlier"});
}

} // namespace
} // namespace orlo::test
