#include "UploadJobsTest.h"

#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/Transfer/CollaborationFileManager.h>

#include <stdexcept>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using FileJob = WatchedJob<UploadFileJobEntity>;

class FileJobRun : public UploadJobsTest
{
protected:
    FileJob job(const std::string& fileId = {}, const std::string& dsId = {}, int dsVersion = -1)
    {
        return FileJob("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", fileId, dsId, dsVersion);
    }

    void expectStored()
    {
        platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=plan.dwg&filepath=/account-1&targetFolderId=f-1")
            .reply(200, R"({"code":10000,"data":)" + authority("r/plan.dwg", atStore("/1?sig=abc")) + "}");
        store.expect("PUT", "/1?sig=abc").body("bytes").reply(200, R"({"data":{"fileId":"file-7","versionIndex":2,"length":5}})");
    }
    void expectNewDataset()
    {
        platform.expect("POST", "/v2/dataSets")
            .body(R"({"name":"plan.dwg","ownerId":"","specialtyId":"","folderId":"f-1","teamId":"","type":"dwg"})")
            .reply(200, R"({"code":10000,"data":{"id":"d-9"}})");
    }
    Expectation& expectVersion(const std::string& dataset)
    {
        return platform.expect("PUT", "/dataset/" + dataset + "/doc/version?sourceFile=file-7").body(R"({"length":5,"version":2})");
    }
    Expectation& expectBinding()
    {
        return platform.expect("POST", "/dataset/dwg/binding")
            .body(R"({"datasetId":"ds-4","datasetVersion":7,"dwgId":"d-9","dwgVersion":3})");
    }
};

TEST_F(FileJobRun, withoutAFileIdUploadsANewFile)
{
    expectStored();
    expectNewDataset();
    expectVersion("d-9").reply(200, R"({"version":1})");
    auto tested = job();
    run(tested, true, 200, L"upload file success");
}

TEST_F(FileJobRun, withAFileIdUpdatesThatFile)
{
    expectStored();
    expectVersion("d-3").reply(200, R"({"version":5})");
    auto tested = job("d-3");
    run(tested, true, 200, L"upload file success");
}

TEST_F(FileJobRun, withADatasetBindsTheFileToItsVersion)
{
    expectStored();
    expectNewDataset();
    expectVersion("d-9").reply(200, R"({"version":3})");
    expectBinding().reply(200, "");
    auto tested = job("", "ds-4", 7);
    run(tested, true, 200, L"upload file success");
}

TEST_F(FileJobRun, failsWhenTheBindingFailsThoughTheFileIsThere)
{
    expectStored();
    expectNewDataset();
    expectVersion("d-9").reply(200, R"({"version":3})");
    expectBinding().reply(404, "no such dataset");
    auto tested = job("", "ds-4", 7);
    run(tested, false, 10011, L"上传文件失败：no such dataset");
}

TEST_F(FileJobRun, failsWithTheWordsOfTheUpload)
{
    platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=plan.dwg&filepath=/account-1&targetFolderId=f-1")
        .reply(403, "没有权限");
    auto tested = job();
    run(tested, false, 10011, L"上传文件失败：没有权限");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]CollaborationFileManager::UploadFileByArkiv 上传文件失败"));
}

TEST_F(FileJobRun, failsWithTheWordsOfTheUpdate)
{
    expectStored();
    expectVersion("d-3").reply(409, "taken");
    auto tested = job("d-3");
    run(tested, false, 10011, L"上传文件失败：taken");
}

TEST_F(FileJobRun, doesNotBindAFileThatDidNotComeBack)
{
    expectStored();
    expectVersion("d-3").reply(404, "gone");
    auto tested = job("d-3", "ds-4", 7);
    run(tested, false, 10011, L"上传文件失败：gone");
}

TEST_F(FileJobRun, failsWhereTheCopyIsGone)
{
    auto tested = job();
    ASSERT_TRUE(tested.save());
    std::filesystem::remove(std::filesystem::u8path(utils::toString(tested.GetLocalFilePath())));
    EXPECT_FALSE(tested.Run());
    expectOutcome(tested.future().get(), false, 10011, L"上传文件失败：");
    EXPECT_THAT(tested.steps, ElementsAre("remove without a copy"));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

/// Its file manager is what the test says.
class ManagedJob : public FileJob
{
public:
    using FileJob::FileJob;
    std::function<CollaborationFileManager*()> managerOf = [] { return nullptr; };

protected:
    CollaborationFileManager* fileManager() const override { return managerOf(); }
};

TEST_F(FileJobRun, withoutAFileManagerFails)
{
    ManagedJob tested("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", "", "", -1);
    run(tested, false, 10010, L"ICollaborationFileManager is null");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK][UploadFileJobEntity::resumeExcution] ICollaborationFileManager is null"});
}

TEST_F(FileJobRun, ofATemplateWantsTheFileManagerToo)
{
    ManagedJob tested("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", "", "", -1);
    tested.setTemplate(L"ZOK");
    run(tested, false, 10010, L"ICollaborationFileManager is null");
}

TEST_F(FileJobRun, anExceptionIsAFailedStep)
{
    ManagedJob standard("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", "", "", -1);
    standard.managerOf = []() -> CollaborationFileManager* { throw std::runtime_error("out of paper"); };
    run(standard, false, 10011, L"上传文件失败：");
    ManagedJob odd("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", "", "", -1);
    odd.managerOf = []() -> CollaborationFileManager* { throw 5; };
    run(odd, false, 10011, L"上传文件失败：");
}

TEST_F(FileJobRun, theFirstOutcomeStands)
{
    ManagedJob tested("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", "", "", -1);
    run(tested, false, 10010, L"ICollaborationFileManager is null");
    tested.managerOf = []() -> CollaborationFileManager* { throw 5; };
    EXPECT_FALSE(tested.Run());
    EXPECT_EQ(tested.future().get().status, 10010);
}

