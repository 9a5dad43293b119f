#include "EngineProbe.h"
#include "OrloNetwork/TlsServer.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"
#include "support/TempFolder.h"
#include "support/Waiting.h"

#include <BaseCommon/Text.h>

#include <gtest/gtest.h>
#include <openssl/crypto.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;

/// Answers over TLS and closes; with or without telling so.
class TlsAnswer
{
public:
    enum class End { told, plain };

    TlsAnswer(const Identity& identity, std::string answer, End end)
        : m_server([&identity, answer = std::move(answer), end](Connection& connection) {
              TlsPeer peer(connection, identity);
              std::string request;
              if (!peer.shakeHands())
                  return;
              while (request.find("\r\n\r\n") == std::string::npos && peer.read(request)) {
              }
              peer.write(answer);
              if (end == End::told)
                  peer.closeInWords();
          })
    {}
    ~TlsAnswer() { m_server.stop(); }

    std::string place() const { return "127.0.0.1:" + std::to_string(m_server.port()); }
    std::string url() const { return "https://" + place(); }

private:
    SocketServer m_server;
};

class EngineTlsTest : public testing::TestWithParam<Way>
{
protected:
    void trust(const Identity& trusted)
    {
        writeFile(host.folder().path("trusted.pem"), trusted.pem());
        host.change([&](OrloConfig& config) { config.caFile = host.folder().wide("trusted.pem"); });
    }

    void expectRefused(const Identity& shown, const std::string& why)
    {
        const TlsAnswer server(shown, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}", TlsAnswer::End::told);
        const Outcome outcome = outcomeOf(GetParam(), server.url());
        EXPECT_EQ(outcome.text, "Error in SSL handshake (" + server.place() + ": " + why + ")");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.number, 0);
        EXPECT_FALSE(isWorthAnotherAttempt(outcome));
    }

    Outcome answered(const std::string& answer, TlsAnswer::End end, std::string* place = nullptr)
    {
        trust(identity);
        const TlsAnswer server(identity, answer, end);
        if (place)
            *place = server.place();
        return outcomeOf(GetParam(), server.url());
    }

    HostSetup host{"http://127.0.0.1"};
    Identity identity{"IP:127.0.0.1"};
};

INSTANTIATE_TEST_SUITE_P(OnBothWays, EngineTlsTest, testing::Values(Way::here, Way::loop), testing::PrintToStringParamName());

