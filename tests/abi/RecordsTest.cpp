#include <OrloProjectManager/OrloProjectManager.h>

#include <gmock/gmock.h>

#include <type_traits>
#include <utility>

// The records of teams, issues and messages, as a host uses them: made of their fields in order, copied, moved.

namespace orlo::test {
namespace {

using testing::ElementsAre;

/// What is left of a record that was copied, moved and assigned.
template <class Record>
Record handedOn(const Record& record)
{
    static_assert(std::is_default_constructible_v<Record>);
    Record copy(record);
    Record moved(std::move(copy));
    Record assigned;
    assigned = moved;
    Record last;
    last = std::move(assigned);
    return last;
}

TEST(Records, ofATeamHaveTheirFieldsInOrder)
{
    const auto [description, id, name, linkedFolderId, projectId, status] =
        handedOn(CollaborationTeamInfo{L"d", L"t", L"n", L"f", L"p", CollaborationTeamStatus::Paused});
    EXPECT_EQ(description + L"|" + id + L"|" + name + L"|" + linkedFolderId + L"|" + projectId, L"d|t|n|f|p");
    EXPECT_EQ(status, CollaborationTeamStatus::Paused);
    const CollaborationTeamInfo none;
    EXPECT_EQ(none.description + none.id + none.name + none.linkedFolderId + none.projectId, L"");
}

TEST(Records, ofWhatATeamWasGivenHaveTheirFieldsInOrder)
{
    const auto [folderTeam, folderTeamName, folder] = handedOn(TeamSharedFolderInfo{L"t", L"n", L"r"});
    EXPECT_EQ(folderTeam + L"|" + folderTeamName + L"|" + folder, L"t|n|r");
    const auto [datasetTeam, datasetTeamName, datasets] = handedOn(TeamSharedDatasetInfo{L"t", L"n", {L"d-1", L"d-2"}});
    EXPECT_EQ(datasetTeam + L"|" + datasetTeamName, L"t|n");
    EXPECT_THAT(datasets, ElementsAre(L"d-1", L"d-2"));
    const auto [id, name, versions] = handedOn(CollaborationSharedDatasetInfo{L"d", L"n", {3, 5}});
    EXPECT_EQ(id + L"|" + name, L"d|n");
    EXPECT_THAT(versions, ElementsAre(3, 5));
}

TEST(Records, ofAShareAreMadeCopiedAndAssigned)
{
    const ShareRecord record(L"r", L"from", L"to", L"n", L"Shared");
    ShareRecord other(L"", L"", L"", L"", L"");
    other = ShareRecord(record);
    EXPECT_EQ(other.getId() + L"|" + other.getShareId() + L"|" + other.getConsumedId() + L"|" + other.getName() + L"|" + other.getStatus(),
              L"r|from|to|n|Shared");
    const ShareContents contents(L"d", L"n", {1, 2});
    ShareContents otherContents(L"", L"", {});
    otherContents = ShareContents(contents);
    EXPECT_EQ(otherContents.getId() + L"|" + otherContents.getName(), L"d|n");
    EXPECT_THAT(otherContents.getVersions(), ElementsAre(1, 2));
}

TEST(Records, ofAnIssueHaveTheirFieldsInOrder)
{
    const auto [isCurrent, datasetId, datasetName, version] = handedOn(IssuedDataSet{true, "d", L"n", 3});
    EXPECT_TRUE(isCurrent);
    EXPECT_EQ(datasetId, "d");
    EXPECT_EQ(datasetName, L"n");
    EXPECT_EQ(version, 3);
    const http::ORLOHTTPIssue issue = handedOn(http::ORLOHTTPIssue{
        L"1", L"2", L"3", L"4", L"5", L"6", L"7", 8, L"9", L"10", L"11", L"12", L"13", L"14", L"15", L"16", L"17", {{}}});
    EXPECT_EQ(issue.camera + issue.creationTime + issue.datasetId + issue.description + issue.elementId + issue.elementName + issue.file,
              L"1234567");
    EXPECT_EQ(issue.id, 8);
    EXPECT_EQ(issue.markCoordinate + issue.memo + issue.teamId + issue.teamName + issue.title + issue.updateTime + issue.userId +
                  issue.userName + issue.type,
              L"91011121314151617");
    EXPECT_EQ(issue.issueDatasets.size(), 1u);
    EXPECT_EQ(http::ORLOHTTPIssue().id, -1);
}

TEST(Records, ofAnAnswerAboutIssuesHaveTheirFieldsInOrder)
{
    const auto [isCurrent, datasetId, datasetName, teamId, teamName, displayVersion, version, deleted] =
        handedOn(http::ORLOHTTPIssueRelationDataset{true, L"d", L"n", L"t", L"tn", L"v", 3, true});
    EXPECT_TRUE(isCurrent && deleted);
    EXPECT_EQ(datasetId + L"|" + datasetName + L"|" + teamId + L"|" + teamName + L"|" + displayVersion, L"d|n|t|tn|v");
    EXPECT_EQ(version, 3);
    const http::ORLOHTTPIssueRelationDataset none;
    EXPECT_FALSE(none.isCurrent || none.deleted);
    EXPECT_EQ(none.version, -1);
    const auto [code, msg, issues] = handedOn(http::ORLOHTTPQueryIssueAck{7, L"m", {{}, {}}});
    EXPECT_EQ(code, 7);
    EXPECT_EQ(msg, L"m");
    EXPECT_EQ(issues.size(), 2u);
    EXPECT_EQ(http::ORLOHTTPQueryIssueAck().code, -1);
}

TEST(Records, ofMessagesHaveTheirFieldsInOrder)
{
    const auto [content, producer, consumer, hasRead, deleted, created, updated] =
        handedOn(http::ORLOHTTPPayloadMessageContent{L"c", L"p", L"q", true, false, 1700000000123, 1700000000456});
    EXPECT_EQ(content + L"|" + producer + L"|" + consumer, L"c|p|q");
    EXPECT_TRUE(hasRead);
    EXPECT_FALSE(deleted);
    EXPECT_EQ(created, 1700000000123);
    EXPECT_EQ(updated, 1700000000456);
    const auto [producerSourceId, producerType, consumerId, consumerType, contents] =
        handedOn(http::ORLOHTTPPayloadMessage{L"ps", L"pt", L"ci", L"ct", {{}}});
    EXPECT_EQ(producerSourceId + L"|" + producerType + L"|" + consumerId + L"|" + consumerType, L"ps|pt|ci|ct");
    ASSERT_EQ(contents.size(), 1u);
    EXPECT_FALSE(contents[0].hasRead || contents[0].deleted);
    EXPECT_EQ(contents[0].createTimestamp + contents[0].updateTimestamp, 0);
}

TEST(Records, ofTemplatesHaveTheirFieldsInOrder)
{
    const auto [id, name, uri, from, specialty, templateId, projectId, size, createTime, updateTime] =
        handedOn(SamplePlate{L"1", L"2", L"3", L"4", L"5", L"6", L"7", L"8", L"9", L"10"});
    EXPECT_EQ(id + name + uri + from + specialty + templateId + projectId + size + createTime + updateTime, L"12345678910");
    const auto [projectTemplate, templateName, project] = handedOn(ProjectTemplate{L"t", L"n", L"p"});
    EXPECT_EQ(projectTemplate + L"|" + templateName + L"|" + project, L"t|n|p");
    const auto [wireId, wireName, wireProject] = handedOn(http::ORLOHTTPPayloadTemplate{L"t", L"n", L"p"});
    EXPECT_EQ(wireId + L"|" + wireName + L"|" + wireProject, L"t|n|p");
}

TEST(Records, ofArchivePackagesHaveTheirFieldsInOrder)
{
    const auto [packageId, packageName, desc, version, receiver, receiverName, projectId, createTime, sharer, sharerName, enable] =
        handedOn(http::ORLOHTTPPayloadArchivePackage{L"1", L"2", L"3", 4, L"5", L"6", L"7", L"8", L"9", L"10", true});
    EXPECT_EQ(packageId + packageName + desc + receiver + receiverName + projectId + createTime + sharer + sharerName, L"1235678910");
    EXPECT_EQ(version, 4);
    EXPECT_TRUE(enable);
    EXPECT_FALSE(http::ORLOHTTPPayloadArchivePackage().enable);
    const auto [resourceId, integratePackageId, type] = handedOn(http::ORLOHTTPPayloadArchiveUint{L"r", L"i", L"t"});
    EXPECT_EQ(resourceId + L"|" + integratePackageId + L"|" + type, L"r|i|t");
}

TEST(Records, ofVersionsInArchivesHaveTheirFieldsInOrder)
{
    const auto [id, version, ownerId, ownerName, packageId, contents] =
        handedOn(http::ORLOHTTPPayloadArchivePackageVersion{1, 2, L"o", L"n", L"p", {{}, {}}});
    EXPECT_EQ(id, 1);
    EXPECT_EQ(version, 2);
    EXPECT_EQ(ownerId + L"|" + ownerName + L"|" + packageId, L"o|n|p");
    EXPECT_EQ(contents.size(), 2u);
    const auto [unitVersionId, unitVersion, status, integratePackage, name, time, datasetVersions] =
        handedOn(http::ORLOHTTPPayloadArchiveUnitVersion{3, 4, L"s", L"p", L"n", L"t", {5, 6}});
    EXPECT_EQ(unitVersionId, 3);
    EXPECT_EQ(unitVersion, 4);
    EXPECT_EQ(status + L"|" + integratePackage + L"|" + name + L"|" + time, L"s|p|n|t");
    EXPECT_THAT(datasetVersions, ElementsAre(5, 6));
    const auto [datasetId, number, versionId, size] = handedOn(ArchiveDatasetEntry{L"d", 7, 8, 9});
    EXPECT_EQ(datasetId, L"d");
    EXPECT_EQ(number, 7);
    EXPECT_EQ(versionId, 8);
    EXPECT_EQ(size, 9);
}

/// An answer about archives: the code, the words, then the list.
template <class Ack, class List>
void expectArchiveAck(List list)
{
    const auto [code, msg, records] = handedOn(Ack{7, L"m", std::move(list)});
    EXPECT_EQ(code, 7);
    EXPECT_EQ(msg, L"m");
    EXPECT_EQ(records.size(), 2u);
}

TEST(Records, ofAnswersAboutArchivesHaveTheirFieldsInOrder)
{
    expectArchiveAck<http::ORLOHTTPPayloadArchivePackageAck>(std::vector<http::ORLOHTTPPayloadArchivePackage>(2));
    expectArchiveAck<http::ORLOHTTPPayloadArchivePackageVersionAck>(std::vector<http::ORLOHTTPPayloadArchivePackageVersion>(2));
    expectArchiveAck<http::ORLOHTTPPayloadArchiveUnitVersionAck>(std::vector<http::ORLOHTTPPayloadArchiveUnitVersion>(2));
    expectArchiveAck<http::ORLOHTTPPayloadArchiveUnitStandardCodeAck>(std::map<int, std::vector<std::wstring>>{{1, {L"30-01"}}, {-2, {}}});
}

TEST(Records, ofComponentsHaveTheirFieldsInOrder)
{
    const auto [id, version] = handedOn(ComponentInfo{9007199254740993, 2});
    EXPECT_EQ(id, 9007199254740993);
    EXPECT_EQ(version, 2);
    EXPECT_EQ(ComponentInfo{1}.version, -1);
    const auto [cutline, name, thumbnail, placeholderType] = handedOn(Cutline{-9007199254740993, L"n", L"t", L"p"});
    EXPECT_EQ(cutline, -9007199254740993);
    EXPECT_EQ(name + L"|" + thumbnail + L"|" + placeholderType, L"n|t|p");
    EXPECT_EQ(Cutline().id, 0);
}

TEST(Records, ofAStoredDocumentHaveTheirFieldsInOrder)
{
    const auto [type, id, version, birthTime, creationTime, configValue] =
        handedOn(ProjectItemConfig{ConfigType::Coordinate, L"i", 3, L"b", L"c", L"v"});
    EXPECT_EQ(type, ConfigType::Coordinate);
    EXPECT_EQ(version, 3);
    EXPECT_EQ(id + L"|" + birthTime + L"|" + creationTime + L"|" + configValue, L"i|b|c|v");
}

TEST(Records, haveTheNumbersOfTheirEnumerations)
{
    EXPECT_EQ(static_cast<int>(CollaborationTeamStatus::Working), 0);
    EXPECT_EQ(static_cast<int>(CollaborationTeamStatus::Paused), 1);
    EXPECT_EQ(static_cast<int>(CollaborationShareStatus::Temporary), 0);
    EXPECT_EQ(static_cast<int>(CollaborationShareStatus::Shared), 1);
    EXPECT_EQ(static_cast<int>(CollaborationShareStatus::Consumed), 2);
    EXPECT_EQ(static_cast<int>(ORLOSubjectType::Team), 0);
    EXPECT_EQ(static_cast<int>(ORLOSubjectType::Personal), 1);
    EXPECT_EQ(static_cast<int>(ORLOSubjectType::Role), 2);
    EXPECT_EQ(static_cast<int>(ORLOResourceType::Folder), 0);
    EXPECT_EQ(static_cast<int>(ORLOResourceType::DataSet), 1);
    EXPECT_EQ(static_cast<int>(ORLOResourceType::Version), 2);
    EXPECT_EQ(static_cast<int>(ORLOResourceType::Project), 3);
    EXPECT_EQ(static_cast<int>(EORLOIssueType::Comments), 0);
    EXPECT_EQ(static_cast<int>(EORLOIssueType::CollisionDetection), 1);
    EXPECT_EQ(static_cast<int>(EORLOIssueStatus::Open), 0);
    EXPECT_EQ(static_cast<int>(EORLOIssueStatus::Closed), 1);
    EXPECT_EQ(static_cast<int>(EORLOIssueStatus::Resolved), 2);
    EXPECT_EQ(static_cast<int>(EMessageType::SYSTEM), 0);
    EXPECT_EQ(static_cast<int>(EMessageType::BUSINESS), 1);
    EXPECT_EQ(static_cast<int>(EMessageStatus::ALL), 0);
    EXPECT_EQ(static_cast<int>(EMessageStatus::READ), 1);
    EXPECT_EQ(static_cast<int>(EMessageStatus::UNREAD), 2);
}

} // namespace
} // namespace orlo::test
