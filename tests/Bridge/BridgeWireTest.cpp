#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Bridge/OrloBridge.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* lookUp = "/dataset/modelingid";
constexpr const char* projectOf7 = "/v2/projects/p-7";
constexpr const char* spaces3 = "/config/scope/Project/p-7/type/SpaceConfig?version=3";
constexpr const char* spaceVersions = "/config/scope/Project/p-7/type/SpaceConfig/versions";
constexpr const char* grid3 = "/config/scope/Project/p-7/type/GridConfig?version=3";
constexpr const char* gridVersions = "/config/scope/Project/p-7/type/GridConfig/versions";

class BridgeWireTest : public WireTest
{
protected:
    /// The manager remembers the last one: each test has its own.
    void expectProject(const std::string& modelingId)
    {
        server.expect("POST", lookUp).body("[\"" + modelingId + "\"]").reply(200, R"({"code":10000,"data":[{"projectId":"p-7"}]})");
        server.expect("GET", projectOf7).reply(200, R"({"code":10000,"data":{"id":"p-7","name":"Tower"}})");
    }

    IOrloBridge& bridge = *IOrloBridge::m_pBridge;
};

TEST_F(BridgeWireTest, isThereBeforeAnyCall)
{
    ASSERT_NE(IOrloBridge::m_pBridge, nullptr);
    EXPECT_NE(dynamic_cast<OrloBridge*>(IOrloBridge::m_pBridge), nullptr);
}

TEST_F(BridgeWireTest, anotherBridgeTakesThePlaceAndClearsItWhenItGoes)
{
    IOrloBridge* const installed = IOrloBridge::m_pBridge;
    {
        const OrloBridge another;
        EXPECT_EQ(IOrloBridge::m_pBridge, &another);
    }
    EXPECT_EQ(IOrloBridge::m_pBridge, nullptr);
    IOrloBridge::m_pBridge = installed;
}

TEST_F(BridgeWireTest, metadataIsTheWholeAnswerWhateverItsType)
{
    const char* const keys[] = {"SpaceConfigVersion",           "AxisGridVersions",
                                "BuildingItemVersions",         "BuildingItemElevationSetVersions",
                                "BuildingItemAxisGridVersions", "BuildingItemCoordinateVersions"};
    for (int key = 0; key < 6; ++key) {
        server.expect("GET", std::string("/version/17/meta?key=") + keys[key]).reply(200, "版本 3, no JSON", "text/html");
        EXPECT_EQ(bridge.GetDatasetMeta(error, static_cast<DatasetMetaKey>(key), L"17"), L"版本 3, no JSON") << key;
    }
    expectQuiet();
}

TEST_F(BridgeWireTest, aKeyOutsideTheTableIsAskedForWithAnEmptyText)
{
    server.expect("GET", "/version/17/meta?key=").reply(200, "");
    EXPECT_EQ(bridge.GetDatasetMeta(error, static_cast<DatasetMetaKey>(6), L"17"), L"");
    server.expect("POST", "/version/17/meta").body(R"({"":"3"})").reply(200);
    EXPECT_TRUE(bridge.UpsertDatasetMeta(error, static_cast<DatasetMetaKey>(-1), L"3", L"17"));
    expectQuiet();
}

TEST_F(BridgeWireTest, metadataIsStoredAsOneMember)
{
    server.expect("POST", "/version/17/meta").body(R"({"AxisGridVersions":"[3,\"x\"]"})").reply(200, "no JSON", "text/plain");
    EXPECT_TRUE(bridge.UpsertDatasetMeta(error, DatasetMetaKey::AxisGridVersions, L"[3,\"x\"]", L"17"));
    expectQuiet();
}

TEST_F(BridgeWireTest, readingMetadataFailsAsADirectRequestDoes)
{
    RequestingOperation operation;
    operation.method = "GET";
    operation.target = "/version/17/meta?key=SpaceConfigVersion";
    operation.failureWords = L"IVersion::GetDatasetMeta - code:";
    operation.succeeds = [&](ErrorCode& code) { return !bridge.GetDatasetMeta(code, DatasetMetaKey::SpaceConfigVersion, L"17").empty(); };
    operation.readsJson = false;
    operation.frame = L"orlo::OrloBridge::GetDatasetMeta";
    expectFailuresOf(operation, server, log);
}

