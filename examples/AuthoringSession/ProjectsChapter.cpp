#include "Chapters.h"

#include <OrloProjectManager/OrloProjectManager.h>

#include <algorithm>

namespace session {

using namespace orlo;

namespace {

using ProjectPtr = std::shared_ptr<ICollaborationProject>;

ProjectPtr create(Story& story, const std::wstring& name)
{
    ErrorCode error;
    ProjectPtr project = ICollaborationProjectManager::Get()->CreateProject(name, ProjectStatus::Ongoing, error);
    story.expect(project != nullptr, L"the project could not be created", error);
    story.say(L"Created " + project->GetName() + L" with the id " + project->GetId(), L"ICollaborationProjectManager::CreateProject");
    return project;
}

void findInList(Story& story, const std::wstring& id)
{
    ErrorCode error;
    const ICollaborationProjectManager::Projects projects = ICollaborationProjectManager::Get()->GetAllProjects(error);
    story.expect(error.isClear(), L"the projects could not be listed", error);
    story.say(L"All my projects, " + std::to_wstring(projects.size()) + L" of them:", L"ICollaborationProjectManager::GetAllProjects");
    for (const ProjectPtr& project : projects)
        story.say(L"  - " + project->GetName());
    const bool isListed = std::any_of(projects.begin(), projects.end(), [&](const ProjectPtr& p) { return p->GetId() == id; });
    story.expect(isListed, L"a new project is missing in the list");
}

void loadAgain(Story& story, const ProjectPtr& created)
{
    ErrorCode error;
    const ProjectPtr loaded = ICollaborationProject::Load(created->GetId(), error);
    story.expect(loaded != nullptr, L"the project could not be loaded", error);
    story.expect(loaded->GetName() == created->GetName(), L"the project came back under another name");
    story.say(L"Loaded by its id: " + loaded->GetName() + (loaded->GetStatus() == ProjectStatus::Ongoing ? L", ongoing" : L""),
              L"ICollaborationProject::Load");
}

} // namespace

ProjectPtr projects(Story& story)
{
    story.chapter(L"Projects", __FILE__);
    const ProjectPtr hospital = create(story, L"滨江医院一期");
    create(story, L"Riverside School");
    findInList(story, hospital->GetId());
    loadAgain(story, hospital);
    return hospital;
}

} // namespace session
