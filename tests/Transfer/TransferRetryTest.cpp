#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

class TransferRetryTest : public TransferTest
{
protected:
    PromiseData upload(bool gzip = false)
    {
        return outcomeOf(HttpClient::uploadFile(error, localFile("u", "the bytes"), L"n", L"p", gzip));
    }
    PromiseData download() { return outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)); }
    PromiseData batch() { return outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr)); }

    Expectation& expectUploadAuthority() { return platform.expect("PUT", "/file/new?fileName=n&filepath=p"); }
    Expectation& expectReadAuthority() { return platform.expect("POST", "/file/read").body("r"); }
    Expectation& expectBatchAuthority() { return platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").body(R"(["a/b"])"); }
    std::string good() const { return authority("r", atStore("/b")); }
    std::string goodBatch() const { return batchReply({{"a/b", atStore("/b")}}); }

    void expectWarnings(std::size_t count)
    {
        std::size_t warnings = 0;
        for (const std::wstring& line : log.lines())
            warnings += line.find(L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[") == 0 ? 1 : 0;
        EXPECT_EQ(warnings, count);
    }

    const RetryLimit three{3};
};

TEST_F(TransferRetryTest, onlyTheUploadAuthorityIsRepeated)
{
    expectUploadAuthority().times(2).reply(503, "");
    expectUploadAuthority().reply(200, good());
    store.expect("PUT", "/b").body("the bytes").reply(200, "", "");
    expectOutcome(upload(), true, 200, L"r");
    expectClear(error);
    expectWarnings(2);
}

TEST_F(TransferRetryTest, onlyThePutIsRepeatedAndSendsTheBytesAgain)
{
    expectUploadAuthority().reply(200, good());
    store.expect("PUT", "/b").body("the bytes").header("Content-Length", "9").times(2).reply(503, "busy");
    store.expect("PUT", "/b").body("the bytes").reply(200, "", "");
    expectOutcome(upload(), true, 200, L"r");
    expectClear(error);
    expectWarnings(2);
}

TEST_F(TransferRetryTest, aCompressedPutIsRepeatedWithTheSameContent)
{
    expectUploadAuthority().reply(200, good());
    store.expect("PUT", "/b").anyBody().header("Content-Encoding", "gzip").times(2).reply(503, "busy");
    store.expect("PUT", "/b").anyBody().header("Content-Encoding", "gzip").reply(200, "", "");
    expectOutcome(upload(true), true, 200, L"r");
    for (const Request& put : store.requests())
        EXPECT_EQ(gunzip(put.body), "the bytes");
}

TEST_F(TransferRetryTest, aPutWhoseConnectionBreaksIsRepeated)
{
    expectUploadAuthority().reply(200, good());
    store.expect("PUT", "/b").body("the bytes").times(2).reset();
    store.expect("PUT", "/b").body("the bytes").reply(200, "", "");
    expectOutcome(upload(), true, 200, L"r");
    expectClear(error);
}

TEST_F(TransferRetryTest, onlyTheDownloadAuthorityIsRepeated)
{
    expectReadAuthority().reply(503, "");
    expectReadAuthority().reset();
    expectReadAuthority().reply(200, good());
    store.expect("GET", "/b").reply(fileReply("content"));
    EXPECT_TRUE(download().success);
    expectClear(error);
    expectWarnings(2);
}

TEST_F(TransferRetryTest, onlyTheFileIsRepeated)
{
    expectReadAuthority().reply(200, good());
    store.expect("GET", "/b").reply(503, "busy");
    store.expect("GET", "/b").reset();
    store.expect("GET", "/b").reply(fileReply("content"));
    EXPECT_TRUE(download().success);
    EXPECT_EQ(readFile(localPath("d")), "content");
    expectClear(error);
}

TEST_F(TransferRetryTest, onlyTheBatchAuthorityIsRepeated)
{
    expectBatchAuthority().times(2).reply(503, "");
    expectBatchAuthority().reply(200, goodBatch());
    store.expect("GET", "/b").reply(fileReply("content"));
    EXPECT_TRUE(batch().success);
    expectClear(error);
}

TEST_F(TransferRetryTest, onlyTheStreamIsRepeatedAndTheFileHoldsTheLastAnswerAlone)
{
    expectBatchAuthority().reply(200, goodBatch());
    store.expect("GET", "/b").reply(503, "a long answer that says why it is not possible now");
    store.expect("GET", "/b").reset();
    store.expect("GET", "/b").reply(fileReply("content"));
    EXPECT_TRUE(batch().success);
    EXPECT_EQ(readFile(cached("ds-1", "a/b")), "content");
    EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
    expectClear(error);
}

TEST_F(TransferRetryTest, aStatusThatWillNotChangeIsNotRepeated)
{
    for (const int status : {400, 401, 403, 404, 501}) {
        expectUploadAuthority().reply(200, good());
        store.expect("PUT", "/b").anyBody().reply(status, "");
        EXPECT_EQ(upload().status, status);
    }
    expectWarnings(0);
}

TEST_F(TransferRetryTest, theLastAnswerIsTheOutcomeWhenTheRetriesAreUsedUp)
{
    expectUploadAuthority().reply(200, good());
    store.expect("PUT", "/b").anyBody().times(3).reply(503, "busy");
    store.expect("PUT", "/b").anyBody().reply(502, "the last word");
    expectOutcome(upload(), false, 502, L"the last word");
    expectHttpError(error, errorStatusValue, L"HttpError", L"the last word", 502);
    expectWarnings(3);
}

TEST_F(TransferRetryTest, aTransportFailureIsTheOutcomeWhenTheRetriesAreUsedUp)
{
    expectReadAuthority().reply(200, good());
    store.expect("GET", "/b").times(4).reset();
    expectOutcome(download(), false, 5555, resetBy(store.url()));
    expectHttpError(error, exceptionValue, L"generic exception", resetBy(store.url()), resetCode);
}

TEST_F(TransferRetryTest, everyStreamOfABatchHasRetriesOfItsOwn)
{
    expectBatchAuthority().reply(200, batchReply({{"a/1", atStore("/1")}, {"a/2", atStore("/2")}, {"a/3", atStore("/3")}}));
    store.anyOrder();
    for (const char* name : {"/1", "/2", "/3"}) {
        store.expect("GET", name).times(3).reply(503, "");
        store.expect("GET", name).reply(fileReply(name));
    }
    EXPECT_TRUE(batch().success);
    EXPECT_EQ(filesBelow(cached("ds-1", "")).size(), 3U);
    expectWarnings(9);
}

} // namespace
} // namespace orlo::test
