#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/Project.h>
#include <OrloProjectManager/Resources/ProjectFont.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* fontsOfProject = "/style-family/font/project/list/p-1";
constexpr const char* uriOfFont = "/style-family/font/project/download/uri?fontId=f-1&projectId=p-1";
constexpr const char* signedUri = R"({"code":10000,"msg":"ok","data":{"fileUrlWithSAS":"https://files.example/f?sig=secret"}})";

using Fonts = std::vector<std::shared_ptr<IProjectFont>>;

ProjectFont fontOf(const std::wstring& id, const std::wstring& projectId)
{
    http::ORLOHTTPPayloadFontInfo record;
    record.id = id;
    record.projectId = projectId;
    return ProjectFont(record);
}

class ProjectFontWireTest : public WireTest
{
protected:
    Project concrete{L"p-1", L"name", L"", L"", ProjectStatus{}, ProjectGridType{}, 0};
    ICollaborationProject& project = concrete;
    ProjectFont font = fontOf(L"f-1", L"p-1");
    Fonts fonts{std::make_shared<ProjectFont>(http::ORLOHTTPPayloadFontInfo{})};
};

TEST_F(ProjectFontWireTest, listsTheFontsInTheOrderOfTheAnswer)
{
    server.expect("GET", fontsOfProject)
        .reply(
            200,
            R"({"code":10000,"msg":"ok","data":[{"id":"f-2","name":"仿宋 🖋","projectId":"p-9","fileType":"ttf","fontFrom":"upload",)"
            R"("createTime":"2024-03-01","uploader":"u-1","resourceBytes":"5000000000","more":1},{"id":"f-1"}]})");
    EXPECT_TRUE(project.GetProjectFonts(fonts, error));
    ASSERT_EQ(fonts.size(), 2u);
    EXPECT_EQ(fonts[0]->GetId(), L"f-2");
    EXPECT_EQ(fonts[0]->GetName(), L"仿宋 🖋");
    EXPECT_EQ(fonts[0]->GetProjectId(), L"p-9");
    EXPECT_EQ(fonts[0]->GetFileType(), L"ttf");
    EXPECT_EQ(fonts[0]->GetFontFrom(), L"upload");
    EXPECT_EQ(fonts[0]->GetCreateTime(), L"2024-03-01");
    EXPECT_EQ(fonts[0]->GetUploader(), L"u-1");
    EXPECT_EQ(fonts[0]->GetResourceBytes(), 5000000000);
    EXPECT_EQ(fonts[1]->GetId(), L"f-1");
    EXPECT_EQ(fonts[1]->GetProjectId(), L"") << "nothing is filled in that the answer left out";
    EXPECT_EQ(fonts[1]->GetResourceBytes(), 0);
    expectQuiet();
}

TEST_F(ProjectFontWireTest, listsTheFontsAnewOnEachCall)
{
    server.expect("GET", fontsOfProject).reply(200, R"({"code":10000,"data":[{"id":"a"},{"id":"b"}]})");
    server.expect("GET", fontsOfProject).reply(200, R"({"code":10000,"data":[{"id":"c"}]})");
    EXPECT_TRUE(project.GetProjectFonts(fonts));
    EXPECT_EQ(fonts.size(), 2u);
    EXPECT_TRUE(project.GetProjectFonts(fonts));
    ASSERT_EQ(fonts.size(), 1u);
    EXPECT_EQ(fonts[0]->GetId(), L"c");
}

TEST_F(ProjectFontWireTest, fieldsOfAnotherTypeStayEmpty)
{
    server.expect("GET", fontsOfProject).reply(200, R"({"data":[{"id":1,"name":null,"projectId":{},"resourceBytes":77},7]})");
    EXPECT_TRUE(project.GetProjectFonts(fonts, error));
    ASSERT_EQ(fonts.size(), 2u);
    EXPECT_EQ(fonts[0]->GetId(), L"");
    EXPECT_EQ(fonts[0]->GetName(), L"");
    EXPECT_EQ(fonts[0]->GetResourceBytes(), 0);
}

TEST_F(ProjectFontWireTest, theCodeOfTheListDecidesNothing)
{
    for (const char* body :
         {R"({"code":1,"msg":"no","data":[{"id":"a"}]})", R"({"code":"10000","data":[{"id":"a"}]})", R"({"data":[{"id":"a"}]})"}) {
        server.expect("GET", fontsOfProject).reply(200, body);
        EXPECT_TRUE(project.GetProjectFonts(fonts, error)) << body;
        EXPECT_EQ(fonts.size(), 1u) << body;
        expectClear(error);
    }
}

