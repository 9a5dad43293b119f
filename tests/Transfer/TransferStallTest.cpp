#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <OrloProjectManager/NetworkProject/Call/WebCall.h>

namespace orlo::test {
namespace {

/// A store that stops to answer. The time-out of one second is asked for once in a process.
class TransferStallTest : public TransferTest
{
protected:
    void SetUp() override
    {
        host.change([&](OrloConfig& config) { config.httpTimeoutSeconds = 1; });
        if (timeoutOfFirstUse() != 1)
            GTEST_SKIP() << "an earlier test of this process has fixed another time-out";
    }

    void authoritiesGive(const std::string& address)
    {
        platform.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", address));
        platform.always("POST", "/file/read").reply(200, authority("r", address));
        platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply({{"a/b", address}}));
    }

    void expectTimeOut(const PromiseData& outcome, const std::wstring& words)
    {
        expectOutcome(outcome, false, 5555, words);
        expectHttpError(error, exceptionValue, L"generic exception", words, timeoutCode);
        EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
    }

    PromiseData upload() { return outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)); }
    PromiseData download() { return outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)); }
    PromiseData batch() { return outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr)); }
};

TEST_F(TransferStallTest, aStoreThatSaysNothingEndsEveryTransfer)
{
    const RawServer silent(RawAnswer::stall());
    authoritiesGive(silent.url() + "/c");
    expectTimeOut(upload(), silenceOf(silent.url()));
    expectTimeOut(download(), silenceOf(silent.url()));
    expectTimeOut(batch(), silenceOf(silent.url()));
}

/// Sends the head of an answer and a part of its body, and then nothing until it is let go.
class HalfAnswer
{
public:
    std::string url() const { return m_server.url(); }

private:
    SocketServer m_server{[](Connection& connection) {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        std::string rest;
        while (connection.read(rest)) {
        }
    }};
};

TEST_F(TransferStallTest, aStoreThatStopsInTheBodyEndsEveryTransfer)
{
    const HalfAnswer half;
    authoritiesGive(half.url() + "/c");
    const std::wstring words = failedWith(half.url(), L"Failed to read response body", L"nothing came or went in time");
    expectTimeOut(upload(), words);
    expectTimeOut(download(), words);
    expectTimeOut(batch(), words);
    EXPECT_FALSE(std::filesystem::exists(localPath("d")));
    EXPECT_FALSE(std::filesystem::exists(cached("ds-1", "a/b")));
}

TEST_F(TransferStallTest, aLaterTimeOutOfTheConfigurationHasNoEffect)
{
    host.change([&](OrloConfig& config) { config.httpTimeoutSeconds = 1000; });
    const RawServer silent(RawAnswer::stall());
    authoritiesGive(silent.url() + "/c");
    expectTimeOut(download(), silenceOf(silent.url()));
}

TEST_F(TransferStallTest, aStalledStreamIsRepeated)
{
    const RetryLimit one(1);
    const RawServer slow({RawAnswer::stall(), RawAnswer::bytes(rawOk("content"))});
    authoritiesGive(slow.url() + "/c");
    EXPECT_TRUE(batch().success);
    EXPECT_EQ(readFile(cached("ds-1", "a/b")), "content");
}

} // namespace
} // namespace orlo::test
