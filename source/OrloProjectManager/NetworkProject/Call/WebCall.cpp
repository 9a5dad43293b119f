#include "WebCall.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/TokenRenewal.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/SecretGuard.h>
#include <OrloNetwork/Lifetime/Operation.h>
#include <OrloNetwork/RequestNote.h>
#include <OrloNetwork/WebRequest.h>

#include <chrono>
#include <stdexcept>

namespace orlo {

web::json::value jsonText(const std::wstring& text)
{
    return web::json::value::string(utils::toNative(text));
}

web::json::value jsonText(const std::string& utf8)
{
    return web::json::value::string(utils::toNative(utf8));
}

JsonBody& JsonBody::add(const wchar_t* key, web::json::value value)
{
    m_members.emplace_back(utils::toNative(std::wstring(key)), std::move(value));
    return *this;
}

namespace {

const web::json::value& nothing()
{
    static const web::json::value& null = utils::neverDestroyed(new web::json::value);
    return null;
}

} // namespace

WebAnswer::WebAnswer(web::http::http_response response, std::wstring name, FailureWords failureWords, std::wstring message)
    : m_response(std::move(response)), m_name(std::move(name)), m_failureWords(std::move(failureWords)), m_message(std::move(message))
{}

bool WebAnswer::ok() const
{
    if (status() == web::http::status_codes::OK)
        return true;
    tellStatus();
    return false;
}

void WebAnswer::tellStatus() const
{
    if (!m_failureWords.words)
        return;
    const std::wstring line = *m_failureWords.words + std::to_wstring(status()) +
                              (m_failureWords.beforeMessage ? *m_failureWords.beforeMessage + m_message : L"");
    m_failureWords.isTagged ? log::error(line) : log::errorUntagged(line);
}

bool WebAnswer::marked()
{
    if (!ok())
        return false;
    if (OrloWebService::IsMarkedSuccess(body()))
        return true;
    complain(m_name + L" - response is not normal: ");
    return false;
}

bool WebAnswer::succeeded()
{
    return ok() && OrloWebService::IsMarkedSuccess(body());
}

bool WebAnswer::succeededOrTold()
{
    if (!ok())
        return false;
    if (OrloWebService::IsMarkedSuccess(body()))
        return true;
    tellStatus();
    return false;
}

bool WebAnswer::okWithData()
{
    return ok() && findData();
}

const web::json::value& WebAnswer::body()
{
    if (!m_body)
        m_body = OrloWebService::ReadJson(m_response);
    return *m_body;
}

std::string WebAnswer::text() const
{
    return OrloWebService::ReadText(m_response);
}

const web::json::value& WebAnswer::data()
{
    const web::json::value* const found = findData();
    return found ? *found : nothing();
}

const web::json::value& WebAnswer::dataOfSuccess()
{
    return succeeded() ? data() : nothing();
}

const web::json::value* WebAnswer::findData()
{
    return memberOf(body(), L"data");
}

void WebAnswer::complain(const std::wstring& words)
{
    const std::wstring line = words + utils::fromNative(body().serialize());
    m_failureWords.isTagged ? log::error(line) : log::errorUntagged(line);
}

WebCall::WebCall(std::wstring name, const wchar_t* serviceKey, web::http::method method, std::wstring path)
    : m_name(std::move(name)),
      m_serviceKey(serviceKey),
      m_method(std::move(method)),
      m_path(std::move(path)),
      m_failureWords{m_name + L" - code:"}
{}

WebCall& WebCall::place(const std::wstring& placeholder, const std::wstring& value)
{
    utils::strReplace(m_path, placeholder, value);
    return *this;
}

WebCall& WebCall::place(const std::wstring& placeholder, const std::string& utf8)
{
    return place(placeholder, utils::toWstring(utf8));
}

WebCall& WebCall::place(const std::wstring& placeholder, int value)
{
    return place(placeholder, utils::toWstring(value));
}

WebCall& WebCall::query(const wchar_t* key, const std::wstring& value)
{
    m_query.emplace_back(utils::toNative(std::wstring(key)), utils::toNative(value));
    return *this;
}

WebCall& WebCall::placePermission(const std::wstring& placeholder, const std::wstring& token)
{
    SecretGuard::protectPermission(token);
    m_pathHoldsPermission = true;
    return place(placeholder, token);
}

WebCall& WebCall::queryPermissionUnlessEmpty(const wchar_t* key, const std::wstring& token)
{
    SecretGuard::protectPermission(token);
    return token.empty() ? *this : query(key, token);
}

WebCall& WebCall::body(web::json::value value)
{
    m_json = std::move(value);
    return *this;
}

WebCall& WebCall::body(std::wstring text)
{
    m_text = std::move(text);
    return *this;
}

WebCall& WebCall::withTimeoutOfFirstUse()
{
    m_timeoutSeconds = timeoutOfFirstUse();
    return *this;
}

WebCall& WebCall::withFreshTimeout()
{
    m_timeoutSeconds = OrloConfigManager::Get()->httpTimeout();
    return *this;
}

WebCall& WebCall::failureWords(std::wstring words)
{
    m_failureWords.words = std::move(words);
    return *this;
}

WebCall& WebCall::untaggedFailureWords(std::wstring words)
{
    m_failureWords.isTagged = false;
    return failureWords(std::move(words));
}

WebCall& WebCall::failsSilently()
{
    m_failureWords.words.reset();
    return *this;
}

WebCall& WebCall::failsWithMessage(std::wstring beforeMessage)
{
    m_failureWords.beforeMessage = std::move(beforeMessage);
    return *this;
}

WebCall& WebCall::onAConnectionOfItsOwn()
{
    m_keepsApart = true;
    return *this;
}

WebCall& WebCall::plainText(std::wstring text)
{
    m_isPlainText = true;
    return body(std::move(text));
}

web::uri_builder WebCall::pathAsUri() const
{
    try {
        return web::uri_builder(utils::toNative(m_path));
    }
    catch (const web::uri_exception&) {
        if (m_pathHoldsPermission) // its words would show the token
            throw std::invalid_argument("a permission token doesn't fit into an address");
        throw;
    }
}

web::uri WebCall::target() const
{
    // It would be cut there without a word, and ask for something else.
    if (utils::holdsNul(m_path))
        throw std::invalid_argument("a path can't hold a NUL");
    web::uri_builder builder = pathAsUri();
    for (const auto& [key, value] : m_query)
        builder.append_query(key, value);
    return builder.to_uri();
}

Exchange WebCall::prepare() const
{
    const std::wstring base = OrloConfigManager::Get()->GetServiceUrl(m_serviceKey);
    if (base.empty())
        throw std::invalid_argument("no address is configured for the service \"" + utils::toString(m_serviceKey) + "\"");
    web::http::client::http_client_config config;
    if (m_timeoutSeconds)
        config.set_timeout(secondsAsTimeout(*m_timeoutSeconds));
    const auto session = UserSession::GetInstance();
    const auto request =
        m_text ? OrloWebService::CreateRequest(m_method, target(), *m_text) : OrloWebService::CreateRequest(m_method, target(), m_json);
    // The token must be that of the session that is told, or a refusal would be taken for another's.
    if (session != UserSession::GetInstance())
        return prepare();
    if (m_isPlainText)
        request->headers().set_content_type(utils::toNative(std::string("text/plain; charset=utf-8")));
    const auto traffic = m_keepsApart ? OrloWebService::Traffic::changes : OrloWebService::Traffic::calls;
    const auto note = http::noteRequest(m_name);
    if (!note->id.empty())
        request->headers().add(utils::toNative(std::string("X-Request-Id")), utils::toNative(note->id));
    return {OrloWebService::CreateClient(base, config, traffic, note), request, note, session, std::chrono::steady_clock::now()};
}

std::optional<Exchange> WebCall::prepareAgain(const Exchange& refused, const web::http::http_response& response) const
{
    if (response.status_code() != web::http::status_codes::Unauthorized || !renewToken(refused.session, refused.made))
        return std::nullopt;
    Exchange made = prepare();
    // Somebody else may have signed in since.
    const bool isOfSameUser = made.session && made.session->isOfSameUser(*refused.session);
    return isOfSameUser ? std::optional(std::move(made)) : std::nullopt;
}

WebAnswer WebCall::answer(const web::http::http_response& response, const ErrorCode& error) const
{
    return WebAnswer(response, m_name, m_failureWords, error.GetErrorMessage());
}

WebAnswer WebCall::send(ErrorCode& error) const
{
    const http::Operation operation;
    const ErrorCode before = error;
    Exchange made = prepare();
    auto response = OrloWebService::ExecuteRequest(*made.client, made.request, error, OrloWebService::largestAnswer, made.note.get());
    if (const auto again = prepareAgain(made, response)) {
        error = before;
        made = *again;
        response = OrloWebService::ExecuteRequest(*made.client, made.request, error, OrloWebService::largestAnswer, made.note.get());
    }
    return answer(response, error);
}

std::chrono::microseconds secondsAsTimeout(int seconds)
{
    return std::chrono::microseconds(std::int64_t{seconds} * 1000000);
}

int timeoutOfFirstUse()
{
    static const int seconds = OrloConfigManager::Get()->httpTimeout();
    return seconds;
}

} // namespace orlo
