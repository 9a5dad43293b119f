#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Resources/ProjectTemplate.h>

#include <gmock/gmock.h>

// Projects kept as starting points, on the wire.
namespace orlo::test {
namespace {

constexpr const char* templates = "/project_templates";
constexpr const char* newTemplateBody = R"({"srcProjectId":"p-1","templateName":"塔楼 \"A\""})";
constexpr const wchar_t* creationFailed = L"OrloWebService::CreateTemplate - code:";

// The functions keep their ErrorCode to themselves; the failures are told by the log.
class ProjectTemplateWireTest : public WireTest
{
protected:
    static std::wstring create() { return HttpClient::createTemplate(L"p-1", L"塔楼 \"A\""); }

    std::vector<ProjectTemplate> listed{{L"earlier", L"before", L"p-0"}};
};

TEST_F(ProjectTemplateWireTest, aProjectIsKeptAsATemplate)
{
    server.expect("POST", templates).body(newTemplateBody).reply(200, R"({"code":10000,"message":"OK","data":{"id":"模-7","more":1}})");
    EXPECT_EQ(create(), L"模-7");
    expectQuiet();
}

TEST_F(ProjectTemplateWireTest, aCreationWithoutAnIdIsAFailureWithoutWords)
{
    for (const char* data : {"{}", R"({"id":7})", R"({"id":null})", R"(["t-1"])", R"("t-1")", "null", "3000000000"}) {
        server.expect("POST", templates).body(newTemplateBody).reply(200, std::string(R"({"code":10000,"data":)") + data + "}");
        EXPECT_EQ(create(), L"") << data;
    }
    server.expect("POST", templates).body(newTemplateBody).reply(200, R"({"code":10000})");
    EXPECT_EQ(create(), L"");
    expectQuiet();
}

TEST_F(ProjectTemplateWireTest, anAnswerWithoutTheMarkIsLoggedWhole)
{
    for (const char* body :
         {R"({"code":10001,"data":{"id":"t-1"}})", R"({"code":"10000","data":{"id":"t-1"}})", R"({"data":{"id":"t-1"}})"}) {
        log.clear();
        server.expect("POST", templates).body(newTemplateBody).reply(200, body);
        EXPECT_EQ(create(), L"") << body;
        ASSERT_EQ(log.lines().size(), 1u) << body;
        EXPECT_EQ(log.lines()[0].find(L"E [ORLOSDK]OrloWebService::CreateTemplate - response is not normal: {"), 0u);
    }
}

TEST_F(ProjectTemplateWireTest, withoutAProjectOrANameNothingIsSent)
{
    EXPECT_EQ(HttpClient::createTemplate(L"", L"name"), L"");
    EXPECT_EQ(HttpClient::createTemplate(L"p-1", L""), L"");
    EXPECT_EQ(server.requestCount(), 0u);
    expectQuiet();
}

TEST_F(ProjectTemplateWireTest, aCreationThatFailsIsTriedAgain)
{
    server.expect("POST", templates).body(newTemplateBody).reply(503, "busy");
    server.expect("POST", templates).body(newTemplateBody).reset();
    server.expect("POST", templates).body(newTemplateBody).reply(200, R"({"code":10000,"data":{"id":"t-1"}})");
    EXPECT_EQ(create(), L"t-1");
    EXPECT_TRUE(log.has(std::wstring(L"E [ORLOSDK]") + creationFailed + L"503"));
}

TEST_F(ProjectTemplateWireTest, aStatusThatIsNotTwoHundredIsLoggedUnderTheNameOfTheOperation)
{
    for (const int status : {201, 302, 400, 404, 409}) {
        log.clear();
        server.expect("POST", templates).body(newTemplateBody).reply(status, R"({"code":10000,"data":{"id":"t-1"}})");
        server.expect("DELETE", "/project_templates/t-1").reply(status, R"({"code":10000,"data":true})");
        server.expect("GET", templates).reply(status, R"({"code":10000,"data":[{"id":"t-1"}]})");
        EXPECT_EQ(create(), L"");
        EXPECT_FALSE(HttpClient::deleteTemplate(L"t-1"));
        EXPECT_FALSE(HttpClient::getProjectTemplatesOfUser(listed));
        const std::wstring digits = std::to_wstring(status);
        EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]OrloWebService::CreateTemplate - code:" + digits,
                                      L"E [ORLOSDK]OrloWebService::DeleteTemplate - code:" + digits,
                                      L"E [ORLOSDK]OrloWebService::GetProjectTemplatesOfUser - code:" + digits}));
    }
    EXPECT_EQ(listed.size(), 1u);
}

