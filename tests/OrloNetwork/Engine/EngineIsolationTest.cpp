#include "EngineProbe.h"
#include "Gate.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"
#include "support/Waiting.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/SinkBuffer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using http::SinkBuffer;

/// No call waits for what holds up another one.
class EngineIsolationTest : public testing::Test
{
protected:
    static constexpr std::size_t size = std::size_t{4} << 20;

    /// Downloads the large body into a function on the loop.   Returns: how many bytes came, when all are there.
    pplx::task<std::size_t> download(SinkBuffer::Write write)
    {
        auto request = requestOf("GET", "/large");
        const auto count = std::make_shared<std::size_t>(0);
        request.set_response_stream(SinkBuffer::stream(
            [count, write = std::move(write)](const std::uint8_t* bytes, std::size_t more) {
                write(bytes, more);
                *count += more;
            },
            SinkBuffer::Place::apart));
        web::http::client::http_client_config config;
        const auto client = OrloWebService::CreateClient(large.wideUrl(), config, OrloWebService::Traffic::files);
        return client->request(request)
            .then([client](const web::http::http_response& response) { return response.content_ready(); })
            .then([count](const web::http::http_response&) { return *count; });
    }

    void expectOthersToGoThrough()
    {
        const auto time = timeOf([&] {
            std::vector<pplx::task<std::size_t>> downloads;
            std::vector<pplx::task<Outcome>> calls;
            for (int i = 0; i < 5; ++i)
                downloads.push_back(download([](const std::uint8_t*, std::size_t) {}));
            for (int i = 0; i < 5; ++i)
                calls.push_back(begin(small.url(), requestOf("GET", "/thing")));
            for (int i = 0; i < 5; ++i)
                EXPECT_EQ(outcomeOf(Way::here, small.url()).body, "{}");
            for (const auto& call : calls)
                EXPECT_EQ(call.get().body, "{}");
            for (const auto& each : downloads)
                EXPECT_EQ(each.get(), size);
        });
        EXPECT_LT(time.count(), isSanitized ? 8000 : 2000);
    }

    void expectBlockedOnesToHoldUpNobody(int count)
    {
        const auto gate = std::make_shared<Gate>();
        std::vector<pplx::task<std::size_t>> blocked;
        for (int i = 0; i < count; ++i)
            blocked.push_back(download([gate](const std::uint8_t*, std::size_t) { gate->enter(); }));
        ASSERT_TRUE(waitUntil([&] { return gate->inside() == count; }, 5s)) << gate->inside();
        expectOthersToGoThrough();
        EXPECT_EQ(gate->inside(), count);
        gate->open();
        for (const auto& each : blocked)
            EXPECT_EQ(each.get(), size);
    }

    HostSetup host{"http://127.0.0.1"};
    RawServer large{RawAnswer::bytes(rawOk(std::string(size, 'x'), "application/octet-stream"))};
    RawServer small{RawAnswer::bytes(rawOk("{}"))};
};

TEST_F(EngineIsolationTest, aSinkThatBlocksHoldsUpNobody)
{
    expectBlockedOnesToHoldUpNobody(1);
}

TEST_F(EngineIsolationTest, sixSinksThatBlockHoldUpNobody)
{
    expectBlockedOnesToHoldUpNobody(6);
}

// The files beyond six go on the loop, and are written by workers.
TEST_F(EngineIsolationTest, twentySinksThatBlockHoldUpNobody)
{
    expectBlockedOnesToHoldUpNobody(20);
}

TEST_F(EngineIsolationTest, aSinkThatBlocksLongerThanTheTimeOutDoesNotFail)
{
    auto request = requestOf("GET", "/large");
    std::atomic<int> calls{0};
    request.set_response_stream(SinkBuffer::stream(
        [&](const std::uint8_t*, std::size_t) {
            if (++calls == 2)
                std::this_thread::sleep_for(800ms);
        },
        SinkBuffer::Place::apart));
    web::http::client::http_client_config config;
    config.set_timeout(200ms);
    const auto client = OrloWebService::CreateClient(large.wideUrl(), config, OrloWebService::Traffic::files);
    EXPECT_NO_THROW(client->request(request).get().content_ready().get());
    EXPECT_GT(calls, 2);
}

TEST_F(EngineIsolationTest, aSinkThatThrowsWhileTheServerStallsFailsAtOnce)
{
    SocketServer half([](Connection& connection) {
        readWire(connection);
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n" + std::string(900000, 'x'));
        std::string rest;
        connection.read(rest);
    });
    auto request = requestOf("GET", "/large");
    request.set_response_stream(SinkBuffer::stream(
        [](const std::uint8_t*, std::size_t) {
            std::this_thread::sleep_for(100ms); // so that more than it has room for comes meanwhile
            throw std::runtime_error("the disk is full");
        },
        SinkBuffer::Place::apart));
    const auto client = OrloWebService::CreateClient(utils::toWstring(half.url()));
    std::string text;
    const auto time = timeOf([&] {
        try {
            client->request(request).get().content_ready().get();
        }
        catch (const std::exception& e) {
            text = e.what();
        }
    });
    EXPECT_EQ(text, "the disk is full");
    EXPECT_LT(time.count(), 2000);
}

TEST_F(EngineIsolationTest, continuationsThatWaitForFurtherRequestsComeThrough)
{
    constexpr int chains = 100;
    std::atomic<int> through{0};
    const auto time = timeOf([&] {
        for (int i = 0; i < chains; ++i) {
            begin(small.url(), requestOf("GET", "/first")).then([&](const Outcome& first) {
                const Outcome second = begin(small.url(), requestOf("GET", "/second")).get();
                through += first.body == "{}" && second.body == "{}" ? 1 : 1000;
            });
        }
        EXPECT_TRUE(waitUntil([&] { return through >= chains; }, 10s)) << through;
    });
    EXPECT_EQ(through, chains);
    EXPECT_LT(time.count(), 10000);
}

TEST_F(EngineIsolationTest, continuationsThatCallOnTheirOwnThreadComeThrough)
{
    constexpr int chains = 50;
    std::atomic<int> through{0};
    for (int i = 0; i < chains; ++i) {
        begin(small.url(), requestOf("GET", "/first")).then([&](const Outcome& first) {
            const Outcome second = outcomeOf(Way::here, small.url());
            through += first.body == "{}" && second.body == "{}" ? 1 : 1000;
        });
    }
    EXPECT_TRUE(waitUntil([&] { return through >= chains; }, 10s)) << through;
    EXPECT_EQ(through, chains);
}

TEST_F(EngineIsolationTest, aServerThatSaysNothingHoldsUpNobody)
{
    const RawServer silent(RawAnswer::stall());
    Sending sending;
    sending.timeout = 3s;
    std::vector<pplx::task<Outcome>> waiting;
    for (int i = 0; i < 20; ++i)
        waiting.push_back(begin(silent.url(), requestOf("GET", "/thing"), sending));
    expectOthersToGoThrough();
    for (const auto& each : waiting)
        EXPECT_FALSE(each.is_done());
    for (const auto& each : waiting)
        EXPECT_EQ(each.get().number, timeoutCode);
}

} // namespace
} // namespace orlo::test
