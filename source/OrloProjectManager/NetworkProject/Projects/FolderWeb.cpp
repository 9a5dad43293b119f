#include "FolderWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "FolderReaders.h"

#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

using http::ORLOHTTPPayloadFolder;
using OrloPayloadProcessor::folderFields;

namespace {

constexpr const wchar_t* foldersOfProjectPath = L"/folder/byproject";
constexpr const wchar_t* rootFolderPath = L"/projects/{projectId}/rootfolder";
constexpr const wchar_t* subFoldersPath = L"/folders/{folderId}/subfolders";

bool listFolders(WebAnswer answer, std::vector<ORLOHTTPPayloadFolder>& out)
{
    if (!answer.ok())
        return false;
    folderFields().readList(answer.body(), out);
    return true;
}

} // namespace

bool GetAllFoldersByProject(ErrorCode& error, std::vector<ORLOHTTPPayloadFolder>& out, const std::wstring& projectId)
{
    if (projectId.empty())
        return refuse(error, error::badInput, L"invalid projectId");
    WebCall call(L"OrloWebService::GetAllFoldersByProject", service::project, methods::GET,
                 std::wstring(foldersOfProjectPath) + L"?projectId=" + projectId);
    return listFolders(call.send(error), out);
}

bool GetRootFolderOfProject(ErrorCode& error, ORLOHTTPPayloadFolder& out, const std::wstring& projectId)
{
    if (projectId.empty())
        return refuse(error, error::emptyParameter, L"invalid projectId");
    WebCall call(L"OrloWebService::GetRootFolderOfProject", service::project, methods::GET, rootFolderPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).send(error);
    if (!answer.okWithData())
        return false;
    folderFields().read(answer.data(), out);
    return true;
}

bool GetSubFoldersOfParentFolder(ErrorCode& error, std::vector<ORLOHTTPPayloadFolder>& out, const std::wstring& folderId, bool recursive)
{
    if (folderId.empty())
        return refuse(error, error::emptyParameter, L"invalid parent folder id");
    WebCall call(L"OrloWebService::GetSubFoldersOfParentFolder", service::project, methods::GET, subFoldersPath);
    call.place(L"{folderId}", folderId).query(L"recursive", recursive ? L"true" : L"false");
    return listFolders(call.send(error), out);
}

} // namespace orlo::OrloWebService
