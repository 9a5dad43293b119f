#include "ChainProbe.h"

namespace orlo::test {

namespace {

Heard heardNow(int status, const std::wstring& body, const std::string& stepKey, const OrloCallbackContext* context,
               const IOrloCallback* handler)
{
    Heard heard;
    heard.status = status;
    heard.body = body;
    heard.stepKey = stepKey;
    heard.propagate = context && context->propagate;
    heard.handlerWasInContext = context && context->handler.get() == handler;
    return heard;
}

} // namespace

void HeardCalls::add(Heard heard)
{
    const std::lock_guard lock(m_mutex);
    m_heard.push_back(std::move(heard));
}

std::vector<Heard> HeardCalls::all() const
{
    const std::lock_guard lock(m_mutex);
    return m_heard;
}

void PlainHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                               std::shared_ptr<OrloCallbackContext> context, ErrorCode&)
{
    heard.add(heardNow(status, body, stepKey, context.get(), this));
    if (then)
        then();
}

void FileHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                              std::shared_ptr<OrloCallbackContext> context, ErrorCode&)
{
    heard.add(heardNow(status, body, stepKey, context.get(), this));
}

void FileHandler::on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data, const std::string& stepKey,
                              std::shared_ptr<OrloCallbackContext> context, ErrorCode&)
{
    Heard call = heardNow(status, body, stepKey, context.get(), this);
    call.data = data;
    call.asBytes = true;
    heard.add(std::move(call));
}

void assignStatus(ErrorCode& error, int status)
{
    error.Assign(error::errorStatus,
                 std::make_shared<HttpError>(L"HttpError", L"{\"status\":" + std::to_wstring(status) + L"}", status, 0));
}

void assignTransportFailure(ErrorCode& error, int code)
{
    error.Assign(error::exception, std::make_shared<HttpError>(L"generic exception", L"Failed to read HTTP status line", code, 0));
}

} // namespace orlo::test
