#include "support/VirtualSlot.h"

#include <OrloProjectManager/OrloProjectManager.h>

#include <gtest/gtest.h>

// The destructor is row 0 of a table and takes two places, so row n stands in slot n + 1.

namespace orlo::test {
namespace {

using Text = const std::wstring&;

TEST(SlotOrder, ofTheProjectManager)
{
    using M = ICollaborationProjectManager;
    using Project = std::shared_ptr<ICollaborationProject>;
    using List = std::vector<std::shared_ptr<ICollaborationProject>>;
    using Infos = std::vector<std::shared_ptr<DatasetInfo>>;
    EXPECT_EQ(virtualSlot<Project (M::*)(Text, ProjectStatus, ErrorCode&)>(&M::CreateProject), 2u);
    EXPECT_EQ(virtualSlot<Project (M::*)(Text, ProjectStatus, Text)>(&M::CreateProject), 3u);
    EXPECT_EQ(virtualSlot<Project (M::*)(Text, ProjectStatus, Text, ErrorCode&)>(&M::CreateProjectById), 4u);
    EXPECT_EQ(virtualSlot<Project (M::*)(Text, ProjectStatus, Text, Text)>(&M::CreateProjectById), 5u);
    EXPECT_EQ(virtualSlot<List (M::*)(ErrorCode&)>(&M::GetAllProjects), 6u);
    EXPECT_EQ(virtualSlot<List (M::*)()>(&M::GetAllProjects), 7u);
    EXPECT_EQ(virtualSlot<List (M::*)(ErrorCode&)>(&M::GetOwnerProjects), 8u);
    EXPECT_EQ(virtualSlot<List (M::*)()>(&M::GetOwnerProjects), 9u);
    EXPECT_EQ(virtualSlot<List (M::*)(ErrorCode&)>(&M::GetArchivedProjects), 10u);
    EXPECT_EQ(virtualSlot<List (M::*)()>(&M::GetArchivedProjects), 11u);
    EXPECT_EQ(virtualSlot<bool (M::*)(ProjectStatus, List&, ErrorCode&)>(&M::GetProjectByStatus), 12u);
    EXPECT_EQ(virtualSlot<bool (M::*)(ProjectStatus, List&)>(&M::GetProjectByStatus), 13u);
    EXPECT_EQ(virtualSlot<bool (M::*)(List&, ErrorCode&)>(&M::GetSampleProjects), 14u);
    EXPECT_EQ(virtualSlot<bool (M::*)(List&)>(&M::GetSampleProjects), 15u);
    EXPECT_EQ(virtualSlot<Infos (M::*)(Text, ErrorCode&)>(&M::GetDatasetInfosInFolder), 16u);
    EXPECT_EQ(virtualSlot<Infos (M::*)(Text)>(&M::GetDatasetInfosInFolder), 17u);
    EXPECT_EQ(virtualSlot<Project (M::*)(const std::string&, ErrorCode&)>(&M::GetProjectByDatasetId), 18u);
    EXPECT_EQ(virtualSlot<Project (M::*)(const std::string&)>(&M::GetProjectByDatasetId), 19u);
    EXPECT_EQ(virtualSlot<SpecialtyType (M::*)(Text, ErrorCode&)>(&M::GetSpecialtyTypeById), 20u);
    EXPECT_EQ(virtualSlot<SpecialtyType (M::*)(Text)>(&M::GetSpecialtyTypeById), 21u);
    EXPECT_EQ(virtualSlot<DatasetInfo (M::*)(const std::string&, ErrorCode&)>(&M::GetDatasetInfo), 22u);
    EXPECT_EQ(virtualSlot<DatasetInfo (M::*)(const std::string&)>(&M::GetDatasetInfo), 23u);
    EXPECT_EQ(virtualSlot(&M::GetDatasetInfoByModelingId), 24u);
    EXPECT_EQ(virtualSlot<bool (M::*)(ResourceStatus&, ErrorCode&)>(&M::GetResourceStatus), 25u);
    EXPECT_EQ(virtualSlot<bool (M::*)(ResourceStatus&)>(&M::GetResourceStatus), 26u);
    EXPECT_EQ(virtualSlot(&M::GetProjectByModelingId), 27u);
}

// The destructors of the next four stand at the end of their tables, so row n stands in slot n - 1.

TEST(SlotOrder, ofAnIssue)
{
    using I = IIssue;
    EXPECT_EQ(virtualSlot(&I::GetId), 0u);
    EXPECT_EQ(virtualSlot(&I::GetTeamId), 1u);
    EXPECT_EQ(virtualSlot(&I::SetTeamId), 2u);
    EXPECT_EQ(virtualSlot(&I::GetTeamName), 3u);
    EXPECT_EQ(virtualSlot(&I::GetUserId), 4u);
    EXPECT_EQ(virtualSlot(&I::SetUserId), 5u);
    EXPECT_EQ(virtualSlot(&I::GetUserName), 6u);
    EXPECT_EQ(virtualSlot(&I::GetTitle), 7u);
    EXPECT_EQ(virtualSlot(&I::SetTitle), 8u);
    EXPECT_EQ(virtualSlot(&I::GetDescription), 9u);
    EXPECT_EQ(virtualSlot(&I::SetDescription), 10u);
    EXPECT_EQ(virtualSlot(&I::GetFile), 11u);
    EXPECT_EQ(virtualSlot(&I::SetFile), 12u);
    EXPECT_EQ(virtualSlot(&I::GetCamera), 13u);
    EXPECT_EQ(virtualSlot(&I::SetCamera), 14u);
    EXPECT_EQ(virtualSlot(&I::GetMarkCoordinate), 15u);
    EXPECT_EQ(virtualSlot(&I::SetMarkCoordinate), 16u);
    EXPECT_EQ(virtualSlot(&I::GetCreationTime), 17u);
    EXPECT_EQ(virtualSlot(&I::GetUpdateTime), 18u);
    EXPECT_EQ(virtualSlot(&I::GetType), 19u);
    EXPECT_EQ(virtualSlot(&I::SetType), 20u);
    EXPECT_EQ(virtualSlot(&I::GetStatus), 21u);
    EXPECT_EQ(virtualSlot(&I::SetStatus), 22u);
    EXPECT_EQ(virtualSlot(&I::GetElementId), 23u);
    EXPECT_EQ(virtualSlot(&I::SetElementId), 24u);
    EXPECT_EQ(virtualSlot(&I::GetElementName), 25u);
    EXPECT_EQ(virtualSlot(&I::SetElementName), 26u);
    EXPECT_EQ(virtualSlot(&I::GetDatasets), 27u);
    EXPECT_EQ(virtualSlot(&I::SetDatasets), 28u);
}

TEST(SlotOrder, ofTheIssueManager)
{
    using M = IIssueManager;
    using Issues = std::vector<std::shared_ptr<IIssue>>;
    using Issue = const std::shared_ptr<IIssue>&;
    EXPECT_EQ(virtualSlot<bool (M::*)(const std::string&, Issues&, ErrorCode&)>(&M::GetIssueListByDatasetId), 0u);
    EXPECT_EQ(virtualSlot<bool (M::*)(const std::string&, Issues&)>(&M::GetIssueListByDatasetId), 1u);
    EXPECT_EQ(virtualSlot(&M::GetIssueListByTeamId), 2u);
    EXPECT_EQ(virtualSlot<bool (M::*)(Issue, ErrorCode&)>(&M::PostIssue), 3u);
    EXPECT_EQ(virtualSlot<bool (M::*)(Issue)>(&M::PostIssue), 4u);
    EXPECT_EQ(virtualSlot(&M::SolveIssue), 5u);
    EXPECT_EQ(virtualSlot(&M::CloseIssue), 6u);
    EXPECT_EQ(virtualSlot(&M::SubmitIssue), 7u);
    EXPECT_EQ(virtualSlot(&M::ReopenIssue), 8u);
    EXPECT_EQ(virtualSlot(&M::DealIssue), 9u);
}

TEST(SlotOrder, ofAMessage)
{
    using M = IMessage;
    EXPECT_EQ(virtualSlot(&M::GetMessageId), 0u);
    EXPECT_EQ(virtualSlot(&M::GetTitle), 1u);
    EXPECT_EQ(virtualSlot(&M::GetContent), 2u);
    EXPECT_EQ(virtualSlot(&M::GetProjectId), 3u);
    EXPECT_EQ(virtualSlot(&M::GetDatasetId), 4u);
    EXPECT_EQ(virtualSlot(&M::GetMessageType), 5u);
    EXPECT_EQ(virtualSlot(&M::GetMessageStatus), 6u);
    EXPECT_EQ(virtualSlot(&M::GetResourceId), 7u);
    EXPECT_EQ(virtualSlot(&M::GetResourceType), 8u);
    EXPECT_EQ(virtualSlot(&M::GetSenderId), 9u);
    EXPECT_EQ(virtualSlot(&M::GetSenderAction), 10u);
    EXPECT_EQ(virtualSlot(&M::GetSendTime), 11u);
}

TEST(SlotOrder, ofTheMessageManager)
{
    using M = IMessageManager;
    using Messages = IMessageManager::Messages;
    EXPECT_EQ(virtualSlot<bool (M::*)(EMessageStatus, Messages&, ErrorCode&)>(&M::GetMessages), 0u);
    EXPECT_EQ(virtualSlot<bool (M::*)(EMessageStatus, Messages&)>(&M::GetMessages), 1u);
    EXPECT_EQ(virtualSlot<bool (M::*)(EMessageStatus, Text, Messages&, ErrorCode&)>(&M::GetMessagesInProject), 2u);
    EXPECT_EQ(virtualSlot<bool (M::*)(EMessageStatus, Text, Messages&)>(&M::GetMessagesInProject), 3u);
    EXPECT_EQ(virtualSlot<bool (M::*)(EMessageStatus, Text, Messages&, ErrorCode&)>(&M::GetMessagesInDataset), 4u);
    EXPECT_EQ(virtualSlot<bool (M::*)(EMessageStatus, Text, Messages&)>(&M::GetMessagesInDataset), 5u);
    EXPECT_EQ(virtualSlot<bool (M::*)(int, EMessageType, ErrorCode&)>(&M::MarkMessageRead), 6u);
    EXPECT_EQ(virtualSlot<bool (M::*)(int, EMessageType)>(&M::MarkMessageRead), 7u);
}

TEST(SlotOrder, ofTheTeamManager)
{
    using M = ICollaborationTeamManager;
    using Team = std::shared_ptr<ICollaborationTeam>;
    using Teams = std::vector<Team>;
    EXPECT_EQ(virtualSlot<Team (M::*)(Text, Text, ErrorCode&)>(&M::CreateTeam), 2u);
    EXPECT_EQ(virtualSlot<Team (M::*)(Text, Text)>(&M::CreateTeam), 3u);
    EXPECT_EQ(virtualSlot<Team (M::*)(Text, ErrorCode&)>(&M::GetTeamByFolder), 4u);
    EXPECT_EQ(virtualSlot<Team (M::*)(Text)>(&M::GetTeamByFolder), 5u);
    EXPECT_EQ(virtualSlot(&M::GetTeam), 6u);
    EXPECT_EQ(virtualSlot<Team (M::*)(const std::string&, ErrorCode&)>(&M::GetTeamByDataset), 7u);
    EXPECT_EQ(virtualSlot<Team (M::*)(Text)>(&M::GetTeamByDataset), 8u);
    EXPECT_EQ(virtualSlot<Teams (M::*)(Text, ErrorCode&)>(&M::GetMyTeamsByProject), 9u);
    EXPECT_EQ(virtualSlot<Teams (M::*)(Text)>(&M::GetMyTeamsByProject), 10u);
}

TEST(SlotOrder, ofATeam)
{
    using T = ICollaborationTeam;
    using Records = std::vector<std::shared_ptr<ICollaborationSharedRecord>>;
    using Folders = std::vector<TeamSharedFolderInfo>;
    using Shared = std::vector<TeamSharedDatasetInfo>;
    using Infos = std::vector<DatasetInfo>;
    using Status = const DatasetStatus&;
    EXPECT_EQ(virtualSlot<Records (T::*)(ErrorCode&)>(&T::GetCollaborationSharedRecords), 2u);
    EXPECT_EQ(virtualSlot<Records (T::*)()>(&T::GetCollaborationSharedRecords), 3u);
    EXPECT_EQ(virtualSlot<Folders (T::*)(ErrorCode&)>(&T::GetTeamSharedFolders), 4u);
    EXPECT_EQ(virtualSlot<Folders (T::*)()>(&T::GetTeamSharedFolders), 5u);
    EXPECT_EQ(virtualSlot<Shared (T::*)(ErrorCode&)>(&T::GetTeamSharedDatasets), 6u);
    EXPECT_EQ(virtualSlot<Shared (T::*)()>(&T::GetTeamSharedDatasets), 7u);
    EXPECT_EQ(virtualSlot<Infos (T::*)(DatasetStatus, ErrorCode&)>(&T::GetTeamDatasetInfos), 8u);
    EXPECT_EQ(virtualSlot<Infos (T::*)(DatasetStatus)>(&T::GetTeamDatasetInfos), 9u);
    EXPECT_EQ(virtualSlot<bool (T::*)(Status, Infos&, ErrorCode&)>(&T::GetUserOwnsDatasetsInTeam), 10u);
    EXPECT_EQ(virtualSlot<bool (T::*)(Status, Infos&)>(&T::GetUserOwnsDatasetsInTeam), 11u);
    EXPECT_EQ(virtualSlot<CollaborationTeamInfo (T::*)(ErrorCode&)>(&T::GetTeamInfo), 12u);
    EXPECT_EQ(virtualSlot<CollaborationTeamInfo (T::*)()>(&T::GetTeamInfo), 13u);
    EXPECT_EQ(virtualSlot(&T::GetTeamId), 14u);
    EXPECT_EQ(virtualSlot<bool (T::*)(Text, ErrorCode&)>(&T::AddMember), 15u);
    EXPECT_EQ(virtualSlot<bool (T::*)(Text)>(&T::AddMember), 16u);
}

TEST(SlotOrder, ofASharedRecord)
{
    using R = ICollaborationSharedRecord;
    using Shared = std::vector<CollaborationSharedDatasetInfo>;
    EXPECT_EQ(virtualSlot<Shared (R::*)(ErrorCode&)>(&R::GetSharedDataSets), 2u);
    EXPECT_EQ(virtualSlot<Shared (R::*)()>(&R::GetSharedDataSets), 3u);
    EXPECT_EQ(virtualSlot(&R::GetStatus), 4u);
    EXPECT_EQ(virtualSlot(&R::GetName), 5u);
    EXPECT_EQ(virtualSlot(&R::GetShareId), 6u);
}

TEST(SlotOrder, ofAFolder)
{
    using F = ICollaborationFolder;
    using Folders = std::vector<ICollaborationFolder*>;
    EXPECT_EQ(virtualSlot<Folders (F::*)()>(&F::GetSubFolders), 2u);
    EXPECT_EQ(virtualSlot<Folders (F::*)() const>(&F::GetSubFolders), 3u);
    EXPECT_EQ(virtualSlot(&F::GetDatasets), 4u);
    EXPECT_EQ(virtualSlot(&F::GetId), 5u);
    EXPECT_EQ(virtualSlot(&F::GetName), 6u);
    EXPECT_EQ(virtualSlot(&F::GetFolderType), 7u);
    EXPECT_EQ(virtualSlot(&F::GetTeam), 8u);
}

using P = ICollaborationProject;

TEST(SlotOrder, ofAProjectsFieldsAndFolders)
{
    using Folders = std::vector<std::shared_ptr<ICollaborationFolder>>;
    using RawFolders = std::vector<ICollaborationFolder*>;
    EXPECT_EQ(virtualSlot(&P::GetId), 2u);
    EXPECT_EQ(virtualSlot(&P::GetName), 3u);
    EXPECT_EQ(virtualSlot(&P::GetSize), 4u);
    EXPECT_EQ(virtualSlot<Folders (P::*)(ErrorCode&)>(&P::GetFolders), 5u);
    EXPECT_EQ(virtualSlot<Folders (P::*)()>(&P::GetFolders), 6u);
    EXPECT_EQ(virtualSlot<RawFolders (P::*)(ErrorCode&) const>(&P::GetFolders), 7u);
    EXPECT_EQ(virtualSlot<RawFolders (P::*)() const>(&P::GetFolders), 8u);
    EXPECT_EQ(virtualSlot(&P::GetProjectFolders), 9u);
    EXPECT_EQ(virtualSlot(&P::GetStatus), 10u);
    EXPECT_EQ(virtualSlot(&P::GetTeamFolder), 11u);
    EXPECT_EQ(virtualSlot(&P::GetGridType), 12u);
}

TEST(SlotOrder, ofAProjectsConfigurations)
{
    using Space = std::shared_ptr<ISpaceConfig>;
    EXPECT_EQ(virtualSlot<bool (P::*)(int, std::string&, ErrorCode&)>(&P::GetAxisGridConfig), 13u);
    EXPECT_EQ(virtualSlot<IAxisGrid* (P::*)(int, ErrorCode&)>(&P::GetAxisGridConfig), 14u);
    EXPECT_EQ(virtualSlot<IAxisGrid* (P::*)(int)>(&P::GetAxisGridConfig), 15u);
    EXPECT_EQ(virtualSlot<bool (P::*)(IAxisGrid*, ErrorCode&)>(&P::UpdateAxisGrid), 16u);
    EXPECT_EQ(virtualSlot<bool (P::*)(IAxisGrid*)>(&P::UpdateAxisGrid), 17u);
    EXPECT_EQ(virtualSlot<bool (P::*)(int, std::wstring&, ErrorCode&)>(&P::GetSpaceConfig), 18u);
    EXPECT_EQ(virtualSlot<Space (P::*)(int, ErrorCode&)>(&P::GetSpaceConfig), 19u);
    EXPECT_EQ(virtualSlot<Space (P::*)(int)>(&P::GetSpaceConfig), 20u);
    EXPECT_EQ(virtualSlot<std::vector<int> (P::*)(ErrorCode&)>(&P::GetSpaceConfigVersions), 21u);
    EXPECT_EQ(virtualSlot<std::vector<int> (P::*)()>(&P::GetSpaceConfigVersions), 22u);
    EXPECT_EQ(virtualSlot<std::vector<int> (P::*)(ErrorCode&)>(&P::GetAxisGridConfigVersions), 23u);
    EXPECT_EQ(virtualSlot<std::vector<int> (P::*)()>(&P::GetAxisGridConfigVersions), 24u);
}

TEST(SlotOrder, ofAProjectsResources)
{
    using Packages = std::vector<std::shared_ptr<IArchivePackage>>;
    using Permissions = std::map<std::wstring, PermissionType>;
    using Fonts = std::vector<std::shared_ptr<IProjectFont>>;
    using Properties = std::vector<ProjectStandardProperty>;
    using Specialties = std::map<SpecialtyType, std::wstring>;
    EXPECT_EQ(virtualSlot<bool (P::*)(Packages&, ErrorCode&)>(&P::GetArchivePackageList), 25u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Packages&)>(&P::GetArchivePackageList), 26u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Permissions&, ErrorCode&)>(&P::GetPermissionTypes), 27u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Permissions&)>(&P::GetPermissionTypes), 28u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Fonts&, ErrorCode&)>(&P::GetProjectFonts), 29u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Fonts&)>(&P::GetProjectFonts), 30u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Properties&, ErrorCode&)>(&P::GetProjectStandardProperties), 31u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Properties&)>(&P::GetProjectStandardProperties), 32u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Specialties&, ErrorCode&)>(&P::GetSpecialtyTypes), 33u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Specialties&)>(&P::GetSpecialtyTypes), 34u);
    EXPECT_EQ(virtualSlot(&P::CreateSpecialty), 35u);
    EXPECT_EQ(virtualSlot(&P::GetTeams), 36u);
}

