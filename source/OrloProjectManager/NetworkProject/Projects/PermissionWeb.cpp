#include "PermissionWeb.h"

#include "../Call/WebCall.h"

#include <OrloLogging/Log.h>
#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* permissionOfUserPath = L"/projects/{projectId}/users/{userId}/permission";

} // namespace

bool GetAuthorizationOfUserInProject(ErrorCode& error, web::json::value& out, const std::wstring& projectId, const std::wstring& userId)
{
    // The words keep the name that the operation once had.
    if (projectId.empty()) {
        log::error(L"IsProjectConfigCanBeChangedByUser未正常执行：projectId为空");
        return false;
    }
    if (userId.empty()) {
        log::error(L"IsProjectConfigCanBeChangedByUser未正常执行：userId为空");
        return false;
    }
    WebCall call(L"OrloWebService::GetAuthorizationOfUserInProject", service::authorization, methods::GET, permissionOfUserPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).place(L"{userId}", userId).send(error);
    if (!answer.ok())
        return false;
    if (answer.marked() && answer.findData())
        out = answer.data();
    return true;
}

} // namespace orlo::OrloWebService
