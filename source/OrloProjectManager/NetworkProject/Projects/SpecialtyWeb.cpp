#include "SpecialtyWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "ProjectReaders.h"

#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

using OrloPayloadProcessor::specialtyFields;

namespace {

constexpr const wchar_t* specialtyPath = L"specialties/";
constexpr const wchar_t* newSpecialtyPath = L"/specialties";
constexpr const wchar_t* specialtiesOfProjectPath = L"/projects/{projectId}/specialties";

} // namespace

bool GetSpecialty(ErrorCode& error, http::ORLOHTTPPayloadSpecialty& out, const std::wstring& id)
{
    WebCall call(L"OrloWebService::GetSpecialty", service::project, methods::GET, specialtyPath + id);
    WebAnswer answer = call.send(error);
    if (!answer.okWithData())
        return false;
    specialtyFields().read(answer.data(), out);
    return true;
}

bool GetSpecialtiesInProject(ErrorCode& error, std::vector<http::ORLOHTTPPayloadSpecialty>& out, const std::wstring& projectId)
{
    WebCall call(L"OrloWebService::GetSpecialtiesInProject", service::project, methods::GET, specialtiesOfProjectPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).send(error);
    return answer.marked() && specialtyFields().readList(answer.data(), out);
}

std::wstring CreateSpecialty(ErrorCode& error, const std::wstring& projectId, const std::wstring& type, const std::wstring& name)
{
    std::wstring id;
    if (projectId.empty() || type.empty()) {
        refuse(error, error::badInput, L"参数输入有误!");
        return id;
    }
    WebCall call(L"OrloWebService::CreateSpecialty", service::project, methods::POST, newSpecialtyPath);
    call.failsSilently().body(JsonBody().add(L"projectId", projectId).add(L"type", type).add(L"name", name).done());
    WebAnswer answer = call.send(error);
    if (answer.ok())
        readMember(answer.data(), L"id", id);
    return id;
}

} // namespace orlo::OrloWebService
