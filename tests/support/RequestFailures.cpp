#include "RequestFailures.h"

#include <algorithm>

namespace orlo::test {

namespace {

constexpr const wchar_t* caughtWords =
    L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic exception caught: message[";
constexpr const wchar_t* retryWords = L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[";
constexpr const wchar_t* exhausted = L"E [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded";

/// One operation under one failure after another.
class Failures
{
public:
    Failures(const RequestingOperation& operation, ScriptedServer& server, LogCapture& log)
        : m_operation(operation), m_server(server), m_log(log)
    {}

    void errorStatusThatIsFinal()
    {
        ErrorCode error;
        fails(error, 1, [](Expectation& expected) { expected.reply(404, R"({"message":"没有"})"); });
        expectHttpError(error, errorStatusValue, L"HttpError", L"{\"message\":\"没有\"}", 404);
        expectLog(withWordsAfter(statusLine(404)));
    }

    void errorStatusThatMayPass()
    {
        ErrorCode error;
        fails(error, attempts(), [](Expectation& expected) { expected.reply(503, "busy"); });
        expectHttpError(error, errorStatusValue, L"HttpError", L"busy", 503);
        expectLog(withWordsAfter(isRetried() ? repeated(statusLine(503)) : statusLine(503)));
    }

    void otherStatus(int status, const std::string& body)
    {
        ErrorCode error;
        fails(error, 1, [&](Expectation& expected) { expected.reply(status, body); });
        expectClear(error);
        expectLog(withWordsAfter(statusLine(status)));
    }

    void brokenTransport()
    {
        ErrorCode error;
        fails(error, attempts(), [](Expectation& expected) { expected.reset(); });
        expectHttpError(error, exceptionValue, L"generic exception", resetBy(m_server.url()), resetCode);
        expectLog(isRetried() ? withWordsAfter(repeated({caughtWords + resetBy(m_server.url()) + L"]"})) : Lines{});
    }

    void bodyThatIsNoJson()
    {
        ErrorCode error;
        fails(error, 1, [](Expectation& expected) { expected.reply(200, "<html>"); });
        // The words about the body are those of the JSON library.
        const std::wstring words = error.GetErrorMessage();
        EXPECT_NE(words, L"");
        expectHttpError(error, exceptionValue, isRetried() ? L"generic exception" : L"HttpError", words, 5555);
        expectLog(isRetried() ? withWordsAfter({caughtWords + words + L"]"})
                              : Lines{L"E@" + m_operation.frame + L" [END_API_IMPLEMENTATION][A generic exception caught] message[" +
                                      words + L"]"});
    }

    void errorOnEntry()
    {
        ErrorCode error;
        error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
        fails(error, 1, [](Expectation& expected) { expected.reply(404, "none"); });
        expectHttpError(error, errorStatusValue, L"HttpError", L"none", 404);
        Lines lines = withWordsAfter(statusLine(404));
        lines.insert(lines.begin(), L"E@" + m_operation.operationName + L" 传入的ErrorCode，已有错误存在:earlier");
        expectLog(lines);
    }

    void noneInTheEnd(const std::function<void()>& goOn, const Lines& told)
    {
        ErrorCode error;
        m_log.clear();
        m_operation.prepare();
        expected().reply(503, "busy");
        expected().reset();
        expected().reply(429, "slow down");
        expected().reply(200, m_operation.goodAnswer);
        goOn();
        EXPECT_TRUE(m_operation.succeeds(error));
        m_server.verify();
        expectClear(error);
        Lines lines = statusLine(503);
        lines.push_back(retryWords + std::wstring(L"1]"));
        lines.push_back(caughtWords + resetBy(m_server.url()) + L"]");
        lines.push_back(retryWords + std::wstring(L"2]"));
        for (const std::wstring& line : statusLine(429))
            lines.push_back(line);
        lines.push_back(retryWords + std::wstring(L"3]"));
        lines.push_back(exhausted); // told of a success with the very last attempt too
        lines.insert(lines.end(), told.begin(), told.end());
        expectLog(lines);
    }

private:
    Expectation& expected() const { return m_server.expect(m_operation.method, m_operation.target).body(m_operation.body); }
    bool isRetried() const { return m_operation.frame.empty(); }
    unsigned attempts() const { return isRetried() ? 4 : 1; }

    template <class Answer>
    void fails(ErrorCode& error, unsigned requests, Answer answer)
    {
        m_log.clear();
        m_operation.prepare();
        answer(expected().times(requests));
        EXPECT_FALSE(m_operation.succeeds(error));
        m_server.verify();
    }

    Lines statusLine(int status) const
    {
        return m_operation.failureWords.empty()
                   ? Lines{}
                   : Lines{(m_operation.isTagged ? L"E [ORLOSDK]" : L"E ") + m_operation.failureWords + std::to_wstring(status)};
    }

    static Lines repeated(const Lines& attempt)
    {
        Lines all = attempt;
        for (const wchar_t* count : {L"1]", L"2]", L"3]"}) {
            all.push_back(retryWords + std::wstring(count));
            all.insert(all.end(), attempt.begin(), attempt.end());
        }
        all.push_back(exhausted);
        return all;
    }

    Lines withWordsAfter(Lines lines) const
    {
        if (!m_operation.afterwards.empty())
            lines.push_back(m_operation.afterwards);
        return lines;
    }

    void expectLog(const Lines& expected) const
    {
        Lines lines = m_log.lines();
        if (m_operation.tellsProgress)
            lines.erase(std::remove_if(lines.begin(), lines.end(), [](const std::wstring& line) { return line.front() == L'I'; }),
                        lines.end());
        EXPECT_EQ(lines, expected);
    }

    const RequestingOperation& m_operation;
    ScriptedServer& m_server;
    LogCapture& m_log;
};

} // namespace

void expectFailuresOf(const RequestingOperation& operation, ScriptedServer& server, LogCapture& log)
{
    Failures failures(operation, server, log);
    failures.errorStatusThatIsFinal();
    failures.errorStatusThatMayPass();
    for (const int status : {201, 202, 206, 302})
        failures.otherStatus(status, operation.goodAnswer);
    for (const int status : {204, 304}) // these have no body
        failures.otherStatus(status, "");
    failures.brokenTransport();
    if (operation.readsJson)
        failures.bodyThatIsNoJson();
    if (!operation.operationName.empty())
        failures.errorOnEntry();
}

void expectSuccessAtLast(const RequestingOperation& operation, ScriptedServer& server, LogCapture& log, const std::function<void()>& goOn,
                         const Lines& told)
{
    Failures(operation, server, log).noneInTheEnd(goOn, told);
}

} // namespace orlo::test
