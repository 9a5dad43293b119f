// How long a host lets a transfer of a file wait, and take.

#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/RequestError.h>

#include <chrono>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;

class TransferPatienceTest : public TransferTest
{
protected:
    void authorityGives(const std::string& address)
    {
        platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", address));
    }
    PromiseData upload(const std::string& bytes = "x")
    {
        return outcomeOf(HttpClient::uploadFile(error, localFile("u", bytes), L"n", L"p", false));
    }
    NetworkFailure failure() const
    {
        const RequestDetails* const details = requestDetails(error);
        return details ? details->failure : NetworkFailure::none;
    }
};

/// Reads the head of a request, and then no byte more.
class DeafServer
{
public:
    std::string url() const { return m_server.url(); }

private:
    SocketServer m_server{[this](Connection& connection) {
        std::string some;
        connection.read(some);
        std::unique_lock lock(m_mutex);
        m_ended.wait(lock, [this] { return m_isEnding; });
    }};
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isEnding = false;

public:
    ~DeafServer()
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        m_ended.notify_all();
    }
};

TEST_F(TransferPatienceTest, aStoreThatSaysNothingIsLeftAfterTheStallTimeOut)
{
    host.change([](OrloConfig& config) { config.stallTimeoutSeconds = 1; });
    const RawServer silent(RawAnswer::stall());
    authorityGives(silent.url() + "/c");
    expectOutcome(upload(), false, 5555, silenceOf(silent.url()));
    EXPECT_EQ(failure(), NetworkFailure::timeoutWaiting);
}

TEST_F(TransferPatienceTest, theStallTimeOutIsThatOfTheMoment)
{
    const RawServer silent(RawAnswer::stall());
    host.change([](OrloConfig& config) { config.httpTimeoutSeconds = 100; });
    for (int i = 0; i < 2; ++i) {
        authorityGives(silent.url() + "/c");
        host.change([](OrloConfig& config) { config.stallTimeoutSeconds = 1; });
        EXPECT_FALSE(upload().success);
    }
}

TEST_F(TransferPatienceTest, aStoreThatTakesNothingIsATimeOutWhileSending)
{
    host.change([](OrloConfig& config) { config.stallTimeoutSeconds = 1; });
    const DeafServer deaf;
    authorityGives(deaf.url() + "/c");
    EXPECT_FALSE(upload(patterned(24 << 20)).success);
    EXPECT_EQ(failure(), NetworkFailure::timeoutSending);
    EXPECT_STREQ(wordsOf(failure()), L"time-out while sending");
}

/// Sends a body byte by byte, for ever.
class Dripper
{
public:
    std::string url() const { return m_server.url(); }

private:
    SocketServer m_server{[](Connection& connection) {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        bool isThere = connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n");
        while (isThere) {
            std::this_thread::sleep_for(10ms); // its pace
            isThere = connection.write("x");
        }
    }};
};

TEST_F(TransferPatienceTest, aTransferThatDripsIsLeftWhenItsWholeTimeIsOver)
{
    host.change([](OrloConfig& config) { config.transferTimeoutSeconds = 1; });
    const Dripper dripper;
    platform.expect("POST", "/file/read").anyBody().reply(200, authority("r", dripper.url() + "/c"));
    const PromiseData outcome = outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error));
    expectOutcome(outcome, false, 5555, failedWith(dripper.url(), L"Failed to read response body", L"the time for the whole call is over"));
    EXPECT_EQ(failure(), NetworkFailure::timeoutReceiving);
    EXPECT_FALSE(std::filesystem::exists(localPath("d")));
}

TEST_F(TransferPatienceTest, callsAreNotConcernedByTheTimeOutsOfFiles)
{
    host.change([](OrloConfig& config) {
        config.stallTimeoutSeconds = 1;
        config.transferTimeoutSeconds = 1;
    });
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").replyWith([this](const Request&) {
        std::this_thread::sleep_for(1500ms); // longer than either
        return Reply{200, authority("r", atStore("/c")), "application/json", {}, false};
    });
    store.expect("PUT", "/c").anyBody();
    EXPECT_TRUE(upload().success);
}

} // namespace
} // namespace orlo::test
