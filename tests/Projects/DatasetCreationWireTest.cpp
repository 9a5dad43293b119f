#include "DatasetInfoMatch.h"
#include "support/ProjectObjectTest.h"

#include <OrloProjectManager/NetworkProject/Projects/DatasetWeb.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* target = "/v2/dataSets";
constexpr const char* plainBody = R"({"name":"模型","ownerId":"o-1","specialtyId":"s-1","folderId":"","teamId":"t-1","type":"workunit"})";
constexpr const char* bodyWithId =
    R"({"id":"d-9","name":"模型","ownerId":"o-1","specialtyId":"s-1","folderId":"","teamId":"t-1","type":"workunit"})";
constexpr const char* created =
    R"({"code":10000,"data":{"id":"d-9","name":"模型","type":"workunit","ownerId":"o-1","specialtyId":"s-1","teamId":"t-1",)"
    R"("projectId":"p-1","description":"d","modelingDatasetId":"m","folderId":"f"}})";
constexpr const wchar_t* failed = L"E [ORLOSDK]fail to create dataset!";

class DatasetCreationWireTest : public ProjectObjectTest
{
protected:
    DatasetInfo create() { return project->CreateDataset(L"模型", L"t-1", L"s-1", L"o-1", error); }
    DatasetInfo createById() { return project->CreateDatasetById(L"模型", L"t-1", L"s-1", L"o-1", "d-9", error); }

    /// A dataset of a folder, as the web function takes it.
    http::ORLOHTTPPayloadDataset inFolder() const
    {
        http::ORLOHTTPPayloadDataset data;
        data.name = L"n";
        data.folderId = L"f-1";
        data.type = L"noneStandard";
        return data;
    }
};

TEST_F(DatasetCreationWireTest, createsAWorkUnitOfATeam)
{
    server.expect("POST", target).header("Content-Type", "application/json").body(plainBody).reply(200, created);
    const DatasetInfo info = create();
    EXPECT_EQ(info.id, "d-9");
    EXPECT_EQ(info.modelingDatasetId, "") << "the answer to a creation has no key for it";
    EXPECT_EQ(info.name, L"模型");
    EXPECT_EQ(static_cast<int>(info.type), 2);
    EXPECT_EQ(info.description, L"d");
    EXPECT_EQ(info.ownerId, L"o-1");
    EXPECT_EQ(info.specialtyId, L"s-1");
    EXPECT_EQ(info.teamId, L"t-1");
    EXPECT_EQ(info.projectId, L"p-1");
    expectQuiet();
}

TEST_F(DatasetCreationWireTest, sendsTheIdFirstWhereTheHostGivesOne)
{
    server.expect("POST", target).body(bodyWithId).reply(200, created);
    EXPECT_EQ(createById().id, "d-9");
    expectClear(error);
}

TEST_F(DatasetCreationWireTest, anEmptyIdIsNotSent)
{
    server.expect("POST", target).body(plainBody).reply(200, created);
    EXPECT_EQ(project->CreateDatasetById(L"模型", L"t-1", L"s-1", L"o-1", "", error).id, "d-9");
}

TEST_F(DatasetCreationWireTest, sendsEmptyOwnersAndSpecialties)
{
    server.expect("POST", target)
        .body(R"({"name":"n","ownerId":"","specialtyId":"","folderId":"","teamId":"t-1","type":"workunit"})")
        .reply(200, created);
    EXPECT_EQ(project->CreateDataset(L"n", L"t-1", L"", L"", error).id, "d-9");
}

TEST_F(DatasetCreationWireTest, theShortFormsGiveTheSame)
{
    server.expect("POST", target).body(plainBody).reply(200, created);
    EXPECT_EQ(project->CreateDataset(L"模型", L"t-1", L"s-1", L"o-1").id, "d-9");
    server.expect("POST", target).body(bodyWithId).reply(200, created);
    EXPECT_EQ(project->CreateDatasetById(L"模型", L"t-1", L"s-1", L"o-1", "d-9").id, "d-9");
    server.expect("POST", target).body(plainBody).reply(404);
    expectEmpty(project->CreateDataset(L"模型", L"t-1", L"s-1", L"o-1"));
    server.expect("POST", target).body(bodyWithId).reply(404);
    expectEmpty(project->CreateDatasetById(L"模型", L"t-1", L"s-1", L"o-1", "d-9"));
}

