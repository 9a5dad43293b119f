#include "RequestProbe.h"
#include "TlsServer.h"
#include "support/HostSetup.h"
#include "support/HttpExchange.h"
#include "support/LogCapture.h"
#include "support/Sockets.h"
#include "support/TempFolder.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// Lets through who shows the login, and plays the platform behind it: "{}" is the answer to everything. A tunnel has its TLS end here.
class LoginProxy
{
public:
    /// login: what the header Proxy-Authorization must be; empty for a proxy that lets nobody through.
    LoginProxy(const Identity& platform, std::string login)
        : m_platform(platform), m_login(std::move(login)), m_server([this](Connection& connection) { serve(connection); })
    {}

    /// "127.0.0.1:<port>"
    std::wstring place() const { return L"127.0.0.1:" + std::to_wstring(m_server.port()); }
    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    void serve(Connection& connection)
    {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        note(request.line());
        if (m_login.empty() || request.header("Proxy-Authorization") != m_login)
            connection.write("HTTP/1.1 407 Proxy Authentication Required\r\nProxy-Authenticate: Basic realm=\"x\"\r\n"
                             "Content-Length: 4\r\nConnection: close\r\n\r\nwho?");
        else if (request.method == "CONNECT")
            tunnel(connection);
        else
            connection.write(answer);
    }

    void tunnel(Connection& connection)
    {
        connection.write("HTTP/1.1 200 Connection established\r\n\r\n");
        TlsPeer peer(connection, m_platform);
        std::string inside;
        while (peer.shakeHands() && inside.find("\r\n\r\n") == std::string::npos && peer.read(inside)) {
        }
        note("inside: " + inside.substr(0, inside.find("\r\n")));
        EXPECT_THAT(inside, Not(HasSubstr("Proxy-Authorization"))) << "the platform must not learn it";
        peer.write(answer);
    }

    void note(const std::string& line)
    {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(line);
    }

    static constexpr const char* answer =
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\nConnection: close\r\n\r\n{}";

    const Identity& m_platform;
    const std::string m_login;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    SocketServer m_server; // last: its threads use all of the above
};

// "ana" and "p@ss:wörd/#?%", as they are to arrive: base64 of their UTF-8.
constexpr const char* login = "Basic YW5hOnBAc3M6d8O2cmQvIz8l";
constexpr const wchar_t* escaped = L"ana:p%40ss%3Aw%C3%B6rd%2F%23%3F%25";
constexpr const wchar_t* raw = L"ana:p@ss:wörd/#?%";

class ProxyTest : public testing::Test
{
protected:
    ProxyTest()
    {
        writeFile(host.folder().path("trusted.pem"), platform.pem());
        http::setRetryPolicy({0, 0});
    }
    ~ProxyTest() override { http::setRetryPolicy({}); }

    void useProxy(const std::wstring& proxy)
    {
        host.change([&](OrloConfig& config) {
            config.proxy = proxy;
            config.caFile = host.folder().wide("trusted.pem");
        });
    }

    /// As a call of the library sends it.   Returns: whether a 200 came.
    bool asks(const std::wstring& url)
    {
        error.Clear();
        return http::SendNormalRequestWithRetry([&](ErrorCode& failure) { return get(url, failure).status_code() == 200; }, false, error);
    }

    /// Everything that a person can come to see.
    std::wstring told() const
    {
        std::wstring all = error.GetErrorMessage();
        for (const std::wstring& line : log.lines())
            all += L"\n" + line;
        return all;
    }

    void expectNoLoginIn(const std::wstring& text) const
    {
        for (const wchar_t* part : {L"p@ss", L"p%40ss", L"ss:w", L"wörd", L"w%C3%B6rd", L"ana:", L"YW5hO"})
            EXPECT_EQ(text.find(part), std::wstring::npos) << utils::toString(part) << " in " << utils::toString(text);
    }

    Identity platform{"DNS:platform.example"};
    HostSetup host{"http://127.0.0.1"};
    LogCapture log;
    ErrorCode error;
};

TEST_F(ProxyTest, aUserGoesThroughWithAPlainRequest)
{
    const LoginProxy proxy(platform, login);
    useProxy(L"http://" + std::wstring(escaped) + L"@" + proxy.place());
    EXPECT_TRUE(asks(L"http://platform.example:8080"));
    EXPECT_THAT(proxy.lines(), ElementsAre("GET http://platform.example:8080/thing"));
}

