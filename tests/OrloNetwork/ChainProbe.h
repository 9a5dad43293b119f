#pragma once

#include <BaseCommon/Callbacks.h>
#include <BaseCommon/ErrorCode.h>
#include <OrloNetwork/NetworkCommon.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orlo::test {

/// One call of a handler.
struct Heard
{
    int status = 0;
    std::wstring body;
    std::string stepKey;
    std::vector<unsigned char> data;
    bool asBytes = false;
    bool propagate = false;
    bool handlerWasInContext = false;
};

/// Remembers what the handler of a chain heard.
class HeardCalls
{
public:
    void add(Heard heard);
    std::vector<Heard> all() const;
    std::size_t count() const { return all().size(); }

private:
    mutable std::mutex m_mutex;
    std::vector<Heard> m_heard;
};

/// The handler of a chain; `then` runs inside each call.
class PlainHandler : public IOrloCallback
{
public:
    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;

    HeardCalls heard;
    std::function<void()> then;
};

class FileHandler : public IOrloFileCallback
{
public:
    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;
    void on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data, const std::string& stepKey,
                     std::shared_ptr<OrloCallbackContext> context, ErrorCode& error) override;

    HeardCalls heard;
};

/// A retry policy for the length of a test.
class RetryPolicyGuard
{
public:
    explicit RetryPolicyGuard(http::RetryPolicy policy) { http::setRetryPolicy(policy); }
    ~RetryPolicyGuard() { http::setRetryPolicy({}); }
    RetryPolicyGuard(const RetryPolicyGuard&) = delete;
    RetryPolicyGuard& operator=(const RetryPolicyGuard&) = delete;
};

/// An answer with an error status, as a request leaves it in its ErrorCode.
void assignStatus(ErrorCode& error, int status);
/// A failure of the transport.
void assignTransportFailure(ErrorCode& error, int code);

} // namespace orlo::test
