#include "FileWeb.h"

#include "../Call/WebCall.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* bindingPath = L"/dataset/dwg/binding";
constexpr const wchar_t* bindInfoPath = L"/dwg/{dwgId}/version/{dwgVersion}/bind-info";
constexpr const wchar_t* fileOfProjectPath = L"/projects/{projectId}/files/{fileId}";

const RecordTable<RelatedDatasetInfo>& relatedDatasetFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<RelatedDatasetInfo>{
        {L"datasetId", &RelatedDatasetInfo::datasetId},
        {L"datasetName", &RelatedDatasetInfo::datasetName},
        {L"datasetVersion", &RelatedDatasetInfo::datasetVersion},
        {L"displayVersion", &RelatedDatasetInfo::displayVersion},
    });
    return table;
}

} // namespace

bool CreateFileDatasetRelationship(ErrorCode& error, const std::string& datasetId, int datasetVersion, const std::string& dwgId,
                                   int dwgVersion)
{
    WebCall call(L"OrloWebService::CreateFileDatasetRelationship", service::project, methods::POST, bindingPath);
    call.failsWithMessage().body(JsonBody()
                                     .add(L"datasetId", datasetId)
                                     .add(L"datasetVersion", datasetVersion)
                                     .add(L"dwgId", dwgId)
                                     .add(L"dwgVersion", dwgVersion)
                                     .done());
    return call.send(error).ok();
}

bool QueryFileRelatedDatasets(ErrorCode& error, std::vector<RelatedDatasetInfo>& out, const std::string& dwgId, int dwgVersion)
{
    WebCall call(L"OrloWebService::QueryFileRelatedDatasets", service::project, methods::GET, bindInfoPath);
    WebAnswer answer = call.place(L"{dwgId}", dwgId).place(L"{dwgVersion}", dwgVersion).failsWithMessage().send(error);
    if (!answer.marked())
        return false;
    if (const web::json::value* const linked = memberOf(answer.data(), L"linkedDatasets"))
        relatedDatasetFields().readList(*linked, out);
    const web::json::value* const mainDataset = memberOf(answer.data(), L"mainDataset");
    if (mainDataset && mainDataset->is_object())
        relatedDatasetFields().read(*mainDataset, out.emplace_back());
    return true;
}

bool DeleteFileOfProject(ErrorCode& error, const std::wstring& projectId, const std::wstring& fileId)
{
    if (projectId.empty() || fileId.empty()) {
        error.Assign(error::emptyParameter, makeGenericError(L"ParameterError", L"projectId or fileId is empty."));
        return false;
    }
    WebCall call(L"OrloWebService::DeleteFileByFileId", service::project, methods::DEL, fileOfProjectPath);
    return call.place(L"{projectId}", projectId).place(L"{fileId}", fileId).send(error).ok();
}

} // namespace orlo::OrloWebService
