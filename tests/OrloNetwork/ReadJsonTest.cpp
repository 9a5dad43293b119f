#include "RequestProbe.h"
#include "support/HostSetup.h"
#include "support/RawServer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orlo::test {
namespace {

using OrloWebService::ExtractSuccData;
using OrloWebService::IsMarkedSuccess;
using OrloWebService::ReadJson;
using web::json::json_exception;
using web::json::value;

value jsonOf(const std::string& body, const std::string& contentType = "application/json")
{
    return ReadJson(answerOf(200, body, contentType));
}

TEST(ReadJsonTest, readsTheBody)
{
    const value json = jsonOf("{\"name\":\"项目 😀\",\"big\":18446744073709551615}");
    EXPECT_EQ(json.at("name").as_string(), "项目 😀");
    EXPECT_EQ(json.at("big").as_number().to_uint64(), 18446744073709551615U);
}

TEST(ReadJsonTest, anEmptyBodyIsNull)
{
    EXPECT_TRUE(jsonOf("").is_null());
    EXPECT_TRUE(jsonOf("", "text/html").is_null());
    EXPECT_TRUE(jsonOf("null").is_null());
}

TEST(TextOf, readsAnAnswerWhateverItsType)
{
    const auto textOf = [](const std::string& body, const std::string& contentType) {
        return OrloWebService::TextOf(answerOf(200, body, contentType), body);
    };
    EXPECT_EQ(textOf("中文 <b>", "text/plain"), L"中文 <b>");
    EXPECT_EQ(textOf("\xFF", "application/octet-stream"), L"\xFFFD");
    EXPECT_EQ(textOf("", "application/json"), L"");
}

TEST(ReadJsonTest, takesTheNamesOfJsonWhateverTheirCase)
{
    for (const char* type : {"application/json", "application/json; charset=utf-8", "Application/JSON;charset=UTF-8",
                             "application/json ;q=1", "text/json", "application/x-json", "application/javascript", "text/javascript"})
        EXPECT_TRUE(jsonOf("[1]", type).is_array()) << type;
}

TEST(ReadJsonTest, refusesAnotherContentType)
{
    for (const char* type : {"text/plain", "text/html; charset=utf-8", "application/octet-stream", "application/problem+json",
                             "application/jsonp", "multipart/form-data; x=application/json"})
        EXPECT_THROW(jsonOf("[1]", type), web::http::http_exception) << type;
}

TEST(ReadJsonTest, anAnswerThatNamesNoContentTypeIsTakenForJson)
{
    const HostSetup host("http://127.0.0.1");
    ErrorCode error;
    for (const char* header : {"", "Content-Type:\r\n", "Content-Type: \r\n"}) {
        const RawServer server(RawAnswer::bytes(std::string("HTTP/1.1 200 OK\r\n") + header + "Content-Length: 3\r\n\r\n[1]"));
        EXPECT_TRUE(ReadJson(get(server.wideUrl(), error)).is_array()) << header;
    }
}

TEST(ReadJsonTest, refusesWhatIsNoJson)
{
    for (const char* body : {"{", "[1,]", "{\"a\":1}x", "  ", "\xEF\xBB\xBF{}", "NaN", "'a'", "Bad Gateway", "{\"a\" 1}"})
        EXPECT_THROW(jsonOf(body), json_exception) << body;
}

TEST(ReadJsonTest, refusesBytesThatAreNoUtf8)
{
    for (const char* body : {"[\"\xC3\x28\"]", "[\"\xFF\"]", "[\"\xED\xA0\x80\"]", "[\"\xC0\xAF\"]", "\xFF"})
        EXPECT_THROW(jsonOf(body), json_exception);
}

/// The text in UTF-16, as an answer's bytes.
std::string utf16(const std::u16string& text, bool highByteFirst)
{
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += highByteFirst ? high : low;
        bytes += highByteFirst ? low : high;
    }
    return bytes;
}

