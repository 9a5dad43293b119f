#include "support/ProjectObjectTest.h"

#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/NetworkProject/Projects/PermissionWeb.h>

#include <cpprest/json.h>
#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* permissionPath = "/projects/p-1/users/account-1/permission";
constexpr const wchar_t* notDone = L"E@orlo::Project::GetPermissionTypes GetPermissionTypes()未正常执行!";

class PermissionTypesWireTest : public ProjectObjectTest
{
protected:
    using Types = std::map<std::wstring, int>;

    Types found() const
    {
        Types types;
        for (const auto& [resource, type] : out)
            types[resource] = static_cast<int>(type);
        return types;
    }

    std::map<std::wstring, PermissionType> out;
};

TEST_F(PermissionTypesWireTest, ofSeveralPermissionsWriteComesFirstThenSoftWriteThenRead)
{
    server.expect("GET", permissionPath)
        .reply(200, R"({"code":10000,"data":[{"resource":"模型","permissionTypes":["Read","Write"]},)"
                    R"({"resource":"b","permissionTypes":["Read","SoftWrite","Write"]},)"
                    R"({"resource":"c","permissionTypes":["Read","SoftWrite"]},)"
                    R"({"resource":"d","permissionTypes":["Read"]},{"resource":"e","permissionTypes":["SoftWrite"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(found(), (Types{{L"模型", 2}, {L"b", 2}, {L"c", 3}, {L"d", 1}, {L"e", 3}}));
    expectQuiet();
}

TEST_F(PermissionTypesWireTest, anythingElseIsNoPermission)
{
    server.expect("GET", permissionPath)
        .reply(200, R"({"code":10000,"data":[{"resource":"a","permissionTypes":["Delete"]},{"resource":"b","permissionTypes":[]},)"
                    R"({"resource":"c","permissionTypes":"Write"},{"resource":"d","permissionTypes":null},)"
                    R"({"resource":"e","permissionTypes":["write","WRITE","Write "]},{"resource":"f","permissionTypes":[["Write"],2]},)"
                    R"({"resource":"g","permissionTypes":[7,null,"Read"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(found(), (Types{{L"a", 0}, {L"b", 0}, {L"c", 0}, {L"d", 0}, {L"e", 0}, {L"f", 0}, {L"g", 1}}));
}

TEST_F(PermissionTypesWireTest, anElementWithoutBothKeysIsPassedOver)
{
    server.expect("GET", permissionPath)
        .reply(200, R"({"code":10000,"data":[{"resource":"a"},{"permissionTypes":["Write"]},7,null,[],{},)"
                    R"({"resource":"b","permissionTypes":["Read"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(found(), (Types{{L"b", 1}}));
}

TEST_F(PermissionTypesWireTest, aResourceThatIsNoTextHasAnEmptyKey)
{
    server.expect("GET", permissionPath)
        .reply(200, R"({"code":10000,"data":[{"resource":"a","permissionTypes":["Read"]},{"resource":5,"permissionTypes":["Write"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(found(), (Types{{L"", 2}, {L"a", 1}}));
}

TEST_F(PermissionTypesWireTest, keepsWhatTheMapHeldOfOtherResources)
{
    out = {{L"kept", PermissionType::Read}, {L"a", PermissionType::Write}};
    server.expect("GET", permissionPath)
        .reply(200, R"({"code":10000,"data":[{"resource":"a","permissionTypes":["Read"]},{"resource":"a","permissionTypes":["Delete"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(found(), (Types{{L"a", 0}, {L"kept", 1}}));
}

TEST_F(PermissionTypesWireTest, dataThatIsNoArrayLeavesTheMapAloneAndIsASuccess)
{
    out = {{L"kept", PermissionType::Read}};
    for (const char* body : {R"({"code":10000})", R"({"code":10000,"data":null})", R"({"code":10000,"data":"Write"})",
                             R"({"code":10000,"data":{"resource":"a","permissionTypes":["Write"]}})", R"({"code":10000,"data":[]})"}) {
        server.expect("GET", permissionPath).reply(200, body);
        EXPECT_TRUE(project->GetPermissionTypes(out, error)) << body;
        EXPECT_EQ(found(), (Types{{L"kept", 1}}));
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(PermissionTypesWireTest, anAnswerWithoutTheMarkIsLoggedAndASuccessWithoutPermissions)
{
    const std::pair<const char*, const wchar_t*> rows[] = {
        {R"({"code":7,"data":[{"resource":"a","permissionTypes":["Write"]}]})",
         LR"({"code":7,"data":[{"permissionTypes":["Write"],"resource":"a"}]})"},
        {R"({"data":[{"resource":"a","permissionTypes":["Write"]}]})", LR"({"data":[{"permissionTypes":["Write"],"resource":"a"}]})"},
        {R"({"code":"10000"})", LR"({"code":"10000"})"},
        {"[]", L"[]"},
        {"", L"null"},
    };
    for (const auto& [body, logged] : rows) {
        log.clear();
        server.expect("GET", permissionPath).reply(200, body);
        EXPECT_TRUE(project->GetPermissionTypes(out, error)) << body;
        EXPECT_EQ(log.lines(),
                  Lines{L"E [ORLOSDK]OrloWebService::GetAuthorizationOfUserInProject - response is not normal: " + std::wstring(logged)});
        expectClear(error);
    }
    EXPECT_TRUE(out.empty());
}

TEST_F(PermissionTypesWireTest, asksTheAuthorizationService)
{
    OrloConfig config = host.config();
    for (auto& service : config.serviceUrls) {
        if (service.first != L"authorization")
            service.second = L"http://127.0.0.1:1";
    }
    OrloConfigManager::Configure(config);
    server.expect("GET", permissionPath).reply(200, R"({"code":10000,"data":[{"resource":"a","permissionTypes":["Read"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(found(), (Types{{L"a", 1}}));
}

TEST_F(PermissionTypesWireTest, theShortFormGivesTheSame)
{
    server.expect("GET", permissionPath).reply(200, R"({"code":10000,"data":[{"resource":"a","permissionTypes":["SoftWrite"]}]})");
    EXPECT_TRUE(project->GetPermissionTypes(out));
    EXPECT_EQ(found(), (Types{{L"a", 3}}));
    server.expect("GET", permissionPath).reply(404);
    EXPECT_FALSE(project->GetPermissionTypes(out));
}

TEST_F(PermissionTypesWireTest, whileNobodyIsSignedInNothingIsSent)
{
    UserSession::SignOut();
    EXPECT_FALSE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]IsProjectConfigCanBeChangedByUser未正常执行：userId为空", notDone}));
    expectClear(error);
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(PermissionTypesWireTest, aUserWithoutAnAccountHasNoPermissionsToAskFor)
{
    UserSession::SignIn({L"user-1", L"", L"token-secret-1"});
    EXPECT_FALSE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]IsProjectConfigCanBeChangedByUser未正常执行：userId为空", notDone}));
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(PermissionTypesWireTest, aProjectWithoutAnIdIsRefusedFirst)
{
    UserSession::SignOut();
    EXPECT_FALSE(projectOf(L"")->GetPermissionTypes(out, error));
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]IsProjectConfigCanBeChangedByUser未正常执行：projectId为空", notDone}));
    expectClear(error);
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(PermissionTypesWireTest, itsOwnLineCarriesItsPosition)
{
    server.expect("GET", permissionPath).reply(403, "no");
    EXPECT_FALSE(project->GetPermissionTypes(out, error));
    ASSERT_EQ(log.entries().size(), 2u);
    const LogEntry line = log.entries()[1];
    EXPECT_EQ(line.function, "orlo::Project::GetPermissionTypes");
    EXPECT_EQ(line.source, "source/OrloProjectManager/Projects/ProjectFolders.cpp");
    EXPECT_EQ(line.tag, L"[ORLOSDK]");
    EXPECT_EQ(line.message, L"GetPermissionTypes()未正常执行!");
    EXPECT_GT(line.line, 0);
}

TEST_F(PermissionTypesWireTest, failsAsEveryDirectCallDoesAndLogsAStatusTwice)
{
    RequestingOperation question{"GET", permissionPath, "", L"OrloWebService::GetAuthorizationOfUserInProject - code:",
                                 [&](ErrorCode& ec) { return project->GetPermissionTypes(out, ec); }};
    question.frame = L"orlo::Project::GetPermissionTypes";
    question.afterwards = notDone;
    question.goodAnswer = R"({"code":10000,"data":[{"resource":"a","permissionTypes":["Write"]}]})";
    expectFailuresOf(question, server, log);
    EXPECT_TRUE(out.empty());
}

TEST_F(PermissionTypesWireTest, anEarlierErrorIsLoggedAndStays)
{
    error.Assign(0xE8000001, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", permissionPath).reply(200, R"({"code":10000,"data":[]})");
    EXPECT_TRUE(project->GetPermissionTypes(out, error));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetPermissionTypes 传入的ErrorCode，已有错误存在:earlier"});
    expectGenericError(error, 3892314113, L"GenericError", L"earlier");
}

TEST_F(PermissionTypesWireTest, theValueIsFilledFromAGoodEnvelopeWithDataOnly)
{
    const web::json::value before = web::json::value::string("before");
    for (const char* body : {R"({"code":7,"data":[]})", R"({"code":10000})", "{}"}) {
        web::json::value value = before;
        server.expect("GET", permissionPath).reply(200, body);
        EXPECT_TRUE(OrloWebService::GetAuthorizationOfUserInProject(error, value, L"p-1", L"account-1")) << body;
        EXPECT_EQ(value, before) << body;
    }
    web::json::value value = before;
    server.expect("GET", permissionPath).reply(200, R"({"code":10000,"data":{"any":[1]}})");
    EXPECT_TRUE(OrloWebService::GetAuthorizationOfUserInProject(error, value, L"p-1", L"account-1"));
    EXPECT_EQ(value.serialize(), R"({"any":[1]})");
    expectClear(error);
}

} // namespace
} // namespace orlo::test
