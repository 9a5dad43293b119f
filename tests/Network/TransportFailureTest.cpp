#include "ChainProbe.h"
#include "RequestProbe.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

namespace orlo::test {
namespace {

/// A request that gets no whole answer throws, and the rule says that it is worth another attempt.
class TransportFailureTest : public testing::Test
{
protected:
    void expectFailure(const std::wstring& url, const std::string& text, web::http::client::http_client_config config = {})
    {
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

    void expectFailure(const RawAnswer& answer, const std::string& text)
    {
        const RawServer server(answer);
        expectFailure(server.wideUrl(), text);
    }

    HostSetup host{"http://127.0.0.1"};
    ErrorCode error;
};

TEST_F(TransportFailureTest, aRefusedConnection)
{
    std::optional<RawServer> server(RawAnswer::bytes(""));
    const std::wstring url = server->wideUrl();
    server.reset();
    expectFailure(url, "Failed to connect to any resolved endpoint");
}

TEST_F(TransportFailureTest, aConnectionThatIsResetAtOnce)
{
    const RawServer server(RawAnswer::resetOnConnect());
    EXPECT_THROW(get(server.wideUrl(), error), web::http::http_exception);
}

TEST_F(TransportFailureTest, aResetBeforeTheHeaders)
{
    expectFailure(RawAnswer::resetBeforeAnswer(), "Failed to read HTTP status line");
}

TEST_F(TransportFailureTest, aCloseBeforeTheHeaders)
{
    expectFailure(RawAnswer::bytes(""), "Failed to read HTTP status line");
}

TEST_F(TransportFailureTest, aCloseWithinTheHeaders)
{
    const std::string whole = rawOk("{\"code\":10000}");
    const RawServer server(RawAnswer::closeAfter(whole, 30));
    EXPECT_THROW(get(server.wideUrl(), error), web::http::http_exception);
}

TEST_F(TransportFailureTest, aResetWithinTheBody)
{
    const std::string whole = rawOk("{\"code\":10000}");
    expectFailure(RawAnswer::resetAfter(whole, whole.size() - 3), "Failed to read response body");
}

TEST_F(TransportFailureTest, aCloseWithinTheBody)
{
    const std::string whole = rawOk("{\"code\":10000}");
    expectFailure(RawAnswer::closeAfter(whole, whole.size() - 3), "Failed to read response body");
}

TEST_F(TransportFailureTest, aCloseWithinAChunk)
{
    expectFailure(RawAnswer::bytes("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
                                   "5\r\n{\"a\":\r\n"),
                  "Retrieving message chunk header");
}

TEST_F(TransportFailureTest, anAnswerThatDoesNotComeInTime)
{
    const RawServer server(RawAnswer::stall());
    web::http::client::http_client_config config;
    config.set_timeout(std::chrono::seconds(1));
    expectFailure(server.wideUrl(), "Failed to read HTTP status line", config);
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
