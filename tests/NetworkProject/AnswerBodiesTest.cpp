#include "support/RawServer.h"
#include "support/WireTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr std::size_t mebibyte = 1u << 20;

class AnswerBodiesTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();

    ICollaborationProjectManager::Projects listed(const std::string& body, const std::string& contentType = "application/json")
    {
        server.expect("GET", "/projects?scenario=DEFAULT").reply(200, body, contentType);
        return manager.GetAllProjects(error);
    }

    /// The answer is an exception with the code 5555 that was not retried.
    void expectUnreadable(const std::string& body, const std::string& contentType = "application/json", int code = 5555)
    {
        error.Clear();
        const std::size_t before = server.requestCount();
        EXPECT_TRUE(listed(body, contentType).empty());
        EXPECT_EQ(server.requestCount(), before + 1);
        EXPECT_EQ(error.GetValue(), 3892314114) << body.substr(0, 80);
        const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
        ASSERT_NE(failure, nullptr) << body.substr(0, 80);
        EXPECT_EQ(failure->GetName(), L"generic exception");
        EXPECT_EQ(failure->GetCode(), code) << body.substr(0, 80);
        EXPECT_FALSE(failure->GetErrorMessage().empty());
    }
};

TEST_F(AnswerBodiesTest, aBodyThatIsNoJsonIsAnException)
{
    for (const char* body :
         {"<html><body>Bad gateway</body></html>", "{", "[1,", "{\"a\"}", "[1] [2]", "[1]x", "'a'", "tru", " ", "\n", "nul"})
        expectUnreadable(body);
}

TEST_F(AnswerBodiesTest, numbersThatJsonDoesNotKnowAreAnException)
{
    for (const char* body :
         {"[{\"size\":NaN}]", "[{\"size\":Infinity}]", "[{\"size\":-}]", "[{\"size\":+1}]", "[{\"size\":0x10}]", "[{\"size\":1.}]"})
        expectUnreadable(body);
}

TEST_F(AnswerBodiesTest, numbersBeyondEveryTypeDoNoHarm)
{
    const auto projects =
        listed(R"([{"id":"a","size":1e999},{"id":"b","size":18446744073709551615},{"id":"c","size":-1e400},)"
               R"({"id":"d","size":123456789012345678901234567890},{"id":"e","size":1.5},{"id":"f","size":9007199254740993}])");
    expectClear(error);
    ASSERT_EQ(projects.size(), 6u);
    EXPECT_EQ(projects[0]->GetSize(), 0);
    EXPECT_EQ(projects[2]->GetSize(), 0);
    EXPECT_EQ(projects[3]->GetSize(), 0);
    EXPECT_EQ(projects[4]->GetSize(), 0);
    EXPECT_EQ(projects[5]->GetSize(), 9007199254740993);
}

TEST_F(AnswerBodiesTest, aNumberOrAnObjectWhereATextBelongsKeepsTheDefault)
{
    const auto projects = listed(R"([{"id":7,"name":{"a":1},"status":1,"gridType":[],"size":"1"}])");
    ASSERT_EQ(projects.size(), 1u);
    EXPECT_EQ(projects[0]->GetId(), L"");
    EXPECT_EQ(projects[0]->GetName(), L"");
    EXPECT_EQ(static_cast<int>(projects[0]->GetStatus()), -1);
    EXPECT_EQ(projects[0]->GetSize(), 0);
}

TEST_F(AnswerBodiesTest, anEmptyBodyIsNull)
{
    EXPECT_TRUE(listed("").empty());
    EXPECT_TRUE(listed("", "").empty());
    EXPECT_TRUE(listed("", "text/html").empty());
    expectQuiet();
}

TEST_F(AnswerBodiesTest, nestingWithoutEndIsAnException)
{
    for (const std::size_t depth : {std::size_t{1000}, std::size_t{100000}}) {
        expectUnreadable(std::string(depth, '['));
        expectUnreadable(std::string(depth, '[') + std::string(depth, ']'));
        std::string objects;
        for (std::size_t i = 0; i < depth; ++i)
            objects += "{\"a\":";
        expectUnreadable(objects);
    }
}

TEST_F(AnswerBodiesTest, moderateNestingInAnUnknownKeyIsRead)
{
    const auto projects = listed("[{\"id\":\"p\",\"deep\":" + std::string(100, '[') + std::string(100, ']') + "}]");
    ASSERT_EQ(projects.size(), 1u);
    EXPECT_EQ(projects[0]->GetId(), L"p");
}

TEST_F(AnswerBodiesTest, aBodyOf64MebibytesIsReadWhole)
{
    std::string body = R"([{"id":"first","padding":")";
    body.append(64 * mebibyte, 'x');
    body += R"("},{"id":"last"}])";
    const auto projects = listed(body);
    expectClear(error);
    ASSERT_EQ(projects.size(), 2u);
    EXPECT_EQ(projects[0]->GetId(), L"first");
    EXPECT_EQ(projects[1]->GetId(), L"last");
}