TEST(SlotOrder, ofAProjectsDatasets)
{
    EXPECT_EQ(virtualSlot(&P::GetDatasetBySatatus), 37u);
    EXPECT_EQ(virtualSlot<DatasetInfo (P::*)(Text, Text, Text, Text, ErrorCode&)>(&P::CreateDataset), 38u);
    EXPECT_EQ(virtualSlot<DatasetInfo (P::*)(Text, Text, Text, Text)>(&P::CreateDataset), 39u);
    EXPECT_EQ(virtualSlot<DatasetInfo (P::*)(Text, Text, Text, Text, const std::string&, ErrorCode&)>(&P::CreateDatasetById), 40u);
    EXPECT_EQ(virtualSlot<DatasetInfo (P::*)(Text, Text, Text, Text, const std::string&)>(&P::CreateDatasetById), 41u);
}

TEST(SlotOrder, ofAProjectsBuildingItems)
{
    using Items = std::vector<ProjectItemConfig>;
    using Ids = std::vector<std::wstring>;
    using Words = http::HttpMessage&;
    EXPECT_EQ(virtualSlot<bool (P::*)(Items&, int&, ErrorCode&)>(&P::GetLatestBuildingItems), 42u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Items&, int&)>(&P::GetLatestBuildingItems), 43u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Items&, int, ErrorCode&)>(&P::GetBuildingItems), 44u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Items&, int)>(&P::GetBuildingItems), 45u);
    EXPECT_EQ(virtualSlot<bool (P::*)(std::wstring&, int, Text, ErrorCode&)>(&P::AddBuildingItem), 46u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Words, std::wstring&, int, Text)>(&P::AddBuildingItem), 47u);
    EXPECT_EQ(virtualSlot<bool (P::*)(int, Text, Text, ErrorCode&)>(&P::UpdateBuildingItem), 48u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Words, int, Text, Text)>(&P::UpdateBuildingItem), 49u);
    EXPECT_EQ(virtualSlot<bool (P::*)(int, Text, ErrorCode&)>(&P::DeleteBuildingItem), 50u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Words, int, Text)>(&P::DeleteBuildingItem), 51u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Text, Text, ErrorCode&)>(&P::AssociateDatasetAndBuildingItem), 52u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Text, Text)>(&P::AssociateDatasetAndBuildingItem), 53u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Ids&, Text, ErrorCode&)>(&P::GetBuildingItemIdsByDatasetId), 54u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Ids&, Text)>(&P::GetBuildingItemIdsByDatasetId), 55u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Ids&, Text, ErrorCode&)>(&P::GetDatasetIdsByBuildingItemId), 56u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Ids&, Text)>(&P::GetDatasetIdsByBuildingItemId), 57u);
}

