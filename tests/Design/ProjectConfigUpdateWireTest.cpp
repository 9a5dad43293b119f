#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/NetworkProject/Design/ConfigWeb.h>

#include <cpprest/json.h>
#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using OrloWebService::UpdateProjectConfig;

constexpr ConfigType grid = static_cast<ConfigType>(1);

class ProjectConfigUpdateWireTest : public WireTest
{};

TEST_F(ProjectConfigUpdateWireTest, sendsTheContentAsItStands)
{
    const std::string content = R"({"z":1, "a":"轴网"})";
    server.expect("POST", "/config/scope/Project/p-1/type/GridConfig").body(content).reply(200, "<html>", "text/html");
    EXPECT_TRUE(UpdateProjectConfig(error, utils::toWstring(content), L"p-1", grid));
    expectQuiet();
}

TEST_F(ProjectConfigUpdateWireTest, everyKindHasItsAddress)
{
    const char* const targets[] = {"/config/scope/Project/p-1/type/SpaceConfig",
                                   "/config/scope/Project/p-1/type/GridConfig",
                                   "/config/scope/Project/p-1/type/SubItem",
                                   "/config/scope/Project/p-1/type/SpaceConfig",
                                   "/config/scope/Project/p-1/type/GridConfig",
                                   "/config/scope/Project/p-1/type/Coordinate",
                                   "/config/scope/Project/p-1/type/"};
    for (int type = 0; type < 7; ++type) {
        server.expect("POST", targets[type]).body("[]").reply(200);
        EXPECT_TRUE(UpdateProjectConfig(error, L"[]", L"p-1", static_cast<ConfigType>(type))) << type;
    }
}

TEST_F(ProjectConfigUpdateWireTest, anotherStatusFailsInSilence)
{
    for (const int status : {201, 204, 302}) {
        server.expect("POST", "/config/scope/Project/p-1/type/GridConfig").body("{}").reply(status);
        EXPECT_FALSE(UpdateProjectConfig(error, L"{}", L"p-1", grid)) << status;
        expectClear(error);
    }
    server.expect("POST", "/config/scope/Project/p-1/type/GridConfig").body("{}").reply(500, "broken");
    EXPECT_FALSE(UpdateProjectConfig(error, L"{}", L"p-1", grid));
    expectHttpError(error, errorStatusValue, L"HttpError", L"broken", 500);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectConfigUpdateWireTest, anEmptyContentIsRefused)
{
    EXPECT_FALSE(UpdateProjectConfig(error, L"", L"p-1", grid));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateProjectConfig未正常执行：configContent为空"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ProjectConfigUpdateWireTest, anEmptyProjectIdIsRefused)
{
    EXPECT_FALSE(UpdateProjectConfig(error, L"{}", L"", grid));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateProjectConfig未正常执行：projectId为空"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ProjectConfigUpdateWireTest, theContentIsTestedFirst)
{
    EXPECT_FALSE(UpdateProjectConfig(error, L"", L"", grid));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateProjectConfig未正常执行：configContent为空"});
}

TEST_F(ProjectConfigUpdateWireTest, aRefusalLeavesTheErrorCodeAlone)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    EXPECT_FALSE(UpdateProjectConfig(error, L"", L"p-1", grid));
    EXPECT_FALSE(UpdateProjectConfig(error, L"{}", L"", grid));
    expectGenericError(error, badInputValue, L"GenericError", L"earlier");
}

TEST_F(ProjectConfigUpdateWireTest, aContentThatIsNoJsonThrowsAndSendsNothing)
{
    for (const wchar_t* content : {L"{", L"text", L"{}x"})
        EXPECT_THROW(UpdateProjectConfig(error, content, L"p-1", grid), web::json::json_exception) << content;
    EXPECT_EQ(server.connectionCount(), 0u);
}

} // namespace
} // namespace orlo::test
