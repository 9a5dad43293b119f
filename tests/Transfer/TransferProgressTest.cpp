// How far a host is told that its transfers are.

#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/CallScope.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <mutex>
#include <thread>

namespace orlo::test {
namespace {

class TransferProgressTest : public TransferTest
{
protected:
    ProgressCallback note()
    {
        return [this](const Progress& progress) {
            const std::lock_guard lock(m_mutex);
            EXPECT_LE(progress.bytesDone, progress.bytesInAll);
            EXPECT_LE(progress.fileBytesDone, progress.fileBytesInAll);
            EXPECT_LE(progress.fileBytesInAll, progress.bytesInAll);
            m_last = progress;
            ++m_calls;
        };
    }
    Progress last() const
    {
        const std::lock_guard lock(m_mutex);
        return m_last;
    }
    int calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }

    void expectFiles(std::size_t bytes) const
    {
        EXPECT_EQ(last().fileBytesDone, bytes);
        EXPECT_EQ(last().fileBytesInAll, bytes);
        EXPECT_EQ(last().bytesDone, last().bytesInAll);
    }

    std::future<PromiseData> upload(const std::string& bytes, bool gzip = false)
    {
        return HttpClient::uploadFile(error, localFile("u", bytes), L"n", L"p", gzip);
    }

private:
    mutable std::mutex m_mutex;
    Progress m_last;
    int m_calls = 0;
};

TEST_F(TransferProgressTest, ofAnUploadEndsWithItsSize)
{
    const std::string answer = authority("r", atStore("/c"));
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, answer);
    store.expect("PUT", "/c").anyBody().reply(200, "{}");
    {
        const CallScope scope(note());
        EXPECT_TRUE(outcomeOf(upload(patterned(3 << 20))).success);
    }
    expectFiles(3 << 20);
    EXPECT_EQ(last().bytesDone, (3U << 20) + 2 + answer.size()) << "with the words of the platform and of the store";
}

TEST_F(TransferProgressTest, ofALargeUploadFromItsPlace)
{
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().reply(200);
    {
        const CallScope scope(note());
        EXPECT_TRUE(outcomeOf(upload(patterned(20 << 20))).success);
    }
    expectFiles(20 << 20);
}

TEST_F(TransferProgressTest, ofADownloadEndsWithItsSize)
{
    platform.expect("POST", "/file/read").anyBody().reply(200, authority("r", atStore("/c")));
    store.expect("GET", "/c").reply(fileReply(patterned(5 << 20)));
    {
        const CallScope scope(note());
        EXPECT_TRUE(outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)).success);
    }
    expectFiles(5 << 20);
}

TEST_F(TransferProgressTest, ofABatchIsThatOfAllItsFiles)
{
    expectBatch(R"(["a/b","a/c"])", {{"a/b", atStore("/b")}, {"a/c", atStore("/c")}});
    store.expect("GET", "/b").reply(fileReply(patterned(1 << 20)));
    store.expect("GET", "/c").reply(fileReply(patterned(2 << 20)));
    store.anyOrder();
    {
        const CallScope scope(note());
        EXPECT_TRUE(outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b", "a/c"}, nullptr)).success);
    }
    expectFiles(3 << 20);
}

TEST_F(TransferProgressTest, ofAFailedAttemptIsTakenBack)
{
    const RetryLimit three(3);
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().reply(503);
    store.expect("PUT", "/c").anyBody().reply(200);
    {
        const CallScope scope(note());
        EXPECT_TRUE(outcomeOf(upload(patterned(1 << 20))).success);
    }
    expectFiles(1 << 20);
}

TEST_F(TransferProgressTest, ofATransferThatFailsStaysWhereItIs)
{
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().reset();
    {
        const CallScope scope(note());
        EXPECT_FALSE(outcomeOf(upload(patterned(1 << 20))).success);
    }
    EXPECT_EQ(last().fileBytesDone, 1U << 20);
    EXPECT_EQ(last().fileBytesInAll, 1U << 20);
}

TEST_F(TransferProgressTest, ofACompressedUploadIsThatOfWhatIsSent)
{
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().reply(200);
    {
        const CallScope scope(note());
        EXPECT_TRUE(outcomeOf(upload(std::string(1 << 20, 'a'), true)).success);
    }
    EXPECT_EQ(last().fileBytesDone, store.requests().at(0).body.size());
    EXPECT_EQ(last().fileBytesInAll, last().fileBytesDone);
    EXPECT_LT(last().fileBytesDone, 1U << 16);
}

TEST_F(TransferProgressTest, ofAnOperationCountsItsCalls)
{
    platform.expect("GET", "/projects?scenario=DEFAULT").reply(200, "[]   ");
    {
        const CallScope scope(note());
        EXPECT_TRUE(ICollaborationProjectManager::Get()->GetAllProjects(error).empty());
    }
    EXPECT_EQ(last().bytesDone, 5U);
    EXPECT_EQ(last().bytesInAll, 5U);
    EXPECT_EQ(last().fileBytesInAll, 0U);
}

TEST_F(TransferProgressTest, ofALengthThatIsMadeUpOverflowsNothing)
{
    const RawServer liar(RawAnswer::bytes("HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775807\r\n\r\nshort"));
    platform.expect("POST", "/file/read").anyBody().reply(200, authority("r", liar.url() + "/c"));
    {
        const CallScope scope(note());
        EXPECT_FALSE(outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)).success);
    }
    EXPECT_LE(last().fileBytesInAll, std::uint64_t{1} << 50);
}

TEST_F(TransferProgressTest, isNoLongerToldBehindTheEndOfItsScope)
{
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().reply(200);
    std::future<PromiseData> future;
    int callsAtTheEnd = 0;
    {
        const CallScope scope(note());
        future = upload(patterned(1 << 20));
    }
    callsAtTheEnd = calls();
    EXPECT_TRUE(outcomeOf(future).success);
    EXPECT_EQ(calls(), callsAtTheEnd);
}

} // namespace
} // namespace orlo::test
