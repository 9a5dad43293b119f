#include "support/ChildProcess.h"
#include "support/Patterns.h"
#include "support/Sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

/// The demangled names that the library defines and exports, as nm tells them.
std::vector<std::string> exportedNames()
{
    std::vector<std::string> names;
    for (const std::string& line : ChildProcess({ORLO_NM, "-D", "-C", "--defined-only", ORLO_LIBRARY_FILE}).lines()) {
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
