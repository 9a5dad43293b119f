#include "CollaborationTest.h"

namespace orlo::test {
namespace {

class UpdateFileByArkivTest : public CollaborationTest
{
protected:
    FilePtr update(const std::wstring& path) { return manager().UpdateFileByArkiv("d-3", L"f-1", path, error); }
    FilePtr update() { return update(file); }

    Expectation& expectVersion(const std::string& sourceFile = "file-7", const std::string& body = R"({"length":5,"version":2})")
    {
        return platform.expect("PUT", "/dataset/d-3/doc/version?sourceFile=" + sourceFile).body(body);
    }
    /// A version without a file, which is what every failed upload comes to.
    void expectRefusedVersion() { expectVersion("", R"({"length":0,"version":-1})").reply(400, "no such file"); }
    void expectNothingAtTheEnd(const FilePtr& result)
    {
        EXPECT_EQ(result, nullptr);
        platform.verify();
        expectHttpError(error, errorStatusValue, L"HttpError", L"no such file", 400);
        EXPECT_EQ(problems().back(), noVersionWords);
        EXPECT_FALSE(log.has(noUploadWords));
    }
};

TEST_F(UpdateFileByArkivTest, uploadsThenMakesAVersionOfTheDataset)
{
    expectUploadByArkiv();
    expectVersion()
        .header("Content-Type", "application/json")
        .reply(200, R"({"code":10000,"data":{"id":31,"version":4,"dataSetId":"other","size":5}})");
    expectFile(update(), "d-3", 4, 5);
    expectClear(error);
    EXPECT_EQ(problems(), Lines{});
}

TEST_F(UpdateFileByArkivTest, sendsWhateverTheStoreTold)
{
    struct Row
    {
        const char* told;
        const char* sourceFile;
        const char* body;
    };
    for (const Row& row : {Row{R"({"fileId":"f"})", "f", R"({"length":0,"version":-1})"}, Row{"{}", "", R"({"length":0,"version":-1})"},
                           Row{R"({"fileId":"f","length":-7,"versionIndex":-2})", "f", R"({"length":-7,"version":-2})"},
                           Row{R"({"fileId":7,"length":5000000000,"versionIndex":"2"})", "", R"({"length":5000000000,"version":-1})"}}) {
        expectUploadByArkiv(row.told);
        expectVersion(row.sourceFile, row.body).reply(200, R"({"version":1,"size":3})");
        expectFile(update(), "d-3", 1, 3);
        platform.verify();
    }
    EXPECT_EQ(problems(), Lines{});
}

TEST_F(UpdateFileByArkivTest, aBarePathEndsInARefusedVersion)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(200, "", "");
    expectRefusedVersion();
    expectNothingAtTheEnd(update());
}

TEST_F(UpdateFileByArkivTest, aRefusedAuthorityEndsInARefusedVersion)
{
    expectAuthorityByArkiv().reply(403, "not you");
    expectRefusedVersion();
    expectNothingAtTheEnd(update());
}

TEST_F(UpdateFileByArkivTest, aRefusedPutEndsInARefusedVersion)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(403, "signature expired");
    expectRefusedVersion();
    expectNothingAtTheEnd(update());
}

TEST_F(UpdateFileByArkivTest, theUploadsOutcomeIsNotTested)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(403, R"({"fileId":"file-7","versionIndex":2,"length":5})");
    expectVersion().reply(200, R"({"version":4,"size":5})");
    expectFile(update(), "d-3", 4, 5);
    expectClear(error);
}

TEST_F(UpdateFileByArkivTest, aFileThatCanNotBeReadEndsInARefusedVersion)
{
    for (const std::wstring& path : {std::wstring(), wideLocalPath("gone"), localFile("empty", "")}) {
        expectRefusedVersion();
        expectNothingAtTheEnd(update(path));
        error.Clear();
    }
}

TEST_F(UpdateFileByArkivTest, withoutADatasetTheFileIsUploadedAndTheVersionRefused)
{
    expectUploadByArkiv();
    EXPECT_EQ(manager().UpdateFileByArkiv("", L"f-1", file, error), nullptr);
    platform.verify();
    expectGenericError(error, badInputValue, L"GenericError", L"data.dataSetId is empty.");
    EXPECT_EQ(problems(), Lines{noVersionWords});
}

TEST_F(UpdateFileByArkivTest, aFailedVersionIsToldInTheWordsOfAnUpload)
{
    expectFailuresOf({"PUT", "/dataset/d-3/doc/version?sourceFile=file-7", R"({"length":5,"version":2})", noVersionWords,
                      [this] { expectUploadByArkiv(); }, [this] { return update(); }});
}

TEST_F(UpdateFileByArkivTest, eachRequestIsRepeatedForItself)
{
    expectAuthorityByArkiv().times(3).reply(503, "");
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().times(2).reply(503, "");
    expectPut().reply(200, R"({"data":{"fileId":"file-7","versionIndex":2,"length":5}})");
    expectVersion().times(3).reply(503, "");
    expectVersion().reply(200, R"({"version":2})");
    expectFile(update(), "d-3", 2, 0);
    platform.verify();
    expectClear(error);
}

TEST_F(UpdateFileByArkivTest, anEarlierErrorIsLoggedUnderItsOwnName)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"earlier"));
    expectUploadByArkiv();
    expectVersion().reply(200, R"({"version":2})");
    expectFile(update(), "d-3", 2, 0);
    EXPECT_EQ(problems().front(), L"E@orlo::CollaborationFileManager::UpdateFileByArkiv 传入的ErrorCode，已有错误存在:earlier");
    expectClear(error);
}

} // namespace
} // namespace orlo::test
