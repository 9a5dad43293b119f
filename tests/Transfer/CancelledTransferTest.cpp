// What a host cancels, with a platform and a store that keep it waiting.

#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/Callbacks.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/CallObserver.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <functional>
#include <optional>
#include <thread>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;

/// So that a pause before another attempt is one that nobody waits out.
class LongPauses
{
public:
    LongPauses() { http::setRetryPolicy({3, 3600}); }
};

class CancelledTransferTest : public TransferTest
{
protected:
    /// Cancels on another thread as soon as the condition holds.
    std::thread cancelWhen(std::function<bool()> condition) const
    {
        return std::thread([token = token, condition = std::move(condition)] {
            EXPECT_TRUE(waitUntil(condition));
            token.cancel();
        });
    }

    void expectCancelled(std::future<PromiseData> future, const std::function<bool()>& reached)
    {
        std::thread canceller = cancelWhen(reached);
        expectOutcome(outcomeOf(future), false, 5555, L"cancelled");
        canceller.join();
        expectCancelledError();
        EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
    }

    void expectCancelledError() const
    {
        EXPECT_TRUE(isCancelled(error));
        EXPECT_EQ(error.GetErrorMessage(), L"cancelled");
    }

    void authoritiesGive(const std::string& address)
    {
        platform.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", address));
        platform.always("POST", "/file/read").reply(200, authority("r", address));
        platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply({{"a/b", address}, {"a/c", address}}));
    }

    std::future<PromiseData> upload(const std::string& bytes = "x", bool gzip = false)
    {
        return HttpClient::uploadFile(error, localFile("u", bytes), L"n", L"p", gzip);
    }
    std::future<PromiseData> download() { return HttpClient::downloadFile(L"r", wideLocalPath("d"), error); }
    std::future<PromiseData> batch() { return HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b", "a/c"}, nullptr); }

    const CancelToken token;
};

TEST_F(CancelledTransferTest, aStalledUpload)
{
    const RawServer silent(RawAnswer::stall());
    authoritiesGive(silent.url() + "/c");
    const CallScope scope(token);
    const LongPauses pauses;
    expectCancelled(upload(), [&] { return silent.connectionCount() == 1; });
    EXPECT_EQ(silent.connectionCount(), 1U);
}

TEST_F(CancelledTransferTest, aStalledUploadOfALargeFileThatIsSentFromItsPlace)
{
    const RawServer silent(RawAnswer::stall());
    authoritiesGive(silent.url() + "/c");
    const CallScope scope(token);
    expectCancelled(upload(patterned(20 << 20)), [&] { return silent.connectionCount() == 1; });
}

TEST_F(CancelledTransferTest, aStalledDownload)
{
    const RawServer silent(RawAnswer::stall());
    authoritiesGive(silent.url() + "/c");
    std::filesystem::create_directories(localPath("d").parent_path());
    writeFile(localPath("d"), "as it was");
    const CallScope scope(token);
    const LongPauses pauses;
    expectCancelled(download(), [&] { return silent.connectionCount() == 1; });
    EXPECT_EQ(readFile(localPath("d")), "as it was");
}

/// Sends the head of an answer and a large part of its body, and then nothing until the end.
class FirstHalf
{
public:
    std::string url() const { return m_server.url(); }
    int halves() const { return m_halves; }

private:
    std::atomic<int> m_halves{0};
    SocketServer m_server{[this](Connection& connection) {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 4000000\r\n\r\n" + std::string(2'000'000, 'h'));
        ++m_halves;
        std::string rest;
        while (connection.read(rest)) {
        }
    }};
};

TEST_F(CancelledTransferTest, aDownloadInTheMiddleLeavesNothingHalfWritten)
{
    const FirstHalf half;
    authoritiesGive(half.url() + "/c");
    const CallScope scope(token);
    expectCancelled(download(), [&] { return half.halves() == 1; });
    EXPECT_FALSE(std::filesystem::exists(localPath("d")));
    EXPECT_EQ(filesBelow(host.folder().path("Local")), std::vector<std::string>{});
}

TEST_F(CancelledTransferTest, aBatchInTheMiddleLeavesNothingHalfWritten)
{
    const FirstHalf half;
    authoritiesGive(half.url() + "/c");
    const CallScope scope(token);
    expectCancelled(batch(), [&] { return half.halves() == 2; });
    EXPECT_EQ(filesBelow(cached("ds-1", "")), std::vector<std::string>{});
}

