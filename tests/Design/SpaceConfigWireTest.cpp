#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Design/ISpaceConfig.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/Project.h>

#include <gtest/gtest.h>

#include <limits>

namespace orlo::test {
namespace {

constexpr const char* version3 = "/config/scope/Project/p-1/type/SpaceConfig?version=3";
constexpr const char* versions = "/config/scope/Project/p-1/type/SpaceConfig/versions";
constexpr const char* answer3 =
    R"({"version":3,"scopeEntityId":"p-1","configValue":"{\"appKey\":\"BIM-MODEL\",\"schemaVersion\":1,\"schemaKey\":\"SpaceConfig\",)"
    R"(\"data\":[{\"id\":\"s\",\"spaceName\":\"场地\",\"spaceType\":\"Site\",\"spaceDescription\":\"\",\"subSpaces\":[{\"id\":\"b\",)"
    R"(\"spaceName\":\"\",\"spaceType\":\"Building\"}]}]}"})";

class SpaceConfigWireTest : public WireTest
{
protected:
    static std::shared_ptr<ICollaborationProject> projectOf(const std::wstring& id)
    {
        return std::make_shared<Project>(id, L"name", L"", L"", ProjectStatus{}, ProjectGridType{}, 0);
    }

    /// The answer is bad; the call fails with an exception and the given beginning of its one log line.
    void expectNoConfig(const std::string& body, const std::wstring& name, const std::wstring& line)
    {
        log.clear();
        error.Clear();
        server.expect("GET", version3).reply(200, body);
        EXPECT_EQ(project->GetSpaceConfig(3, error), nullptr) << body;
        EXPECT_EQ(error.GetValue(), exceptionValue) << body;
        const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
        ASSERT_NE(failure, nullptr) << body;
        EXPECT_EQ(failure->GetName(), name) << body;
        EXPECT_EQ(failure->GetCode(), 5555) << body;
        ASSERT_EQ(log.lines().size(), 1u) << body;
        EXPECT_EQ(log.lines()[0], line + L" message[" + failure->GetErrorMessage() + L"]") << body;
    }
    void expectRefusedByTheFrame(const std::string& body)
    {
        expectNoConfig(body, L"HttpError", L"E@orlo::Project::GetSpaceConfig [END_API_IMPLEMENTATION][A generic exception caught]");
    }
    void expectRefusedByTheRetryLoop(const std::string& body)
    {
        expectNoConfig(
            body, L"generic exception",
            L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic exception caught:");
    }

    std::shared_ptr<ICollaborationProject> project = projectOf(L"p-1");
};

TEST_F(SpaceConfigWireTest, readsOneVersionAsAnObject)
{
    server.expect("GET", version3).reply(200, answer3);
    const auto config = project->GetSpaceConfig(3, error);
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->GetVersion(), 3);
    ASSERT_EQ(config->GetItems().size(), 1u);
    EXPECT_EQ(config->GetItems()[0]->GetName(), L"场地");
    ASSERT_EQ(config->GetItems()[0]->GetSubSpaces().size(), 1u);
    EXPECT_EQ(config->GetItems()[0]->GetSubSpaces()[0]->GetId(), L"b");
    expectQuiet();
}

TEST_F(SpaceConfigWireTest, theShortFormGivesTheSame)
{
    server.expect("GET", version3).reply(200, answer3);
    server.expect("GET", version3).reply(404, "gone");
    const auto config = project->GetSpaceConfig(3);
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->GetVersion(), 3);
    EXPECT_EQ(project->GetSpaceConfig(3), nullptr);
}

TEST_F(SpaceConfigWireTest, nothingIsCached)
{
    server.expect("GET", version3).times(2).reply(200, answer3);
    EXPECT_NE(project->GetSpaceConfig(3, error), project->GetSpaceConfig(3, error));
}

