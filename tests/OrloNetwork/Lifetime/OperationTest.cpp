#include "OrloNetwork/ChainProbe.h"
#include "support/ErrorNumbers.h"
#include "support/LogCapture.h"
#include "support/Sockets.h"
#include "support/Waiting.h"

#include <BaseCommon/Interruption.h>
#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Lifetime/Operation.h>
#include <OrloNetwork/Retry/DelayedTasks.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>
#include <OrloNetwork/WebRequest.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

// Work that is broken off comes back, from wherever it is.
namespace orlo::test {
namespace {

using http::Operation;

std::string refusal()
{
    try {
        const Operation operation;
        return "begun";
    }
    catch (const std::runtime_error& thrown) {
        return thrown.what();
    }
}

class OperationTest : public testing::Test
{
protected:
    /// Runs the work on another thread, as that of the interruption.
    template <class Work>
    auto elsewhere(Work work)
    {
        return std::async(std::launch::async, [work, interruption = interruption] {
            const Interruption::Scope scope(interruption);
            return work();
        });
    }
    template <class Result>
    static bool comesBack(std::future<Result>& result)
    {
        return result.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    }

    std::shared_ptr<Interruption> interruption = std::make_shared<Interruption>();
    RetryPolicyGuard policy{{3, 3600}};
    LogCapture log;
};

TEST_F(OperationTest, givesTheThreadsWorkAnInterruption)
{
    EXPECT_EQ(Interruption::current(), nullptr);
    const Operation operation;
    EXPECT_NE(Interruption::current(), nullptr);
}

TEST_F(OperationTest, hearsThatOfTheWorkItBelongsTo)
{
    const Interruption::Scope scope(interruption);
    const Operation operation;
    EXPECT_EQ(Interruption::current(), interruption);
    const Operation part;
    EXPECT_EQ(Interruption::current(), interruption);
}

TEST_F(OperationTest, doesNotBeginInWorkThatIsBrokenOff)
{
    const Interruption::Scope scope(interruption);
    EXPECT_EQ(refusal(), "begun");
    interruption->request();
    EXPECT_EQ(refusal(), "the work was broken off");
}

TEST_F(OperationTest, hasNoFurtherPartOnceItIsBrokenOff)
{
    const Interruption::Scope scope(interruption);
    const Operation operation;
    EXPECT_EQ(refusal(), "begun");
    interruption->request();
    EXPECT_EQ(refusal(), "the work was broken off");
}

TEST_F(OperationTest, aRequestThatWaitsForItsAnswerIsCancelled)
{
    std::atomic<int> arrived{0};
    SocketServer silent([&](Connection& connection) {
        std::string request;
        connection.read(request);
        ++arrived;
        while (connection.read(request)) {
        }
    });
    auto request = elsewhere([url = utils::toWstring(silent.url())] {
        const Operation operation;
        ErrorCode error;
        const auto client = OrloWebService::CreateClient(url);
        const web::uri path(utils::toNative(std::string("/thing")));
        try {
            OrloWebService::ExecuteRequest(*client, OrloWebService::CreateRequest(web::http::methods::GET, path, web::json::value::null()),
                                           error);
        }
        catch (const web::http::http_exception& thrown) {
            return thrown.error_code().value();
        }
        return 0;
    });
    ASSERT_TRUE(waitUntil([&] { return arrived == 1; }));
    interruption->request();
    ASSERT_TRUE(comesBack(request));
    EXPECT_EQ(request.get(), cancelledCode);
}

TEST_F(OperationTest, theRetryLoopLeavesItsPause)
{
    std::atomic<int> attempts{0};
    auto call = elsewhere([&] {
        ErrorCode error;
        http::SendNormalRequestWithRetry(
            [&](ErrorCode& failure) {
                assignStatus(failure, 503);
                return ++attempts;
            },
            0, error);
        return error.GetValue();
    });
    ASSERT_TRUE(waitUntil([&] { return log.has(L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[1]"); }));
    interruption->request();
    ASSERT_TRUE(comesBack(call));
    EXPECT_EQ(call.get(), error::errorStatus) << "the failure of the last attempt stands";
    EXPECT_EQ(attempts, 1);
}

TEST_F(OperationTest, aChainLeavesItsPauseAndIsNotRepeatedAnyMore)
{
    const auto handler = std::make_shared<PlainHandler>();
    const auto error = std::make_shared<ErrorCode>();
    const auto attempts = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<OrloCallbackContext> context;
    {
        const Interruption::Scope scope(interruption);
        context = std::make_shared<OrloCallbackContext>(handler, true);
    }
    http::launchWithRetry(context, *error, [context, error, attempts] {
        ++*attempts;
        assignStatus(*error, 503);
        const auto current = context->handler;
        current->on_complete(503, L"", "Step", context, *error);
    });
    EXPECT_EQ(*attempts, 1);
    interruption->request();
    ASSERT_TRUE(waitUntil([&] { return handler->heard.count() == 1; }));
    EXPECT_EQ(*attempts, 2);
}

TEST_F(OperationTest, aDelayedTaskRunsAtOnceWhenItIsBrokenOff)
{
    const auto ran = std::make_shared<std::atomic<int>>(0);
    http::runAfter(
        std::chrono::hours(1), [ran] { ++*ran; }, interruption);
    interruption->request();
    EXPECT_TRUE(waitUntil([&] { return *ran == 1; }));
    http::runAfter(
        std::chrono::hours(1), [ran] { ++*ran; }, interruption);
    EXPECT_TRUE(waitUntil([&] { return *ran == 2; }));
}

} // namespace
} // namespace orlo::test
