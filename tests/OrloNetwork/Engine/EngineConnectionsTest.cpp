#include "EngineProbe.h"
#include "OrloNetwork/TlsServer.h"
#include "support/HostSetup.h"
#include "support/HttpExchange.h"
#include "support/RawServer.h"
#include "support/TempFolder.h"
#include "support/Waiting.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using OrloWebService::Traffic;

/// Answers each request by its number, from 1 on all connections, and keeps them open; closes one whose answer is empty.
class KeepingServer
{
public:
    using Answer = std::function<std::string(int)>;

    explicit KeepingServer(Answer answer = [](int) { return "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"; })
        : m_server([this, answer = std::move(answer)](Connection& connection) {
              while (true) {
                  Request request;
                  if (readRequest(connection, request) != ReadResult::request)
                      break;
                  {
                      const std::lock_guard lock(m_mutex);
                      m_lines.push_back(request.line());
                  }
                  const std::string text = answer(++m_requests);
                  if (text.empty() || !connection.write(text))
                      break;
              }
              ++m_ended;
          })
    {}
    ~KeepingServer() { m_server.stop(); }

    std::string url() const { return m_server.url(); }
    std::string place() const { return url().substr(7); }
    std::size_t connectionCount() const { return m_server.connectionCount(); }
    std::size_t endedCount() const { return m_ended; }
    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    std::atomic<int> m_requests{0};
    std::atomic<std::size_t> m_ended{0};
    SocketServer m_server;
};

class EngineConnectionsTest : public testing::TestWithParam<Way>
{
protected:
    void keep()
    {
        host.change([&](OrloConfig& config) { config.keepConnections = true; });
    }

    void trust(const Identity& identity, const std::string& name, bool keeps)
    {
        writeFile(host.folder().path(name), identity.pem());
        OrloConfig config = host.config();
        config.caFile = host.folder().wide(name);
        config.keepConnections = keeps;
        OrloConfigManager::Configure(config);
    }

    Outcome send(const std::string& method, const std::string& url, const Sending& sending = {})
    {
        return outcomeOf(GetParam(), url, requestOf(method, "/thing"), sending);
    }

    HostSetup host{"http://127.0.0.1"};
};

INSTANTIATE_TEST_SUITE_P(OnBothWays, EngineConnectionsTest, testing::Values(Way::here, Way::loop), testing::PrintToStringParamName());

TEST_P(EngineConnectionsTest, eachRequestHasAConnectionOfItsOwnWhichItEnds)
{
    KeepingServer server;
    for (const char* method : {"GET", "GET", "POST", "GET"})
        EXPECT_EQ(send(method, server.url()).body, "{}");
    EXPECT_EQ(server.connectionCount(), 4U);
    EXPECT_TRUE(waitUntil([&] { return server.endedCount() == 4; }, 2s));
}

TEST_P(EngineConnectionsTest, readingRequestsShareAConnectionWhereTheHostWantsIt)
{
    keep();
    KeepingServer server;
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(send("GET", server.url()).body, "{}");
    EXPECT_EQ(server.connectionCount(), 1U);
}

TEST_P(EngineConnectionsTest, whatChangesSomethingNeverSharesAConnection)
{
    keep();
    KeepingServer server;
    for (const char* method : {"GET", "POST", "PUT", "DELETE", "PATCH", "POST"})
        EXPECT_EQ(send(method, server.url()).body, "{}");
    EXPECT_EQ(server.connectionCount(), 6U);
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    EXPECT_EQ(server.connectionCount(), 6U);
}

