#include "WebRequest.h"

#include "Body/Charset.h"
#include "Body/JsonText.h"
#include "Body/SinkBuffer.h"
#include "Engine/EngineStage.h"
#include "Engine/ProxyAddress.h"
#include "Lifetime/Operation.h"
#include "Lifetime/WorkPermit.h"
#include "RequestNote.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/NativeText.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>

#include <algorithm>
#include <stdexcept>

namespace orlo {

namespace OrloWebService {

namespace {

using web::http::http_request;
using web::http::http_response;
using web::http::client::http_client;
using web::http::client::http_client_config;

/// Of the time-out; for a call whose answer comes in drops.
constexpr int wholeCall = 5;

void takeProxy(const std::wstring& proxy, http::Route& route)
{
    const http::ProxyAddress address = http::readProxyAddress(proxy);
    route.proxy = address.url;
    route.proxyUser = address.user;
    route.proxyPassword = address.password;
}

std::chrono::microseconds asTimeout(int seconds)
{
    return std::chrono::seconds(seconds);
}

/// How long files may take is the host's to say; without that they take the time-out of all requests, for each pause.
void takePatience(const OrloConfig& host, http::Route& route)
{
    if (!route.isOfFiles) {
        route.wholeTime = wholeCall * route.timeout;
        return;
    }
    if (host.stallTimeoutSeconds > 0)
        route.timeout = asTimeout(host.stallTimeoutSeconds);
    if (host.transferTimeoutSeconds > 0)
        route.wholeTime = asTimeout(host.transferTimeoutSeconds);
}

std::shared_ptr<const http::Route> routeOf(const http_client_config& config, Traffic traffic, std::shared_ptr<RequestNote> note)
{
    using std::chrono::microseconds;
    constexpr microseconds year = std::chrono::hours(365 * 24);
    const auto host = OrloConfigManager::Get()->snapshot();
    const auto route = std::make_shared<http::Route>();
    route->timeout = std::min(config.timeout<microseconds>(), year);
    route->isOfFiles = traffic == Traffic::files || traffic == Traffic::filesOfBatch;
    takePatience(*host, *route);
    route->note = std::move(note);
    route->keepsConnections = traffic == Traffic::filesOfBatch || (traffic != Traffic::changes && host->keepConnections);
    if (!host->proxy.empty())
        takeProxy(host->proxy, *route);
    if (!host->caFile.empty())
        route->trust = http::trustInFile(host->caFile);
    return route;
}

/// cpprestsdk writes header values as they are, so a line break in one would forge a header.
utility::string_t headerValue(const std::wstring& text, const char* whatItIs)
{
    if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x20 || c > 0x7E; }))
        throw std::invalid_argument(std::string(whatItIs) + " holds characters that fit no header");
    return utils::toNative(text);
}

std::wstring userAgent()
{
    std::wstring agent = L"OrloProjectManager/" ORLO_VERSION;
    const std::wstring version = OrloWebServiceUtils::GetAppVersion();
    if (!version.empty() && std::all_of(version.begin(), version.end(), [](wchar_t c) { return c > 0x20 && c < 0x7F; }))
        agent += L" host/" + version;
    return agent;
}

std::shared_ptr<http_request> requestOf(const web::http::method& method, const web::uri& pathAndQuery)
{
    auto request = std::make_shared<http_request>(method);
    request->set_request_uri(pathAndQuery);
    request->headers().add(web::http::header_names::user_agent, utils::toNative(userAgent()));
    if (const auto session = UserSession::GetInstance(); session && !session->getAccessToken().empty())
        request->headers().add(web::http::header_names::authorization,
                               headerValue(L"Bearer " + session->getAccessToken(), "the access token"));
    return request;
}

bool isJsonType(const utility::string_t& contentType)
{
    static const char* const known[] = {"application/json",         "application/x-json", "application/javascript", "text/json",
                                        "application/x-javascript", "text/x-json",        "text/javascript",        "text/x-javascript"};
    std::string type = utils::fromNativeToUtf8(contentType);
    type.erase(std::min(type.find(';'), type.size()));
    while (!type.empty() && type.back() == ' ')
        type.pop_back();
    std::transform(type.begin(), type.end(), type.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    // A header without a value names no type either.
    return type.empty() || std::any_of(std::begin(known), std::end(known), [&](const char* name) { return type == name; });
}

} // namespace

std::shared_ptr<http_client> CreateClient(const std::wstring& baseUri)
{
    http_client_config config;
    return CreateClient(baseUri, config);
}

std::shared_ptr<http_client> CreateClient(const std::wstring& baseUri, http_client_config& config, Traffic traffic,
                                          std::shared_ptr<RequestNote> note)
{
    // From here on the end of the process knows of requests.
    if (const http::WorkPermit permit; !permit)
        throw std::runtime_error("the process ends");
    config.set_max_redirects(0);
    const auto route = routeOf(config, traffic, std::move(note));
    // It would be cut there without a word.
    if (utils::holdsNul(baseUri))
        throw std::invalid_argument("an address can't hold a NUL");
    const auto client = std::make_shared<http_client>(web::uri(utils::toNative(baseUri)), config);
    client->add_handler(std::make_shared<http::EngineStage>(route));
    return client;
}