TEST_F(SpaceConfigWireTest, theVersionGoesOutInDecimalWithItsSign)
{
    server.expect("GET", "/config/scope/Project/p-1/type/SpaceConfig?version=-1").times(2).reply(200, answer3);
    server.expect("GET", "/config/scope/Project/p-1/type/SpaceConfig?version=0").reply(200, answer3);
    server.expect("GET", "/config/scope/Project/p-1/type/SpaceConfig?version=2147483647").reply(200, answer3);
    server.expect("GET", "/config/scope/Project/p-1/type/SpaceConfig?version=-2147483648").reply(200, answer3);
    std::wstring text;
    EXPECT_TRUE(project->GetSpaceConfig(-1, text, error));
    for (const int version : {-1, 0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const auto config = project->GetSpaceConfig(version, error);
        ASSERT_NE(config, nullptr);
        EXPECT_EQ(config->GetVersion(), 3) << "the version that was answered, not the one that was asked for";
    }
}

TEST_F(SpaceConfigWireTest, theTextIsTheWholeAnswer)
{
    server.expect("GET", version3).reply(200, R"( { "version" : 3, "scopeEntityId" : "p-1", "more" : [ null ],
        "configValue" : "{\"data\":[],\"a\":\"层\\n\"}" } )");
    std::wstring text = L"before";
    EXPECT_TRUE(project->GetSpaceConfig(3, text, error));
    EXPECT_EQ(text, LR"({"configValue":"{\"data\":[],\"a\":\"层\\n\"}","more":[null],"scopeEntityId":"p-1","version":3})");
    expectQuiet();
}

TEST_F(SpaceConfigWireTest, theTextIsNotLookedInto)
{
    for (const char* body : {"{}", "[1,\"x\"]", "7", "null", R"({"configValue":"{"})", R"({"scopeEntityId":7,"version":"x"})"}) {
        server.expect("GET", version3).reply(200, body);
        std::wstring text;
        EXPECT_TRUE(project->GetSpaceConfig(3, text, error)) << body;
        EXPECT_EQ(utils::toString(text), body);
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceConfigWireTest, bothFormsFailAsEveryRetriedOperationDoes)
{
    RequestingOperation read{"GET", version3, "", L"Project::GetSpaceConfig - code:",
                             [&](ErrorCode& ec) { return project->GetSpaceConfig(3, ec) != nullptr; }};
    read.goodAnswer = answer3;
    expectFailuresOf(read, server, log);
    expectSuccessAtLast(read, server, log);
    std::wstring text = L"before";
    read.succeeds = [&](ErrorCode& ec) { return project->GetSpaceConfig(3, text, ec); };
    expectFailuresOf(read, server, log);
    EXPECT_EQ(text, L"before");
    expectSuccessAtLast(read, server, log);
}

TEST_F(SpaceConfigWireTest, aSchemaVersionOfTheFutureGivesAnObjectWithoutItemsAndNoError)
{
    server.expect("GET", version3).reply(200, R"({"scopeEntityId":"p-1","version":9,"configValue":"{\"schemaVersion\":2,\"data\":[{}]}"})");
    const auto config = project->GetSpaceConfig(3, error);
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->GetVersion(), 9);
    EXPECT_TRUE(config->GetItems().empty());
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Invalid space config data: schema version isn't support"});
}

TEST_F(SpaceConfigWireTest, aDocumentWithoutSchemaVersionOrDataIsAnObjectToo)
{
    server.expect("GET", version3).reply(200, R"({"scopeEntityId":"p-1","version":9,"configValue":"{}"})");
    server.expect("GET", version3).reply(200, R"({"scopeEntityId":"p-1","version":9,"configValue":"{\"schemaVersion\":1}"})");
    for (int call = 0; call < 2; ++call) {
        const auto config = project->GetSpaceConfig(3, error);
        ASSERT_NE(config, nullptr);
        EXPECT_TRUE(config->GetItems().empty());
        expectClear(error);
    }
    EXPECT_EQ(log.lines(),
              (Lines{L"E [ORLOSDK]Invalid space config data: no schema version", L"E [ORLOSDK]Invalid space config data: no data"}));
}

TEST_F(SpaceConfigWireTest, anAnswerWithoutItsThreeMembersIsAnException)
{
    for (const char* body : {R"({"version":1,"configValue":"{}"})", R"({"scopeEntityId":"p","configValue":"{}"})",
                             R"({"scopeEntityId":"p","version":1})", R"({"scopeEntityId":"p","version":1,"configValue":{}})", "{}", "[]",
                             "null", "7", "", R"({"code":10000,"data":{"scopeEntityId":"p","version":1,"configValue":"{}"}})"})
        expectRefusedByTheFrame(body);
}

TEST_F(SpaceConfigWireTest, aBrokenDocumentIsAnException)
{
    for (const char* document :
         {"", "{", "<html>", R"({\"schemaVersion\":\"1\"})", R"({\"schemaVersion\":1,\"data\":[7]})",
          R"({\"schemaVersion\":1,\"data\":[{}]})", R"({\"schemaVersion\":1,\"data\":[{\"id\":\"a\",\"spaceName\":\"\"}]})",
          R"({\"schemaVersion\":1,\"data\":[{\"id\":\"a\",\"spaceName\":\"\",\"spaceType\":\"Site\",\"subSpaces\":[null]}]})"})
        expectRefusedByTheFrame(std::string(R"({"scopeEntityId":"p-1","version":3,"configValue":")") + document + "\"}");
}

TEST_F(SpaceConfigWireTest, aDocumentThatIsNestedTooDeeplyIsAnException)
{
    for (const std::size_t depth : {129u, 5000u, 200000u})
        expectRefusedByTheFrame(R"({"scopeEntityId":"p-1","version":3,"configValue":")" + std::string(depth, '[') +
                                std::string(depth, ']') + "\"}");
}