TEST_F(ProjectFontWireTest, aListWithoutAnArrayIsEmpty)
{
    for (const char* body : {"{}", R"({"code":10000})", R"({"data":null})", R"({"data":{"id":"a"}})", R"({"data":"x"})"}) {
        server.expect("GET", fontsOfProject).reply(200, body);
        EXPECT_TRUE(project.GetProjectFonts(fonts, error)) << body;
        EXPECT_TRUE(fonts.empty()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectFontWireTest, anAnswerThatIsNoAckFailsInSilence)
{
    for (const char* body : {"[]", R"([{"id":"a"}])", "7", "null", ""}) {
        server.expect("GET", fontsOfProject).reply(200, body);
        EXPECT_FALSE(project.GetProjectFonts(fonts, error)) << body;
        EXPECT_TRUE(fonts.empty()) << body;
        server.expect("GET", uriOfFont).reply(200, body);
        EXPECT_EQ(font.GetFontDownloadUri(error), L"") << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectFontWireTest, theListFailsAsEveryRetriedOperationDoesLogsNoStatusAndIsEmpty)
{
    const Fonts earlier = fonts;
    RequestingOperation listing{"GET", fontsOfProject, "", L"", [&](ErrorCode& ec) {
                                    fonts = earlier;
                                    return project.GetProjectFonts(fonts, ec) || !fonts.empty();
                                }};
    listing.goodAnswer = R"({"data":[{"id":"a"}]})";
    expectFailuresOf(listing, server, log);
    expectSuccessAtLast(listing, server, log);
    EXPECT_EQ(fonts.size(), 1u);
}

TEST_F(ProjectFontWireTest, asksForTheAddressOfTheFile)
{
    server.expect("GET", uriOfFont).reply(200, signedUri);
    EXPECT_EQ(font.GetFontDownloadUri(error), L"https://files.example/f?sig=secret");
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"I [ORLOSDK]ProjectFont::GetFontDownloadUri success"});
    EXPECT_FALSE(log.holds(L"secret"));
}

TEST_F(ProjectFontWireTest, asksForTheAddressAnewOnEachCall)
{
    server.expect("GET", uriOfFont).reply(200, R"({"data":{"fileUrlWithSAS":"one"}})");
    server.expect("GET", uriOfFont).reply(200, R"({"data":{"fileUrlWithSAS":"two"}})");
    EXPECT_EQ(font.GetFontDownloadUri(), L"one");
    EXPECT_EQ(font.GetFontDownloadUri(), L"two");
}

TEST_F(ProjectFontWireTest, theIdsAreEncodedInTheQuery)
{
    server
        .expect("GET", "/style-family/font/project/download/uri?fontId=a%20b%26c%3Dd%23%2B%25%3B&projectId=%E9%A1%B9%E7%9B%AE%F0%9F%8F%A2")
        .reply(200, signedUri);
    EXPECT_EQ(fontOf(L"a b&c=d#+%;", L"项目🏢").GetFontDownloadUri(error), L"https://files.example/f?sig=secret");
    expectClear(error);
}

TEST_F(ProjectFontWireTest, aFontWithoutAProjectGivesAnEmptyAddressAndNoRequest)
{
    EXPECT_EQ(fontOf(L"f-1", L"").GetFontDownloadUri(error), L"");
    expectQuiet();
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ProjectFontWireTest, aFontWithoutAnIdGivesAnEmptyAddressAndNoRequest)
{
    EXPECT_EQ(fontOf(L"", L"p-1").GetFontDownloadUri(error), L"");
    EXPECT_EQ(fontOf(L"", L"").GetFontDownloadUri(), L"");
    expectQuiet();
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ProjectFontWireTest, anAnswerWithoutAnAddressIsASuccessWithAnEmptyOne)
{
    for (const char* body :
         {"{}", R"({"code":10000,"data":null})", R"({"data":{}})", R"({"data":{"fileUrlWithSAS":7}})", R"({"fileUrlWithSAS":"x"})"}) {
        log.clear();
        server.expect("GET", uriOfFont).reply(200, body);
        EXPECT_EQ(font.GetFontDownloadUri(error), L"") << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{L"I [ORLOSDK]ProjectFont::GetFontDownloadUri success"}) << body;
    }
}

TEST_F(ProjectFontWireTest, theCodeOfAnAddressDecidesNothing)
{
    server.expect("GET", uriOfFont).reply(200, R"({"code":4,"msg":"no","data":{"fileUrlWithSAS":"x"}})");
    EXPECT_EQ(font.GetFontDownloadUri(error), L"x");
}

TEST_F(ProjectFontWireTest, theAddressFailsAsEveryRetriedOperationDoesAndLogsNoStatus)
{
    RequestingOperation question{"GET", uriOfFont, "", L"", [&](ErrorCode& ec) {
                                     const std::wstring uri = font.GetFontDownloadUri(ec);
                                     EXPECT_TRUE(uri.empty() || uri == L"https://files.example/f?sig=secret") << uri;
                                     return !uri.empty();
                                 }};
    question.goodAnswer = signedUri;
    expectFailuresOf(question, server, log);
    expectSuccessAtLast(question, server, log, [] {}, {L"I [ORLOSDK]ProjectFont::GetFontDownloadUri success"});
}

TEST_F(ProjectFontWireTest, fontsLieOnTheStructureService)
{
    OrloConfig config = host.config();
    for (auto& [key, url] : config.serviceUrls) {
        if (key != L"structure")
            url = L"http://127.0.0.1:1";
    }
    OrloConfigManager::Configure(config);
    server.expect("GET", fontsOfProject).reply(200, R"({"data":[]})");
    server.expect("GET", uriOfFont).reply(200, signedUri);
    EXPECT_TRUE(project.GetProjectFonts(fonts, error));
    EXPECT_NE(font.GetFontDownloadUri(error), L"");
}

TEST_F(ProjectFontWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    Project other(L"p 1", L"", L"", L"", ProjectStatus{}, ProjectGridType{}, 0);
    EXPECT_FALSE(other.GetProjectFonts(fonts, error));
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(server.connectionCount(), 0u);
}

} // namespace
} // namespace orlo::test
