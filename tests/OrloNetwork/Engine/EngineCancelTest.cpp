#include "EngineProbe.h"
#include "Gate.h"
#include "support/HostSetup.h"
#include "support/HttpExchange.h"
#include "support/Waiting.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/SinkBuffer.h>
#include <OrloNetwork/Lifetime/Operation.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;

/// How often requests are cancelled at random instants: as often as ORLO_CANCELS says, or 2,000 times.
int wantedCancels()
{
    const char* const wanted = std::getenv("ORLO_CANCELS");
    return wanted ? std::atoi(wanted) : 2000;
}

/// Cancelled, whichever way it is carried: through a token on the loop, by the interruption of an operation here.
class Cancellable
{
public:
    void cancel()
    {
        m_source.cancel();
        m_interruption->request();
    }

    Outcome outcomeOf(Way way, const std::string& url, const web::http::http_request& request, Sending sending = {})
    {
        if (way == Way::loop) {
            sending.token = m_source.get_token();
            return test::outcomeOf(way, url, request, sending);
        }
        const Interruption::Scope scope(m_interruption);
        const http::Operation operation;
        return test::outcomeOf(way, url, request, sending);
    }

private:
    pplx::cancellation_token_source m_source;
    std::shared_ptr<Interruption> m_interruption = std::make_shared<Interruption>();
};

class EngineCancelTest : public testing::TestWithParam<Way>
{
protected:
    /// Cancels as soon as the condition holds, and expects a prompt end.
    template <class Condition>
    void expectCancelled(const std::string& url, const web::http::http_request& request, Condition condition)
    {
        Cancellable call;
        std::atomic<bool> isReached{false};
        std::chrono::steady_clock::time_point when;
        std::thread canceller([&] {
            isReached = waitUntil(condition, 5s);
            when = std::chrono::steady_clock::now();
            call.cancel();
        });
        const Outcome outcome = call.outcomeOf(GetParam(), url, request);
        const auto end = std::chrono::steady_clock::now();
        canceller.join();
        EXPECT_TRUE(isReached);
        EXPECT_LT((end - when) / 1ms, 500);
        EXPECT_EQ(outcome.text, "Operation canceled");
        EXPECT_EQ(outcome.number, cancelledCode);
    }

    HostSetup host{"http://127.0.0.1"};
};

INSTANTIATE_TEST_SUITE_P(OnBothWays, EngineCancelTest, testing::Values(Way::here, Way::loop), testing::PrintToStringParamName());

/// After a while.
auto after(std::chrono::milliseconds length)
{
    return [end = std::chrono::steady_clock::now() + length] { return std::chrono::steady_clock::now() > end; };
}

void waitForTheEnd(Connection& connection)
{
    std::string rest;
    while (connection.read(rest))
        rest.clear();
}

TEST_P(EngineCancelTest, beforeItBegins)
{
    const WireServer server;
    const auto interruption = std::make_shared<Interruption>();
    const Interruption::Scope scope(interruption);
    const http::Operation operation;
    interruption->request();
    pplx::cancellation_token_source source;
    source.cancel();
    Sending sending;
    sending.token = source.get_token();
    const Outcome outcome = outcomeOf(GetParam(), server.url(), sending);
    EXPECT_EQ(outcome.text, "Operation canceled");
    EXPECT_EQ(outcome.number, cancelledCode);
    EXPECT_EQ(server.wire(), "");
}

TEST_P(EngineCancelTest, whileItConnects)
{
    // Those who wait to be taken fill the queue; a further one gets no answer.
    Listener listener(0);
    std::vector<std::unique_ptr<Connection>> waiting;
    for (int i = 0; i < 4; ++i)
        waiting.push_back(beginToConnect(listener.port()));
    expectCancelled(listener.url(), requestOf("GET", "/thing"), after(100ms));
}

TEST_P(EngineCancelTest, duringTheHandshake)
{
    std::atomic<bool> isGreeted{false};
    SocketServer silent([&](Connection& connection) {
        std::string hello;
        isGreeted = connection.read(hello);
        waitForTheEnd(connection);
    });
    expectCancelled("https://127.0.0.1:" + std::to_string(silent.port()), requestOf("GET", "/thing"), [&] { return isGreeted.load(); });
}

