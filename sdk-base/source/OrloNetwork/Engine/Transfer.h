#pragma once

#include "AnswerHead.h"
#include "BodySink.h"
#include "BodySource.h"
#include "Failure.h"
#include "RequestForm.h"
#include "Route.h"
#include "Tally.h"

#include <cpprest/http_msg.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <string_view>

namespace orlo::http {

/// One request with its answer, on the handle that carries it. All but the constructor and `answer` happen on the thread that does.
class Transfer : public std::enable_shared_from_this<Transfer>
{
public:
    using Clock = std::chrono::steady_clock;

    /// Throws for a request that can't be sent.
    Transfer(std::shared_ptr<const Route> route, const web::http::http_request& request);
    ~Transfer();

    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Ready when the head of the answer has come. Its body goes to the request's response stream and is there when the answer's
    /// content is ready.
    pplx::task<web::http::http_response> answer() const;
    const pplx::cancellation_token& token() const { return m_request._cancellation_token(); }

    /// Puts the transfer on a handle that is as new.
    /// wake: called from any thread when a body that was waited for can go on; null: the thread that carries it waits itself.
    void attach(CURL* easy, std::function<void()> wake);
    /// Lets the bodies go on.
    void goOn();

    /// When it has had its time, unless it makes headway.
    Clock::time_point due() const;

    /// One of them ends it; the handle is still attached, and may be let go then.
    void end(CURLcode code);
    void endTooLate();
    /// thrown: null for a success.
    void endWith(const std::exception_ptr& thrown);

private:
    struct Callbacks;

    template <class Work, class Result>
    Result guarded(Work work, Result failed) noexcept;

    void touch() { m_headway = Clock::now(); }
    void headLine(std::string_view line);
    void deliver();
    std::size_t take(const char* bytes, std::size_t count);
    std::size_t give(char* room, std::size_t size);
    Stage stage() const;
    std::string place() const;
    Failure failureOf(CURLcode code, const char* words) const;
    std::exception_ptr failedWith(const Failure& failure) const;
    std::shared_ptr<RequestDetails> details() const;
    bool isChunked() const;
    bool mayBeCut() const;
    bool isHeadTooLarge(CURLcode code) const;

    const std::shared_ptr<const Route> m_route;
    web::http::http_request m_request;
    const RequestForm m_form;
    const std::shared_ptr<const Trust> m_trust;
    web::http::http_response m_response;
    pplx::task_completion_event<web::http::http_response> m_answered;

    CURL* m_easy = nullptr;
    std::function<void()> m_wake;
    const Clock::time_point m_begin = Clock::now();
    Clock::time_point m_headway = m_begin;
    char m_words[CURL_ERROR_SIZE] = {};

    AnswerHead m_head;
    BodySource m_source;
    BodySink m_sink;
    Tally m_tally;
    std::exception_ptr m_thrown; ///< by one of the bodies, or about the head
    bool m_isConnected = false;
    bool m_isDelivered = false;
    bool m_isPaused = false;
    bool m_isCut = false; ///< what is left of the answer isn't waited for
};

} // namespace orlo::http
