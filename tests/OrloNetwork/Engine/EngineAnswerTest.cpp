#include "EngineProbe.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"

#include <gtest/gtest.h>

#include <string>

namespace orlo::test {
namespace {

/// What is read of the bytes of an answer, whichever way it comes.
class EngineAnswerTest : public testing::TestWithParam<Way>
{
protected:
    Outcome answer(RawAnswer wire, const std::string& method = "GET")
    {
        const RawServer server(std::move(wire));
        return outcomeOf(GetParam(), server.url(), requestOf(method, "/thing"));
    }
    Outcome answer(const std::string& wire, const std::string& method = "GET") { return answer(RawAnswer::bytes(wire), method); }

    void expectBody(const Outcome& outcome, const std::string& body)
    {
        EXPECT_EQ(outcome.text, "");
        EXPECT_EQ(outcome.status, 200);
        EXPECT_EQ(outcome.body, body);
    }

    HostSetup host{"http://127.0.0.1"};
};

INSTANTIATE_TEST_SUITE_P(OnBothWays, EngineAnswerTest, testing::Values(Way::here, Way::loop), testing::PrintToStringParamName());

TEST_P(EngineAnswerTest, answersThatGoBeforeArePassedOver)
{
    const Outcome outcome = answer("HTTP/1.1 100 Continue\r\nX-Early: 1\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: </a.css>\r\n\r\n"
                                   "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
    expectBody(outcome, "{}");
    EXPECT_EQ(outcome.header("X-Early"), "none");
    EXPECT_EQ(outcome.header("Link"), "none");
    EXPECT_EQ(outcome.reason, "OK");
}

TEST_P(EngineAnswerTest, aHeadMayComeByteByByte)
{
    const Outcome outcome = answer(RawAnswer::bytes("HTTP/1.1 201 Made\r\nX-A:  b c \r\nContent-Length: 3\r\n\r\nabc").fragments(1));
    EXPECT_EQ(outcome.status, 201);
    EXPECT_EQ(outcome.reason, "Made");
    EXPECT_EQ(outcome.header("X-A"), "b c");
    EXPECT_EQ(outcome.body, "abc");
}

TEST_P(EngineAnswerTest, aLineMayEndWithALineFeedAlone)
{
    const Outcome outcome = answer("HTTP/1.1 200 OK\nX-A: b\nContent-Length: 3\n\nabc");
    expectBody(outcome, "abc");
    EXPECT_EQ(outcome.header("X-A"), "b");
}

TEST_P(EngineAnswerTest, trailersAreNoHeaders)
{
    const Outcome outcome =
        answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: X-Late\r\n\r\n3\r\nabc\r\n0\r\nX-Late: 1\r\n\r\n");
    expectBody(outcome, "abc");
    EXPECT_EQ(outcome.header("X-Late"), "none");
}

TEST_P(EngineAnswerTest, headersOfTheSameNameAreJoined)
{
    const Outcome outcome = answer("HTTP/1.1 200 OK\r\nX-A: 1\r\nx-a: 2\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(outcome.header("X-A"), "1, 2");
}

TEST_P(EngineAnswerTest, aStatusNeedsNoReason)
{
    for (const char* line : {"HTTP/1.1 200\r\n", "HTTP/1.1 200 \r\n"}) {
        const Outcome outcome = answer(line + std::string("Content-Length: 1\r\n\r\nx"));
        expectBody(outcome, "x");
        EXPECT_EQ(outcome.reason, "");
    }
}

TEST_P(EngineAnswerTest, theOldVersionEndsWithTheConnection)
{
    expectBody(answer("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\nto the end"), "to the end");
}

TEST_P(EngineAnswerTest, chunksMayHaveExtensions)
{
    expectBody(answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3;a=b\r\nabc\r\n00A ; c=\"d\"\r\n0123456789\r\n0;last\r\n\r\n"),
               "abc0123456789");
}

TEST_P(EngineAnswerTest, aStatusThatHasNoBodyWaitsForNone)
{
    for (const int status : {204, 304}) {
        // The connection stays open.
        SocketServer open([&](Connection& connection) {
            readWire(connection);
            connection.write("HTTP/1.1 " + std::to_string(status) + " X\r\nContent-Length: 5\r\n\r\n");
            std::string rest;
            connection.read(rest);
        });
        const Outcome outcome = outcomeOf(GetParam(), open.url());
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.text, "");
        EXPECT_EQ(outcome.body, "");
    }
}

TEST_P(EngineAnswerTest, theAnswerToAHeadHasTheLengthOfABodyThatDoesNotCome)
{
    SocketServer open([&](Connection& connection) {
        readWire(connection);
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 5000000000\r\n\r\n");
        std::string rest;
        connection.read(rest);
    });
    const Outcome outcome = outcomeOf(GetParam(), open.url(), requestOf("HEAD", "/thing"));
    expectBody(outcome, "");
    EXPECT_EQ(outcome.header("Content-Length"), "5000000000");
}

TEST_P(EngineAnswerTest, aChangeOfTheProtocolIsDelivered)
{
    const Outcome outcome = answer("HTTP/1.1 101 Switching Protocols\r\nUpgrade: other\r\n\r\n");
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.status, 101);
    EXPECT_EQ(outcome.header("Upgrade"), "other");
}

TEST_P(EngineAnswerTest, anErrorThatComesBeforeAllIsSentIsRead)
{
    SocketServer early([&](Connection& connection) {
        std::string got;
        while (got.find("\r\n\r\n") == std::string::npos && connection.read(got)) {
        }
        connection.write("HTTP/1.1 413 Too Large\r\nContent-Length: 3\r\nConnection: close\r\n\r\nbig");
        while (connection.read(got)) {
        }
    });
    const Outcome outcome = outcomeOf(GetParam(), early.url(), requestOf("POST", "/a", std::string(std::size_t{8} << 20, 'x')));
    EXPECT_EQ(outcome.status, 413) << outcome.text;
    EXPECT_EQ(outcome.body, "big");
}

TEST_P(EngineAnswerTest, whatCanNotBeReadIsNotWorthAnotherAttempt)
{
    for (const char* wire : {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\nabc\r\n0\r\n\r\n",
                             "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\nabc", "HTTP/1.1 abc OK\r\n\r\n", "SSH-2.0-x\r\n\r\n",
                             "HTTP/9.9 200 OK\r\nContent-Length: 0\r\n\r\n"}) {
        const Outcome outcome = answer(wire);
        EXPECT_TRUE(outcome.hasFailed) << wire;
        EXPECT_EQ(outcome.number, 0) << wire << outcome.text;
        EXPECT_FALSE(isWorthAnotherAttempt(outcome));
    }
}

} // namespace
} // namespace orlo::test
