#include "ModuleUpload.h"

#include "../NetworkProject/Call/FieldReaders.h"
#include "../NetworkProject/Call/FieldText.h"
#include "../NetworkProject/Transfer/TransferWeb.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

namespace orlo {

UploadModuleHandler::UploadModuleHandler(std::shared_ptr<TransferOutcome> outcome, UploadContent content)
    : m_content(std::move(content)), m_outcome(std::move(outcome))
{}

void UploadModuleHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                                      std::shared_ptr<OrloCallbackContext> context, ErrorCode& error)
{
    if (status == 200 && stepKey == "SignModuleUploadUrl")
        takeSignature(body);
    if (status == 200 && stepKey == "PutFile") {
        m_result = result();
        m_put = true;
    }
    if (context->propagate && !m_put)
        return putContent(m_content, m_url, context, error); // the context keeps this handler, and with it both
    // Intended: a chain that goes on although the bytes are there has succeeded.
    const bool failed = !context->propagate && !(m_signed && m_put);
    m_outcome->settle(failed ? PromiseData(false, status, body) : PromiseData(true, 200, m_result), error,
                      ORLO_HERE("UploadModuleHandler::on_complete"));
}

void UploadModuleHandler::takeSignature(const std::wstring& body)
{
    const web::json::value answer = jsonOrNull(body);
    const web::json::value* const file = firstOfData(answer);
    if (!file)
        return;
    m_fileKey = fieldText(*file, L"file_key");
    m_url = fieldText(*file, L"url_with_signature");
    m_signed = true;
}

std::wstring UploadModuleHandler::result() const
{
    JsonWrapper result;
    result.Add("fileKey", m_fileKey);
    result.Add("url", m_url);
    return utils::toWstring(result.ToString());
}

std::future<PromiseData> HttpClient::uploadModule(ErrorCode& error, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                                                  const std::wstring& resourceType, const std::wstring& localPath,
                                                  const std::wstring& fileName, const std::wstring& md5, bool gzip)
{
    const OrloWebService::ModuleUploadRequest request{spaceType, spaceTypeParameter, resourceType, fileName, md5};
    return startTransfer(ORLO_HERE("orlo::HttpClient::uploadModule"), error, [=](const auto& outcome) {
        if (auto content = contentOrRefusal(*outcome, localPath, gzip))
            startChain(std::make_shared<UploadModuleHandler>(outcome, std::move(*content)),
                       [request](ErrorCode& chainError, const auto& context) {
                           OrloWebService::SignModuleUploadUrlAsync(chainError, request, context);
                       });
    });
}

} // namespace orlo
