#include "TransferWeb.h"

#include "../Call/AsyncCall.h"
#include "../Call/FieldReaders.h"
#include "../Call/FieldText.h"
#include "../Call/Refusal.h"

#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>
#include <OrloNetwork/Body/JsonText.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* newFilePath = L"/file/new";
constexpr const wchar_t* newDocumentPath = L"/file/doc/upload/url/with/filename";
constexpr const wchar_t* readFilePath = L"/file/read";
constexpr const wchar_t* readDocumentPath = L"/file/doc/{fileId}/download/url";
constexpr const wchar_t* readModuleFilePath = L"/{spaceType}/{spaceTypeParameter}/types/{resourceType}/files/sign_download_url";
constexpr const wchar_t* newModuleFilePath = L"/{spaceType}/{spaceTypeParameter}/types/{resourceType}/files/sign_upload_url";
constexpr const wchar_t* readBlocksPath = L"/datasets/{datasetId}/blockFiles/readSAS";

constexpr const char* uploadStep = "AcquireUploadAuthority";
constexpr const char* downloadStep = "AcquireDownloadAuthority";
constexpr const char* moduleStep = "AcquireDownloadModuleFileAuthority";
constexpr const char* moduleUploadStep = "SignModuleUploadUrl";
constexpr const char* batchStep = "AcquireBatchDownloadAuthority";

/// Where the authority stands in an answer.
enum class Authority { isTheBody, standsUnderData };

std::wstring authorityText(WebAnswer& answer, Authority place)
{
    const utility::string_t whole = answer.body().serialize();
    if (place == Authority::isTheBody)
        return utils::fromNative(whole);
    try {
        // Read once more, since not all that was read can be: a number beyond all bounds is written as no number.
        const web::json::value envelope = http::parseJson(utils::fromNativeToUtf8(whole));
        const web::json::value* const data = memberOf(envelope, L"data");
        return utils::fromNative(data && data->is_object() ? data->serialize() : whole);
    }
    catch (const std::exception&) { // half a surrogate pair is told by another type than the rest
        log::error(L" catch value::parse(all_data) error");
        return utils::fromNative(whole);
    }
}

/// Of a refusal nothing, and the chain stops.
std::wstring authorityOrStop(const Step& step, WebAnswer& answer, Authority place)
{
    if (answer.ok())
        return authorityText(answer, place);
    step.stop();
    return {};
}

/// The answer's JSON goes on to the handler as text.
void acquire(const Step& step, const WebCall& call, Authority place)
{
    send(step, call, [step, place](WebAnswer& answer) { step.complete(answer.status(), authorityOrStop(step, answer, place)); });
}

/// The same for a handler that takes bytes beside the text; there are none.
void acquireForFile(const Step& step, const WebCall& call, Authority place)
{
    send(step, call, [step, place](WebAnswer& answer) { step.complete(answer.status(), authorityOrStop(step, answer, place), {}); });
}

WebCall downloadCall(const std::wstring& remotePath)
{
    WebCall call(L"OrloWebService::AcquireDownloadAuthorityAsync", service::project, methods::POST, readFilePath);
    call.plainText(remotePath);
    return call;
}

WebCall documentDownloadCall(const std::wstring& fileId, int version)
{
    WebCall call(L"OrloWebService::AcquireDownloadAuthorityAsync", service::project, methods::POST, readDocumentPath);
    call.place(L"{fileId}", fileId).query(L"version", utils::toWstring(version));
    return call;
}

/// An authority without an address is one all the same.
bool readAddress(const web::json::value& authority, std::wstring& address)
{
    address = utils::toWstring(fieldText(authority, L"fileUrlWithSAS"));
    return true;
}

/// Refuses an input, and ends the chain with it.
bool refuseStep(const Step& step, long long value, const std::wstring& words)
{
    refuse(*step.error, value, words);
    // Without this the chain would wait for a step that never comes.
    step.stop();
    step.complete(400, words);
    return false;
}

bool refuseBatch(const Step& step, const std::wstring& words)
{
    log::error(L"[OrloWebService::AcquireBatchDownloadAuthorityAsync] " + words);
    return refuseStep(step, error::badInput, words);
}

} // namespace