TEST_F(ProxyTest, aUserGoesThroughWithATunnel)
{
    const LoginProxy proxy(platform, login);
    useProxy(L"http://" + std::wstring(escaped) + L"@" + proxy.place());
    EXPECT_TRUE(asks(L"https://platform.example")) << utils::toString(told());
    EXPECT_THAT(proxy.lines(), ElementsAre("CONNECT platform.example:443", "inside: GET /thing HTTP/1.1"));
}

TEST_F(ProxyTest, aPasswordThatNobodyEscapedArrivesAsItIs)
{
    const LoginProxy proxy(platform, login);
    useProxy(L"http://" + std::wstring(raw) + L"@" + proxy.place());
    EXPECT_TRUE(asks(L"http://platform.example:8080")) << utils::toString(told());
    EXPECT_TRUE(asks(L"https://platform.example")) << utils::toString(told());
}

TEST_F(ProxyTest, anAddressWithoutASchemeIsOneOfHttp)
{
    const LoginProxy proxy(platform, login);
    useProxy(std::wstring(escaped) + L"@" + proxy.place());
    EXPECT_TRUE(asks(L"http://platform.example:8080")) << utils::toString(told());
}

TEST_F(ProxyTest, aUserMayHaveNoPassword)
{
    const LoginProxy proxy(platform, "Basic YW5hOg=="); // "ana:"
    useProxy(L"http://ana@" + proxy.place());
    EXPECT_TRUE(asks(L"http://platform.example:8080"));
}

TEST_F(ProxyTest, aRefusedLoginIsToldWithoutIt)
{
    const LoginProxy proxy(platform, "");
    for (const wchar_t* user : {escaped, raw}) {
        useProxy(L"http://" + std::wstring(user) + L"@" + proxy.place());
        for (const wchar_t* url : {L"http://platform.example", L"https://platform.example"}) {
            SCOPED_TRACE(utils::toString(url));
            log.clear();
            EXPECT_FALSE(asks(url));
            EXPECT_FALSE(error.isClear());
            EXPECT_FALSE(told().empty());
            expectNoLoginIn(told());
        }
    }
}

TEST_F(ProxyTest, aProxyThatIsNotThereIsToldWithoutTheLogin)
{
    std::wstring place;
    {
        const Listener closed;
        place = utils::toWstring(closed.place());
    }
    for (const wchar_t* user : {escaped, raw}) {
        useProxy(L"http://" + std::wstring(user) + L"@" + place);
        log.clear();
        EXPECT_FALSE(asks(L"http://platform.example"));
        EXPECT_NE(error.GetErrorMessage().find(L"through the proxy http://" + place), std::wstring::npos) << utils::toString(told());
        expectNoLoginIn(told());
    }
}

TEST_F(ProxyTest, anAddressThatCanNotBeReadIsNotRepeated)
{
    for (const wchar_t* place : {L"", L"a b", L":3128", L"[::1", L"proxy.example:port"}) {
        for (const wchar_t* user : {escaped, raw}) {
            useProxy(L"http://" + std::wstring(user) + L"@" + place);
            SCOPED_TRACE(utils::toString(place));
            log.clear();
            EXPECT_FALSE(asks(L"http://platform.example"));
            EXPECT_NE(error.GetErrorMessage().find(L"proxy"), std::wstring::npos) << utils::toString(told());
            expectNoLoginIn(told());
        }
    }
}

TEST_F(ProxyTest, anAddressWithoutAHostIsToldByItsForm)
{
    useProxy(L"http://ana:p@ss@");
    EXPECT_FALSE(asks(L"http://platform.example"));
    EXPECT_EQ(error.GetErrorMessage(), L"the address of the proxy can't be read; it has the form host:port");
}

TEST_F(ProxyTest, aPasswordWhoseHostWasForgottenIsShownNowhere)
{
    for (const wchar_t* const text : {L"http://ana:SeCret", L"http://ana:SeCret/p?q#f", L"ana:SeCret", L"http://proxy.example:3128x"}) {
        useProxy(text);
        EXPECT_FALSE(asks(L"http://platform.example"));
        EXPECT_EQ(error.GetErrorMessage(), L"the address of the proxy can't be read; it has the form host:port");
        EXPECT_FALSE(log.holds(L"SeCret"));
        EXPECT_FALSE(log.holds(L"secret"));
    }
}

TEST_F(ProxyTest, anotherKindOfAddressIsNoProxy)
{
    useProxy(L"ftp://proxy.example:21");
    EXPECT_FALSE(asks(L"http://platform.example"));
    EXPECT_EQ(error.GetErrorMessage(), L"the address of the proxy can't be read; it has the form host:port");
}

} // namespace
} // namespace orlo::test
