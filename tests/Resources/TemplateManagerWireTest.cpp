#include "support/RequestFailures.h"
#include "support/TransferTestSupport.h"

#include <OrloProjectManager/Resources/TemplateManager.h>
#include <OrloProjectManager/Transfer/ICollaborationFile.h>

#include <gmock/gmock.h>

// The templates that a project offers, on the wire.
namespace orlo::test {
namespace {

constexpr const char* plates = "/customize/project/p-1/sample/plates";
constexpr const char* newPlate = "/customize/project/p-1/sample/plate";
constexpr const char* plateName = "/customize/project/p-1/sample/plate/name/exist?name=%E7%BB%93%E6%9E%84%20%26%201";
constexpr const char* newPlateBody = R"({"appVersion":"4.2.0","name":"结构 & 1","size":5000000000,"specialty":"ZOK","uri":"file-7"})";

TemplateManager& templateManager()
{
    return dynamic_cast<TemplateManager&>(*ITemplateManager::Get());
}

class TemplateManagerWireTest : public WireTest
{
protected:
    TemplateManagerWireTest()
    {
        host.change([](OrloConfig& config) { config.appVersion = L"4.2.0"; });
    }

    bool isThere(ErrorCode& code) { return manager.IsTemplateExistedInProject(L"结构 & 1", L"p-1", code); }
    bool list(ErrorCode& code) { return manager.GetAllTemplatesOfProject(L"p-1", listed, code); }
    bool add(ErrorCode& code) { return manager.AddTemplateToProject(L"p-1", L"file-7", L"结构 & 1", L"ZOK", 5000000000, code); }

