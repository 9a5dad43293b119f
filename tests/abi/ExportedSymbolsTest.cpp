#include "support/ChildProcess.h"
#include "support/Patterns.h"
#include "support/Sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

/// The demangled names that a library defines and exports, as nm tells them.
std::vector<std::string> exportedNames(const std::string& library = ORLO_LIBRARY_FILE)
{
    std::vector<std::string> names;
    for (const std::string& line : ChildProcess({ORLO_NM, "-D", "-C", "--defined-only", library}).lines()) {
        // "0000000000012345 T name(arguments)"
        const std::size_t kind = line.find(' ');
        if (kind != std::string::npos && line.size() > kind + 3)
            names.push_back(line.substr(kind + 3));
    }
    return names;
}

/// One web function is part of the face.
bool belongsToTheFace(const std::string& name)
{
    return startsWith(name, "orlo::OrloWebService::DeleteFileByFileId(");
}

class ExportedSymbolsTest : public testing::Test
{
protected:
    const std::vector<std::string> names = exportedNames();

    bool exportsAny(const std::string& head) const
    {
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) { return startsWith(name, head); });
    }
};

TEST_F(ExportedSymbolsTest, theEntriesOfTheFaceAreThere)
{
    for (const char* entry :
         {"orlo::ICollaborationProjectManager::Get()", "orlo::ICollaborationProject::Load(std::", "orlo::HttpClient::deleteProject(std::",
          "vtable for orlo::ICollaborationProjectManager", "vtable for orlo::ICollaborationProject",
          "vtable for orlo::ICollaborationFolder", "typeinfo for orlo::ICollaborationProjectManager",
          "typeinfo for orlo::ICollaborationProject", "typeinfo for orlo::ICollaborationFolder"})
        EXPECT_TRUE(exportsAny(entry)) << entry;
}

TEST_F(ExportedSymbolsTest, theEntriesOfTeamsIssuesAndMessagesAreThere)
{
    for (const char* entry :
         {"orlo::ICollaborationTeamManager::Get()", "orlo::HttpClient::createTeam(std::", "orlo::HttpClient::getTeamInfosInProject(std::",
          "orlo::HttpClient::addUserToTeam(std::", "orlo::HttpClient::deleteUserFromTeam(std::",
          "orlo::HttpClient::getTeamIdByFolderId(std::", "orlo::HttpClient::getShareRecordByTeamId(std::",
          "orlo::HttpClient::getShareContentById(std::", "orlo::HttpClient::getResourceId(std::", "orlo::ShareRecord::ShareRecord(std::",
          "orlo::ShareContents::ShareContents(std::", "orlo::IIssueManager::Get()",
          "orlo::IIssue::Create(std::", "orlo::IMessageManager::Get()", "orlo::IMessage::CreateMessage(int, "})
        EXPECT_TRUE(exportsAny(entry)) << entry;
    for (const char* face : {"ICollaborationTeamManager", "ICollaborationTeam", "ICollaborationSharedRecord", "IIssueManager", "IIssue",
                             "IMessageManager", "IMessage"}) {
        EXPECT_EQ(std::count(names.begin(), names.end(), "vtable for orlo::" + std::string(face)), 1) << face;
        EXPECT_EQ(std::count(names.begin(), names.end(), "typeinfo for orlo::" + std::string(face)), 1) << face;
    }
    EXPECT_EQ(
        std::count_if(names.begin(), names.end(),
                      [](const std::string& name) { return startsWith(name, "orlo::ICollaborationTeam::GetUserOwnsDatasetsInTeams("); }),
        2);
}

TEST_F(ExportedSymbolsTest, theEntriesOfTemplatesAreThere)
{
    for (const char* entry :
         {"orlo::ITemplateManager::Get()", "orlo::HttpClient::createTemplate(std::", "orlo::HttpClient::deleteTemplate(std::",
          "orlo::HttpClient::getProjectTemplatesOfUser(std::", "vtable for orlo::ITemplateManager", "typeinfo for orlo::ITemplateManager"})
        EXPECT_TRUE(exportsAny(entry)) << entry;
}

TEST_F(ExportedSymbolsTest, theEntriesOfModulesAreThere)
{
    for (const char* entry : {"orlo::IModuleManager::Get()",
                              "orlo::IModuleManager::DownloadModuleFile(std::", "orlo::HttpClient::uploadModule(orlo::ErrorCode&",
                              "orlo::ICollaborationModule::ICollaborationModule()", "vtable for orlo::IModuleManager",
                              "typeinfo for orlo::IModuleManager", "typeinfo for orlo::ICollaborationModule"})
        EXPECT_TRUE(exportsAny(entry)) << entry;
}

TEST_F(ExportedSymbolsTest, theEntriesOfTheAxisGridAreThere)
{
    for (const char* entry :
         {"orlo::IAxisGrid::Create()", "orlo::IAxisLine::Create()", "orlo::IAxisArc::Create()", "orlo::IAxisLine::GetCurveType() const",
          "orlo::IAxisArc::GetCurveType() const", "orlo::IAxisCurve::IAxisCurve()", "orlo::IAxisGrid::IAxisGrid()",
          "orlo::Point3d::dot(orlo::Point3d const&) const", "orlo::Point3d::length() const", "orlo::Point3d::normalize()",
          "orlo::Point3d::SerializeToJson(orlo::JsonWrapper&) const", "orlo::Point3d::DeserializeFromJson(orlo::JsonWrapper const&)"})
        EXPECT_TRUE(exportsAny(entry)) << entry;
    for (const char* face : {"IAxisCurve", "IAxisLine", "IAxisArc", "IAxisGrid"}) {
        EXPECT_EQ(std::count(names.begin(), names.end(), "vtable for orlo::" + std::string(face)), 1) << face;
        EXPECT_EQ(std::count(names.begin(), names.end(), "typeinfo for orlo::" + std::string(face)), 1) << face;
    }
}

