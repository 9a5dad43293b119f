#include "EngineProbe.h"
#include "support/HostSetup.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using OrloWebService::Traffic;

constexpr std::size_t mebibyte = std::size_t{1} << 20;
// Beside the bytes that are bounded, a request takes some for its buffers; a sanitizer keeps what was freed.
constexpr std::size_t fewMebibytes = isSanitized ? 300 : 16;

/// Whatever a server does, a request ends, in time and with little memory, and says why.
class EngineBoundsTest : public testing::TestWithParam<Way>
{
protected:
    /// Takes the request and then does what it likes with the connection.
    struct Server
    {
        explicit Server(SocketServer::Serve play)
            : sockets([play = std::move(play)](Connection& connection) {
                  readWire(connection);
                  play(connection);
              })
        {}
        SocketServer sockets;
    };

    static std::string place(const SocketServer& server) { return "127.0.0.1:" + std::to_string(server.port()); }

    static void waitForTheEnd(Connection& connection)
    {
        std::string rest;
        while (connection.read(rest)) {
        }
    }

    void expectTimeOut(const Outcome& outcome, const std::string& text)
    {
        EXPECT_EQ(outcome.text, text);
        EXPECT_EQ(outcome.number, timeoutCode);
        EXPECT_TRUE(isWorthAnotherAttempt(outcome));
    }

    Sending within(std::chrono::milliseconds timeout, Traffic traffic = Traffic::calls)
    {
        Sending sending;
        sending.timeout = timeout;
        sending.traffic = traffic;
        return sending;
    }

    /// Sends the request and expects an end within that time.
    Outcome outcomeWithin(std::chrono::milliseconds atLeast, std::chrono::milliseconds atMost, const std::string& url,
                          const Sending& sending, const web::http::http_request& request = requestOf("GET", "/thing"))
    {
        Outcome outcome;
        const auto time = timeOf([&] { outcome = outcomeOf(GetParam(), url, request, sending); });
        EXPECT_GE(time.count(), atLeast.count());
        EXPECT_LE(time.count(), atMost.count());
        return outcome;
    }

    /// An answer begins, and then the same piece comes over and over, a hundred million bytes of it.
    void expectHeadIsGivenUp(const std::string& beginning, const std::string& piece)
    {
        std::atomic<bool> brokenOff{false};
        Server server([&](Connection& connection) {
            connection.write(beginning);
            for (std::size_t sent = 0; sent < 100'000'000 && !brokenOff; sent += piece.size())
                brokenOff = !connection.write(piece);
        });
        const PeakMemory memory;
        const Outcome outcome = outcomeWithin(0s, 5s, server.sockets.url(), {});
        EXPECT_EQ(outcome.text, "Invalid HTTP status line (" + place(server.sockets) + ": the head of the answer is too large)");
        EXPECT_EQ(outcome.number, 0);
        EXPECT_LT(memory.mebibytes(), fewMebibytes);
        EXPECT_TRUE(waitUntil([&] { return brokenOff.load(); }));
    }

    HostSetup host{"http://127.0.0.1"};
};

INSTANTIATE_TEST_SUITE_P(OnBothWays, EngineBoundsTest, testing::Values(Way::here, Way::loop), testing::PrintToStringParamName());

TEST_P(EngineBoundsTest, headersWithoutAnEndAreNotTakenForEver)
{
    expectHeadIsGivenUp("HTTP/1.1 200 OK\r\n", "X-Flood: " + std::string(1000, 'x') + "\r\n");
}

TEST_P(EngineBoundsTest, aHeaderWithoutAnEndIsNotTakenForEver)
{
    expectHeadIsGivenUp("HTTP/1.1 200 OK\r\nX-Flood: ", std::string(10000, 'x'));
}

TEST_P(EngineBoundsTest, headsThatGoBeforeWithoutAnEndAreNotTakenForEver)
{
    expectHeadIsGivenUp("", "HTTP/1.1 103 Early\r\nX-Flood: " + std::string(1000, 'x') + "\r\n\r\n");
}

TEST_P(EngineBoundsTest, ofTheBodyOfAnErrorOneMebibyteIsKeptAndTheRestIsNotWaitedFor)
{
    constexpr std::size_t mebibytes = 64;
    std::atomic<std::size_t> sent{0};
    std::atomic<bool> brokenOff{false};
    Server server([&](Connection& connection) {
        connection.write("HTTP/1.1 500 Failed\r\nContent-Length: " + std::to_string(mebibytes * mebibyte) + "\r\n\r\n");
        const std::string piece(mebibyte, 'x');
        while (sent < mebibytes && !brokenOff) {
            brokenOff = !connection.write(piece);
            sent += brokenOff ? 0 : 1;
        }
    });
    const PeakMemory memory;
    const Outcome outcome = outcomeWithin(0s, 5s, server.sockets.url(), {});
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.status, 500);
    EXPECT_EQ(outcome.body.size(), 1048576U);
    EXPECT_LT(memory.mebibytes(), fewMebibytes);
    EXPECT_TRUE(waitUntil([&] { return brokenOff.load(); }));
    EXPECT_LT(sent, mebibytes);
}

TEST_P(EngineBoundsTest, theBodyOfAnErrorWithExactlyOneMebibyteIsWhole)
{
    Server server([&](Connection& connection) {
        connection.write("HTTP/1.1 404 Gone\r\nContent-Length: 1048576\r\n\r\n" + std::string(mebibyte, 'x'));
        waitForTheEnd(connection);
    });
    const Outcome outcome = outcomeWithin(0s, 5s, server.sockets.url(), {});
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.body.size(), 1048576U);
}

