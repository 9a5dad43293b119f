#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* projectOne =
    R"({"code":10000,"data":{"id":"another","name":"示例","creationTime":"c","description":"d","status":"Suspended",)"
    R"("gridType":"TYPE_ONE","size":12,"standardProperties":[{"propertyId":"a","valueType":"Integer","intValue":4}]}})";

// The manager remembers modeling ids for the life of the process, so that each test has ids of its own.
class ProjectLookupWireTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();

    void expectModelingLookup(const std::string& modelingId, const std::string& projectId)
    {
        server.expect("POST", "/dataset/modelingid")
            .body(R"([")" + modelingId + R"("])")
            .reply(200, R"({"code":10000,"data":[{"projectId":")" + projectId + R"("}]})");
    }
    void expectLoad(const std::string& projectId) { server.expect("GET", "/v2/projects/" + projectId).reply(200, projectOne); }
};

TEST_F(ProjectLookupWireTest, loadsAProjectUnderTheIdThatWasAskedFor)
{
    expectLoad("p-1");
    const auto project = ICollaborationProject::Load(L"p-1", error);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->GetId(), L"p-1");
    EXPECT_EQ(project->GetName(), L"示例");
    EXPECT_EQ(static_cast<int>(project->GetStatus()), 1);
    EXPECT_EQ(static_cast<int>(project->GetGridType()), 0);
    EXPECT_EQ(project->GetSize(), 12);
    expectQuiet();
}

TEST_F(ProjectLookupWireTest, theShortFormOfLoadGivesTheSame)
{
    expectLoad("p-1");
    server.expect("GET", "/v2/projects/p-2").reply(404, "gone");
    const auto project = ICollaborationProject::Load(L"p-1");
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->GetId(), L"p-1");
    EXPECT_EQ(ICollaborationProject::Load(L"p-2"), nullptr);
}

TEST_F(ProjectLookupWireTest, aLoadFailsAsEveryRetriedOperationDoesAndLogsNoStatus)
{
    RequestingOperation load{"GET", "/v2/projects/p-1", "", L"",
                             [](ErrorCode& ec) { return ICollaborationProject::Load(L"p-1", ec) != nullptr; }};
    load.goodAnswer = projectOne;
    expectFailuresOf(load, server, log);
    expectSuccessAtLast(load, server, log);
}

TEST_F(ProjectLookupWireTest, aLoadNeedsTheMarkOfTheEnvelope)
{
    for (const char* body : {R"({"code":0,"data":{"name":"n"}})", R"({"code":"10000","data":{"name":"n"}})", R"({"data":{"name":"n"}})",
                             R"({"code":10000.0,"data":{"name":"n"}})", R"({"name":"n"})", "[]", "7", "null", ""}) {
        server.expect("GET", "/v2/projects/p-1").reply(200, body);
        EXPECT_EQ(ICollaborationProject::Load(L"p-1", error), nullptr) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectLookupWireTest, aLoadOfAnEnvelopeWithoutDataGivesAProjectWithItsIdAlone)
{
    for (const char* body : {R"({"code":10000})", R"({"code":10000,"data":null})", R"({"code":10000,"data":[1]})"}) {
        server.expect("GET", "/v2/projects/p-1").reply(200, body);
        const auto project = ICollaborationProject::Load(L"p-1", error);
        ASSERT_NE(project, nullptr) << body;
        EXPECT_EQ(project->GetId(), L"p-1");
        EXPECT_EQ(project->GetName(), L"");
        EXPECT_EQ(static_cast<int>(project->GetStatus()), -1);
        EXPECT_EQ(static_cast<int>(project->GetGridType()), -1);
        EXPECT_EQ(project->GetSize(), 0);
    }
}

TEST_F(ProjectLookupWireTest, findsTheProjectOfADatasetAndLoadsIt)
{
    server.expect("GET", "/folder/hasdataset?datasetId=d-1").reply(200, R"({"projectId":"p-7","folderId":"f"})");
    expectLoad("p-7");
    const auto project = manager.GetProjectByDatasetId("d-1", error);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->GetId(), L"p-7");
    expectQuiet();
}

TEST_F(ProjectLookupWireTest, theShortFormFindsTheProjectOfADatasetToo)
{
    server.expect("GET", "/folder/hasdataset?datasetId=d-1").reply(200, R"({"projectId":"p-7"})");
    expectLoad("p-7");
    ASSERT_NE(manager.GetProjectByDatasetId("d-1"), nullptr);
}

TEST_F(ProjectLookupWireTest, aDatasetWithoutAProjectIsLogged)
{
    for (const char* body : {"{}", R"({"projectId":""})", R"({"projectId":7})", "[]", "null", R"({"data":{"projectId":"p-7"}})"}) {
        log.clear();
        server.expect("GET", "/folder/hasdataset?datasetId=d-1").reply(200, body);
        EXPECT_EQ(manager.GetProjectByDatasetId("d-1", error), nullptr) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Failed to get project id"});
    }
}

TEST_F(ProjectLookupWireTest, aLookupOfADatasetFailsAsEveryRetriedOperationDoesAndSaysSo)
{
    RequestingOperation lookup{"GET", "/folder/hasdataset?datasetId=d-1", "", L"OrloWebService::getProjectIdByDataset - code:",
                               [&](ErrorCode& ec) { return manager.GetProjectByDatasetId("d-1", ec) != nullptr; }};
    lookup.afterwards = L"E [ORLOSDK]Failed to get project id";
    lookup.goodAnswer = R"({"projectId":"p-7"})";
    expectFailuresOf(lookup, server, log);
    expectSuccessAtLast(lookup, server, log, [&] { expectLoad("p-7"); });
}