void AcquireUploadAuthorityAsync(ErrorCode& error, const std::wstring& fileName, const std::wstring& filePath, const Context& context)
{
    WebCall call(L"OrloWebService::AcquireUploadAuthorityAsync", service::project, methods::PUT, newFilePath);
    call.query(L"fileName", fileName).query(L"filepath", filePath);
    acquire({uploadStep, context, &error}, call, Authority::isTheBody);
}

void AcquireUploadAuthorityByArkivAsync(ErrorCode& error, const std::wstring& fileName, const std::wstring& filePath,
                                        const std::wstring& targetFolderId, const Context& context)
{
    WebCall call(L"OrloWebService::AcquireUploadAuthorityAsync", service::project, methods::GET, newDocumentPath);
    call.query(L"fileName", fileName).query(L"filepath", filePath).query(L"targetFolderId", targetFolderId);
    acquire({uploadStep, context, &error}, call, Authority::standsUnderData);
}

void AcquireDownloadAuthorityAsync(ErrorCode& error, const std::wstring& remotePath, const Context& context)
{
    acquireForFile({downloadStep, context, &error}, downloadCall(remotePath), Authority::isTheBody);
}

void AcquireDownloadAuthorityByArkivAsync(ErrorCode& error, const std::wstring& fileId, int version, const Context& context)
{
    acquireForFile({downloadStep, context, &error}, documentDownloadCall(fileId, version), Authority::standsUnderData);
}

bool GetDownloadAddress(ErrorCode& error, std::wstring& address, const std::wstring& remotePath)
{
    WebAnswer answer = downloadCall(remotePath).send(error);
    return answer.ok() && readAddress(answer.body(), address);
}

bool GetDocumentDownloadAddress(ErrorCode& error, std::wstring& address, const std::wstring& fileId, int version)
{
    WebAnswer answer = documentDownloadCall(fileId, version).send(error);
    return answer.ok() && readAddress(answer.data(), address);
}

void AcquireDownloadAuthorityAsyncForModuleFile(ErrorCode& error, const ModuleFileRequest& request, const Context& context)
{
    WebCall call(L"OrloWebService::AcquireDownloadAuthorityAsyncForModuleFile", service::module, methods::POST, readModuleFilePath);
    call.place(L"{spaceType}", request.spaceType)
        .place(L"{spaceTypeParameter}", request.spaceTypeParameter)
        .place(L"{resourceType}", request.resourceType)
        .plainText(request.body);
    acquireForFile({moduleStep, context, &error}, call, Authority::isTheBody);
}

bool SignModuleUploadUrlAsync(ErrorCode& error, const ModuleUploadRequest& request, const Context& context)
{
    const Step step{moduleUploadStep, context, &error};
    if (isAnyEmpty(request.spaceType, request.spaceTypeParameter, request.resourceType, request.fileName, request.md5))
        return refuseStep(step, error::emptyParameter, L"param is empty");
    WebCall call(L"OrloWebService::SignModuleUploadUrl", service::module, methods::POST, newModuleFilePath);
    call.place(L"{spaceType}", request.spaceType)
        .place(L"{spaceTypeParameter}", request.spaceTypeParameter)
        .place(L"{resourceType}", request.resourceType)
        .body(JsonBody().add(L"access_ctl", L"private_ctl").add(L"fileName", request.fileName).add(L"md5", request.md5).done());
    acquire(step, call, Authority::isTheBody);
    return true;
}

bool AcquireBatchDownloadAuthorityAsync(ErrorCode& error, const std::string& datasetId, const std::vector<std::string>& seeds,
                                        const Context& context)
{
    const Step step{batchStep, context, &error};
    if (seeds.empty())
        return refuseBatch(step, L"seeds is empty");
    if (datasetId.empty())
        return refuseBatch(step, L"dataset id is empty");
    WebCall call(L"OrloWebService::AcquireBatchDownloadAuthorityAsync", service::project, methods::POST, readBlocksPath);
    acquire(step, call.place(L"{datasetId}", datasetId).body(jsonTexts(seeds)), Authority::isTheBody);
    return true;
}

} // namespace orlo::OrloWebService
