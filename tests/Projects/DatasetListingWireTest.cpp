#include "support/ProjectObjectTest.h"

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* draftTarget = "/projects/p-1/dataSets/byStatus?status=draft";
constexpr const char* committedTarget = "/projects/p-1/dataSets/byStatus?status=committed";

class DatasetListingWireTest : public ProjectObjectTest
{
protected:
    bool list(int status) { return project->GetDatasetBySatatus(static_cast<DatasetStatus>(status), out, error); }

    std::vector<DatasetInfo> out;
};

TEST_F(DatasetListingWireTest, listsTheDraftsInTheOrderOfTheAnswer)
{
    server.expect("GET", draftTarget)
        .reply(200, R"([{"id":"d-2","name":"模型","type":"zok","description":"x","ownerId":"o","specialtyId":"s","teamId":"t",)"
                    R"("projectId":"p-1","folderId":"f","modelingDatasetId":"m","codeVersion":3,"tipVersion":4},{"id":"d-1"}])");
    EXPECT_TRUE(list(0));
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].id, "d-2");
    EXPECT_EQ(out[0].modelingDatasetId, "") << "a listing has no key for it";
    EXPECT_EQ(out[0].name, L"模型");
    EXPECT_EQ(static_cast<int>(out[0].type), 2);
    EXPECT_EQ(out[0].description, L"x");
    EXPECT_EQ(out[0].ownerId, L"o");
    EXPECT_EQ(out[0].specialtyId, L"s");
    EXPECT_EQ(out[0].teamId, L"t");
    EXPECT_EQ(out[0].projectId, L"p-1");
    EXPECT_EQ(out[1].id, "d-1");
    EXPECT_EQ(static_cast<int>(out[1].type), 0);
    expectQuiet();
}

TEST_F(DatasetListingWireTest, listsTheCommittedOnesBehindWhatTheListHolds)
{
    out.resize(1);
    server.expect("GET", committedTarget).reply(200, R"([{"id":"d-1"}])");
    EXPECT_TRUE(list(1));
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[1].id, "d-1");
}

TEST_F(DatasetListingWireTest, findsTheKindFromTheExactText)
{
    const std::pair<const char*, int> kinds[] = {
        {"workunit", 2}, {"standard", 2},     {"zok", 2}, {"noneStandard", 1}, {"cloudify", 1}, {"dwg", 1},      {"WorkUnit", 0},
        {"ZOK", 0},      {"nonestandard", 0}, {"Dwg", 0}, {"NoneStandard", 0}, {"", 0},         {"workunit ", 0}};
    for (const auto& [text, kind] : kinds) {
        out.clear();
        server.expect("GET", draftTarget).reply(200, R"([{"type":")" + std::string(text) + R"("}])");
        EXPECT_TRUE(list(0));
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(static_cast<int>(out[0].type), kind) << text;
    }
}

TEST_F(DatasetListingWireTest, aStatusWithoutATextSendsNothing)
{
    error.Assign(0xE8000001, std::make_shared<GenericError>(L"earlier"));
    log.clear();
    for (const int status : {2, -1, 7})
        EXPECT_FALSE(list(status)) << status;
    EXPECT_EQ(server.requestCount(), 0u);
    expectGenericError(error, 3892314113, L"GenericError", L"earlier");
}

TEST_F(DatasetListingWireTest, aStatusWithoutATextAssignsNoErrorAndLogsNothing)
{
    EXPECT_FALSE(list(2));
    expectQuiet();
}

TEST_F(DatasetListingWireTest, theAnswerIsTheBareArray)
{
    for (const char* body : {R"({"code":10000,"data":[{"id":"d-1"}]})", "{}", "null", "7", "[]", ""}) {
        server.expect("GET", draftTarget).reply(200, body);
        EXPECT_TRUE(list(0)) << body;
        EXPECT_TRUE(out.empty()) << body;
    }
    expectQuiet();
}

TEST_F(DatasetListingWireTest, failsAsEveryRequestingOperationDoesInTheWordsOfTheProjectListing)
{
    expectFailuresOf({"GET", committedTarget, "", L"OrloWebService::GetAllProjects - code:",
                      [&](ErrorCode& ec) { return project->GetDatasetBySatatus(DatasetStatus::Committed, out, ec); }},
                     server, log);
    EXPECT_TRUE(out.empty());
}

TEST_F(DatasetListingWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", draftTarget).reply(200, "[]");
    EXPECT_TRUE(list(0));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetDatasetBySatatus 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

} // namespace
} // namespace orlo::test