    TemplateManager& manager = templateManager();
    std::vector<SamplePlate> listed{SamplePlate{}};
};

TEST_F(TemplateManagerWireTest, isTheOneOfTheProcess)
{
    ASSERT_NE(ITemplateManager::Get(), nullptr);
    EXPECT_EQ(ITemplateManager::Get(), ITemplateManager::Get());
}

TEST_F(TemplateManagerWireTest, theAnswerSaysWhetherANameIsThere)
{
    server.expect("GET", plateName).reply(200, R"({"code":10000,"data":true})");
    EXPECT_TRUE(isThere(error));
    server.expect("GET", plateName).reply(200, R"({"code":10000,"data":false})");
    EXPECT_FALSE(isThere(error));
    server.expect("GET", plateName).reply(200, R"({"code":7,"data":true})");
    EXPECT_TRUE(isThere(error)) << "whatever the code";
    expectQuiet();
}

TEST_F(TemplateManagerWireTest, aNameIsNotThereWhereTheAnswerSaysNothingOfIt)
{
    for (const char* body :
         {R"({"code":10000})", R"({"data":null})", R"({"data":1})", R"({"data":"true"})", R"({"data":[true]})", "[]", "true"}) {
        server.expect("GET", plateName).reply(200, body);
        EXPECT_FALSE(isThere(error)) << body;
    }
    expectQuiet();
}

TEST_F(TemplateManagerWireTest, anEmptyNameOrProjectIsRefused)
{
    for (const auto& [name, project] : {std::pair{L"", L"p-1"}, std::pair{L"n", L""}, std::pair{L"", L""}}) {
        EXPECT_FALSE(manager.IsTemplateExistedInProject(name, project, error));
        expectGenericError(error, 3892314117, L"GenericError", L"templateName or projectId is empty");
        error.Clear();
    }
    EXPECT_FALSE(manager.GetAllTemplatesOfProject(L"", listed, error));
    expectGenericError(error, badInputValue, L"GenericError", L"projectId is empty");
    error.Clear();
    EXPECT_FALSE(manager.AddTemplateToProject(L"", L"uri", L"name", L"ZOK", 1, error));
    expectGenericError(error, badInputValue, L"GenericError", L"projectId is empty");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(listed.size(), 1u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(TemplateManagerWireTest, theTemplatesOfAProjectAreAppendedInTheOrderOfTheAnswer)
{
    server.expect("GET", plates)
        .reply(
            200,
            R"({"code":7,"data":[{"id":"a","name":"结构","uri":"c","samplePlateFrom":"From_Customize","specialty":"ZOK","templateId":"f",)"
            R"("projectId":"g","size":"3","createTime":"2024-01-02","updateTime":"2024-01-03","more":{}},)"
            R"({"id":1,"name":null,"uri":{},"samplePlateFrom":[],"specialty":false,"templateId":3000000000,"size":7,"createTime":1.5},7]})");
    EXPECT_TRUE(list(error));
    ASSERT_EQ(listed.size(), 4u);
    const auto& [id, name, uri, from, specialty, templateId, projectId, size, createTime, updateTime] = listed[1];
    EXPECT_EQ(id + L"|" + name + L"|" + uri + L"|" + from + L"|" + specialty, L"a|结构|c|From_Customize|ZOK");
    EXPECT_EQ(templateId + L"|" + projectId + L"|" + size + L"|" + createTime + L"|" + updateTime, L"f|g|3|2024-01-02|2024-01-03");
    for (const std::size_t number : {2u, 3u}) {
        const SamplePlate& plate = listed[number];
        EXPECT_EQ(plate.id + plate.name + plate.uri + plate.samplePlateFrom + plate.specialty + plate.templateId + plate.projectId +
                      plate.size + plate.createTime + plate.updateTime,
                  L"");
    }
    server.expect("GET", plates).reply(200, R"({"data":[]})");
    EXPECT_TRUE(list(error));
    EXPECT_EQ(listed.size(), 4u);
    expectQuiet();
}

TEST_F(TemplateManagerWireTest, aListThatIsNoArrayIsLoggedWhole)
{
    for (const std::string body : {R"({"code":10000})", R"({"data":null})", R"({"data":{"id":"a"}})", R"({"data":"x"})", "[]"}) {
        log.clear();
        server.expect("GET", plates).reply(200, body);
        EXPECT_FALSE(list(error)) << body;
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetAllTemplatesOfProject - response is not normal: " +
                                     std::wstring(body.begin(), body.end())});
    }
    EXPECT_EQ(listed.size(), 1u);
    expectClear(error);
}

TEST_F(TemplateManagerWireTest, aFileBecomesATemplateWithTheVersionOfTheApplication)
{
    server.expect("POST", newPlate).body(newPlateBody).reply(200, "whatever");
    EXPECT_TRUE(add(error));
    host.change([](OrloConfig& config) { config.appVersion.clear(); });
    server.expect("POST", newPlate).body(R"({"appVersion":"","name":"","size":-1,"specialty":"","uri":""})").reply(200, "");
    EXPECT_TRUE(manager.AddTemplateToProject(L"p-1", L"", L"", L"", -1, error)) << "the platform judges what it is told";
    expectQuiet();
}

TEST_F(TemplateManagerWireTest, failsAsEveryRetriedOperationDoes)
{
    RequestingOperation asking{"GET", plateName, "", L"OrloWebService::IsTemplateExistedInProject - code:",
                               [&](ErrorCode& code) { return isThere(code); }};
    asking.operationName = L"orlo::TemplateManager::IsTemplateExistedInProject";
    asking.goodAnswer = R"({"data":true})";
    expectFailuresOf(asking, server, log);
    expectSuccessAtLast(asking, server, log);

    RequestingOperation listing{"GET", plates, "", L"OrloWebService::GetAllTemplatesOfProject - code:",
                                [&](ErrorCode& code) { return list(code); }};
    listing.operationName = L"orlo::TemplateManager::GetAllTemplatesOfProject";
    listing.goodAnswer = R"({"data":[{"id":"a"}]})";
    expectFailuresOf(listing, server, log);
    EXPECT_EQ(listed.size(), 1u);
    expectSuccessAtLast(listing, server, log);
    EXPECT_EQ(listed.size(), 2u) << "only the attempt that succeeded has added something";

    RequestingOperation adding{"POST", newPlate, newPlateBody, L"OrloWebService::AddTemplateToProject - code:",
                               [&](ErrorCode& code) { return add(code); }};
    adding.operationName = L"orlo::TemplateManager::AddTemplateToProject";
    adding.readsJson = false;
    expectFailuresOf(adding, server, log);
    expectSuccessAtLast(adding, server, log);
}

TEST_F(TemplateManagerWireTest, anEarlierErrorIsToldAndGone)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"old"));
    server.expect("GET", plateName).reply(200, R"({"data":true})");
    EXPECT_TRUE(isThere(error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::TemplateManager::IsTemplateExistedInProject 传入的ErrorCode，已有错误存在:old"});
}

// The upload of a template's file

class TemplateUploadWireTest : public TransferTest
{
protected:
    std::shared_ptr<ICollaborationFile> upload() { return templateManager().UploadTemplateByArkiv(file, L"夹-1", error); }
    Expectation& expectAuthority()
    {
        return platform.expect("GET",
                               "/file/doc/upload/url/with/filename?fileName=%E6%A0%B7.dwt&filepath=/account-1&targetFolderId=%E5%A4%B9-1");
    }
    void expectStored(const std::string& answer)
    {
        expectAuthority().reply(200, R"({"data":)" + authority("r/样.dwt", atStore("/1?sig=abc")) + "}");
        store.expect("PUT", "/1?sig=abc").body("bytes").reply(200, answer);
    }
    void expectNone()
    {
        EXPECT_EQ(upload(), nullptr);
        EXPECT_EQ(log.count(L"E [ORLOSDK]TemplateManager::UploadTemplateByArkiv 上传样板文件失败"), 1u);
        log.clear();
    }

    const RetryLimit threeRetries{3};
    const std::wstring file = localFile("样.dwt", "bytes");
};

TEST_F(TemplateUploadWireTest, givesTheFileWithWhatTheStoreTold)
{
    expectStored(R"({"data":{"fileId":"文-7","versionIndex":0,"length":5000000000}})");
    const auto uploaded = upload();
    ASSERT_NE(uploaded, nullptr);
    EXPECT_EQ(uploaded->GetId(), "文-7");
    EXPECT_EQ(uploaded->GetVersion(), 0);
    EXPECT_EQ(uploaded->GetLength(), 5000000000);
    expectClear(error);
}

TEST_F(TemplateUploadWireTest, aLengthThatTheStoreDoesNotTellIsNone)
{
    expectStored(R"({"data":{"fileId":"f-7","versionIndex":3}})");
    const auto uploaded = upload();
    ASSERT_NE(uploaded, nullptr);
    EXPECT_EQ(uploaded->GetVersion(), 3);
    EXPECT_EQ(uploaded->GetLength(), 0);
}

TEST_F(TemplateUploadWireTest, withoutAFileOrAVersionThereIsNoTemplate)
{
    for (const char* answer :
         {R"({"data":{"versionIndex":1,"length":5}})", R"({"data":{"fileId":"","versionIndex":1}})",
          R"({"data":{"fileId":7,"versionIndex":1}})", R"({"data":{"fileId":"f-7","length":5}})",
          R"({"data":{"fileId":"f-7","versionIndex":-1}})", R"({"data":{"fileId":"f-7","versionIndex":"1"}})",
          R"({"data":{"fileId":"f-7","versionIndex":3000000000}})", R"({"data":[]})", R"({"data":null})", "{}", "stored"}) {
        SCOPED_TRACE(answer);
        expectStored(answer);
        expectNone();
        expectClear(error);
    }
}

TEST_F(TemplateUploadWireTest, anUploadThatFailsLeavesItsReason)
{
    expectAuthority().reply(403, "没有权限");
    expectNone();
    expectHttpError(error, errorStatusValue, L"HttpError", L"没有权限", 403);
}

TEST_F(TemplateUploadWireTest, aFileThatIsNotThereIsRefused)
{
    EXPECT_EQ(templateManager().UploadTemplateByArkiv(L"/no/such/file", L"", error), nullptr);
    EXPECT_EQ(templateManager().UploadTemplateByArkiv(L"", L"", error), nullptr);
    EXPECT_EQ(log.count(L"E [ORLOSDK]TemplateManager::UploadTemplateByArkiv 上传样板文件失败"), 2u);
    EXPECT_EQ(platform.requestCount(), 0u);
}

} // namespace
} // namespace orlo::test