TEST(SlotOrder, ofAProjectsItemConfigurationsAndComponents)
{
    using Item = ProjectItemConfig&;
    using Words = http::HttpMessage&;
    using Ids = const std::map<std::wstring, std::wstring>&;
    EXPECT_EQ(virtualSlot<bool (P::*)(Item, Text, ConfigType, ErrorCode&)>(&P::GetLatestProjectItemConfig), 58u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Item, Text, ConfigType)>(&P::GetLatestProjectItemConfig), 59u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Item, Text, ConfigType, int, ErrorCode&)>(&P::GetProjectItemConfig), 60u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Item, Text, ConfigType, int)>(&P::GetProjectItemConfig), 61u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Text, ConfigType, Text, ErrorCode&)>(&P::CreateProjectItemConfig), 62u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Words, Text, ConfigType, Text)>(&P::CreateProjectItemConfig), 63u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Text, ConfigType, int, Text, ErrorCode&)>(&P::UpdateProjectItemConfig), 64u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Words, Text, ConfigType, int, Text)>(&P::UpdateProjectItemConfig), 65u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Ids, ErrorCode&)>(&P::AddComponentsWithIds), 66u);
    EXPECT_EQ(virtualSlot<bool (P::*)(Ids)>(&P::AddComponentsWithIds), 67u);
}