TEST_F(BridgeWireTest, storingMetadataFailsWithoutTheTag)
{
    RequestingOperation operation;
    operation.method = "POST";
    operation.target = "/version/17/meta";
    operation.body = R"({"SpaceConfigVersion":"3"})";
    operation.failureWords = L"IVersion::UpsertDatasetMeta - code:";
    operation.isTagged = false;
    operation.succeeds = [&](ErrorCode& code) { return bridge.UpsertDatasetMeta(code, DatasetMetaKey::SpaceConfigVersion, L"3", L"17"); };
    operation.readsJson = false;
    operation.frame = L"orlo::OrloBridge::UpsertDatasetMeta";
    expectFailuresOf(operation, server, log);
}

TEST_F(BridgeWireTest, configurationsAreThoseOfTheProjectOfTheModelingId)
{
    expectProject("modeling-7");
    std::wstring spaces;
    server.expect("GET", spaces3).reply(200, R"({"version":3})");
    EXPECT_TRUE(bridge.GetSpaceConfig(L"modeling-7", 3, spaces, error));
    EXPECT_EQ(spaces, LR"({"version":3})");
    std::vector<int> versions{9};
    server.expect("GET", spaceVersions).reply(200, "[1,2,3]");
    EXPECT_TRUE(bridge.GetSpaceConfigAllVersions(L"modeling-7", versions, error));
    EXPECT_EQ(versions, (std::vector<int>{1, 2, 3}));
    std::string grid;
    server.expect("GET", grid3).reply(200, "any text", "text/plain");
    EXPECT_TRUE(bridge.GetAxisGridConfig(L"modeling-7", 3, grid, error));
    EXPECT_EQ(grid, "any text");
    server.expect("GET", gridVersions).reply(200, "[4]");
    EXPECT_TRUE(bridge.GetAxisGridAllVersions(L"modeling-7", versions, error));
    EXPECT_EQ(versions, (std::vector<int>{4}));
    expectQuiet(); // and the project was looked up once
}

TEST_F(BridgeWireTest, aListThatCannotBeReadIsEmptyAndTheErrorTells)
{
    expectProject("modeling-8");
    std::vector<int> versions{9};
    server.expect("GET", gridVersions).reply(403, "no");
    EXPECT_TRUE(bridge.GetAxisGridAllVersions(L"modeling-8", versions, error));
    EXPECT_EQ(versions, std::vector<int>{});
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 403);
}

TEST_F(BridgeWireTest, anUnknownModelingIdAsksForNoConfiguration)
{
    const auto ask = [&](const std::wstring& name, const std::function<bool()>& operation) {
        server.expect("POST", lookUp).body(R"(["nobody's"])").reply(200, R"({"code":10000,"data":[]})");
        log.clear();
        EXPECT_FALSE(operation());
        expectClear(error);
        EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]Failed to get project id by modeling id :nobody's",
                                      L"E@orlo::OrloBridge::" + name + L" null pointer to project"}));
        server.verify();
    };
    std::wstring spaces = L"untouched";
    std::string grid = "untouched";
    std::vector<int> versions{9};
    ask(L"GetSpaceConfig", [&] { return bridge.GetSpaceConfig(L"nobody's", 3, spaces, error); });
    ask(L"GetSpaceConfigAllVersions", [&] { return bridge.GetSpaceConfigAllVersions(L"nobody's", versions, error); });
    ask(L"GetAxisGridConfig", [&] { return bridge.GetAxisGridConfig(L"nobody's", 3, grid, error); });
    ask(L"GetAxisGridAllVersions", [&] { return bridge.GetAxisGridAllVersions(L"nobody's", versions, error); });
    EXPECT_EQ(spaces, L"untouched");
    EXPECT_EQ(grid, "untouched");
    EXPECT_EQ(versions, std::vector<int>{9});
}

TEST_F(BridgeWireTest, theErrorOfTheLookUpStays)
{
    std::string grid;
    server.expect("POST", lookUp).body(R"(["modeling-9"])").reply(401, "who are you");
    EXPECT_FALSE(bridge.GetAxisGridConfig(L"modeling-9", 3, grid, error));
    expectHttpError(error, errorStatusValue, L"HttpError", L"who are you", 401);
}

TEST_F(BridgeWireTest, theLogTellsTheSourceOfANullProject)
{
    server.expect("POST", lookUp).body(R"([""])").reply(200, R"({"data":[]})");
    std::vector<int> versions;
    EXPECT_FALSE(bridge.GetAxisGridAllVersions(L"", versions, error));
    EXPECT_EQ(log.entries().back().source, "source/OrloProjectManager/Bridge/OrloBridge.cpp");
}