TEST_F(AnswerBodiesTest, bytesThatAreNoUtf8AreAnException)
{
    for (const char* bytes : {"\xC3\x28", "\xFF", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE4\xB8"})
        expectUnreadable(std::string("[{\"name\":\"") + bytes + "\"}]");
}

TEST_F(AnswerBodiesTest, aByteOrderMarkIsNoJson)
{
    expectUnreadable("\xEF\xBB\xBF[]");
}

TEST_F(AnswerBodiesTest, aTypeThatIsNotJsonsIsAnExceptionOfTheTransportAndNotRetried)
{
    for (const char* type : {"text/html", "text/plain", "application/octet-stream", "application/problem+json", "garbage"})
        expectUnreadable("[]", type, 0);
}

TEST_F(AnswerBodiesTest, aMissingTypeIsTakenForJson)
{
    const auto projects = listed(R"([{"id":"p-1"}])", "");
    expectClear(error);
    ASSERT_EQ(projects.size(), 1u);
    expectUnreadable("<html>", "");
}

TEST_F(AnswerBodiesTest, theParametersAndTheCaseOfATypeDoNotMatter)
{
    for (const char* type : {"application/json; charset=utf-8", "Application/JSON", "application/json;charset=UTF-8", "text/json"})
        EXPECT_EQ(listed(R"([{"id":"p-1"}])", type).size(), 1u) << type;
    expectClear(error);
}

TEST_F(AnswerBodiesTest, textsBeyondTheBasicPlaneSurvive)
{
    const auto projects = listed("[{\"name\":\"\xF0\x9F\x98\x80\\ud83d\\ude00\\u0000.\"}]");
    ASSERT_EQ(projects.size(), 1u);
    EXPECT_EQ(projects[0]->GetName(), L"\U0001F600\U0001F600" + std::wstring(1, L'\0') + L".");
}

TEST_F(AnswerBodiesTest, ofAnErrorBodyOfManyMebibytesTheFirstIsKeptAsTheMessage)
{
    server.expect("GET", "/v2/projects/p-1").reply(404, std::string(8 * mebibyte, 'e'), "text/plain");
    EXPECT_EQ(ICollaborationProject::Load(L"p-1", error), nullptr);
    EXPECT_EQ(error.GetErrorMessage(), std::wstring(mebibyte, L'e'));
}

class BrokenAnswersTest : public testing::Test
{
protected:
    LogCapture log;
    ErrorCode error;
    RetryLimit retries{1};

    /// Lists the projects of a platform that answers every attempt in this way.
    void listAgainst(const RawAnswer& answer, int code)
    {
        RawServer server(answer);
        const HostSetup host(server.url());
        EXPECT_TRUE(ICollaborationProjectManager::Get()->GetAllProjects(error).empty());
        EXPECT_EQ(server.connectionCount(), code == 0 ? 1u : 2u);
        EXPECT_EQ(error.GetValue(), 3892314114);
        const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
        ASSERT_NE(failure, nullptr);
        EXPECT_EQ(failure->GetName(), L"generic exception");
        EXPECT_EQ(failure->GetCode(), code);
    }
};

TEST_F(BrokenAnswersTest, aResetBeforeTheHeadersIsRetried)
{
    listAgainst(RawAnswer::resetBeforeAnswer(), resetCode);
}

TEST_F(BrokenAnswersTest, aResetInTheMiddleOfTheBodyIsRetried)
{
    const std::string answer = rawOk(R"([{"id":"p-1"},{"id":"p-2"}])");
    listAgainst(RawAnswer::resetAfter(answer, answer.size() - 5), resetCode);
}

TEST_F(BrokenAnswersTest, aBodyCutShortIsRetriedAndNeverTakenForWhole)
{
    const std::string answer = rawOk("[]          ");
    listAgainst(RawAnswer::closeAfter(answer, answer.size() - 5), 2);
}

TEST_F(BrokenAnswersTest, anAnswerThatIsNoHttpIsNotRetried)
{
    listAgainst(RawAnswer::bytes("SSH-2.0-Server\r\n\r\n"), 0);
}

TEST_F(BrokenAnswersTest, anAnswerInSingleBytesIsReadWhole)
{
    RawServer server(RawAnswer::bytes(rawOk(R"([{"id":"p-1"}])")).fragments(1));
    const HostSetup host(server.url());
    EXPECT_EQ(ICollaborationProjectManager::Get()->GetAllProjects(error).size(), 1u);
    expectClear(error);
}

TEST_F(BrokenAnswersTest, aChunkedAnswerIsReadWhole)
{
    RawServer server(RawAnswer::bytes("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
                                      "5\r\n[{\"id\r\n9\r\n\":\"p-1\"}]\r\n0\r\n\r\n"));
    const HostSetup host(server.url());
    EXPECT_EQ(ICollaborationProjectManager::Get()->GetAllProjects(error).size(), 1u);
    expectClear(error);
}

TEST_F(BrokenAnswersTest, aPlatformThatIsNotThereIsRetriedToTheLimit)
{
    const HostSetup host(closedAddress);
    EXPECT_TRUE(ICollaborationProjectManager::Get()->GetAllProjects(error).empty());
    EXPECT_EQ(error.GetValue(), 3892314114);
    EXPECT_EQ(error.GetErrorMessage(), L"Failed to connect to any resolved endpoint (127.0.0.1:1: Connection refused)");
    const std::wstring caught = L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic "
                                L"exception caught: message[Failed to connect to any resolved endpoint (127.0.0.1:1: Connection refused)]";
    EXPECT_EQ(log.lines(), (Lines{caught, L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[1]", caught,
                                  L"E [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded"}));
}

} // namespace
} // namespace orlo::test
