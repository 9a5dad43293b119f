#include "RequestNote.h"

#include "CallObserver.h"
#include "Retry/Attempts.h"
#include "Retry/TransportCode.h"

#include <BaseCommon/HostCall.h>
#include <BaseCommon/NativeText.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/Redaction.h>
#include <OrloLogging/SecretGuard.h>

#include <cpprest/asyncrt_utils.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

namespace orlo::http {

namespace {

constexpr int operationCancelled = 125; // whatever the system

struct Observation
{
    std::mutex mutex;
    std::shared_ptr<const CallObserver> observer;
    // Asked for each request, so without the lock.
    std::atomic<bool> isObserved{false};
    std::atomic<bool> hasIds{false};
};

Observation& observation()
{
    static Observation& instance = utils::neverDestroyed(new Observation);
    return instance;
}

std::shared_ptr<const CallObserver> observerNow()
{
    const std::lock_guard lock(observation().mutex);
    return observation().observer;
}

std::optional<std::chrono::seconds> secondsIn(const utility::string_t& text)
{
    constexpr long long longest = 365LL * 24 * 3600;
    long long seconds = 0;
    for (const auto digit : text) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        seconds = std::min(10 * seconds + (digit - '0'), longest);
    }
    return text.empty() ? std::nullopt : std::optional(std::chrono::seconds(seconds));
}

std::optional<utility::datetime> dateIn(const utility::string_t& text)
{
    const auto date = utility::datetime::from_string(text, utility::datetime::RFC_1123);
    return date.is_initialized() ? std::optional(date) : std::nullopt;
}

utility::string_t headerOf(const web::http::http_response& response, const char* name)
{
    const auto found = response.headers().find(utils::toNative(std::string(name)));
    return found == response.headers().end() ? utility::string_t() : found->second;
}

/// A date is meant by the platform's clock, which the answer tells as a rule.
std::optional<std::chrono::seconds> retryAfterOf(const web::http::http_response& response)
{
    const utility::string_t text = headerOf(response, "Retry-After");
    if (const auto seconds = secondsIn(text))
        return seconds;
    const auto date = dateIn(text);
    if (!date)
        return std::nullopt;
    const auto now = dateIn(headerOf(response, "Date")).value_or(utility::datetime::utc_now());
    const auto seconds = static_cast<std::int64_t>(date->to_interval() - now.to_interval()) / 10'000'000; // in units of 100 ns
    return std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, 365LL * 24 * 3600));
}

CallRecord recordOf(const RequestDetails& details, const RequestNote& note)
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    CallRecord record;
    record.operation = details.operation;
    record.method = details.method;
    record.host = details.host;
    record.port = details.port;
    record.path = details.path;
    record.failure = details.failure;
    record.bytesSent = note.bytesSent;
    record.bytesReceived = note.bytesReceived;
    record.milliseconds = Milliseconds(std::chrono::steady_clock::now() - note.begin).count();
    record.attempt = note.attempt;
    record.requestId = note.id;
    return record;
}

void tell(const RequestDetails& details, const RequestNote& note, int status)
{
    CallRecord record = recordOf(details, note);
    record.status = status;
    log::info(record.operation + L" - request:" + record.requestId + L" - " + record.method + L" " + record.path +
              (status != 0 ? L" - status:" + std::to_wstring(status) : L" - " + std::wstring(wordsOf(record.failure))));
    const auto observer = observerNow();
    if (const HostCall call; observer && call)
        (*observer)(record);
}

/// Of the exception that is being handled.
const TransportError* caughtTransportError()
{
    try {
        throw;
    }
    catch (const TransportError& failure) {
        return &failure; // whoever handles it keeps it
    }
    catch (...) {
        return nullptr;
    }
}

/// Of the exception that is being handled.
RequestDetails detailsOfCaught(const web::http::http_request& request, const RequestNote& note)
{
    if (const TransportError* const failure = caughtTransportError())
        return failure->details();
    RequestDetails details = detailsOf(request, note);
    details.failure = transportCodeOfCaught() == operationCancelled ? NetworkFailure::cancelled : NetworkFailure::other;
    return details;
}

template <class Work>
void quietly(const RequestNote* note, const Work& work) noexcept
{
    if (!note || note->id.empty())
        return;
    try {
        work();
    }
    catch (...) { // nothing of a host's leaves here
    }
}

} // namespace

void setCallObserver(CallObserver observer)
{
    HostCall::watchEnd();
    auto replacement = observer ? std::make_shared<const CallObserver>(std::move(observer)) : nullptr;
    // What was swapped out is freed after the lock is gone.
    const std::lock_guard lock(observation().mutex);
    observation().isObserved = replacement != nullptr;
    observation().observer.swap(replacement);
}

void setRequestIds(bool on)
{
    observation().hasIds = on;
}

std::shared_ptr<RequestNote> noteRequest(const std::wstring& operation)
{
    auto note = std::make_shared<RequestNote>();
    note->operation = operation;
    if (const auto attempts = Attempts::current())
        note->attempt = std::max(attempts->number(), 1U);
    if (observation().isObserved || observation().hasIds) {
        note->id = utils::toWstring(uuid::newUUIDV4());
        note->begin = std::chrono::steady_clock::now();
    }
    return note;
}

RequestDetails detailsOf(const web::http::http_request& request, const RequestNote& note)
{
    const web::uri address = request.absolute_uri();
    RequestDetails details;
    details.operation = note.operation;
    details.method = utils::fromNative(request.method());
    details.host = utils::fromNative(address.host());
    details.port = address.port() > 0 ? address.port() : address.scheme() == utils::toNative(std::string("https")) ? 443 : 80;
    details.path = redact(utils::fromNative(address.path()), SecretGuard::secrets());
    details.attempts = note.attempt;
    details.requestId = note.id;
    return details;
}

std::shared_ptr<HttpError> errorOfStatus(const web::http::http_request& request, const RequestNote* note,
                                         const web::http::http_response& response, const std::wstring& text)
{
    constexpr const wchar_t* name = L"HttpError";
    const int status = response.status_code();
    if (!note)
        return makeHttpError(name, text, status, 0);
    RequestDetails details = detailsOf(request, *note);
    details.retryAfter = retryAfterOf(response);
    return makeRequestError(name, text, status, 0, std::move(details));
}

std::shared_ptr<HttpError> errorOfCaught(const std::wstring& name, const std::wstring& text, int code)
{
    if (const TransportError* const failure = caughtTransportError())
        return makeRequestError(name, text, code, 0, failure->details());
    return makeHttpError(name, text, code, 0);
}

void tellEnd(const web::http::http_request& request, const RequestNote* note, int status) noexcept
{
    quietly(note, [&] { tell(detailsOf(request, *note), *note, status); });
}

void tellFailure(const web::http::http_request& request, const RequestNote* note) noexcept
{
    quietly(note, [&] { tell(detailsOfCaught(request, *note), *note, 0); });
}

} // namespace orlo::http
