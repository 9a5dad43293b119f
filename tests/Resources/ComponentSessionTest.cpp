#include "support/PlatformHost.h"
#include "support/TempFolder.h"
#include "support/WireTest.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/NetworkProject/Resources/ComponentWeb.h>
#include <OrloProjectManager/NetworkProject/Transfer/StreamWeb.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>

#include <gmock/gmock.h>

// The components of a project, from the catalogue into it and out of it, through a platform.
namespace orlo::test {
namespace {

using Library = IProjectComponentLibrary;
using Texts = std::vector<std::wstring>;
using testing::ElementsAre;
using testing::HasSubstr;

class ComponentSession : public testing::Test
{
protected:
    ComponentSession()
    {
        host.platform.change(platform::addComponentCategory, {"A", "建筑", "", 1});
        host.platform.change(platform::addComponentCategory, {"A1", "门", "A", 1});
        host.platform.change(platform::addComponentCategory, {"S", "结构", "", 0});
        door = publish("单扇门 Door", "A1");
        column = publish("柱 Column", "S");
        host.host.change([](OrloConfig& config) { config.appVersion = L"2024.1.3"; });
    }

    std::wstring publish(const std::string& name, const std::string& category, const std::string& id = {})
    {
        return utils::toWstring(host.platform.change(platform::addPublicComponent, {name, category, {{"大", R"({"width":1200})"}}, id}));
    }
    void publishAgain(const std::string& name, const std::string& category, const std::wstring& id)
    {
        publish(name, category, utils::toString(id));
    }
    /// The project has the door as 101 and the column as 102.
    void take()
    {
        const auto project = ICollaborationProject::Load(L"p-1", error);
        ASSERT_NE(project, nullptr);
        EXPECT_TRUE(project->AddComponentsWithIds({{L"101", door}, {L"102", column}}, error)) << utils::toString(error.GetErrorMessage());
    }
    std::vector<Component> search(const Texts& codes, const std::wstring& keyword, int page = 1, int pageSize = 10)
    {
        std::vector<Component> components;
        EXPECT_TRUE(Library::SearchComponents(L"p-1", {codes, keyword, page, pageSize}, components, total, error));
        return components;
    }
    /// What is at a signed address.
    std::string fetched(const std::wstring& address)
    {
        const auto file = host.host.folder().path("fetched");
        EXPECT_TRUE(OrloWebService::DownloadFileFromUrl(error, address, file.wstring()));
        return readFile(file);
    }
    static std::vector<std::string> lines(const std::vector<Component>& components)
    {
        std::vector<std::string> told;
        for (const Component& component : components)
            told.push_back(utils::toString(component.id + L" " + std::to_wstring(component.version) + L" " + component.name));
        return told;
    }

