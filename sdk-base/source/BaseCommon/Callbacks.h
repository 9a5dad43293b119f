#pragma once

#include <BaseCommon/Export.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class Interruption;
class OrloCallbackContext;

/// Hears the outcome of each step of a chain of asynchronous steps.
class ORLO_BASE_API IOrloCallback
{
public:
    IOrloCallback();
    virtual ~IOrloCallback();

    /// Called once for each step that ended.
    /// status: HTTP status of the step, or a local status where no answer came.   body: the answer's text.
    /// stepKey: names the step.   context: the chain's; may carry the handler into a further step.
    /// Threads: that of the task which ended the step. Must not throw.
    virtual void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                             ErrorCode& error) = 0;

    IOrloCallback(const IOrloCallback&) = delete;
    IOrloCallback& operator=(const IOrloCallback&) = delete;
};

/// A callback whose steps may also bring bytes.
class ORLO_BASE_API IOrloFileCallback : public IOrloCallback
{
public:
    IOrloFileCallback();
    ~IOrloFileCallback() override;

    using IOrloCallback::on_complete;

    /// As the plain form; data: the bytes that the step brought.
    virtual void on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data, const std::string& stepKey,
                             std::shared_ptr<OrloCallbackContext> context, ErrorCode& error) = 0;
};

/// What the steps of one chain share.
class ORLO_BASE_API OrloCallbackContext
{
public:
    explicit OrloCallbackContext(std::shared_ptr<IOrloCallback> chainHandler = nullptr, bool furtherStepFollows = false);
    ~OrloCallbackContext();

    OrloCallbackContext(const OrloCallbackContext&) = delete;
    OrloCallbackContext& operator=(const OrloCallbackContext&) = delete;

    std::shared_ptr<IOrloCallback> handler;
    /// Another step of this chain is still to run. Atomic, since the parallel streams of a batch share one context.
    std::atomic<bool> propagate;
    /// Breaks the chain off: that of whoever began it and waits for its end; null where nobody does.
    const std::shared_ptr<Interruption> interruption;
};

} // namespace orlo