TEST(ReadJsonTest, readsLatin1WhereTheCharsetNamesIt)
{
    for (const char* charset : {"iso-8859-1", "ISO-8859-1", "\"iso-8859-1\"", " iso-8859-1 ;", "latin1"}) {
        const value json = jsonOf("[\"caf\xE9 \xC3\xA9\"]", std::string("application/json; charset=") + charset);
        EXPECT_EQ(json.at(0).as_string(), "café Ã©") << charset;
    }
}

TEST(ReadJsonTest, readsUtf16ByItsMarkOrHighByteFirst)
{
    const std::u16string text = u"[\"é图😀\"]";
    const std::string type = "application/json; charset=utf-16";
    EXPECT_EQ(jsonOf(utf16(text, true), type).at(0).as_string(), "é图😀");
    EXPECT_EQ(jsonOf(utf16(u"\xFEFF" + text, true), type).at(0).as_string(), "é图😀");
    EXPECT_EQ(jsonOf(utf16(u"\xFEFF" + text, false), type).at(0).as_string(), "é图😀");
    EXPECT_THROW(jsonOf(utf16(text, false), type), json_exception);
}

TEST(ReadJsonTest, readsUtf16OfANamedOrderWithoutAMark)
{
    const std::u16string text = u"[\"é图😀\"]";
    EXPECT_EQ(jsonOf(utf16(text, true), "application/json;charset=UTF-16BE").at(0).as_string(), "é图😀");
    EXPECT_EQ(jsonOf(utf16(text, false), "application/json;charset=utf-16le").at(0).as_string(), "é图😀");
    EXPECT_THROW(jsonOf(utf16(u"\xFEFF" + text, false), "application/json;charset=utf-16le"), json_exception);
    EXPECT_THROW(jsonOf(utf16(text, false), "application/json;charset=utf-16be"), json_exception);
}

TEST(ReadJsonTest, refusesWhatIsNoUtf16)
{
    const std::string type = "application/json; charset=utf-16be";
    EXPECT_THROW(jsonOf(utf16({u'[', u'"', 0xD83D, u'"', u']'}, true), type), json_exception);
    EXPECT_THROW(jsonOf(utf16({u'[', u'"', 0xDE00, u'"', u']'}, true), type), json_exception);
    EXPECT_THROW(jsonOf(utf16({u'[', u'"', 0xD83D}, true), type), json_exception);
    EXPECT_THROW(jsonOf(utf16(u"[1]", true) + " ", type), json_exception) << "half a unit";
    EXPECT_THROW(jsonOf("[", type), json_exception);
}

TEST(ReadJsonTest, readsUtf8UnderItsOtherNames)
{
    for (const char* parameters : {"; charset=us-ascii", "; charset=ascii", "; charset=utf8", "; charset=utf-8; q=1",
                                   "; q=1; charset=utf-8", "; charset=", "; charset", ";", "; xcharset=utf-16"})
        EXPECT_EQ(jsonOf("[\"é\"]", std::string("application/json") + parameters).at(0).as_string(), "é") << parameters;
    EXPECT_THROW(jsonOf("[\"\xE9\"]", "application/json; charset=us-ascii"), json_exception);
}

TEST(ReadJsonTest, refusesACharsetThatItDoesNotKnow)
{
    for (const char* charset : {"windows-1252", "utf-7", "utf-32", "gb18030", "'utf-8'", "\"utf-8", "x"})
        EXPECT_THROW(jsonOf("[1]", std::string("application/json; charset=") + charset), web::http::http_exception) << charset;
    EXPECT_TRUE(jsonOf("", "application/json; charset=x").is_null());
}

TEST(ReadJsonTest, refusesABodyThatIsNestedWithoutEnd)
{
    EXPECT_THROW(jsonOf(std::string(100000, '[') + std::string(100000, ']')), json_exception);
    std::string objects;
    for (int i = 0; i < 100000; ++i)
        objects += "{\"a\":";
    EXPECT_THROW(jsonOf(objects), json_exception);
}

