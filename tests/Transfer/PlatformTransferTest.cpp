#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Transfer/StreamWeb.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

#include <LocalPlatform/LocalPlatform.h>
#include <thread>

// Transfers to and from a platform that keeps its files and signs its addresses.
namespace orlo::test {
namespace {

using platform::addDataset;
using platform::addDatasetFile;
using platform::addFile;
using platform::contentOf;
using platform::Fault;
using platform::FaultKind;
using platform::storedFiles;

class PlatformTransferTest : public testing::Test
{
protected:
    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        writeFile(host.folder().path(name), content);
        return host.folder().wide(name);
    }
    PromiseData upload(const std::string& name, const std::string& content, bool gzip = false)
    {
        return outcomeOf(HttpClient::uploadFile(error, localFile(name, content), L"", L"", gzip));
    }
    PromiseData download(const std::wstring& remotePath)
    {
        return outcomeOf(HttpClient::downloadFile(remotePath, host.folder().wide("back"), error));
    }
    std::string back() const { return readFile(host.folder().path("back")); }

    std::vector<std::string> addBlocks(int count, std::size_t size)
    {
        platform::DatasetSeed dataset;
        dataset.id = "ds-1";
        dataset.name = "blocks";
        dataset.folderId = "f-1";
        platform.change(addDataset, dataset);
        std::vector<std::string> seeds;
        for (int i = 0; i < count; ++i) {
            seeds.push_back("块/" + std::to_string(i));
            m_addresses.push_back(platform.change(addDatasetFile, "ds-1", seeds.back(), block(i, size)));
        }
        return seeds;
    }
    static std::string block(int number, std::size_t size) { return std::to_string(number) + patterned(size); }
    std::string cachedBlock(int number) const
    {
        return readFile(host.folder().path("Files") / "ds-1" / std::filesystem::u8path("块/" + std::to_string(number)));
    }
    PromiseData batch(const std::vector<std::string>& seeds)
    {
        return outcomeOf(HttpClient::downloadBatchFiles(error, "块", "ds-1", seeds, nullptr));
    }
    int addFault(FaultKind kind, const std::string& path, std::size_t bytes, bool ofRequest = false)
    {
        Fault fault;
        fault.kind = kind;
        fault.path = path;
        fault.prefix = true;
        fault.bytes = bytes;
        fault.ofRequest = ofRequest;
        fault.method = ofRequest ? "PUT" : "";
        return platform.faults().add(fault);
    }

