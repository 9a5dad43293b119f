#include "VersionWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "DatasetReaders.h"
#include "ProjectTexts.h"

#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

namespace orlo {

VersionOfFile::VersionOfFile()
{
    record.version = -1;
    record.size = -1;
}

namespace OrloWebService {

using http::ORLOHTTPPayloadDatasetVersion;
using OrloPayloadProcessor::readDatasetVersion;

namespace {

constexpr const wchar_t* newVersionPath = L"/dataset/{dsId}/version";
constexpr const wchar_t* newDocVersionPath = L"/dataset/{dsId}/doc/version";
constexpr const wchar_t* newNumberedVersionPath = L"/datasets/{datasetId}/versions/{versionNum}/create";
constexpr const wchar_t* versionPath = L"/v2/datasets/{dsId}/version/{dsVersion}";
constexpr const wchar_t* versionsByIdsPath = L"/v2/versions/byids";
constexpr const wchar_t* markPublishPath = L"/datasets/{dsId}/{version}/markPublish";
constexpr const wchar_t* versionMetaPath = L"/version/{versionId}/meta";

bool readVersion(WebAnswer answer, ORLOHTTPPayloadDatasetVersion& out)
{
    if (!answer.ok())
        return false;
    readDatasetVersion(answer.body(), out);
    return true;
}

/// version: below 0 for the latest.
WebCall versionCall(const wchar_t* name, const std::string& datasetId, int version, const std::wstring& mvd)
{
    const bool latest = version < 0;
    WebCall call(name, service::project, methods::GET, versionPath);
    call.place(L"{dsId}", datasetId).place(L"{dsVersion}", latest ? L"latest" : utils::toWstring(version));
    call.query(L"onlySuccess", latest ? L"true" : L"false").query(L"mvd", mvd.empty() ? L"base" : mvd).withTimeoutOfFirstUse();
    return call;
}

/// What the two ways of making a version from a file have in common; the body is their own.
bool createFromFile(ErrorCode& error, ORLOHTTPPayloadDatasetVersion& out, const ORLOHTTPPayloadDatasetVersion& data, WebCall&& call)
{
    if (data.dataSetId.empty())
        return refuse(error, error::badInput, L"data.dataSetId is empty.");
    call.place(L"{dsId}", data.dataSetId).query(L"sourceFile", data.dataSetSourceFile).failsSilently();
    return readVersion(call.send(error), out);
}

} // namespace

bool CreateVersion(ErrorCode& error, ORLOHTTPPayloadDatasetVersion& out, const ORLOHTTPPayloadDatasetVersion& data)
{
    WebCall call(L"OrloWebService::CreateVersion", service::project, methods::PUT, newVersionPath);
    call.body(JsonBody().done());
    return createFromFile(error, out, data, std::move(call));
}

bool CreateDocVersion(ErrorCode& error, ORLOHTTPPayloadDatasetVersion& out, const ORLOHTTPPayloadDatasetVersion& data)
{
    WebCall call(L"OrloWebService::CreateDocVersion", service::project, methods::PUT, newDocVersionPath);
    call.body(JsonBody().add(L"length", web::json::value::number(data.size)).add(L"version", data.version).done());
    return createFromFile(error, out, data, std::move(call));
}

bool CreateVersionByNumber(ErrorCode& error, const std::wstring& datasetId, int versionNum, const std::wstring& metaInfo, bool published,
                           const std::wstring& description)
{
    WebCall call(L"OrloWebService::CreateVersionByNumber", service::project, methods::POST, newNumberedVersionPath);
    call.place(L"{datasetId}", datasetId).place(L"{versionNum}", versionNum).failsSilently();
    call.body(JsonBody()
                  .add(L"metaInfo", metaInfo)
                  .add(L"status", std::wstring(published ? L"Published" : L"WIP"))
                  .add(L"description", description)
                  .done());
    return call.send(error).marked();
}

bool GetDatasetVersionByMvd(ErrorCode& error, ORLOHTTPPayloadDatasetVersion& out, const std::string& datasetId, int version,
                            const std::wstring& mvd)
{
    if (datasetId.empty()) {
        log::error(L"[OrloWebService::GetDatasetVersionByMvd] invalid input");
        error.Assign(error::exception, makeHttpError(L"Invalid argument", L"datasetId is empty", 0, 0));
        return false;
    }
    return readVersion(versionCall(L"OrloWebService::GetDatasetVersionByMvd", datasetId, version, mvd).send(error), out);
}

bool GetVersionOfFile(ErrorCode& error, VersionOfFile& out, const std::string& datasetId, int version)
{
    WebCall call = versionCall(L"OrloWebService::GetVersionOfFile", datasetId, version, L"");
    WebAnswer answer = call.failsSilently().send(error);
    if (!answer.ok())
        return false;
    readDatasetVersion(answer.body(), out.record);
    readMember(answer.data(), L"versionIndex", out.documentVersion);
    return true;
}

bool GetDatasetVersionAccordingMVD(ErrorCode& error, std::vector<ORLOHTTPPayloadDatasetVersion>& out, const std::vector<int>& versionIds,
                                   const std::string& mvd)
{
    if (mvd.empty()) {
        log::error(L"OrloWebService::GetDatasetVersionAccordingMVD()未正常执行：MVDCondition为空");
        return refuse(error, error::badInput, L"mvd is invalid");
    }
    WebCall call(L"OrloWebService::GetDatasetVersionAccordingMVD", service::project, methods::POST, versionsByIdsPath);
    call.query(L"mvd", utils::toWstring(mvd)).body(web::json::value::array({versionIds.begin(), versionIds.end()}));
    WebAnswer answer = call.failureWords(L"OrloWebService::GetDatasetVersionByMVD - code:").send(error);
    if (!answer.okWithData())
        return false;
    if (answer.data().is_array()) {
        for (const web::json::value& element : answer.data().as_array())
            readDatasetVersion(element, out.emplace_back());
    }
    return true;
}

bool MarkPublish(ErrorCode& error, const std::string& datasetId, const std::wstring& version, const std::wstring& description)
{
    WebCall call(L"OrloWebService::MarkPublish", service::project, methods::POST, markPublishPath);
    call.place(L"{dsId}", datasetId).place(L"{version}", version).failsSilently();
    WebAnswer answer = call.body(JsonBody().add(L"description", description).done()).send(error);
    bool published = false;
    if (answer.ok())
        readField(answer.data(), published);
    return published;
}

std::wstring GetDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& versionId)
{
    WebCall call(L"OrloWebService::GetDatasetMeta", service::project, methods::GET, versionMetaPath);
    call.place(L"{versionId}", versionId).query(L"key", datasetMetaKeys().textOf(key)).withTimeoutOfFirstUse();
    const WebAnswer answer = call.failureWords(L"IVersion::GetDatasetMeta - code:").send(error);
    return answer.ok() ? utils::toWstring(answer.text()) : std::wstring();
}

bool UpsertDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& value, const std::wstring& versionId)
{
    WebCall call(L"OrloWebService::UpsertDatasetMeta", service::project, methods::POST, versionMetaPath);
    call.place(L"{versionId}", versionId).body(JsonBody().add(datasetMetaKeys().textOf(key).c_str(), value).done());
    return call.withTimeoutOfFirstUse().untaggedFailureWords(L"IVersion::UpsertDatasetMeta - code:").send(error).ok();
}

} // namespace OrloWebService
} // namespace orlo
