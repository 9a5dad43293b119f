// What a host is told of a request that failed.

#include "ChainProbe.h"
#include "RequestProbe.h"
#include "TlsServer.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"
#include "support/ScriptedServer.h"
#include "support/Sockets.h"
#include "support/TempFolder.h"

#include <BaseCommon/RequestError.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/SecretGuard.h>
#include <OrloNetwork/CallObserver.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloNetwork/RequestNote.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

class RequestErrorTest : public testing::Test
{
protected:
    ~RequestErrorTest() override { http::setRequestIds(false); }

    /// Asks as the web functions do, through the retry loop.
    const RequestDetails& detailsOf(const std::wstring& url, const std::string& target = "/thing")
    {
        http::SendNormalRequestWithRetry(
            [&](ErrorCode& ec) {
                web::http::client::http_client_config config;
                config.set_timeout(std::chrono::milliseconds(500));
                const auto note = http::noteRequest(L"OrloWebService::Probe");
                const auto client = OrloWebService::CreateClient(url, config, OrloWebService::Traffic::calls, note);
                const auto request = OrloWebService::CreateRequest(web::http::methods::GET, web::uri(target), web::json::value::null());
                OrloWebService::ExecuteRequest(*client, request, ec, OrloWebService::largestAnswer, note.get());
                return true;
            },
            false, error);
        static const RequestDetails none{};
        const RequestDetails* const details = requestDetails(error);
        EXPECT_NE(details, nullptr) << utils::toString(error.GetErrorMessage());
        return details ? *details : none;
    }
    std::wstring failureOf(const std::wstring& url) { return wordsOf(detailsOf(url).failure); }

    void trust(const Identity& identity)
    {
        writeFile(host.folder().path("trusted.pem"), identity.pem());
        host.change([&](OrloConfig& config) { config.caFile = host.folder().wide("trusted.pem"); });
    }

    HostSetup host{"http://127.0.0.1"};
    RetryPolicyGuard policy{{0, 0}};
    ErrorCode error;
};

TEST_F(RequestErrorTest, ofAnErrorStatusIsStillTheHttpErrorThatHostsKnow)
{
    ScriptedServer server;
    server.expect("GET", "/thing?sig=secret").reply(403, "no");
    const RequestDetails& details = detailsOf(server.wideUrl(), "/thing?sig=secret");
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetName(), L"HttpError");
    EXPECT_EQ(failure->GetErrorMessage(), L"no");
    EXPECT_EQ(failure->GetCode(), 403);
    EXPECT_EQ(failure->GetSubcode(), 0);
    EXPECT_EQ(details.operation, L"OrloWebService::Probe");
    EXPECT_EQ(details.method, L"GET");
    EXPECT_EQ(details.host, L"127.0.0.1");
    EXPECT_EQ(details.port, server.port());
    EXPECT_EQ(details.path, L"/thing");
    EXPECT_EQ(details.attempts, 1U);
    EXPECT_EQ(details.failure, NetworkFailure::none);
    EXPECT_EQ(details.words, L"");
    EXPECT_EQ(details.requestId, L"");
    const auto& told = dynamic_cast<const RequestError&>(*failure);
    EXPECT_EQ(told.Describe(),
              L"OrloWebService::Probe: GET 127.0.0.1:" + std::to_wstring(server.port()) + L"/thing, 1 attempt: status 403");
}

TEST_F(RequestErrorTest, countsTheAttempts)
{
    const RetryPolicyGuard four({3, 0});
    ScriptedServer server;
    server.expect("GET", "/thing").times(4).reply(503);
    EXPECT_EQ(detailsOf(server.wideUrl()).attempts, 4U);
}

TEST_F(RequestErrorTest, showsNoTokenOfThePath)
{
    SecretGuard::protectPermission(L"permission-token-1");
    ScriptedServer server;
    server.expect("GET", "/thing/permission-token-1").reply(404);
    EXPECT_EQ(detailsOf(server.wideUrl(), "/thing/permission-token-1").path, L"/thing/***");
}

TEST_F(RequestErrorTest, ofARefusedConnection)
{
    EXPECT_EQ(failureOf(L"http://127.0.0.1:1"), L"no connection");
    EXPECT_EQ(requestDetails(error)->words, L"Connection refused");
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    EXPECT_EQ(failure->GetName(), L"generic exception");
    EXPECT_EQ(failure->GetCode(), 113);
}

TEST_F(RequestErrorTest, ofANameThatNobodyHas)
{
    EXPECT_EQ(failureOf(L"http://" + std::wstring(64, L'x') + L".invalid"), L"host not found");
}

TEST_F(RequestErrorTest, ofACertificateThatIsNotTrusted)
{
    const TlsServer server(Identity("IP:127.0.0.1"));
    EXPECT_EQ(failureOf(server.url()), L"certificate not trusted");
    EXPECT_EQ(requestDetails(error)->words, L"SSL certificate problem: self-signed certificate");
}

TEST_F(RequestErrorTest, ofACertificateOfAnotherHost)
{
    const Identity elsewhere("DNS:elsewhere.example");
    trust(elsewhere);
    EXPECT_EQ(failureOf(TlsServer(elsewhere).url()), L"wrong host name");
}

TEST_F(RequestErrorTest, ofACertificateThatHasExpired)
{
    const Identity old("IP:127.0.0.1", std::chrono::seconds(-10));
    trust(old);
    EXPECT_EQ(failureOf(TlsServer(old).url()), L"certificate expired");
}