TEST_P(EngineCancelTest, beforeTheAnswer)
{
    std::atomic<bool> isAsked{false};
    SocketServer silent([&](Connection& connection) {
        readWire(connection);
        isAsked = true;
        waitForTheEnd(connection);
    });
    expectCancelled(silent.url(), requestOf("GET", "/thing"), [&] { return isAsked.load(); });
}

TEST_P(EngineCancelTest, withinTheBody)
{
    std::atomic<int> sent{0};
    SocketServer endless([&](Connection& connection) {
        readWire(connection);
        connection.write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n");
        while (connection.write(std::string(1000, 'x'))) {
            ++sent;
            std::this_thread::sleep_for(1ms);
        }
    });
    expectCancelled(endless.url(), requestOf("GET", "/thing"), [&] { return sent > 20; });
}

TEST_P(EngineCancelTest, duringAnUpload)
{
    std::atomic<std::size_t> got{0};
    SocketServer slow([&](Connection& connection) {
        std::string piece;
        while (connection.read(piece)) {
            got += piece.size();
            piece.clear();
            std::this_thread::sleep_for(1ms);
        }
    });
    const std::string body(std::size_t{64} << 20, 'x');
    expectCancelled(slow.url(), requestOf("PUT", "/thing", body, "application/octet-stream"), [&] { return got > 1000000; });
    EXPECT_LT(got, body.size());
}

TEST(EngineCancelOnTheLoop, whileItsSinkBlocks)
{
    const HostSetup host{"http://127.0.0.1"};
    SocketServer endless([](Connection& connection) {
        readWire(connection);
        connection.write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n");
        while (connection.write(std::string(100000, 'x'))) {
        }
    });
    const auto gate = std::make_shared<Gate>();
    auto request = requestOf("GET", "/thing");
    request.set_response_stream(http::SinkBuffer::stream([gate](const std::uint8_t*, std::size_t) { gate->enter(); }));
    pplx::cancellation_token_source source;
    const auto client = OrloWebService::CreateClient(utils::toWstring(endless.url()));
    const auto content = client->request(request, source.get_token()).get().content_ready();
    ASSERT_TRUE(waitUntil([&] { return gate->inside() == 1; }, 5s));
    source.cancel();
    EXPECT_TRUE(waitUntil([&] { return content.is_done(); }, 1s));
    EXPECT_EQ(gate->inside(), 1);
    gate->open();
    try {
        content.get();
        ADD_FAILURE() << "no exception";
    }
    catch (const web::http::http_exception& e) {
        EXPECT_EQ(e.error_code(), std::errc::operation_canceled);
        EXPECT_EQ(std::string(e.what()), "Operation canceled");
    }
}

TEST_P(EngineCancelTest, whenAllIsOverItDoesNothing)
{
    const WireServer server;
    Cancellable call;
    EXPECT_EQ(call.outcomeOf(GetParam(), server.url(), requestOf("GET", "/thing")).status, 204);
    call.cancel();
    EXPECT_EQ(outcomeOf(GetParam(), server.url()).status, 204);
}

/// Answers after 0 to 3 ms, on so many threads; however many connections come, no more are made.
class TardyServer
{
public:
    TardyServer()
    {
        for (unsigned i = 0; i < 8; ++i)
            m_threads.emplace_back([this, i] { serveAll(i); });
    }
    ~TardyServer()
    {
        m_listener.interrupt();
        for (std::thread& thread : m_threads)
            thread.join();
    }
    TardyServer(const TardyServer&) = delete;
    TardyServer& operator=(const TardyServer&) = delete;

    std::string url() const { return m_listener.url(); }

private:
    void serveAll(unsigned seed)
    {
        std::minstd_rand random(seed + 1);
        while (const auto connection = m_listener.accept()) {
            Request request;
            if (readRequest(*connection, request) != ReadResult::request)
                continue;
            std::this_thread::sleep_for(microseconds(random() % 3000));
            connection->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
        }
    }

