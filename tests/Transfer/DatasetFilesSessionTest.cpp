#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/CollaborationFileManager.h>
#include <OrloProjectManager/Transfer/DatasetFiles.h>

#include <LocalPlatform/LocalPlatform.h>
#include <LocalPlatform/Store/Transfers.h>
#include <atomic>
#include <thread>

// What went up as a version of a dataset comes back, from a platform that keeps it.
namespace orlo::test {
namespace {

using FilePtr = std::shared_ptr<ICollaborationFile>;
using platform::Fault;
using platform::FaultKind;
using platform::Sums;

class DatasetFilesSessionTest : public testing::Test
{
protected:
    enum class Road { plain, document };

    static CollaborationFileManager& manager() { return dynamic_cast<CollaborationFileManager&>(*ICollaborationFileManager::Get()); }

    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories(host.folder().path("Out"));
        writeFile(host.folder().path("Out") / std::filesystem::u8path(name), content);
        return host.folder().wide("Out") + L"/" + utils::toWstring(name);
    }

    FilePtr upload(Road road, const std::string& name, const std::string& content)
    {
        const std::wstring path = localFile(name, content);
        const FilePtr file =
            road == Road::plain ? manager().UploadFile(L"f-1", path, error) : manager().UploadFileByArkiv(L"f-1", path, error);
        EXPECT_NE(file, nullptr) << utils::toString(error.GetErrorMessage());
        return file;
    }
    FilePtr update(Road road, const std::string& datasetId, const std::string& name, const std::string& content)
    {
        const std::wstring path = localFile(name, content);
        const FilePtr file = road == Road::plain ? manager().UpdateFile(datasetId, path, error)
                                                 : manager().UpdateFileByArkiv(datasetId, L"f-1", path, error);
        EXPECT_NE(file, nullptr) << utils::toString(error.GetErrorMessage());
        return file;
    }

    PromiseData download(const std::string& datasetId, int version)
    {
        return outcomeOf(DatasetFiles::downloadVersion(datasetId, version, target, error));
    }
    void expectBack(const std::string& datasetId, int version, const std::string& content)
    {
        expectOutcome(download(datasetId, version), true, 200, target);
        expectClear(error);
        EXPECT_TRUE(readFile(back) == content);
        EXPECT_EQ(filesBelow(host.folder().path("In")).size(), 1u);
    }
    void expectNotBack(const std::string& datasetId, int version, int status)
    {
        writeFile(back, "what was there before");
        const PromiseData outcome = download(datasetId, version);
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.message, error.GetErrorMessage());
        EXPECT_NE(outcome.message, L"");
        EXPECT_EQ(readFile(back), "what was there before");
        EXPECT_EQ(filesBelow(host.folder().path("In")).size(), 1u);
    }

    void strike(const Fault& fault) { m_fault = platform.faults().add(fault); }
    Fault ofDownloads(FaultKind kind) const
    {
        Fault fault;
        fault.kind = kind;
        fault.path = "/blobs/";
        fault.prefix = true;
        fault.method = "GET";
        return fault;
    }
    int strikes() const { return platform.faults().count(m_fault); }

    std::filesystem::path folderForDownloads() const
    {
        std::filesystem::create_directories(host.folder().path("In"));
        return host.folder().path("In");
    }

    LogCapture log; // takes the lines of the setting up as well
    PlatformHost all;
    platform::LocalPlatform& platform = all.platform;
    HostSetup& host = all.host;
    RetryLimit retries{3};
    ErrorCode error;
    const std::filesystem::path back = folderForDownloads() / std::filesystem::u8path("回来的 图.dwg");
    const std::wstring target = utils::fromPath(back);

private:
    int m_fault = 0;
};

