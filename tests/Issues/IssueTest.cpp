#include <OrloProjectManager/Issues/IIssue.h>
#include <OrloProjectManager/NetworkProject/Issues/IssueReaders.h>

#include <gtest/gtest.h>

// An issue's values, and their texts.
namespace orlo::test {
namespace {

std::shared_ptr<IIssue> sampleIssue()
{
    return IIssue::Create(L"t-1", L"u-1", L"门太窄", L"二层", {{true, "d-1", L"模型", 3}, {false, "d-2", L"图", 4}},
                          EORLOIssueType::CollisionDetection);
}

TEST(Issue, thatIsNewIsOpenAndHasWhatItWasMadeWith)
{
    const auto issue = sampleIssue();
    EXPECT_EQ(issue->GetId(), 0);
    EXPECT_EQ(issue->GetStatus(), EORLOIssueStatus::Open);
    EXPECT_EQ(issue->GetType(), EORLOIssueType::CollisionDetection);
    EXPECT_EQ(issue->GetTeamId(), L"t-1");
    EXPECT_EQ(issue->GetUserId(), L"u-1");
    EXPECT_EQ(issue->GetTitle(), L"门太窄");
    EXPECT_EQ(issue->GetDescription(), L"二层");
    ASSERT_EQ(issue->GetDatasets().size(), 2u);
    EXPECT_TRUE(issue->GetDatasets()[0].isCurrent);
    EXPECT_EQ(issue->GetDatasets()[1].datasetId, "d-2");
    EXPECT_EQ(issue->GetTeamName() + issue->GetUserName() + issue->GetFile() + issue->GetCamera() + issue->GetMarkCoordinate() +
                  issue->GetCreationTime() + issue->GetUpdateTime() + issue->GetElementId() + issue->GetElementName(),
              L"");
}

TEST(Issue, takesWhatIsSet)
{
    const auto issue = sampleIssue();
    issue->SetTeamId(L"1");
    issue->SetUserId(L"2");
    issue->SetTitle(L"3");
    issue->SetDescription(L"4");
    issue->SetFile(L"5");
    issue->SetCamera(L"6");
    issue->SetMarkCoordinate(L"7");
    issue->SetElementId(L"8");
    issue->SetElementName(L"9");
    issue->SetType(EORLOIssueType::Comments);
    issue->SetStatus(EORLOIssueStatus::Resolved);
    issue->SetDatasets({});
    EXPECT_EQ(issue->GetTeamId() + issue->GetUserId() + issue->GetTitle() + issue->GetDescription() + issue->GetFile() +
                  issue->GetCamera() + issue->GetMarkCoordinate() + issue->GetElementId() + issue->GetElementName(),
              L"123456789");
    EXPECT_EQ(issue->GetType(), EORLOIssueType::Comments);
    EXPECT_EQ(issue->GetStatus(), EORLOIssueStatus::Resolved);
    EXPECT_TRUE(issue->GetDatasets().empty());
}

TEST(Issue, thatIsHandedItsOwnDatasetsKeepsThem)
{
    const auto issue = sampleIssue();
    issue->SetDatasets(issue->GetDatasets());
    ASSERT_EQ(issue->GetDatasets().size(), 2u);
    EXPECT_EQ(issue->GetDatasets()[1].datasetName, L"图");
}

TEST(IssueTexts, ofTypesAreTwoAndEverythingElseIsAComment)
{
    EXPECT_EQ(issueTypeOf(L"CollisionDetection"), EORLOIssueType::CollisionDetection);
    EXPECT_EQ(issueTypeOf(L"碰撞检测"), EORLOIssueType::CollisionDetection);
    for (const wchar_t* text : {L"Comments", L"", L"collisiondetection", L" 碰撞检测"})
        EXPECT_EQ(issueTypeOf(text), EORLOIssueType::Comments);
}

TEST(IssueTexts, ofStatesAreExactAndEverythingElseIsOpen)
{
    EXPECT_EQ(issueStatusOf(L"Closed"), EORLOIssueStatus::Closed);
    EXPECT_EQ(issueStatusOf(L"已关闭"), EORLOIssueStatus::Closed);
    EXPECT_EQ(issueStatusOf(L"Resolved"), EORLOIssueStatus::Resolved);
    EXPECT_EQ(issueStatusOf(L"已解决"), EORLOIssueStatus::Resolved);
    for (const wchar_t* text : {L"Open", L"", L"closed", L"please look", L"已解决 "})
        EXPECT_EQ(issueStatusOf(text), EORLOIssueStatus::Open);
    EXPECT_EQ(textOf(EORLOIssueStatus::Open), L"Open");
    EXPECT_EQ(textOf(EORLOIssueStatus::Closed), L"Closed");
    EXPECT_EQ(textOf(EORLOIssueStatus::Resolved), L"Resolved");
    EXPECT_EQ(textOf(static_cast<EORLOIssueStatus>(9)), L"Open");
}

TEST(IssueReader, leavesWhatIsMissingOrOfAnotherTypeAtItsDefault)
{
    http::ORLOHTTPQueryIssueAck ack;
    EXPECT_FALSE(OrloPayloadProcessor::readIssues(web::json::value::parse("[]"), ack));
    EXPECT_TRUE(OrloPayloadProcessor::readIssues(
        web::json::value::parse(R"({"code":"0","msg":7,"data":[{},{"id":"5","title":7,"issueDatasets":[{"isCurrent":true,"version":"3",)"
                                R"("deleted":1},{"isCurrent":2,"deleted":true}]},7]})"),
        ack));
    EXPECT_EQ(ack.code, -1);
    EXPECT_EQ(ack.msg, L"");
    ASSERT_EQ(ack.issues.size(), 3u);
    EXPECT_EQ(ack.issues[0].id, -1);
    EXPECT_EQ(ack.issues[1].id, -1);
    EXPECT_EQ(ack.issues[1].title, L"");
    ASSERT_EQ(ack.issues[1].issueDatasets.size(), 2u);
    EXPECT_FALSE(ack.issues[1].issueDatasets[0].isCurrent);
    EXPECT_EQ(ack.issues[1].issueDatasets[0].version, -1);
    EXPECT_FALSE(ack.issues[1].issueDatasets[0].deleted);
    EXPECT_FALSE(ack.issues[1].issueDatasets[1].isCurrent);
    EXPECT_TRUE(ack.issues[1].issueDatasets[1].deleted);
}

TEST(IssueReader, readsEveryFieldOfARelatedDatasetAndLeavesNumbersThatDoNotFit)
{
    http::ORLOHTTPQueryIssueAck ack;
    EXPECT_TRUE(OrloPayloadProcessor::readIssues(
        web::json::value::parse(
            R"({"code":4294967296,"msg":"好","data":[{"id":4294967303,"issueDatasets":[{"isCurrent":1,"datasetId":"d",)"
            R"("datasetName":"模型","teamId":"t","teamName":"结构组","displayVersion":"v3","version":3,"deleted":true},)"
            R"({"isCurrent":4294967297,"version":4294967299},{"isCurrent":1.5,"version":3.5},null]},)"
            R"({"issueDatasets":{}},{"issueDatasets":null}]})"),
        ack));
    EXPECT_EQ(ack.code, -1);
    EXPECT_EQ(ack.msg, L"好");
    ASSERT_EQ(ack.issues.size(), 3u);
    EXPECT_EQ(ack.issues[0].id, -1);
    ASSERT_EQ(ack.issues[0].issueDatasets.size(), 4u);
    const http::ORLOHTTPIssueRelationDataset& whole = ack.issues[0].issueDatasets[0];
    EXPECT_EQ(whole.datasetId + L"|" + whole.datasetName + L"|" + whole.teamId + L"|" + whole.teamName + L"|" + whole.displayVersion,
              L"d|模型|t|结构组|v3");
    EXPECT_TRUE(whole.isCurrent);
    EXPECT_TRUE(whole.deleted);
    EXPECT_EQ(whole.version, 3);
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_FALSE(ack.issues[0].issueDatasets[i].isCurrent) << i;
        EXPECT_EQ(ack.issues[0].issueDatasets[i].version, -1) << i;
    }
    EXPECT_TRUE(ack.issues[1].issueDatasets.empty());
    EXPECT_TRUE(ack.issues[2].issueDatasets.empty());
}

TEST(IssueReader, takesTheDatasetOnWhichTheIssueWasRaisedTheLastOfSeveral)
{
    http::ORLOHTTPQueryIssueAck ack;
    EXPECT_TRUE(OrloPayloadProcessor::readIssues(
        web::json::value::parse(R"({"data":[{"datasetId":"d-0","issueDatasets":[{"isCurrent":1,"datasetId":"d-1"},)"
                                R"({"isCurrent":1,"datasetId":"d-2"},{"isCurrent":0,"datasetId":"d-3"}]},{"datasetId":"d-4"}]})"),
        ack));
    ASSERT_EQ(ack.issues.size(), 2u);
    EXPECT_EQ(ack.issues[0].datasetId, L"d-2");
    EXPECT_EQ(ack.issues[1].datasetId, L"d-4");
}

} // namespace
} // namespace orlo::test