TEST_F(RequestErrorTest, ofASideThatSpeaksNoTls)
{
    const SocketServer plain([](Connection& connection) {
        std::string greeting;
        connection.read(greeting);
        connection.write("HTTP/1.1 400 Bad Request\r\n\r\n");
    });
    EXPECT_EQ(failureOf(L"https://127.0.0.1:" + std::to_wstring(plain.port())), L"no TLS on the other side");
}

TEST_F(RequestErrorTest, ofAProxyThatRefuses)
{
    const RawServer proxy(RawAnswer::bytes("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n"));
    host.change([&](OrloConfig& config) { config.proxy = proxy.wideUrl(); });
    EXPECT_EQ(failureOf(L"https://platform.example"), L"proxy refused");
    EXPECT_EQ(requestDetails(error)->host, L"platform.example");
    EXPECT_EQ(requestDetails(error)->port, 443);
}

TEST_F(RequestErrorTest, ofAProxyThatNobodyKnows)
{
    host.change([&](OrloConfig& config) { config.proxy = L"http://" + std::wstring(64, L'x') + L".invalid"; });
    EXPECT_EQ(failureOf(L"http://platform.example"), L"proxy not found");
}

TEST_F(RequestErrorTest, ofASilentServer)
{
    const RawServer silent(RawAnswer::stall());
    EXPECT_EQ(failureOf(silent.wideUrl()), L"time-out while waiting for the answer");
}

TEST_F(RequestErrorTest, ofASilentHandshake)
{
    const RawServer silent(RawAnswer::stall());
    EXPECT_EQ(failureOf(L"https://127.0.0.1:" + std::to_wstring(silent.port())), L"time-out while connecting");
}

TEST_F(RequestErrorTest, ofAResetBeforeTheAnswer)
{
    const RawServer server(RawAnswer::resetBeforeAnswer());
    EXPECT_EQ(failureOf(server.wideUrl()), L"connection lost");
}

TEST_F(RequestErrorTest, ofAnAnswerThatEndsTooEarly)
{
    const std::string whole = rawOk("{\"code\":10000}");
    const RawServer closing(RawAnswer::closeAfter(whole, whole.size() - 3));
    EXPECT_EQ(failureOf(closing.wideUrl()), L"answer cut short");
    const RawServer resetting(RawAnswer::resetAfter(whole, whole.size() - 3));
    EXPECT_EQ(failureOf(resetting.wideUrl()), L"answer cut short");
}

TEST_F(RequestErrorTest, ofAnAnswerThatIsNone)
{
    const RawServer server(RawAnswer::bytes("nonsense\r\n\r\n"));
    EXPECT_EQ(failureOf(server.wideUrl()), L"answer unreadable");
}

TEST_F(RequestErrorTest, carriesTheRequestIdWhereIdsAreOn)
{
    http::setRequestIds(true);
    ScriptedServer server;
    server.expect("GET", "/thing").reply(500);
    EXPECT_EQ(detailsOf(server.wideUrl()).requestId.size(), 36U);
}

TEST_F(RequestErrorTest, saysHowLongThePlatformWantsToBeLeftAlone)
{
    struct Case
    {
        std::string retryAfter;
        std::string date;
        std::optional<std::chrono::seconds> expected;
    };
    const std::string noon = "Sun, 22 Nov 2026 12:00:00 GMT";
    const Case cases[] = {
        {"7", "", std::chrono::seconds(7)},
        {"0", "", std::chrono::seconds(0)},
        {"Sun, 22 Nov 2026 12:01:30 GMT", noon, std::chrono::seconds(90)},
        {"Sun, 22 Nov 2026 11:00:00 GMT", noon, std::chrono::seconds(0)},
        {"Thu, 01 Jan 1970 00:00:00 GMT", "", std::chrono::seconds(0)},
        {"999999999999999999999999", "", std::chrono::hours(365 * 24)},
        {"soon", "", std::nullopt},
        {"-5", "", std::nullopt},
        {"1.5", "", std::nullopt},
        {"", "", std::nullopt},
    };
    for (const Case& one : cases) {
        ScriptedServer server;
        Reply reply{503, "", "application/json", {}, false};
        reply.headers.emplace_back("Retry-After", one.retryAfter);
        if (!one.date.empty())
            reply.headers.emplace_back("Date", one.date);
        server.expect("GET", "/thing").reply(reply);
        EXPECT_EQ(detailsOf(server.wideUrl()).retryAfter, one.expected) << one.retryAfter;
    }
}

TEST_F(RequestErrorTest, thereIsNoneForWhatIsNoRequest)
{
    EXPECT_EQ(requestDetails(ErrorCode()), nullptr);
    EXPECT_EQ(requestDetails(ErrorCode(error::badInput, makeGenericError(L"no"))), nullptr);
    EXPECT_EQ(requestDetails(ErrorCode(error::exception, makeHttpError(L"HttpError", L"no", 5555, 0))), nullptr);
}

TEST(NetworkFailure, eachHasWordsOfItsOwn)
{
    std::vector<std::wstring> all;
    for (int i = static_cast<int>(NetworkFailure::none) + 1; i <= static_cast<int>(NetworkFailure::other); ++i) {
        const std::wstring words = wordsOf(static_cast<NetworkFailure>(i));
        EXPECT_NE(words, L"") << i;
        EXPECT_EQ(std::count(all.begin(), all.end(), words), 0) << i;
        all.push_back(words);
    }
    EXPECT_STREQ(wordsOf(NetworkFailure::none), L"");
}

} // namespace
} // namespace orlo::test