TEST_F(FileJobRun, aFolderThatHoldsSomethingElseStays)
{
    ManagedJob tested("p-1", L"f-1", copyOf("plan.dwg", "bytes"), L"plan.dwg", "", "", -1);
    const auto copy = std::filesystem::u8path(utils::toString(tested.GetLocalFilePath()));
    writeFile(copy.parent_path() / "note.txt", "mine");
    EXPECT_FALSE(tested.Run());
    EXPECT_THAT(copies(), ElementsAre("*/note.txt"));
}

TEST_F(FileJobRun, aFileOutsideTheCopiesIsUploadedAndStays)
{
    expectStored();
    expectNewDataset();
    expectVersion("d-9").reply(200, R"({"version":1})");
    const std::wstring mine = localFile("plan.dwg", "bytes");
    FileJob tested("p-1", L"f-1", mine, L"plan.dwg", "", "", -1);
    EXPECT_TRUE(tested.Run());
    EXPECT_EQ(readFile(localPath("plan.dwg")), "bytes");
}

/// A template manager that does what the test says.
struct Templates : ITemplateUploads
{
    class File : public ICollaborationFile
    {
    public:
        std::string GetId() const override { return "图-7"; }
        std::int32_t GetVersion() const override { return 3; }
        std::int64_t GetLength() const override { return 5; }
    };

    std::shared_ptr<ICollaborationFile> UploadTemplateByArkiv(const std::wstring& path, const std::wstring& folderId,
                                                              ErrorCode& error) override
    {
        calls.push_back(L"upload " + path + L" " + folderId);
        if (throwsAtUpload)
            throw std::runtime_error("out of paper");
        if (!isUploaded)
            error.Assign(badInputValue, std::make_shared<GenericError>(L"no upload"));
        return isUploaded ? std::make_shared<File>() : nullptr;
    }
    bool AddTemplateToProject(const std::wstring& projectId, const std::wstring& uri, const std::wstring& name,
                              const std::wstring& specialty, long long size, ErrorCode& error) override
    {
        calls.push_back(L"add " + projectId + L"|" + uri + L"|" + name + L"|" + specialty + L"|" + std::to_wstring(size));
        error.Assign(badInputValue, std::make_shared<GenericError>(L"not added"));
        if (throwsAtAddition)
            throw std::runtime_error("out of paper");
        return isAdded;
    }

    bool isUploaded = true;
    bool isAdded = true;
    bool throwsAtUpload = false;
    bool throwsAtAddition = false;
    std::vector<std::wstring> calls;
};

class TemplateJob : public FileJob
{
public:
    TemplateJob(const std::wstring& copy, ITemplateUploads* templates)
        : FileJob("p-1", L"f-1", copy, L"样板", "d-3", "ds-4", 7), m_templates(templates)
    {
        setTemplate(L"ZIM");
    }

protected:
    ITemplateUploads* templateManager() const override { return m_templates; }

private:
    ITemplateUploads* m_templates;
};

class TemplateJobRun : public UploadJobsTest
{
protected:
    void runTemplate(bool success, int status, const std::wstring& message)
    {
        TemplateJob tested(copyOf("样.dwt", "bytes"), &templates);
        path = tested.GetLocalFilePath();
        run(tested, success, status, message);
    }

    Templates templates;
    std::wstring path;
};

TEST_F(TemplateJobRun, uploadsAndAddsTheTemplateAndNothingElse)
{
    runTemplate(true, 200, L"Upload template success");
    EXPECT_THAT(templates.calls, ElementsAre(L"upload " + path + L" f-1", L"add p-1|图-7|样板|ZIM|3"));
}

TEST_F(TemplateJobRun, withoutATemplateManagerFails)
{
    TemplateJob tested(copyOf("a.dwt", "bytes"), nullptr);
    run(tested, false, 10010, L"pTemplateManager is nullptr");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK][UploadFileJobEntity::resumeExcution] pTemplateManager is nullptr"});
}

TEST_F(TemplateJobRun, failsWhenTheUploadFails)
{
    templates.isUploaded = false;
    runTemplate(false, 10011, L"上传文件失败：no upload");
    EXPECT_EQ(templates.calls.size(), 1u);
}

TEST_F(TemplateJobRun, failsWhenTheTemplateCannotBeAdded)
{
    templates.isAdded = false;
    runTemplate(false, 10011, L"上传文件失败：not added");
}

TEST_F(TemplateJobRun, anExceptionFailsWithTheErrorAsItStands)
{
    templates.throwsAtAddition = true;
    runTemplate(false, 10011, L"上传文件失败：not added");
    templates.throwsAtUpload = true;
    runTemplate(false, 10011, L"上传文件失败：");
}

TEST_F(TemplateJobRun, aCopiedJobIsThatOfTheSameTemplate)
{
    class CopiedJob : public UploadFileJobEntity
    {
    public:
        CopiedJob(const UploadFileJobEntity* other, ITemplateUploads* templates) : UploadFileJobEntity(other), m_templates(templates) {}

    protected:
        ITemplateUploads* templateManager() const override { return m_templates; }

    private:
        ITemplateUploads* m_templates;
    };
    const TemplateJob original(copyOf("a.dwt", "bytes"), nullptr);
    CopiedJob copy(&original, &templates);
    EXPECT_TRUE(copy.Run());
    EXPECT_THAT(templates.calls, ElementsAre(L"upload " + original.GetLocalFilePath() + L" f-1", L"add p-1|图-7|样板|ZIM|3"));
}

} // namespace
} // namespace orlo::test