TEST_F(DatasetFilesSessionTest, everyVersionComesBackByBothRoads)
{
    for (const Road road : {Road::plain, Road::document}) {
        const std::string name = road == Road::plain ? "总平面 图.dwg" : "结构 图.ifc";
        const std::string id = upload(road, name, "as it was")->GetId();
        update(road, id, name, "as it is now");
        expectBack(id, 1, "as it was");
        expectBack(id, 2, "as it is now");
        expectBack(id, -1, "as it is now");
        const std::vector<DatasetFileVersion> versions = DatasetFiles::listVersions(id, error);
        expectClear(error);
        ASSERT_EQ(versions.size(), 2u);
        EXPECT_EQ(versions[0].number, 2);
        EXPECT_EQ(versions[0].size, 12);
        EXPECT_EQ(versions[0].displayVersion, L"V2");
        EXPECT_EQ(versions[0].status, L"WIP");
        EXPECT_NE(versions[0].creationTime, L"");
        EXPECT_NE(versions[0].id, versions[1].id);
        EXPECT_EQ(versions[1].number, 1);
        EXPECT_EQ(versions[1].size, 9);
        EXPECT_EQ(versions[0].sourceFile == versions[1].sourceFile, road == Road::document) << "a document keeps its id";
    }
}

TEST_F(DatasetFilesSessionTest, twentyMebibytesComeBackByBothRoads)
{
    platform.transfers().setSums(Sums::told);
    const std::string content = incompressible(20 << 20);
    for (const Road road : {Road::plain, Road::document})
        expectBack(upload(road, road == Road::plain ? "大.dwg" : "大.ifc", content)->GetId(), 1, content);
    EXPECT_EQ(filesBelow(host.folder().path("Temp")), std::vector<std::string>{});
}

TEST_F(DatasetFilesSessionTest, aDocumentsOwnCountIsFollowed)
{
    // Of one size, so that nothing but the count tells them apart.
    const std::string first = upload(Road::document, "plan.dwg", "one")->GetId();
    const std::string second = upload(Road::document, "plan.dwg", "two")->GetId();
    ASSERT_NE(first, second);
    update(Road::document, first, "plan.dwg", "tri");
    update(Road::document, second, "plan.dwg", "fou");
    expectBack(first, 1, "one");
    expectBack(second, 1, "two");
    expectBack(first, 2, "tri");
    expectBack(second, 2, "fou");
    expectBack(second, -1, "fou");
}

TEST_F(DatasetFilesSessionTest, threeRequestsAreSentAndNoTokenToTheStore)
{
    const std::string id = upload(Road::plain, "plan.dwg", "bytes")->GetId();
    platform.requests().clear();
    expectBack(id, 1, "bytes");
    EXPECT_EQ(platform.requests().count("GET", "/v2/datasets/" + id + "/version/1"), 1u);
    EXPECT_EQ(platform.requests().count("POST", "/file/read"), 1u);
    EXPECT_EQ(platform.requests().count("GET", "/blobs/"), 1u);
    EXPECT_EQ(platform.requests().count("", "/"), 3u);
}

TEST_F(DatasetFilesSessionTest, aFileThatTheUserPackedComesBackPacked)
{
    const std::string packed = gzipOf("text");
    expectBack(upload(Road::plain, "图纸.tar.gz", packed)->GetId(), 1, packed);
}

TEST_F(DatasetFilesSessionTest, bytesThatWereAlteredOnTheirWayAreNoFile)
{
    const std::string small = upload(Road::plain, "plan.dwg", "bytes")->GetId();
    const std::string large = upload(Road::document, "large.dwg", patterned(3 << 20))->GetId();
    platform.transfers().setSums(Sums::wrong);
    for (const std::string& id : {small, large}) {
        expectNotBack(id, 1, 5555);
        EXPECT_EQ(error.GetValue(), badInputValue);
        EXPECT_NE(error.GetErrorMessage().find(L"its MD5 isn't "), std::wstring::npos);
        error.Clear();
    }
    platform.transfers().setSums(Sums::told);
    expectBack(small, 1, "bytes");
}

