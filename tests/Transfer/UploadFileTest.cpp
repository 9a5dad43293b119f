#include "CollaborationTest.h"

namespace orlo::test {
namespace {

class UploadFileTest : public CollaborationTest
{
protected:
    FilePtr upload() { return upload(file); }
    FilePtr upload(const std::wstring& path) { return manager().UploadFile(L"f-1", path, error); }

    Expectation& expectVersion(const std::string& sourceFile = "r/plan.dwg")
    {
        return platform.expect("PUT", "/dataset/d-9/version?sourceFile=" + sourceFile).body("{}");
    }
    /// The upload went wrong; the dataset is made all the same, and the platform refuses the words as a source.
    void expectRefusedVersionOf(const std::string& words)
    {
        expectDataset();
        expectVersion(words).reply(400, "no such file");
    }
    void expectNothingAtTheEnd(const FilePtr& result)
    {
        EXPECT_EQ(result, nullptr);
        platform.verify();
        EXPECT_TRUE(log.has(noVersionWords));
        expectHttpError(error, errorStatusValue, L"HttpError", L"no such file", 400);
    }
};

TEST_F(UploadFileTest, uploadsThenMakesADatasetThenItsVersion)
{
    expectAuthority().header("Authorization", "Bearer token-secret-1").reply(200, goodAuthority());
    expectPut().withoutHeader("Authorization").reply(200, "", "");
    expectDataset();
    expectVersion()
        .header("Content-Type", "application/json")
        .reply(200, R"({"code":10000,"data":{"id":31,"version":1,"dataSetId":"other","size":5}})");
    expectFile(upload(), "d-9", 1, 5);
    expectClear(error);
    EXPECT_EQ(problems(), Lines{});
}

TEST_F(UploadFileTest, readsLengthsBeyondThirtyTwoBitsUnderEitherKey)
{
    for (const char* answer : {R"({"version":7,"size":5000000000})", R"({"data":{"version":7,"length":5000000000}})",
                               R"({"data":{"version":7,"length":1,"size":5000000000}})"}) {
        expectUpload();
        expectDataset();
        expectVersion().reply(200, answer);
        expectFile(upload(), "d-9", 7, 5000000000);
    }
}

TEST_F(UploadFileTest, anAnswerThatTellsNothingGivesAFileOfVersionZero)
{
    expectUpload();
    expectDataset();
    expectVersion().reply(200, "{}");
    expectFile(upload(), "d-9", 0, 0);
}

TEST_F(UploadFileTest, namesTheDatasetAsTheFileAndTypesItByTheTextBehindTheLastDot)
{
    struct Row
    {
        const char* name;
        const char* onTheWire;
        const char* type;
    };
    for (const Row& row : {Row{"a.b.c", "a.b.c", "c"}, Row{"README", "README", ""}, Row{"Plan.DWG", "Plan.DWG", "DWG"},
                           Row{"平面 图.dwg", "%E5%B9%B3%E9%9D%A2%20%E5%9B%BE.dwg", "dwg"}, Row{"folder.d/plan", "plan", ""}}) {
        const std::string name = std::string(row.name).substr(std::string(row.name).rfind('/') + 1);
        expectAuthority(row.onTheWire).reply(200, goodAuthority());
        expectPut().reply(200, "", "");
        platform.expect("POST", "/v2/dataSets")
            .body(R"({"name":")" + name + R"(","ownerId":"","specialtyId":"","folderId":"f-1","teamId":"","type":")" + row.type + R"("})")
            .reply(200, R"({"code":10000,"data":{"id":"d-9"}})");
        expectVersion().reply(200, R"({"version":1})");
        expectFile(upload(localFile(row.name, "bytes")), "d-9", 1, 0);
        platform.verify();
    }
}

TEST_F(UploadFileTest, theSourceIsWhateverTextTheUploadGave)
{
    expectAuthority().reply(200, authority("远 r/a&b.dwg", platform.url() + "/store/1?sig=abc"));
    expectPut().reply(200, "", "");
    expectDataset();
    expectVersion("%E8%BF%9C%20r/a%26b.dwg").reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);

    expectAuthority().reply(200, goodAuthority());
    expectPut().reply(200, R"({"data":{"fileId":"x"}})");
    expectDataset();
    expectVersion("%7B%22remoteFilePath%22:%22r/plan.dwg%22,%22fileId%22:%22x%22%7D").reply(200, R"({"version":2})");
    expectFile(upload(), "d-9", 2, 0);
}

TEST_F(UploadFileTest, eachRequestIsRepeatedForItself)
{
    expectAuthority().times(2).reply(503, "");
    expectAuthority().reply(200, goodAuthority());
    expectPut().times(2).reply(503, "");
    expectPut().reply(200, "", "");
    platform.expect("POST", "/v2/dataSets").anyBody().times(3).reset();
    expectDataset();
    expectVersion().times(2).reply(503, "");
    expectVersion().reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);
    platform.verify();
    expectClear(error);
}

