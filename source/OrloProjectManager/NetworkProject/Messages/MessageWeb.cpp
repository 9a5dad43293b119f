#include "MessageWeb.h"

#include "../Call/WebCall.h"

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* messagesPath = L"/messages";
constexpr const wchar_t* markPath = L"/messages/{type}/{messageId}/mark/{status}";

// Intended: both requests log under the same name.
constexpr const wchar_t* name = L"OrloWebService::GetMessages";
constexpr const wchar_t* failureWords = L"OrloWebService::GetMessages - code:";

} // namespace

bool GetMessages(ErrorCode& error, std::vector<http::ORLOHTTPMessage>& out, const std::wstring& status, const std::wstring& projectId,
                 const std::wstring& datasetId)
{
    WebCall call(name, service::message, methods::GET, messagesPath);
    if (status != L"ALL")
        call.query(L"status", status);
    if (!projectId.empty())
        call.query(L"projectId", projectId);
    if (!datasetId.empty())
        call.query(L"datasetId", datasetId);
    WebAnswer answer = call.untaggedFailureWords(failureWords).send(error);
    if (!answer.ok())
        return false;
    OrloPayloadProcessor::CreateHttpMessagesByJson(answer.body(), out);
    return true;
}

bool MarkMessage(ErrorCode& error, int messageId, const std::wstring& type, const std::wstring& status)
{
    WebCall call(name, service::message, methods::PUT, markPath);
    call.place(L"{type}", type).place(L"{messageId}", messageId).place(L"{status}", status);
    return call.untaggedFailureWords(failureWords).send(error).marked();
}

} // namespace orlo::OrloWebService
