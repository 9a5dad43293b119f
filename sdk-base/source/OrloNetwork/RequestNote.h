#pragma once

// What is known of a request besides what goes over the wire, for its record, its error and its lines in the log.

#include <BaseCommon/RequestError.h>
#include <OrloNetwork/Export.h>

#include <cpprest/http_msg.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace orlo::http {

struct RequestNote
{
    std::wstring operation; ///< as the log names it
    unsigned attempt = 1;
    std::wstring id; ///< empty where nobody looks and ids are off
    std::chrono::steady_clock::time_point begin;
    // Counted by whoever carries the request.
    std::uint64_t bytesSent = 0;
    std::uint64_t bytesReceived = 0;
};

/// For a request that this thread is about to make.
ORLO_NETWORK_API std::shared_ptr<RequestNote> noteRequest(const std::wstring& operation);

/// The request as an error tells of it. `request` has been handed to its client.
ORLO_NETWORK_API RequestDetails detailsOf(const web::http::http_request& request, const RequestNote& note);

/// The HttpError of an answer with an error status.   text: of its body.   note: null where there is none.
ORLO_NETWORK_API std::shared_ptr<HttpError> errorOfStatus(const web::http::http_request& request, const RequestNote* note,
                                                          const web::http::http_response& response, const std::wstring& text);
/// The HttpError of the exception that is being handled: with all that is known of the request, if it is that of one.
ORLO_NETWORK_API std::shared_ptr<HttpError> errorOfCaught(const std::wstring& name, const std::wstring& text, int code);

/// Tell the observer and the log, where either wants to know.
ORLO_NETWORK_API void tellEnd(const web::http::http_request& request, const RequestNote* note, int status) noexcept;
/// Of the exception that is being handled.
ORLO_NETWORK_API void tellFailure(const web::http::http_request& request, const RequestNote* note) noexcept;

/// A transport failure with what is known of its request.
class TransportError : public web::http::http_exception
{
public:
    TransportError(const web::http::http_exception& failure, std::shared_ptr<const RequestDetails> details)
        : web::http::http_exception(failure), m_details(std::move(details))
    {}

    const RequestDetails& details() const { return *m_details; }

private:
    std::shared_ptr<const RequestDetails> m_details;
};

} // namespace orlo::http
