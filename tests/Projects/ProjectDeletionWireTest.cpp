#include "support/WireTest.h"

#include <OrloProjectManager/NetworkProject/Projects/ProjectWeb.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

class ProjectDeletionWireTest : public WireTest
{};

TEST_F(ProjectDeletionWireTest, deletesAProjectWithoutABody)
{
    server.expect("DELETE", "/v2/projects/p-1").reply(200, R"({"code":10000})");
    EXPECT_TRUE(HttpClient::deleteProject(L"p-1"));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectDeletionWireTest, looksAtTheStatusAlone)
{
    server.expect("DELETE", "/v2/projects/p-1").reply(200, "<html>", "text/html");
    server.expect("DELETE", "/v2/projects/p-1").reply(200);
    EXPECT_TRUE(HttpClient::deleteProject(L"p-1"));
    EXPECT_TRUE(HttpClient::deleteProject(L"p-1"));
}

TEST_F(ProjectDeletionWireTest, refusesAnEmptyIdWithoutARequest)
{
    EXPECT_FALSE(HttpClient::deleteProject(L""));
    EXPECT_FALSE(OrloWebService::DeleteProject(error, L""));
    expectGenericError(error, 3892314113, L"GenericError", L"invalid projectId");
    EXPECT_EQ(server.connectionCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectDeletionWireTest, anotherStatusIsAFailureAndNotRetried)
{
    server.expect("DELETE", "/v2/projects/p-1").reply(500, "busy");
    server.expect("DELETE", "/v2/projects/p-1").reply(204);
    EXPECT_FALSE(HttpClient::deleteProject(L"p-1"));
    EXPECT_FALSE(HttpClient::deleteProject(L"p-1"));
    EXPECT_EQ(log.lines(),
              (Lines{L"E [ORLOSDK]OrloWebService::DeleteProject - code:500", L"E [ORLOSDK]OrloWebService::DeleteProject - code:204"}));
}

TEST_F(ProjectDeletionWireTest, aTransportFailureIsNeitherLoggedNorRetried)
{
    server.expect("DELETE", "/v2/projects/p-1").reset();
    EXPECT_FALSE(HttpClient::deleteProject(L"p-1"));
    EXPECT_EQ(server.requestCount(), 1u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectDeletionWireTest, anotherExceptionIsLoggedUnderItsName)
{
    OrloConfigManager::Configure({});
    EXPECT_FALSE(HttpClient::deleteProject(L"p-1"));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::HttpClient::deleteProject [END_API_IMPLEMENTATION][A generic exception caught] message[no "
                                 L"address is configured for the service \"project\"]"});
}

} // namespace
} // namespace orlo::test
