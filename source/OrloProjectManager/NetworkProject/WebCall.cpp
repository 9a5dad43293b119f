#include "WebCall.h"

#include "../Log.h"

#include <BaseCommon/Text.h>
#include <OrloCommon/OrloConfigManager.h>
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

web::json::value jsonTexts(const std::vector<std::wstring>& texts)
{
    std::vector<web::json::value> values;
    values.reserve(texts.size());
    for (const std::wstring& text : texts)
        values.push_back(jsonText(text));
    return web::json::value::array(std::move(values));
}

JsonBody& JsonBody::add(const wchar_t* key, web::json::value value)
{
    m_members.emplace_back(utils::toNative(std::wstring(key)), std::move(value));
    return *this;
}

WebAnswer::WebAnswer(web::http::http_response response, std::wstring name, std::optional<std::wstring> failureWords)
    : m_response(std::move(response)), m_name(std::move(name)), m_failureWords(std::move(failureWords))
{}

bool WebAnswer::ok() const
{
    if (m_response.status_code() == web::http::status_codes::OK)
        return true;
    if (m_failureWords)
        log::error(*m_failureWords + std::to_wstring(m_response.status_code()));
    return false;
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

const web::json::value& WebAnswer::data()
{
    static const web::json::value none;
    const web::json::value* const found = findData();
    return found ? *found : none;
}

const web::json::value* WebAnswer::findData()
{
    return memberOf(body(), L"data");
}

std::wstring WebAnswer::text() const
{
    return utils::toWstring(OrloWebService::ReadBody(m_response));
}

void WebAnswer::complain(const std::wstring& words)
{
    log::error(words + utils::fromNative(body().serialize()));
}

WebCall::WebCall(std::wstring name, const wchar_t* serviceKey, web::http::method method, std::wstring path)
    : m_name(std::move(name)),
      m_serviceKey(serviceKey),
      m_method(std::move(method)),
      m_path(std::move(path)),
      m_failureWords(m_name + L" - code:")
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

WebCall& WebCall::withTimeout()
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
    m_failureWords = std::move(words);
    return *this;
}

WebCall& WebCall::failsSilently()
{
    m_failureWords.reset();
    return *this;
}

web::uri WebCall::target() const
{
    web::uri_builder builder(utils::toNative(m_path));
    for (const auto& [key, value] : m_query)
        builder.append_query(key, value);
    return builder.to_uri();
}

WebAnswer WebCall::send(ErrorCode& error) const
{
    const std::wstring base = OrloConfigManager::Get()->GetServiceUrl(m_serviceKey);
    if (base.empty())
        throw std::invalid_argument("no address is configured for the service \"" + utils::toString(m_serviceKey) + "\"");
    web::http::client::http_client_config config;
    if (m_timeoutSeconds)
        config.set_timeout(std::chrono::microseconds(std::int64_t{*m_timeoutSeconds} * 1000000));
    const auto client = OrloWebService::CreateClient(base, config);
    const auto request =
        m_text ? OrloWebService::CreateRequest(m_method, target(), *m_text) : OrloWebService::CreateRequest(m_method, target(), m_json);
    return WebAnswer(OrloWebService::ExecuteRequest(*client, request, error), m_name, m_failureWords);
}

int timeoutOfFirstUse()
{
    static const int seconds = OrloConfigManager::Get()->httpTimeout();
    return seconds;
}

} // namespace orlo
