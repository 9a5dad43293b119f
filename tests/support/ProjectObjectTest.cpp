#include "ProjectObjectTest.h"

#include <OrloProjectManager/Projects/Project.h>

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
    Failures(const RetriedOperation& operation, ScriptedServer& server, LogCapture& log)
        : m_operation(operation), m_server(server), m_log(log)
    {}

    void errorStatusThatIsFinal()
    {
        ErrorCode error;
        fails(error, 1, [](Expectation& expected) { expected.reply(404, R"({"message":"没有"})"); });
        expectHttpError(error, -402653182, L"HttpError", L"{\"message\":\"没有\"}", 404);
        expectLog(statusLine(L"404"));
    }

    void errorStatusThatMayPass()
    {
        ErrorCode error;
        fails(error, 4, [](Expectation& expected) { expected.reply(503, "busy"); });
        expectHttpError(error, -402653182, L"HttpError", L"busy", 503);
        expectLog(repeated(statusLine(L"503")));
    }

    void otherStatus(int status, const wchar_t* digits)
    {
        ErrorCode error;
        fails(error, 1, [status](Expectation& expected) { expected.reply(status); });
        expectClear(error);
        expectLog(statusLine(digits));
    }

    void brokenTransport()
    {
        ErrorCode error;
        fails(error, 4, [](Expectation& expected) { expected.reset(); });
        expectHttpError(error, 3892314114, L"generic exception", resetBy(m_server.url()), 104);
        expectLog(repeated(Lines{caughtWords + resetBy(m_server.url()) + L"]"}));
    }

    void bodyThatIsNoJson()
    {
        ErrorCode error;
        fails(error, 1, [](Expectation& expected) { expected.reply(200, "<html>"); });
        EXPECT_NE(error.GetErrorMessage(), L"");
        expectHttpError(error, 3892314114, L"generic exception", error.GetErrorMessage(), 5555);
        expectLog({caughtWords + error.GetErrorMessage() + L"]"});
    }

private:
    template <class Answer>
    void fails(ErrorCode& error, unsigned requests, Answer answer)
    {
        m_log.clear();
        m_operation.prepare();
        Expectation& expected = m_server.expect(m_operation.method, m_operation.target).body(m_operation.body).times(requests);
        answer(expected);
        EXPECT_FALSE(m_operation.succeeds(error));
        m_server.verify();
    }

    Lines statusLine(const std::wstring& digits) const
    {
        return m_operation.failureWords.empty() ? Lines{} : Lines{L"E [ORLOSDK]" + m_operation.failureWords + digits};
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

    void expectLog(Lines expected) const
    {
        if (!m_operation.afterwards.empty())
            expected.push_back(m_operation.afterwards);
        EXPECT_EQ(m_log.lines(), expected);
    }

    const RetriedOperation& m_operation;
    ScriptedServer& m_server;
    LogCapture& m_log;
};

} // namespace

std::shared_ptr<ICollaborationProject> ProjectObjectTest::projectOf(const std::wstring& id)
{
    return std::make_shared<Project>(id, L"示例", L"2024-03-01T08:00:00Z", L"d", ProjectStatus::Suspended, ProjectGridType::TypeTwo,
                                     5000000000);
}

void expectFailuresOf(const RetriedOperation& operation, ScriptedServer& server, LogCapture& log)
{
    Failures failures(operation, server, log);
    failures.errorStatusThatIsFinal();
    failures.errorStatusThatMayPass();
    failures.otherStatus(201, L"201");
    failures.otherStatus(204, L"204");
    failures.otherStatus(302, L"302");
    failures.brokenTransport();
    if (operation.readsJson)
        failures.bodyThatIsNoJson();
}

} // namespace orlo::test
