// What a host can see of the calls that are made for it.

#include "support/RawServer.h"
#include "support/TransferTestSupport.h"
#include "support/Waiting.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/RequestError.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/CallObserver.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <mutex>
#include <regex>
#include <stdexcept>
#include <thread>

namespace orlo::test {
namespace {

using http::CallRecord;

class CallObserverTest : public TransferTest
{
protected:
    ~CallObserverTest() override
    {
        http::setCallObserver(nullptr);
        http::setRequestIds(false);
    }

    void observe()
    {
        http::setCallObserver([this](const CallRecord& record) {
            const std::lock_guard lock(m_mutex);
            m_records.push_back(record);
        });
    }
    std::vector<CallRecord> records() const
    {
        const std::lock_guard lock(m_mutex);
        return m_records;
    }
    void listProjects() { ICollaborationProjectManager::Get()->GetAllProjects(error); }

    const std::string projects = "/projects?scenario=DEFAULT";

private:
    mutable std::mutex m_mutex;
    std::vector<CallRecord> m_records;
};

TEST_F(CallObserverTest, tellsOfACallWhenItHasEnded)
{
    observe();
    platform.expect("GET", projects).reply(200, "[]");
    listProjects();
    ASSERT_EQ(records().size(), 1U);
    const CallRecord record = records().at(0);
    EXPECT_EQ(record.operation, L"OrloWebService::GetAllProjects");
    EXPECT_EQ(record.method, L"GET");
    EXPECT_EQ(record.host, L"127.0.0.1");
    EXPECT_EQ(record.port, platform.port());
    EXPECT_EQ(record.path, L"/projects");
    EXPECT_EQ(record.status, 200);
    EXPECT_EQ(record.failure, NetworkFailure::none);
    EXPECT_EQ(record.bytesSent, 0U);
    EXPECT_EQ(record.bytesReceived, 2U);
    EXPECT_GT(record.milliseconds, 0);
    EXPECT_EQ(record.attempt, 1U);
    EXPECT_TRUE(std::regex_match(record.requestId, std::wregex(L"[0-9a-f-]{36}")));
    EXPECT_EQ(platform.requests().at(0).header("X-Request-Id"), utils::toString(record.requestId));
    EXPECT_TRUE(log.has(L"I [ORLOSDK]OrloWebService::GetAllProjects - request:" + record.requestId + L" - GET /projects - status:200"));
}

TEST_F(CallObserverTest, tellsOfEachAttempt)
{
    const RetryLimit three(3);
    observe();
    platform.expect("GET", projects).reply(503);
    platform.expect("GET", projects).reset();
    platform.expect("GET", projects).reply(200, "[]");
    listProjects();
    ASSERT_EQ(records().size(), 3U);
    EXPECT_EQ(records()[0].status, 503);
    EXPECT_EQ(records()[0].attempt, 1U);
    EXPECT_EQ(records()[1].status, 0);
    EXPECT_EQ(records()[1].failure, NetworkFailure::connectionLost);
    EXPECT_EQ(records()[1].attempt, 2U);
    EXPECT_EQ(records()[2].status, 200);
    EXPECT_EQ(records()[2].attempt, 3U);
    EXPECT_NE(records()[0].requestId, records()[1].requestId);
    EXPECT_NE(records()[1].requestId, records()[2].requestId);
}

TEST_F(CallObserverTest, tellsOfTheStepsOfATransferAndGivesTheSignedAddressNoHeader)
{
    observe();
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c?sig=secret-signature")));
    store.expect("PUT", "/c?sig=secret-signature").anyBody().withoutHeader("X-Request-Id").reply(200, "{}");
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFile(error, localFile("u", "12345"), L"n", L"p", false)).success);
    ASSERT_EQ(records().size(), 2U);
    EXPECT_EQ(records()[0].operation, L"OrloWebService::AcquireUploadAuthorityAsync");
    EXPECT_EQ(records()[1].operation, L"OrloWebService::PutFileAsync");
    EXPECT_EQ(records()[1].path, L"/c");
    EXPECT_EQ(records()[1].bytesSent, 5U);
    EXPECT_EQ(records()[1].bytesReceived, 2U);
    EXPECT_NE(records()[1].requestId, L"");
    EXPECT_FALSE(log.holds(L"secret-signature"));
}

TEST_F(CallObserverTest, tellsOfABatch)
{
    observe();
    expectBatch(R"(["a/b","a/c"])", {{"a/b", atStore("/b")}, {"a/c", atStore("/c")}});
    store.expect("GET", "/b").reply(fileReply("123"));
    store.expect("GET", "/c").reply(fileReply("1234"));
    store.anyOrder();
    EXPECT_TRUE(outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b", "a/c"}, nullptr)).success);
    ASSERT_EQ(records().size(), 3U);
    EXPECT_EQ(records()[1].bytesReceived + records()[2].bytesReceived, 7U);
}

TEST_F(CallObserverTest, isToldNothingOnceItIsTakenAway)
{
    const RetryLimit three(3);
    observe();
    http::setCallObserver(nullptr);
    platform.expect("GET", projects).withoutHeader("X-Request-Id").reply(200, "[]");
    listProjects();
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(CallObserverTest, tellsOfACancelledCallAsSuch)
{
    observe();
    const RawServer silent(RawAnswer::stall());
    moveServices(host, silent.url());
    const CancelToken token;
    std::thread cancelling([&] {
        EXPECT_TRUE(waitUntil([&] { return silent.connectionCount() == 1; }));
        token.cancel();
    });
    {
        const CallScope scope(token);
        listProjects();
    }
    cancelling.join();
    ASSERT_EQ(records().size(), 1U);
    EXPECT_EQ(records()[0].failure, NetworkFailure::cancelled);
    EXPECT_EQ(records()[0].status, 0);
}

TEST_F(CallObserverTest, mayThrowAndNobodyIsTheWorseForIt)
{
    http::setCallObserver([](const CallRecord&) { throw std::runtime_error("host"); });
    platform.expect("GET", projects).reply(200, "[]");
    listProjects();
    expectClear(error);
}

TEST_F(CallObserverTest, mayBeReplacedWhileCallsAreUnderWay)
{
    std::atomic<int> told{0};
    platform.always("GET", projects).reply(200, "[]");
    std::thread replacing([&] {
        for (int i = 0; i < 200; ++i)
            http::setCallObserver([&](const CallRecord&) { ++told; });
    });
    for (int i = 0; i < 50; ++i)
        listProjects();
    replacing.join();
    EXPECT_GT(told, 0);
}

TEST_F(CallObserverTest, requestIdsAloneGoIntoTheHeaderTheLogAndTheError)
{
    http::setRequestIds(true);
    platform.expect("GET", projects).reply(404, "none");
    listProjects();
    const RequestDetails* const details = requestDetails(error);
    ASSERT_NE(details, nullptr);
    EXPECT_EQ(platform.requests().at(0).header("X-Request-Id"), utils::toString(details->requestId));
    EXPECT_TRUE(log.has(L"I [ORLOSDK]OrloWebService::GetAllProjects - request:" + details->requestId + L" - GET /projects - status:404"));
}

} // namespace
} // namespace orlo::test
