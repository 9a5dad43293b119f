#include "support/WireTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/Frame/CallFrame.h>
#include <OrloProjectManager/Frame/DroppedError.h>
#include <OrloProjectManager/NetworkProject/Call/Refusal.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace orlo::test {
namespace {

class CallFrameTest : public testing::Test
{
protected:
    CallFrame frame{CallSite{"source/OrloProjectManager/Sample.cpp", 42, "orlo::Sample::Work"}};
    LogCapture log;
    ErrorCode error;
};

web::http::http_exception resetByPeer()
{
    return web::http::http_exception(resetCode, "Failed to read HTTP status line");
}

TEST_F(CallFrameTest, givesTheResultOfTheWorkAndStaysSilent)
{
    EXPECT_EQ(frame.run(error, [] { return 7; }), 7);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(CallFrameTest, anErrorOnEntryIsLoggedWithItsMessageAndTheWorkStillRuns)
{
    error.Assign(0xE8000002, std::make_shared<HttpError>(L"HttpError", L"earlier failure", 5555, 0));
    EXPECT_TRUE(frame.run(error, [] { return true; }));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work 传入的ErrorCode，已有错误存在:earlier failure"});
}

TEST_F(CallFrameTest, doesNotClearAnErrorFoundOnEntry)
{
    error.Assign(0xE8000002, std::make_shared<HttpError>(L"HttpError", L"earlier failure", 5555, 0));
    frame.run(error, [] { return true; });
    expectHttpError(error, 3892314114, L"HttpError", L"earlier failure", 5555);
}

TEST_F(CallFrameTest, aSuccessThroughTheRetryLoopWipesAnErrorFoundOnEntry)
{
    error.Assign(0xE8000002, std::make_shared<HttpError>(L"HttpError", L"earlier failure", 5555, 0));
    const bool done = frame.run(error, [&] { return http::SendNormalRequestWithRetry([](ErrorCode&) { return true; }, false, error); });
    EXPECT_TRUE(done);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work 传入的ErrorCode，已有错误存在:earlier failure"});
}

TEST_F(CallFrameTest, everyNoErrorValuePassesSilently)
{
    ErrorCode fresh;
    ErrorCode zero(0, nullptr);
    ErrorCode signExtended(static_cast<long long>(0xFFFFFFFFE8000000ULL), nullptr);
    ErrorCode cleared(0xE8000001, std::make_shared<GenericError>(L"gone"));
    cleared.Clear();
    for (ErrorCode* entry : {&fresh, &zero, &signExtended, &cleared})
        EXPECT_TRUE(frame.run(*entry, [] { return true; }));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(CallFrameTest, thePositiveFormOfTheSuccessValueCountsAsAnError)
{
    ErrorCode positive(0xE8000000, nullptr);
    frame.run(positive, [] { return true; });
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work 传入的ErrorCode，已有错误存在:"});
}

TEST_F(CallFrameTest, aStandardExceptionBecomesAnHttpErrorWithCode5555)
{
    EXPECT_FALSE(frame.run(error, []() -> bool { throw std::runtime_error("no luck"); }));
    expectHttpError(error, 3892314114, L"HttpError", L"no luck", 5555);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work [END_API_IMPLEMENTATION][A generic exception caught] message[no luck]"});
}

TEST_F(CallFrameTest, anAssignedErrorReadsBackAsAPositiveNumber)
{
    frame.run(error, []() -> bool { throw std::runtime_error("no luck"); });
    EXPECT_EQ(error.GetValue(), 3892314114);
    EXPECT_NE(error.GetValue(), -402653182);
}

TEST_F(CallFrameTest, anythingElseThrownBecomesAnHttpErrorWithCode5556)
{
    EXPECT_FALSE(frame.run(error, []() -> bool { throw 7; }));
    expectHttpError(error, 3892314114, L"HttpError", L"unknown exception", 5556);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work [END_API_IMPLEMENTATION]unknown exception occurred"});
}

TEST_F(CallFrameTest, aLogLineCarriesTagSourceLineAndFunction)
{
    frame.run(error, []() -> bool { throw std::runtime_error("no luck"); });
    ASSERT_EQ(log.entries().size(), 1u);
    const LogEntry entry = log.entries().front();
    EXPECT_EQ(entry.level, L'@');
    EXPECT_EQ(entry.tag, L"[ORLOSDK]");
    EXPECT_EQ(entry.source, "source/OrloProjectManager/Sample.cpp");
    EXPECT_EQ(entry.line, 42);
    EXPECT_EQ(entry.function, "orlo::Sample::Work");
    EXPECT_EQ(entry.message, L"[END_API_IMPLEMENTATION][A generic exception caught] message[no luck]");
}

TEST_F(CallFrameTest, namesItsSourceRelativeToTheRootOfTheTree)
{
    CallFrame(ORLO_HERE("orlo::Sample::Here")).run(error, []() -> bool { throw 7; });
    ASSERT_EQ(log.entries().size(), 1u);
    EXPECT_EQ(log.entries().front().source, "tests/Frame/CallFrameTest.cpp");
    EXPECT_GT(log.entries().front().line, 0);
}

TEST_F(CallFrameTest, noMemoryIsAnExceptionLikeAnyOther)
{
    EXPECT_EQ(frame.run(error, []() -> std::wstring { throw std::bad_alloc(); }), L"");
    expectHttpError(error, 3892314114, L"HttpError", L"std::bad_alloc", 5555);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work [END_API_IMPLEMENTATION][A generic exception caught] message[std::bad_alloc]"});
}

TEST_F(CallFrameTest, aTransportFailureHasNoRungOfItsOwnInTheCommonLadder)
{
    EXPECT_FALSE(frame.run(error, []() -> bool { throw resetByPeer(); }));
    expectHttpError(error, 3892314114, L"HttpError", L"Failed to read HTTP status line", 5555);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work [END_API_IMPLEMENTATION][A generic exception caught] "
                                 L"message[Failed to read HTTP status line]"});
}

TEST_F(CallFrameTest, theExtraRungOfADirectCallKeepsTheTransportsCodeAndLogsNothing)
{
    EXPECT_FALSE(frame.runDirect(error, []() -> bool { throw resetByPeer(); }));
    expectHttpError(error, 3892314114, L"generic exception", L"Failed to read HTTP status line", resetCode);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(CallFrameTest, belowTheExtraRungStandTheTwoOfTheCommonLadder)
{
    EXPECT_FALSE(frame.runDirect(error, []() -> bool { throw std::runtime_error("no luck"); }));
    expectHttpError(error, 3892314114, L"HttpError", L"no luck", 5555);
    EXPECT_FALSE(frame.runDirect(error, []() -> bool { throw "text"; }));
    expectHttpError(error, 3892314114, L"HttpError", L"unknown exception", 5556);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::Sample::Work [END_API_IMPLEMENTATION][A generic exception caught] message[no luck]",
                                  L"E@orlo::Sample::Work 传入的ErrorCode，已有错误存在:no luck",
                                  L"E@orlo::Sample::Work [END_API_IMPLEMENTATION]unknown exception occurred"}));
}

