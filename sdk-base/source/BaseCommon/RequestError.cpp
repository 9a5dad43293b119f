#include "RequestError.h"

#include <utility>

namespace orlo {

const wchar_t* wordsOf(NetworkFailure failure) noexcept
{
    switch (failure) {
    case NetworkFailure::none:
        break;
    case NetworkFailure::hostNotFound:
        return L"host not found";
    case NetworkFailure::proxyNotFound:
        return L"proxy not found";
    case NetworkFailure::notConnected:
        return L"no connection";
    case NetworkFailure::proxyRefused:
        return L"proxy refused";
    case NetworkFailure::noTls:
        return L"no TLS on the other side";
    case NetworkFailure::certificateNotTrusted:
        return L"certificate not trusted";
    case NetworkFailure::certificateExpired:
        return L"certificate expired";
    case NetworkFailure::wrongHostName:
        return L"wrong host name";
    case NetworkFailure::tlsFailed:
        return L"TLS failed";
    case NetworkFailure::timeoutConnecting:
        return L"time-out while connecting";
    case NetworkFailure::timeoutSending:
        return L"time-out while sending";
    case NetworkFailure::timeoutWaiting:
        return L"time-out while waiting for the answer";
    case NetworkFailure::timeoutReceiving:
        return L"time-out while receiving";
    case NetworkFailure::connectionLost:
        return L"connection lost";
    case NetworkFailure::answerCutShort:
        return L"answer cut short";
    case NetworkFailure::answerUnreadable:
        return L"answer unreadable";
    case NetworkFailure::cancelled:
        return L"cancelled";
    case NetworkFailure::other:
        return L"network failure";
    }
    return L"";
}

RequestError::RequestError(const std::wstring& name, const std::wstring& message, int code, int subcode, RequestDetails details)
    : HttpError(name, message, code, subcode), m_details(std::move(details))
{}

RequestError::~RequestError() = default;

std::wstring RequestError::Describe() const
{
    const RequestDetails& of = m_details;
    std::wstring line = of.operation + L": " + of.method + L" " + of.host + L":" + std::to_wstring(of.port) + of.path + L", " +
                        std::to_wstring(of.attempts) + (of.attempts == 1 ? L" attempt: " : L" attempts: ");
    line += of.failure == NetworkFailure::none ? L"status " + std::to_wstring(GetCode()) : std::wstring(wordsOf(of.failure));
    if (!of.words.empty())
        line += L" (" + of.words + L")";
    if (!of.requestId.empty())
        line += L", request " + of.requestId;
    return line;
}

const RequestDetails* requestDetails(const ErrorCode& error)
{
    const auto* const failed = dynamic_cast<const RequestError*>(error.GetCategory().get());
    return failed ? &failed->GetDetails() : nullptr;
}

std::shared_ptr<HttpError> makeRequestError(const std::wstring& name, const std::wstring& message, int code, int subcode,
                                            RequestDetails details)
{
    return std::make_shared<RequestError>(name, message, code, subcode, std::move(details));
}

} // namespace orlo
