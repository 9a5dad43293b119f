#include "ChainProbe.h"
#include "RequestProbe.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"

#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cwchar>
#include <optional>

namespace orlo::test {
namespace {

/// A request that gets no whole answer throws, and the rule says that it is worth another attempt.
class TransportFailureTest : public testing::Test
{
protected:
    /// phrase, why: "<phrase> (<host>:<port>: <why>)".
    void expectFailure(const std::wstring& url, const std::string& phrase, const std::string& why,
                       web::http::client::http_client_config config = {})
    {
        const std::string place = utils::toString(url.substr(std::wcslen(L"http://")));
        const std::string text = phrase + " (" + place + ": " + why + ")";
        try {
            get(url, error, std::move(config));
            ADD_FAILURE() << "no exception";
        }
        catch (const web::http::http_exception& e) {
            EXPECT_EQ(std::string(e.what()), text);
            assignTransportFailure(error, e.error_code().value());
            const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
            EXPECT_TRUE(http::CalculateIsNeedRetryRequest(failure.get(), error)) << e.error_code().value();
        }
    }

    void expectFailure(const RawAnswer& answer, const std::string& phrase, const std::string& why)
    {
        const RawServer server(answer);
        expectFailure(server.wideUrl(), phrase, why);
    }

    HostSetup host{"http://127.0.0.1"};
    ErrorCode error;
};

TEST_F(TransportFailureTest, aRefusedConnection)
{
    std::optional<RawServer> server(RawAnswer::bytes(""));
    const std::wstring url = server->wideUrl();
    server.reset();
    expectFailure(url, "Failed to connect to any resolved endpoint", "Connection refused");
}

TEST_F(TransportFailureTest, aConnectionThatIsResetAtOnce)
{
    const RawServer server(RawAnswer::resetOnConnect());
    EXPECT_THROW(get(server.wideUrl(), error), web::http::http_exception);
}

TEST_F(TransportFailureTest, aResetBeforeTheHeaders)
{
    expectFailure(RawAnswer::resetBeforeAnswer(), "Failed to read HTTP status line", "Connection reset by peer");
}

TEST_F(TransportFailureTest, aCloseBeforeTheHeaders)
{
    expectFailure(RawAnswer::bytes(""), "Failed to read HTTP status line", "Empty reply from server");
}

TEST_F(TransportFailureTest, aCloseWithinTheHeaders)
{
    const std::string whole = rawOk("{\"code\":10000}");
    expectFailure(RawAnswer::closeAfter(whole, 30), "Failed to read HTTP status line",
                  "the connection ended within the head of the answer");
}

TEST_F(TransportFailureTest, aResetWithinTheBody)
{
    const std::string whole = rawOk("{\"code\":10000}");
    expectFailure(RawAnswer::resetAfter(whole, whole.size() - 3), "Failed to read response body", "Connection reset by peer");
}

TEST_F(TransportFailureTest, aCloseWithinTheBody)
{
    const std::string whole = rawOk("{\"code\":10000}");
    expectFailure(RawAnswer::closeAfter(whole, whole.size() - 3), "Failed to read response body",
                  "transfer closed with 3 bytes remaining to read");
}

TEST_F(TransportFailureTest, aCloseWithinAChunk)
{
    expectFailure(RawAnswer::bytes("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
                                   "5\r\n{\"a\":\r\n"),
                  "Retrieving message chunk header", "transfer closed with outstanding read data remaining");
}

TEST_F(TransportFailureTest, anAnswerThatDoesNotComeInTime)
{
    const RawServer server(RawAnswer::stall());
    web::http::client::http_client_config config;
    config.set_timeout(std::chrono::seconds(1));
    expectFailure(server.wideUrl(), "Failed to read HTTP status line", "nothing came or went in time", config);
}

TEST_F(TransportFailureTest, aStatusLineThatIsNoneIsNotWorthAnotherAttempt)
{
    const RawServer server(RawAnswer::bytes("SSH-2.0-OpenSSH_9.2\r\n\r\n"));
    try {
        get(server.wideUrl(), error);
        ADD_FAILURE() << "no exception";
    }
    catch (const web::http::http_exception& e) {
        EXPECT_EQ(e.error_code().value(), 0);
        EXPECT_EQ(std::string(e.what()),
                  "Invalid HTTP status line (127.0.0.1:" + std::to_string(server.port()) + ": Received HTTP/0.9 when not allowed)");
    }
}

TEST_F(TransportFailureTest, leavesTheErrorCodeToTheCaller)
{
    const RawServer server(RawAnswer::resetBeforeAnswer());
    EXPECT_THROW(get(server.wideUrl(), error), web::http::http_exception);
    EXPECT_TRUE(error.isClear());
}

} // namespace
} // namespace orlo::test
