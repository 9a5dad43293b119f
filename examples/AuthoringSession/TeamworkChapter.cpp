#include "Chapters.h"
#include "Host.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

std::shared_ptr<ICollaborationTeam> makeTeam(Story& story, const std::wstring& projectId)
{
    ErrorCode error;
    const auto team = ICollaborationTeamManager::Get()->CreateTeam(L"机电组", projectId, error);
    story.expect(team && !team->GetTeamId().empty(), L"the team could not be made", error);
    story.say(L"A team is a group of people with a folder of their own. Made the team " + team->GetTeamInfo(error).name,
              L"ICollaborationTeamManager::CreateTeam");
    story.expect(team->AddMember(L"li-account", error), L"the member could not be added", error);
    story.say(L"li belongs to it now.", L"ICollaborationTeam::AddMember");
    return team;
}

DatasetInfo firstDataset(Story& story, ICollaborationProject& project)
{
    const auto datasets = firstFolder(story, project).GetDatasets();
    story.expect(!datasets.empty(), L"there is no dataset");
    return *datasets.front();
}

void receives(Story& story, ICollaborationTeam& team)
{
    ErrorCode error;
    const auto records = team.GetCollaborationSharedRecords(error);
    story.expect(records.size() == 1, L"the share did not arrive", error);
    const auto datasets = records.front()->GetSharedDataSets(error);
    story.expect(datasets.size() == 1 && datasets.front().versions.size() == 1, L"the share is empty", error);
    story.say(L"A share hands versions over to another team. It received \"" + records.front()->GetName() + L"\": " +
                  datasets.front().name + L", version " + std::to_wstring(datasets.front().versions.front()),
              L"ICollaborationTeam::GetCollaborationSharedRecords, ICollaborationSharedRecord::GetSharedDataSets");
}

/// A note on a place in the model.
void raises(Story& story, const std::wstring& teamId, const DatasetInfo& dataset)
{
    const auto issue = IIssue::Create(teamId, who(), L"风管穿梁", L"二层走廊，风管和梁相碰", {{true, dataset.id, dataset.name, 1}},
                                      EORLOIssueType::CollisionDetection);
    issue->SetElementId(L"beam-17");
    issue->SetElementName(L"梁 17");
    issue->SetCamera(LR"({"eye":[12.0,-4.5,5.2],"target":[10.0,0.0,3.6]})");
    ErrorCode error;
    story.expect(IIssueManager::Get()->PostIssue(issue, error), L"the issue could not be raised", error);
    story.say(who() + L" raises an issue on " + dataset.name + L", at a place in the model: " + issue->GetTitle(),
              L"IIssueManager::PostIssue");
}

std::shared_ptr<IIssue> onlyIssue(Story& story, const DatasetInfo& dataset)
{
    ErrorCode error;
    IIssueManager::Issues issues;
    story.expect(IIssueManager::Get()->GetIssueListByDatasetId(dataset.id, issues, error) && issues.size() == 1, L"there is no issue",
                 error);
    return issues.front();
}

std::wstring stateOf(const IIssue& issue)
{
    switch (issue.GetStatus()) {
    case EORLOIssueStatus::Closed:
        return L"closed";
    case EORLOIssueStatus::Resolved:
        return L"resolved";
    default:
        return L"open";
    }
}

struct Change
{
    bool (IIssueManager::*call)(const std::wstring&, int, const std::wstring&, ErrorCode&);
    const wchar_t* name;
};

void changes(Story& story, const DatasetInfo& dataset, const Change& change, const std::wstring& words)
{
    ErrorCode error;
    story.expect((IIssueManager::Get()->*change.call)(who(), onlyIssue(story, dataset)->GetId(), words, error), L"the issue did not change",
                 error);
    story.say(who() + L": " + words + L" The issue is " + stateOf(*onlyIssue(story, dataset)) + L".", change.name);
}

void readsMessages(Story& story)
{
    ErrorCode error;
    IMessageManager::Messages messages;
    story.expect(IMessageManager::Get()->GetMessages(EMessageStatus::UNREAD, messages, error), L"the messages could not be read", error);
    for (const auto& [type, ofType] : messages) {
        for (const auto& message : ofType) {
            story.say(who() + L" reads: " + message->GetTitle() + L" (" + message->GetContent() + L")",
                      L"IMessageManager::GetMessages, MarkMessageRead");
            story.expect(IMessageManager::Get()->MarkMessageRead(message->GetMessageId(), type, error), L"the message could not be marked",
                         error);
        }
    }
}

} // namespace

void teamwork(Story& story, ICollaborationProject& project, const Platform& platform)
{
    if (!platform.isOurOwn()) // nobody else is known there
        return;
    story.chapter(L"A team, a share, an issue", __FILE__);
    const DatasetInfo dataset = firstDataset(story, project);
    const auto team = makeTeam(story, project.GetId());
    platform.share(utils::toString(project.GetId()), utils::toString(team->GetTeamId()), dataset.id);
    receives(story, *team);
    signInColleague();
    readsMessages(story);
    raises(story, team->GetTeamId(), dataset);
    signIn();
    readsMessages(story);
    changes(story, dataset, {&IIssueManager::SolveIssue, L"IIssueManager::SolveIssue"}, L"风管降了 200。");
    signInColleague();
    changes(story, dataset, {&IIssueManager::CloseIssue, L"IIssueManager::CloseIssue"}, L"好了。");
    changes(story, dataset, {&IIssueManager::ReopenIssue, L"IIssueManager::ReopenIssue"}, L"还差一点。");
    signIn();
}

} // namespace session
