#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>
#include <OrloProjectManager/Projects/Project.h>

#include <gtest/gtest.h>

#include <thread>

namespace orlo::test {
namespace {

constexpr const char* projectAddress = "/v2/projects/p-1";

using Properties = std::vector<ProjectStandardProperty>;

std::string projectWith(const std::string& properties)
{
    return R"({"code":10000,"data":{"id":"p-1","name":"n","standardProperties":)" + properties + "}}";
}

/// "id type value", one for each.
Lines told(const Properties& properties)
{
    Lines lines;
    for (const ProjectStandardProperty& property : properties)
        lines.push_back(utils::toWstring(property.propertyId) + L' ' + std::to_wstring(static_cast<int>(property.valueType)) + L' ' +
                        property.value);
    return lines;
}

class StandardPropertiesWireTest : public WireTest
{
protected:
    void SetUp() override { earlier[0].propertyId = "earlier"; }

    Project concrete{L"p-1", L"name", L"", L"", ProjectStatus{}, ProjectGridType{}, 0};
    ICollaborationProject& project = concrete;
    Properties earlier = Properties(1);
    Properties out;
};

TEST_F(StandardPropertiesWireTest, readsEveryTypeInTheOrderOfTheAnswer)
{
    server.expect("GET", projectAddress)
        .reply(200, projectWith(R"([{"propertyId":"a","valueType":"String","stringValue":"文本 🏢"},)"
                                R"({"propertyId":"b","valueType":"Integer","intValue":-7},)"
                                R"({"propertyId":"c","valueType":"Long","intValue":5000000000},)"
                                R"({"propertyId":"d","valueType":"Double","doubleValue":2.5},)"
                                R"({"propertyId":"e","valueType":"DateTime","stringValue":"2024-03-01T08:00:00Z"},)"
                                R"({"propertyId":"f","valueType":"Boolean","stringValue":"true"},)"
                                R"({"propertyId":"g","valueType":"Code","stringValue":"A-1"},)"
                                R"({"propertyId":"h","valueType":"Enum","stringValue":"x"},)"
                                R"({"propertyId":"i","valueType":"EnumValue","stringValue":"y"},)"
                                R"({"propertyId":"编号","valueType":"string","stringValue":"z"},{}])"));
    EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), (Lines{L"a 0 文本 🏢", L"b 1 -7", L"c 2 5000000000", L"d 3 2.500000", L"e 4 2024-03-01T08:00:00Z", L"f 5 true",
                                L"g 6 A-1", L"h 7 x", L"i 8 y", L"编号 -1 z", L" -1 "}));
    expectQuiet();
}

TEST_F(StandardPropertiesWireTest, aPropertyWithATextAndAnIntegerTakesTheInteger)
{
    server.expect("GET", projectAddress)
        .reply(200, projectWith(R"([{"propertyId":"a","valueType":"String","stringValue":"text","intValue":12},)"
                                R"({"propertyId":"b","valueType":"String","intValue":12,"stringValue":"text"},)"
                                R"({"propertyId":"c","valueType":"String","doubleValue":0.5,"intValue":12,"stringValue":"text"}])"));
    EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), (Lines{L"a 0 12", L"b 0 12", L"c 0 0.500000"}));
}

TEST_F(StandardPropertiesWireTest, aTypeOutsideTheTableReadsAsUnknown)
{
    server.expect("GET", projectAddress)
        .reply(200,
               projectWith(
                   R"([{"propertyId":"a","valueType":"Colour"},{"propertyId":"b","valueType":""},{"propertyId":"c","valueType":"DOUBLE"},)"
                   R"({"propertyId":"d","valueType":3},{"propertyId":"e"}])"));
    EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), (Lines{L"a -1 ", L"b -1 ", L"c -1 ", L"d -1 ", L"e -1 "}));
}

TEST_F(StandardPropertiesWireTest, theSecondCallOnOneObjectSendsNothing)
{
    server.expect("GET", projectAddress).reply(200, projectWith(R"([{"propertyId":"a","valueType":"Code","stringValue":"x"}])"));
    EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
    Properties second = earlier;
    EXPECT_TRUE(project.GetProjectStandardProperties(second, error));
    EXPECT_EQ(told(second), Lines{L"a 6 x"});
    Properties third = earlier;
    EXPECT_TRUE(project.GetProjectStandardProperties(third));
    EXPECT_EQ(told(third), Lines{L"a 6 x"});
    EXPECT_EQ(server.requestCount(), 1u);
}

TEST_F(StandardPropertiesWireTest, whatACallerDoesWithItsCopyDoesNotTouchTheObject)
{
    server.expect("GET", projectAddress).reply(200, projectWith(R"([{"propertyId":"a","valueType":"Code","stringValue":"x"}])"));
    EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
    out.front().value = L"changed";
    out.emplace_back();
    EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), Lines{L"a 6 x"});
}

