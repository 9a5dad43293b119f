#include "Transfer.h"

#include "Workers.h"

#include <OrloNetwork/RequestNote.h>
#include <OrloNetwork/WebRequest.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace orlo::http {

using web::http::http_response;

namespace {

constexpr long receiveRoom = 100L << 10;
constexpr long sendRoom = 512L << 10;

constexpr std::size_t largeHead = std::size_t{64} << 10;

void applyTo(CURL* easy, const Route& route)
{
    curl::set(easy, CURLOPT_NOSIGNAL, 1L);
    curl::set(easy, CURLOPT_PROTOCOLS_STR, std::string("http,https"));
    curl::set(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl::set(easy, CURLOPT_QUICK_EXIT, 1L); // a look-up that hangs is left to itself
    // Both clocks are the transfer's own.
    curl::set(easy, CURLOPT_CONNECTTIMEOUT_MS, 24L * 3600 * 1000);
    curl::set(easy, CURLOPT_PROXY, route.proxy); // an empty one keeps the environment's away
    curl::set(easy, CURLOPT_NOPROXY, std::string());
    curl::set(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    if (!route.proxyUser.empty()) {
        curl::set(easy, CURLOPT_PROXYUSERNAME, route.proxyUser);
        curl::set(easy, CURLOPT_PROXYPASSWORD, route.proxyPassword);
    }
    if (route.isOfFiles) {
        curl::set(easy, CURLOPT_BUFFERSIZE, receiveRoom);
        curl::set(easy, CURLOPT_UPLOAD_BUFFERSIZE, sendRoom);
    }
}

} // namespace

/// What libcurl calls. Nothing may be thrown through it.
struct Transfer::Callbacks
{
    static Transfer& of(void* transfer) { return *static_cast<Transfer*>(transfer); }

    static std::size_t header(char* line, std::size_t, std::size_t count, void* data)
    {
        Transfer& self = of(data);
        return self.guarded(
            [&] {
                self.touch();
                self.headLine({line, count});
                return self.m_isCut ? 0 : count;
            },
            std::size_t{0});
    }

    static std::size_t write(char* bytes, std::size_t, std::size_t count, void* data)
    {
        Transfer& self = of(data);
        return self.guarded([&]() -> std::size_t { return self.take(bytes, count); }, std::size_t{0});
    }

    static std::size_t read(char* room, std::size_t, std::size_t size, void* data)
    {
        Transfer& self = of(data);
        return self.guarded([&]() -> std::size_t { return self.give(room, size); }, std::size_t{CURL_READFUNC_ABORT});
    }

    static int isAboutToSend(void* data, char*, char*, int, int)
    {
        of(data).m_isConnected = true;
        of(data).touch();
        return CURL_PREREQFUNC_OK;
    }
};

template <class Work, class Result>
Result Transfer::guarded(Work work, Result failed) noexcept
{
    try {
        return work();
    }
    catch (...) {
        m_thrown = std::current_exception();
        return failed;
    }
}

Transfer::Transfer(std::shared_ptr<const Route> route, const web::http::http_request& request)
    : m_route(std::move(route)),
      m_request(request),
      m_form(m_request),
      m_trust(!m_form.isSecure() ? nullptr
              : m_route->trust   ? m_route->trust
                                 : trustInSystem()),
      m_tally(m_route->isOfFiles ? ProgressMeter::Kind::ofFile : ProgressMeter::Kind::ofCall, m_form.hasBody())
{
    if (m_form.hasBody())
        m_source = BodySource(m_request.body(), m_form.bodySize);
    m_tally.begin(m_form.bodySize);
}

Transfer::~Transfer() = default;

pplx::task<http_response> Transfer::answer() const
{
    return pplx::create_task(m_answered, pplx::task_options(Workers::scheduler()));
}

void Transfer::attach(CURL* easy, std::function<void()> wake)
{
    m_easy = easy;
    m_wake = std::move(wake);
    applyTo(easy, *m_route);
    m_form.applyTo(easy);
    shareSessions(easy);
    if (m_trust)
        http::applyTo(easy, *m_trust);
    // Nothing but a GET may be sent again by libcurl when a kept connection turns out to be dead.
    const bool keeps = m_route->keepsConnections && m_form.method == "GET" && !m_form.hasBody();
    curl::set(easy, CURLOPT_FRESH_CONNECT, keeps ? 0L : 1L);
    curl::set(easy, CURLOPT_FORBID_REUSE, keeps ? 0L : 1L);
    curl::setPointer(easy, CURLOPT_ERRORBUFFER, m_words);
    curl::setPointer(easy, CURLOPT_HEADERFUNCTION, &Callbacks::header);
    curl::setPointer(easy, CURLOPT_HEADERDATA, this);
    curl::setPointer(easy, CURLOPT_WRITEFUNCTION, &Callbacks::write);
    curl::setPointer(easy, CURLOPT_WRITEDATA, this);
    curl::setPointer(easy, CURLOPT_READFUNCTION, &Callbacks::read);
    curl::setPointer(easy, CURLOPT_READDATA, this);
    curl::setPointer(easy, CURLOPT_PREREQFUNCTION, &Callbacks::isAboutToSend);
    curl::setPointer(easy, CURLOPT_PREREQDATA, this);
}

void Transfer::goOn()
{
    touch();
    m_isPaused = false;
    curl_easy_pause(m_easy, CURLPAUSE_CONT);
}

Transfer::Clock::time_point Transfer::due() const
{
    const auto byHeadway = m_isPaused ? Clock::time_point::max() : m_headway + m_route->timeout;
    return m_route->wholeTime ? std::min(byHeadway, m_begin + *m_route->wholeTime) : byHeadway;
}

void Transfer::headLine(std::string_view line)
{
    const bool wasComplete = m_head.isComplete();
    m_head.take(line, m_response);
    if (m_head.isComplete() && !wasComplete)
        deliver();
}

void Transfer::deliver()
{
    auto& answer = *m_response._get_impl();
    if (const auto stream = m_request._get_impl()->_response_stream(); stream.is_valid())
        answer.set_outstream(stream, false);
    else
        answer._prepare_to_receive_data();
    m_sink = BodySink(answer.outstream());
    m_sink.begin(m_response);
    m_isDelivered = true;
    m_tally.headArrived(m_response, m_form.method != "HEAD");
    // libcurl takes a HEAD with a body for another method, and would wait for what doesn't come.
    m_isCut = m_form.method == "HEAD" && m_form.hasBody();
    m_answered.set(m_response);
}

std::size_t Transfer::take(const char* bytes, std::size_t count)
{
    touch();
    std::size_t wanted = count;
    if (m_response.status_code() >= 400)
        wanted = std::min(count, OrloWebService::largestErrorBody - std::min(OrloWebService::largestErrorBody, m_sink.size()));
    if (wanted > 0 && !m_sink.write(reinterpret_cast<const std::uint8_t*>(bytes), wanted, m_wake)) {
        m_isPaused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    touch(); // a disk that took its time has used up none of the server's
    m_tally.received(wanted);
    if (m_route->note)
        m_route->note->bytesReceived += wanted;
    m_isCut = wanted < count;
    return m_isCut ? 0 : count; // the rest isn't waited for
}

std::size_t Transfer::give(char* room, std::size_t size)
{
    touch();
    const auto given = m_source.read(room, size, m_wake);
    touch();
    m_isPaused = !given;
    m_tally.sent(given.value_or(0));
    if (m_route->note)
        m_route->note->bytesSent += given.value_or(0);
    return given ? *given : CURL_READFUNC_PAUSE;
}

Stage Transfer::stage() const
{
    if (m_head.isComplete())
        return Stage::receives;
    if (m_isConnected)
        return m_form.hasBody() && !m_source.isSent() ? Stage::sends : Stage::awaitsAnswer;
    if (curl::timeOf(m_easy, CURLINFO_CONNECT_TIME_T) > 0)
        return Stage::handshakes;
    return curl::timeOf(m_easy, CURLINFO_NAMELOOKUP_TIME_T) > 0 ? Stage::connects : Stage::looksUp;
}

bool Transfer::isChunked() const
{
    utility::string_t coding;
    return m_response.headers().match(web::http::header_names::transfer_encoding, coding);
}

/// Over TLS an end that nobody announced may be an attacker's.
bool Transfer::mayBeCut() const
{
    const int status = m_response.status_code();
    const bool hasBody = m_form.method != "HEAD" && status >= 200 && status != 204 && status != 304;
    return m_form.isSecure() && hasBody && !isChunked() && !m_response.headers().has(web::http::header_names::content_length);
}

std::string Transfer::place() const
{
    return m_route->proxy.empty() ? m_form.place : m_form.place + " through the proxy " + m_route->proxy;
}

Failure Transfer::failureOf(CURLcode code, const char* words) const
{
    Failure failure;
    failure.code = code;
    failure.stage = stage();
    failure.systemError = curl::numberOf(m_easy, CURLINFO_OS_ERRNO);
    failure.verifyResult = curl::numberOf(m_easy, CURLINFO_SSL_VERIFYRESULT);
    failure.isChunked = isChunked();
    failure.isThroughProxy = !m_route->proxy.empty();
    failure.place = place();
    failure.words = words;
    return failure;
}

std::shared_ptr<RequestDetails> Transfer::details() const
{
    return m_route->note ? std::make_shared<RequestDetails>(detailsOf(m_request, *m_route->note)) : nullptr;
}

std::exception_ptr Transfer::failedWith(const Failure& failure) const
{
    return exceptionOf(failure, details());
}

/// Beyond a bound of its own libcurl says no more of a single line than that it has no memory, and of the whole head that it can't receive
/// it.
bool Transfer::isHeadTooLarge(CURLcode code) const
{
    if (code == CURLE_OUT_OF_MEMORY)
        return m_isConnected;
    return code == CURLE_RECV_ERROR && m_head.size() > largeHead && std::string_view(m_words).substr(0, 9) == "Too large";
}

void Transfer::end(CURLcode code)
{
    // A change of the protocol without anything behind it is no answer to libcurl.
    if (m_isCut || (code == CURLE_GOT_NOTHING && m_head.isComplete()))
        code = CURLE_OK;
    else if (m_thrown)
        return endWith(m_thrown);
    if (!m_head.isComplete() && isHeadTooLarge(code))
        return endWith(failedWith(failureOf(CURLE_WEIRD_SERVER_REPLY, "the head of the answer is too large")));
    if (code != CURLE_OK)
        return endWith(failedWith(failureOf(code, m_words[0] != '\0' ? m_words : curl_easy_strerror(code))));
    if (!m_head.isComplete())
        return endWith(failedWith(failureOf(CURLE_GOT_NOTHING, "the connection ended within the head of the answer")));
    if (!m_isCut && mayBeCut())
        return endWith(failedWith(failureOf(CURLE_PARTIAL_FILE, "the answer doesn't tell its length, so that it may have been cut short")));
    m_tally.endedWell();
    m_sink.flush([self = shared_from_this()](const std::exception_ptr& thrown) { self->endWith(thrown); });
}

void Transfer::endTooLate()
{
    const bool isWhole = m_route->wholeTime && Clock::now() >= m_begin + *m_route->wholeTime;
    endWith(timedOut(stage(), place(), isWhole ? "the time for the whole call is over" : "nothing came or went in time", details()));
}

void Transfer::endWith(const std::exception_ptr& thrown)
{
    if (!m_isDelivered) {
        m_answered.set_exception(thrown);
        return;
    }
    auto& answer = *m_response._get_impl();
    if (!m_request._get_impl()->_response_stream().is_valid()) {
        answer._complete(m_sink.size(), thrown);
        return;
    }
    const auto& content = answer._get_data_available();
    if (!thrown) {
        content.set(m_sink.size());
        return;
    }
    content.set_exception(thrown);
    // Nobody need look at it.
    pplx::create_task(content, pplx::task_options(Workers::atOnce())).then([](const pplx::task<utility::size64_t>& failed) {
        try {
            failed.get();
        }
        catch (...) {
        }
    });
}

} // namespace orlo::http
