#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

constexpr const char* spaceConfig = "/config/scope/Project/p1/type/SpaceConfig";

class ConfigRoutes : public PlatformTest
{
protected:
    ConfigRoutes() { project("p1"); }
};

TEST_F(ConfigRoutes, EveryWriteAddsAVersionAndKeepsTheOlderOnes)
{
    EXPECT_THAT(demo().post(spaceConfig, R"({"schemaVersion":1, "appKey":"BIM-MODEL"})").body,
                IsJson(R"({"id":"<id>","scopeEntityId":"p1","version":1})"));
    EXPECT_THAT(demo().post(spaceConfig, R"({"说":"明"})").body, IsJson(R"({"id":"<id>","scopeEntityId":"p1","version":2})"));
    EXPECT_THAT(demo().get(std::string(spaceConfig) + "/versions").body, IsJson("[1,2]"));
    EXPECT_THAT(
        demo().get(std::string(spaceConfig) + "?version=1").body,
        IsJson(R"({"id":"<id>","scopeEntityId":"p1","version":1,"configValue":"{\"schemaVersion\":1, \"appKey\":\"BIM-MODEL\"}"})"));
    EXPECT_THAT(demo().get(std::string(spaceConfig) + "?version=-1").body,
                IsJson(R"({"id":"<id>","scopeEntityId":"p1","version":2,"configValue":"{\"说\":\"明\"}"})"));
}

TEST_F(ConfigRoutes, TypesAreKeptApart)
{
    demo().post(spaceConfig, "{}");
    EXPECT_THAT(demo().get("/config/scope/Project/p1/type/GridConfig/versions").body, IsJson("[]"));
    EXPECT_THAT(demo().post("/config/scope/Project/p1/type/GridConfig", "{}").body,
                IsJson(R"({"id":"<id>","scopeEntityId":"p1","version":1})"));
}

TEST_F(ConfigRoutes, WhatIsNotThereOrNotAllowedIsRefused)
{
    EXPECT_THAT(demo().get(std::string(spaceConfig) + "?version=-1").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().get(std::string(spaceConfig) + "?version=3").status, 404);
    EXPECT_EQ(demo().get(std::string(spaceConfig) + "?version=last").status, 400);
    EXPECT_EQ(demo().get(spaceConfig).status, 400);
    EXPECT_EQ(demo().post(spaceConfig, "[]").status, 400);
    EXPECT_EQ(demo().post(spaceConfig, "{\"a\":").status, 400);
    EXPECT_EQ(demo().post("/config/scope/Project/none/type/SpaceConfig", "{}").status, 404);
    EXPECT_EQ(demo().post("/config/scope/Project/p1/type/Unknown", "{}").status, 400);
    EXPECT_EQ(demo().get("/config/scope/Team/p1/type/SpaceConfig?version=1").status, 404);
    EXPECT_THAT(demo().get(std::string(spaceConfig) + "/versions").body, IsJson("[]"));
}

TEST_F(ConfigRoutes, NumbersOfAnyLengthAreTakenUnlessNoDoubleCanHoldThem)
{
    for (const char* number : {"1.11111111111111111E-335", "0e67", "1.11111111111111111e-2147483639", "-0.0", "18446744073709551616"})
        EXPECT_EQ(demo().post(spaceConfig, "{\"a\":" + std::string(number) + "}").status, 200) << number;
    for (const char* number : {"1e999", "-1.7976931348623159e308", "01", "1.", "nan"})
        EXPECT_EQ(demo().post(spaceConfig, "{\"a\":" + std::string(number) + "}").status, 400) << number;
}

TEST_F(ConfigRoutes, TextThatIsNotOneJsonInUtf8IsRefused)
{
    for (const std::string& body : {std::string("{}\0{}", 5), std::string("{}\0", 3), std::string("{\"a\":\"\xF0"), std::string("{} \xC3")})
        EXPECT_EQ(demo().post(spaceConfig, body).status, 400) << body;
}

TEST_F(ConfigRoutes, WritingNeedsARightToWrite)
{
    const Caller second = other();
    EXPECT_EQ(second.post(spaceConfig, "{}").status, 403);
    platform.change(grantPermission, "p1", "second-account", "SpaceConfig", {"Read"});
    EXPECT_EQ(second.post(spaceConfig, "{}").status, 403);
    platform.change(grantPermission, "p1", "second-account", "SpaceConfig", {"Read", "Write"});
    EXPECT_EQ(second.post(spaceConfig, "{}").status, 200);
}

} // namespace
} // namespace orlo::platform::test
