#pragma once

#include "WebCall.h"

#include <BaseCommon/Callbacks.h>

#include <cpprest/streams.h>

#include <functional>
#include <memory>
#include <string>

namespace orlo {

/// A step of a chain while its request is under way. The ErrorCode is the chain's and lives as long as the context.
struct Step
{
    std::string key;
    std::shared_ptr<OrloCallbackContext> context;
    ErrorCode* error;

    /// Tells the chain's handler that the step ended. Without a handler nobody is told.
    void complete(int status, const std::wstring& body) const;
    void complete(int status, const std::wstring& body, const std::vector<unsigned char>& data) const;
    /// No further step follows.
    void stop() const { context->propagate = false; }
};

/// An answer with what asked for it.
struct Arrival
{
    web::http::http_response response;
    Exchange made;
};

/// Sends a request whose answer's body goes to `sink`, and calls `answered` on one of the library's workers
/// when the whole body has gone there. What `prepare` throws, what goes wrong on the way, and what `answered` throws
/// reaches the chain's handler through HandleCasablancaException. Throws nothing itself.
/// abandon: called before a failure is told; from then on nothing of what came may be there. It must not throw.
void exchange(const Step& step, const std::function<Exchange()>& prepare, const concurrency::streams::ostream& sink,
              std::function<void(const Arrival&)> answered, std::function<void()> abandon = nullptr);

/// The same for a REST operation, with the answer in memory. A status of 400 or above is left in the step's ErrorCode.
void send(const Step& step, const WebCall& call, const std::function<void(WebAnswer&)>& answered);

/// Leaves an error status in the ErrorCode; a status below 400 leaves it alone.
void noteStatus(ErrorCode& error, const Arrival& arrival, const std::string& body);

} // namespace orlo
