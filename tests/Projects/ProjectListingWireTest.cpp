#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using Projects = ICollaborationProjectManager::Projects;

constexpr const char* twoProjects =
    R"([{"id":"p-1","name":"示例","creationTime":"2024-03-01T08:00:00Z","description":"d","owner":"u-9","status":"Ongoing",)"
    R"("gridType":"TYPE_ONE","size":5000000000},{"id":"p-2","name":"second","status":"Completed","gridType":"TYPE_TWO","size":7}])";

void expectTwoProjects(const Projects& projects)
{
    ASSERT_EQ(projects.size(), 2u);
    EXPECT_EQ(projects[0]->GetId(), L"p-1");
    EXPECT_EQ(projects[0]->GetName(), L"示例");
    EXPECT_EQ(static_cast<int>(projects[0]->GetStatus()), 0);
    EXPECT_EQ(static_cast<int>(projects[0]->GetGridType()), 0);
    EXPECT_EQ(projects[0]->GetSize(), 5000000000);
    EXPECT_EQ(projects[1]->GetId(), L"p-2");
    EXPECT_EQ(projects[1]->GetName(), L"second");
    EXPECT_EQ(static_cast<int>(projects[1]->GetStatus()), 2);
    EXPECT_EQ(static_cast<int>(projects[1]->GetGridType()), 1);
    EXPECT_EQ(projects[1]->GetSize(), 7);
}

class ProjectListingWireTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();
};

TEST_F(ProjectListingWireTest, listsAllProjectsInTheOrderOfTheAnswer)
{
    server.expect("GET", "/projects?scenario=DEFAULT").reply(200, twoProjects);
    expectTwoProjects(manager.GetAllProjects(error));
    expectQuiet();
}

TEST_F(ProjectListingWireTest, listsTheOwnedProjects)
{
    server.expect("GET", "/projects?scenario=OWNER").reply(200, twoProjects);
    expectTwoProjects(manager.GetOwnerProjects(error));
    expectClear(error);
}

TEST_F(ProjectListingWireTest, listsTheArchivedProjects)
{
    server.expect("GET", "/projects?scenario=ARCHIVE").reply(200, twoProjects);
    expectTwoProjects(manager.GetArchivedProjects(error));
    expectClear(error);
}

TEST_F(ProjectListingWireTest, theShortFormsGiveTheSameResults)
{
    server.expect("GET", "/projects?scenario=DEFAULT").reply(200, twoProjects);
    server.expect("GET", "/projects?scenario=OWNER").reply(200, twoProjects);
    server.expect("GET", "/projects?scenario=ARCHIVE").reply(200, twoProjects);
    server.expect("GET", "/projects?scenario=DEFAULT").reply(404, "gone");
    expectTwoProjects(manager.GetAllProjects());
    expectTwoProjects(manager.GetOwnerProjects());
    expectTwoProjects(manager.GetArchivedProjects());
    EXPECT_TRUE(manager.GetAllProjects().empty());
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetAllProjects - code:404"});
}

TEST_F(ProjectListingWireTest, anEmptyArrayIsAnEmptyListAndNoError)
{
    server.expect("GET", "/projects?scenario=DEFAULT").reply(200, "[]");
    EXPECT_TRUE(manager.GetAllProjects(error).empty());
    expectQuiet();
}

