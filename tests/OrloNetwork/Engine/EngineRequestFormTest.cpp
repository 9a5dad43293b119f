#include "EngineProbe.h"
#include "support/HostSetup.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

#include <cpprest/containerstream.h>
#include <cpprest/producerconsumerstream.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

namespace orlo::test {
namespace {

utility::string_t native(const std::string& text)
{
    return utils::toNative(text);
}

/// The bytes of a request on the wire, whichever way it is carried.
class EngineRequestFormTest : public testing::TestWithParam<Way>
{
protected:
    void expectWire(const web::http::http_request& request, const std::string& wire)
    {
        const WireServer server;
        const Outcome outcome = outcomeOf(GetParam(), server.url(), request);
        EXPECT_EQ(outcome.status, 204) << outcome.text;
        EXPECT_EQ(server.wire(), wire);
    }

    void expectTarget(const std::string& base, const std::string& path, const std::string& target)
    {
        const WireServer server;
        EXPECT_EQ(outcomeOf(GetParam(), server.url() + base, requestOf("GET", path)).status, 204);
        EXPECT_EQ(server.wire(), "GET " + target + " HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\n\r\n");
    }

    void expectRefused(const utility::string_t& name, const utility::string_t& value)
    {
        const WireServer server;
        auto request = requestOf("GET", "/a");
        request.headers().add(name, value);
        const Outcome outcome = outcomeOf(GetParam(), server.url(), request);
        EXPECT_EQ(outcome.text, "a header holds a line break");
        EXPECT_EQ(server.connectionCount(), 0U);
    }