TEST_F(CancelledTransferTest, aBatchWhoseAuthorityNamesNothingEndsAfterAll)
{
    expectBatch(R"(["a/b","a/c"])", {});
    const CallScope scope(token);
    auto future = batch();
    EXPECT_TRUE(
        waitUntil([&] { return log.has(L"W [ORLOSDK]the platform named no file for a batch download; its future stays pending"); }));
    EXPECT_EQ(future.wait_for(0s), std::future_status::timeout);
    token.cancel();
    expectOutcome(outcomeOf(future), false, 5555, L"cancelled");
    expectClear(error);
}

TEST_F(CancelledTransferTest, aBatchThatNobodyWaitsForAnyMoreIsCancelledWithoutItsErrorCode)
{
    platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply({}));
    {
        const auto given = std::make_unique<ErrorCode>();
        const CallScope scope(token);
        auto future = HttpClient::downloadBatchFiles(*given, "a", "ds-1", {"a/b"}, nullptr);
        EXPECT_TRUE(
            waitUntil([&] { return log.has(L"W [ORLOSDK]the platform named no file for a batch download; its future stays pending"); }));
    }
    token.cancel();
}

/// Hears the ends of a batch.
class BatchListener final : public IOrloCallback
{
public:
    void on_complete(int status, const std::wstring& body, const std::string&, std::shared_ptr<OrloCallbackContext>,
                     ErrorCode& error) override
    {
        isAsTold = isAsTold && status == 5555 && body == L"cancelled" && isCancelled(error);
        ++calls;
    }
    std::atomic<bool> isAsTold{true};
    std::atomic<int> calls{0};
};

TEST_F(CancelledTransferTest, aBatchTellsItsHandlerThatItWasCancelled)
{
    const FirstHalf half;
    authoritiesGive(half.url() + "/c");
    const auto listener = std::make_shared<BatchListener>();
    const CallScope scope(token);
    expectCancelled(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b", "a/c"}, std::make_shared<OrloCallbackContext>(listener)),
                    [&] { return half.halves() == 2; });
    EXPECT_TRUE(waitUntil([&] { return listener->calls > 0; }));
    EXPECT_TRUE(listener->isAsTold);
}

TEST_F(CancelledTransferTest, aStalledAuthority)
{
    const RawServer silent(RawAnswer::stall());
    moveServices(host, silent.url());
    const CallScope scope(token);
    const LongPauses pauses;
    expectCancelled(upload(), [&] { return silent.connectionCount() == 1; });
    EXPECT_EQ(silent.connectionCount(), 1U);
}

