#include "WebFunctionRegistry.h"
#include "support/RawServer.h"
#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>

namespace orlo::test {
namespace {

/// What all web functions must do alike, each against a platform that answers everything in one way.
class WebFunctionMatrixTest : public testing::TestWithParam<WebFunction>
{
protected:
    LogCapture log;
    ErrorCode error;

    static std::string rawStatus(int status, const std::string& body)
    {
        Reply reply;
        reply.status = status;
        reply.body = body;
        return reply.wire("POST");
    }

    void platformAnswers(const RawAnswer& answer)
    {
        m_host.reset();
        m_server = std::make_unique<RawServer>(answer);
        m_host = std::make_unique<HostSetup>(m_server->url());
        log.clear();
        error.Clear();
    }

    /// The addresses of the other services lead nowhere.
    void leaveOnlyService(const std::wstring& key) const
    {
        m_host->change([&](OrloConfig& config) {
            for (auto& [service, url] : config.serviceUrls) {
                if (service != key)
                    url = utils::toWstring(std::string(closedAddress));
            }
        });
    }

    bool call() { return GetParam().call(error); }
    std::size_t requests() const { return m_server->requests().size(); }

    static bool framed() { return GetParam().way == Way::framed; }

    /// message: what the ErrorCode holds after the call.
    static Lines failureLines(int status, const std::wstring& message)
    {
        if (GetParam().failureLine.empty())
            return {};
        std::wstring line = GetParam().failureLine + std::to_wstring(status);
        if (GetParam().way == Way::tellsReason)
            return {line, L"E [ORLOSDK][CreateDatasetPermissionByString] : Failed extract message to json"};
        if (GetParam().way == Way::tellsMessage)
            line += L" message: " + message;
        if (GetParam().way == Way::tellsWords)
            line += L"error message is: " + message;
        return {line};
    }

    /// The call throws a standard exception, or fails where the function has a frame of its own.
    void expectException(const std::string& about)
    {
        try {
            const bool succeeded = call();
            EXPECT_TRUE(framed()) << "no exception for " << about;
            EXPECT_FALSE(succeeded) << about;
        }
        catch (const std::exception&) {
            EXPECT_FALSE(framed()) << about;
        }
        catch (...) {
            ADD_FAILURE() << "something else than a standard exception for " << about;
        }
    }

    /// The call throws a failure of the transport which deserves another attempt.
    void expectTransportFailure()
    {
        try {
            EXPECT_FALSE(call());
            EXPECT_TRUE(framed()) << "no exception";
        }
        catch (const web::http::http_exception& e) {
            EXPECT_FALSE(framed());
            const HttpError failure(L"generic exception", L"", e.error_code().value(), 0);
            EXPECT_TRUE(http::CalculateIsNeedRetryRequest(&failure, error)) << e.what() << ' ' << e.error_code().value();
        }
        if (!framed()) {
            EXPECT_EQ(log.lines(), Lines{});
        }
    }

    void expectErrorStatus(int status)
    {
        platformAnswers(RawAnswer::bytes(rawStatus(status, "what the platform says")));
        EXPECT_FALSE(call());
        EXPECT_EQ(requests(), 1u);
        EXPECT_EQ(log.lines(), failureLines(status, L"what the platform says"));
        expectHttpError(error, errorStatusValue, L"HttpError", L"what the platform says", status);
    }

    void expectOtherStatus(int status, const std::string& body)
    {
        platformAnswers(RawAnswer::bytes(rawStatus(status, body)));
        EXPECT_FALSE(call()) << status;
        EXPECT_EQ(requests(), 1u);
        EXPECT_EQ(log.lines(), failureLines(status, L""));
        expectClear(error);
    }

