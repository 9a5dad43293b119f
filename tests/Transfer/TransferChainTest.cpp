#include "support/ThreadShortage.h"
#include "support/TransferTestSupport.h"

#include <OrloNetwork/Lifetime/WorkPermit.h>
#include <OrloProjectManager/Transfer/TransferChain.h>

#include <stdexcept>

namespace orlo::test {
namespace {

class TransferChainTest : public testing::Test
{
protected:
    PromiseData run(TransferWorker worker) { return outcomeOf(startTransfer(site, error, std::move(worker))); }

    const CallSite site{"source.cpp", 7, "orlo::HttpClient::something"};
    LogCapture log;
    ErrorCode error;
};

TEST_F(TransferChainTest, runsTheWorkerOnAnotherThread)
{
    std::thread::id worker;
    const PromiseData outcome = run([&](const auto& end) {
        worker = std::this_thread::get_id();
        end->set({true, 200, L"done"}, ErrorCode());
    });
    expectOutcome(outcome, true, 200, L"done");
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST_F(TransferChainTest, anExceptionOfTheWorkerIsALocalFailure)
{
    expectOutcome(run([](const auto&) { throw std::runtime_error("no luck"); }), false, 5555, L"no luck");
    expectHttpError(error, exceptionValue, L"HttpError", L"no luck", 5555);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::HttpClient::something [END_SET_FALSE_TO_PROMISE]no luck"});
}

TEST_F(TransferChainTest, anythingElseThatTheWorkerThrowsIsALocalFailureToo)
{
    expectOutcome(run([](const auto&) { throw 7; }), false, 5555, L"unknown exception");
    expectHttpError(error, exceptionValue, L"HttpError", L"unknown exception", 5556);
}

TEST_F(TransferChainTest, aTransferThatIsLostOnItsWayEndsAsALocalFailure)
{
    expectOutcome(run([](const auto&) {}), false, 5555, L"the transfer ended without an outcome");
}

TEST_F(TransferChainTest, anExceptionAfterTheOutcomeIsLoggedAndTheOutcomeStands)
{
    const PromiseData outcome = run([](const auto& end) {
        end->set({true, 200, L"done"}, ErrorCode());
        throw std::runtime_error("late");
    });
    expectOutcome(outcome, true, 200, L"done");
    EXPECT_TRUE(waitUntil([&] { return log.lines().size() == 2; }));
    EXPECT_EQ(log.lines().at(0), L"E@orlo::HttpClient::something [END_SET_FALSE_TO_PROMISE]late");
}

TEST_F(TransferChainTest, theFrameLooksAtTheErrorCodeFirst)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    run([](const auto& end) { end->refuse(L"no"); });
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::HttpClient::something 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_F(TransferChainTest, theCallersErrorCodeIsWrittenWithTheFirstOutcomeOnly)
{
    const auto outcome = std::make_shared<TransferOutcome>(error);
    auto future = outcome->future();
    outcome->set({false, 404, L"first"}, ErrorCode(badInputValue, std::make_shared<GenericError>(L"first")));
    EXPECT_THROW(outcome->set({true, 200, L"second"}, ErrorCode()), std::future_error);
    expectGenericError(error, badInputValue, L"GenericError", L"first");
    outcome->settle({true, 200, L"third"}, ErrorCode(), site);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].find(L"E@orlo::HttpClient::something [END_SET_FALSE_TO_PROMISE]"), 0U);
    expectOutcome(outcomeOf(future), false, 404, L"first");
}

TEST_F(TransferChainTest, aRefusedInputLeavesTheErrorCodeAlone)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    expectOutcome(run([](const auto& end) { end->refuse(L"no"); }), false, 400, L"no");
    expectGenericError(error, badInputValue, L"GenericError", L"earlier");
}

TEST_F(TransferChainTest, withoutAThreadTheFutureIsReadyWithADefaultOutcome)
{
    const auto worker = [](const auto& end) { end->set({true, 200, L"done"}, ErrorCode()); };
#ifdef __SANITIZE_THREAD__
    const http::WorkPermit poolIsThere; // the thread sanitizer waits for good behind a std::call_once that has thrown
#endif
    {
        const ThreadShortage shortage;
        auto future = startTransfer(site, error, worker);
        ASSERT_EQ(future.wait_for(std::chrono::seconds(0)), std::future_status::ready);
        expectOutcome(future.get(), false, -1, L"");
    }
    EXPECT_EQ(error.GetValue(), exceptionValue);
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetCode(), 5555);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], L"E@orlo::HttpClient::something [END_API_IMPLEMENTATION][A generic exception caught] message[" +
                                  failure->GetErrorMessage() + L"]");
    error.Clear();
    expectOutcome(run(worker), true, 200, L"done");
    expectClear(error);
}

TEST_F(TransferChainTest, textThatIsNoJsonReadsAsNull)
{
    for (const wchar_t* text : {L"", L"{", L"text", L"{} {}"})
        EXPECT_TRUE(jsonOrNull(text).is_null());
    EXPECT_TRUE(jsonOrNull(LR"({"a":"文"})").is_object());
}

} // namespace
} // namespace orlo::test
