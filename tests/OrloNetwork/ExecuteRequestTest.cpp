#include "RequestProbe.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"
#include "support/ScriptedServer.h"

#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace orlo::test {
namespace {

using OrloWebService::ReadBody;

class ExecuteRequestTest : public testing::Test
{
protected:
    web::http::http_response answerTo(int status, const std::string& body, const std::string& contentType = "application/json")
    {
        server.expect("GET", "/thing").reply(status, body, contentType);
        return get(server.wideUrl(), error);
    }

    void expectHttpError(int status, const std::wstring& message) const
    {
        EXPECT_EQ(error.GetValue(), -402653182LL);
        EXPECT_EQ(error.GetErrorMessage(), message);
        const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
        ASSERT_NE(failure, nullptr);
        EXPECT_EQ(failure->GetName(), L"HttpError");
        EXPECT_EQ(failure->GetCode(), status);
        EXPECT_EQ(failure->GetSubcode(), 0);
    }

    ScriptedServer server;
    HostSetup host{server.url()};
    ErrorCode error;
};

TEST_F(ExecuteRequestTest, givesStatusHeadersAndBytesOfTheAnswer)
{
    const std::string bytes("a\0\xff\n{", 5);
    const auto response = answerTo(200, bytes, "application/octet-stream");
    EXPECT_EQ(response.status_code(), 200);
    EXPECT_EQ(response.headers().content_type(), "application/octet-stream");
    EXPECT_EQ(ReadBody(response), bytes);
    EXPECT_EQ(ReadBody(response), bytes); // a second time too
    EXPECT_TRUE(error.isClear());
}

TEST_F(ExecuteRequestTest, theMessageOfAnErrorIsReadInTheCharsetOfTheAnswer)
{
    answerTo(500, "caf\xE9", "text/plain; charset=iso-8859-1");
    expectHttpError(500, L"café");
    answerTo(500, std::string("\xFE\xFF\x56\xFE\0!", 6), "text/html; charset=utf-16");
    expectHttpError(500, L"图!");
    answerTo(500, std::string("\x3D\xD8\0\xDE\x3D\xD8", 6), "text/plain; charset=utf-16le");
    expectHttpError(500, L"\U0001F600\xFFFD");
}

TEST_F(ExecuteRequestTest, theMessageOfAnErrorIsUtf8WhereNoKnownCharsetIsNamed)
{
    for (const char* type : {"text/plain", "application/json", "text/html; charset=windows-1252", "text/plain; charset=us-ascii"}) {
        answerTo(500, "é \xE9", type);
        expectHttpError(500, L"é \xFFFD");
    }
}

TEST_F(ExecuteRequestTest, aStatusBelow400LeavesTheErrorCodeAlone)
{
    for (const int status : {201, 204, 302, 304}) {
        EXPECT_EQ(answerTo(status, "").status_code(), status);
        EXPECT_TRUE(error.isClear()) << status;
        EXPECT_EQ(error.GetCategory(), nullptr) << status;
    }
}

TEST_F(ExecuteRequestTest, doesNotClearAnErrorThatWasThere)
{
    error.Assign(error::badInput, std::make_shared<GenericError>(L"earlier"));
    answerTo(200, "{}");
    EXPECT_EQ(error.GetErrorMessage(), L"earlier");
}

TEST_F(ExecuteRequestTest, anErrorStatusLeavesTheBodyAsTheMessage)
{
    for (const int status : {400, 401, 403, 404, 409, 500, 503}) {
        EXPECT_EQ(answerTo(status, "{\"code\":20001,\"message\":\"项目 😀\"}").status_code(), status);
        expectHttpError(status, L"{\"code\":20001,\"message\":\"项目 😀\"}");
    }
}

TEST_F(ExecuteRequestTest, anErrorStatusWithoutABodyHasAnEmptyMessage)
{
    answerTo(500, "");
    expectHttpError(500, L"");
}

TEST_F(ExecuteRequestTest, anErrorBodyOfAnyTypeAndOfAnyBytesIsTheMessage)
{
    answerTo(502, "<html>\xff</html>", "text/html");
    expectHttpError(502, L"<html>\uFFFD</html>");
}

TEST_F(ExecuteRequestTest, theBodyOfAnErrorCanStillBeRead)
{
    EXPECT_EQ(ReadBody(answerTo(404, "{\"code\":1}")), "{\"code\":1}");
}

TEST_F(ExecuteRequestTest, followsNoRedirect)
{
    server.expect("GET", "/thing").reply(Reply{302, "", "", {{"Location", server.url() + "/elsewhere"}}});
    EXPECT_EQ(get(server.wideUrl(), error).status_code(), 302);
    EXPECT_EQ(server.requestCount(), 1U);
}

TEST_F(ExecuteRequestTest, readsAChunkedBodyInFragments)
{
    RawServer raw(RawAnswer::bytes("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
                                   "5\r\n{\"a\":\r\n2\r\n1}\r\n0\r\n\r\n")
                      .fragments(1));
    EXPECT_EQ(ReadBody(get(raw.wideUrl(), error)), "{\"a\":1}");
}

TEST_F(ExecuteRequestTest, readsABodyThatEndsWithTheConnection)
{
    RawServer raw(RawAnswer::bytes("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n{\"a\":1}"));
    EXPECT_EQ(ReadBody(get(raw.wideUrl(), error)), "{\"a\":1}");
}

TEST_F(ExecuteRequestTest, readsABodyOf64MiB)
{
    const std::string body(std::size_t{64} << 20, 'x');
    RawServer raw(RawAnswer::bytes(rawOk(body)));
    EXPECT_TRUE(ReadBody(get(raw.wideUrl(), error)) == body);
}

TEST_F(ExecuteRequestTest, aBodyUpToTheLimitIsRead)
{
    server.expect("GET", "/thing").reply(200, "12345678");
    const auto client = OrloWebService::CreateClient(server.wideUrl());
    const auto request = OrloWebService::CreateRequest(web::http::methods::GET, web::uri("/thing"), web::json::value::null());
    EXPECT_EQ(ReadBody(OrloWebService::ExecuteRequest(*client, request, error, 8)), "12345678");
}

TEST_F(ExecuteRequestTest, aBodyBeyondTheLimitIsRefusedWithoutReadingIt)
{
    std::atomic<bool> brokenOff{false};
    const std::string piece(std::size_t{1} << 20, 'x');
    SocketServer endless([&](Connection& connection) {
        Request request;
        readRequest(connection, request);
        connection.write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n");
        // 4 GiB, unless the client ends the connection.
        for (int i = 0; i < 4096 && !brokenOff; ++i)
            brokenOff = !connection.write(piece);
    });
    const auto client = OrloWebService::CreateClient(utils::toWstring(endless.url()));
    const auto request = OrloWebService::CreateRequest(web::http::methods::GET, web::uri("/thing"), web::json::value::null());
    EXPECT_THROW(OrloWebService::ExecuteRequest(*client, request, error, std::size_t{4} << 20), std::length_error);
    endless.stop();
    EXPECT_TRUE(brokenOff);
}

TEST_F(ExecuteRequestTest, anErrorBodyBeyondTheLimitIsRefusedToo)
{
    server.expect("GET", "/thing").reply(500, "123456789");
    const auto client = OrloWebService::CreateClient(server.wideUrl());
    const auto request = OrloWebService::CreateRequest(web::http::methods::GET, web::uri("/thing"), web::json::value::null());
    EXPECT_THROW(OrloWebService::ExecuteRequest(*client, request, error, 8), std::length_error);
    EXPECT_TRUE(error.isClear());
}

} // namespace
} // namespace orlo::test