TEST(IsMarkedSuccessTest, isTheIntegerCode10000AndNothingElse)
{
    EXPECT_TRUE(IsMarkedSuccess(value::parse("{\"code\":10000}")));
    for (const char* json : {"{\"code\":10001}", "{\"code\":\"10000\"}", "{\"code\":10000.0}", "{\"code\":true}", "{\"code\":null}", "{}",
                             "[10000]", "10000", "null", "{\"Code\":10000}", "{\"code\":42949682960000}", "{\"code\":-10000}"})
        EXPECT_FALSE(IsMarkedSuccess(value::parse(json))) << json;
}

TEST(ExtractSuccDataTest, givesTheMemberData)
{
    value data;
    EXPECT_TRUE(ExtractSuccData(answerOf(200, "{\"code\":10000,\"data\":{\"id\":\"a\"},\"message\":\"ok\"}"), data));
    EXPECT_EQ(data.serialize(), "{\"id\":\"a\"}");
}

TEST(ExtractSuccDataTest, withoutDataTheValueIsNull)
{
    value data = value::number(1);
    EXPECT_TRUE(ExtractSuccData(answerOf(200, "{\"code\":10000}"), data));
    EXPECT_TRUE(data.is_null());
}

TEST(ExtractSuccDataTest, anotherCodeOrStatusFailsAndLeavesTheValueAlone)
{
    value data = value::number(1);
    EXPECT_FALSE(ExtractSuccData(answerOf(200, "{\"code\":\"10000\",\"data\":2}"), data));
    EXPECT_FALSE(ExtractSuccData(answerOf(200, "{\"code\":20000,\"data\":2}"), data));
    EXPECT_FALSE(ExtractSuccData(answerOf(200, "{\"data\":2}"), data));
    EXPECT_FALSE(ExtractSuccData(answerOf(200, "[]"), data));
    EXPECT_FALSE(ExtractSuccData(answerOf(200, ""), data));
    for (const unsigned short status : std::vector<unsigned short>{201, 204, 400, 500})
        EXPECT_FALSE(ExtractSuccData(answerOf(status, "{\"code\":10000,\"data\":2}"), data)) << status;
    EXPECT_EQ(data.as_integer(), 1);
}

TEST(ExtractSuccDataTest, aBodyThatIsNoJsonThrows)
{
    value data;
    EXPECT_THROW(ExtractSuccData(answerOf(200, "<html>"), data), json_exception);
    EXPECT_THROW(ExtractSuccData(answerOf(200, "<html>", "text/html"), data), web::http::http_exception);
}

TEST(GenericResponseTest, readsTheEnvelope)
{
    http::ORLOHTTPGenericResponse response;
    EXPECT_TRUE(
        OrloPayloadProcessor::ParseORLOHTTPGenericResponse(value::parse("{\"code\":10000,\"data\":[1,2],\"message\":\"成功\"}"), response));
    EXPECT_EQ(response.code, 10000);
    EXPECT_EQ(response.data.serialize(), "[1,2]");
    EXPECT_EQ(response.message, L"成功");
}

TEST(GenericResponseTest, dataAndMessageMayBeMissing)
{
    http::ORLOHTTPGenericResponse response;
    EXPECT_TRUE(OrloPayloadProcessor::ParseORLOHTTPGenericResponse(value::parse("{\"code\":1,\"message\":7}"), response));
    EXPECT_EQ(response.code, 1);
    EXPECT_TRUE(response.data.is_null());
    EXPECT_EQ(response.message, L"");
}

TEST(GenericResponseTest, withoutAnIntegerCodeItIsNoEnvelope)
{
    for (const char* json : {"{}", "{\"code\":\"1\"}", "{\"code\":1.5}", "{\"code\":4294967296}", "[]", "null", "1", "\"code\""}) {
        http::ORLOHTTPGenericResponse response;
        response.code = -1;
        EXPECT_FALSE(OrloPayloadProcessor::ParseORLOHTTPGenericResponse(value::parse(json), response)) << json;
        EXPECT_EQ(response.code, -1) << json;
    }
}

} // namespace
} // namespace orlo::test