TEST(SlotOrder, ofAnAxisCurve)
{
    using C = IAxisCurve;
    expectSlotsBehindDestructor(&C::GetCurveType, &C::SerializeToJson, &C::DeserializeFromJson, &C::GetId, &C::SetId, &C::GetName,
                                &C::SetName, &C::GetStartTagVis, &C::SetStartTagVis, &C::GetEndTagVis, &C::SetEndTagVis, &C::GetStartExt,
                                &C::SetStartExt, &C::GetEndExt, &C::SetEndExt, &C::GetStartElbowLength, &C::SetStartElbowLength,
                                &C::GetEndElbowLength, &C::SetEndElbowLength, &C::GetVerticalMin, &C::SetVerticalMin, &C::GetVerticalMax,
                                &C::SetVerticalMax, &C::GetDiameter, &C::SetDiameter, &C::GetMin, &C::SetMin, &C::GetMax, &C::SetMax);
}

// Lines and arcs share the table of their virtual base, and their own operations stand behind its 31 places.

TEST(SlotOrder, ofAnAxisLine)
{
    using L = IAxisLine;
    EXPECT_EQ(virtualSlot(&IAxisCurve::SetMax), 30u);
    EXPECT_EQ(virtualSlot(&L::GetStartPt), 31u);
    EXPECT_EQ(virtualSlot(&L::SetStartPt), 32u);
    EXPECT_EQ(virtualSlot(&L::GetEndPt), 33u);
    EXPECT_EQ(virtualSlot(&L::SetEndPt), 34u);
    EXPECT_EQ(virtualSlot(&L::GetDir), 35u);
    EXPECT_EQ(virtualSlot(&L::SetDir), 36u);
    EXPECT_EQ(virtualSlot(&L::GetExt), 37u);
}

