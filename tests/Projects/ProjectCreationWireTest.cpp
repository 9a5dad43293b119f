#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* created = R"({"code":10000,"data":{"id":"p-new","name":"示例","status":"Ongoing","gridType":"TYPE_TWO","size":3}})";
constexpr const char* configOfCreated = "/config/scope/Project/p-new/type/SpaceConfig";
constexpr const char* plainBody = R"({"name":"示例","status":"Ongoing","templateId":"","description":""})";
constexpr const wchar_t* guid = L"0f9C4b72-b885-4cd8-7f1f-7be3e9d17403";

class ProjectCreationWireTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();
};

void expectCreated(const std::shared_ptr<ICollaborationProject>& project)
{
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->GetId(), L"p-new");
    EXPECT_EQ(project->GetName(), L"示例");
    EXPECT_EQ(static_cast<int>(project->GetStatus()), 0);
    EXPECT_EQ(static_cast<int>(project->GetGridType()), 1);
    EXPECT_EQ(project->GetSize(), 3);
}

TEST_F(ProjectCreationWireTest, sendsTheKeysInOrderAndAddsTheDefaultSpaceConfig)
{
    server.expect("POST", "/v3/projects").body(plainBody).header("Content-Type", "application/json").reply(200, created);
    server.expect("POST", configOfCreated).anyBody().reply(200, "{}");
    expectCreated(manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::CreateProject 创建项目添加默认空间配置成功"});
    EXPECT_EQ(log.entries().front().tag, L"[ORLOSDK]");
    EXPECT_EQ(log.entries().front().source, "source/OrloProjectManager/Projects/ProjectManager.cpp");
    EXPECT_NE(log.entries().front().sourceLine().find("return createProject(ORLO_HERE(function)"), std::string::npos);
}

TEST_F(ProjectCreationWireTest, sendsTheTextOfEachStatus)
{
    server.expect("POST", "/v3/projects")
        .body(R"({"name":"a","status":"Suspended","templateId":"t","description":""})")
        .reply(200, created);
    server.expect("POST", "/v3/projects")
        .body(R"({"name":"a","status":"Completed","templateId":"t","description":""})")
        .reply(200, created);
    EXPECT_NE(manager.CreateProject(L"a", static_cast<ProjectStatus>(1), std::wstring(L"t")), nullptr);
    EXPECT_NE(manager.CreateProject(L"a", static_cast<ProjectStatus>(2), std::wstring(L"t")), nullptr);
}

TEST_F(ProjectCreationWireTest, escapesTheNameForJson)
{
    server.expect("POST", "/v3/projects")
        .body("{\"name\":\"a\\\"b\\\\c\\n\xF0\x9F\x98\x80\",\"status\":\"Ongoing\",\"templateId\":\"t\",\"description\":\"\"}")
        .reply(200, created);
    EXPECT_NE(manager.CreateProject(L"a\"b\\c\n\U0001F600", static_cast<ProjectStatus>(0), std::wstring(L"t")), nullptr);
}

TEST_F(ProjectCreationWireTest, aTemplateIsSentAndGetsNoDefaultSpaceConfig)
{
    server.expect("POST", "/v3/projects")
        .body(R"({"name":"示例","status":"Ongoing","templateId":"t-1","description":""})")
        .reply(200, created);
    expectCreated(manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), std::wstring(L"t-1")));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectCreationWireTest, anEmptyTemplateIsSentAndGetsTheDefaultSpaceConfig)
{
    server.expect("POST", "/v3/projects").body(plainBody).reply(200, created);
    server.expect("POST", configOfCreated).anyBody().reply(200);
    expectCreated(manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), std::wstring()));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::CreateProject 测试项目添加默认空间配置成功"});
}

TEST_F(ProjectCreationWireTest, anIdOfTheCallersIsSentLastAndAlwaysGetsTheDefaultSpaceConfig)
{
    server.expect("POST", "/v3/projects")
        .body(R"({"name":"示例","status":"Ongoing","templateId":"","description":"","id":"0f9C4b72-b885-4cd8-7f1f-7be3e9d17403"})")
        .reply(200, created);
    server.expect("POST", configOfCreated).anyBody().reply(200);
    expectCreated(manager.CreateProjectById(L"示例", static_cast<ProjectStatus>(0), guid, error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::CreateProjectById 测试项目添加默认空间配置成功"});
}

TEST_F(ProjectCreationWireTest, anIdWithATemplateGetsNoDefaultSpaceConfig)
{
    server.expect("POST", "/v3/projects")
        .body(R"({"name":"示例","status":"Ongoing","templateId":"t-1","description":"","id":"0f9C4b72-b885-4cd8-7f1f-7be3e9d17403"})")
        .reply(200, created);
    expectCreated(manager.CreateProjectById(L"示例", static_cast<ProjectStatus>(0), guid, std::wstring(L"t-1")));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectCreationWireTest, anIdWithAnEmptyTemplateGetsTheDefaultSpaceConfig)
{
    server.expect("POST", "/v3/projects")
        .body(R"({"name":"示例","status":"Ongoing","templateId":"","description":"","id":"0f9C4b72-b885-4cd8-7f1f-7be3e9d17403"})")
        .reply(200, created);
    server.expect("POST", configOfCreated).anyBody().reply(200);
    expectCreated(manager.CreateProjectById(L"示例", static_cast<ProjectStatus>(0), guid, std::wstring()));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::CreateProjectById 测试项目添加默认空间配置成功"});
}

TEST_F(ProjectCreationWireTest, anIdThatIsNoGuidIsRefusedWithALineAndNoError)
{
    for (const wchar_t* id : {L"abc", L"", L"{0f9c4b72-b885-4cd8-7f1f-7be3e9d17403}", L"0f9c4b72-b885-4cd8-7f1f-7be3e9d1740g", L"编号"}) {
        log.clear();
        EXPECT_EQ(manager.CreateProjectById(L"示例", static_cast<ProjectStatus>(0), id, error), nullptr) << id;
        EXPECT_EQ(manager.CreateProjectById(L"示例", static_cast<ProjectStatus>(0), id, std::wstring(L"t")), nullptr) << id;
        expectClear(error);
        EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]projectId is not a valid guid.", L"E [ORLOSDK]projectId is not a valid guid."}));
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ProjectCreationWireTest, anEmptyNameIsRefusedWithoutARetry)
{
    EXPECT_EQ(manager.CreateProject(L"", static_cast<ProjectStatus>(0), error), nullptr);
    expectGenericError(error, 3892314113, L"GenericError", L"data.name is empty");
    EXPECT_EQ(manager.CreateProjectById(L"", static_cast<ProjectStatus>(0), guid, error), nullptr);
    expectGenericError(error, 3892314113, L"GenericError", L"data.name is empty");
    EXPECT_EQ(server.connectionCount(), 0u);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ProjectManager::CreateProject fail to create project.",
                                  L"E@orlo::ProjectManager::CreateProjectById 传入的ErrorCode，已有错误存在:data.name is empty",
                                  L"E@orlo::ProjectManager::CreateProjectById fail to create project."}));
}