TEST_P(EngineTlsTest, anAnswerThatTellsItsLengthMayEndAsItLikes)
{
    for (const auto end : {TlsAnswer::End::told, TlsAnswer::End::plain}) {
        for (const char* answer : {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nwhole",
                                   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nwhole\r\n0\r\n\r\n"}) {
            const Outcome outcome = answered(answer, end);
            EXPECT_EQ(outcome.text, "");
            EXPECT_EQ(outcome.body, "whole");
        }
        EXPECT_EQ(answered("HTTP/1.1 204 No Content\r\n\r\n", end).status, 204);
    }
}

TEST_P(EngineTlsTest, anAnswerThatMayHaveBeenCutIsRefused)
{
    std::string place;
    const Outcome outcome = answered("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\nhalf", TlsAnswer::End::plain, &place);
    EXPECT_TRUE(outcome.hasFailed);
    EXPECT_EQ(outcome.text,
              "Failed to read response body (" + place + ": the answer doesn't tell its length, so that it may have been cut short)");
    EXPECT_EQ(outcome.number, 2);
}

TEST_P(EngineTlsTest, anAnswerThatWasCutIsRefused)
{
    std::string place;
    const Outcome counted = answered("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf", TlsAnswer::End::told, &place);
    EXPECT_EQ(counted.text, "Failed to read response body (" + place + ": transfer closed with 5 bytes remaining to read)");
    const Outcome chunked = answered("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nhalf\r\n", TlsAnswer::End::told, &place);
    EXPECT_EQ(chunked.text, "Retrieving message chunk header (" + place + ": transfer closed with outstanding read data remaining)");
}

TEST_P(EngineTlsTest, aCertificateThatHasExpired)
{
    const Identity expired("IP:127.0.0.1", -60s);
    trust(expired);
    expectRefused(expired, "SSL certificate problem: certificate has expired");
}

TEST_P(EngineTlsTest, aCertificateForAnotherHost)
{
    const Identity elsewhere("DNS:elsewhere.example");
    trust(elsewhere);
    expectRefused(elsewhere, "SSL: no alternative certificate subject name matches target host name '127.0.0.1'");
}

TEST_P(EngineTlsTest, aCertificateOfAnUnknownIssuer)
{
    const Identity authority("DNS:authority.example");
    trust(identity);
    expectRefused(Identity("IP:127.0.0.1", authority), "SSL certificate problem: unable to get local issuer certificate");
}

TEST_P(EngineTlsTest, aCertificateThatAKnownOneVouchesFor)
{
    const Identity authority("DNS:authority.example");
    const Identity shown("IP:127.0.0.1", authority);
    trust(authority);
    const TlsAnswer server(shown, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}", TlsAnswer::End::told);
    EXPECT_EQ(outcomeOf(GetParam(), server.url()).body, "{}");
}

TEST_P(EngineTlsTest, aCertificateInTheFileWhoseIssuerIsNotThereIsRefused)
{
    const Identity authority("DNS:authority.example");
    const Identity shown("IP:127.0.0.1", authority);
    trust(shown);
    expectRefused(shown, "SSL certificate problem: unable to get local issuer certificate");
}

TEST_P(EngineTlsTest, aServerThatSpeaksNoTls)
{
    const RawServer plain([] {
        RawAnswer answer = RawAnswer::bytes("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
        answer.readsRequest = false;
        return answer;
    }());
    const std::string place = "127.0.0.1:" + std::to_string(plain.port());
    const Outcome outcome = outcomeOf(GetParam(), "https://" + place);
    EXPECT_EQ(outcome.text, "Error in SSL handshake (" + place + ": OpenSSL/" + OpenSSL_version(OPENSSL_VERSION_STRING) +
                                ": error:0A00010B:SSL routines::wrong version number)");
    EXPECT_FALSE(isWorthAnotherAttempt(outcome));
}

TEST_P(EngineTlsTest, aServerThatClosesInTheHandshake)
{
    SocketServer closing([](Connection& connection) {
        std::string hello;
        connection.read(hello);
    });
    const std::string place = "127.0.0.1:" + std::to_string(closing.port());
    const Outcome outcome = outcomeOf(GetParam(), "https://" + place);
    EXPECT_EQ(outcome.text,
              "Error in SSL handshake (" + place + ": OpenSSL SSL_connect: SSL_ERROR_SYSCALL in connection to " + place + " )");
    EXPECT_FALSE(isWorthAnotherAttempt(outcome));
}

/// The disposition of a host that knows nothing of broken pipes.
class DeadlyPipes
{
public:
    DeadlyPipes() : m_former(std::signal(SIGPIPE, SIG_DFL)) {}
    ~DeadlyPipes() { std::signal(SIGPIPE, m_former); }
    DeadlyPipes(const DeadlyPipes&) = delete;
    DeadlyPipes& operator=(const DeadlyPipes&) = delete;

private:
    void (*m_former)(int);
};

const std::string& largeBody()
{
    static const std::string& body = *new std::string(std::size_t{32} << 20, 'x');
    return body;
}

TEST_P(EngineTlsTest, aServerThatBreaksAnUploadOffKillsNobody)
{
    trust(identity);
    std::atomic<int> broken{0};
    SocketServer plain([&](Connection& connection) {
        std::string some;
        connection.read(some);
        connection.reset();
        ++broken;
    });
    SocketServer secure([&](Connection& connection) {
        TlsPeer peer(connection, identity);
        std::string some;
        if (peer.shakeHands() && peer.read(some))
            connection.reset();
        ++broken;
    });
    const DeadlyPipes pipes;
    for (int i = 0; i < 5; ++i) {
        const Outcome http = outcomeOf(GetParam(), plain.url(), requestOf("PUT", "/a", largeBody(), "application/octet-stream"));
        EXPECT_TRUE(http.hasFailed);
        EXPECT_TRUE(isWorthAnotherAttempt(http)) << http.number << ' ' << http.text;
        const Outcome https = outcomeOf(GetParam(), "https://127.0.0.1:" + std::to_string(secure.port()),
                                        requestOf("PUT", "/a", largeBody(), "application/octet-stream"));
        EXPECT_TRUE(https.hasFailed);
        EXPECT_TRUE(isWorthAnotherAttempt(https)) << https.number << ' ' << https.text;
    }
    EXPECT_TRUE(waitUntil([&] { return broken == 10; })) << broken;
}

TEST_P(EngineTlsTest, aServerThatClosesDuringAnUploadKillsNobody)
{
    trust(identity);
    SocketServer plain([&](Connection& connection) {
        std::string some;
        connection.read(some);
    });
    SocketServer secure([&](Connection& connection) {
        TlsPeer peer(connection, identity);
        std::string some;
        if (peer.shakeHands() && peer.read(some))
            peer.closeInWords();
    });
    const DeadlyPipes pipes;
    for (int i = 0; i < 5; ++i) {
        const auto request = [] { return requestOf("PUT", "/a", largeBody(), "application/octet-stream"); };
        EXPECT_TRUE(outcomeOf(GetParam(), plain.url(), request()).hasFailed);
        EXPECT_TRUE(outcomeOf(GetParam(), "https://127.0.0.1:" + std::to_string(secure.port()), request()).hasFailed);
    }
}

/// The system's certificates are read once in a process, so each has one of its own.
int statusWithCertificateFile(Way way, const std::string& file)
{
    const HostSetup host{"http://127.0.0.1"};
    const Identity identity("IP:127.0.0.1");
    writeFile(host.folder().path(file), identity.pem());
    ::setenv("SSL_CERT_FILE", host.folder().path("system.pem").c_str(), 1);
    const TlsServer server(identity);
    return outcomeOf(way, utils::toString(server.url())).status;
}

TEST_P(EngineTlsTest, theCertificatesOfTheSystemMayBeNamedByTheEnvironment)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(statusWithCertificateFile(GetParam(), "system.pem") == 200 ? 0 : 1), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(std::_Exit(statusWithCertificateFile(GetParam(), "another.pem") == 0 ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace orlo::test
