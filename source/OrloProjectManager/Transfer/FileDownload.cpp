#include "FileDownload.h"

#include "../NetworkProject/Call/FieldReaders.h"
#include "../NetworkProject/Call/FieldText.h"
#include "../NetworkProject/Transfer/LocalFiles.h"
#include "../NetworkProject/Transfer/ReceivedFile.h"
#include "../NetworkProject/Transfer/StreamWeb.h"
#include "../NetworkProject/Transfer/TransferWeb.h"
#include "TransferChain.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>
#include <OrloNetwork/WebRequest.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

namespace orlo {

namespace {

constexpr const char* onComplete = "DownloadFileHandler::on_complete";

void download(const std::shared_ptr<TransferOutcome>& outcome, std::wstring localPath, FirstStep acquire)
{
    if (utils::holdsNul(localPath))
        return outcome->refuse(L"invalid file path");
    prepareLocalFiles();
    if (localPath.empty())
        utils::GenerateNewFile(localPath);
    startChain(std::make_shared<DownloadFileHandler>(outcome, std::move(localPath)), std::move(acquire));
}

} // namespace

DownloadFileHandler::DownloadFileHandler(std::shared_ptr<TransferOutcome> outcome, std::wstring localPath)
    : m_localPath(std::move(localPath)), m_outcome(std::move(outcome))
{}

void DownloadFileHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                                      std::shared_ptr<OrloCallbackContext>, ErrorCode& error)
{
    log::error(L"OrloWebService::GetFileAsync fails" + utils::toWstring(stepKey));
    m_outcome->settle({false, status, body}, error, ORLO_HERE(onComplete));
}

void DownloadFileHandler::on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data,
                                      const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context, ErrorCode& error)
{
    if (status == 200 && stepKey == "GetFile") {
        m_fetched = true;
        m_written = !body.empty() && write(data);
    }
    else if (status == 200) {
        takeAddress(body, stepKey);
    }
    if (context->propagate) {
        if (!m_fetched)
            getFile(context, error);
        return;
    }
    const bool succeeded = m_authorityAcquired && m_fetched && m_written;
    m_outcome->settle(succeeded ? PromiseData(true, 200, m_localPath) : PromiseData(false, status, body), error, ORLO_HERE(onComplete));
}

bool DownloadFileHandler::write(const std::vector<unsigned char>& data)
{
    return m_received && m_received->isLarge() ? m_received->moveToPlace() : OrloWebServiceUtils::WriteDataToFileGeneric(data, m_localPath);
}

void DownloadFileHandler::takeAddress(const std::wstring& body, const std::string& stepKey)
{
    if (body.empty())
        return;
    const web::json::value answer = jsonOrNull(body);
    if (stepKey == "AcquireDownloadAuthority") {
        m_address = utils::toWstring(fieldText(answer, L"fileUrlWithSAS"));
        m_authorityAcquired = true;
    }
    else if (stepKey == "AcquireDownloadModuleFileAuthority") {
        const web::json::value* const file = firstOfData(answer);
        if (!file)
            return;
        m_address = utils::toWstring(fieldText(*file, L"url_with_signature"));
        m_authorityAcquired = true;
    }
}

void DownloadFileHandler::getFile(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error)
{
    context->propagate = false;
    http::launchWithRetry(context, error, [this, context, &error] {
        m_received = std::make_shared<ReceivedFile>(m_localPath);
        OrloWebService::GetFileAsync(error, m_address, context, m_received);
    });
}

namespace HttpClient {

std::future<PromiseData> downloadFile(const std::wstring& remotePath, const std::wstring& localPath, ErrorCode& error)
{
    return startTransfer(ORLO_HERE("orlo::HttpClient::downloadFile"), error, [=](const auto& outcome) {
        if (remotePath.empty())
            return outcome->refuse(L"invalid remote uri path");
        download(outcome, localPath, [remotePath](ErrorCode& chainError, const auto& context) {
            OrloWebService::AcquireDownloadAuthorityAsync(chainError, remotePath, context);
        });
    });
}

std::future<PromiseData> DownloadFileByArkiv(const std::wstring& fileId, int version, const std::wstring& localPath, ErrorCode& error)
{
    return startTransfer(ORLO_HERE("orlo::HttpClient::DownloadFileByArkiv"), error, [=](const auto& outcome) {
        if (fileId.empty())
            return outcome->refuse(L"invalid fileId");
        download(outcome, localPath, [fileId, version](ErrorCode& chainError, const auto& context) {
            OrloWebService::AcquireDownloadAuthorityByArkivAsync(chainError, fileId, version, context);
        });
    });
}

std::future<PromiseData> downloadModuleFile(const std::wstring& requestBody, const std::wstring& localPath,
                                            const std::wstring& resourceType, const std::wstring& spaceType,
                                            const std::wstring& spaceTypeParameter, ErrorCode& error)
{
    const OrloWebService::ModuleFileRequest request{requestBody, resourceType, spaceType, spaceTypeParameter};
    return startTransfer(ORLO_HERE("orlo::HttpClient::downloadModuleFile"), error, [=](const auto& outcome) {
        if (request.body.empty())
            return outcome->refuse(L"invalid remote uri path");
        download(outcome, localPath, [request](ErrorCode& chainError, const auto& context) {
            OrloWebService::AcquireDownloadAuthorityAsyncForModuleFile(chainError, request, context);
        });
    });
}

} // namespace HttpClient

} // namespace orlo
