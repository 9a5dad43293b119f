#include "Chapters.h"

#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

std::wstring outOf(long long used, int limit)
{
    return std::to_wstring(used) + (limit < 0 ? L" used, without a limit" : L" used of " + std::to_wstring(limit));
}

} // namespace

void resources(Story& story)
{
    story.chapter(L"What the account may use", __FILE__);
    ErrorCode error;
    ResourceStatus status;
    if (ICollaborationProjectManager::Get()->GetResourceStatus(status, error)) {
        story.say(L"Projects: " + outOf(status.projectCount, status.projectNumber), L"ICollaborationProjectManager::GetResourceStatus");
        story.say(L"Space:    " + outOf(status.spaceUsed, status.spaceSize),
                  L"ICollaborationProjectManager::GetResourceStatus; the use in bytes, the limit as the platform counts it");
        return;
    }
    story.expect(error.isClear(), L"the resource limits could not be read", error);
    story.say(L"A personal account has no limits.", L"ICollaborationProjectManager::GetResourceStatus");
}

} // namespace session
