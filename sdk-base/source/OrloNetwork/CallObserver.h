#pragma once

#include <BaseCommon/RequestError.h>
#include <OrloNetwork/Export.h>

#include <cstdint>
#include <functional>
#include <string>

namespace orlo::http {

/// A request that has ended, one attempt of it. Nothing of it is secret.
struct CallRecord
{
    std::wstring operation; ///< of the web service, as the log names it: "OrloWebService::GetAllProjects"
    std::wstring method;
    std::wstring host;
    int port = 0;
    std::wstring path; ///< without the query; tokens in it are masked
    int status = 0;    ///< 0: no answer came whole; `failure` tells why
    NetworkFailure failure = NetworkFailure::none;
    /// Of the bodies.
    std::uint64_t bytesSent = 0;
    std::uint64_t bytesReceived = 0;
    double milliseconds = 0; ///< from its making to the end of its answer
    unsigned attempt = 1;
    std::wstring requestId; ///< as the platform has it in the header "X-Request-Id"; of a signed address it is known here alone
};

using CallObserver = std::function<void(const CallRecord&)>;

/// Tells of every request when it has ended, on the thread that it ended on: that of an operation, or one of the library's. It may be
/// called by several at once, and must be quick: the call that it is told of waits for it. What it throws is dropped. Null: nobody is told
/// any more, but of a request that ends at this moment; take an observer away before what it uses goes. None is told once the process ends.
/// A call of the library's out of an observer is observed too. Nothing is measured, and no id made, while there is no observer.   Threads:
/// any.
ORLO_NETWORK_API void setCallObserver(CallObserver observer);

/// Gives every request to the platform's services an id, in the header "X-Request-Id", in a line of the log when it has ended, and in the
/// RequestError of one that fails. An observer does the same. Requests to signed addresses carry no such header.   Default: off.
/// Threads: any.
ORLO_NETWORK_API void setRequestIds(bool on);

} // namespace orlo::http
