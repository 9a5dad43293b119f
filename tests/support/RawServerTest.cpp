#include "RawServer.h"

#include "Waiting.h"

#include <gtest/gtest.h>

#include <thread>

namespace orlo::test {
namespace {

constexpr const char* plainGet = "GET /a?b=c HTTP/1.1\r\nHost: x\r\n\r\n";

enum class Ending { close, reset };

struct Heard
{
    std::string bytes;
    Ending ending = Ending::close;
};

// Sends a request and reads until the connection ends.
Heard exchange(int port, const std::string& request)
{
    const auto connection = connectTo(port);
    connection->write(request);
    Heard heard;
    while (connection->read(heard.bytes)) {
    }
    heard.ending = connection->wasReset() ? Ending::reset : Ending::close;
    return heard;
}

TEST(RawServer, playsBytesAsTheyStandAndCloses)
{
    const RawServer server(RawAnswer::bytes("garbage \x01\r\n"));
    const Heard heard = exchange(server.port(), plainGet);
    EXPECT_EQ(heard.bytes, "garbage \x01\r\n");
    EXPECT_EQ(heard.ending, Ending::close);
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].line(), "GET /a?b=c");
    EXPECT_EQ(server.connectionCount(), 1u);
}

TEST(RawServer, resetsBeforeTheAnswer)
{
    const RawServer server(RawAnswer::resetBeforeAnswer());
    const Heard heard = exchange(server.port(), plainGet);
    EXPECT_EQ(heard.bytes, "");
    EXPECT_EQ(heard.ending, Ending::reset);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(RawServer, resetsOnConnectWithoutReading)
{
    const RawServer server(RawAnswer::resetOnConnect());
    const Heard heard = exchange(server.port(), plainGet);
    EXPECT_EQ(heard.bytes, "");
    EXPECT_EQ(heard.ending, Ending::reset);
    EXPECT_EQ(server.requests().size(), 0u);
}

// The request may still be on its way when the reset comes: whichever call meets it first is the only one that is told.
TEST(RawServer, aResetThatAWriteMetIsNotForgotten)
{
    const RawServer server(RawAnswer::resetOnConnect());
    const auto connection = connectTo(server.port());
    ASSERT_TRUE(waitUntil([&] { return !connection->write("x"); }));
    std::string heard;
    EXPECT_FALSE(connection->read(heard));
    EXPECT_TRUE(connection->wasReset());
    EXPECT_EQ(heard, "");
}

TEST(RawServer, whatWasWrittenComesBeforeTheReset)
{
    const std::string whole = rawOk(std::string(8 * 1024 * 1024, 'x'));
    const RawServer server(RawAnswer::resetAfter(whole, whole.size() - 1));
    const Heard heard = exchange(server.port(), plainGet);
    EXPECT_EQ(heard.bytes.size(), whole.size() - 1);
    EXPECT_EQ(heard.ending, Ending::reset);
}

TEST(RawServer, resetsInTheMiddleOfABody)
{
    const std::string whole = rawOk("0123456789");
    const RawServer server(RawAnswer::resetAfter(whole, whole.size() - 4));
    const Heard heard = exchange(server.port(), plainGet);
    EXPECT_EQ(heard.bytes, whole.substr(0, whole.size() - 4));
    EXPECT_EQ(heard.ending, Ending::reset);
}

TEST(RawServer, closesInTheMiddleOfABody)
{
    const std::string whole = rawOk("0123456789");
    const RawServer server(RawAnswer::closeAfter(whole, whole.size() - 4));
    const Heard heard = exchange(server.port(), plainGet);
    EXPECT_EQ(heard.bytes, whole.substr(0, whole.size() - 4));
    EXPECT_EQ(heard.ending, Ending::close);
}

TEST(RawServer, answersInPieces)
{
    const std::string whole = rawOk("[]");
    const RawServer server(RawAnswer::bytes(whole).fragments(1));
    EXPECT_EQ(exchange(server.port(), plainGet).bytes, whole);
}

TEST(RawServer, stallsUntilItIsReleased)
{
    RawServer server(RawAnswer::stall(rawOk("late")));
    Heard heard;
    std::thread client([&] { heard = exchange(server.port(), plainGet); });
    EXPECT_TRUE(waitUntil([&] { return !server.requests().empty(); }));
    server.release();
    client.join();
    EXPECT_EQ(heard.bytes, rawOk("late"));
}

TEST(RawServer, endsAStalledAnswerAtItsOwnEnd)
{
    Heard heard;
    heard.bytes = "nothing heard yet";
    std::thread client;
    {
        const RawServer server(RawAnswer::stall());
        client = std::thread([&heard, port = server.port()] { heard = exchange(port, plainGet); });
        EXPECT_TRUE(waitUntil([&] { return !server.requests().empty(); }));
    }
    client.join();
    EXPECT_EQ(heard.bytes, "");
}

TEST(RawServer, playsItsAnswersInOrderAndRepeatsTheLast)
{
    const RawServer server({RawAnswer::resetBeforeAnswer(), RawAnswer::bytes("second")});
    EXPECT_EQ(exchange(server.port(), plainGet).ending, Ending::reset);
    EXPECT_EQ(exchange(server.port(), plainGet).bytes, "second");
    EXPECT_EQ(exchange(server.port(), plainGet).bytes, "second");
    EXPECT_EQ(server.connectionCount(), 3u);
}

TEST(RawServer, putsAChunkedRequestTogether)
{
    const RawServer server(RawAnswer::bytes(rawOk("")));
    exchange(server.port(), "PUT /f HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\nA\r\n0123456789\r\n0\r\n\r\n");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].body, "abc0123456789");
}

} // namespace
} // namespace orlo::test
