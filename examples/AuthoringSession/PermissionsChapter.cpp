#include "Chapters.h"
#include "Host.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

/// The "msg" of a result.
std::wstring reasonOf(const std::string& result)
{
    JsonWrapper told;
    std::string reason;
    return told.Parse(result) && told.Get("msg", reason) ? utils::toWstring(reason) : L"";
}

void opens(Story& story, const std::string& dataset, EDatasetPermission expected)
{
    ErrorCode error;
    std::string result;
    const EDatasetPermission permission = IDatasetPermission::GetDatasetPermission(dataset, result, error);
    story.expect(permission == expected, who() + L" got another permission than expected: " + reasonOf(result), error);
    story.say(permission == EDatasetPermission::READ_WRITE ? who() + L" opens the model, and may write."
                                                           : who() + L" opens the model, and may read: " + reasonOf(result) + L".",
              L"IDatasetPermission::GetDatasetPermission");
}

void closes(Story& story, const std::string& dataset)
{
    ErrorCode error;
    std::string result;
    story.expect(IDatasetPermission::ReleaseDatasetPermission(dataset, result, error, false), L"the right was not given back", error);
    story.say(who() + L" closes the model.", L"IDatasetPermission::ReleaseDatasetPermission");
}

void takesOver(Story& story, const std::string& dataset)
{
    ErrorCode error;
    story.expect(IDatasetPermission::ReleaseDatasetPermissionForce(utils::toWstring(dataset), error), L"the right was not taken", error);
    story.say(who() + L" takes the right to write away.", L"IDatasetPermission::ReleaseDatasetPermissionForce");
}

void looksAfterTheRight(Story& story, const std::string& dataset)
{
    ErrorCode error;
    const bool isValid = IDatasetPermission::IsEditTokenValid(utils::toWstring(dataset), error);
    story.expect(!isValid, L"a right that was taken away is still good", error);
    story.say(who() + L" finds that the right to write is gone.", L"IDatasetPermission::IsEditTokenValid");
}

} // namespace

void permissions(Story& story, ICollaborationProject& project, const Platform& platform)
{
    if (!platform.isOurOwn()) // nobody else is known there
        return;
    story.chapter(L"Two users, one model", __FILE__);
    const std::string dataset = firstDraft(story, project).id;
    platform.addColleague();
    opens(story, dataset, EDatasetPermission::READ_WRITE);
    signInColleague();
    opens(story, dataset, EDatasetPermission::READ_ONLY);
    signIn();
    closes(story, dataset);
    signInColleague();
    opens(story, dataset, EDatasetPermission::READ_WRITE);
    story.say(L"li goes home, and leaves the model open.");
    signIn();
    opens(story, dataset, EDatasetPermission::READ_ONLY);
    takesOver(story, dataset);
    opens(story, dataset, EDatasetPermission::READ_WRITE);
    signInColleague();
    looksAfterTheRight(story, dataset);
    opens(story, dataset, EDatasetPermission::READ_ONLY);
    signIn();
    closes(story, dataset);
}

} // namespace session