TEST(SlotOrder, ofAnAxisArc)
{
    using A = IAxisArc;
    EXPECT_EQ(virtualSlot(&A::GetStartPt), 31u);
    EXPECT_EQ(virtualSlot(&A::SetStartPt), 32u);
    EXPECT_EQ(virtualSlot(&A::GetEndPt), 33u);
    EXPECT_EQ(virtualSlot(&A::SetEndPt), 34u);
    EXPECT_EQ(virtualSlot(&A::GetMiddlePt), 35u);
    EXPECT_EQ(virtualSlot(&A::SetMiddlePt), 36u);
}

TEST(SlotOrder, ofAnAxisGrid)
{
    using G = IAxisGrid;
    expectSlotsBehindDestructor(&G::GetCurves, &G::GetCurve, &G::AddCurve, &G::RemoveCurve, &G::GetDistance, &G::GetVersion, &G::GetId,
                                &G::SerializeToJson, &G::LoadLinesAndArcs);
}

TEST(SlotOrder, ofACollaborationFile)
{
    using F = ICollaborationFile;
    EXPECT_EQ(virtualSlot(&F::GetId), 2u);
    EXPECT_EQ(virtualSlot(&F::GetVersion), 3u);
    EXPECT_EQ(virtualSlot(&F::GetLength), 4u);
}

