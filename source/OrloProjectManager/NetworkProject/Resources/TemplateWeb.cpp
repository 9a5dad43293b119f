#include "TemplateWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

using http::ORLOHTTPPayloadTemplate;

namespace {

constexpr const wchar_t* projectTemplatesPath = L"/project_templates";
constexpr const wchar_t* newPlatePath = L"/customize/project/{projectId}/sample/plate";
constexpr const wchar_t* plateNamePath = L"/customize/project/{projectId}/sample/plate/name/exist";
constexpr const wchar_t* platesPath = L"/customize/project/{projectId}/sample/plates";
constexpr const wchar_t* sampleFilesPath = L"/structural/dataset/{datasetId}/sample/file/list";
constexpr const wchar_t* templateResourcesPath = L"/structural/common/template/resources";
constexpr const wchar_t* templateResourceUrlPath = L"/structural/common/template/resources/url";

constexpr const wchar_t* unusableAnswer = L"response data not normal";

// Intended: this one refusal alone has the sign-extended value.
constexpr long long noTemplateId = static_cast<long long>(0xFFFFFFFFE8000001ULL);

const RecordTable<ORLOHTTPPayloadTemplate>& projectTemplateFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadTemplate>{
        {L"id", &ORLOHTTPPayloadTemplate::id},
        {L"templateName", &ORLOHTTPPayloadTemplate::templateName},
        {L"srcProjectId", &ORLOHTTPPayloadTemplate::srcProjectId},
    });
    return table;
}

const RecordTable<SamplePlate>& samplePlateFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<SamplePlate>{
        {L"id", &SamplePlate::id},
        {L"name", &SamplePlate::name},
        {L"uri", &SamplePlate::uri},
        {L"samplePlateFrom", &SamplePlate::samplePlateFrom},
        {L"specialty", &SamplePlate::specialty},
        {L"templateId", &SamplePlate::templateId},
        {L"projectId", &SamplePlate::projectId},
        {L"size", &SamplePlate::size},
        {L"createTime", &SamplePlate::createTime},
        {L"updateTime", &SamplePlate::updateTime},
    });
    return table;
}

const RecordTable<DatasetSampleFile>& sampleFileFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<DatasetSampleFile>{
        {L"id", &DatasetSampleFile::id},
        {L"templateId", &DatasetSampleFile::templateId},
        {L"samplePlateId", &DatasetSampleFile::samplePlateId},
        {L"type", &DatasetSampleFile::type},
        {L"datasetId", &DatasetSampleFile::datasetId},
        {L"projectId", &DatasetSampleFile::projectId},
        {L"samplePlateFrom", &DatasetSampleFile::samplePlateFrom},
        {L"uri", &DatasetSampleFile::uri},
    });
    return table;
}

void readResourceId(const web::json::value& value, TemplateResource& resource)
{
    if (std::int64_t number = 0; readField(value, number))
        resource.id = std::to_wstring(number);
}

const RecordTable<TemplateResource>& templateResourceFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<TemplateResource>{
        {L"id", readResourceId},
        {L"name", &TemplateResource::name},
        {L"size", [](const web::json::value& value, TemplateResource& resource) { readInteger(value, resource.size); }},
        {L"type", &TemplateResource::type},
    });
    return table;
}

} // namespace

std::wstring CreateTemplate(ErrorCode& error, const std::wstring& srcProjectId, const std::wstring& templateName)
{
    std::wstring id;
    if (srcProjectId.empty() || templateName.empty()) {
        refuse(error, error::badInput, L"CreateTemplate:参数输入有误");
        return id;
    }
    WebCall call(L"OrloWebService::CreateTemplate", service::project, methods::POST, projectTemplatesPath);
    WebAnswer answer = call.body(JsonBody().add(L"srcProjectId", srcProjectId).add(L"templateName", templateName).done()).send(error);
    if (answer.marked())
        readMember(answer.data(), L"id", id);
    return id;
}

bool DeleteTemplate(ErrorCode& error, const std::wstring& templateId)
{
    WebCall call(L"OrloWebService::DeleteTemplate", service::project, methods::DEL, std::wstring(projectTemplatesPath) + L"/" + templateId);
    WebAnswer answer = call.send(error);
    bool isDeleted = false;
    return answer.marked() && readField(answer.data(), isDeleted) && isDeleted;
}

