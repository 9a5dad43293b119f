#include "ProjectWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "ProjectReaders.h"
#include "ProjectTexts.h"

#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

namespace orlo::OrloWebService {

using http::ORLOHTTPPayloadProject;
using OrloPayloadProcessor::projectFields;

namespace {

constexpr const wchar_t* projectsPath = L"/projects";
constexpr const wchar_t* projectsByStatusPath = L"/projects/status";
constexpr const wchar_t* newProjectPath = L"/v3/projects";
constexpr const wchar_t* projectPath = L"/v2/projects";
constexpr const wchar_t* sampleProjectsPath = L"/v2/sampleProjects";
constexpr const wchar_t* resourceLimitPath = L"/resource/limit";
constexpr const wchar_t* projectOfDatasetPath = L"/folder/hasdataset";
constexpr const wchar_t* projectByModelingIdPath = L"/dataset/modelingid";

// The listings share their failure words, whatever they filter by.
constexpr const wchar_t* listingFailed = L"OrloWebService::GetAllProjects - code:";

std::wstring pathOfProject(const std::wstring& id)
{
    return std::wstring(projectPath) + L"/" + id;
}

bool listProjects(WebAnswer answer, std::vector<ORLOHTTPPayloadProject>& out)
{
    if (!answer.ok())
        return false;
    projectFields().readList(answer.body(), out);
    return true;
}

/// A limit of the quota; false and a line of its own if the platform doesn't name it at all.
bool readLimit(const web::json::value& data, const wchar_t* key, int& limit, const wchar_t* complaint)
{
    const web::json::value* const value = memberOf(data, key);
    if (!value) {
        log::error(complaint);
        return false;
    }
    limit = -1;
    readField(*value, limit);
    return true;
}

} // namespace

bool GetAllProjects(ErrorCode& error, std::vector<ORLOHTTPPayloadProject>& out, const std::wstring& scenario)
{
    WebCall call(L"OrloWebService::GetAllProjects", service::project, methods::GET, projectsPath);
    call.query(L"scenario", scenario);
    return listProjects(call.send(error), out);
}

bool GetProjectsByStatus(ErrorCode& error, std::vector<ORLOHTTPPayloadProject>& out, const std::wstring& status)
{
    WebCall call(L"OrloWebService::GetProjectsByStatus", service::project, methods::GET, projectsByStatusPath);
    call.query(L"status", status).failureWords(listingFailed);
    return listProjects(call.send(error), out);
}

bool GetSampleProjects(ErrorCode& error, std::vector<ORLOHTTPPayloadProject>& out)
{
    WebCall call(L"OrloWebService::GetSampleProjects", service::project, methods::GET, sampleProjectsPath);
    WebAnswer answer = call.send(error);
    if (!answer.ok())
        return false;
    if (!answer.findData()) {
        answer.complain(L"OrloWebService::GetSampleProjects - invalid response data: ");
        return false;
    }
    projectFields().readList(answer.data(), out);
    return true;
}

bool CreateProjectV2(ErrorCode& error, ORLOHTTPPayloadProject& out, const ORLOHTTPPayloadProject& project)
{
    if (project.name.empty())
        return refuse(error, error::badInput, L"data.name is empty");
    if (!projectStatusTexts().knows(project.status))
        return refuse(error, error::badInput, L"invalid projectStatus");
    WebCall call(L"OrloWebService::CreateProjectV2", service::project, methods::POST, newProjectPath);
    call.withFreshTimeout().body(JsonBody()
                                     .add(L"name", project.name)
                                     .add(L"status", projectStatusTexts().textOf(project.status))
                                     .add(L"templateId", project.templateId)
                                     .add(L"description", project.description)
                                     .addUnlessEmpty(L"id", project.id)
                                     .done());
    WebAnswer answer = call.send(error);
    if (!answer.succeeded())
        return false;
    projectFields().read(answer.data(), out);
    return true;
}

bool GetProject(ErrorCode& error, ORLOHTTPPayloadProject& out, const std::wstring& id)
{
    WebCall call(L"OrloWebService::GetProject", service::project, methods::GET, pathOfProject(id));
    WebAnswer answer = call.failsSilently().send(error);
    if (!answer.succeeded())
        return false;
    projectFields().read(answer.data(), out);
    return true;
}

bool DeleteProject(ErrorCode& error, const std::wstring& id)
{
    if (id.empty())
        return refuse(error, error::badInput, L"invalid projectId");
    WebCall call(L"OrloWebService::DeleteProject", service::project, methods::DEL, pathOfProject(id));
    return call.send(error).ok();
}

bool GetResourceLimit(ErrorCode& error, std::pair<int, int>& limits)
{
    WebCall call(L"OrloWebService::GetResourceLimit", service::project, methods::GET, resourceLimitPath);
    WebAnswer answer = call.send(error);
    if (!answer.ok())
        return false;
    const web::json::value* const data = answer.findData();
    if (data && data->is_null()) {
        log::info(L"个人账号, 没有资源额度的概念。");
        return false;
    }
    if (!data || !data->is_object()) {
        log::error(L"jInfos is null.");
        return false;
    }
    return readLimit(*data, L"projectNumber", limits.first, L"异常，没有获取到projectNumber字段") &&
           readLimit(*data, L"spaceSize", limits.second, L"异常，没有获取到spaceSize");
}

std::wstring getProjectIdByDataset(ErrorCode& error, const std::string& datasetId)
{
    WebCall call(L"OrloWebService::getProjectIdByDataset", service::project, methods::GET,
                 std::wstring(projectOfDatasetPath) + L"?datasetId=" + utils::toWstring(datasetId));
    WebAnswer answer = call.send(error);
    std::wstring projectId;
    if (answer.ok())
        readMember(answer.body(), L"projectId", projectId);
    return projectId;
}

std::wstring getProjectIdByModelingId(ErrorCode& error, const std::string& modelingId)
{
    WebCall call(L"OrloWebService::getProjectIdByModelingId", service::project, methods::POST, projectByModelingIdPath);
    WebAnswer answer = call.body(web::json::value::array({jsonText(modelingId)})).send(error);
    std::wstring projectId;
    if (answer.ok() && answer.data().is_array() && answer.data().size() > 0)
        readMember(answer.data().at(0), L"projectId", projectId);
    return projectId;
}

} // namespace orlo::OrloWebService