TEST_F(SpaceConfigWireTest, anAnswerThatIsNoJsonIsAnExceptionAndNotRetried)
{
    for (const char* body : {"{", "<html>", "{}x", "\xFF\xFE", "{\"configValue\":\"\xC3\x28\"}"})
        expectRefusedByTheRetryLoop(body);
    expectRefusedByTheRetryLoop(std::string(5000, '[') + std::string(5000, ']'));
}

TEST_F(SpaceConfigWireTest, anotherProjectHasAnotherAddress)
{
    server.expect("GET", "/config/scope/Project/3f2504e0-4f89-41d3-9a0c-0305e82c3301/type/SpaceConfig?version=3").reply(200, answer3);
    EXPECT_NE(projectOf(L"3f2504e0-4f89-41d3-9a0c-0305e82c3301")->GetSpaceConfig(3, error), nullptr);
}

TEST_F(SpaceConfigWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    EXPECT_EQ(projectOf(L"p 1")->GetSpaceConfig(3, error), nullptr);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    error.Clear();
    EXPECT_TRUE(projectOf(L"项目")->GetSpaceConfigVersions(error).empty());
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(SpaceConfigWireTest, versionsComeInTheOrderOfTheServer)
{
    server.expect("GET", versions).reply(200, "[3,1,2,-2147483648,2147483647,1]");
    EXPECT_EQ(project->GetSpaceConfigVersions(error),
              (std::vector<int>{3, 1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 1}));
    expectQuiet();
}

TEST_F(SpaceConfigWireTest, theShortFormOfTheVersionsGivesTheSame)
{
    server.expect("GET", versions).reply(200, "[2,1]");
    server.expect("GET", versions).reply(404);
    EXPECT_EQ(project->GetSpaceConfigVersions(), (std::vector<int>{2, 1}));
    EXPECT_TRUE(project->GetSpaceConfigVersions().empty());
}

TEST_F(SpaceConfigWireTest, versionsThatAreNoIntegersAreLeftOut)
{
    server.expect("GET", versions).reply(200, R"([1,"2",null,{},[4],true,5])");
    EXPECT_EQ(project->GetSpaceConfigVersions(error), (std::vector<int>{1, 5}));
    expectClear(error);
}

TEST_F(SpaceConfigWireTest, anAnswerToTheVersionsThatIsNoArrayIsEmpty)
{
    for (const char* body : {"[]", "{}", R"({"code":10000,"data":[1]})", "7", "null", ""}) {
        server.expect("GET", versions).reply(200, body);
        EXPECT_TRUE(project->GetSpaceConfigVersions(error).empty()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceConfigWireTest, theVersionsFailAsEveryRetriedOperationDoes)
{
    RequestingOperation listing{"GET", versions, "", L"Project::GetSpaceConfigVersions - code:", [&](ErrorCode& ec) {
                                    const std::vector<int> numbers = project->GetSpaceConfigVersions(ec);
                                    EXPECT_TRUE(numbers.empty() || numbers == std::vector<int>{1});
                                    return !numbers.empty();
                                }};
    listing.goodAnswer = "[1]";
    expectFailuresOf(listing, server, log);
    expectSuccessAtLast(listing, server, log);
}

TEST_F(SpaceConfigWireTest, anErrorOnEntryIsLoggedAndWiped)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", version3).reply(200, answer3);
    EXPECT_NE(project->GetSpaceConfig(3, error), nullptr);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetSpaceConfig 传入的ErrorCode，已有错误存在:earlier"});
}

} // namespace
} // namespace orlo::test