TEST_F(ExportedSymbolsTest, theEntriesOfArchivePackagesAreThere)
{
    for (const char* face : {"IArchivePackage", "IArchivePackageProperty", "IArchiveUnit"}) {
        EXPECT_TRUE(exportsAny("orlo::" + std::string(face) + "::" + face + "()")) << face;
        EXPECT_EQ(std::count(names.begin(), names.end(), "vtable for orlo::" + std::string(face)), 1) << face;
        EXPECT_EQ(std::count(names.begin(), names.end(), "typeinfo for orlo::" + std::string(face)), 1) << face;
    }
}

TEST_F(ExportedSymbolsTest, theBridgeStandsInTheLibraryBelow)
{
    const std::vector<std::string> below = exportedNames(ORLO_BASE_LIBRARY_FILE);
    for (const char* entry : {"orlo::IOrloBridge::m_pBridge", "vtable for orlo::IOrloBridge", "typeinfo for orlo::IOrloBridge"}) {
        EXPECT_EQ(std::count(below.begin(), below.end(), entry), 1) << entry;
        EXPECT_FALSE(exportsAny(entry)) << entry << " would be there twice";
    }
}

TEST_F(ExportedSymbolsTest, theWayBackOfADatasetsFileIsThere)
{
    EXPECT_EQ(std::count_if(names.begin(), names.end(),
                            [](const std::string& name) { return startsWith(name, "orlo::DatasetFiles::listVersions(std::"); }),
              2);
    EXPECT_TRUE(exportsAny("orlo::DatasetFiles::downloadVersion(std::"));
}

TEST_F(ExportedSymbolsTest, bothFormsOfLoadAreThere)
{
    EXPECT_EQ(std::count_if(names.begin(), names.end(),
                            [](const std::string& name) { return startsWith(name, "orlo::ICollaborationProject::Load("); }),
              2);
}

TEST_F(ExportedSymbolsTest, theOperationsOfTheComponentLibraryAreThere)
{
    for (const char* operation :
         {"GetCategoryCodes", "GetCategoryTree", "GetCategoryTreeCanBeUpdated", "SearchComponents", "SearchComponentsCanBeUpdated",
          "GetComponentsChanged", "GetDetailInfoOfComponent", "IsComponentExist", "GetFamilyTypeInfoOfComponent",
          "GetAllFamilyTypeInfosOfComponent", "GetCutlineOfComponent", "GetDownloadUrlOfComponent", "GetXmlInfoOfComponent",
          "DeleteComponent", "UpgradeComponent", "UploadComponent"})
        EXPECT_TRUE(exportsAny("orlo::IProjectComponentLibrary::" + std::string(operation) + "(std::")) << operation;
    EXPECT_FALSE(exportsAny("vtable for orlo::IProjectComponentLibrary")) << "it has no objects";
}

TEST_F(ExportedSymbolsTest, nothingInsideIsExported)
{
    if (isSanitized)
        GTEST_SKIP() << "a sanitized build may show everything, so that the sanitizers see each object of the process once";
    ASSERT_FALSE(names.empty());
    for (const char* inside : {"orlo::OrloWebService::",
                               "orlo::OrloPayloadProcessor::",
                               "orlo::OrloWebServiceUtils::",
                               "orlo::WebCall",
                               "orlo::WebAnswer",
                               "orlo::JsonBody",
                               "orlo::CallFrame",
                               "orlo::ProjectManager::",
                               "orlo::Project::",
                               "orlo::CollaborationTeam::",
                               "orlo::CollaborationTeamManager::",
                               "orlo::CollaborationSharedRecord::",
                               "orlo::Issue::",
                               "orlo::IssueManager::",
                               "orlo::Message::",
                               "orlo::MessageManager::",
                               "orlo::TemplateManager::",
                               "orlo::ModuleManager::",
                               "orlo::CollaborationModule::",
                               "orlo::AxisGrid::",
                               "orlo::AxisLine",
                               "orlo::AxisArc",
                               "orlo::AxisCurve",
                               "orlo::IStoredCurve",
                               "orlo::ArchivePackage::",
                               "orlo::ArchivePackageProperty::",
                               "orlo::ArchiveUnit::",
                               "orlo::OrloBridge::",
                               "orlo::log::",
                               "orlo::http::",
                               "orlo::utils::",
                               "orlo::RecordTable",
                               "orlo::TextTable",
                               "orlo::readField",
                               "orlo::readMember",
                               "orlo::memberOf",
                               "orlo::jsonText",
                               "vtable for orlo::ProjectManager",
                               "vtable for orlo::Project",
                               "vtable for orlo::AxisGrid",
                               "vtable for orlo::ArchivePackage",
                               "vtable for orlo::ArchiveUnit",
                               "vtable for orlo::OrloBridge",
                               "typeinfo for orlo::Project",
                               "(anonymous namespace)",
                               "web::",
                               "pplx::",
                               "rapidjson::"}) {
        for (const std::string& name : names)
            EXPECT_FALSE(startsWith(name, inside) && !belongsToTheFace(name)) << name;
    }
}

} // namespace
} // namespace orlo::test
