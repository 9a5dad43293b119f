#include "support/WireTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Transfer/TranslationWeb.h>

namespace orlo::test {
namespace {

class TranslationTest : public WireTest
{
protected:
    bool trigger(const std::string& dsId, int dsVersion)
    {
        return OrloWebService::TriggerSightlineTranslateWorkerByUploadJob(error, dsId, dsVersion, L"glTF 三维");
    }
    /// As the bridge calls it.
    bool triggerWithRetry()
    {
        return http::SendNormalRequestWithRetry(&OrloWebService::TriggerSightlineTranslateWorkerByUploadJob, false, error, "d-1", 3,
                                                L"glTF");
    }
};

TEST_F(TranslationTest, sendsTheVersionAndTheWantedForm)
{
    server.expect("POST", "/v1/upload")
        .header("Content-Type", "application/json")
        .header("Authorization", "Bearer token-secret-1")
        .body(R"({"dataSetId":"d-1","versionId":3,"toType":"glTF 三维"})")
        .reply(200, R"({"code":10000})");
    EXPECT_TRUE(trigger("d-1", 3));
    expectQuiet();
}

TEST_F(TranslationTest, goesToAServiceOfItsOwn)
{
    OrloConfig config = host.config();
    for (auto& [service, url] : config.serviceUrls)
        url = service == L"slproxy" ? server.wideUrl() + L"/proxy" : std::wstring(L"http://127.0.0.1:1");
    OrloConfigManager::Configure(config);
    server.expect("POST", "/proxy/v1/upload").anyBody().reply(200);
    EXPECT_TRUE(trigger("d-1", 3));
}

TEST_F(TranslationTest, theStatusIsAllThatCounts)
{
    for (const char* body : {"", "<html>", R"({"code":7,"message":"no"})"}) {
        server.expect("POST", "/v1/upload").anyBody().reply(200, body);
        EXPECT_TRUE(trigger("d-1", 3)) << body;
    }
    expectQuiet();
}

TEST_F(TranslationTest, anEmptyIdAndANegativeVersionTogetherAreRefused)
{
    EXPECT_FALSE(trigger("", -1));
    expectGenericError(error, badInputValue, L"GenericError", L"dsId is empty or dsVersion < 0");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(TranslationTest, anEmptyIdAloneIsNotRefused)
{
    server.expect("POST", "/v1/upload").body(R"({"dataSetId":"","versionId":0,"toType":"glTF 三维"})").reply(200);
    EXPECT_TRUE(trigger("", 0));
}

TEST_F(TranslationTest, aNegativeVersionAloneIsNotRefused)
{
    server.expect("POST", "/v1/upload").body(R"({"dataSetId":"d-1","versionId":-1,"toType":"glTF 三维"})").reply(200);
    EXPECT_TRUE(trigger("d-1", -1));
}

TEST_F(TranslationTest, anotherStatusFailsAndIsLogged)
{
    server.expect("POST", "/v1/upload").anyBody().reply(404, "no such dataset");
    EXPECT_FALSE(trigger("d-1", 3));
    expectHttpError(error, errorStatusValue, L"HttpError", L"no such dataset", 404);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::TriggerSightlineTranslateWorkerByUploadJob - code:404"});
}

TEST_F(TranslationTest, isRepeatedByTheRetryLoop)
{
    server.expect("POST", "/v1/upload").anyBody().times(2).reply(503, "");
    server.expect("POST", "/v1/upload").body(R"({"dataSetId":"d-1","versionId":3,"toType":"glTF"})").reply(200);
    EXPECT_TRUE(triggerWithRetry());
    expectClear(error);
}

} // namespace
} // namespace orlo::test
