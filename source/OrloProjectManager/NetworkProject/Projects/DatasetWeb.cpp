#include "DatasetWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "DatasetReaders.h"

#include <BaseCommon/Text.h>

namespace orlo::OrloWebService {

using OrloPayloadProcessor::datasetFields;
using OrloPayloadProcessor::datasetInfoFields;

namespace {

constexpr const wchar_t* datasetsOfFolderPath = L"/dataset/byfolder";
constexpr const wchar_t* datasetPath = L"/v2/dataSets/{dataSetId}";
constexpr const wchar_t* datasetsByModelingIdPath = L"/dataset/modelingid";
constexpr const wchar_t* datasetsByStatusPath = L"/projects/{projectId}/dataSets/byStatus";
constexpr const wchar_t* newDatasetPath = L"/v2/dataSets";

} // namespace

bool GetDataSetsByFolder(ErrorCode& error, std::vector<http::ORLOHTTPPayloadDataset>& out, const std::wstring& folderId)
{
    WebCall call(L"OrloWebService::GetDataSetsByFolder", service::project, methods::GET,
                 std::wstring(datasetsOfFolderPath) + L"?folderId=" + folderId);
    WebAnswer answer = call.send(error);
    if (!answer.ok())
        return false;
    datasetFields().readList(answer.body(), out);
    return true;
}

bool GetDatasetInfo(ErrorCode& error, DatasetInfo& out, const std::string& datasetId)
{
    WebCall call(L"OrloWebService::GetDatasetInfo", service::project, methods::GET, datasetPath);
    WebAnswer answer = call.place(L"{dataSetId}", datasetId).send(error);
    if (!answer.marked())
        return false;
    if (!answer.findData()) {
        answer.complain(L"OrloWebService::GetDatasetInfo - response is not normal: ");
        return false;
    }
    datasetInfoFields().read(answer.data(), out);
    return true;
}

bool GetDatasetInfoByModelingId(ErrorCode& error, DatasetInfo& out, const std::string& modelingId)
{
    WebCall call(L"OrloWebService::GetDatasetInfoByModelingId", service::project, methods::POST, datasetsByModelingIdPath);
    // The words are those of the operation that asks for the project; they are shared on purpose.
    call.body(web::json::value::array({jsonText(modelingId)})).failureWords(L"OrloWebService::getProjectIdByModelingId - code:");
    WebAnswer answer = call.send(error);
    if (!answer.ok() || !answer.data().is_array() || answer.data().size() != 1)
        return false;
    datasetInfoFields().read(answer.data().at(0), out);
    return true;
}

bool GetDatasetByStatus(ErrorCode& error, std::vector<http::ORLOHTTPPayloadDataset>& out, const std::wstring& projectId,
                        const std::wstring& status)
{
    WebCall call(L"OrloWebService::GetDatasetByStatus", service::project, methods::GET, datasetsByStatusPath);
    call.place(L"{projectId}", projectId).query(L"status", status);
    // The words are those of the project listings, on purpose.
    WebAnswer answer = call.failureWords(L"OrloWebService::GetAllProjects - code:").send(error);
    if (!answer.ok())
        return false;
    datasetFields().readList(answer.body(), out);
    return true;
}

bool CreateDataSet(ErrorCode& error, http::ORLOHTTPPayloadDataset& out, const http::ORLOHTTPPayloadDataset& data)
{
    // A dataset needs a home: that of a team, or a folder.
    if (data.name.empty() || (data.teamId.empty() && data.folderId.empty()))
        return refuse(error, error::badInput, L"Invalid name or teamId");
    WebCall call(L"OrloWebService::CreateDataSet", service::project, methods::POST, newDatasetPath);
    call.failsSilently().body(JsonBody()
                                  .addUnlessEmpty(L"id", utils::toWstring(data.id))
                                  .add(L"name", data.name)
                                  .add(L"ownerId", data.ownerId)
                                  .add(L"specialtyId", data.specialtyId)
                                  .add(L"folderId", data.folderId)
                                  .add(L"teamId", data.teamId)
                                  .add(L"type", data.type)
                                  .done());
    WebAnswer answer = call.send(error);
    if (!answer.succeeded())
        return false;
    datasetFields().read(answer.data(), out);
    return true;
}

} // namespace orlo::OrloWebService