TEST_F(StandardPropertiesWireTest, noPropertiesAreKeptToo)
{
    for (const char* body : {R"({"code":10000,"data":{"standardProperties":[]}})", R"({"code":10000,"data":{"id":"p-1"}})",
                             R"({"code":10000,"data":{"standardProperties":{"a":1}}})", R"({"code":10000})"}) {
        server.expect("GET", projectAddress).reply(200, body);
        Project fresh(L"p-1", L"", L"", L"", ProjectStatus{}, ProjectGridType{}, 0);
        out = earlier;
        EXPECT_TRUE(fresh.GetProjectStandardProperties(out, error)) << body;
        EXPECT_TRUE(out.empty()) << body;
        out = earlier;
        EXPECT_TRUE(fresh.GetProjectStandardProperties(out, error)) << body;
        EXPECT_TRUE(out.empty()) << body;
    }
    EXPECT_EQ(server.requestCount(), 4u);
}

TEST_F(StandardPropertiesWireTest, theReadFailsAsEveryRetriedOperationDoesLogsNoStatusAndKeepsNothing)
{
    out = earlier;
    RequestingOperation read{"GET", projectAddress, "", L"", [&](ErrorCode& ec) { return project.GetProjectStandardProperties(out, ec); }};
    read.goodAnswer = projectWith(R"([{"propertyId":"a"}])");
    expectFailuresOf(read, server, log);
    log.clear();
    for (const char* body : {R"({"code":1,"data":{"standardProperties":[]}})", R"({"data":{"standardProperties":[]}})", "[]", "null"}) {
        server.expect("GET", projectAddress).reply(200, body);
        EXPECT_FALSE(project.GetProjectStandardProperties(out, error)) << body;
        expectClear(error);
    }
    EXPECT_EQ(told(out), Lines{L"earlier -1 "});
    EXPECT_EQ(log.lines(), Lines{});
    expectSuccessAtLast(read, server, log);
    EXPECT_EQ(told(out), Lines{L"a -1 "});
}

TEST_F(StandardPropertiesWireTest, aLoadedProjectHasThemAlready)
{
    server.expect("GET", projectAddress).reply(200, projectWith(R"([{"propertyId":"a","valueType":"Integer","intValue":4}])"));
    const auto loaded = ICollaborationProject::Load(L"p-1", error);
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(loaded->GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), Lines{L"a 1 4"});
    EXPECT_EQ(server.requestCount(), 1u);
}

TEST_F(StandardPropertiesWireTest, aLoadedProjectWithoutAnySendsNothingEither)
{
    server.expect("GET", projectAddress).reply(200, R"({"code":10000,"data":{"name":"n"}})");
    const auto loaded = ICollaborationProject::Load(L"p-1", error);
    ASSERT_NE(loaded, nullptr);
    out = earlier;
    EXPECT_TRUE(loaded->GetProjectStandardProperties(out, error));
    EXPECT_TRUE(out.empty());
}

TEST_F(StandardPropertiesWireTest, aListedProjectReadsThemOnce)
{
    server.expect("GET", "/projects?scenario=DEFAULT").reply(200, R"([{"id":"p-1","standardProperties":[{"propertyId":"listed"}]}])");
    server.expect("GET", projectAddress).reply(200, projectWith(R"([{"propertyId":"read"}])"));
    const auto listed = ICollaborationProjectManager::Get()->GetAllProjects(error);
    ASSERT_EQ(listed.size(), 1u);
    for (int call = 0; call < 2; ++call) {
        EXPECT_TRUE(listed[0]->GetProjectStandardProperties(out, error));
        EXPECT_EQ(told(out), Lines{L"read -1 "});
    }
}

TEST_F(StandardPropertiesWireTest, aChangeOnTheServerIsSeenByAProjectThatIsLoadedAfterwards)
{
    server.expect("GET", projectAddress).reply(200, projectWith(R"([{"propertyId":"old"}])"));
    server.expect("GET", projectAddress).reply(200, projectWith(R"([{"propertyId":"new"}])"));
    const auto first = ICollaborationProject::Load(L"p-1", error);
    const auto second = ICollaborationProject::Load(L"p-1", error);
    EXPECT_TRUE(first->GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), Lines{L"old -1 "});
    EXPECT_TRUE(second->GetProjectStandardProperties(out, error));
    EXPECT_EQ(told(out), Lines{L"new -1 "});
}

TEST_F(StandardPropertiesWireTest, twoFirstCallsAtOnceBothReadAndOneAnswerIsKept)
{
    // Neither is answered before both have come.
    server.expect("GET", projectAddress).times(2).replyWith([this](const Request&) {
        EXPECT_TRUE(server.waitForRequests(2));
        Reply reply;
        reply.body = projectWith(R"([{"propertyId":"a","valueType":"Long","intValue":9}])");
        return reply;
    });
    const auto call = [this] {
        Properties mine;
        ErrorCode code;
        EXPECT_TRUE(project.GetProjectStandardProperties(mine, code));
        EXPECT_EQ(told(mine), Lines{L"a 2 9"});
        EXPECT_TRUE(project.GetProjectStandardProperties(mine, code));
        EXPECT_EQ(told(mine), Lines{L"a 2 9"});
    };
    std::thread first(call);
    std::thread second(call);
    first.join();
    second.join();
    EXPECT_EQ(server.requestCount(), 2u);
}

} // namespace
} // namespace orlo::test