TEST_F(ProjectTemplateWireTest, aBodyThatIsNoJsonFailsWithoutAnotherAttempt)
{
    server.expect("POST", templates).body(newTemplateBody).reply(200, "<html>");
    server.expect("DELETE", "/project_templates/t-1").reply(200, "<html>");
    server.expect("GET", templates).reply(200, "<html>");
    EXPECT_EQ(create(), L"");
    EXPECT_FALSE(HttpClient::deleteTemplate(L"t-1"));
    EXPECT_FALSE(HttpClient::getProjectTemplatesOfUser(listed));
    EXPECT_EQ(log.lines().size(), 3u);
}

TEST_F(ProjectTemplateWireTest, theBooleanOfTheAnswerSaysWhetherATemplateIsDeleted)
{
    server.expect("DELETE", "/project_templates/t-1").reply(200, R"({"code":10000,"data":true})");
    EXPECT_TRUE(HttpClient::deleteTemplate(L"t-1"));
    for (const char* data : {"false", "1", R"("true")", "null", "{}", "[true]"}) {
        server.expect("DELETE", "/project_templates/t-1").reply(200, std::string(R"({"code":10000,"data":)") + data + "}");
        EXPECT_FALSE(HttpClient::deleteTemplate(L"t-1")) << data;
    }
    server.expect("DELETE", "/project_templates/t-1").reply(200, R"({"code":10000})");
    EXPECT_FALSE(HttpClient::deleteTemplate(L"t-1"));
    expectQuiet();
    server.expect("DELETE", "/project_templates/t-1").reply(200, R"({"code":7,"data":true})");
    EXPECT_FALSE(HttpClient::deleteTemplate(L"t-1"));
    EXPECT_EQ(log.lines(), Lines{LR"(E [ORLOSDK]OrloWebService::DeleteTemplate - response is not normal: {"code":7,"data":true})"});
}

TEST_F(ProjectTemplateWireTest, anIdIsNotLookedAtBeforeItIsSent)
{
    server.expect("DELETE", "/project_templates/").reply(404, "no such path");
    EXPECT_FALSE(HttpClient::deleteTemplate(L""));
}

TEST_F(ProjectTemplateWireTest, theTemplatesOfTheUserAreAppended)
{
    server.expect("GET", templates)
        .reply(200, R"({"code":10000,"data":[{"id":"t-2","templateName":"塔楼","srcProjectId":"p-2","more":[]},)"
                    R"({"id":7,"templateName":null,"srcProjectId":"p-3"},5]})");
    EXPECT_TRUE(HttpClient::getProjectTemplatesOfUser(listed));
    ASSERT_EQ(listed.size(), 4u);
    EXPECT_EQ(listed[0].id, L"earlier");
    EXPECT_EQ(listed[1].id, L"t-2");
    EXPECT_EQ(listed[1].templateName, L"塔楼");
    EXPECT_EQ(listed[1].srcProjectId, L"p-2");
    EXPECT_EQ(listed[2].id + listed[2].templateName, L"");
    EXPECT_EQ(listed[2].srcProjectId, L"p-3");
    EXPECT_EQ(listed[3].id + listed[3].templateName + listed[3].srcProjectId, L"");
    server.expect("GET", templates).reply(200, R"({"code":10000,"data":[]})");
    EXPECT_TRUE(HttpClient::getProjectTemplatesOfUser(listed));
    EXPECT_EQ(listed.size(), 4u);
    expectQuiet();
}

TEST_F(ProjectTemplateWireTest, aListThatIsNoArrayIsAFailure)
{
    for (const char* data : {"{}", "null", R"("t-1")", "7"}) {
        server.expect("GET", templates).reply(200, std::string(R"({"code":10000,"data":)") + data + "}");
        EXPECT_FALSE(HttpClient::getProjectTemplatesOfUser(listed)) << data;
    }
    expectQuiet();
    server.expect("GET", templates).reply(200, R"({"data":[]})");
    EXPECT_FALSE(HttpClient::getProjectTemplatesOfUser(listed));
    EXPECT_EQ(log.lines(), Lines{LR"(E [ORLOSDK]OrloWebService::GetProjectTemplatesOfUser - response is not normal: {"data":[]})"});
    EXPECT_EQ(listed.size(), 1u);
}

} // namespace
} // namespace orlo::test
