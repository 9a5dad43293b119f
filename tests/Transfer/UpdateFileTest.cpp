#include "CollaborationTest.h"

namespace orlo::test {
namespace {

class UpdateFileTest : public CollaborationTest
{
protected:
    FilePtr update(const std::wstring& path) { return manager().UpdateFile("d-3", path, error); }
    FilePtr update() { return update(file); }

    Expectation& expectVersion(const std::string& sourceFile = "r/plan.dwg")
    {
        return platform.expect("PUT", "/dataset/d-3/version?sourceFile=" + sourceFile).body("{}");
    }
};

TEST_F(UpdateFileTest, uploadsThenMakesAVersionOfTheDataset)
{
    expectUpload();
    expectVersion()
        .header("Content-Type", "application/json")
        .reply(200, R"({"code":10000,"data":{"id":31,"version":4,"dataSetId":"other","size":5000000000}})");
    expectFile(update(), "d-3", 4, 5000000000);
    expectClear(error);
    EXPECT_EQ(problems(), Lines{});
}

TEST_F(UpdateFileTest, withoutADatasetNothingIsSent)
{
    EXPECT_EQ(manager().UpdateFile("", file, error), nullptr);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_EQ(platform.requestCount(), 0u);
}

TEST_F(UpdateFileTest, withoutADatasetAnEarlierErrorStays)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"earlier"));
    EXPECT_EQ(manager().UpdateFile("", file, error), nullptr);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::CollaborationFileManager::UpdateFile 传入的ErrorCode，已有错误存在:earlier"});
    EXPECT_EQ(error.GetErrorMessage(), L"earlier");
}

TEST_F(UpdateFileTest, aFailedVersionIsToldInTheWordsOfAnUpload)
{
    expectFailuresOf({"PUT", "/dataset/d-3/version?sourceFile=r/plan.dwg", "{}", noVersionWords, [this] { expectUpload(); },
                      [this] { return update(); }});
}

TEST_F(UpdateFileTest, eachRequestIsRepeatedForItself)
{
    expectAuthority().times(3).reply(503, "");
    expectAuthority().reply(200, goodAuthority());
    expectPut().times(3).reply(503, "");
    expectPut().reply(200, "", "");
    expectVersion().times(2).reset();
    expectVersion().reply(200, R"({"version":2})");
    expectFile(update(), "d-3", 2, 0);
    platform.verify();
    expectClear(error);
}

TEST_F(UpdateFileTest, aFailedUploadEndsInARefusedVersion)
{
    const std::pair<std::wstring, const char*> rows[] = {
        {wideLocalPath("gone"), "invalid%20file%20path"},
        {L"", "invalid%20file%20path"},
        {localFile("empty", ""), "invalid%20file%20content"},
    };
    for (const auto& [path, words] : rows) {
        log.clear();
        expectVersion(words).reply(400, "no such file");
        EXPECT_EQ(update(path), nullptr);
        expectHttpError(error, errorStatusValue, L"HttpError", L"no such file", 400);
        EXPECT_EQ(problems(), Lines{noVersionWords});
        error.Clear();
    }
}

TEST_F(UpdateFileTest, aRefusedPutEndsInARefusedVersionToo)
{
    expectAuthority().reply(200, goodAuthority());
    expectPut().reply(403, "signature expired");
    expectVersion("signature%20expired").reply(400, "no such file");
    EXPECT_EQ(update(), nullptr);
    expectHttpError(error, errorStatusValue, L"HttpError", L"no such file", 400);
}

TEST_F(UpdateFileTest, theUploadsOutcomeIsNotTested)
{
    expectVersion("invalid%20file%20path").reply(200, R"({"version":8,"size":9})");
    expectFile(update(wideLocalPath("gone")), "d-3", 8, 9);
    expectClear(error);
}

} // namespace
} // namespace orlo::test