TEST_F(CallFrameTest, aCarriageReturnAtTheEndOfTheTextIsDropped)
{
    frame.run(error, []() -> bool { throw std::runtime_error("no luck\r"); });
    expectHttpError(error, 3892314114, L"HttpError", L"no luck", 5555);
    EXPECT_TRUE(log.has(L"E@orlo::Sample::Work [END_API_IMPLEMENTATION][A generic exception caught] message[no luck]"));
}

TEST_F(CallFrameTest, theTextOfAnExceptionIsReadAsUtf8)
{
    frame.run(error, []() -> bool { throw std::runtime_error("连接失败 \xFF"); });
    expectHttpError(error, 3892314114, L"HttpError", L"连接失败 \xFFFD", 5555);
}

TEST_F(CallFrameTest, theResultAfterAnExceptionIsNeverPartlyFilled)
{
    std::vector<int> filled;
    const auto result = frame.run(error, [&]() -> std::vector<int> {
        filled = {1, 2, 3};
        std::vector<int> list = filled;
        if (!list.empty())
            throw std::runtime_error("late");
        return list;
    });
    EXPECT_EQ(filled.size(), 3u);
    EXPECT_EQ(result, std::vector<int>{});
    EXPECT_EQ(frame.run(error, []() -> std::shared_ptr<int> { throw 1; }), nullptr);
    EXPECT_EQ(frame.run(error, []() -> std::wstring { throw 1; }), L"");
    EXPECT_EQ(frame.run(error, []() -> bool { throw 1; }), false);
}

TEST_F(CallFrameTest, anOperationWithoutAnErrorCodeWorksOnAFreshOneOfItsOwn)
{
    const ErrorCode* seen = nullptr;
    EXPECT_TRUE(frame.runAlone([&](ErrorCode& own) {
        seen = &own;
        return own.GetValue() == 0 && !own.GetCategory();
    }));
    EXPECT_NE(seen, nullptr);
    EXPECT_FALSE(frame.runAlone([](ErrorCode&) -> bool { throw std::runtime_error("no luck"); }));
    EXPECT_FALSE(frame.runDirectAlone([](ErrorCode&) -> bool { throw resetByPeer(); }));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Sample::Work [END_API_IMPLEMENTATION][A generic exception caught] message[no luck]"});
}

// Throws whatever it is told.
class ThrowingLogger : public ILogManager
{
public:
    void LogInfo(const std::wstring&) override { throw std::runtime_error("logger"); }
    void LogWarning(const std::wstring&) override { throw std::runtime_error("logger"); }
    void LogError(const std::wstring&) override { throw 7; }
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring&, const std::wstring&) override
    {
        throw std::bad_alloc();
    }
};

TEST_F(CallFrameTest, aLoggerThatThrowsChangesNeitherResultNorError)
{
    ILogManager::Install(std::make_shared<ThrowingLogger>());
    error.Assign(0xE8000001, std::make_shared<GenericError>(L"earlier"));
    bool ran = false;
    EXPECT_TRUE(frame.run(error, [&] { return ran = true; }));
    EXPECT_TRUE(ran);
    EXPECT_FALSE(frame.run(error, []() -> bool { throw std::runtime_error("no luck"); }));
    expectHttpError(error, 3892314114, L"HttpError", L"no luck", 5555);
    EXPECT_FALSE(frame.run(error, []() -> bool { throw 7; }));
    expectHttpError(error, 3892314114, L"HttpError", L"unknown exception", 5556);
}

TEST_F(CallFrameTest, aRefusedInputIsAGenericError)
{
    EXPECT_FALSE(refuse(error, 0xE8000001, L"data.name is empty"));
    expectGenericError(error, 3892314113, L"GenericError", L"data.name is empty");
    EXPECT_FALSE(refuse(error, 0xE8000005, L"projectId or fileId is empty."));
    expectGenericError(error, 3892314117, L"GenericError", L"projectId or fileId is empty.");
}

TEST_F(CallFrameTest, anErrorCodeToBeDroppedStartsClear)
{
    const auto mainForm = [](ErrorCode& handed) { return handed.GetValue(); };
    EXPECT_EQ(mainForm(DroppedError()), 0);
}

} // namespace
} // namespace orlo::test