TEST(SlotOrder, ofTheCollaborationFileManager)
{
    using M = ICollaborationFileManager;
    using File = std::shared_ptr<ICollaborationFile>;
    EXPECT_EQ(virtualSlot<File (M::*)(Text, Text, ErrorCode&)>(&M::UploadFile), 2u);
    EXPECT_EQ(virtualSlot<File (M::*)(const std::string&, Text, ErrorCode&)>(&M::UpdateFile), 3u);
}

TEST(SlotOrder, ofTheTemplateManager)
{
    using M = ITemplateManager;
    expectSlotsBehindDestructor(&M::UploadTemplateByJob, &M::IsTemplateExistedInProject, &M::GetAllTemplatesOfProject,
                                &M::DownloadTemplateFile);
}

// The destructors of the next three stand at the end of their tables.

TEST(SlotOrder, ofThePropertyOfAnArchivePackage)
{
    using A = IArchivePackageProperty;
    EXPECT_EQ(virtualSlot(&A::GetPackageId), 0u);
    EXPECT_EQ(virtualSlot(&A::GetPackageName), 1u);
    EXPECT_EQ(virtualSlot(&A::GetDesc), 2u);
    EXPECT_EQ(virtualSlot(&A::GetVersion), 3u);
    EXPECT_EQ(virtualSlot(&A::GetReceiver), 4u);
    EXPECT_EQ(virtualSlot(&A::GetReceiverName), 5u);
    EXPECT_EQ(virtualSlot(&A::GetSharer), 6u);
    EXPECT_EQ(virtualSlot(&A::GetSharerName), 7u);
    EXPECT_EQ(virtualSlot(&A::GetProjectId), 8u);
    EXPECT_EQ(virtualSlot(&A::GetCreateTime), 9u);
    EXPECT_EQ(virtualSlot(&A::GetEnable), 10u);
}