/// Sends one byte each 100 ms, so many.
void drip(Connection& connection, int bytes)
{
    for (int i = 0; i < bytes && connection.write("x"); ++i)
        std::this_thread::sleep_for(100ms);
}

TEST_P(EngineBoundsTest, aCallWhoseAnswerComesInDropsHasFiveTimesItsTimeOut)
{
    Server server([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
        drip(connection, 1000);
    });
    const Outcome outcome = outcomeWithin(1500ms, 3s, server.sockets.url(), within(300ms));
    expectTimeOut(outcome, "Failed to read response body (" + place(server.sockets) + ": the time for the whole call is over)");
}

TEST_P(EngineBoundsTest, aHeadThatComesInDropsHasFiveTimesTheTimeOutToo)
{
    Server server([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\n");
        for (int i = 0; i < 1000 && connection.write("X-A: b\r\n"); ++i)
            std::this_thread::sleep_for(100ms);
    });
    const Outcome outcome = outcomeWithin(1500ms, 3s, server.sockets.url(), within(300ms));
    expectTimeOut(outcome, "Failed to read HTTP status line (" + place(server.sockets) + ": the time for the whole call is over)");
}

TEST_P(EngineBoundsTest, aFileMayComeInDropsForAsLongAsItDrips)
{
    Server server([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 25\r\n\r\n");
        drip(connection, 25);
    });
    const Outcome outcome = outcomeWithin(2400ms, 5s, server.sockets.url(), within(300ms, Traffic::files));
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.body.size(), 25U);
}

TEST_P(EngineBoundsTest, aFileThatNoLongerDripsHasItsTimeOut)
{
    Server server([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 25\r\n\r\n");
        drip(connection, 5);
        waitForTheEnd(connection);
    });
    const Outcome outcome = outcomeWithin(700ms, 3s, server.sockets.url(), within(300ms, Traffic::files));
    expectTimeOut(outcome, "Failed to read response body (" + place(server.sockets) + ": nothing came or went in time)");
}

TEST_P(EngineBoundsTest, aServerThatSaysNothing)
{
    Server server([](Connection& connection) { waitForTheEnd(connection); });
    for (const Traffic traffic : {Traffic::calls, Traffic::files}) {
        const Outcome outcome = outcomeWithin(200ms, 2s, server.sockets.url(), within(200ms, traffic));
        expectTimeOut(outcome, "Failed to read HTTP status line (" + place(server.sockets) + ": nothing came or went in time)");
    }
}

TEST_P(EngineBoundsTest, aServerThatStopsInTheMiddleOfTheBody)
{
    Server server([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345");
        waitForTheEnd(connection);
    });
    const Outcome outcome = outcomeWithin(200ms, 2s, server.sockets.url(), within(200ms));
    expectTimeOut(outcome, "Failed to read response body (" + place(server.sockets) + ": nothing came or went in time)");
}

TEST_P(EngineBoundsTest, anAnswerThatNeverTellsItsEnd)
{
    Server server([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n12345");
        waitForTheEnd(connection);
    });
    const Outcome outcome = outcomeWithin(200ms, 2s, server.sockets.url(), within(200ms));
    expectTimeOut(outcome, "Failed to read response body (" + place(server.sockets) + ": nothing came or went in time)");
}

TEST_P(EngineBoundsTest, aHandshakeThatStalls)
{
    SocketServer silent([](Connection& connection) { waitForTheEnd(connection); });
    const Outcome outcome = outcomeWithin(300ms, 2s, "https://" + place(silent), within(300ms));
    expectTimeOut(outcome, "Failed to connect to any resolved endpoint (" + place(silent) + ": nothing came or went in time)");
}

TEST_P(EngineBoundsTest, aTimeOutOfNothingFailsAtOnce)
{
    Server server([](Connection& connection) { waitForTheEnd(connection); });
    for (const Traffic traffic : {Traffic::calls, Traffic::files}) {
        const Outcome outcome = outcomeWithin(0s, 500ms, server.sockets.url(), within(0ms, traffic));
        EXPECT_EQ(outcome.number, timeoutCode) << outcome.text;
    }
}

TEST_P(EngineBoundsTest, anUploadThatTheServerStopsToRead)
{
    std::atomic<bool> isOver{false};
    SocketServer full([&](Connection& connection) {
        std::string head;
        connection.read(head);
        EXPECT_TRUE(waitUntil([&] { return isOver.load(); }));
    });
    const std::string body(64 * mebibyte, 'x');
    for (const Traffic traffic : {Traffic::calls, Traffic::files}) {
        const Outcome outcome =
            outcomeWithin(300ms, 2s, full.url(), within(300ms, traffic), requestOf("PUT", "/a", body, "application/octet-stream"));
        expectTimeOut(outcome, "Failed to write request body (" + place(full) + ": nothing came or went in time)");
    }
    isOver = true;
}

TEST_P(EngineBoundsTest, anUploadThatTheServerReadsSlowlyGoesOn)
{
    std::atomic<std::size_t> got{0};
    SocketServer slow([&](Connection& connection) {
        std::string piece;
        while (got < 24 * mebibyte && connection.read(piece)) {
            got += piece.size();
            piece.clear();
            std::this_thread::sleep_for(8ms);
        }
        connection.write("HTTP/1.1 204 No Content\r\n\r\n");
    });
    const std::string body(24 * mebibyte, 'x');
    const Outcome outcome = outcomeOf(GetParam(), slow.url(), requestOf("PUT", "/a", body, "application/octet-stream"), within(2s));
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.status, 204);
}

} // namespace
} // namespace orlo::test
