#include "OrloNetwork/ChainProbe.h"
#include "support/LogCapture.h"
#include "support/ThreadShortage.h"
#include "support/Waiting.h"

#include <OrloNetwork/Retry/GenericRetryHandler.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>
#include <pplx/pplxtasks.h>

#include <atomic>
#include <cstdlib>

namespace orlo::test {
namespace {

using http::GenericRetryHandler;
using http::launchWithRetry;

/// A chain whose request is a function of the test. Repeats at once, three times at the most.
class GenericRetryHandlerTest : public testing::Test
{
protected:
    /// A request which answers by the number of its attempt, counted from 1.
    void launch(std::function<void(int)> request)
    {
        launchWithRetry(context, error, [this, request] { request(++attempts); });
    }

    void answer(int status, const std::wstring& body = {})
    {
        const auto current = context->handler;
        current->on_complete(status, body, "Step", context, error);
    }

    void answerStatus(int status, const std::wstring& body = {})
    {
        assignStatus(error, status);
        answer(status, body);
    }

    bool waitForTheEnd() const
    {
        return waitUntil([this] { return handler->heard.count() > 0; });
    }

    RetryPolicyGuard policy{{3, 0}};
    LogCapture log;
    ErrorCode error;
    std::shared_ptr<PlainHandler> handler = std::make_shared<PlainHandler>();
    std::shared_ptr<OrloCallbackContext> context = std::make_shared<OrloCallbackContext>(handler, true);
    std::atomic<int> attempts{0};
};

TEST_F(GenericRetryHandlerTest, standsInTheContextWhileTheRequestRuns)
{
    std::shared_ptr<IOrloCallback> seen;
    launch([&](int) {
        seen = context->handler;
        answer(200);
    });
    EXPECT_NE(std::dynamic_pointer_cast<GenericRetryHandler>(seen), nullptr);
}

TEST_F(GenericRetryHandlerTest, passesAGoodAnswerOnOnceAndWithoutALine)
{
    launch([&](int) { answer(200, L"fine"); });
    const auto heard = handler->heard.all();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].status, 200);
    EXPECT_EQ(heard[0].body, L"fine");
    EXPECT_EQ(heard[0].stepKey, "Step");
    EXPECT_TRUE(heard[0].propagate);
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(GenericRetryHandlerTest, putsTheChainsHandlerBackBeforeItIsCalled)
{
    launch([&](int) { answer(200); });
    ASSERT_EQ(handler->heard.count(), 1U);
    EXPECT_TRUE(handler->heard.all()[0].handlerWasInContext);
    EXPECT_EQ(context->handler, handler);
}

TEST_F(GenericRetryHandlerTest, repeatsUpToTheLimitAndPassesTheLastAnswerOn)
{
    launch([&](int attempt) { answerStatus(503, L"answer " + std::to_wstring(attempt)); });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(attempts, 4);
    const auto heard = handler->heard.all();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].status, 503);
    EXPECT_EQ(heard[0].body, L"answer 4");
    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[1]",
                                                      L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[2]",
                                                      L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[3]"}));
}

TEST_F(GenericRetryHandlerTest, aLaterSuccessIsAllThatTheChainHears)
{
    bool wasClear = false;
    launch([&](int attempt) {
        wasClear = error.isClear() && !error.GetCategory();
        if (attempt < 3)
            return answerStatus(500);
        answer(200, L"at last");
    });
    ASSERT_TRUE(waitForTheEnd());
    const auto heard = handler->heard.all();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].body, L"at last");
    EXPECT_EQ(attempts, 3);
    EXPECT_TRUE(wasClear);
    EXPECT_TRUE(error.isClear());
}

TEST_F(GenericRetryHandlerTest, putsThePropagationFlagBackBeforeEachRepeat)
{
    std::vector<bool> seen;
    launch([&](int attempt) {
        seen.push_back(context->propagate);
        context->propagate = false; // as a failed step does
        answerStatus(attempt < 3 ? 502 : 404);
    });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(seen, (std::vector<bool>{true, true, true}));
    EXPECT_FALSE(handler->heard.all()[0].propagate);
}