TEST_F(ProjectListingWireTest, aBodyThatIsNoArrayIsAnEmptyListAndNoError)
{
    for (const char* body : {"{}", "null", "7", "\"text\"", R"({"code":10000,"data":[{"id":"p-1"}]})"}) {
        server.expect("GET", "/projects?scenario=DEFAULT").reply(200, body);
        EXPECT_TRUE(manager.GetAllProjects(error).empty()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectListingWireTest, aRecordWithoutItsKeysHasTheDefaults)
{
    server.expect("GET", "/projects?scenario=DEFAULT").reply(200, R"([{"id":"p-1","extra":[1,2]},{"id":7,"name":null,"size":"9"}])");
    const Projects projects = manager.GetAllProjects(error);
    ASSERT_EQ(projects.size(), 2u);
    EXPECT_EQ(projects[0]->GetId(), L"p-1");
    EXPECT_EQ(projects[0]->GetName(), L"");
    EXPECT_EQ(static_cast<int>(projects[0]->GetStatus()), -1);
    EXPECT_EQ(static_cast<int>(projects[0]->GetGridType()), -1);
    EXPECT_EQ(projects[0]->GetSize(), 0);
    EXPECT_EQ(projects[1]->GetId(), L"");
    EXPECT_EQ(projects[1]->GetSize(), 0);
}

TEST_F(ProjectListingWireTest, theListingsFailAndAreRepeatedAsEveryRetriedOperation)
{
    RequestingOperation listing{"GET", "/projects?scenario=OWNER", "", L"OrloWebService::GetAllProjects - code:", [&](ErrorCode& ec) {
                                    const Projects owned = manager.GetOwnerProjects(ec);
                                    if (!owned.empty())
                                        expectTwoProjects(owned);
                                    return !owned.empty();
                                }};
    listing.goodAnswer = twoProjects;
    expectFailuresOf(listing, server, log);
    expectSuccessAtLast(listing, server, log);
    listing.target = "/projects/status?status=Ongoing"; // logged under the words of the other
    Projects projects;
    listing.succeeds = [&](ErrorCode& ec) { return manager.GetProjectByStatus(static_cast<ProjectStatus>(0), projects, ec); };
    expectFailuresOf(listing, server, log);
    EXPECT_TRUE(projects.empty());
    expectSuccessAtLast(listing, server, log);
    expectTwoProjects(projects);
}

TEST_F(ProjectListingWireTest, anEarlierErrorIsLoggedUnderTheNameOfTheListingAndWipedBySuccess)
{
    error.Assign(0xE8000002, std::make_shared<HttpError>(L"HttpError", L"earlier", 5555, 0));
    server.expect("GET", "/projects?scenario=OWNER").reply(200, "[]");
    EXPECT_TRUE(manager.GetOwnerProjects(error).empty());
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::GetAllProjects 传入的ErrorCode，已有错误存在:earlier"});
    EXPECT_EQ(log.entries().front().source, "source/OrloProjectManager/Projects/ProjectManager.cpp");
    EXPECT_EQ(log.entries().front().tag, L"[ORLOSDK]");
}

TEST_F(ProjectListingWireTest, listsTheProjectsOfAStatusBehindWhatTheListHolds)
{
    server.expect("GET", "/projects/status?status=Suspended").reply(200, twoProjects);
    server.expect("GET", "/projects/status?status=Ongoing").reply(200, R"([{"id":"p-3"}])");
    server.expect("GET", "/projects/status?status=Completed").reply(200, "{}");
    Projects projects;
    EXPECT_TRUE(manager.GetProjectByStatus(static_cast<ProjectStatus>(1), projects, error));
    expectTwoProjects(projects);
    EXPECT_TRUE(manager.GetProjectByStatus(static_cast<ProjectStatus>(0), projects));
    EXPECT_TRUE(manager.GetProjectByStatus(static_cast<ProjectStatus>(2), projects, error));
    ASSERT_EQ(projects.size(), 3u);
    EXPECT_EQ(projects[2]->GetId(), L"p-3");
    expectClear(error);
}

TEST_F(ProjectListingWireTest, theUnknownStatusSendsNothingAndLeavesTheErrorCodeAlone)
{
    error.Assign(0xE8000001, std::make_shared<GenericError>(L"earlier"));
    Projects projects;
    EXPECT_FALSE(manager.GetProjectByStatus(static_cast<ProjectStatus>(-1), projects, error));
    EXPECT_FALSE(manager.GetProjectByStatus(static_cast<ProjectStatus>(-1), projects));
    EXPECT_TRUE(projects.empty());
    EXPECT_EQ(server.connectionCount(), 0u);
    expectGenericError(error, 3892314113, L"GenericError", L"earlier");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::GetProjectByStatus 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_F(ProjectListingWireTest, readsSampleProjectsFromTheDataOfTheEnvelopeWhateverItsCode)
{
    const std::string data(twoProjects);
    server.expect("GET", "/v2/sampleProjects").reply(200, R"({"code":10000,"data":)" + data + "}");
    server.expect("GET", "/v2/sampleProjects").reply(200, R"({"data":)" + data + "}");
    server.expect("GET", "/v2/sampleProjects").reply(200, R"({"code":4,"data":[]})");
    Projects projects;
    EXPECT_TRUE(manager.GetSampleProjects(projects, error));
    expectTwoProjects(projects);
    EXPECT_TRUE(manager.GetSampleProjects(projects));
    EXPECT_EQ(projects.size(), 4u);
    EXPECT_TRUE(manager.GetSampleProjects(projects, error));
    EXPECT_EQ(projects.size(), 4u);
    expectQuiet();
}

TEST_F(ProjectListingWireTest, sampleProjectsWithoutDataAreInvalidAndLoggedWithTheBody)
{
    server.expect("GET", "/v2/sampleProjects").reply(200, R"({"code":10000,"message":"没有"})");
    server.expect("GET", "/v2/sampleProjects").reply(200, R"([{"id":"p-1"}])");
    Projects projects;
    EXPECT_FALSE(manager.GetSampleProjects(projects, error));
    EXPECT_FALSE(manager.GetSampleProjects(projects));
    EXPECT_TRUE(projects.empty());
    expectClear(error);
    EXPECT_EQ(log.lines(),
              (Lines{L"E [ORLOSDK]OrloWebService::GetSampleProjects - invalid response data: {\"code\":10000,\"message\":\"没有\"}",
                     L"E [ORLOSDK]OrloWebService::GetSampleProjects - invalid response data: [{\"id\":\"p-1\"}]"}));
}

TEST_F(ProjectListingWireTest, aFailedListingOfSampleProjectsIsLogged)
{
    server.expect("GET", "/v2/sampleProjects").reply(401, "who");
    Projects projects;
    EXPECT_FALSE(manager.GetSampleProjects(projects, error));
    expectHttpError(error, -402653182, L"HttpError", L"who", 401);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetSampleProjects - code:401"});
}

} // namespace
} // namespace orlo::test
