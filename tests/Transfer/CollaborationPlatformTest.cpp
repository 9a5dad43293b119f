#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"
#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>
#include <OrloProjectManager/NetworkProject/Transfer/TranslationWeb.h>
#include <OrloProjectManager/Projects/ICollaborationFolder.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Transfer/CollaborationFileManager.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

#include <LocalPlatform/LocalPlatform.h>
#include <atomic>
#include <thread>

// Collaboration files on a platform that keeps them.
namespace orlo::test {
namespace {

using FilePtr = std::shared_ptr<ICollaborationFile>;
using platform::contentOf;
using platform::Fault;
using platform::FaultKind;
using platform::storedFiles;
using platform::translations;

class CollaborationPlatformTest : public testing::Test
{
protected:
    static CollaborationFileManager& manager() { return dynamic_cast<CollaborationFileManager&>(*ICollaborationFileManager::Get()); }

    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        writeFile(host.folder().path(name), content);
        return host.folder().wide(name);
    }

    /// The bytes of a version, by the road that the file took.
    std::string bytesOf(const ICollaborationFile& file, int version)
    {
        const std::wstring target = host.folder().wide("came back");
        const std::wstring remotePath = recordOf(file.GetId(), version).dataSetSourceFile;
        const PromiseData outcome = outcomeOf(IFileManager::DownloadFile(remotePath, target, error));
        EXPECT_TRUE(outcome.success) << utils::toString(outcome.message);
        return readFile(host.folder().path("came back"));
    }
    /// versionIndex: of the document, which counts for itself.
    std::string bytesOfDocument(const ICollaborationFile& file, int versionIndex)
    {
        const std::wstring target = host.folder().wide("came back");
        const std::wstring fileId = recordOf(file.GetId(), file.GetVersion()).dataSetSourceFile;
        const PromiseData outcome = outcomeOf(IFileManager::DownloadFileByArkiv(fileId, versionIndex, target, error));
        EXPECT_TRUE(outcome.success) << utils::toString(outcome.message);
        return readFile(host.folder().path("came back"));
    }

    http::ORLOHTTPPayloadDatasetVersion recordOf(const std::string& datasetId, int version)
    {
        http::ORLOHTTPPayloadDatasetVersion record;
        EXPECT_TRUE(OrloWebService::GetDatasetVersionByMvd(error, record, datasetId, version, L""));
        return record;
    }

    bool exists(const std::wstring& path, std::wstring& dsId)
    {
        return ICollaborationFileManager::IsFileExistInProject("p-1", L"f-1", path, dsId);
    }
    bool exists(const std::wstring& path)
    {
        std::wstring ignored;
        return exists(path, ignored);
    }

    void strike(const std::string& path, bool isPrefix, int status, int calls)
    {
        Fault fault;
        fault.path = path;
        fault.prefix = isPrefix;
        fault.method = "PUT";
        fault.status = status;
        fault.calls = calls;
        m_fault = platform.faults().add(fault);
    }
    int strikes() const { return platform.faults().count(m_fault); }

