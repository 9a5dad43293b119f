#include "support/WireTest.h"

#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

class RequestHeadersTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();

    Request listedOnce()
    {
        server.expect("GET", "/projects?scenario=DEFAULT").reply(200, "[]");
        manager.GetAllProjects(error);
        const auto requests = server.requests();
        return requests.empty() ? Request() : requests.back();
    }
};

TEST_F(RequestHeadersTest, theUsersTokenGoesAlongAsABearer)
{
    EXPECT_EQ(listedOnce().header("Authorization"), "Bearer token-secret-1");
}

TEST_F(RequestHeadersTest, nobodySignedInSendsNoAuthorization)
{
    UserSession::SignOut();
    EXPECT_FALSE(listedOnce().hasHeader("Authorization"));
    UserSession::SignIn({L"user-1", L"account-1", L""});
    EXPECT_FALSE(listedOnce().hasHeader("Authorization"));
}

TEST_F(RequestHeadersTest, anotherUserSendsAnotherToken)
{
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    EXPECT_EQ(listedOnce().header("Authorization"), "Bearer token-secret-2");
}

TEST_F(RequestHeadersTest, namesTheLibraryAndItsHost)
{
    EXPECT_EQ(listedOnce().header("User-Agent").rfind("OrloProjectManager/", 0), 0u);
    host.change([&](OrloConfig& config) { config.appVersion = L"Studio-12.5"; });
    const std::string agent = listedOnce().header("User-Agent");
    EXPECT_EQ(agent.rfind("OrloProjectManager/", 0), 0u);
    EXPECT_NE(agent.find("Studio-12.5"), std::string::npos) << agent;
}

TEST_F(RequestHeadersTest, aHostVersionThatFitsNoHeaderIsLeftOut)
{
    host.change([&](OrloConfig& config) { config.appVersion = L"1.0\r\nX-Forged: yes"; });
    const Request request = listedOnce();
    EXPECT_FALSE(request.hasHeader("X-Forged"));
    EXPECT_EQ(request.header("User-Agent").rfind("OrloProjectManager/", 0), 0u);
}

TEST_F(RequestHeadersTest, aTokenWithALineBreakIsAnExceptionAndSendsNothing)
{
    UserSession::SignIn({L"user-1", L"account-1", L"token\r\nX-Forged: yes"});
    EXPECT_TRUE(manager.GetAllProjects(error).empty());
    EXPECT_EQ(server.connectionCount(), 0u);
    expectHttpError(error, 3892314114, L"generic exception", L"the access token holds characters that fit no header", 5555);
    error.Clear();
    manager.GetDatasetInfo("d-1", error);
    EXPECT_EQ(server.connectionCount(), 0u);
    expectHttpError(error, 3892314114, L"HttpError", L"the access token holds characters that fit no header", 5555);
    EXPECT_FALSE(log.holds(L"X-Forged"));
}

TEST_F(RequestHeadersTest, aTokenOutsideAsciiIsAnExceptionAndSendsNothing)
{
    UserSession::SignIn({L"user-1", L"account-1", L"令牌"});
    EXPECT_TRUE(manager.GetAllProjects(error).empty());
    EXPECT_EQ(server.connectionCount(), 0u);
    EXPECT_EQ(error.GetValue(), 3892314114);
}

TEST_F(RequestHeadersTest, aReadSendsNoContentType)
{
    const Request request = listedOnce();
    EXPECT_FALSE(request.hasHeader("Content-Type"));
    EXPECT_EQ(request.body, "");
}

TEST_F(RequestHeadersTest, aRedirectIsNotFollowedAndCarriesTheTokenNowhere)
{
    ScriptedServer elsewhere;
    for (const int status : {301, 302, 303, 307, 308}) {
        Reply redirect;
        redirect.status = status;
        redirect.headers = {{"Location", elsewhere.url() + "/stolen"}};
        server.expect("GET", "/projects?scenario=DEFAULT").reply(redirect);
        EXPECT_TRUE(manager.GetAllProjects(error).empty());
        expectClear(error);
    }
    EXPECT_EQ(server.requestCount(), 5u);
    EXPECT_EQ(elsewhere.connectionCount(), 0u);
    EXPECT_EQ(log.lines().size(), 5u);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::GetAllProjects - code:302"));
}

TEST_F(RequestHeadersTest, aRedirectWithinTheHostIsNotFollowedEither)
{
    Reply redirect;
    redirect.status = 302;
    redirect.headers = {{"Location", "/projects/moved"}};
    server.expect("GET", "/v2/projects/p-1").reply(redirect);
    EXPECT_EQ(ICollaborationProject::Load(L"p-1", error), nullptr);
    EXPECT_EQ(server.requestCount(), 1u);
}

TEST_F(RequestHeadersTest, everyAttemptCarriesTheToken)
{
    server.expect("GET", "/projects?scenario=DEFAULT").header("Authorization", "Bearer token-secret-1").times(2).reply(503);
    server.expect("GET", "/projects?scenario=DEFAULT").header("Authorization", "Bearer token-secret-1").reply(200, "[]");
    manager.GetAllProjects(error);
    expectClear(error);
}

} // namespace
} // namespace orlo::test