    void expectUnreadable(const std::string& body, const std::string& about)
    {
        platformAnswers(RawAnswer::bytes(rawOk(body)));
        if (GetParam().body == Body::unread || GetParam().body == Body::told) {
            EXPECT_EQ(call(), GetParam().body == Body::unread) << about;
            expectClear(error);
        }
        else {
            expectException(about);
        }
        EXPECT_EQ(requests(), 1u);
    }

private:
    std::unique_ptr<RawServer> m_server;
    std::unique_ptr<HostSetup> m_host;
};

TEST_P(WebFunctionMatrixTest, anErrorStatusFailsWithTheBodyInTheErrorCodeAndIsNotRepeated)
{
    for (const int status : {400, 401, 403, 404, 500, 503})
        expectErrorStatus(status);
}

TEST_P(WebFunctionMatrixTest, anotherStatusThanTwoHundredFailsWithAClearErrorCode)
{
    expectOtherStatus(201, R"({"code":10000,"data":{"id":"x","projectId":"x"}})");
    expectOtherStatus(204, "");
    expectOtherStatus(302, "");
}

TEST_P(WebFunctionMatrixTest, goesToItsOwnService)
{
    platformAnswers(RawAnswer::bytes(rawStatus(404, "none")));
    leaveOnlyService(GetParam().service);
    EXPECT_NO_THROW(EXPECT_FALSE(call()));
    EXPECT_EQ(requests(), 1u);
    expectHttpError(error, errorStatusValue, L"HttpError", L"none", 404);
}

TEST_P(WebFunctionMatrixTest, aRefusedConnectionIsATransportFailure)
{
    const HostSetup host(closedAddress);
    expectTransportFailure();
}

TEST_P(WebFunctionMatrixTest, aResetBeforeTheHeadersIsATransportFailure)
{
    platformAnswers(RawAnswer::resetBeforeAnswer());
    expectTransportFailure();
    EXPECT_EQ(requests(), 1u);
}

TEST_P(WebFunctionMatrixTest, aBodyCutShortIsATransportFailure)
{
    const std::string answer = rawOk(R"({"code":10000,"data":{}}        )");
    platformAnswers(RawAnswer::closeAfter(answer, answer.size() - 4));
    expectTransportFailure();
}

TEST_P(WebFunctionMatrixTest, aServiceWithoutAnAddressIsAnException)
{
    OrloConfigManager::Configure({});
    expectException("no address");
}

TEST_P(WebFunctionMatrixTest, aBodyThatIsNoJsonIsAnExceptionWhereItIsRead)
{
    expectUnreadable("<html>", "a page");
    expectUnreadable("{\"code\":10000,\"data\":", "half an object");
}

TEST_P(WebFunctionMatrixTest, aBodyThatIsNoUtf8IsAnExceptionWhereItIsRead)
{
    expectUnreadable("{\"code\":10000,\"data\":\"\xC3\x28\"}", "a broken sequence");
    expectUnreadable("[\"\xFF\"]", "a byte that is never UTF-8");
}

TEST_P(WebFunctionMatrixTest, nestingWithoutEndIsAnExceptionWhereItIsRead)
{
    expectUnreadable(std::string(100000, '['), "arrays");
    expectUnreadable("{\"code\":10000,\"data\":" + std::string(100000, '[') + std::string(100000, ']') + "}", "data");
}

TEST_P(WebFunctionMatrixTest, jsonOfAnotherShapeIsNeverMoreThanAFailure)
{
    for (const char* body : {"",
                             "null",
                             "true",
                             "7",
                             "-1.5e300",
                             "\"text\"",
                             "[]",
                             "{}",
                             "[null]",
                             "[7]",
                             "[[]]",
                             "[{}]",
                             R"(["text"])",
                             R"({"code":10000})",
                             R"({"code":"10000","data":{}})",
                             R"({"code":1e999})",
                             R"({"code":10000,"data":null})",
                             R"({"code":10000,"data":7})",
                             R"({"code":10000,"data":"text"})",
                             R"({"code":10000,"data":true})",
                             R"({"code":10000,"data":[]})",
                             R"({"code":10000,"data":[null]})",
                             R"({"code":10000,"data":[7]})",
                             R"({"code":10000,"data":[[]]})",
                             R"({"code":10000,"data":[{"projectId":7,"id":[]}]})",
                             R"({"code":10000,"data":{}})",
                             R"({"code":10000,"data":{"id":7,"name":[],"size":{},"data":[]}})",
                             R"({"code":0,"data":{}})",
                             R"({"projectId":7})",
                             R"([{"id":{},"name":null,"size":1e999,"standardProperties":7}])"}) {
        platformAnswers(RawAnswer::bytes(rawOk(body)));
        if (GetParam().body == Body::strict) {
            try {
                call();
            }
            catch (const std::exception&) { // what the function needs is missing
            }
        }
        else {
            EXPECT_NO_THROW(call()) << body;
        }
        if (!framed() && GetParam().body != Body::strict && GetParam().body != Body::refused) {
            // An answer whose content can't be used may be told as such, but it is no failure of the transport.
            EXPECT_EQ(std::dynamic_pointer_cast<HttpError>(error.GetCategory()), nullptr) << body;
        }
        EXPECT_EQ(requests(), 1u);
    }
}

std::string nameOf(const testing::TestParamInfo<WebFunction>& info)
{
    const auto& rows = webFunctions();
    const auto end = rows.begin() + static_cast<std::ptrdiff_t>(info.index);
    const auto before = std::count_if(rows.begin(), end, [&](const WebFunction& row) { return row.name == info.param.name; });
    return before == 0 ? info.param.name : info.param.name + std::to_string(before + 1);
}

INSTANTIATE_TEST_SUITE_P(All, WebFunctionMatrixTest, testing::ValuesIn(webFunctions()), nameOf);

/// The words and signs of a header, without comments.
std::vector<std::string> tokensOf(const std::filesystem::path& header)
{
    const auto belongsToWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    std::vector<std::string> tokens;
    std::istringstream text(readFile(header));
    for (std::string line; std::getline(text, line);) {
        line.erase(std::min(line.find("//"), line.size()));
        bool inWord = false;
        for (const char c : line) {
            if (inWord && belongsToWord(c))
                tokens.back() += c;
            else if (!std::isspace(static_cast<unsigned char>(c)))
                tokens.emplace_back(1, c);
            inWord = belongsToWord(c);
        }
    }
    return tokens;
}

/// The web functions that the header declares in the namespace OrloWebService: all take the ErrorCode first. The asynchronous
/// ones, which give their answer to a handler, have tests of their own.
std::vector<std::string> declaredIn(const std::filesystem::path& header)
{
    const std::vector<std::string> tokens = tokensOf(header);
    const auto stand = [&](std::size_t at, const std::vector<std::string>& wanted) {
        return at + wanted.size() <= tokens.size() &&
               std::equal(wanted.begin(), wanted.end(), tokens.begin() + static_cast<std::ptrdiff_t>(at));
    };
    std::vector<std::string> names;
    int depth = 0; // of braces since the namespace was opened; 0 outside
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (depth == 0)
            depth = at > 0 && tokens[at] == "{" && tokens[at - 1] == "OrloWebService" ? 1 : 0;
        else if (tokens[at] == "{" || tokens[at] == "}")
            depth += tokens[at] == "{" ? 1 : -1;
        else if (stand(at + 1, {"(", "ErrorCode", "&"}) && tokens[at].find("Async") == std::string::npos)
            names.push_back(tokens[at]);
    }
    return names;
}

std::vector<std::string> declaredBelow(const std::filesystem::path& folder)
{
    std::vector<std::string> declared;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        // What talks to signed addresses is no operation of a service.
        if (entry.path().extension() != ".h" || entry.path().filename() == "StreamWeb.h")
            continue;
        const auto names = declaredIn(entry.path());
        declared.insert(declared.end(), names.begin(), names.end());
    }
    return declared;
}

/// The names of the first list that the second one lacks; both are sorted.
std::vector<std::string> without(const std::vector<std::string>& all, const std::vector<std::string>& taken)
{
    std::vector<std::string> left;
    std::set_difference(all.begin(), all.end(), taken.begin(), taken.end(), std::back_inserter(left));
    return left;
}

TEST(WebFunctionRegistry, namesEveryWebFunctionThatTheHeadersDeclare)
{
    std::vector<std::string> declared = declaredBelow(ORLO_WEB_FUNCTION_HEADERS);
    const std::vector<std::string> ofTheFace = declaredBelow(ORLO_FACE_HEADERS);
    declared.insert(declared.end(), ofTheFace.begin(), ofTheFace.end());
    std::vector<std::string> registered;
    for (const WebFunction& row : webFunctions())
        registered.push_back(row.name);
    std::sort(declared.begin(), declared.end());
    std::sort(registered.begin(), registered.end());
    EXPECT_EQ(without(declared, registered), std::vector<std::string>{}) << "these have no row in the registry";
    EXPECT_EQ(without(registered, declared), std::vector<std::string>{}) << "these are declared no more";
    EXPECT_GE(declared.size(), 14u);
}

} // namespace
} // namespace orlo::test