    LogCapture log; // takes the lines of the setting up as well
    PlatformHost all;
    platform::LocalPlatform& platform = all.platform;
    HostSetup& host = all.host;
    RetryLimit retries{3};
    ErrorCode error;

private:
    int m_fault = 0;
};

TEST_F(CollaborationPlatformTest, anUploadedFileIsTheFirstVersionOfANewDataset)
{
    const std::string content = incompressible(3 << 20);
    const std::wstring path = localFile("总平面图.dwg", content);
    const FilePtr file = manager().UploadFile(L"f-1", path, error);
    ASSERT_NE(file, nullptr) << utils::toString(error.GetErrorMessage());
    EXPECT_EQ(file->GetVersion(), 1);
    EXPECT_EQ(file->GetLength(), 3 << 20);
    EXPECT_TRUE(bytesOf(*file, 1) == content);
    expectClear(error);
    std::wstring dsId;
    EXPECT_TRUE(exists(L"/elsewhere/总平面图.dwg", dsId));
    EXPECT_EQ(dsId, utils::toWstring(file->GetId()));
}

TEST_F(CollaborationPlatformTest, anUpdatedFileIsTheNextVersionAndTheEarlierOneStays)
{
    const FilePtr first = manager().UploadFile(L"f-1", localFile("plan.dwg", "as it was"), error);
    ASSERT_NE(first, nullptr);
    const FilePtr second = manager().UpdateFile(first->GetId(), localFile("other name.dwg", "as it is now"), error);
    ASSERT_NE(second, nullptr) << utils::toString(error.GetErrorMessage());
    EXPECT_EQ(second->GetId(), first->GetId());
    EXPECT_EQ(second->GetVersion(), 2);
    EXPECT_EQ(second->GetLength(), 12);
    EXPECT_EQ(bytesOf(*second, 2), "as it is now");
    EXPECT_EQ(bytesOf(*second, 1), "as it was");
    EXPECT_FALSE(exists(L"other name.dwg")) << "an update leaves the dataset's name alone";
}

TEST_F(CollaborationPlatformTest, aFileUploadedByArkivIsADocument)
{
    const std::string content = patterned(300000);
    const FilePtr file = manager().UploadFileByArkiv(L"f-1", localFile("结构 图.ifc", content), error);
    ASSERT_NE(file, nullptr) << utils::toString(error.GetErrorMessage());
    EXPECT_EQ(file->GetVersion(), 1);
    EXPECT_EQ(file->GetLength(), 300000);
    const platform::StoredFile stored = platform.ask(storedFiles).at(0);
    EXPECT_EQ(stored.fileName, "结构 图.ifc");
    EXPECT_EQ(recordOf(file->GetId(), 1).dataSetSourceFile, utils::toWstring(stored.fileId));
    EXPECT_TRUE(bytesOfDocument(*file, stored.versionIndex) == content);
}

TEST_F(CollaborationPlatformTest, aFileUpdatedByArkivIsTheNextVersion)
{
    const FilePtr first = manager().UploadFileByArkiv(L"f-1", localFile("plan.dwg", "as it was"), error);
    ASSERT_NE(first, nullptr);
    const FilePtr second = manager().UpdateFileByArkiv(first->GetId(), L"f-1", localFile("plan.dwg", "as it is now"), error);
    ASSERT_NE(second, nullptr) << utils::toString(error.GetErrorMessage());
    EXPECT_EQ(second->GetId(), first->GetId());
    EXPECT_EQ(second->GetVersion(), 2);
    EXPECT_EQ(bytesOfDocument(*second, platform.ask(storedFiles).back().versionIndex), "as it is now");
    EXPECT_EQ(bytesOfDocument(*first, platform.ask(storedFiles).front().versionIndex), "as it was");
}

TEST_F(CollaborationPlatformTest, existenceGoesByFolderAndExactName)
{
    ASSERT_NE(manager().UploadFile(L"f-1", localFile("Plan.dwg", "x"), error), nullptr);
    EXPECT_TRUE(exists(L"Plan.dwg"));
    EXPECT_FALSE(exists(L"plan.dwg"));
    std::wstring dsId;
    EXPECT_FALSE(ICollaborationFileManager::IsFileExistInProject("p-1", utils::toWstring(all.rootFolder()), L"Plan.dwg", dsId));
    EXPECT_FALSE(ICollaborationFileManager::IsFileExistInProject("p-1", L"no-such-folder", L"Plan.dwg", dsId));
    EXPECT_FALSE(ICollaborationFileManager::IsFileExistInProject("no-such-project", L"f-1", L"Plan.dwg", dsId));
    EXPECT_EQ(dsId, L"");
}

TEST_F(CollaborationPlatformTest, aFailedUploadLeavesADatasetWithoutAVersion)
{
    strike("/blobs/", true, 403, -1);
    EXPECT_EQ(manager().UploadFile(L"f-1", localFile("plan.dwg", "bytes"), error), nullptr);
    EXPECT_EQ(strikes(), 1);
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_TRUE(exists(L"plan.dwg"));
    EXPECT_EQ(platform.requests().count("DELETE", "/"), 0u);
}

TEST_F(CollaborationPlatformTest, aFailedUploadByArkivMakesNoDataset)
{
    strike("/blobs/", true, 403, -1);
    EXPECT_EQ(manager().UploadFileByArkiv(L"f-1", localFile("plan.dwg", "bytes"), error), nullptr);
    EXPECT_EQ(strikes(), 1);
    EXPECT_FALSE(exists(L"plan.dwg"));
}

TEST_F(CollaborationPlatformTest, aFailedUpdateByArkivLeavesTheVersionsAsTheyWere)
{
    const FilePtr first = manager().UploadFileByArkiv(L"f-1", localFile("plan.dwg", "as it was"), error);
    ASSERT_NE(first, nullptr);
    strike("/blobs/", true, 403, -1);
    EXPECT_EQ(manager().UpdateFileByArkiv(first->GetId(), L"f-1", localFile("plan.dwg", "as it is now"), error), nullptr);
    EXPECT_EQ(strikes(), 1);
    EXPECT_EQ(recordOf(first->GetId(), -1).version, 1);
}

TEST_F(CollaborationPlatformTest, aStoreThatIsBusyForAMomentIsAskedAgain)
{
    strike("/blobs/", true, 503, 2);
    const FilePtr file = manager().UploadFileByArkiv(L"f-1", localFile("plan.dwg", "bytes"), error);
    ASSERT_NE(file, nullptr) << utils::toString(error.GetErrorMessage());
    EXPECT_EQ(strikes(), 2);
    EXPECT_EQ(bytesOfDocument(*file, platform.ask(storedFiles).at(0).versionIndex), "bytes");
}

TEST_F(CollaborationPlatformTest, aPlatformThatIsBusyForLongIsGivenUp)
{
    const FilePtr first = manager().UploadFile(L"f-1", localFile("plan.dwg", "as it was"), error);
    ASSERT_NE(first, nullptr);
    strike("/dataset/" + first->GetId() + "/version", false, 503, -1);
    EXPECT_EQ(manager().UpdateFile(first->GetId(), localFile("plan.dwg", "as it is now"), error), nullptr);
    EXPECT_EQ(strikes(), 4);
    EXPECT_EQ(platform.ask(storedFiles).size(), 2u) << "the uploaded file stays";
}

TEST_F(CollaborationPlatformTest, manyThreadsUploadAtOnce)
{
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        const std::string content = std::string(100000, static_cast<char>('a' + i));
        const std::wstring path = localFile("plan-" + std::to_string(i), content);
        threads.emplace_back([&good, path] {
            ErrorCode own;
            const FilePtr file = manager().UploadFileByArkiv(L"f-1", path, own);
            good += file && file->GetLength() == 100000 ? 1 : 0;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 6);
    for (const platform::StoredFile& stored : platform.ask(storedFiles))
        EXPECT_TRUE(platform.ask(contentOf, stored.remotePath) ==
                    std::string(100000, static_cast<char>('a' + (stored.fileName.back() - '0'))))
            << stored.fileName;
}

TEST_F(CollaborationPlatformTest, aVersionIsHandedToTheTranslation)
{
    const FilePtr file = manager().UploadFile(L"f-1", localFile("plan.dwg", "bytes"), error);
    ASSERT_NE(file, nullptr);
    const auto trigger = [&](int version) {
        return http::SendNormalRequestWithRetry(&OrloWebService::TriggerSightlineTranslateWorkerByUploadJob, false, error, file->GetId(),
                                                version, L"glTF");
    };
    EXPECT_TRUE(trigger(1));
    const std::vector<platform::Translation> wishes = platform.ask(translations);
    ASSERT_EQ(wishes.size(), 1u);
    EXPECT_EQ(wishes[0].dataSetId, file->GetId());
    EXPECT_EQ(wishes[0].versionId, 1);
    EXPECT_EQ(wishes[0].toType, "glTF");
    EXPECT_FALSE(trigger(2));
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_EQ(platform.ask(translations).size(), 1u);
}

} // namespace
} // namespace orlo::test