TEST_P(EngineConnectionsTest, aFileComesAfterOneThatCouldNotBeHad)
{
    KeepingServer server;
    RawServer resetting(RawAnswer::resetBeforeAnswer());
    RawServer cutting(RawAnswer::closeAfter("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc", 50));
    RawServer silent(RawAnswer::stall());
    Sending file;
    file.traffic = Traffic::files;
    Sending impatient = file;
    impatient.timeout = 50ms;
    for (const char* method : {"GET", "POST"}) { // the one on threads for files, where it isn't carried here, the other on the loop
        EXPECT_TRUE(send(method, "http://" + std::string(70, 'x') + ".invalid", file).hasFailed);
        EXPECT_EQ(send(method, server.url(), file).body, "{}") << method << " after a name that nobody can look up";
        EXPECT_TRUE(send(method, "http://127.0.0.1:1", file).hasFailed);
        EXPECT_EQ(send(method, server.url(), file).body, "{}") << method << " after nobody listened";
        EXPECT_TRUE(send(method, resetting.url(), file).hasFailed);
        EXPECT_EQ(send(method, server.url(), file).body, "{}") << method << " after a reset";
        EXPECT_TRUE(send(method, cutting.url(), file).hasFailed);
        EXPECT_EQ(send(method, server.url(), file).body, "{}") << method << " after a body that was cut short";
        EXPECT_TRUE(send(method, silent.url(), impatient).hasFailed);
        EXPECT_EQ(send(method, server.url(), file).body, "{}") << method << " after a silence";
    }
}

TEST_P(EngineConnectionsTest, aGetThatChangesSomethingNeverSharesAConnection)
{
    keep();
    KeepingServer server;
    Sending changing;
    changing.traffic = OrloWebService::Traffic::changes;
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(send("GET", server.url(), changing).body, "{}");
    EXPECT_EQ(server.connectionCount(), 4U);
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    EXPECT_EQ(server.connectionCount(), 4U);
}

TEST_P(EngineConnectionsTest, aGetWithABodyNeverSharesAConnection)
{
    keep();
    KeepingServer server;
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    EXPECT_EQ(outcomeOf(GetParam(), server.url(), requestOf("GET", "/thing", "{}")).body, "{}");
    EXPECT_EQ(server.connectionCount(), 2U);
}

TEST_P(EngineConnectionsTest, filesOfABatchShareTheConnectionsOfSixThreads)
{
    KeepingServer server;
    Sending batch;
    batch.traffic = Traffic::filesOfBatch;
    Sending single;
    single.traffic = Traffic::files;
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(send("GET", server.url(), batch).body, "{}");
    const std::size_t shared = server.connectionCount();
    // The answer is told by the thread that carried the file, so the next file may begin before that thread is free for it.
    EXPECT_LE(shared, GetParam() == Way::here ? 1U : 6U);
    EXPECT_EQ(send("GET", server.url(), single).body, "{}");
    EXPECT_EQ(server.connectionCount(), shared + 1);
}

TEST_P(EngineConnectionsTest, aGetOnAKeptConnectionThatEndsIsSentOnceMore)
{
    keep();
    KeepingServer server([](int number) { return number == 2 ? "" : "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"; });
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    const Outcome second = send("GET", server.url());
    EXPECT_EQ(second.text, "");
    EXPECT_EQ(second.body, "{}");
    EXPECT_EQ(server.lines(), (std::vector<std::string>{"GET /thing", "GET /thing", "GET /thing"}));
    EXPECT_EQ(server.connectionCount(), 2U);
}

TEST_P(EngineConnectionsTest, aGetOnAConnectionOfItsOwnThatEndsIsNotSentAgain)
{
    keep();
    KeepingServer server([](int) { return std::string(); });
    EXPECT_EQ(send("GET", server.url()).text, "Failed to read HTTP status line (" + server.place() + ": Empty reply from server)");
    EXPECT_EQ(server.lines().size(), 1U);
}

TEST_P(EngineConnectionsTest, aPostWhoseConnectionEndsIsNeverSentAgain)
{
    keep();
    KeepingServer server([](int number) { return number == 2 ? "" : "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"; });
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    const Outcome post = send("POST", server.url());
    EXPECT_EQ(post.text, "Failed to read HTTP status line (" + server.place() + ": Empty reply from server)");
    EXPECT_EQ(post.number, abortedCode);
    EXPECT_EQ(server.lines(), (std::vector<std::string>{"GET /thing", "POST /thing"}));
}

TEST_P(EngineConnectionsTest, aKeptConnectionThatTheServerHasClosedIsReplaced)
{
    keep();
    std::atomic<int> requests{0};
    SocketServer closing([&](Connection& connection) {
        readWire(connection);
        ++requests;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
    });
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(send("GET", closing.url()).body, "{}");
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(requests, 5);
    EXPECT_EQ(closing.connectionCount(), 5U);
}