TEST_F(DatasetFilesSessionTest, aFileThatWasReplacedInTheStoreIsNotTheVersion)
{
    const std::string id = upload(Road::plain, "plan.dwg", "bytes")->GetId();
    const std::string path = platform.ask(platform::storedFiles).at(0).remotePath;
    platform.change(platform::addFile, path, "other bytes");
    expectNotBack(id, 1, 5555);
    expectGenericError(error, badInputValue, L"GenericError", L"the file is another than the version tells: 11 bytes instead of 5");
}

TEST_F(DatasetFilesSessionTest, aBodyThatIsCutShortOnceIsAskedForAgain)
{
    const std::string content = patterned(3 << 20);
    const std::string id = upload(Road::plain, "plan.dwg", content)->GetId();
    for (const FaultKind kind : {FaultKind::CutBody, FaultKind::ResetAfterBytes, FaultKind::ResetBeforeAnswer}) {
        Fault fault = ofDownloads(kind);
        fault.bytes = 2 << 20;
        fault.calls = 2;
        strike(fault);
        expectBack(id, 1, content);
        EXPECT_EQ(strikes(), 2);
    }
}

TEST_F(DatasetFilesSessionTest, aBodyThatIsAlwaysCutShortIsNoFile)
{
    const std::string id = upload(Road::plain, "plan.dwg", patterned(3 << 20))->GetId();
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1000}, std::size_t{2} << 20}) {
        Fault fault = ofDownloads(FaultKind::CutBody);
        fault.bytes = bytes;
        fault.calls = 4;
        strike(fault);
        expectNotBack(id, 1, 5555);
        EXPECT_EQ(error.GetValue(), exceptionValue);
        EXPECT_EQ(strikes(), 4);
        error.Clear();
    }
}

TEST_F(DatasetFilesSessionTest, aVersionThatIsNotThereIsThePlatforms404)
{
    const std::string id = upload(Road::plain, "plan.dwg", "bytes")->GetId();
    expectNotBack(id, 2, 404);
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    error.Clear();
    expectNotBack("no-such-dataset", -1, 404);
    error.Clear();
    const std::string withoutVersion = all.addDataset("empty");
    expectNotBack(withoutVersion, -1, 404);
    error.Clear();
    EXPECT_TRUE(DatasetFiles::listVersions(withoutVersion, error).empty());
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    error.Clear();
    ASSERT_TRUE(all.addVersion(withoutVersion));
    expectNotBack(withoutVersion, 1, 5555);
    expectGenericError(error, badInputValue, L"GenericError", L"the version has no file");
}

TEST_F(DatasetFilesSessionTest, aTokenThatIsNoLongerGoodIs401)
{
    const std::string id = upload(Road::document, "plan.dwg", "bytes")->GetId();
    for (const std::string path : {"/v2/datasets/", "/file/doc/", "/blobs/"}) {
        Fault fault;
        fault.path = path;
        fault.prefix = true;
        fault.status = 401;
        strike(fault);
        expectNotBack(id, 1, 401);
        EXPECT_EQ(error.GetValue(), errorStatusValue);
        EXPECT_EQ(strikes(), 1);
        error.Clear();
    }
    expectBack(id, 1, "bytes");
}

TEST_F(DatasetFilesSessionTest, anAddressThatHasExpiredIs403)
{
    const std::string id = upload(Road::plain, "plan.dwg", "bytes")->GetId();
    platform.transfers().setSignedLifetime(0);
    expectNotBack(id, 1, 403);
    EXPECT_FALSE(log.holds(L"signature="));
}

TEST_F(DatasetFilesSessionTest, manyThreadsBringTheSameVersionToTheSamePlace)
{
    const std::string content = patterned(2 << 20);
    const std::string id = upload(Road::plain, "plan.dwg", content)->GetId();
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            ErrorCode own;
            good += outcomeOf(DatasetFiles::downloadVersion(id, 1, target, own)).success && DatasetFiles::listVersions(id, own).size() == 1;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 8);
    EXPECT_TRUE(readFile(back) == content);
    EXPECT_EQ(filesBelow(host.folder().path("In")).size(), 1u);
}

} // namespace
} // namespace orlo::test
