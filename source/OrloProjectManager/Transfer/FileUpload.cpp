#include "FileUpload.h"

#include "../NetworkProject/Call/FieldText.h"
#include "../NetworkProject/Transfer/FileBody.h"
#include "../NetworkProject/Transfer/StreamWeb.h"
#include "../NetworkProject/Transfer/TransferWeb.h"
#include "TransferChain.h"

#include <BaseCommon/BaseConfigManager.h>
#include <BaseCommon/Files.h>
#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>
#include <OrloNetwork/WebRequest.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

namespace orlo {

namespace {

void copyText(const JsonWrapper& data, JsonWrapper& result, const char* key)
{
    if (std::string text; data.Get(key, text))
        result.Add(key, text);
}

void copyInteger(const JsonWrapper& data, JsonWrapper& result, const char* key)
{
    if (long long number = 0; data.Get(key, number))
        result.Add(key, number);
}

std::wstring defaultRemoteFolder()
{
    const auto user = OrloWebService::GetCurrentUserInfo();
    return utils::toWstring(BaseConfigManager::Get()->GetDefaultRemoteFolder()) + L"/" + (user ? user->getAccountId() : L"anonymous");
}

/// Where a file goes in the store.
struct RemoteName
{
    std::wstring fileName;
    std::wstring filePath;
};

using AuthorityStep = std::function<void(ErrorCode&, const RemoteName&, const std::shared_ptr<OrloCallbackContext>&)>;

/// A larger file is sent from where it lies.
constexpr unsigned long long mostInMemory = 16ULL << 20;

bool read(const std::wstring& path, bool gzip, UploadContent& content)
{
    content.gzip = gzip;
    auto file = FileBody::open(path);
    if (!file)
        return false;
    if (gzip || file->size() <= mostInMemory)
        return OrloWebServiceUtils::ReadFileContentGeneric(path, content.bytes);
    content.file = std::move(file);
    return true;
}

void upload(const std::shared_ptr<TransferOutcome>& outcome, const std::wstring& path, RemoteName name, bool gzip,
            const AuthorityStep& acquire)
{
    auto content = contentOrRefusal(*outcome, path, gzip);
    if (!content)
        return;
    if (name.fileName.empty())
        name.fileName = utils::getFileName(path);
    if (name.filePath.empty())
        name.filePath = defaultRemoteFolder();
    startChain(std::make_shared<UploadFileHandler>(outcome, std::move(*content)),
               [name, acquire](ErrorCode& error, const auto& context) { acquire(error, name, context); });
}

std::optional<UploadContent> refusal(TransferOutcome& outcome, const wchar_t* words)
{
    outcome.refuse(words);
    return std::nullopt;
}

} // namespace

std::optional<UploadContent> contentOrRefusal(TransferOutcome& outcome, const std::wstring& path, bool gzip)
{
    if (path.empty() || !utils::fileExists(path))
        return refusal(outcome, L"invalid file path");
    UploadContent content;
    if (!read(path, gzip, content))
        return refusal(outcome, L"read file fail");
    if (!content.file && content.bytes.empty())
        return refusal(outcome, L"invalid file content");
    return content;
}

void putContent(const UploadContent& content, const std::string& address, const std::shared_ptr<OrloCallbackContext>& context,
                ErrorCode& error)
{
    context->propagate = false;
    http::launchWithRetry(context, error, [&content, &address, context, &error] {
        if (content.file)
            OrloWebService::PutFileAsync(error, address, content.file, context);
        else
            OrloWebService::PutFileAsync(error, address, content.bytes, context, content.gzip);
    });
}

std::wstring uploadResult(const std::wstring& remotePath, const std::wstring& answer)
{
    JsonWrapper reply;
    JsonWrapper data;
    if (answer.empty() || !reply.Parse(utils::toString(answer)) || !reply.Get("data", data) || data.IsArray())
        return remotePath;
    // An object alone has members to ask for; any other value, and null, has not.
    const std::string text = data.ToString();
    if (text.empty() || text.front() != '{')
        return remotePath;
    JsonWrapper result;
    result.Add("remoteFilePath", utils::toString(remotePath));
    copyText(data, result, "fileId");
    copyInteger(data, result, "versionIndex");
    copyInteger(data, result, "length");
    return utils::toWstring(result.ToString());
}

UploadFileHandler::UploadFileHandler(std::shared_ptr<TransferOutcome> outcome, UploadContent content)
    : m_content(std::move(content)), m_outcome(std::move(outcome))
{}

void UploadFileHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                                    std::shared_ptr<OrloCallbackContext> context, ErrorCode& error)
{
    if (status == 200 && stepKey == "AcquireUploadAuthority")
        takeAuthority(body);
    if (status == 200 && stepKey == "PutFile") {
        m_result = uploadResult(m_remotePath, body);
        m_putDone = true;
    }
    if (context->propagate) {
        if (!m_putDone)
            putContent(m_content, m_uploadAddress, context, error); // the context keeps this handler, and with it both
        return;
    }
    const bool succeeded = m_authorityAcquired && m_putDone;
    m_outcome->settle(succeeded ? PromiseData(true, 200, m_result) : PromiseData(false, status, body), error,
                      ORLO_HERE("UploadFileHandler::on_complete"));
}

/// An answer that is no JSON gives two empty texts, and counts; an empty one doesn't.
void UploadFileHandler::takeAuthority(const std::wstring& body)
{
    if (body.empty())
        return;
    const web::json::value authority = jsonOrNull(body);
    m_uploadAddress = fieldText(authority, L"fileUrlWithSAS");
    m_remotePath = utils::toWstring(fieldText(authority, L"fileOSSPath"));
    m_authorityAcquired = true;
}

namespace HttpClient {

std::future<PromiseData> uploadFile(ErrorCode& error, const std::wstring& path, std::wstring fileName, std::wstring filePath, bool gzip)
{
    const auto acquire = [](ErrorCode& chainError, const RemoteName& name, const auto& context) {
        OrloWebService::AcquireUploadAuthorityAsync(chainError, name.fileName, name.filePath, context);
    };
    return startTransfer(ORLO_HERE("orlo::HttpClient::uploadFile"), error, [=](const auto& outcome) {
        upload(outcome, path, {fileName, filePath}, gzip, acquire);
    });
}

std::future<PromiseData> uploadFileByArkiv(ErrorCode& error, const std::wstring& path, const std::wstring& targetFolderId,
                                           std::wstring fileName, std::wstring filePath, bool gzip)
{
    const auto acquire = [targetFolderId](ErrorCode& chainError, const RemoteName& name, const auto& context) {
        OrloWebService::AcquireUploadAuthorityByArkivAsync(chainError, name.fileName, name.filePath, targetFolderId, context);
    };
    return startTransfer(ORLO_HERE("orlo::HttpClient::uploadFileByArkiv"), error, [=](const auto& outcome) {
        upload(outcome, path, {fileName, filePath}, gzip, acquire);
    });
}

} // namespace HttpClient

} // namespace orlo