TEST_P(EngineConnectionsTest, aConnectionWhoseCallFailedIsNotKept)
{
    keep();
    KeepingServer server([](int number) {
        return number == 2 ? "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}" : "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}";
    });
    Sending sending;
    sending.timeout = 300ms;
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    EXPECT_EQ(send("GET", server.url(), sending).number, timeoutCode);
    EXPECT_EQ(send("GET", server.url()).body, "{}");
    EXPECT_EQ(server.connectionCount(), 2U);
}

TEST_P(EngineConnectionsTest, aKeptConnectionOfAnotherTrustIsNotUsed)
{
    const Identity identity("IP:127.0.0.1");
    const TlsServer server(identity);
    trust(identity, "trusted.pem", true);
    EXPECT_EQ(send("GET", utils::toString(server.url())).body, "{}");
    EXPECT_EQ(send("GET", utils::toString(server.url())).body, "{}");
    trust(Identity("DNS:other.example"), "other.pem", true);
    const Outcome refused = send("GET", utils::toString(server.url()));
    EXPECT_TRUE(refused.hasFailed);
    host.change([&](OrloConfig& config) { config.keepConnections = true; });
    const Outcome bySystem = send("GET", utils::toString(server.url()));
    EXPECT_TRUE(bySystem.hasFailed);
    EXPECT_EQ(server.requestCount(), 2);
}

TEST_P(EngineConnectionsTest, aSessionOfAnotherTrustIsNotResumed)
{
    const Identity identity("IP:127.0.0.1");
    const TlsServer server(identity);
    trust(identity, "trusted.pem", false);
    EXPECT_EQ(send("GET", utils::toString(server.url())).body, "{}");
    EXPECT_EQ(send("GET", utils::toString(server.url())).body, "{}");
    trust(Identity("DNS:other.example"), "other.pem", false);
    EXPECT_TRUE(send("GET", utils::toString(server.url())).hasFailed);
    OrloConfigManager::Configure(host.config());
    EXPECT_TRUE(send("GET", utils::toString(server.url())).hasFailed);
    trust(identity, "trusted.pem", false);
    EXPECT_EQ(send("GET", utils::toString(server.url())).body, "{}");
    EXPECT_EQ(server.requestCount(), 3);
}

TEST(EngineKeptConnectionsTest, goWithTheThreadOfTheLoop)
{
    const HostSetup host{"http://127.0.0.1"};
    host.change([&](OrloConfig& config) { config.keepConnections = true; });
    KeepingServer server;
    EXPECT_EQ(outcomeOf(Way::loop, server.url()).body, "{}");
    EXPECT_EQ(server.endedCount(), 0U);
    EXPECT_TRUE(waitUntil([&] { return server.endedCount() == 1; }, 4s));
}

/// Listens on the loopback address of the newer protocol, and answers one request.
class NewerServer
{
public:
    ~NewerServer()
    {
        listener.interrupt();
        m_thread.join();
    }

    Listener listener{8, Listener::Version::six};

    std::string wire() const { return m_wire; }

private:
    void serve()
    {
        const auto connection = listener.accept();
        if (!connection)
            return;
        m_wire = readWire(*connection);
        connection->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
    }

    std::string m_wire;
    std::thread m_thread{[this] { serve(); }};
};

TEST_P(EngineConnectionsTest, anAddressMayBeOneOfVersionSix)
{
    std::string place;
    {
        NewerServer server;
        if (!server.listener.isThere())
            GTEST_SKIP() << "this machine has no IPv6";
        place = server.listener.place();
        EXPECT_EQ(send("GET", "http://" + place).body, "{}");
        EXPECT_EQ(server.wire(), "GET /thing HTTP/1.1\r\nHost: " + place + "\r\nUser-Agent: probe\r\n\r\n");
    }
    EXPECT_EQ(send("GET", "http://" + place).text, "Failed to connect to any resolved endpoint (" + place + ": Connection refused)");
}

} // namespace
} // namespace orlo::test
