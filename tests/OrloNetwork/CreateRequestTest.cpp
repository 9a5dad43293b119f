#include "RequestProbe.h"
#include "support/HostSetup.h"
#include "support/Patterns.h"
#include "support/RawServer.h"
#include "support/ScriptedServer.h"

#include <OrloAuth/UserSession.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace orlo::test {
namespace {

using OrloWebService::CreateClient;
using OrloWebService::CreateRequest;
using web::http::methods;
using web::json::value;

/// What of a request reaches the wire.
class CreateRequestTest : public testing::Test
{
protected:
    template <class Body>
    Request sent(const web::http::method& method, const Body& body)
    {
        server.always(method, "/thing").anyBody().reply(200, "{}");
        const auto client = CreateClient(server.wideUrl());
        OrloWebService::ExecuteRequest(*client, CreateRequest(method, web::uri("/thing"), body), error);
        return server.requests().back();
    }

    void useVersion(const std::wstring& version)
    {
        host.change([&](OrloConfig& config) { config.appVersion = version; });
    }

    ScriptedServer server;
    HostSetup host{server.url()};
    ErrorCode error;
};

TEST_F(CreateRequestTest, carriesTheUsersToken)
{
    EXPECT_EQ(sent(methods::GET, value::null()).header("Authorization"), "Bearer token-secret-1");
}

TEST_F(CreateRequestTest, nobodySignedInSendsNoAuthorization)
{
    UserSession::SignOut();
    EXPECT_FALSE(sent(methods::GET, value::null()).hasHeader("Authorization"));
}

TEST_F(CreateRequestTest, anEmptyTokenSendsNoAuthorization)
{
    UserSession::SignIn({L"user-1", L"account-1", L""});
    EXPECT_FALSE(sent(methods::GET, value::null()).hasHeader("Authorization"));
}

TEST_F(CreateRequestTest, refusesATokenThatWouldForgeAHeader)
{
    for (const wchar_t* token : {L"a\r\nX-Admin: 1", L"a\nb", L"名字", L"a\u007f"}) {
        UserSession::SignIn({L"user-1", L"account-1", token});
        EXPECT_THROW(CreateRequest(methods::GET, web::uri("/thing"), value::null()), std::invalid_argument);
    }
}

TEST_F(CreateRequestTest, namesTheLibraryAndTheHostsVersion)
{
    EXPECT_THAT(sent(methods::GET, value::null()).header("User-Agent"), FitsPattern("OrloProjectManager/[0-9]+\\.[0-9]+\\.[0-9]+"));
    useVersion(L"2024.1");
    EXPECT_THAT(sent(methods::GET, value::null()).header("User-Agent"),
                FitsPattern("OrloProjectManager/[0-9]+\\.[0-9]+\\.[0-9]+ host/2024\\.1"));
}

TEST_F(CreateRequestTest, aVersionThatFitsNoHeaderIsLeftOut)
{
    useVersion(L"1\r\nX-Admin: 1");
    EXPECT_THAT(sent(methods::GET, value::null()).header("User-Agent"), FitsPattern("OrloProjectManager/[0-9.]+"));
}

TEST_F(CreateRequestTest, aNullValueMeansNoBody)
{
    const Request request = sent(methods::POST, value::null());
    EXPECT_EQ(request.body, "");
    EXPECT_FALSE(request.hasHeader("Content-Type"));
}

TEST_F(CreateRequestTest, aJsonBodyGoesInTheOrderOfItsKeys)
{
    const value body = value::object({{"z", value::number(1)}, {"a", value::string("项目")}}, true);
    const Request request = sent(methods::PUT, body);
    EXPECT_EQ(request.body, "{\"z\":1,\"a\":\"项目\"}");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
}

TEST_F(CreateRequestTest, aTextBodyGoesAsUtf8)
{
    const Request request = sent(methods::POST, std::wstring(L"{\"name\":\"项目 😀\"}"));
    EXPECT_EQ(request.body, "{\"name\":\"项目 😀\"}");
    EXPECT_EQ(request.header("Content-Type"), "application/json; charset=utf-8");
}

TEST_F(CreateRequestTest, asksForNoCompression)
{
    EXPECT_FALSE(sent(methods::GET, value::null()).hasHeader("Accept-Encoding"));
}

TEST_F(CreateRequestTest, aRequestThroughAProxyNamesTheWholeAddress)
{
    RawServer proxy(RawAnswer::bytes(rawOk("{}")));
    host.change([&](OrloConfig& config) { config.proxy = proxy.wideUrl(); });
    EXPECT_EQ(get(L"http://platform.invalid:8080", error).status_code(), 200);
    ASSERT_EQ(proxy.requests().size(), 1U);
    EXPECT_EQ(proxy.requests()[0].line(), "GET http://platform.invalid:8080/thing");
    EXPECT_EQ(proxy.requests()[0].header("Host"), "platform.invalid:8080");
}

TEST_F(CreateRequestTest, anAddressThatIsNoneIsRefused)
{
    for (const wchar_t* address : {L"", L"platform.example", L"ftp://platform.example", L"http://", L"http://a b"})
        EXPECT_ANY_THROW(CreateClient(address)) << address;
}

TEST_F(CreateRequestTest, anAddressWithANulIsRefused)
{
    EXPECT_THROW(CreateClient(L"http://127.0.0.1:1/a" + std::wstring(1, L'\0') + L"/b"), std::invalid_argument);
}

TEST_F(CreateRequestTest, theCurrentUserIsWhoIsSignedIn)
{
    ASSERT_NE(OrloWebService::GetCurrentUserInfo(), nullptr);
    EXPECT_EQ(OrloWebService::GetCurrentUserInfo()->getAccountId(), L"account-1");
    UserSession::SignOut();
    EXPECT_EQ(OrloWebService::GetCurrentUserInfo(), nullptr);
}

TEST_F(CreateRequestTest, theHostsVersionIsAskedForAtEachUse)
{
    EXPECT_EQ(OrloWebServiceUtils::GetAppVersion(), L"");
    useVersion(L"2024.1");
    EXPECT_EQ(OrloWebServiceUtils::GetAppVersion(), L"2024.1");
}

} // namespace
} // namespace orlo::test