    PlatformHost host;
    ErrorCode error;
    std::wstring door, column;
    int total = -1;
};

TEST_F(ComponentSession, componentsOfTheCatalogueAreTakenAndFound)
{
    EXPECT_TRUE(search({}, L"").empty());
    EXPECT_EQ(total, 0);
    take();
    const auto found = search({}, L"");
    EXPECT_THAT(lines(found), ElementsAre("101 1 单扇门 Door", "102 1 柱 Column"));
    EXPECT_EQ(total, 2);
    EXPECT_EQ(found.at(0).publicComponentId, door);
    EXPECT_EQ(found.at(0).categoryCode, L"A1");
    EXPECT_EQ(found.at(0).status, L"NORMAL");
    EXPECT_THAT(lines(search({L"A"}, L"")), ElementsAre("101 1 单扇门 Door"));
    EXPECT_THAT(lines(search({}, L"柱")), ElementsAre("102 1 柱 Column"));
    EXPECT_THAT(lines(search({}, L"", 2, 1)), ElementsAre("102 1 柱 Column"));
    EXPECT_EQ(total, 2) << "of all pages";

    const auto project = ICollaborationProject::Load(L"p-1", error);
    EXPECT_TRUE(project->AddComponentsWithIds({{L"101", door}}, error)) << "it is there already";
    EXPECT_FALSE(project->AddComponentsWithIds({{L"101", column}}, error)) << "the id is another's";
    error.Clear();
    EXPECT_FALSE(project->AddComponentsWithIds({{L"103", L"999"}}, error)) << "the catalogue hasn't got it";
    error.Clear();
    EXPECT_THAT(lines(search({}, L"")), ElementsAre("101 1 单扇门 Door", "102 1 柱 Column"));
}

TEST_F(ComponentSession, categoriesAreATreeWithCounts)
{
    take();
    Texts codes;
    EXPECT_TRUE(Library::GetCategoryCodes(L"p-1", SpecialtyType::ZOK, codes, error));
    EXPECT_THAT(codes, ElementsAre(L"A", L"A1"));
    std::vector<Category> tree;
    EXPECT_TRUE(Library::GetCategoryTree(L"p-1", {L"A"}, L"", L"2024.1", tree, error));
    ASSERT_EQ(tree.size(), 2u);
    EXPECT_EQ(tree[1].code, L"A1");
    EXPECT_EQ(tree[1].name, L"门");
    EXPECT_EQ(tree[1].parentCode, L"A");
    EXPECT_EQ(tree[1].parentId, tree[0].id);
    EXPECT_EQ(tree[1].level, 2);
    EXPECT_EQ(tree[1].weight, 1.0);
    EXPECT_EQ(tree[0].count, 1);
    EXPECT_EQ(tree[0].parentId, 0);
}

TEST_F(ComponentSession, whatIsNewerInTheCatalogueIsFoundAndTaken)
{
    take();
    const std::vector<ComponentInfo> held{{101, 1}, {102, 1}};
    std::vector<Component> renewable;
    EXPECT_TRUE(Library::SearchComponentsCanBeUpdated(L"p-1", held, L"", L"", SpecialtyType::Unknown, renewable, error));
    EXPECT_TRUE(renewable.empty());
    publishAgain("双扇门 Door", "A1", door);
    EXPECT_TRUE(Library::SearchComponentsCanBeUpdated(L"p-1", held, L"A", L"door", SpecialtyType::ZOK, renewable, error));
    EXPECT_THAT(lines(renewable), ElementsAre("101 2 双扇门 Door"));
    std::vector<Category> tree;
    EXPECT_TRUE(Library::GetCategoryTreeCanBeUpdated(L"p-1", SpecialtyType::ZOK, held, L"", tree, error));
    ASSERT_EQ(tree.size(), 2u);
    EXPECT_EQ(tree[1].code, L"A1");

    Component component;
    EXPECT_TRUE(Library::GetDetailInfoOfComponent(L"p-1", L"101", 1, component, error));
    EXPECT_EQ(component.updateStatus, L"UPDATABLE");
    EXPECT_TRUE(Library::UpgradeComponent(L"p-1", L"101", L"{}", component, error));
    EXPECT_THAT(lines({component}), ElementsAre("101 2 双扇门 Door"));
    EXPECT_FALSE(Library::UpgradeComponent(L"p-1", L"101", L"{}", component, error)) << "it is the newest";
    EXPECT_THAT(error.GetErrorMessage(), HasSubstr(L"the component has version 2 already"));
}

TEST_F(ComponentSession, aComponentIsReadInFull)
{
    take();
    Component component;
    EXPECT_TRUE(Library::GetDetailInfoOfComponent(L"p-1", L"101", 1, component, error));
    EXPECT_THAT(lines({component}), ElementsAre("101 1 单扇门 Door"));
    EXPECT_EQ(component.publicComponentId, door);
    EXPECT_EQ(component.source, 0);
    EXPECT_GT(component.categoryId, 0);
    EXPECT_EQ(component.updateStatus, L"NEWEST");
    EXPECT_THAT(component.familyTypeNames, ElementsAre(L"大"));
    ASSERT_EQ(component.thumbnails.count(L"512"), 1u);
    EXPECT_THAT(fetched(component.thumbnails.at(L"512").at(0)), HasSubstr("单扇门 Door"));
    EXPECT_THAT(fetched(component.thumbnail), HasSubstr("width=\"128\""));

    std::wstring text;
    EXPECT_TRUE(Library::GetFamilyTypeInfoOfComponent(L"p-1", L"101", 1, L"大", text, error));
    EXPECT_EQ(text, LR"({"name":"大","parameters":{"width":1200}})");
    EXPECT_TRUE(Library::GetAllFamilyTypeInfosOfComponent(L"p-1", L"101", 1, text, error));
    EXPECT_EQ(text, LR"({"familyTypes":[{"name":"大","parameters":{"width":1200}}]})");
    std::vector<Cutline> cutlines;
    EXPECT_TRUE(Library::GetCutlineOfComponent(L"p-1", L"101", 1, cutlines, error));
    ASSERT_EQ(cutlines.size(), 2u);
    EXPECT_EQ(cutlines[0].placeholderType, L"PLAN");
    EXPECT_GT(cutlines[0].id, 0);
    EXPECT_FALSE(Library::GetCutlineOfComponent(L"p-1", L"101", 2, cutlines, error)) << "there is no such version";
}

TEST_F(ComponentSession, theFileOfAComponentIsFetchedFromItsAddress)
{
    take();
    std::wstring xml;
    EXPECT_TRUE(Library::GetXmlInfoOfComponent(L"p-1", L"101", 1, xml, error));
    EXPECT_THAT(xml, HasSubstr(L"单扇门 Door"));
    std::wstring address;
    EXPECT_TRUE(Library::GetDownloadUrlOfComponent(L"p-1", L"101", 1, address, error));
    EXPECT_EQ(fetched(address), utils::toString(xml));
    EXPECT_EQ(fetched(OrloWebService::GetFamilyFileUrl(error, L"p-1", L"101", L"1")), utils::toString(xml));
}

TEST_F(ComponentSession, anUploadIsTellableExistsAndIsDeleted)
{
    host.platform.change(platform::addFile, "demo/door.rfa", "bytes of the family");
    Component component;
    EXPECT_TRUE(
        Library::UploadComponent(L"p-1", LR"({"name":"自建门","categoryCode":"A1","fileOSSPath":"demo/door.rfa"})", component, error));
    EXPECT_THAT(lines({component}), ElementsAre("1 1 自建门"));
    EXPECT_EQ(component.publicComponentId, L"");
    std::wstring address;
    EXPECT_TRUE(Library::GetDownloadUrlOfComponent(L"p-1", component.id, component.version, address, error));
    EXPECT_EQ(fetched(address), "bytes of the family");
    EXPECT_TRUE(Library::UpgradeComponent(L"p-1", L"1", LR"({"name":"自建门 2","categoryCode":"A1"})", component, error));
    EXPECT_THAT(lines({component}), ElementsAre("1 2 自建门 2"));

    bool answer = false;
    EXPECT_TRUE(Library::IsComponentExist(L"p-1", L"1", answer, error));
    EXPECT_TRUE(answer);
    EXPECT_TRUE(Library::DeleteComponent(L"p-1", L"1", answer, error));
    EXPECT_TRUE(answer);
    EXPECT_TRUE(Library::DeleteComponent(L"p-1", L"1", answer, error));
    EXPECT_FALSE(answer) << "there is nothing left to delete";
    EXPECT_TRUE(Library::IsComponentExist(L"p-1", L"1", answer, error));
    EXPECT_FALSE(answer);
}

TEST_F(ComponentSession, changesAreToldSinceATime)
{
    take();
    const auto since = [&](long long time, SpecialtyType specialty) {
        std::vector<Component> changed;
        EXPECT_TRUE(Library::GetComponentsChanged(L"p-1", specialty, time, changed, error));
        return changed;
    };
    EXPECT_THAT(lines(since(0, SpecialtyType::ZOK)), ElementsAre("101 1 单扇门 Door"));
    host.platform.clock().move(10);
    const long long then = (host.platform.clock().seconds() - 5) * 1000;
    EXPECT_TRUE(since(then, SpecialtyType::ZOK).empty());
    publishAgain("双扇门 Door", "A1", door);
    Component component;
    EXPECT_TRUE(Library::UpgradeComponent(L"p-1", L"101", L"{}", component, error));
    bool deleted = false;
    EXPECT_TRUE(Library::DeleteComponent(L"p-1", L"102", deleted, error));
    const auto changed = since(then, SpecialtyType::ZOK);
    EXPECT_THAT(lines(changed), ElementsAre("101 2 双扇门 Door"));
    EXPECT_EQ(changed.at(0).updateStatus, L"UPDATE");
    EXPECT_EQ(changed.at(0).publicComponentId, L"101") << "the id once more, on purpose";
    EXPECT_EQ(since(then, SpecialtyType::ZIM).at(0).updateStatus, L"DELETE");
}

TEST_F(ComponentSession, whoMayNotWriteIsToldSo)
{
    take();
    host.platform.change(platform::addUser, {"user-2", "account-2", "token-secret-2"});
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    bool deleted = true;
    EXPECT_FALSE(Library::DeleteComponent(L"p-1", L"101", deleted, error));
    EXPECT_TRUE(deleted);
    EXPECT_THAT(error.GetErrorMessage(), HasSubstr(L"the account may not write in this project"));
    error.Clear();
    EXPECT_EQ(search({}, L"").size(), 2u) << "reading is free";
}

TEST_F(ComponentSession, aLostAnswerIsAskedForAgain)
{
    const RetryLimit retries(3);
    platform::Fault lost;
    lost.kind = platform::FaultKind::ResetBeforeAnswer;
    lost.path = "/structural/project/p-1/suite/local";
    lost.carryOut = true;
    host.platform.faults().add(lost);
    take();
    EXPECT_THAT(lines(search({}, L"")), ElementsAre("101 1 单扇门 Door", "102 1 柱 Column"));
}

} // namespace
} // namespace orlo::test