TEST_F(GenericRetryHandlerTest, leavesAFlagThatWasNotSetUnset)
{
    context->propagate = false;
    std::vector<bool> seen;
    launch([&](int attempt) {
        seen.push_back(context->propagate);
        context->propagate = true;
        answerStatus(attempt < 2 ? 502 : 404);
    });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(seen, (std::vector<bool>{false, false}));
}

TEST_F(GenericRetryHandlerTest, withALimitOfZeroNothingIsRepeated)
{
    http::setRetryPolicy({0, 0});
    launch([&](int) { answerStatus(503); });
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(handler->heard.count(), 1U);
}

TEST_F(GenericRetryHandlerTest, takesThePolicyAsItWasWhenTheChainBegan)
{
    launch([&](int) {
        http::setRetryPolicy({0, 3600});
        answerStatus(503);
    });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(attempts, 4);
}

TEST_F(GenericRetryHandlerTest, repeatsAFailureOfTheTransport)
{
    launch([&](int attempt) {
        if (attempt == 2)
            return answer(200);
        assignTransportFailure(error, 104);
        answer(5555);
    });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(handler->heard.all()[0].status, 200);
}

TEST_F(GenericRetryHandlerTest, doesNotRepeatWhatStaysAsItIs)
{
    const std::vector<std::function<void()>> failures{
        [&] { assignStatus(error, 404); },
        [&] { assignStatus(error, 501); },
        [&] { assignTransportFailure(error, 0); },
        [&] { assignTransportFailure(error, 5555); },
        [&] { error.Assign(error::badInput, std::make_shared<GenericError>(L"bad")); },
        [&] { error.Clear(); },
    };
    for (const auto& fail : failures) {
        launch([&](int) {
            fail();
            answer(400);
        });
    }
    EXPECT_EQ(attempts, 6);
    EXPECT_EQ(handler->heard.count(), 6U);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(GenericRetryHandlerTest, aStatusOf200IsNeverRepeatedWhateverTheErrorCodeHolds)
{
    launch([&](int) {
        assignStatus(error, 503);
        answer(200);
    });
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(handler->heard.count(), 1U);
}

TEST_F(GenericRetryHandlerTest, aSecondAnswerToTheSameAttemptIsDropped)
{
    std::shared_ptr<IOrloCallback> retry;
    launch([&](int) {
        retry = context->handler;
        answer(200, L"first");
    });
    retry->on_complete(5555, L"second", "Step", context, error);
    ASSERT_EQ(handler->heard.count(), 1U);
    EXPECT_EQ(handler->heard.all()[0].body, L"first");
}

TEST_F(GenericRetryHandlerTest, twoAnswersToOneAttemptCauseOneRepeat)
{
    http::setRetryPolicy({3, 1});
    launch([&](int attempt) {
        if (attempt > 1)
            return answer(200);
        const auto retry = context->handler;
        assignStatus(error, 503);
        ErrorCode ofSecondAnswer(error); // the chain's own is the next attempt's from here on
        retry->on_complete(503, L"", "Step", context, error);
        retry->on_complete(503, L"", "Step", context, ofSecondAnswer);
    });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[1]"}));
    EXPECT_EQ(attempts, 2);
}

TEST_F(GenericRetryHandlerTest, aHandlerMayLaunchTheNextStep)
{
    bool launched = false;
    handler->then = [&] {
        if (std::exchange(launched, true))
            return;
        launchWithRetry(context, error, [&] { answer(200, L"second step"); });
    };
    launch([&](int) { answer(200, L"first step"); });
    const auto heard = handler->heard.all();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[1].body, L"second step");
    EXPECT_EQ(context->handler, handler);
}

TEST_F(GenericRetryHandlerTest, aRequestThatThrowsAtOnceIsReported)
{
    launch([&](int) { throw std::runtime_error("no such address"); });
    const auto heard = handler->heard.all();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].status, 5555);
    EXPECT_EQ(heard[0].body, L"no such address");
    EXPECT_FALSE(heard[0].propagate);
    EXPECT_TRUE(heard[0].handlerWasInContext);
    EXPECT_EQ(error.GetValue(), 0xE8000002LL);
    EXPECT_EQ(attempts, 1);
}