TEST_F(CancelledTransferTest, thePauseBeforeAnotherAttempt)
{
    const LongPauses pauses;
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(503);
    const CallScope scope(token);
    expectCancelled(upload(), [&] { return log.has(L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[1]"); });
}

TEST_F(CancelledTransferTest, isNotEvenBegunInACancelledScope)
{
    token.cancel();
    const CallScope scope(token);
    expectOutcome(outcomeOf(upload()), false, 5555, L"cancelled");
    expectCancelledError();
    expectOutcome(outcomeOf(download()), false, 5555, L"cancelled");
    expectOutcome(outcomeOf(batch()), false, 5555, L"cancelled");
    expectCancelledError();
    EXPECT_EQ(platform.requestCount(), 0U);
}

TEST_F(CancelledTransferTest, aTransferThatOutlivesItsScope)
{
    const RawServer silent(RawAnswer::stall());
    authoritiesGive(silent.url() + "/c");
    std::future<PromiseData> future;
    {
        const CallScope scope(token);
        future = upload();
    }
    expectCancelled(std::move(future), [&] { return silent.connectionCount() == 1; });
}

TEST_F(CancelledTransferTest, whatSucceededStaysASuccess)
{
    authoritiesGive(atStore("/c"));
    store.expect("PUT", "/c").anyBody();
    const CallScope scope(token);
    const PromiseData outcome = outcomeOf(upload());
    token.cancel();
    EXPECT_TRUE(outcome.success);
    expectClear(error);
}

TEST_F(CancelledTransferTest, theTransfersOfOtherScopesGoOn)
{
    const RawServer silent(RawAnswer::stall(rawOk("{}")));
    RawServer& stalled = const_cast<RawServer&>(silent);
    authoritiesGive(silent.url() + "/c");
    ErrorCode otherError;
    std::future<PromiseData> other;
    {
        const CallScope scope{CancelToken()};
        other = HttpClient::uploadFile(otherError, localFile("o", "x"), L"n", L"p", false);
    }
    const CallScope scope(token);
    expectCancelled(upload(), [&] { return silent.connectionCount() == 2; });
    stalled.release();
    EXPECT_TRUE(outcomeOf(other).success);
    expectClear(otherError);
}

TEST_F(CancelledTransferTest, theUploadOfACollaborationFile)
{
    const RawServer silent(RawAnswer::stall());
    platform.always("PUT", "/file/new?fileName=u&filepath=/account-1").reply(200, authority("r", silent.url() + "/c"));
    const CallScope scope(token);
    std::thread canceller = cancelWhen([&] { return silent.connectionCount() == 1; });
    EXPECT_EQ(ICollaborationFileManager::Get()->UploadFile(L"f-1", localFile("u", "x"), error), nullptr);
    canceller.join();
    expectCancelledError();
    EXPECT_EQ(platform.requestCount(), 1U) << "nothing is made of a file that was cancelled";
}

/// Operations, which wait on the host's own thread.
class CancelledOperationTest : public CancelledTransferTest
{
protected:
    template <class Operation>
    auto cancelled(const Operation& operation, const std::function<bool()>& reached)
    {
        const CallScope scope(token);
        std::thread canceller = cancelWhen(reached);
        auto result = operation();
        canceller.join();
        return result;
    }
};

TEST_F(CancelledOperationTest, whileItWaitsForItsAnswer)
{
    const RawServer silent(RawAnswer::stall());
    moveServices(host, silent.url());
    http::setRetryPolicy({3, 0});
    const auto projects = cancelled([&] { return ICollaborationProjectManager::Get()->GetAllProjects(error); },
                                    [&] { return silent.connectionCount() == 1; });
    EXPECT_TRUE(projects.empty());
    expectCancelledError();
    EXPECT_EQ(silent.connectionCount(), 1U);
}

TEST_F(CancelledOperationTest, whileItPausesBeforeAnotherAttempt)
{
    const LongPauses pauses;
    platform.expect("GET", "/projects?scenario=DEFAULT").reply(503);
    cancelled([&] { return ICollaborationProjectManager::Get()->GetAllProjects(error); },
              [&] { return log.has(L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[1]"); });
    expectCancelledError();
}

TEST_F(CancelledOperationTest, isToldWhateverItsResult)
{
    token.cancel();
    const CallScope scope(token);
    EXPECT_EQ(ICollaborationProject::Load(L"p-1", error), nullptr); // a pointer
    expectCancelledError();
    error.Clear();
    EXPECT_FALSE(IWorkUnit::MarkPublish("ds-1", 1, L"", error)); // yes or no
    expectCancelledError();
    error.Clear();
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"a/b?f=c", error), L""); // a text
    expectCancelledError();
    EXPECT_EQ(platform.requestCount(), 0U);
}

TEST_F(CancelledOperationTest, inAScopeThatNobodyCancelsIsAsItAlwaysWas)
{
    platform.expect("POST", "/datasets/ds-1/1/markPublish").anyBody().reply(404, R"({"message":"none"})");
    const CallScope scope(token);
    EXPECT_FALSE(IWorkUnit::MarkPublish("ds-1", 1, L"", error));
    expectHttpError(error, errorStatusValue, L"HttpError", LR"({"message":"none"})", 404);
}

TEST_F(CancelledOperationTest, theNextOneOutsideOfTheScopeWorks)
{
    {
        token.cancel();
        const CallScope scope(token);
        EXPECT_FALSE(IWorkUnit::MarkPublish("ds-1", 1, L"", error));
    }
    platform.expect("POST", "/datasets/ds-1/1/markPublish").anyBody().reply(200, R"({"data":true})");
    EXPECT_TRUE(IWorkUnit::MarkPublish("ds-1", 1, L"", error));
    expectClear(error);
}

TEST_F(CancelledOperationTest, insideAnotherOneInAScopeOfItsOwn)
{
    platform.expect("GET", "/projects?scenario=DEFAULT").reply(200, "[]");
    const RawServer silent(RawAnswer::stall());
    ErrorCode inner;
    http::setCallObserver([&](const http::CallRecord& record) { // a host's code on the thread of an operation
        if (record.status != 200)
            return;
        moveServices(host, silent.url());
        const CallScope scope(token);
        std::thread canceller = cancelWhen([&] { return silent.connectionCount() == 1; });
        EXPECT_FALSE(IWorkUnit::MarkPublish("ds-1", 1, L"", inner));
        canceller.join();
    });
    ICollaborationProjectManager::Get()->GetAllProjects(error);
    http::setCallObserver(nullptr);
    EXPECT_TRUE(isCancelled(inner));
    expectClear(error);
}

} // namespace
} // namespace orlo::test
