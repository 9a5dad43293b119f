#pragma once

#include <BaseCommon/ErrorCode.h>

#include <chrono>
#include <optional>
#include <string>

namespace orlo {

/// What kept a request from being answered.
enum class NetworkFailure {
    none, ///< an answer came: its status tells
    hostNotFound,
    proxyNotFound,
    notConnected, ///< refused, or out of reach
    proxyRefused, ///< the proxy lets nobody through, or not this user
    noTls,        ///< the other side doesn't speak TLS
    certificateNotTrusted,
    certificateExpired,
    wrongHostName, ///< the certificate is another host's
    tlsFailed,     ///< for any other reason
    timeoutConnecting,
    timeoutSending,
    timeoutWaiting, ///< for the answer's head
    timeoutReceiving,
    connectionLost,
    answerCutShort,
    answerUnreadable,
    cancelled,
    other
};

/// In English: "certificate not trusted", "time-out while sending". Empty for none.
ORLO_BASE_API const wchar_t* wordsOf(NetworkFailure failure) noexcept;

/// A request that failed. Nothing of it is secret: it can be shown, logged and sent to a support desk.
struct RequestDetails
{
    std::wstring operation; ///< of the web service, as the log names it: "OrloWebService::GetAllProjects"
    std::wstring method;
    std::wstring host;
    int port = 0;
    std::wstring path;     ///< without the query; tokens in it are masked
    unsigned attempts = 1; ///< this one was the last of so many
    NetworkFailure failure = NetworkFailure::none;
    std::wstring words;     ///< the network's own about the failure; empty where an answer came
    std::wstring requestId; ///< empty unless request ids are switched on
    /// How long the platform wants to be left alone, where its answer says so.
    std::optional<std::chrono::seconds> retryAfter;
};

/// The HttpError of a request: the same name, message, code and subcode as ever, and what is known besides.
class ORLO_BASE_API RequestError : public HttpError
{
public:
    RequestError(const std::wstring& name, const std::wstring& message, int code, int subcode, RequestDetails details);
    ~RequestError() override;

    const RequestDetails& GetDetails() const { return m_details; }
    /// A line for a person: "GetAllProjects: GET platform:443/projects, 4 attempts: certificate not trusted (self-signed certificate)".
    std::wstring Describe() const;

private:
    RequestDetails m_details;
};

/// Null where the error tells of no request: of a refused input, an answer that came but isn't as it should be, a file that can't be read.
/// Valid as long as the error's category.
ORLO_BASE_API const RequestDetails* requestDetails(const ErrorCode& error);

/// The same category outlives the library that asks for it.
ORLO_BASE_API std::shared_ptr<HttpError> makeRequestError(const std::wstring& name, const std::wstring& message, int code, int subcode,
                                                          RequestDetails details);

} // namespace orlo