std::shared_ptr<http_request> CreateRequest(const web::http::method& method, const web::uri& pathAndQuery, const web::json::value& body)
{
    auto request = requestOf(method, pathAndQuery);
    if (!body.is_null())
        request->set_body(body);
    return request;
}

std::shared_ptr<http_request> CreateRequest(const web::http::method& method, const web::uri& pathAndQuery, const std::wstring& body)
{
    auto request = requestOf(method, pathAndQuery);
    request->set_body(utils::toString(body), "application/json; charset=utf-8");
    return request;
}

http_response SendAndWait(http_client& client, const http_request& request, const RequestNote* note)
try {
    const http::CarriedHere here;
    http_response response = client.request(request, http::Operation::token()).get();
    // content_ready would go through a thread of cpprestsdk's pool.
    pplx::create_task(response._get_impl()->_get_data_available()).get();
    http::tellEnd(request, note, response.status_code());
    return response;
}
catch (...) {
    http::tellFailure(request, note);
    throw;
}

http_response ExecuteRequest(http_client& client, const std::shared_ptr<http_request>& request, ErrorCode& errorCode, std::size_t limit,
                             const RequestNote* note)
{
    const auto body = std::make_shared<std::string>();
    request->set_response_stream(http::SinkBuffer::stream(
        [body, limit](const uint8_t* bytes, std::size_t count) {
            if (count > limit - body->size())
                throw std::length_error("the answer is too large");
            body->append(reinterpret_cast<const char*>(bytes), count);
        },
        http::SinkBuffer::Place::inPlace));
    http_response response = SendAndWait(client, *request, note);

    if (response.status_code() >= 400)
        errorCode.Assign(error::errorStatus, http::errorOfStatus(*request, note, response, TextOf(response, *body)));
    // An answer that names no content type is taken for JSON; the type given here fills that gap only.
    response.set_body(std::move(*body), "application/json");
    return response;
}

std::string ReadBody(const http_response& response)
{
    concurrency::streams::istream stream = response.body();
    uint8_t* bytes = nullptr;
    std::size_t count = 0;
    if (!stream.is_valid() || !stream.streambuf().acquire(bytes, count) || !bytes)
        return {};
    std::string body(reinterpret_cast<const char*>(bytes), count);
    stream.streambuf().release(bytes, 0);
    return body;
}

web::json::value ReadJson(const http_response& response)
{
    const std::string body = ReadBody(response);
    if (body.empty())
        return web::json::value::null();
    if (!isJsonType(response.headers().content_type()))
        throw web::http::http_exception(utility::string_t(utils::toNative(std::string("Incorrect Content-Type: must be JSON"))));
    const http::Charset charset = http::charsetOf(response.headers().content_type());
    std::string text;
    const http::Decoding decoding = http::toUtf8(charset, body, text);
    if (decoding == http::Decoding::unknownCharset)
        throw web::http::http_exception(utility::string_t(utils::toNative(std::string("the answer's charset is unknown"))));
    if (decoding == http::Decoding::invalid)
        throw web::json::json_exception(charset == http::Charset::utf8 ? "the answer is not valid UTF-8"
                                                                       : "the answer is not valid UTF-16");
    return http::parseJson(text);
}

namespace {

std::string utf8Of(const http_response& response, const std::string& body)
{
    std::string text;
    const auto decoding = http::toUtf8(http::charsetOf(response.headers().content_type()), body, text);
    return decoding == http::Decoding::unknownCharset ? body : text;
}

} // namespace

std::wstring TextOf(const http_response& response, const std::string& body)
{
    return utils::toWstring(utf8Of(response, body));
}

std::string ReadText(const http_response& response)
{
    return utf8Of(response, ReadBody(response));
}

bool IsMarkedSuccess(const web::json::value& envelope)
{
    static const utility::string_t& code = utils::neverDestroyed(new utility::string_t(utils::toNative(std::string("code"))));
    return envelope.has_integer_field(code) && envelope.at(code).as_number().to_int64() == 10000;
}

bool ExtractSuccData(const http_response& response, web::json::value& data)
{
    static const utility::string_t& dataKey = utils::neverDestroyed(new utility::string_t(utils::toNative(std::string("data"))));
    if (response.status_code() != web::http::status_codes::OK)
        return false;
    web::json::value envelope = ReadJson(response);
    if (!IsMarkedSuccess(envelope))
        return false;
    data = envelope.has_field(dataKey) ? std::move(envelope.at(dataKey)) : web::json::value::null();
    return true;
}

std::shared_ptr<OrloUserInfo> GetCurrentUserInfo()
{
    const auto session = UserSession::GetInstance();
    return session ? std::make_shared<OrloUserInfo>(session->getAccountId()) : nullptr;
}

} // namespace OrloWebService

namespace OrloWebServiceUtils {

std::wstring GetAppVersion()
{
    return OrloConfigManager::Get()->snapshot()->appVersion;
}

bool ReadFileContentGeneric(const std::wstring& path, std::string& content)
{
    return utils::readWholeFile(path, content);
}

bool WriteDataToFileGeneric(const std::vector<unsigned char>& bytes, std::wstring& path)
{
    if (path.empty() && !utils::GenerateNewFile(path))
        return false;
    return utils::writeFileAtomically(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace OrloWebServiceUtils

} // namespace orlo
