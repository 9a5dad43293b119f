#include "OrloNetwork/Engine/Gate.h"
#include "support/HttpExchange.h"
#include "support/RawServer.h"
#include "support/Sockets.h"
#include "support/Waiting.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/SinkBuffer.h>
#include <OrloNetwork/WebRequest.h>

#include <cpprest/http_client.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>

namespace orlo::test {
namespace {

using http::SinkBuffer;

/// Downloads from a server into a sink.   Returns: the response, whose content is still to be waited for.
web::http::http_response download(const std::string& url, SinkBuffer::Write write)
{
    web::http::client::http_client_config config;
    const auto client = OrloWebService::CreateClient(utils::toWstring(url), config, OrloWebService::Traffic::files);
    web::http::http_request request(web::http::methods::GET);
    request.set_response_stream(SinkBuffer::stream(std::move(write)));
    return client->request(request).get();
}

/// A body whose every part tells its place.
std::string numberedBody(std::size_t lines)
{
    std::string body;
    for (std::size_t i = 0; i < lines; ++i)
        body += std::to_string(i) + "\n";
    return body;
}

TEST(SinkBufferTest, handsOverAllBytesInTheirOrder)
{
    const std::string body = numberedBody(200000);
    RawServer server(RawAnswer::bytes(rawOk(body)));
    std::string received;
    const auto response = download(
        server.url(), [&](const std::uint8_t* bytes, std::size_t count) { received.append(reinterpret_cast<const char*>(bytes), count); });
    response.content_ready().get();
    EXPECT_TRUE(received == body);
}

TEST(SinkBufferTest, neverHandsOverTwoRunsAtOnce)
{
    RawServer server(RawAnswer::bytes(rawOk(numberedBody(500000))));
    std::atomic<int> inside{0};
    std::atomic<int> calls{0};
    std::atomic<bool> overlapped{false};
    const auto response = download(server.url(), [&](const std::uint8_t*, std::size_t) {
        overlapped = overlapped || ++inside > 1;
        std::this_thread::yield();
        --inside;
        ++calls;
    });
    response.content_ready().get();
    EXPECT_FALSE(overlapped);
    EXPECT_GT(calls, 1);
}

/// Sends a body of so many MiB and counts what the client's side took.
class CountingServer
{
public:
    explicit CountingServer(std::size_t mebibytes)
        : m_server([this, mebibytes](Connection& connection) {
              Request request;
              readRequest(connection, request);
              connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(mebibytes << 20) + "\r\n\r\n");
              const std::string piece(std::size_t{1} << 20, 'x');
              while (m_sent < mebibytes && connection.write(piece))
                  ++m_sent;
          })
    {}

    std::string url() const { return m_server.url(); }
    std::size_t sent() const { return m_sent; }
    /// Waits until nothing more is taken for a while.
    bool waitForStandstill() const
    {
        std::size_t last = m_sent;
        auto since = std::chrono::steady_clock::now();
        return waitUntil([&] {
            if (const std::size_t now = m_sent; now != last) {
                last = now;
                since = std::chrono::steady_clock::now();
            }
            return std::chrono::steady_clock::now() - since > std::chrono::milliseconds(500);
        });
    }

private:
    std::atomic<std::size_t> m_sent{0};
    SocketServer m_server;
};

TEST(SinkBufferTest, aSlowReceiverHoldsTheSenderBack)
{
    const CountingServer server(256);
    Gate gate;
    std::atomic<std::size_t> received{0};
    const auto response = download(server.url(), [&](const std::uint8_t*, std::size_t count) {
        gate.enter();
        received += count;
    });
    ASSERT_TRUE(server.waitForStandstill());
    EXPECT_LT(server.sent(), 64U); // what the system's socket buffers hold
    gate.open();
    response.content_ready().get();
    EXPECT_EQ(received, std::size_t{256} << 20);
}

TEST(SinkBufferTest, whatTheReceiverThrowsComesOutWithTheContent)
{
    RawServer server(RawAnswer::bytes(rawOk("some bytes")));
    const auto response = download(server.url(), [](const std::uint8_t*, std::size_t) { throw std::runtime_error("disk full"); });
    try {
        response.content_ready().get();
        ADD_FAILURE() << "no exception";
    }
    catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "disk full");
    }
}

TEST(SinkBufferTest, aFailureInTheMiddleEndsTheTransfer)
{
    const CountingServer server(256);
    std::atomic<int> calls{0};
    const auto response = download(server.url(), [&](const std::uint8_t*, std::size_t) {
        if (++calls == 3)
            throw std::runtime_error("disk full");
    });
    EXPECT_THROW(response.content_ready().get(), std::runtime_error);
    EXPECT_EQ(calls, 3);
    EXPECT_TRUE(server.waitForStandstill());
    EXPECT_LT(server.sent(), 256U);
}

TEST(SinkBufferTest, aFailureThatNobodyLooksAtHarmsNobody)
{
    RawServer server(RawAnswer::bytes(rawOk(std::string(1000, 'x'))));
    const auto failed = std::make_shared<std::atomic<int>>(0);
    for (int i = 0; i < 20; ++i)
        download(server.url(), [failed](const std::uint8_t*, std::size_t) {
            ++*failed;
            throw std::runtime_error("disk full");
        });
    EXPECT_TRUE(waitUntil([&] { return *failed == 20 && failed.use_count() == 1; }));
}

TEST(SinkBufferTest, takesSingleBytesAndRuns)
{
    std::string received;
    auto stream = SinkBuffer::stream(
        [&](const std::uint8_t* bytes, std::size_t count) { received.append(reinterpret_cast<const char*>(bytes), count); });
    EXPECT_EQ(stream.write(static_cast<std::uint8_t>('a')).get(), 'a');
    EXPECT_EQ(stream.print(std::string("bcd")).get(), 3U);
    stream.flush().get();
    stream.close().get();
    EXPECT_EQ(received, "abcd");
}

TEST(SinkBufferTest, canBeNeitherReadNorMovedAbout)
{
    auto buffer = SinkBuffer::stream([](const std::uint8_t*, std::size_t) {}).streambuf();
    EXPECT_FALSE(buffer.can_read());
    EXPECT_TRUE(buffer.can_write());
    EXPECT_FALSE(buffer.can_seek());
    EXPECT_FALSE(buffer.has_size());
    EXPECT_EQ(buffer.in_avail(), 0U);
}

TEST(SinkBufferTest, letsGoOfItsReceiverWhenTheTransferIsOver)
{
    RawServer server(RawAnswer::bytes(rawOk("some bytes")));
    const auto held = std::make_shared<int>(0);
    download(server.url(), [held](const std::uint8_t*, std::size_t) {}).content_ready().get();
    EXPECT_TRUE(waitUntil([&] { return held.use_count() == 1; }));
}

} // namespace
} // namespace orlo::test
