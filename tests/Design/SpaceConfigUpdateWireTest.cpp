#include "CallerTree.h"
#include "support/WireTest.h"

#include <BaseCommon/NativeText.h>
#include <OrloProjectManager/Design/ISpaceConfig.h>
#include <OrloProjectManager/NetworkProject/Design/ConfigWeb.h>
#include <OrloProjectManager/Projects/Project.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using HttpClient::updateSpaceConfig;

constexpr const char* configOfProject = "/config/scope/Project/p-1/type/SpaceConfig";

class SpaceConfigUpdateWireTest : public WireTest
{};

TEST_F(SpaceConfigUpdateWireTest, sendsTheCallersTextAsItStands)
{
    const std::string text =
        R"({ "schemaVersion":1, "appKey":"BIM-MODEL",  "data":[{"id":"1","spaceName":"场地 🏗 \u4e2d\/"}], "b":1.50, "a":[ ] })";
    server.expect("POST", configOfProject).body(text).reply(200);
    EXPECT_TRUE(updateSpaceConfig(utils::toWstring(text), L"p-1"));
    EXPECT_EQ(log.lines(), Lines{});
    ASSERT_EQ(server.requestCount(), 1u);
    EXPECT_EQ(server.requests()[0].header("Content-Type"), "application/json; charset=utf-8");
}

TEST_F(SpaceConfigUpdateWireTest, sendsWhatWasWrittenFromATree)
{
    CallerTree tree;
    tree.addRoot(L"s", SpaceType::Site).name = L"场地";
    server.expect("POST", configOfProject)
        .body(
            R"({"appKey":"BIM-MODEL","data":[{"attachValues":{"ArchitectureLevel":"","StructureLevel":""},"id":"s","spaceDescription":"",)"
            R"("spaceName":"场地","spaceType":"Site"}],"schemaKey":"SpaceConfig","schemaVersion":1})")
        .reply(200);
    EXPECT_TRUE(updateSpaceConfig(HttpClient::stringifySpaceConfig(tree.shared()), L"p-1"));
}