TEST_F(GenericRetryHandlerTest, aTransportFailureThrownAtOnceIsRepeated)
{
    launch([&](int) { throw web::http::http_exception(std::error_code(104, std::generic_category()), "connection reset"); });
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(attempts, 4);
    ASSERT_EQ(handler->heard.count(), 1U);
    EXPECT_EQ(handler->heard.all()[0].status, 5555);
}

TEST_F(GenericRetryHandlerTest, aHandlerThatThrowsThroughTheRequestIsNotCalledAgain)
{
    handler->then = [] { throw std::runtime_error("handler"); };
    launch([&](int) { answer(200); });
    EXPECT_EQ(handler->heard.count(), 1U);
    EXPECT_TRUE(log.has(L"E@orlo::http::GenericRetryHandler a request threw an exception after its answer"));
}

TEST_F(GenericRetryHandlerTest, aChainWithoutAHandlerEndsQuietly)
{
    context->handler = nullptr;
    launch([&](int) { answer(404); });
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(context->handler, nullptr);
}

TEST_F(GenericRetryHandlerTest, withoutAThreadToWaitOnTheAnswerAtHandIsTheLast)
{
    const ThreadShortage shortage;
    launch([&](int) { answerStatus(503, L"busy"); });
    EXPECT_EQ(attempts, 1);
    ASSERT_EQ(handler->heard.count(), 1U);
    EXPECT_EQ(handler->heard.all()[0].status, 503);
    EXPECT_EQ(handler->heard.all()[0].body, L"busy");
    EXPECT_TRUE(log.holds(L"OrloNetworkRetry::GenericRetryHandler - no retry: "));
}

struct Captured
{
    std::weak_ptr<OrloCallbackContext> context;
    std::weak_ptr<PlainHandler> handler;
    std::weak_ptr<IOrloCallback> retry;
    std::weak_ptr<int> state;

    bool gone() const { return context.expired() && handler.expired() && retry.expired() && state.expired(); }
};

/// Launches a chain that nobody but itself holds.
Captured launchAlone(const std::shared_ptr<ErrorCode>& error, std::function<void()> fail)
{
    Captured held;
    const auto handler = std::make_shared<PlainHandler>();
    const auto context = std::make_shared<OrloCallbackContext>(handler, true);
    const auto state = std::make_shared<int>(0);
    const auto retry = std::make_shared<GenericRetryHandler>();
    retry->setOriginalHandler(context->handler);
    retry->setOriginalPropogation(context->propagate);
    context->handler = retry;
    retry->setFunc([context, state, error, fail] {
        const auto current = context->handler;
        if (++*state == 1 && fail) {
            fail();
            current->on_complete(503, L"", "Step", context, *error);
            return;
        }
        error->Clear();
        current->on_complete(200, L"", "Step", context, *error);
    });
    held.context = context;
    held.handler = handler;
    held.retry = retry;
    held.state = state;
    retry->execute(context, *error);
    return held;
}

TEST_F(GenericRetryHandlerTest, nothingOfAChainIsLeftAfterItsEnd)
{
    const Captured held = launchAlone(std::make_shared<ErrorCode>(), {});
    EXPECT_TRUE(held.gone());
}

TEST_F(GenericRetryHandlerTest, nothingOfAChainIsLeftAfterARepeat)
{
    const auto shared = std::make_shared<ErrorCode>();
    const Captured held = launchAlone(shared, [shared] { assignStatus(*shared, 503); });
    EXPECT_TRUE(waitUntil([&] { return held.gone(); }));
}

TEST_F(GenericRetryHandlerTest, nothingOfAChainIsLeftAfterARequestThatThrew)
{
    const Captured held = launchAlone(std::make_shared<ErrorCode>(), [] { throw std::runtime_error("early"); });
    EXPECT_TRUE(held.gone());
}

/// A chain whose handler takes bytes.
class ByteAnswerTest : public GenericRetryHandlerTest
{
protected:
    void answerBytes(int status)
    {
        const auto file = std::dynamic_pointer_cast<IOrloFileCallback>(context->handler);
        ASSERT_NE(file, nullptr);
        file->on_complete(status, L"name", bytes, "GetFile", context, error);
    }

