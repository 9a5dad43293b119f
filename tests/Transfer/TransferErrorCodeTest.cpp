#include "support/TransferTestSupport.h"

#include <memory>

namespace orlo::test {
namespace {

/// The caller's ErrorCode goes as soon as the future is ready; a later write to it is for the sanitizers to find.
class TransferErrorCodeTest : public TransferTest
{
protected:
    /// Runs a transfer with an ErrorCode that dies with the future.   Returns: what it held then.
    template <class Start>
    long long valueAfter(Start start)
    {
        auto callers = std::make_unique<ErrorCode>();
        auto future = start(*callers);
        outcomeOf(future);
        return callers->GetValue();
    }
};

TEST_F(TransferErrorCodeTest, anUploadWritesItBeforeTheFutureIsReady)
{
    const std::wstring file = localFile("u", "x");
    platform.always("PUT", "/file/new?fileName=n&filepath=p").reply(404, "no");
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(valueAfter([&](ErrorCode& callers) { return HttpClient::uploadFile(callers, file, L"n", L"p", false); }),
                  errorStatusValue);
}

TEST_F(TransferErrorCodeTest, aDownloadWritesItBeforeTheFutureIsReady)
{
    platform.always("POST", "/file/read").reset();
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(valueAfter([&](ErrorCode& callers) { return HttpClient::downloadFile(L"r", L"", callers); }), exceptionValue);
}

TEST_F(TransferErrorCodeTest, aSuccessLeavesItClear)
{
    const std::wstring file = localFile("u", "x");
    platform.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/b")));
    store.always("PUT", "/b").reply(200, "", "");
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(valueAfter([&](ErrorCode& callers) { return HttpClient::uploadFile(callers, file, L"n", L"p", false); }), 0);
}

TEST_F(TransferErrorCodeTest, streamsThatGoOnAfterAFailureLeaveItAlone)
{
    std::vector<BatchEntry> entries;
    for (int i = 0; i < 12; ++i) {
        const std::string name = std::to_string(i);
        entries.push_back({"a/" + name, atStore("/" + name)});
        Reply reply = fileReply(name);
        reply.status = i % 2 == 0 ? 404 : 200;
        store.always("GET", "/" + name).reply(reply);
    }
    platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply(entries));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(valueAfter([&](ErrorCode& callers) { return HttpClient::downloadBatchFiles(callers, "a", "ds-1", {"x"}, nullptr); }),
                  errorStatusValue);
    }
    // A refused file starts no other one, so the six lines of streams end after six refused files.
    EXPECT_TRUE(waitUntil([&] { return log.count(L"E [ORLOSDK]OrloWebService::GetFileByStreamModeAsync - code:404") == 60; }));
}

} // namespace
} // namespace orlo::test