TEST_F(DatasetCreationWireTest, anEmptyTeamIsRefusedAndNotRetried)
{
    expectEmpty(project->CreateDataset(L"n", L"", L"s-1", L"o-1", error));
    expectGenericError(error, 3892314113, L"GenericError", L"Invalid name or teamId");
    EXPECT_EQ(log.lines(), Lines{failed});
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(DatasetCreationWireTest, anEmptyTeamIsRefusedWithAnIdToo)
{
    expectEmpty(project->CreateDatasetById(L"n", L"", L"s-1", L"o-1", "d-9", error));
    expectGenericError(error, 3892314113, L"GenericError", L"Invalid name or teamId");
    EXPECT_EQ(log.lines(), Lines{failed});
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(DatasetCreationWireTest, anEmptyNameIsRefusedAndNotRetried)
{
    expectEmpty(project->CreateDataset(L"", L"t-1", L"s-1", L"o-1", error));
    expectGenericError(error, 3892314113, L"GenericError", L"Invalid name or teamId");
    EXPECT_EQ(log.lines(), Lines{failed});
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(DatasetCreationWireTest, aFolderIsHomeEnoughWithoutATeam)
{
    server.expect("POST", target)
        .body(R"({"name":"n","ownerId":"","specialtyId":"","folderId":"f-1","teamId":"","type":"noneStandard"})")
        .reply(200, R"({"code":10000,"data":{"id":"d-9","folderId":"f-1","type":"noneStandard","codeVersion":3,"tipVersion":4,)"
                    R"("nameSpace":"ns","schemaDefinition":"sd"}})");
    http::ORLOHTTPPayloadDataset out;
    EXPECT_TRUE(OrloWebService::CreateDataSet(error, out, inFolder()));
    EXPECT_EQ(out.id, "d-9");
    EXPECT_EQ(out.folderId, L"f-1");
    EXPECT_EQ(out.type, L"noneStandard");
    EXPECT_EQ(out.codeVersion, 3);
    EXPECT_EQ(out.tipVersion, 4);
    EXPECT_EQ(out.nameSpace, L"ns");
    EXPECT_EQ(out.schemaDefinition, L"sd");
    expectClear(error);
}

TEST_F(DatasetCreationWireTest, neitherAFolderNorATeamIsRefused)
{
    http::ORLOHTTPPayloadDataset data = inFolder();
    data.folderId.clear();
    http::ORLOHTTPPayloadDataset out;
    EXPECT_FALSE(OrloWebService::CreateDataSet(error, out, data));
    expectGenericError(error, 3892314113, L"GenericError", L"Invalid name or teamId");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetCreationWireTest, aFolderDoesNotReplaceTheName)
{
    http::ORLOHTTPPayloadDataset data = inFolder();
    data.name.clear();
    http::ORLOHTTPPayloadDataset out;
    EXPECT_FALSE(OrloWebService::CreateDataSet(error, out, data));
    expectGenericError(error, 3892314113, L"GenericError", L"Invalid name or teamId");
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(DatasetCreationWireTest, anAnswerWithoutTheMarkFails)
{
    for (const char* body : {R"({"code":7,"data":{"id":"d-9"}})", R"({"code":"10000","data":{"id":"d-9"}})", R"({"data":{"id":"d-9"}})",
                             R"({"id":"d-9"})", "[]", "null", ""}) {
        log.clear();
        server.expect("POST", target).body(plainBody).reply(200, body);
        expectEmpty(create());
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{failed}) << body;
    }
}

TEST_F(DatasetCreationWireTest, aGoodEnvelopeWithoutARecordGivesAnEmptyDatasetAndNoFailure)
{
    for (const char* body : {R"({"code":10000})", R"({"code":10000,"data":null})", R"({"code":10000,"data":{"id":9,"type":2}})"}) {
        server.expect("POST", target).body(plainBody).reply(200, body);
        expectEmpty(create());
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetCreationWireTest, failsAsEveryRequestingOperationDoesAndLogsNoStatus)
{
    RequestingOperation operation{"POST", target, plainBody, L"",
                                  [&](ErrorCode& ec) { return !project->CreateDataset(L"模型", L"t-1", L"s-1", L"o-1", ec).id.empty(); }};
    operation.afterwards = failed;
    expectFailuresOf(operation, server, log);
}

TEST_F(DatasetCreationWireTest, withAnIdItFailsTheSameWay)
{
    RequestingOperation operation{"POST", target, bodyWithId, L"", [&](ErrorCode& ec) {
                                      return !project->CreateDatasetById(L"模型", L"t-1", L"s-1", L"o-1", "d-9", ec).id.empty();
                                  }};
    operation.afterwards = failed;
    expectFailuresOf(operation, server, log);
}

TEST_F(DatasetCreationWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("POST", target).body(plainBody).reply(200, created);
    create();
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::CreateDataset 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
    log.clear();
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("POST", target).body(bodyWithId).reply(200, created);
    createById();
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::CreateDatasetById 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

} // namespace
} // namespace orlo::test