TEST_F(BridgeWireTest, theProjectOfAModelingId)
{
    server.expect("POST", lookUp).body(R"(["modeling-7"])").reply(500, "");
    server.expect("POST", lookUp).body(R"(["modeling-7"])").reply(200, R"({"data":[{"projectId":"p-7"}]})");
    EXPECT_EQ(bridge.GetProjectIdByModelingId(error, L"modeling-7"), L"p-7");
    expectClear(error);
}

TEST_F(BridgeWireTest, aVersionIsMadeByNumber)
{
    server.expect("POST", "/datasets/d-1/versions/4/create")
        .body(R"({"metaInfo":"{}","status":"Published","description":"为"})")
        .reply(503, "");
    server.expect("POST", "/datasets/d-1/versions/4/create")
        .body(R"({"metaInfo":"{}","status":"Published","description":"为"})")
        .reply(200, R"({"code":10000})");
    EXPECT_TRUE(bridge.CreateVersionByNumber(error, L"d-1", 4, L"{}", true, L"为"));
    expectClear(error);
}

TEST_F(BridgeWireTest, aVersionIsMarkedAsPublished)
{
    server.expect("POST", "/datasets/d-1/4/markPublish").body(R"({"description":"text"})").reply(200, R"({"data":true})");
    EXPECT_TRUE(bridge.MarkPublish("d-1", 4, L"text", error));
    expectQuiet();
}

TEST_F(BridgeWireTest, aTranslationIsTriggered)
{
    server.expect("POST", "/v1/upload").body(R"({"dataSetId":"d-1","versionId":4,"toType":"glb"})").reply(200);
    EXPECT_TRUE(bridge.TriggerSightlineTranslateWorkerByUploadJob(error, "d-1", 4, L"glb"));
    EXPECT_FALSE(bridge.TriggerSightlineTranslateWorkerByUploadJob(error, "", -1, L"glb"));
    expectGenericError(error, badInputValue, L"GenericError", L"dsId is empty or dsVersion < 0");
}

TEST_F(BridgeWireTest, theAddressOfAFamilysFile)
{
    server.expect("GET", "/structural/project/p-1/suite/f-1/3").reply(200, R"({"data":"https://store/file?sig=1"})", "text/plain");
    EXPECT_EQ(bridge.GetFamilyFileUrl(error, L"p-1", L"f-1", L"3"), L"https://store/file?sig=1");
    expectQuiet();
}

TEST_F(BridgeWireTest, eachIdOfAFamilysFileIsOneSegment)
{
    server.expect("GET", "/structural/project/p%2F1/suite/%E6%97%8F%3F/%23").reply(200, R"({"data":"address"})");
    EXPECT_EQ(bridge.GetFamilyFileUrl(error, L"p/1", L"族?", L"#"), L"address");
}

TEST_F(BridgeWireTest, aFamilysFileNeedsAllThreeIds)
{
    for (int missing = 0; missing < 3; ++missing) {
        error.Clear();
        const auto id = [&](int place) { return std::wstring(place == missing ? L"" : L"id"); };
        EXPECT_EQ(bridge.GetFamilyFileUrl(error, id(0), id(1), id(2)), L"");
        expectGenericError(error, badInputValue, L"GenericError", L"projectId or familyId or familyVersion is empty");
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(BridgeWireTest, anAnswerWithoutAFamilysFileIsLogged)
{
    for (const char* body : {"{}", "[]", R"({"data":7})", R"({"data":null})"}) {
        log.clear();
        server.expect("GET", "/structural/project/p/suite/f/1").reply(200, body);
        EXPECT_EQ(bridge.GetFamilyFileUrl(error, L"p", L"f", L"1"), L"") << body;
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetFamilyFileUrl, response does not have data field."}) << body;
    }
    for (const char* body : {"", "<html>", R"({"data":"x")"}) {
        log.clear();
        server.expect("GET", "/structural/project/p/suite/f/1").reply(200, body);
        EXPECT_EQ(bridge.GetFamilyFileUrl(error, L"p", L"f", L"1"), L"") << body;
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetFamilyFileUrl, response parse error."}) << body;
    }
    expectClear(error);
}

TEST_F(BridgeWireTest, theAddressOfAFamilysFileIsAskedForAgain)
{
    RequestingOperation operation;
    operation.method = "GET";
    operation.target = "/structural/project/p/suite/f/1";
    operation.failureWords = L"OrloWebService::GetFamilyFileUrl - code:";
    operation.readsJson = false;
    operation.succeeds = [&](ErrorCode& code) { return !bridge.GetFamilyFileUrl(code, L"p", L"f", L"1").empty(); };
    operation.goodAnswer = R"({"data":"address"})";
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
}

} // namespace
} // namespace orlo::test
