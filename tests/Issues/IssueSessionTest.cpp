#include "support/PlatformHost.h"

#include <BaseCommon/ErrorCode.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/Issues/IIssueManager.h>
#include <OrloProjectManager/Messages/IMessageManager.h>

#include <gmock/gmock.h>

// An issue from the user who raises it to the one who solves it, and what both are told, through a platform.
namespace orlo::test {
namespace {

using testing::IsEmpty;

class IssueSession : public testing::Test
{
protected:
    IssueSession()
    {
        host.platform.change(platform::addUser, {"user-2", "account-2", "token-secret-2"});
        host.platform.change(platform::addTeam, {"p-1", "结构组", "t-1"});
        platform::DatasetSeed seed;
        seed.name = seed.id = "d-1";
        seed.teamId = "t-1";
        seed.ownerId = "account-1";
        host.platform.change(platform::addDataset, seed);
        EXPECT_TRUE(host.addVersion("d-1"));
    }

    static void signInFirst() { UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"}); }
    static void signInSecond() { UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"}); }

    void raise()
    {
        const auto issue = IIssue::Create(L"t-1", L"user-2", L"门太窄", L"二层的门", {{true, "d-1", L"d-1", 1}}, EORLOIssueType::Comments);
        issue->SetCamera(L"{\"x\":1}");
        EXPECT_TRUE(issues.PostIssue(issue, error)) << error.GetValue();
    }
    EORLOIssueStatus state()
    {
        IIssueManager::Issues found;
        EXPECT_TRUE(issues.GetIssueListByDatasetId("d-1", found, error));
        EXPECT_EQ(found.size(), 1u);
        return found.at(0)->GetStatus();
    }
    std::vector<std::shared_ptr<IMessage>> unread()
    {
        IMessageManager::Messages found;
        EXPECT_TRUE(messages.GetMessages(EMessageStatus::UNREAD, found, error));
        return found[EMessageType::BUSINESS];
    }

    PlatformHost host;
    IIssueManager& issues = *IIssueManager::Get();
    IMessageManager& messages = *IMessageManager::Get();
    ErrorCode error;
};

TEST_F(IssueSession, anIssueIsRaisedListedAndLedToItsEnd)
{
    signInSecond();
    raise();
    IIssueManager::Issues found;
    EXPECT_TRUE(issues.GetIssueListByTeamId("t-1", found, error));
    ASSERT_EQ(found.size(), 1u);
    const int id = found[0]->GetId();
    EXPECT_GT(id, 0);
    EXPECT_EQ(found[0]->GetTitle(), L"门太窄");
    EXPECT_EQ(found[0]->GetTeamName(), L"结构组");
    EXPECT_EQ(found[0]->GetCamera(), L"{\"x\":1}");
    ASSERT_EQ(found[0]->GetDatasets().size(), 1u);
    EXPECT_TRUE(found[0]->GetDatasets()[0].isCurrent);
    EXPECT_EQ(found[0]->GetDatasets()[0].datasetId, "d-1");
    EXPECT_EQ(found[0]->GetDatasets()[0].version, 1);

    EXPECT_TRUE(issues.DealIssue(L"user-1", id, L"在看", error));
    EXPECT_EQ(state(), EORLOIssueStatus::Open);
    EXPECT_TRUE(issues.SolveIssue(L"user-1", id, L"换了", error));
    EXPECT_EQ(state(), EORLOIssueStatus::Resolved);
    EXPECT_TRUE(issues.CloseIssue(L"user-2", id, L"好", error));
    EXPECT_EQ(state(), EORLOIssueStatus::Closed);
    EXPECT_TRUE(issues.ReopenIssue(L"user-2", id, L"还是窄", error));
    EXPECT_EQ(state(), EORLOIssueStatus::Open);
    EXPECT_TRUE(issues.SubmitIssue(L"user-1", id, L"再换", error));
    EXPECT_EQ(state(), EORLOIssueStatus::Resolved);
}

TEST_F(IssueSession, aWrongChangeIsRefusedInWords)
{
    raise();
    IIssueManager::Issues found;
    ASSERT_TRUE(issues.GetIssueListByDatasetId("d-1", found, error));
    const int id = found.at(0)->GetId();
    EXPECT_FALSE(issues.ReopenIssue(L"user-1", id, L"", error));
    EXPECT_EQ(error.GetErrorMessage(), L"the issue is Open: reopen");
    EXPECT_FALSE(issues.SolveIssue(L"user-1", 999, L"", error));
    EXPECT_EQ(error.GetErrorMessage(), L"no such issue: 999");
    EXPECT_EQ(state(), EORLOIssueStatus::Open);
}

TEST_F(IssueSession, theOwnerOfTheDatasetIsToldAndMarksTheMessage)
{
    EXPECT_THAT(unread(), IsEmpty());
    signInSecond();
    raise();
    EXPECT_THAT(unread(), IsEmpty()) << "nobody is told what he did himself";
    signInFirst();
    const auto told = unread();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0]->GetTitle(), L"门太窄");
    EXPECT_EQ(told[0]->GetDatasetId(), L"d-1");
    EXPECT_EQ(told[0]->GetProjectId(), L"p-1");
    EXPECT_EQ(told[0]->GetSenderId(), L"user-2");
    EXPECT_EQ(told[0]->GetResourceType(), L"Issue");

    IMessageManager::Messages found;
    EXPECT_TRUE(messages.GetMessagesInDataset(EMessageStatus::ALL, L"d-1", found, error));
    EXPECT_EQ(found[EMessageType::BUSINESS].size(), 1u);
    EXPECT_TRUE(messages.GetMessagesInProject(EMessageStatus::ALL, L"p-9", found, error));
    EXPECT_THAT(found, IsEmpty());
    EXPECT_TRUE(messages.MarkMessageRead(told[0]->GetMessageId(), EMessageType::BUSINESS, error));
    EXPECT_THAT(unread(), IsEmpty());
    EXPECT_FALSE(messages.MarkMessageRead(told[0]->GetMessageId(), EMessageType::SYSTEM, error)) << "it is none of those";
    signInSecond();
    EXPECT_FALSE(messages.MarkMessageRead(told[0]->GetMessageId(), EMessageType::BUSINESS, error)) << "it is the other user's";
}

TEST_F(IssueSession, theAuthorIsToldOfAChangeAndATeamOfAShare)
{
    signInSecond();
    raise();
    signInFirst();
    IIssueManager::Issues found;
    ASSERT_TRUE(issues.GetIssueListByDatasetId("d-1", found, error));
    EXPECT_TRUE(issues.SolveIssue(L"user-1", found.at(0)->GetId(), L"", error));
    signInSecond();
    ASSERT_EQ(unread().size(), 1u);
    EXPECT_EQ(unread()[0]->GetSenderAction(), L"solve");

    host.platform.change(platform::addTeam, {"p-1", "机电组", "t-2"});
    host.platform.change(platform::addMember, "t-2", "account-2");
    platform::ShareSeed share;
    share.shareId = "t-1";
    share.consumedId = "t-2";
    share.name = "一审";
    host.platform.change(platform::addShare, share);
    ASSERT_EQ(unread().size(), 2u);
    EXPECT_EQ(unread()[1]->GetTitle(), L"一审");
}

} // namespace
} // namespace orlo::test
