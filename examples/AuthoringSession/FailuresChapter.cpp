#include "Chapters.h"

#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

void loadUnknownProject(Story& story)
{
    ErrorCode error;
    const auto project = ICollaborationProject::Load(L"no-such-project", error);
    story.expect(!project && error.GetValue() == error::errorStatus, L"an unknown project was not refused", error);
    story.say(L"Loading a project that isn't there: " + inWords(error), L"ICollaborationProject::Load");
}

void createNamelessProject(Story& story)
{
    ErrorCode error;
    const auto project = ICollaborationProjectManager::Get()->CreateProject(L"", ProjectStatus::Ongoing, error);
    story.expect(!project && error.GetValue() == error::badInput, L"a project without a name was not refused", error);
    story.say(L"Creating a project without a name: " + inWords(error), L"ICollaborationProjectManager::CreateProject");
}

} // namespace

void failures(Story& story)
{
    story.chapter(L"Two failures, on purpose", __FILE__);
    loadUnknownProject(story);
    createNamelessProject(story);
}

} // namespace session
