#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Transfer/StreamWeb.h>

namespace orlo::test {
namespace {

/// A file from an address, for callers that wait for it.
class PlainDownloadTest : public TransferTest
{
protected:
    bool download(const std::string& address)
    {
        return http::SendNormalRequestWithRetry(&OrloWebService::DownloadFileFromUrl, false, error, utils::toWstring(address),
                                                wideLocalPath("new/folder/d.bin"));
    }
    std::filesystem::path target() const { return localPath("new/folder/d.bin"); }
};

TEST_F(PlainDownloadTest, bringsTheFileWithoutATokenAndMakesItsFolder)
{
    store.expect("GET", "/c/b%2F1?sig=x%20y").header("Content-Type", "").withoutHeader("Authorization").reply(fileReply(patterned(300000)));
    ASSERT_TRUE(download(atStore("/c/b%2F1?sig=x y")));
    EXPECT_EQ(readFile(target()), patterned(300000));
    EXPECT_TRUE(error.isClear());
    EXPECT_TRUE(temporaryFiles().empty());
    EXPECT_FALSE(log.holds(L"sig="));
}

TEST_F(PlainDownloadTest, anEmptyFileIsAFileToo)
{
    store.expect("GET", "/b").reply(fileReply(""));
    ASSERT_TRUE(download(atStore("/b")));
    EXPECT_EQ(readFile(target()), "");
    EXPECT_TRUE(std::filesystem::exists(target()));
}

TEST_F(PlainDownloadTest, aRefusalLeavesTheTargetAsItWas)
{
    wideLocalPath("new/folder/d.bin");
    writeFile(target(), "earlier");
    store.expect("GET", "/b").reply(403, "expired");
    EXPECT_FALSE(download(atStore("/b")));
    EXPECT_EQ(readFile(target()), "earlier");
    EXPECT_EQ(error.GetErrorMessage(), L"expired");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::DownloadFileFromUrl - code:403"));
    EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
}

TEST_F(PlainDownloadTest, anyStatusButTwoHundredIsAFailure)
{
    store.expect("GET", "/b").reply(204, "");
    EXPECT_FALSE(download(atStore("/b")));
    EXPECT_FALSE(std::filesystem::exists(target()));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::DownloadFileFromUrl - code:204"));
}

TEST_F(PlainDownloadTest, isRepeatedAndHoldsTheLastAnswerAlone)
{
    const RetryLimit two{2};
    store.expect("GET", "/b").times(2).reply(503, "not yet, and these words are longer than the file");
    store.expect("GET", "/b").reply(fileReply("the file"));
    ASSERT_TRUE(download(atStore("/b")));
    EXPECT_EQ(readFile(target()), "the file");
    EXPECT_TRUE(error.isClear());
}

TEST_F(PlainDownloadTest, aTargetThatCanNotBeMadeFailsAndLeavesTheTemporaryFile)
{
    std::filesystem::create_directories(localPath("new").parent_path());
    writeFile(localPath("new"), "a file where a folder should be");
    store.expect("GET", "/b").reply(fileReply("the file"));
    EXPECT_FALSE(http::SendNormalRequestWithRetry(&OrloWebService::DownloadFileFromUrl, false, error, utils::toWstring(atStore("/b")),
                                                  utils::toWstring(target().u8string())));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]Failed to move file to \"" + utils::toWstring(target().u8string()) + L"\""));
    EXPECT_EQ(error.GetErrorMessage(), L"the file can't be moved to its place");
    EXPECT_EQ(temporaryFiles().size(), 1U);
}

TEST_F(PlainDownloadTest, aBadAddressFailsWithoutAWordOfIt)
{
    for (const std::string address : {"no address at all SECRET", "/c/SECRET?sig=SECRET", "http://127.0.0.1/a|b?sig=SECRET",
                                      "ftp://127.0.0.1/SECRET", "http://127.0.0.1:1/c?sig=SECRET", ""}) {
        SCOPED_TRACE(address);
        EXPECT_FALSE(download(address));
        EXPECT_FALSE(error.isClear());
        EXPECT_EQ(error.GetErrorMessage().find(L"SECRET"), std::wstring::npos);
        EXPECT_FALSE(log.holds(L"SECRET"));
        error.Clear();
    }
    EXPECT_FALSE(std::filesystem::exists(target()));
}

} // namespace
} // namespace orlo::test
