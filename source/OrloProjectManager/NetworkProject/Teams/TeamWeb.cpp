#include "TeamWeb.h"

#include "../Call/WebCall.h"
#include "TeamReaders.h"

#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* teamsOfProjectPath = L"/projects/{projectId}/teams";

} // namespace

bool GetTeamsInProject(ErrorCode& error, std::vector<CollaborationTeamInfo>& out, const std::wstring& projectId)
{
    out.clear();
    WebCall call(L"OrloWebService::GetTeamsInProject", service::project, methods::GET, teamsOfProjectPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).send(error);
    if (!answer.ok())
        return false;
    if (answer.succeeded())
        OrloPayloadProcessor::teamFields().readList(answer.data(), out);
    return true;
}

} // namespace orlo::OrloWebService
