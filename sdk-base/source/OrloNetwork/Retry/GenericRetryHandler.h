#pragma once

#include <BaseCommon/Callbacks.h>
#include <BaseCommon/ErrorCode.h>
#include <OrloNetwork/Export.h>

#include <atomic>
#include <functional>
#include <memory>

namespace orlo::http {

class Attempts;
struct Patience;

/// Stands between an asynchronous request and the handler of its chain, and repeats the request by the same rule and
/// limits as SendNormalRequestWithRetry. Between two attempts it holds no thread. When it is done, it puts the chain's own
/// handler back into the context and passes the last answer on, exactly once. A second answer to the same attempt is dropped.
///
/// Launch order: make it in a shared_ptr; setOriginalHandler and setOriginalPropogation from the context; put it into the
/// context; setFunc; execute.
class ORLO_NETWORK_API GenericRetryHandler : public IOrloFileCallback, public std::enable_shared_from_this<GenericRetryHandler>
{
public:
    GenericRetryHandler();
    ~GenericRetryHandler() override;

    void setOriginalHandler(std::shared_ptr<IOrloCallback> handler);
    void setOriginalPropogation(bool propagate);
    /// The request, bound to the context and its arguments. It is released when the last answer was passed on.
    void setFunc(std::function<void()> request);

    /// Runs the request. What it throws is reported to the chain's handler with status 5555. `errorCode` is the one that
    /// the request writes to; it must live as long as the request's function.
    void execute(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& errorCode);

    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;
    void on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data, const std::string& stepKey,
                     std::shared_ptr<OrloCallbackContext> context, ErrorCode& error) override;

private:
    bool deservesAnotherAttempt(int status, const OrloCallbackContext& context, ErrorCode& error) const;
    /// Plans another attempt if there is to be one.
    bool repeats(int status, const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error);
    void repeatLater(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error);
    void run(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error);
    std::shared_ptr<IOrloCallback> finish(const std::shared_ptr<OrloCallbackContext>& context);

    std::shared_ptr<IOrloCallback> m_originalHandler;
    bool m_originalPropagation = false;
    std::shared_ptr<const std::function<void()>> m_request;
    const std::unique_ptr<const Patience> m_patience;
    unsigned m_repeated = 0;
    const std::shared_ptr<Attempts> m_attempts;
    std::atomic<bool> m_awaitsAnswer{false};
};

/// The launch order in one call: runs `request` under a new retry handler.
ORLO_NETWORK_API void launchWithRetry(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& errorCode,
                                      std::function<void()> request);

} // namespace orlo::http
