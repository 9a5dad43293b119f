#include "Chapters.h"
#include "Drawing.h"
#include "Host.h"

#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

constexpr int folderOfTeam = 5;

Drawing drawn(const ICollaborationFolder& folder)
{
    Drawing drawing{folder.GetName(), {}};
    for (const auto& dataset : folder.GetDatasets())
        drawing.below.push_back({L"[" + dataset->name + L"]", {}});
    for (const ICollaborationFolder* child : folder.GetSubFolders())
        drawing.below.push_back(drawn(*child));
    return drawing;
}

CollaborationTeamInfo firstTeam(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    std::vector<CollaborationTeamInfo> teams;
    story.expect(project.GetTeams(teams, error) && !teams.empty(), L"the project has no team", error);
    story.say(L"The project's team: " + teams.front().name, L"ICollaborationProject::GetTeams");
    return teams.front();
}

void createDataset(Story& story, ICollaborationProject& project, const std::wstring& teamId)
{
    ErrorCode error;
    const DatasetInfo dataset = project.CreateDataset(L"结构模型", teamId, L"", who(), error);
    story.expect(!dataset.id.empty(), L"the dataset could not be created", error);
    story.say(L"Created the dataset " + dataset.name, L"ICollaborationProject::CreateDataset");

    std::vector<DatasetInfo> drafts;
    story.expect(project.GetDatasetBySatatus(DatasetStatus::Draft, drafts, error), L"the drafts could not be listed", error);
    story.say(L"Datasets in draft: " + std::to_wstring(drafts.size()), L"ICollaborationProject::GetDatasetBySatatus");
}

} // namespace

void showFolders(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    ICollaborationProject::Folders roots;
    story.expect(project.GetProjectFolders(roots, error), L"the folders could not be read", error);
    for (const auto& root : roots)
        showFolder(story, *root, L"ICollaborationProject::GetProjectFolders");
}

void showFolder(Story& story, const ICollaborationFolder& folder, const std::wstring& call)
{
    story.say(linesOf(drawn(folder)), call);
}

const ICollaborationFolder& firstFolder(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    const ICollaborationProject::Folders roots = project.GetFolders(error);
    story.expect(!roots.empty() && !roots.front()->GetSubFolders().empty(), L"the project has no folder", error);
    return *roots.front()->GetSubFolders().front();
}

DatasetInfo firstDraft(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    std::vector<DatasetInfo> drafts;
    story.expect(project.GetDatasetBySatatus(DatasetStatus::Draft, drafts, error) && !drafts.empty(), L"there is no dataset in draft",
                 error);
    return drafts.front();
}

void folders(Story& story, ICollaborationProject& project)
{
    story.chapter(L"Folders and datasets", __FILE__);
    const CollaborationTeamInfo team = firstTeam(story, project);
    createDataset(story, project, team.id);
    showFolders(story, project);
    const ICollaborationFolder* const teamFolder = project.GetTeamFolder(team.id, folderOfTeam);
    story.expect(teamFolder != nullptr, L"the team has no folder");
    story.say(L"The team works in the folder " + teamFolder->GetName(), L"ICollaborationProject::GetTeamFolder");
}

} // namespace session