TEST(SlotOrder, ofAnArchivePackage)
{
    using A = IArchivePackage;
    EXPECT_EQ(virtualSlot(&A::GetId), 0u);
    EXPECT_EQ(virtualSlot(&A::GetName), 1u);
    EXPECT_EQ(virtualSlot(&A::GetProperty), 2u);
    EXPECT_EQ(virtualSlot(&A::GetArchiveUnits), 3u);
}

TEST(SlotOrder, ofAnArchiveUnit)
{
    using U = IArchiveUnit;
    EXPECT_EQ(virtualSlot(&U::GetId), 0u);
    EXPECT_EQ(virtualSlot(&U::GetName), 1u);
    EXPECT_EQ(virtualSlot(&U::GetTotalSize), 2u);
    EXPECT_EQ(virtualSlot(&U::GetDatasets), 3u);
    EXPECT_EQ(virtualSlot(&U::GetStandardCodes), 4u);
}

TEST(SlotOrder, ofTheModuleManager)
{
    using M = IModuleManager;
    expectSlotsBehindDestructor(&M::GetCategories, &M::IsCanUpload, &M::UploadModuleByJob);
}

TEST(SlotOrder, ofAModule)
{
    using M = ICollaborationModule;
    expectSlotsBehindDestructor(&M::GetFileKey, &M::GetUrl);
}

} // namespace
} // namespace orlo::test
