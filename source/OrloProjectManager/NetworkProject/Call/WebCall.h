#pragma once

#include "FieldReaders.h"

#include <BaseCommon/ErrorCode.h>

#include <cpprest/http_client.h>
#include <cpprest/json.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orlo {

class UserSession;
namespace http {
struct RequestNote;
}

/// The services of the platform, as the configuration names them.
namespace service {
inline constexpr const wchar_t* project = L"project";
inline constexpr const wchar_t* structure = L"structure";
inline constexpr const wchar_t* module = L"module";
inline constexpr const wchar_t* message = L"message";
inline constexpr const wchar_t* authorization = L"authorization";
inline constexpr const wchar_t* slproxy = L"slproxy";
} // namespace service

using web::http::methods;

/// Text as a JSON string.
web::json::value jsonText(const std::wstring& text);
web::json::value jsonText(const std::string& utf8);

/// Texts as a JSON array.
template <class Text>
web::json::value jsonTexts(const std::vector<Text>& texts)
{
    std::vector<web::json::value> elements;
    elements.reserve(texts.size());
    for (const Text& text : texts)
        elements.push_back(jsonText(text));
    return web::json::value::array(std::move(elements));
}

/// A JSON object whose members go on the wire in the order in which they are given.
class JsonBody
{
public:
    JsonBody& add(const wchar_t* key, const std::wstring& text) { return add(key, jsonText(text)); }
    JsonBody& add(const wchar_t* key, const std::string& utf8) { return add(key, jsonText(utf8)); }
    JsonBody& add(const wchar_t* key, int number) { return add(key, web::json::value::number(number)); }
    JsonBody& add(const wchar_t* key, web::json::value value);
    JsonBody& addUnlessEmpty(const wchar_t* key, const std::wstring& text) { return text.empty() ? *this : add(key, text); }
    web::json::value done() { return web::json::value::object(std::move(m_members), true); }

private:
    std::vector<std::pair<utility::string_t, web::json::value>> m_members;
};

/// A client and a request, made for each other and for one use.
struct Exchange
{
    std::shared_ptr<web::http::client::http_client> client;
    std::shared_ptr<web::http::http_request> request;
    std::shared_ptr<http::RequestNote> note;
    std::shared_ptr<UserSession> session{}; ///< whose token goes along; null where none does
    std::chrono::steady_clock::time_point made{};
};

/// What is logged for a status that is not 200: the words and the status, with the platform's own words behind them or not;
/// nothing where there are no words.
struct FailureWords
{
    std::optional<std::wstring> words;
    std::optional<std::wstring> beforeMessage{}; ///< none: the platform's words aren't logged
    bool isTagged = true;
};

/// The answer to a web call. An operation asks it for the form of success that is its own; what the answer then lacks has
/// been logged under the operation's name. Reading the body throws if it is no JSON.
class WebAnswer
{
public:
    WebAnswer(web::http::http_response response, std::wstring name, FailureWords failureWords, std::wstring message);

    int status() const { return m_response.status_code(); }
    /// Status 200. Any other status logs the failure words and the status.
    bool ok() const;
    /// Status 200 and a body with the integer "code" 10000; logs a body without it as not normal.
    bool marked();
    /// The same without a line for a body that lacks the mark.
    bool succeeded();
    /// The same where a body without the mark is logged like a status that is not 200, with its 200.
    bool succeededOrTold();
    /// Status 200 and a body with a member "data", whatever its code.
    bool okWithData();

    /// The whole body; null for an empty one.
    const web::json::value& body();
    /// The whole body as text in UTF-8, whatever its content type.
    std::string text() const;
    /// The member "data" of the body; null where there is none.
    const web::json::value& data();
    /// Null where the body has no member "data".
    const web::json::value* findData();
    /// The member "data" of an answer that succeeded; null of any other.
    const web::json::value& dataOfSuccess();

    /// Logs what is wrong with the body, followed by the body.
    void complain(const std::wstring& words);

private:
    void tellStatus() const;

    web::http::http_response m_response;
    std::wstring m_name;
    FailureWords m_failureWords;
    std::wstring m_message; ///< the platform's words about an error status
    std::optional<web::json::value> m_body;
};

/// One REST operation: says what is particular to it, then sends it.
///
///     WebCall call(L"OrloWebService::GetAllProjects", service::project, methods::GET, L"/projects");
///     call.query(L"scenario", scenario);
///     WebAnswer answer = call.send(error);
class WebCall
{
public:
    WebCall(std::wstring name, const wchar_t* serviceKey, web::http::method method, std::wstring path);

    /// Puts a value in the place of "{name}" in the path, as it stands.
    WebCall& place(const std::wstring& placeholder, const std::wstring& value);
    WebCall& place(const std::wstring& placeholder, const std::string& utf8);
    WebCall& place(const std::wstring& placeholder, int value);
    /// Adds to the query, URI-encoded, in the order of the calls.
    WebCall& query(const wchar_t* key, const std::wstring& value);
    /// The same for a permission token: no log line and no error text shows it from now on.
    WebCall& placePermission(const std::wstring& placeholder, const std::wstring& token);
    WebCall& queryPermissionUnlessEmpty(const wchar_t* key, const std::wstring& token);
    WebCall& body(web::json::value value);
    /// A body that is text already.
    WebCall& body(std::wstring text);
    /// The time-out of the configuration, as it was when the process first asked for it.
    WebCall& withTimeoutOfFirstUse();
    /// The time-out of the configuration as it is now.
    WebCall& withFreshTimeout();
    /// Another text than "<Name> - code:" for a status that is not 200.
    WebCall& failureWords(std::wstring words);
    /// The same without the tag of the library's lines.
    WebCall& untaggedFailureWords(std::wstring words);
    /// A status that is not 200 is not logged.
    WebCall& failsSilently();

    /// For a GET that changes something: libcurl would send it again on a kept connection that turns out to be dead.
    WebCall& onAConnectionOfItsOwn();

    /// A body of plain text, which is not JSON to the platform.
    WebCall& plainText(std::wstring text);
    /// A status that is not 200 is logged with the platform's words behind it.
    WebCall& failsWithMessage(std::wstring beforeMessage = L" message: ");

    /// Throws on a transport failure, for an address or a path that is no URI, and for a service without an address.
    WebAnswer send(ErrorCode& error) const;
    /// The client and the request alone, for an asynchronous step.
    Exchange prepare() const;
    /// The same once more, where the platform refused the token and the same user has another one now: asks for it, which may take its
    /// time.
    std::optional<Exchange> prepareAgain(const Exchange& refused, const web::http::http_response& response) const;
    WebAnswer answer(const web::http::http_response& response, const ErrorCode& error) const;

private:
    web::uri_builder pathAsUri() const;
    web::uri target() const;

    std::wstring m_name;
    const wchar_t* m_serviceKey;
    web::http::method m_method;
    std::wstring m_path;
    std::vector<std::pair<utility::string_t, utility::string_t>> m_query;
    web::json::value m_json;
    std::optional<std::wstring> m_text;
    bool m_isPlainText = false;
    bool m_keepsApart = false;
    bool m_pathHoldsPermission = false;
    std::optional<int> m_timeoutSeconds;
    FailureWords m_failureWords;
};

/// The time-out of the configuration in seconds. Read once for each process; a later change has no effect.
int timeoutOfFirstUse();
/// As cpprestsdk's configuration takes it.
std::chrono::microseconds secondsAsTimeout(int seconds);

} // namespace orlo