TEST_F(UploadFileTest, aFailedDatasetEndsItAndLeavesTheUploadedFileWhereItIs)
{
    expectFailuresOf({"POST", "/v2/dataSets",
                      R"({"name":"plan.dwg","ownerId":"","specialtyId":"","folderId":"f-1","teamId":"","type":"dwg"})", noDatasetWords,
                      [this] { expectUpload(); }, [this] { return upload(); }});
}

TEST_F(UploadFileTest, anAnswerWithoutTheMarkIsAFailedDataset)
{
    for (const char* answer : {R"({"code":7,"data":{"id":"d-9"}})", R"({"data":{"id":"d-9"}})", "[]"}) {
        log.clear();
        expectUpload();
        platform.expect("POST", "/v2/dataSets").anyBody().reply(200, answer);
        EXPECT_EQ(upload(), nullptr) << answer;
        expectClear(error);
        EXPECT_EQ(problems(), Lines{noDatasetWords});
    }
}

TEST_F(UploadFileTest, aDatasetWithoutAnIdGetsNoVersion)
{
    expectUpload();
    platform.expect("POST", "/v2/dataSets").anyBody().reply(200, R"({"code":10000,"data":{"name":"plan.dwg"}})");
    EXPECT_EQ(upload(), nullptr);
    expectGenericError(error, badInputValue, L"GenericError", L"data.dataSetId is empty.");
    EXPECT_EQ(problems(), Lines{noVersionWords});
}

TEST_F(UploadFileTest, aFailedVersionLeavesTheNewDatasetWithoutOne)
{
    expectFailuresOf({"PUT", "/dataset/d-9/version?sourceFile=r/plan.dwg", "{}", noVersionWords,
                      [this] {
                          expectUpload();
                          expectDataset();
                      },
                      [this] { return upload(); }});
}

TEST_F(UploadFileTest, aRefusedAuthorityGoesOnWithAnEmptySource)
{
    expectAuthority().reply(403, "not you");
    expectRefusedVersionOf("");
    expectNothingAtTheEnd(upload());
    EXPECT_EQ(problems(), (Lines{L"E [ORLOSDK]OrloWebService::AcquireUploadAuthorityAsync - code:403", noVersionWords}));
}

TEST_F(UploadFileTest, aRefusedPutGoesOnWithThePlatformsWordsAsTheSource)
{
    expectAuthority().reply(200, goodAuthority());
    expectPut().reply(403, "signature expired");
    expectRefusedVersionOf("signature%20expired");
    expectNothingAtTheEnd(upload());
}

TEST_F(UploadFileTest, aFileThatCanNotBeReadGoesOnWithTheWordsForThat)
{
    const std::pair<std::wstring, const char*> rows[] = {
        {wideLocalPath("gone/plan.dwg"), "invalid%20file%20path"},
        {localFile("empty/plan.dwg", ""), "invalid%20file%20content"},
    };
    for (const auto& [path, words] : rows) {
        expectRefusedVersionOf(words);
        expectNothingAtTheEnd(upload(path));
        EXPECT_EQ(problems(), Lines{noVersionWords});
        log.clear();
        error.Clear();
    }
}

TEST_F(UploadFileTest, theUploadsOutcomeIsNotTested)
{
    expectDataset();
    expectVersion("invalid%20file%20path").reply(200, R"({"version":1,"size":9})");
    expectFile(upload(wideLocalPath("gone/plan.dwg")), "d-9", 1, 9);
    expectClear(error);
}

TEST_F(UploadFileTest, aPathWithoutANameMakesNoDataset)
{
    for (const wchar_t* path : {L"", L"/"}) {
        log.clear();
        EXPECT_EQ(upload(path), nullptr);
        expectGenericError(error, badInputValue, L"GenericError", L"Invalid name or teamId");
        EXPECT_EQ(problems(), Lines{noDatasetWords});
        error.Clear();
    }
}

TEST_F(UploadFileTest, withoutAFolderTheFileIsUploadedAndTheDatasetRefused)
{
    expectUpload();
    EXPECT_EQ(manager().UploadFile(L"", file, error), nullptr);
    expectGenericError(error, badInputValue, L"GenericError", L"Invalid name or teamId");
    EXPECT_EQ(problems(), Lines{noDatasetWords});
}

TEST_F(UploadFileTest, anEarlierErrorIsLoggedAndGoneAfterASuccess)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"earlier"));
    expectUpload();
    expectDataset();
    expectVersion().reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);
    expectClear(error);
    EXPECT_EQ(log.count(L"E@orlo::CollaborationFileManager::UploadFile 传入的ErrorCode，已有错误存在:earlier"), 1u);
}

TEST_F(UploadFileTest, withoutAnAddressOfTheServiceItFailsInTheDatasetAndThrowsNothing)
{
    OrloConfigManager::Configure({});
    EXPECT_EQ(upload(), nullptr);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(problems().back(), noDatasetWords);
}

TEST_F(UploadFileTest, theManagerIsOneForTheProcess)
{
    EXPECT_NE(ICollaborationFileManager::Get(), nullptr);
    EXPECT_EQ(ICollaborationFileManager::Get(), ICollaborationFileManager::Get());
}

} // namespace
} // namespace orlo::test