TEST_F(ProjectLookupWireTest, aFailedLoadAfterALookupIsNotReportedInTheErrorCode)
{
    server.expect("GET", "/folder/hasdataset?datasetId=d-1").reply(200, R"({"projectId":"p-7"})");
    server.expect("GET", "/v2/projects/p-7").reply(404, "gone");
    EXPECT_EQ(manager.GetProjectByDatasetId("d-1", error), nullptr);
    expectQuiet();
}

TEST_F(ProjectLookupWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    EXPECT_EQ(manager.GetProjectByDatasetId("d 1", error), nullptr);
    EXPECT_EQ(error.GetValue(), 3892314114);
    EXPECT_EQ(server.connectionCount(), 0u);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]Failed to get project id"));
}

TEST_F(ProjectLookupWireTest, findsTheProjectOfAModelingIdAndRemembersIt)
{
    expectModelingLookup("m-remember", "p-8");
    expectLoad("p-8");
    const auto first = manager.GetProjectByModelingId("m-remember", error);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->GetId(), L"p-8");
    EXPECT_EQ(manager.GetProjectByModelingId("m-remember", error), first);
    EXPECT_EQ(server.requestCount(), 2u);
    expectQuiet();
}

TEST_F(ProjectLookupWireTest, remembersTheLastModelingIdAlone)
{
    expectModelingLookup("m-A", "p-A");
    expectLoad("p-A");
    expectModelingLookup("m-B", "p-B");
    expectLoad("p-B");
    expectModelingLookup("m-A", "p-A");
    expectLoad("p-A");
    for (const char* id : {"m-A", "m-B", "m-A", "m-A"})
        EXPECT_NE(manager.GetProjectByModelingId(id, error), nullptr);
    EXPECT_EQ(server.count("POST", "/dataset/modelingid"), 3u);
}

TEST_F(ProjectLookupWireTest, aProjectThatCouldNotBeLoadedIsRememberedAsNull)
{
    expectModelingLookup("m-null", "p-gone");
    server.expect("GET", "/v2/projects/p-gone").reply(404, "gone");
    EXPECT_EQ(manager.GetProjectByModelingId("m-null", error), nullptr);
    expectClear(error);
    EXPECT_EQ(manager.GetProjectByModelingId("m-null", error), nullptr);
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(ProjectLookupWireTest, aModelingIdThatIsNotFoundIsLoggedAndNotRemembered)
{
    expectModelingLookup("m-known", "p-8");
    expectLoad("p-8");
    server.expect("POST", "/dataset/modelingid").body(R"(["m-模型"])").times(2).reply(200, R"({"code":10000,"data":[]})");
    const auto known = manager.GetProjectByModelingId("m-known", error);
    EXPECT_EQ(manager.GetProjectByModelingId("m-模型", error), nullptr);
    EXPECT_EQ(manager.GetProjectByModelingId("m-模型", error), nullptr);
    expectClear(error);
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]Failed to get project id by modeling id :m-模型",
                                  L"E [ORLOSDK]Failed to get project id by modeling id :m-模型"}));
    EXPECT_EQ(manager.GetProjectByModelingId("m-known", error), known) << "the entry before stays";
}

TEST_F(ProjectLookupWireTest, takesTheFirstElementOfTheDataWhateverTheCode)
{
    server.expect("POST", "/dataset/modelingid")
        .body(R"(["m-first"])")
        .reply(200, R"({"code":4,"data":[{"projectId":"p-1"},{"projectId":"p-2"}]})");
    expectLoad("p-1");
    const auto project = manager.GetProjectByModelingId("m-first", error);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->GetId(), L"p-1");
}

TEST_F(ProjectLookupWireTest, anAnswerToAModelingIdOfAnotherShapeFindsNothing)
{
    for (const char* body :
         {"{}", R"({"data":{"projectId":"p"}})", R"({"data":["p"]})", R"({"data":[{"projectId":1}]})", "[]", "null", "7"}) {
        server.expect("POST", "/dataset/modelingid").body(R"(["m-shape"])").reply(200, body);
        EXPECT_EQ(manager.GetProjectByModelingId("m-shape", error), nullptr) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.count(L"E [ORLOSDK]Failed to get project id by modeling id :m-shape"), 7u);
}

TEST_F(ProjectLookupWireTest, aLookupOfAModelingIdFailsAsEveryRetriedOperationDoesAndSaysSo)
{
    RequestingOperation lookup{"POST", "/dataset/modelingid", R"(["m-fail"])", L"OrloWebService::getProjectIdByModelingId - code:",
                               [&](ErrorCode& ec) { return manager.GetProjectByModelingId("m-fail", ec) != nullptr; }};
    lookup.afterwards = L"E [ORLOSDK]Failed to get project id by modeling id :m-fail";
    lookup.goodAnswer = R"({"code":10000,"data":[{"projectId":"p-8"}]})";
    expectFailuresOf(lookup, server, log);
    expectSuccessAtLast(lookup, server, log, [&] { expectLoad("p-8"); });
}

} // namespace
} // namespace orlo::test
