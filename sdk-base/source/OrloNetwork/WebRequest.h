#pragma once

// The one place where requests are made and sent. cpprestsdk's types end above this library: they appear in the web
// functions and the transfer chains, never in a header that a host includes.

#include <BaseCommon/Callbacks.h>
#include <BaseCommon/ErrorCode.h>
#include <OrloNetwork/Export.h>

#include <cpprest/http_client.h>
#include <cpprest/json.h>

#include <memory>
#include <string>

namespace orlo {

/// The user who is signed in, as the web functions need them.
class ORLO_NETWORK_API OrloUserInfo
{
public:
    explicit OrloUserInfo(std::wstring accountId) : m_accountId(std::move(accountId)) {}
    const std::wstring& getAccountId() const { return m_accountId; }

private:
    std::wstring m_accountId;
};

namespace http {
struct RequestNote;
}

namespace OrloWebService {

using http::RequestNote;

/// What the requests of a client carry.
enum class Traffic {
    calls,       ///< JSON: the whole of a call gets no longer than five times the time-out
    changes,     ///< the same for a GET that changes something, and so never goes on a kept connection
    files,       ///< as long as there is headway
    filesOfBatch ///< the same, on connections that are kept for the next file
};

/// Of an answer that tells an error no more is kept; the rest isn't read.
constexpr std::size_t largestErrorBody = std::size_t{1} << 20;

/// A client for one request. It follows no redirects, which would carry the access token to another host, verifies
/// certificates always, and uses the proxy and the certificate file of the configuration. The time-out of the config is how long a request
/// may go without any headway: nothing looked up, connected, sent or received.
/// note: of its request, for what is told of a failure; null: nothing but the words.
/// Throws std::invalid_argument for an empty or unusable address, and std::runtime_error once the process ends.
ORLO_NETWORK_API std::shared_ptr<web::http::client::http_client> CreateClient(const std::wstring& baseUri);
ORLO_NETWORK_API std::shared_ptr<web::http::client::http_client> CreateClient(const std::wstring& baseUri,
                                                                              web::http::client::http_client_config& config,
                                                                              Traffic traffic = Traffic::calls,
                                                                              std::shared_ptr<RequestNote> note = nullptr);

/// A request with the user's identity in its headers. A null body means no body. A request is sent once; another
/// attempt makes another one. Throws for a path that is no valid URI and for a token that fits no header.
ORLO_NETWORK_API std::shared_ptr<web::http::http_request> CreateRequest(const web::http::method& method, const web::uri& pathAndQuery,
                                                                        const web::json::value& body);
ORLO_NETWORK_API std::shared_ptr<web::http::http_request> CreateRequest(const web::http::method& method, const web::uri& pathAndQuery,
                                                                        const std::wstring& body);

/// Sends the request on this thread, and returns when all of the answer is in the request's response stream. Throws on a transport failure,
/// and what the stream throws.
ORLO_NETWORK_API web::http::http_response SendAndWait(web::http::client::http_client& client, const web::http::http_request& request,
                                                      const RequestNote* note = nullptr);

/// No answer of the REST services comes near this; beyond it an answer is taken for an attack on the memory.
constexpr std::size_t largestAnswer = std::size_t{128} << 20;

/// Sends the request on this thread and waits for the whole answer, body included. A status of 400 or above leaves an HttpError with
/// the answer's body as its message in `errorCode`; other statuses leave `errorCode` alone. Throws on a transport failure,
/// and std::length_error for a body of more than `limit` bytes, of which no more than those are read into memory.
ORLO_NETWORK_API web::http::http_response ExecuteRequest(web::http::client::http_client& client,
                                                         const std::shared_ptr<web::http::http_request>& request, ErrorCode& errorCode,
                                                         std::size_t limit = largestAnswer, const RequestNote* note = nullptr);

/// The bytes of an answer that ExecuteRequest returned.
ORLO_NETWORK_API std::string ReadBody(const web::http::http_response& response);

/// The answer's body as JSON; null for an empty one. Throws http_exception for a content type that is not JSON's or names an unknown
/// charset, and json_exception for a body that doesn't parse, isn't valid in its charset, nests deeper than cpprestsdk reads or
/// holds more values than parseJson takes.
/// Without a charset the body is UTF-8; UTF-16 without a byte order mark has the high byte first.
ORLO_NETWORK_API web::json::value ReadJson(const web::http::http_response& response);

/// A body of the answer as text: in the charset that its content type names, or in UTF-8 where it names none, or one that isn't known.
/// What isn't valid there reads as U+FFFD.
ORLO_NETWORK_API std::wstring TextOf(const web::http::http_response& response, const std::string& body);
/// The answer's body as text in UTF-8, whatever its content type says that it is. Bytes that aren't UTF-8 where they should be stay as they
/// are.
ORLO_NETWORK_API std::string ReadText(const web::http::http_response& response);

/// True when the status is 200 and the envelope's integer "code" is 10000; `data` then holds the member "data".
ORLO_NETWORK_API bool ExtractSuccData(const web::http::http_response& response, web::json::value& data);

/// Whether a JSON value is an envelope with the integer "code" 10000.
ORLO_NETWORK_API bool IsMarkedSuccess(const web::json::value& envelope);

/// One line each; of an address they show the path only, since a query may hold a signature.
ORLO_NETWORK_API void LogRequest(const web::http::client::http_client& client, const web::http::http_request& request);
ORLO_NETWORK_API void LogResponse(const web::http::http_response& response, const web::http::http_request& request, ErrorCode& errorCode);

/// Null when nobody is signed in.
ORLO_NETWORK_API std::shared_ptr<OrloUserInfo> GetCurrentUserInfo();

} // namespace OrloWebService

namespace OrloWebServiceUtils {

/// The version that the host gave for itself; empty if it gave none.
ORLO_NETWORK_API std::wstring GetAppVersion();
ORLO_NETWORK_API bool ReadFileContentGeneric(const std::wstring& path, std::string& content);
/// A path that is empty is filled with that of a new file.
ORLO_NETWORK_API bool WriteDataToFileGeneric(const std::vector<unsigned char>& bytes, std::wstring& path);

} // namespace OrloWebServiceUtils

namespace http {

/// The envelope as a record.
struct ORLOHTTPGenericResponse
{
    int code = 0;
    web::json::value data;
    std::wstring message;
};

/// The last continuation of an asynchronous request: takes a failure out of the task, so that it is never unobserved,
/// and reports it to the context's handler with status 5555. A task that succeeded is left alone. Never throws.
ORLO_NETWORK_API void HandleCasablancaException(const pplx::task<void>& task, const std::shared_ptr<OrloCallbackContext>& context,
                                                const std::string& stage, ErrorCode& errorCode) noexcept;

} // namespace http

namespace OrloPayloadProcessor {

/// False for a value that is no object with an integer "code".
ORLO_NETWORK_API bool ParseORLOHTTPGenericResponse(const web::json::value& value, http::ORLOHTTPGenericResponse& response);

} // namespace OrloPayloadProcessor

} // namespace orlo