    const std::vector<unsigned char> bytes{1, 0, 255};
    std::shared_ptr<FileHandler> fileHandler = std::make_shared<FileHandler>();
};

TEST_F(ByteAnswerTest, bytesArePassedOnAsBytes)
{
    context->handler = fileHandler;
    launch([&](int) { answerBytes(200); });
    const auto heard = fileHandler->heard.all();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_TRUE(heard[0].asBytes);
    EXPECT_EQ(heard[0].data, bytes);
    EXPECT_EQ(heard[0].body, L"name");
    EXPECT_EQ(heard[0].stepKey, "GetFile");
    EXPECT_TRUE(heard[0].handlerWasInContext);
}

TEST_F(ByteAnswerTest, aPlainAnswerReachesAFileHandlerAsAPlainOne)
{
    context->handler = fileHandler;
    launch([&](int) { answer(404, L"gone"); });
    ASSERT_EQ(fileHandler->heard.count(), 1U);
    EXPECT_FALSE(fileHandler->heard.all()[0].asBytes);
}

TEST_F(ByteAnswerTest, aHandlerThatTakesNoBytesHearsThePlainForm)
{
    launch([&](int) { answerBytes(200); });
    ASSERT_EQ(handler->heard.count(), 1U);
    EXPECT_EQ(handler->heard.all()[0].body, L"name");
    EXPECT_EQ(handler->heard.all()[0].stepKey, "GetFile");
}

TEST_F(ByteAnswerTest, aFailureWithBytesIsRepeatedToo)
{
    context->handler = fileHandler;
    launch([&](int attempt) {
        if (attempt == 1)
            assignStatus(error, 503);
        answerBytes(attempt == 1 ? 503 : 200);
    });
    ASSERT_TRUE(waitUntil([&] { return fileHandler->heard.count() > 0; }));
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(fileHandler->heard.all()[0].status, 200);
}

/// A chain of its own, whose request answers on a thread of the pool: first as told, then well.
struct PooledChain
{
    ErrorCode error;
    std::shared_ptr<PlainHandler> handler = std::make_shared<PlainHandler>();
    std::shared_ptr<OrloCallbackContext> context = std::make_shared<OrloCallbackContext>(handler, true);
    std::atomic<int> attempts{0};

    static std::shared_ptr<PooledChain> launch(int failures)
    {
        const auto chain = std::make_shared<PooledChain>();
        launchWithRetry(chain->context, chain->error, [chain, failures] {
            pplx::create_task([chain, failures] {
                const bool fails = ++chain->attempts <= failures;
                if (fails)
                    assignStatus(chain->error, 503);
                const auto current = chain->context->handler;
                current->on_complete(fails ? 503 : 200, L"", "Step", chain->context, chain->error);
            });
        });
        return chain;
    }
};

TEST_F(GenericRetryHandlerTest, manyChainsAtOnceEndOnceEach)
{
    std::vector<std::shared_ptr<PooledChain>> chains;
    for (int i = 0; i < 100; ++i)
        chains.push_back(PooledChain::launch(2));
    for (const auto& chain : chains) {
        ASSERT_TRUE(waitUntil([&] { return chain->handler->heard.count() == 1; }));
        EXPECT_EQ(chain->attempts, 3);
        EXPECT_EQ(chain->handler->heard.all()[0].status, 200);
    }
}

/// Lets more chains wait than the pool has threads, for longer than anybody looks on.   Returns: whether the pool still runs a task.
bool poolRunsWhileChainsWait()
{
    const RetryPolicyGuard policy({3, 3600});
    const LogCapture log;
    for (int i = 0; i < 60; ++i)
        PooledChain::launch(1);
    const auto allWait = [&] { return log.count(L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[1]") == 60U; };
    if (!waitUntil(allWait))
        return false;
    const auto ran = std::make_shared<std::atomic<bool>>(false);
    pplx::create_task([ran] { *ran = true; });
    return waitUntil([&] { return ran->load(); });
}

TEST(GenericRetryHandlerDeathTest, chainsThatWaitHoldNoThreadOfThePool)
{
    // In a process of its own, which the waiting chains don't outlive.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(poolRunsWhileChainsWait() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace orlo::test