    PlatformHost all;
    platform::LocalPlatform& platform = all.platform;
    HostSetup& host = all.host;
    const RetryLimit retries{3};
    LogCapture log;
    ErrorCode error;
    std::vector<std::string> m_addresses;
};

TEST_F(PlatformTransferTest, aFileGoesUpAndComesBack)
{
    const PromiseData up = upload("总平面图 1.dwg", patterned(3000000));
    ASSERT_TRUE(up.success) << utils::toString(up.message);
    EXPECT_EQ(platform.ask(contentOf, utils::toString(up.message)), patterned(3000000));
    expectOutcome(download(up.message), true, 200, host.folder().wide("back"));
    EXPECT_EQ(back(), patterned(3000000));
}

TEST_F(PlatformTransferTest, aCompressedUploadIsStoredUnpacked)
{
    const PromiseData up = upload("a.txt", std::string(500000, 'a') + patterned(10), true);
    ASSERT_TRUE(up.success) << utils::toString(up.message);
    EXPECT_EQ(platform.ask(contentOf, utils::toString(up.message)), std::string(500000, 'a') + patterned(10));
}

TEST_F(PlatformTransferTest, aPackedAnswerIsInflated)
{
    platform.transfers().setGzipAnswers(true);
    platform.change(addFile, "r/f", std::string(2000000, 'x') + incompressible(1000));
    expectOutcome(download(L"r/f"), true, 200, host.folder().wide("back"));
    EXPECT_EQ(back(), std::string(2000000, 'x') + incompressible(1000));
}

TEST_F(PlatformTransferTest, anExpiredAddressIsRefusedBothWays)
{
    platform.change(addFile, "r/f", "bytes");
    platform.transfers().setSignedLifetime(0);
    EXPECT_EQ(upload("a", "bytes").status, 403);
    error.Clear();
    EXPECT_EQ(download(L"r/f").status, 403);
    EXPECT_FALSE(std::filesystem::exists(host.folder().path("back")));
    EXPECT_FALSE(log.holds(L"signature="));
}

TEST_F(PlatformTransferTest, anAlteredAddressIsRefused)
{
    const RetryLimit none{0};
    EXPECT_FALSE(http::SendNormalRequestWithRetry(&OrloWebService::DownloadFileFromUrl, false, error,
                                                  utils::toWstring(platform.url() + "/blobs/1?expires=9999999999&signature=00"),
                                                  host.folder().wide("back")));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::DownloadFileFromUrl - code:403"));
    EXPECT_FALSE(std::filesystem::exists(host.folder().path("back")));
}

TEST_F(PlatformTransferTest, anUploadThatBreaksInTheMiddleIsRepeatedWhole)
{
    const int fault = addFault(FaultKind::ResetAfterBytes, "/blobs/", 1000000, true);
    const PromiseData up = upload("a", patterned(3000000));
    ASSERT_TRUE(up.success) << utils::toString(up.message);
    EXPECT_EQ(platform.faults().count(fault), 1);
    EXPECT_EQ(platform.ask(contentOf, utils::toString(up.message)), patterned(3000000));
    EXPECT_EQ(platform.ask(storedFiles).size(), 1U);
}

TEST_F(PlatformTransferTest, aDownloadThatBreaksInTheMiddleIsRepeatedWhole)
{
    platform.change(addFile, "r/f", patterned(3000000));
    for (const FaultKind kind : {FaultKind::ResetAfterBytes, FaultKind::CutBody}) {
        const int fault = addFault(kind, "/blobs/", 1000000);
        expectOutcome(download(L"r/f"), true, 200, host.folder().wide("back"));
        EXPECT_EQ(platform.faults().count(fault), 1);
        EXPECT_EQ(back(), patterned(3000000));
        std::filesystem::remove(host.folder().path("back"));
    }
}

TEST_F(PlatformTransferTest, aDownloadThatBreaksEveryTimeLeavesNoFile)
{
    platform.change(addFile, "r/f", patterned(3000000));
    Fault cut;
    cut.kind = FaultKind::CutBody;
    cut.path = "/blobs/";
    cut.prefix = true;
    cut.calls = -1;
    cut.bytes = 1000000;
    const int fault = platform.faults().add(cut);
    EXPECT_FALSE(download(L"r/f").success);
    EXPECT_EQ(platform.faults().count(fault), 4);
    EXPECT_FALSE(std::filesystem::exists(host.folder().path("back")));
    EXPECT_TRUE(filesBelow(host.folder().path("Temp")).empty());
}

TEST_F(PlatformTransferTest, aDozenFilesComeAsABatchSixAtATime)
{
    const std::vector<std::string> seeds = addBlocks(12, 200000);
    // Each waits, so that as many stand side by side as are let in.
    Fault delay;
    delay.kind = FaultKind::Delay;
    delay.path = "/blobs/";
    delay.prefix = true;
    delay.calls = 6;
    delay.delayMilliseconds = 1000;
    platform.faults().add(delay);
    platform.requests().clear();
    expectOutcome(batch(seeds), true, 200, L"success to batch download files");
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(cachedBlock(i), block(i, 200000)) << i;
    EXPECT_EQ(platform.requests().count("GET", "/blobs/"), 12U);
    EXPECT_LE(platform.requests().peakDownloads(), 6U);
    EXPECT_GE(platform.requests().peakDownloads(), 2U);
}

TEST_F(PlatformTransferTest, aStreamOfABatchThatBreaksIsRepeatedByItself)
{
    const std::vector<std::string> seeds = addBlocks(8, 500000);
    const int fault = addFault(FaultKind::ResetAfterBytes, m_addresses[3], 200000);
    expectOutcome(batch(seeds), true, 200, L"success to batch download files");
    EXPECT_EQ(platform.faults().count(fault), 1);
    EXPECT_EQ(platform.requests().count("GET", "/blobs/"), 9U);
    EXPECT_EQ(cachedBlock(3), block(3, 500000));
}

TEST_F(PlatformTransferTest, aSecondSynchronousDownloadComesFromTheCache)
{
    addBlocks(1, 1000);
    const std::wstring path = IFileManager::DownloadFile("ds-1", L"块/0?f=1", error);
    EXPECT_EQ(path, utils::toWstring((host.folder().path("Files") / "ds-1" / std::filesystem::u8path("块/0")).u8string()));
    EXPECT_EQ(cachedBlock(0), block(0, 1000));
    platform.requests().clear();
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"块/0?f=1", error), path);
    EXPECT_EQ(platform.requests().count("", "/"), 0U);
}

TEST_F(PlatformTransferTest, aFileByArkivGoesUpTwiceAndBothVersionsComeBack)
{
    const auto uploaded = [&](const std::string& content) {
        const PromiseData up = outcomeOf(HttpClient::uploadFileByArkiv(error, localFile("文件.dwg", content), L"f-1", L"", L"", false));
        EXPECT_TRUE(up.success) << utils::toString(up.message);
        JsonWrapper told;
        EXPECT_TRUE(told.Parse(utils::toString(up.message)));
        std::string fileId;
        int version = 0;
        EXPECT_TRUE(told.Get("fileId", fileId));
        EXPECT_TRUE(told.Get("versionIndex", version));
        return std::make_pair(utils::toWstring(fileId), version);
    };
    const auto first = uploaded("first");
    const auto second = uploaded("second, longer");
    EXPECT_EQ(first.first, second.first);
    EXPECT_EQ(second.second, first.second + 1);
    expectOutcome(outcomeOf(HttpClient::DownloadFileByArkiv(first.first, first.second, host.folder().wide("back"), error)), true, 200,
                  host.folder().wide("back"));
    EXPECT_EQ(back(), "first");
    expectOutcome(outcomeOf(HttpClient::DownloadFileByArkiv(second.first, second.second, host.folder().wide("back"), error)), true, 200,
                  host.folder().wide("back"));
    EXPECT_EQ(back(), "second, longer");
}

} // namespace
} // namespace orlo::test
