#include "support/RawServer.h"
#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Bridge/OrloBridge.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/NetworkProject/Call/WebCall.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

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
    operation.operationName = L"orlo::OrloBridge::GetDatasetMeta";
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
    operation.operationName = L"orlo::OrloBridge::UpsertDatasetMeta";
    expectFailuresOf(operation, server, log);
}

TEST_F(BridgeWireTest, metadataWaitsNoLongerThanTheTimeOutThatTheProcessReadFirst)
{
    RawServer stalled(RawAnswer::stall(rawOk("3")));
    host.change([&](OrloConfig& config) {
        config.serviceUrls[L"project"] = stalled.wideUrl();
        config.httpTimeoutSeconds = 1;
    });
    if (timeoutOfFirstUse() != 1)
        GTEST_SKIP() << "another test of this process was the first to use the time-out";
    EXPECT_EQ(bridge.GetDatasetMeta(error, DatasetMetaKey::SpaceConfigVersion, L"17"), L"");
    expectHttpError(error, exceptionValue, L"generic exception", silenceOf(stalled.url()), timeoutCode);

    host.change([&](OrloConfig& config) {
        config.serviceUrls[L"project"] = stalled.wideUrl();
        config.httpTimeoutSeconds = 60;
    });
    error.Clear();
    EXPECT_FALSE(bridge.UpsertDatasetMeta(error, DatasetMetaKey::SpaceConfigVersion, L"3", L"17")) << "a later change has no effect";
    expectHttpError(error, exceptionValue, L"generic exception", silenceOf(stalled.url()), timeoutCode);
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

TEST_F(BridgeWireTest, aListOfSpacesThatCannotBeReadIsEmptyAndTheErrorTells)
{
    expectProject("modeling-10");
    std::vector<int> versions{9};
    server.expect("GET", spaceVersions).reply(403, "no");
    EXPECT_TRUE(bridge.GetSpaceConfigAllVersions(L"modeling-10", versions, error));
    EXPECT_EQ(versions, std::vector<int>{});
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 403);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::GetSpaceConfigVersions - code:403"});
}

TEST_F(BridgeWireTest, aConfigurationThatCannotBeReadIsAFailure)
{
    expectProject("modeling-11");
    std::wstring spaces = L"untouched";
    server.expect("GET", spaces3).reply(403, "no spaces");
    EXPECT_FALSE(bridge.GetSpaceConfig(L"modeling-11", 3, spaces, error));
    EXPECT_EQ(spaces, L"untouched");
    expectHttpError(error, errorStatusValue, L"HttpError", L"no spaces", 403);
    error.Clear();
    std::string grid = "untouched";
    server.expect("GET", grid3).reply(403, "no grid");
    EXPECT_FALSE(bridge.GetAxisGridConfig(L"modeling-11", 3, grid, error));
    EXPECT_EQ(grid, "untouched");
    expectHttpError(error, errorStatusValue, L"HttpError", L"no grid", 403);
}

TEST_F(BridgeWireTest, aRememberedGridServesTheBridge)
{
    constexpr const char* document =
        R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[],"arcs":[]},"id":"g-3"}})";
    constexpr const char* answer = R"({"version":3,"id":"g-3","configValue":"{\"schemaVersion\":3,\"data\":{}}"})";
    expectProject("modeling-12");
    const auto project = ICollaborationProjectManager::Get()->GetProjectByModelingId("modeling-12", error);
    ASSERT_NE(project, nullptr);
    server.expect("GET", grid3).reply(200, answer);
    ASSERT_NE(project->GetAxisGridConfig(3, error), nullptr);
    server.verify();
    std::string grid;
    EXPECT_TRUE(bridge.GetAxisGridConfig(L"modeling-12", 3, grid, error));
    EXPECT_EQ(grid, document) << "what the object remembers, without a request";

    // The manager remembers one project: after a look-up of another the object is a new one.
    for (const char* modelingId : {"modeling-13", "modeling-12"}) {
        expectProject(modelingId);
        server.expect("GET", grid3).reply(200, answer);
        EXPECT_TRUE(bridge.GetAxisGridConfig(utils::toWstring(std::string(modelingId)), 3, grid, error));
        EXPECT_EQ(grid, answer) << modelingId;
        server.verify();
    }
    expectQuiet();
}

TEST_F(BridgeWireTest, aProjectThatCannotBeLoadedIsANullProject)
{
    server.expect("POST", lookUp).body(R"(["modeling-14"])").reply(200, R"({"code":10000,"data":[{"projectId":"p-7"}]})");
    server.expect("GET", projectOf7).reply(403, "not yours");
    std::string grid = "untouched";
    EXPECT_FALSE(bridge.GetAxisGridConfig(L"modeling-14", 3, grid, error));
    EXPECT_EQ(grid, "untouched");
    server.verify();
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::OrloBridge::GetAxisGridConfig null pointer to project"});
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

TEST_F(BridgeWireTest, theProjectOfAModelingIdIsAskedForAgain)
{
    RequestingOperation operation;
    operation.method = "POST";
    operation.target = lookUp;
    operation.body = R"(["modeling-7"])";
    operation.failureWords = L"OrloWebService::getProjectIdByModelingId - code:";
    operation.succeeds = [&](ErrorCode& code) { return !bridge.GetProjectIdByModelingId(code, L"modeling-7").empty(); };
    operation.goodAnswer = R"({"data":[{"projectId":"p-7"}]})";
    operation.operationName = L"orlo::OrloBridge::GetProjectIdByModelingId";
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
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

TEST_F(BridgeWireTest, aVersionThatIsMadeByNumberIsAskedForAgain)
{
    RequestingOperation operation;
    operation.method = "POST";
    operation.target = "/datasets/d-1/versions/4/create";
    operation.body = R"({"metaInfo":"{}","status":"WIP","description":""})";
    operation.succeeds = [&](ErrorCode& code) { return bridge.CreateVersionByNumber(code, L"d-1", 4, L"{}", false, L""); };
    operation.goodAnswer = R"({"code":10000})";
    operation.operationName = L"orlo::OrloBridge::CreateVersionByNumber";
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
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

TEST_F(BridgeWireTest, aTranslationIsAskedForAgain)
{
    RequestingOperation operation;
    operation.method = "POST";
    operation.target = "/v1/upload";
    operation.body = R"({"dataSetId":"d-1","versionId":4,"toType":"glb"})";
    operation.failureWords = L"OrloWebService::TriggerSightlineTranslateWorkerByUploadJob - code:";
    operation.readsJson = false;
    operation.succeeds = [&](ErrorCode& code) { return bridge.TriggerSightlineTranslateWorkerByUploadJob(code, "d-1", 4, L"glb"); };
    operation.operationName = L"orlo::OrloBridge::TriggerSightlineTranslateWorkerByUploadJob";
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
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
    operation.operationName = L"orlo::OrloBridge::GetFamilyFileUrl";
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
}

} // namespace
} // namespace orlo::test