    Listener m_listener{512};
    std::vector<std::thread> m_threads;
};

/// What was there before, and is there again when all is over.
struct Resources
{
    std::size_t threads = threadCount();
    std::size_t descriptors = descriptorCount();

    void expectBack() const
    {
        EXPECT_TRUE(waitUntil([&] { return threadCount() <= threads; }, 5s)) << threadCount() << " instead of " << threads;
        EXPECT_TRUE(waitUntil([&] { return descriptorCount() <= descriptors; }, 5s)) << descriptorCount() << " instead of " << descriptors;
    }
};

/// Whatever stays for good is there.
void becomeQuiet(const std::string& url)
{
    outcomeOf(Way::loop, url);
    outcomeOf(Way::here, url);
    quietThreadCount();
}

struct Tally
{
    std::atomic<int> answered{0};
    std::atomic<int> cancelled{0};
    std::atomic<int> other{0};

    void add(const Outcome& outcome)
    {
        if (!outcome.hasFailed && outcome.status == 200 && outcome.body == "{}")
            ++answered;
        else if (outcome.number == 125 && outcome.text == "Operation canceled")
            ++cancelled;
        else
            ++other;
    }
    int all() const { return answered + cancelled + other; }
};

TEST(EngineCancelStorm, cancelsAtRandomInstantsLeaveNothingBehind)
{
    const HostSetup host{"http://127.0.0.1"};
    const int wanted = wantedCancels();
    const TardyServer server;
    becomeQuiet(server.url());
    const Resources before;
    Tally tally;
    std::vector<std::thread> starters;
    std::atomic<int> started{0};
    for (unsigned seed = 1; seed <= 4; ++seed) {
        starters.emplace_back([&, seed] {
            std::minstd_rand random(seed);
            while (++started <= wanted) {
                waitUntil([&] { return started - tally.all() < 32; });
                pplx::cancellation_token_source source;
                Sending sending;
                sending.token = source.get_token();
                begin(server.url(), requestOf("GET", "/thing"), sending).then([&](const Outcome& outcome) { tally.add(outcome); });
                std::this_thread::sleep_for(microseconds(random() % 4000));
                source.cancel();
            }
        });
    }
    for (std::thread& starter : starters)
        starter.join();
    ASSERT_TRUE(waitUntil([&] { return tally.all() == wanted; })) << tally.all();
    EXPECT_EQ(tally.other, 0);
    EXPECT_GT(tally.cancelled, wanted / 10);
    before.expectBack();
}

TEST(EngineCancelStorm, interruptionsAtRandomInstantsLeaveNothingBehind)
{
    const HostSetup host{"http://127.0.0.1"};
    const int wanted = wantedCancels() / 4;
    const TardyServer server;
    becomeQuiet(server.url());
    const Resources before;
    Tally tally;
    std::vector<std::thread> callers;
    std::atomic<int> started{0};
    for (unsigned seed = 1; seed <= 4; ++seed) {
        callers.emplace_back([&, seed] {
            std::minstd_rand random(seed);
            while (++started <= wanted) {
                Cancellable call;
                std::thread canceller([&, length = microseconds(random() % 4000)] {
                    std::this_thread::sleep_for(length);
                    call.cancel();
                });
                try {
                    tally.add(call.outcomeOf(Way::here, server.url(), requestOf("GET", "/thing")));
                }
                catch (const std::runtime_error&) { // before the operation began
                    ++tally.cancelled;
                }
                canceller.join();
            }
        });
    }
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(tally.all(), wanted);
    EXPECT_EQ(tally.other, 0);
    EXPECT_GT(tally.cancelled, wanted / 10);
    EXPECT_GT(tally.answered, 0);
    // A handle for each thread is kept for the next calls, with what wakes it: two descriptors.
    Resources allowed = before;
    allowed.descriptors += 4 * 2;
    allowed.expectBack();
}

} // namespace
} // namespace orlo::test