TEST_F(SpaceConfigUpdateWireTest, looksAtTheStatusAlone)
{
    for (const char* body : {"", "<html>", R"({"code":1,"message":"no"})"}) {
        server.expect("POST", configOfProject).body("{}").reply(200, body);
        EXPECT_TRUE(updateSpaceConfig(L"{}", L"p-1")) << body;
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceConfigUpdateWireTest, anotherStatusIsLogged)
{
    for (const int status : {201, 204, 301, 404}) {
        log.clear();
        server.expect("POST", configOfProject).body("{}").reply(status, "x");
        EXPECT_FALSE(updateSpaceConfig(L"{}", L"p-1"));
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::UpdateSpaceConfig - code:" + std::to_wstring(status)});
    }
}

TEST_F(SpaceConfigUpdateWireTest, isNotRetried)
{
    server.expect("POST", configOfProject).body("{}").reply(503, "busy");
    EXPECT_FALSE(updateSpaceConfig(L"{}", L"p-1"));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::UpdateSpaceConfig - code:503"});
    server.expect("POST", configOfProject).body("{}").reset();
    EXPECT_FALSE(updateSpaceConfig(L"{}", L"p-1"));
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(SpaceConfigUpdateWireTest, aFailureOfTheTransportIsNotLogged)
{
    moveServices(host, closedAddress);
    EXPECT_FALSE(updateSpaceConfig(L"{}", L"p-1"));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceConfigUpdateWireTest, anEmptyTextIsRefused)
{
    EXPECT_FALSE(updateSpaceConfig(L"", L"p-1"));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateSpaceConfig()未正常执行：spSpaceConfig为空"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigUpdateWireTest, anEmptyProjectIdIsRefused)
{
    EXPECT_FALSE(updateSpaceConfig(L"{}", L""));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateSpaceConfig()未正常执行：projectId为空"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigUpdateWireTest, theTextIsTestedFirst)
{
    EXPECT_FALSE(updateSpaceConfig(L"", L""));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateSpaceConfig()未正常执行：spSpaceConfig为空"});
}

TEST_F(SpaceConfigUpdateWireTest, aRefusalLeavesTheErrorCodeAlone)
{
    EXPECT_FALSE(OrloWebService::UpdateSpaceConfig(error, L"", L"p-1"));
    EXPECT_FALSE(OrloWebService::UpdateSpaceConfig(error, L"{}", L""));
    expectClear(error);
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    EXPECT_FALSE(OrloWebService::UpdateSpaceConfig(error, L"", L"p-1"));
    expectGenericError(error, badInputValue, L"GenericError", L"earlier");
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigUpdateWireTest, aTextThatIsNoJsonIsAnExceptionAndSendsNothing)
{
    for (const wchar_t* text : {L" ", L"{", L"{}}", L"{\"a\":}", L"text", L"[1,]", L"{'a':1}"}) {
        log.clear();
        EXPECT_FALSE(updateSpaceConfig(text, L"p-1")) << text;
        ASSERT_EQ(log.lines().size(), 1u) << text;
        const std::wstring head = L"E@orlo::HttpClient::updateSpaceConfig [END_API_IMPLEMENTATION][A generic exception caught] message[";
        EXPECT_EQ(log.lines()[0].substr(0, head.size()), head) << text;
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigUpdateWireTest, aTextThatIsNestedTooDeeplyIsAnExceptionAndSendsNothing)
{
    CallerTree tree;
    CallerNode* node = &tree.addRoot(L"n");
    for (int i = 0; i < 5000; ++i)
        node = &tree.addChild(*node, L"n");
    const std::wstring text = HttpClient::stringifySpaceConfig(tree.shared());
    ASSERT_NE(text, L"");
    EXPECT_FALSE(updateSpaceConfig(text, L"p-1"));
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigUpdateWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    EXPECT_FALSE(updateSpaceConfig(L"{}", L"p 1"));
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigUpdateWireTest, aProjectReadsBackTheDefaultDocumentThatWasStored)
{
    server.expect("POST", configOfProject).anyBody().reply(200);
    ASSERT_TRUE(OrloWebService::AddDefaultSpaceConfig(error, L"p-1"));
    web::json::value answer;
    answer[utils::toNative(std::string("scopeEntityId"))] = web::json::value::string(utils::toNative(std::string("p-1")));
    answer[utils::toNative(std::string("version"))] = web::json::value::number(1);
    answer[utils::toNative(std::string("configValue"))] = web::json::value::string(utils::toNative(server.requests()[0].body));
    server.expect("GET", "/config/scope/Project/p-1/type/SpaceConfig?version=1").reply(200, utils::fromNativeToUtf8(answer.serialize()));

    Project project(L"p-1", L"", L"", L"", ProjectStatus{}, ProjectGridType{}, 0);
    const auto config = static_cast<ICollaborationProject&>(project).GetSpaceConfig(1, error);
    ASSERT_NE(config, nullptr);
    const wchar_t* const names[] = {L"未命名场地", L"未命名楼栋", L"未命名区域", L"建筑未命名楼层"};
    const auto* level = &config->GetItems();
    for (int type = 0; type < 4; ++type) {
        ASSERT_EQ(level->size(), 1u) << type;
        const ISpaceConfigItem& node = *level->front();
        EXPECT_EQ(static_cast<int>(node.GetType()), type);
        EXPECT_EQ(node.GetName(), names[type]);
        EXPECT_EQ(node.GetArchitectureLevel(), type == 3 ? L"0.000" : L"");
        EXPECT_EQ(node.GetStructureLevel(), type == 3 ? L"-0.050" : L"");
        level = &node.GetSubSpaces();
    }
    EXPECT_TRUE(level->empty());
}

} // namespace
} // namespace orlo::test