    HostSetup host{"http://127.0.0.1"};
};

INSTANTIATE_TEST_SUITE_P(OnBothWays, EngineRequestFormTest, testing::Values(Way::here, Way::loop), testing::PrintToStringParamName());

TEST_P(EngineRequestFormTest, get)
{
    expectWire(requestOf("GET", "/a"), "GET /a HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\n\r\n");
}

TEST_P(EngineRequestFormTest, head)
{
    expectWire(requestOf("HEAD", "/a"), "HEAD /a HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\n\r\n");
}

TEST_P(EngineRequestFormTest, aDeleteWithoutABodyTellsNoLength)
{
    expectWire(requestOf("DELETE", "/a"), "DELETE /a HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\n\r\n");
}

TEST_P(EngineRequestFormTest, aGetAndADeleteMayHaveABody)
{
    expectWire(requestOf("GET", "/a", "{}"), "GET /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: application/json\r\n"
                                             "User-Agent: probe\r\nContent-Length: 2\r\n\r\n{}");
    expectWire(requestOf("DELETE", "/a", "[1]"), "DELETE /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: application/json\r\n"
                                                 "User-Agent: probe\r\nContent-Length: 3\r\n\r\n[1]");
}

TEST_P(EngineRequestFormTest, aPostAndAPutWithoutABodyTellThatItIsEmpty)
{
    expectWire(requestOf("POST", "/a"), "POST /a HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\nContent-Length: 0\r\n\r\n");
    expectWire(requestOf("PUT", "/a"), "PUT /a HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\nContent-Length: 0\r\n\r\n");
}

TEST_P(EngineRequestFormTest, aBodyOfNoBytesTellsThatItIsEmpty)
{
    expectWire(requestOf("POST", "/a", "", "text/plain"), "POST /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: text/plain\r\n"
                                                          "User-Agent: probe\r\nContent-Length: 0\r\n\r\n");
}

TEST_P(EngineRequestFormTest, aPostOfJson)
{
    auto request = requestOf("POST", "/projects");
    request.set_body(web::json::value::parse(native("{\"name\":\"x\"}")));
    expectWire(request, "POST /projects HTTP/1.1\r\nHost: HOST\r\nContent-Type: application/json\r\nUser-Agent: probe\r\n"
                        "Content-Length: 12\r\n\r\n{\"name\":\"x\"}");
}

TEST_P(EngineRequestFormTest, aPatch)
{
    expectWire(requestOf("PATCH", "/a", "{}"), "PATCH /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: application/json\r\n"
                                               "User-Agent: probe\r\nContent-Length: 2\r\n\r\n{}");
}

TEST_P(EngineRequestFormTest, aBodyWithoutALengthGoesInChunks)
{
    auto request = requestOf("POST", "/a");
    request.set_body(concurrency::streams::bytestream::open_istream(std::string("0123456789abcdef")), native("text/plain"));
    expectWire(request, "POST /a HTTP/1.1\r\nHost: HOST\r\nTransfer-Encoding: chunked\r\nContent-Type: text/plain\r\n"
                        "User-Agent: probe\r\n\r\n10\r\n0123456789abcdef\r\n0\r\n\r\n");
}

TEST_P(EngineRequestFormTest, aBodyThatIsStillBeingMadeIsWaitedFor)
{
    const WireServer server;
    concurrency::streams::producer_consumer_buffer<std::uint8_t> buffer;
    auto request = requestOf("PUT", "/a");
    request.set_body(buffer.create_istream(), 6, native("text/plain"));
    std::thread maker([buffer]() mutable {
        for (const char* piece : {"ab", "cd", "ef"}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            buffer.putn_nocopy(reinterpret_cast<const std::uint8_t*>(piece), 2).wait();
        }
        buffer.close(std::ios_base::out).wait();
    });
    EXPECT_EQ(outcomeOf(GetParam(), server.url(), request).status, 204);
    maker.join();
    EXPECT_EQ(server.wire(),
              "PUT /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: text/plain\r\nUser-Agent: probe\r\nContent-Length: 6\r\n\r\nabcdef");
}

TEST_P(EngineRequestFormTest, aBodyThatEndsBeforeItsLengthFailsInWords)
{
    const WireServer server;
    auto request = requestOf("PUT", "/a");
    request.set_body(concurrency::streams::bytestream::open_istream(std::string("abc")), 6, native("text/plain"));
    const Outcome outcome = outcomeOf(GetParam(), server.url(), request);
    EXPECT_EQ(outcome.text, "Unexpected end of request body stream encountered before Content-Length satisfied.");
    EXPECT_EQ(outcome.number, 0);
}

TEST_P(EngineRequestFormTest, ofABodyNoMoreThanItsLengthIsSent)
{
    auto request = requestOf("PUT", "/a");
    request.set_body(concurrency::streams::bytestream::open_istream(std::string("abcdefgh")), 6, native("text/plain"));
    expectWire(request,
               "PUT /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: text/plain\r\nUser-Agent: probe\r\nContent-Length: 6\r\n\r\nabcdef");
}

TEST_P(EngineRequestFormTest, anEmptyHeaderIsSentWithNothingBehindItsName)
{
    auto request = requestOf("PUT", "/a", "x", "");
    request.headers()[native("Content-Type")] = native("");
    request.headers().add(native("X-Empty"), native(""));
    expectWire(request, "PUT /a HTTP/1.1\r\nHost: HOST\r\nContent-Type:\r\nUser-Agent: probe\r\nX-Empty:\r\nContent-Length: 1\r\n\r\nx");
}

TEST_P(EngineRequestFormTest, headersThatAreGivenAreSentAsTheyAre)
{
    auto request = requestOf("GET", "/a");
    request.headers().add(native("Accept"), native("text/html, */*;q=0.1"));
    request.headers().add(native("Authorization"), native("Bearer abc.def"));
    request.headers().add(native("X-Text"), native("caf\xC3\xA9; a: b"));
    expectWire(request, "GET /a HTTP/1.1\r\nHost: HOST\r\nAccept: text/html, */*;q=0.1\r\nAuthorization: Bearer abc.def\r\n"
                        "User-Agent: probe\r\nX-Text: caf\xC3\xA9; a: b\r\n\r\n");
}

TEST_P(EngineRequestFormTest, aLargeBodyDoesNotAskBefore)
{
    const WireServer server;
    const std::string body(std::size_t{2} << 20, 'x');
    EXPECT_EQ(outcomeOf(GetParam(), server.url(), requestOf("POST", "/a", body, "text/plain")).status, 204);
    const std::string wire = server.wire();
    const std::string head =
        "POST /a HTTP/1.1\r\nHost: HOST\r\nContent-Type: text/plain\r\nUser-Agent: probe\r\nContent-Length: 2097152\r\n\r\n";
    EXPECT_EQ(wire.substr(0, head.size()), head);
    EXPECT_TRUE(wire.substr(head.size()) == body);
}

TEST_P(EngineRequestFormTest, theUserOfAnAddressIsNotSent)
{
    const WireServer server;
    EXPECT_EQ(outcomeOf(GetParam(), "http://user:word@" + server.place(), requestOf("GET", "/a")).status, 204);
    EXPECT_EQ(server.wire(), "GET /a HTTP/1.1\r\nHost: HOST\r\nUser-Agent: probe\r\n\r\n");
}

TEST_P(EngineRequestFormTest, theFragmentOfAnAddressIsNotSent)
{
    expectTarget("", "/a?b=c#part", "/a?b=c");
}

TEST_P(EngineRequestFormTest, aPathIsSentAsItIs)
{
    expectTarget("", "/a/../b//c", "/a/../b//c");
    expectTarget("", "/./a/.", "/./a/.");
    expectTarget("/base/", "/a", "/base/a");
    expectTarget("", "", "/");
    expectTarget("", "/?", "/");
}

TEST_P(EngineRequestFormTest, whatIsEncodedStaysAsItIs)
{
    expectTarget("", "/%E5%9B%BE%2fb%20c?q=%2F%2f+%26&empty=&=x", "/%E5%9B%BE%2fb%20c?q=%2F%2f+%26&empty=&=x");
    expectTarget("", "/a(b)!*'@:;,$", "/a(b)!*'@:;,$");
}

TEST_P(EngineRequestFormTest, aHeaderWithALineBreakIsRefusedAndNothingIsSent)
{
    expectRefused(native("X-A"), native("b\r\nX-Forged: 1"));
    expectRefused(native("X-A"), native("b\n"));
    expectRefused(native("X-A"), native("b\rc"));
    expectRefused(native("X-A\r\nX-Forged"), native("1"));
    expectRefused(native("X-A"), utility::string_t(native("b")) + utility::string_t(1, 0) + native("c"));
}

TEST_P(EngineRequestFormTest, anAnswerToAHeadWithABodyHasNoBody)
{
    const WireServer server("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n");
    const Outcome outcome = outcomeOf(GetParam(), server.url(), requestOf("HEAD", "/a", "{}"));
    EXPECT_EQ(outcome.status, 200);
    EXPECT_EQ(outcome.text, "");
}

} // namespace
} // namespace orlo::test