bool GetProjectTemplatesOfUser(ErrorCode& error, std::vector<ORLOHTTPPayloadTemplate>& out)
{
    WebCall call(L"OrloWebService::GetProjectTemplatesOfUser", service::project, methods::GET, projectTemplatesPath);
    WebAnswer answer = call.send(error);
    return answer.marked() && projectTemplateFields().readList(answer.data(), out);
}

bool AddTemplateToProject(ErrorCode& error, const std::wstring& projectId, const std::wstring& uri, const std::wstring& name,
                          const std::wstring& specialty, long long size)
{
    if (projectId.empty())
        return refuse(error, error::badInput, L"projectId is empty");
    WebCall call(L"OrloWebService::AddTemplateToProject", service::structure, methods::POST, newPlatePath);
    call.place(L"{projectId}", projectId)
        .body(JsonBody()
                  .add(L"appVersion", OrloWebServiceUtils::GetAppVersion())
                  .add(L"name", name)
                  .add(L"size", web::json::value::number(static_cast<std::int64_t>(size)))
                  .add(L"specialty", specialty)
                  .add(L"uri", uri)
                  .done());
    return call.send(error).ok();
}

bool IsTemplateExistedInProject(ErrorCode& error, const std::wstring& templateName, const std::wstring& projectId)
{
    if (templateName.empty() || projectId.empty())
        return refuse(error, error::emptyParameter, L"templateName or projectId is empty");
    WebCall call(L"OrloWebService::IsTemplateExistedInProject", service::structure, methods::GET, plateNamePath);
    WebAnswer answer = call.place(L"{projectId}", projectId).query(L"name", templateName).send(error);
    bool isThere = false;
    return answer.ok() && readField(answer.data(), isThere) && isThere;
}

bool GetAllTemplatesOfProject(ErrorCode& error, std::vector<SamplePlate>& out, const std::wstring& projectId)
{
    if (projectId.empty())
        return refuse(error, error::badInput, L"projectId is empty");
    WebCall call(L"OrloWebService::GetAllTemplatesOfProject", service::structure, methods::GET, platesPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).send(error);
    if (!answer.ok())
        return false;
    if (samplePlateFields().readList(answer.data(), out))
        return true;
    answer.complain(L"OrloWebService::GetAllTemplatesOfProject - response is not normal: ");
    return false;
}

// The next three log no status.

bool GetDatasetSampleFile(ErrorCode& error, DatasetSampleFile& out, const std::wstring& datasetId, const std::wstring& projectId)
{
    if (datasetId.empty() || projectId.empty())
        return refuse(error, error::badInput, L"datasetId or projectId is empty");
    WebCall call(L"OrloWebService::GetDatasetSampleFile", service::structure, methods::GET, sampleFilesPath);
    WebAnswer answer = call.place(L"{datasetId}", datasetId).query(L"projectId", projectId).failsSilently().send(error);
    if (!answer.ok())
        return false;
    const web::json::value& samples = answer.data();
    if (!samples.is_array())
        return refuse(error, error::badInput, unusableAnswer);
    if (samples.size() > 1)
        return refuse(error, error::badInput, L"response data isn't normal.");
    if (samples.size() == 1)
        sampleFileFields().read(samples.at(0), out);
    return true;
}

bool GetTemplateResource(ErrorCode& error, TemplateResource& out, const std::wstring& templateId)
{
    if (templateId.empty())
        return refuse(error, noTemplateId, L"templateId is empty");
    WebCall call(L"OrloWebService::GetTemplateResource", service::structure, methods::GET, templateResourcesPath);
    WebAnswer answer = call.query(L"templateId", templateId).query(L"type", L"TEMPLATE_FILE").failsSilently().send(error);
    if (!answer.ok())
        return false;
    const web::json::value& resources = answer.data();
    if (!resources.is_array() || resources.size() != 1)
        return refuse(error, error::badInput, unusableAnswer);
    templateResourceFields().read(resources.at(0), out);
    return true;
}

bool GetTemplateResourceUrl(ErrorCode& error, std::wstring& url, const std::wstring& resourceId, const std::wstring& templateId)
{
    if (resourceId.empty() || templateId.empty())
        return refuse(error, error::emptyParameter, L"resourceId or templateId is empty");
    WebCall call(L"OrloWebService::GetTemplateResourceUrl", service::structure, methods::GET, templateResourceUrlPath);
    WebAnswer answer = call.query(L"resourceId", resourceId).query(L"templateId", templateId).failsSilently().send(error);
    return answer.ok() && (readField(answer.data(), url) || refuse(error, error::badInput, unusableAnswer));
}

} // namespace orlo::OrloWebService
