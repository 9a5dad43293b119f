#include "support/ProjectObjectTest.h"
#include "support/RawServer.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Call/WebCall.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace orlo::test {
namespace {

/// Lets a stalled server go on when the test has waited much longer than the time-out under test.
class LateRelease
{
public:
    LateRelease(RawServer& server, std::chrono::seconds bound)
        : m_thread([this, &server, bound] {
              std::unique_lock lock(m_mutex);
              m_over.wait_for(lock, bound, [this] { return m_isOver; });
              server.release();
          })
    {}

    ~LateRelease()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_over.notify_all();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_over;
    bool m_isOver = false;
    std::thread m_thread;
};

class VersionByMvdWireTest : public WireTest
{
protected:
    bool get(const std::string& datasetId, int version, const std::wstring& mvd, ErrorCode& ec)
    {
        return http::SendNormalRequestWithRetry(&OrloWebService::GetDatasetVersionByMvd, false, ec, out, datasetId, version, mvd);
    }

    http::ORLOHTTPPayloadDatasetVersion out;
};

TEST_F(VersionByMvdWireTest, asksForTheLatestSuccessfulVersionBelowZero)
{
    for (const int version : {-1, -7}) {
        out = {};
        server.expect("GET", "/v2/datasets/d-1/version/latest?onlySuccess=true&mvd=base")
            .reply(200, R"({"code":10000,"data":{"id":12,"version":4,"status":"Success"}})");
        EXPECT_TRUE(get("d-1", version, L"", error));
        EXPECT_EQ(out.id, 12);
        EXPECT_EQ(out.version, 4);
        EXPECT_EQ(out.status, L"Success");
    }
    expectQuiet();
}

TEST_F(VersionByMvdWireTest, asksForAVersionByItsNumberSuccessfulOrNot)
{
    server.expect("GET", "/v2/datasets/d-1/version/0?onlySuccess=false&mvd=base").reply(200, R"({"id":11})");
    EXPECT_TRUE(get("d-1", 0, L"", error));
    EXPECT_EQ(out.id, 11) << "a record without data is the body itself";
    server.expect("GET", "/v2/datasets/d-1/version/25?onlySuccess=false&mvd=base").reply(200, R"({"id":12})");
    EXPECT_TRUE(get("d-1", 25, L"", error));
    EXPECT_EQ(out.id, 12);
    expectClear(error);
}

TEST_F(VersionByMvdWireTest, sendsTheConditionThatIsGivenEncoded)
{
    server.expect("GET", "/v2/datasets/d-1/version/1?onlySuccess=false&mvd=a%20%26%E6%A8%A1").reply(200, "{}");
    EXPECT_TRUE(get("d-1", 1, L"a &模", error));
    server.expect("GET", "/v2/datasets/d-1/version/latest?onlySuccess=true&mvd=full").reply(200, "{}");
    EXPECT_TRUE(get("d-1", -1, L"full", error));
}

TEST_F(VersionByMvdWireTest, status200IsAllThatIsNeeded)
{
    for (const char* body : {R"({"code":7,"message":"no"})", "{}", "[]", "null", ""}) {
        server.expect("GET", "/v2/datasets/d-1/version/1?onlySuccess=false&mvd=base").reply(200, body);
        EXPECT_TRUE(get("d-1", 1, L"", error)) << body;
        EXPECT_EQ(out.id, 0);
    }
    expectQuiet();
}

TEST_F(VersionByMvdWireTest, aDatasetWithoutAnIdIsRefusedAndNotRetried)
{
    EXPECT_FALSE(get("", 1, L"base", error));
    expectHttpError(error, 3892314114, L"Invalid argument", L"datasetId is empty", 0);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK][OrloWebService::GetDatasetVersionByMvd] invalid input"});
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(VersionByMvdWireTest, failsAsEveryRetriedCallDoes)
{
    expectFailuresOf({"GET", "/v2/datasets/d-1/version/latest?onlySuccess=true&mvd=base", "",
                      L"OrloWebService::GetDatasetVersionByMvd - code:", [&](ErrorCode& ec) { return get("d-1", -1, L"", ec); }},
                     server, log);
    EXPECT_EQ(out.id, 0);
}

TEST_F(VersionByMvdWireTest, waitsNoLongerThanTheTimeoutThatTheProcessReadFirst)
{
    RawServer stalled(RawAnswer::stall(rawOk(R"({"id":12})")));
    const RetryLimit one(1);
    OrloConfig config = host.config();
    config.serviceUrls[L"project"] = stalled.wideUrl();
    config.httpTimeoutSeconds = 1;
    OrloConfigManager::Configure(config);
    if (timeoutOfFirstUse() != 1)
        GTEST_SKIP() << "another test of this process was the first to use the time-out";
    const LateRelease release(stalled, std::chrono::seconds(15));
    EXPECT_FALSE(get("d-1", 1, L"", error));
    expectHttpError(error, 3892314114, L"generic exception", silenceOf(stalled.url()), timeoutCode);

    config.httpTimeoutSeconds = 60;
    OrloConfigManager::Configure(config);
    EXPECT_FALSE(get("d-1", 1, L"", error)) << "a later change has no effect";
    expectHttpError(error, 3892314114, L"generic exception", silenceOf(stalled.url()), timeoutCode);
}

} // namespace
} // namespace orlo::test