TEST_F(ProjectCreationWireTest, aStatusWithoutATextIsRefusedWithoutARetry)
{
    for (const int status : {-1, 3, 1000}) {
        error.Clear();
        EXPECT_EQ(manager.CreateProject(L"a", static_cast<ProjectStatus>(status), error), nullptr);
        expectGenericError(error, 3892314113, L"GenericError", L"invalid projectStatus");
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ProjectCreationWireTest, theNameIsCheckedBeforeTheStatus)
{
    EXPECT_EQ(manager.CreateProject(L"", static_cast<ProjectStatus>(-1), error), nullptr);
    expectGenericError(error, 3892314113, L"GenericError", L"data.name is empty");
}

TEST_F(ProjectCreationWireTest, theFormsWithATemplateTellOnlyThatTheyFailed)
{
    EXPECT_EQ(manager.CreateProject(L"", static_cast<ProjectStatus>(0), std::wstring(L"t")), nullptr);
    EXPECT_EQ(manager.CreateProjectById(L"", static_cast<ProjectStatus>(0), guid, std::wstring(L"t")), nullptr);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ProjectManager::CreateProject fail to create project.",
                                  L"E@orlo::ProjectManager::CreateProjectById fail to create project."}));
}

TEST_F(ProjectCreationWireTest, failsAsEveryRetriedOperationDoesSaysSoAndAddsNoConfig)
{
    std::shared_ptr<ICollaborationProject> project;
    RequestingOperation creation{"POST", "/v3/projects", plainBody, L"OrloWebService::CreateProjectV2 - code:", [&](ErrorCode& ec) {
                                     project = manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), ec);
                                     return project != nullptr;
                                 }};
    creation.afterwards = L"E@orlo::ProjectManager::CreateProject fail to create project.";
    creation.goodAnswer = created;
    expectFailuresOf(creation, server, log);
    expectSuccessAtLast(creation, server, log, [&] { server.expect("POST", configOfCreated).anyBody().reply(200); },
                        {L"E@orlo::ProjectManager::CreateProject 创建项目添加默认空间配置成功"});
    expectCreated(project);
}

TEST_F(ProjectCreationWireTest, anEnvelopeWithoutTheMarkFailsInSilence)
{
    for (const char* body : {R"({"code":10001,"data":{"id":"p-new"}})", R"({"code":"10000","data":{"id":"p-new"}})",
                             R"({"data":{"id":"p-new"}})", R"([])", ""}) {
        log.clear();
        server.expect("POST", "/v3/projects").body(plainBody).reply(200, body);
        EXPECT_EQ(manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), error), nullptr) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::CreateProject fail to create project."});
    }
}

TEST_F(ProjectCreationWireTest, aConfigThatIsRefusedDoesNotUndoTheProject)
{
    server.expect("POST", "/v3/projects").body(plainBody).reply(200, created);
    server.expect("POST", configOfCreated).anyBody().reply(403, "no");
    expectCreated(manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), error));
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]OrloWebService::AddDefaultSpaceConfig - code:403",
                                  L"E@orlo::ProjectManager::CreateProject 创建项目添加默认空间配置失败"}));
}

TEST_F(ProjectCreationWireTest, aConfigThatFailsForNowIsRetried)
{
    server.expect("POST", "/v3/projects").body(plainBody).reply(200, created);
    server.expect("POST", configOfCreated).anyBody().reply(503, "busy");
    server.expect("POST", configOfCreated).anyBody().reply(200);
    expectCreated(manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), std::wstring()));
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]OrloWebService::AddDefaultSpaceConfig - code:503",
                                  L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[1]",
                                  L"E@orlo::ProjectManager::CreateProject 测试项目添加默认空间配置成功"}));
}

TEST_F(ProjectCreationWireTest, anAnswerWithoutAnIdStillGivesAProjectButNoConfig)
{
    server.expect("POST", "/v3/projects").body(plainBody).reply(200, R"({"code":10000,"data":{"name":"示例"}})");
    const auto project = manager.CreateProject(L"示例", static_cast<ProjectStatus>(0), error);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->GetId(), L"");
    EXPECT_EQ(project->GetName(), L"示例");
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]AddDefaultSpaceConfig()未正常执行：projectId为空",
                                  L"E@orlo::ProjectManager::CreateProject 创建项目添加默认空间配置失败"}));
}

} // namespace
} // namespace orlo::test
