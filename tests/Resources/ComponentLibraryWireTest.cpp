#include "support/ProjectObjectTest.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>

// The component library as a whole: its categories, searches in it, and what changes it.
namespace orlo::test {
namespace {

using Library = IProjectComponentLibrary;
using Texts = std::vector<std::wstring>;

constexpr const char* searchTarget = "/structural/project/suites/search";
constexpr const char* treeTarget = "/structural/project/p-1/suite/category";
constexpr const char* renewableTreeTarget = "/structural/project/p-1/renewable/suites/categories";
constexpr const char* addTarget = "/structural/project/p-1/suite/local";

const std::wstring addFailed = L"E [ORLOSDK]Project::AddLocalComponents error!";

std::wstring wide(const std::string& ascii)
{
    return {ascii.begin(), ascii.end()};
}

Component componentBefore()
{
    Component component;
    component.id = L"before";
    component.name = L"before";
    component.source = 7;
    component.thumbnails = {{L"before", {L"before"}}};
    return component;
}

class ComponentLibraryWireTest : public ProjectObjectTest
{
protected:
    /// The operation finds something else than it needs in an answer with status 200.
    template <class Call>
    void expectNotNormal(const std::string& method, const std::string& target, const std::wstring& name,
                         const std::vector<std::string>& bodies, const Call& call)
    {
        for (const std::string& body : bodies) {
            log.clear();
            server.expect(method, target).anyBody().reply(200, body);
            EXPECT_FALSE(call()) << body;
            expectClear(error);
            EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::" + name + L" - response is not normal: " +
                                         (body.empty() ? L"null" : wide(body))});
        }
    }

    /// The operation sends nothing for want of an argument.
    template <class Call>
    void expectRefused(const std::wstring& name, const Call& call)
    {
        log.clear();
        error.Clear();
        EXPECT_FALSE(call());
        expectGenericError(error, badInputValue, L"GenericError", name + L"：参数输入有误!");
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]" + name + L"：参数输入有误!"});
        EXPECT_EQ(server.connectionCount(), 0u);
    }

    void expectBefore() const
    {
        EXPECT_EQ(component.id, L"before");
        EXPECT_EQ(component.name, L"before");
        EXPECT_EQ(component.source, 7);
        EXPECT_EQ(component.thumbnails.size(), 1u);
    }

    bool search() { return Library::SearchComponents(L"p-1", {{}, L"", 1, 20}, components, totalCount, error); }

    Texts codes{L"before"};
    std::vector<Category> categories = std::vector<Category>(1);
    std::vector<Component> components{componentBefore()};
    Component component = componentBefore();
    int totalCount = 7;
    bool deleted = true;
};

const std::vector<std::string> neverNormal{"", "null", "[]", "7", "\"x\"", "{}", R"({"code":10000})", R"({"data":null})", R"({"data":7})"};

std::vector<std::string> neverNormalOr(const std::vector<std::string>& more)
{
    std::vector<std::string> all = neverNormal;
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

const std::vector<std::string> noArray = neverNormalOr({R"({"data":{}})", R"({"data":"[]"})", R"({"data":true})"});
const std::vector<std::string> noObject = neverNormalOr({R"({"data":[]})", R"({"data":"{}"})", R"({"data":true})"});

// Records

TEST(ComponentRecords, haveTheirFieldsInOrderAndTheirDefaults)
{
    const auto [id, parentId, name, weight, count, level, code, parentCode] = Category{1, 2, L"n", 3.5, 4, 5, L"c", L"p"};
    EXPECT_EQ(name + code + parentCode, L"ncp");
    EXPECT_EQ(id * 1000 + parentId * 100 + count * 10 + level, 1245);
    EXPECT_EQ(weight, 3.5);
    const Component component{L"i", L"p", 1, L"n", 2, 3, L"c", L"s", {L"f"}, L"t", {{L"128", {L"a"}}}, L"u"};
    EXPECT_EQ(component.id + component.publicComponentId + component.name + component.categoryCode + component.status +
                  component.thumbnail + component.updateStatus,
              L"ipncstu");
    EXPECT_EQ(component.version * 100 + component.source * 10 + component.categoryId, 123);
    const Component none;
    EXPECT_EQ(none.version, -1);
    EXPECT_EQ(none.source, -1);
    EXPECT_EQ(none.categoryId, -1);
    EXPECT_EQ(ComponentInfo{5}.version, -1);
    EXPECT_EQ(Cutline().id, 0);
    const SearchCriteria criteria({L"01"}, L"k", 2, 20);
    EXPECT_EQ(criteria.categoryCodes, Texts{L"01"});
    EXPECT_EQ(criteria.keyword, L"k");
    EXPECT_EQ(criteria.page * 100 + criteria.pageSize, 220);
}

// Categories

TEST_F(ComponentLibraryWireTest, theCodesOfCategoriesAreTheTextsOfTheAnswer)
{
    server.expect("GET", "/structural/project/p-1/suite/major/categories?major=1").reply(200, R"({"data":["01","柱",7,null,{},"","01"]})");
    EXPECT_TRUE(Library::GetCategoryCodes(L"p-1", SpecialtyType::ZOK, codes, error));
    EXPECT_EQ(codes, (Texts{L"before", L"01", L"柱", L"", L"01"}));
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, aSpecialtyHasANumberOfItsOwn)
{
    // Intended: Unknown is asked for with -1, and ZEB, like all that isn't listed, with the number of ZIM.
    for (const auto& [specialty, major] : {std::pair(0, "-1"), std::pair(1, "1"), std::pair(2, "0"), std::pair(3, "2"), std::pair(4, "0"),
                                           std::pair(77, "0"), std::pair(77, "0"), std::pair(-1, "0")}) {
        server.expect("GET", std::string("/structural/project/p-1/suite/major/categories?major=") + major).reply(200, R"({"data":[]})");
        EXPECT_TRUE(Library::GetCategoryCodes(L"p-1", static_cast<SpecialtyType>(specialty), codes, error));
    }
    EXPECT_EQ(codes, Texts{L"before"});
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, theTreeIsAskedForByCodesKeywordAndVersion)
{
    server.expect("POST", treeTarget)
        .header("Content-Type", "application/json")
        .body(R"({"categoryCodes":["01","柱"],"keyword":"梁 \"x\"","softwareVersion":"2024.1"})")
        .reply(200, R"({"code":0,"data":[{"id":3,"parentId":1,"name":"柱","weight":1.5,"count":12,"level":2,"code":"0101",)"
                    R"("parentCode":"01","more":{}},{"weight":2}]})");
    EXPECT_TRUE(Library::GetCategoryTree(L"p-1", {L"01", L"柱"}, L"梁 \"x\"", L"2024.1", categories, error));
    ASSERT_EQ(categories.size(), 3u);
    EXPECT_EQ(categories[1].id, 3);
    EXPECT_EQ(categories[1].parentId, 1);
    EXPECT_EQ(categories[1].name, L"柱");
    EXPECT_EQ(categories[1].weight, 1.5);
    EXPECT_EQ(categories[1].count, 12);
    EXPECT_EQ(categories[1].level, 2);
    EXPECT_EQ(categories[1].code, L"0101");
    EXPECT_EQ(categories[1].parentCode, L"01");
    EXPECT_EQ(categories[2].weight, 2.0);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, anEmptyQuestionAboutTheTreeHasAllItsMembers)
{
    server.expect("POST", treeTarget).body(R"({"categoryCodes":[],"keyword":"","softwareVersion":""})").reply(200, R"({"data":[]})");
    EXPECT_TRUE(Library::GetCategoryTree(L"p-1", {}, L"", L"", categories, error));
    EXPECT_EQ(categories.size(), 1u);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, fieldsOfACategoryOfAnotherTypeKeepTheirDefaults)
{
    server.expect("POST", treeTarget)
        .anyBody()
        .reply(200, R"({"data":[{"id":"3","parentId":4294967296,"name":7,"weight":"1","count":1.5,"level":null,"code":[],"parentCode":{}},)"
                    R"(null,7,[],"x",{}]})");
    EXPECT_TRUE(Library::GetCategoryTree(L"p-1", {}, L"", L"", categories, error));
    ASSERT_EQ(categories.size(), 7u);
    for (const Category& category : categories) {
        EXPECT_EQ(category.id + category.parentId + category.count + category.level, 0);
        EXPECT_EQ(category.weight, 0.0);
        EXPECT_EQ(category.name + category.code + category.parentCode, L"");
    }
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, theTreeOfRenewablesIsAskedForByWhatTheCallerHolds)
{
    server.expect("POST", renewableTreeTarget)
        .body(R"({"keyword":"柱","major":2,"projectComponentRequestBeans":[{"id":9007199254740993,"version":3},{"id":-1,"version":-1}]})")
        .reply(200, R"({"data":[{"id":3}]})");
    EXPECT_TRUE(Library::GetCategoryTreeCanBeUpdated(L"p-1", SpecialtyType::ZUTA, {{9007199254740993, 3}, {-1}}, L"柱", categories, error));
    ASSERT_EQ(categories.size(), 2u);
    EXPECT_EQ(categories[1].id, 3);
    server.expect("POST", renewableTreeTarget)
        .body(R"({"keyword":"","major":-1,"projectComponentRequestBeans":[]})")
        .reply(200, R"({"data":[]})");
    EXPECT_TRUE(Library::GetCategoryTreeCanBeUpdated(L"p-1", SpecialtyType::Unknown, {}, L"", categories, error));
    expectQuiet();
}

// Searches

TEST_F(ComponentLibraryWireTest, aSearchTellsItsProjectInTheBody)
{
    server.expect("POST", searchTarget)
        .header("Content-Type", "application/json")
        .body(R"({"categoryCodes":["01","02"],"keyword":"柱","page":2,"pageSize":20,"projectId":"p-1"})")
        .reply(200, R"({"data":{"list":[{"id":"7","categoryCode":"0101","publicComponentId":"70","name":"柱","thumbnail":"t",)"
                    R"("version":3,"status":"NORMAL","source":1,"categoryId":5,"updateStatus":"u","familyTypeNames":["f"],)"
                    R"("thumbnailSizes":[{"size":"1","thumbnails":["a"]}]},{"id":8,"version":"3"}],"totalCount":41}})");
    EXPECT_TRUE(Library::SearchComponents(L"p-1", SearchCriteria({L"01", L"02"}, L"柱", 2, 20), components, totalCount, error));
    EXPECT_EQ(totalCount, 41);
    ASSERT_EQ(components.size(), 3u);
    EXPECT_EQ(components[1].id, L"7");
    EXPECT_EQ(components[1].categoryCode, L"0101");
    EXPECT_EQ(components[1].publicComponentId, L"70");
    EXPECT_EQ(components[1].name, L"柱");
    EXPECT_EQ(components[1].thumbnail, L"t");
    EXPECT_EQ(components[1].version, 3);
    EXPECT_EQ(components[1].status, L"NORMAL");
    // Intended: the rest isn't read here.
    EXPECT_EQ(components[1].source, -1);
    EXPECT_EQ(components[1].categoryId, -1);
    EXPECT_EQ(components[1].updateStatus, L"");
    EXPECT_TRUE(components[1].familyTypeNames.empty());
    EXPECT_TRUE(components[1].thumbnails.empty());
    EXPECT_EQ(components[2].id, L"") << "an id is a text";
    EXPECT_EQ(components[2].version, -1);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, aSearchWithoutAListFindsNothingAndTellsTheCount)
{
    server.expect("POST", searchTarget)
        .body(R"({"categoryCodes":[],"keyword":"","page":1,"pageSize":20,"projectId":"p-1"})")
        .reply(200, R"({"data":{"totalCount":12}})");
    components.clear();
    EXPECT_TRUE(search());
    EXPECT_TRUE(components.empty());
    EXPECT_EQ(totalCount, 12);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, aCountThatIsntToldStaysAsItWas)
{
    for (const char* body : {R"({"data":{"list":[]}})", R"({"data":{"totalCount":"12"}})", R"({"data":{"totalCount":4294967296}})",
                             R"({"data":{"totalCount":1.5,"list":{}}})", R"({"data":{"totalCount":null,"list":null}})"}) {
        server.expect("POST", searchTarget).anyBody().reply(200, body);
        EXPECT_TRUE(search()) << body;
        EXPECT_EQ(totalCount, 7) << body;
        EXPECT_EQ(components.size(), 1u) << body;
    }
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, theCodeOfAnAnswerIsNotLookedAt)
{
    server.expect("POST", searchTarget).anyBody().reply(200, R"({"code":"failed","data":{"totalCount":1}})");
    EXPECT_TRUE(search());
    EXPECT_EQ(totalCount, 1);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, renewablesAreSearchedByQueryAndByABareArray)
{
    server.expect("POST", "/structural/project/p-1/suites/check4update?category_code=%E6%9F%B1&keyword=a%26b&major=1")
        .header("Content-Type", "application/json")
        .body(R"([{"id":7,"version":3},{"id":8,"version":-1}])")
        .reply(200, R"({"data":[{"id":"7","categoryCode":"0101","name":"柱","thumbnail":"t","version":4,"status":"NORMAL",)"
                    R"("publicComponentId":"70","updateStatus":"u"},null]})");
    EXPECT_TRUE(Library::SearchComponentsCanBeUpdated(L"p-1", {{7, 3}, {8, -1}}, L"柱", L"a&b", SpecialtyType::ZOK, components, error));
    ASSERT_EQ(components.size(), 3u);
    EXPECT_EQ(components[1].id, L"7");
    EXPECT_EQ(components[1].categoryCode, L"0101");
    EXPECT_EQ(components[1].name, L"柱");
    EXPECT_EQ(components[1].thumbnail, L"t");
    EXPECT_EQ(components[1].version, 4);
    EXPECT_EQ(components[1].status, L"NORMAL");
    EXPECT_EQ(components[1].publicComponentId + components[1].updateStatus, L"") << "these aren't read here, on purpose";
    EXPECT_EQ(components[2].version, -1);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, anEmptyCodeAndKeywordAreNotInTheQuery)
{
    server.expect("POST", "/structural/project/p-1/suites/check4update?major=-1").body("[]").reply(200, R"({"data":[]})");
    EXPECT_TRUE(Library::SearchComponentsCanBeUpdated(L"p-1", {}, L"", L"", SpecialtyType::Unknown, components, error));
    server.expect("POST", "/structural/project/p-1/suites/check4update?keyword=k&major=2").body("[]").reply(200, R"({"data":[]})");
    EXPECT_TRUE(Library::SearchComponentsCanBeUpdated(L"p-1", {}, L"", L"k", SpecialtyType::ZUTA, components, error));
    EXPECT_EQ(components.size(), 1u);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, whatChangedHasItsIdInBothFields)
{
    server.expect("GET", "/structural/project/p-1/components/changed?major=0&time=1700000000123")
        .reply(200, R"({"data":{"updateComponents":[{"id":9007199254740993,"publicComponentId":"70","version":3,"name":"柱",)"
                    R"("updateStatus":"UPDATE","status":"NORMAL","categoryCode":"01","thumbnail":"t"},{"id":-7},{"id":"8"},null]}})");
    EXPECT_TRUE(Library::GetComponentsChanged(L"p-1", SpecialtyType::ZIM, 1700000000123, components, error));
    ASSERT_EQ(components.size(), 5u);
    EXPECT_EQ(components[1].id, L"9007199254740993");
    // Intended: the id once more, whatever stands in the member of that name.
    EXPECT_EQ(components[1].publicComponentId, L"9007199254740993");
    EXPECT_EQ(components[1].version, 3);
    EXPECT_EQ(components[1].name, L"柱");
    EXPECT_EQ(components[1].updateStatus, L"UPDATE");
    EXPECT_EQ(components[1].status + components[1].categoryCode + components[1].thumbnail, L"");
    EXPECT_EQ(components[2].id, L"-7");
    EXPECT_EQ(components[3].id + components[3].publicComponentId, L"") << "an id is a number here";
    EXPECT_EQ(components[4].version, -1);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, theTimeOfChangesGoesOutInDecimal)
{
    for (const auto& [time, text] : {std::pair(0LL, "0"), std::pair(std::numeric_limits<long long>::max(), "9223372036854775807"),
                                     std::pair(std::numeric_limits<long long>::min(), "-9223372036854775808")}) {
        server.expect("GET", std::string("/structural/project/p-1/components/changed?major=2&time=") + text)
            .reply(200, R"({"data":{"updateComponents":[]}})");
        EXPECT_TRUE(Library::GetComponentsChanged(L"p-1", SpecialtyType::ZUTA, time, components, error));
    }
    EXPECT_EQ(components.size(), 1u);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, changesNeedAProjectAndASpecialty)
{
    const auto changed = [&](const std::wstring& projectId, SpecialtyType specialty) {
        return [this, projectId, specialty] { return Library::GetComponentsChanged(projectId, specialty, 0, components, error); };
    };
    expectRefused(L"GetComponentsChanged", changed(L"", SpecialtyType::ZOK));
    expectRefused(L"GetComponentsChanged", changed(L"p-1", SpecialtyType::Unknown));
    EXPECT_EQ(components.size(), 1u);
}

// Changes

TEST_F(ComponentLibraryWireTest, aComponentIsDeletedByAGet)
{
    server.expect("GET", "/structural/project/p-1/suite/7").reply(200, R"({"data":true})");
    deleted = false;
    EXPECT_TRUE(Library::DeleteComponent(L"p-1", L"7", deleted, error));
    EXPECT_TRUE(deleted);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, thatNothingWasDeletedIsNoFailure)
{
    server.expect("GET", "/structural/project/p-1/suite/7").reply(200, R"({"data":false})");
    EXPECT_TRUE(Library::DeleteComponent(L"p-1", L"7", deleted, error));
    EXPECT_FALSE(deleted);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, anUpgradeSendsItsBodyAsItStands)
{
    server.expect("PUT", "/structural/project/p-1/suite/7/upgrade")
        .header("Content-Type", "application/json; charset=utf-8")
        .body(R"( { "版本" : 4 , "b":[]} )")
        .reply(200, R"({"data":{"id":"7","categoryCode":"0101","publicComponentId":"70","name":"柱","version":4,)"
                    R"("thumbnail":"t","status":"NORMAL"}})");
    EXPECT_TRUE(Library::UpgradeComponent(L"p-1", L"7", LR"( { "版本" : 4 , "b":[]} )", component, error));
    EXPECT_EQ(component.id, L"7");
    EXPECT_EQ(component.categoryCode, L"0101");
    EXPECT_EQ(component.publicComponentId, L"70");
    EXPECT_EQ(component.name, L"柱");
    EXPECT_EQ(component.version, 4);
    // Intended: these aren't read here.
    EXPECT_EQ(component.thumbnail + component.status, L"");
    EXPECT_EQ(component.source, -1) << "nothing is left of what stood there";
    EXPECT_TRUE(component.thumbnails.empty());
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, anUploadSendsItsBodyAsItStands)
{
    server.expect("POST", "/structural/v2/project/p-1/suite/upload")
        .header("Content-Type", "application/json; charset=utf-8")
        .body("no JSON: 柱")
        .reply(200, R"({"data":{"id":"7","publicComponentId":"70","categoryCode":"0101","name":"柱","thumbnail":"t","version":1,)"
                    R"("status":"NORMAL","source":1,"updateStatus":"u"}})");
    EXPECT_TRUE(Library::UploadComponent(L"p-1", L"no JSON: 柱", component, error));
    EXPECT_EQ(component.id, L"7");
    EXPECT_EQ(component.publicComponentId, L"70");
    EXPECT_EQ(component.categoryCode, L"0101");
    EXPECT_EQ(component.name, L"柱");
    EXPECT_EQ(component.thumbnail, L"t");
    EXPECT_EQ(component.version, 1);
    EXPECT_EQ(component.status, L"NORMAL");
    EXPECT_EQ(component.source, -1);
    EXPECT_EQ(component.updateStatus, L"");
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, aChangedComponentOfWhichNothingIsToldHasDefaults)
{
    server.expect("POST", "/structural/v2/project/p-1/suite/upload")
        .body("{}")
        .reply(200, R"({"data":{"id":7,"version":"1","name":null}})");
    EXPECT_TRUE(Library::UploadComponent(L"p-1", L"{}", component, error));
    EXPECT_EQ(component.id + component.name, L"");
    EXPECT_EQ(component.version, -1);
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, aChangeWithoutItsArgumentsIsRefused)
{
    expectRefused(L"DeleteComponent", [&] { return Library::DeleteComponent(L"", L"7", deleted, error); });
    expectRefused(L"DeleteComponent", [&] { return Library::DeleteComponent(L"p-1", L"", deleted, error); });
    expectRefused(L"UpgradeComponent", [&] { return Library::UpgradeComponent(L"", L"7", L"{}", component, error); });
    expectRefused(L"UpgradeComponent", [&] { return Library::UpgradeComponent(L"p-1", L"", L"{}", component, error); });
    expectRefused(L"UpgradeComponent", [&] { return Library::UpgradeComponent(L"p-1", L"7", L"", component, error); });
    expectRefused(L"UploadComponent", [&] { return Library::UploadComponent(L"", L"{}", component, error); });
    expectRefused(L"UploadComponent", [&] { return Library::UploadComponent(L"p-1", L"", component, error); });
    EXPECT_TRUE(deleted);
    expectBefore();
}

// Components of the catalogue

TEST_F(ComponentLibraryWireTest, componentsAreAddedByTheirPublicIds)
{
    host.change([](OrloConfig& config) { config.appVersion = L"2024.1.3"; });
    server.expect("POST", addTarget)
        .header("Content-Type", "application/json; charset=utf-8")
        .body(R"({"softwareVersion":"2024.1","publicComponentIdToProjectComponentIdMap":{"柱":"\"3\"","90":"1","80":"2"}})")
        .reply(200, R"({"code":"success"})");
    EXPECT_TRUE(project->AddComponentsWithIds({{L"1", L"90"}, {L"2", L"80"}, {L"\"3\"", L"柱"}}, error));
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, theVersionIsToldWithTwoPartsAtTheMost)
{
    for (const auto& [version, told] : {std::pair(L"", ""), std::pair(L"2024", "2024"), std::pair(L"2024.1", "2024.1"),
                                        std::pair(L"2024.1.3.4", "2024.1"), std::pair(L"2024.", "2024."), std::pair(L"..", ".")}) {
        host.change([text = version](OrloConfig& config) { config.appVersion = text; });
        server.expect("POST", addTarget)
            .body(std::string(R"({"softwareVersion":")") + told + R"(","publicComponentIdToProjectComponentIdMap":{}})")
            .reply(200, R"({"code":"success","data":null})");
        EXPECT_TRUE(project->AddComponentsWithIds({}, error));
    }
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, ofTwoRowsWithOnePublicIdTheLastCounts)
{
    host.change([](OrloConfig& config) { config.appVersion = L"1.0"; });
    server.expect("POST", addTarget)
        .body(R"({"softwareVersion":"1.0","publicComponentIdToProjectComponentIdMap":{"90":"3","80":"2"}})")
        .reply(200, R"({"code":"success"})");
    EXPECT_TRUE(project->AddComponentsWithIds({{L"1", L"90"}, {L"2", L"80"}, {L"3", L"90"}}, error));
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, manyComponentsAreAddedInTheOrderOfTheirIds)
{
    std::map<std::wstring, std::wstring> ids;
    std::string members;
    for (int i = 100000; i < 120000; ++i) {
        const std::string number = std::to_string(i);
        ids.emplace(utils::toWstring(number), L"public " + utils::toWstring(number));
        members += std::string(members.empty() ? "" : ",").append("\"public " + number + "\":\"" + number + "\"");
    }
    // One of the public ids again: it stays in its place, with the last id.
    ids.emplace(L"200000", L"public 100000");
    members.replace(members.find("\"100000\""), 8, "\"200000\"");
    host.change([](OrloConfig& config) { config.appVersion = L"1.0"; });
    server.expect("POST", addTarget)
        .body(R"({"softwareVersion":"1.0","publicComponentIdToProjectComponentIdMap":{)" + members + "}}")
        .reply(200, R"({"code":"success"})");
    EXPECT_TRUE(project->AddComponentsWithIds(ids, error));
    expectQuiet();
}

TEST_F(ComponentLibraryWireTest, onlyTheTextSuccessConfirmsWhatWasAdded)
{
    for (const char* body : {"", "null", "[]", "{}", R"({"code":10000})", R"({"code":"Success"})", R"({"code":""})", R"({"code":null})",
                             R"({"data":{"code":"success"}})", R"("success")"}) {
        log.clear();
        server.expect("POST", addTarget).anyBody().reply(200, body);
        EXPECT_FALSE(project->AddComponentsWithIds({}, error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{addFailed}) << body;
    }
}

TEST_F(ComponentLibraryWireTest, theShortFormOfAddingGivesTheSame)
{
    server.expect("POST", addTarget).anyBody().reply(200, R"({"code":"success"})");
    server.expect("POST", addTarget).anyBody().reply(404, "none");
    EXPECT_TRUE(project->AddComponentsWithIds({}));
    EXPECT_FALSE(project->AddComponentsWithIds({}));
}

TEST_F(ComponentLibraryWireTest, addingFailsAsEveryRetriedOperationDoes)
{
    host.change([](OrloConfig& config) { config.appVersion = L"1.0"; });
    RequestingOperation add{"POST", addTarget, R"({"softwareVersion":"1.0","publicComponentIdToProjectComponentIdMap":{"90":"1"}})",
                            L"Project::AddComponentsWithIds - code:", [&](ErrorCode& ec) {
                                return project->AddComponentsWithIds({{L"1", L"90"}}, ec);
                            }};
    add.afterwards = addFailed;
    add.operationName = L"orlo::Project::AddComponentsWithIds";
    add.goodAnswer = R"({"code":"success"})";
    expectFailuresOf(add, server, log);
    expectSuccessAtLast(add, server, log);
}

// Failures

TEST_F(ComponentLibraryWireTest, whatIsNotOfTheTypeThatIsNeededIsNotNormal)
{
    expectNotNormal("GET", "/structural/project/p-1/suite/major/categories?major=1", L"GetCategoryCodes", noArray,
                    [&] { return Library::GetCategoryCodes(L"p-1", SpecialtyType::ZOK, codes, error); });
    expectNotNormal("POST", treeTarget, L"GetCategoryTree", noArray,
                    [&] { return Library::GetCategoryTree(L"p-1", {}, L"", L"", categories, error); });
    expectNotNormal("POST", renewableTreeTarget, L"GetCategoryTreeCanBeUpdated", noArray,
                    [&] { return Library::GetCategoryTreeCanBeUpdated(L"p-1", SpecialtyType::ZOK, {}, L"", categories, error); });
    expectNotNormal("POST", searchTarget, L"SearchComponents", noObject, [&] { return search(); });
    expectNotNormal("POST", "/structural/project/p-1/suites/check4update?major=1", L"SearchComponentsCanBeUpdated", noArray,
                    [&] { return Library::SearchComponentsCanBeUpdated(L"p-1", {}, L"", L"", SpecialtyType::ZOK, components, error); });
    const std::vector<std::string> noChanges{R"({"data":{}})", R"({"data":{"updateComponents":{}}})",
                                             R"({"data":{"updateComponents":null}})"};
    for (const auto& bodies : {noObject, noChanges})
        expectNotNormal("GET", "/structural/project/p-1/components/changed?major=1&time=5", L"GetComponentsChanged", bodies,
                        [&] { return Library::GetComponentsChanged(L"p-1", SpecialtyType::ZOK, 5, components, error); });
    EXPECT_EQ(codes, Texts{L"before"});
    EXPECT_EQ(categories.size(), 1u);
    EXPECT_EQ(components.size(), 1u);
    EXPECT_EQ(totalCount, 7);
}

TEST_F(ComponentLibraryWireTest, aChangeThatIsNotToldAsItShouldBeIsNotNormal)
{
    expectNotNormal("GET", "/structural/project/p-1/suite/7", L"DeleteComponent",
                    neverNormalOr({R"({"data":"false"})", R"({"data":{}})", R"({"data":[]})"}),
                    [&] { return Library::DeleteComponent(L"p-1", L"7", deleted, error); });
    expectNotNormal("PUT", "/structural/project/p-1/suite/7/upgrade", L"UpgradeComponent", noObject,
                    [&] { return Library::UpgradeComponent(L"p-1", L"7", L"{}", component, error); });
    expectNotNormal("POST", "/structural/v2/project/p-1/suite/upload", L"UploadComponent", noObject,
                    [&] { return Library::UploadComponent(L"p-1", L"{}", component, error); });
    EXPECT_TRUE(deleted);
    expectBefore();
}

TEST_F(ComponentLibraryWireTest, categoriesAndSearchesFailAsEveryRetriedOperationDoes)
{
    const std::vector<RequestingOperation> operations{
        {"GET", "/structural/project/p-1/suite/major/categories?major=1", "", L"OrloWebService::GetCategoryCodes - code:",
         [&](ErrorCode& ec) { return Library::GetCategoryCodes(L"p-1", SpecialtyType::ZOK, codes, ec); }},
        {"POST", treeTarget, R"({"categoryCodes":[],"keyword":"","softwareVersion":""})", L"OrloWebService::GetCategoryTree - code:",
         [&](ErrorCode& ec) { return Library::GetCategoryTree(L"p-1", {}, L"", L"", categories, ec); }},
        {"POST", renewableTreeTarget, R"({"keyword":"","major":1,"projectComponentRequestBeans":[]})",
         L"OrloWebService::GetCategoryTreeCanBeUpdated - code:",
         [&](ErrorCode& ec) { return Library::GetCategoryTreeCanBeUpdated(L"p-1", SpecialtyType::ZOK, {}, L"", categories, ec); }},
        {"POST", "/structural/project/p-1/suites/check4update?major=1", "[]", L"OrloWebService::SearchComponentsCanBeUpdated - code:",
         [&](ErrorCode& ec) { return Library::SearchComponentsCanBeUpdated(L"p-1", {}, L"", L"", SpecialtyType::ZOK, components, ec); }},
    };
    const std::vector<std::wstring> names{
        L"orlo::IProjectComponentLibrary::GetCategoryCodes", L"orlo::IProjectComponentLibrary::GetCategoryTree",
        L"orlo::IProjectComponentLibrary::GetCategoryTreeCanBeUpdated", L"orlo::IProjectComponentLibrary::SearchComponentsCanBeUpdated"};
    for (std::size_t i = 0; i < operations.size(); ++i) {
        RequestingOperation operation = operations[i];
        operation.operationName = names.at(i);
        operation.goodAnswer = R"({"data":[]})";
        expectFailuresOf(operation, server, log);
        expectSuccessAtLast(operation, server, log);
    }
    RequestingOperation searching{"POST", searchTarget, R"({"categoryCodes":[],"keyword":"","page":1,"pageSize":20,"projectId":"p-1"})",
                                  L"OrloWebService::SearchComponents - code:", [&](ErrorCode& ec) {
                                      return Library::SearchComponents(L"p-1", {{}, L"", 1, 20}, components, totalCount, ec);
                                  }};
    searching.operationName = L"orlo::IProjectComponentLibrary::SearchComponents";
    searching.goodAnswer = R"({"data":{}})";
    RequestingOperation changes{
        "GET", "/structural/project/p-1/components/changed?major=1&time=5", "", L"OrloWebService::GetComponentsChanged - code:",
        [&](ErrorCode& ec) { return Library::GetComponentsChanged(L"p-1", SpecialtyType::ZOK, 5, components, ec); }};
    changes.operationName = L"orlo::IProjectComponentLibrary::GetComponentsChanged";
    changes.goodAnswer = R"({"data":{"updateComponents":[]}})";
    for (const RequestingOperation* operation : {&searching, &changes}) {
        expectFailuresOf(*operation, server, log);
        expectSuccessAtLast(*operation, server, log);
    }
    EXPECT_EQ(codes, Texts{L"before"});
    EXPECT_EQ(categories.size(), 1u);
    EXPECT_EQ(components.size(), 1u);
    EXPECT_EQ(totalCount, 7);
}

TEST_F(ComponentLibraryWireTest, changesFailAsEveryRetriedOperationDoes)
{
    RequestingOperation deletion{"GET", "/structural/project/p-1/suite/7", "", L"OrloWebService::DeleteComponent - code:",
                                 [&](ErrorCode& ec) { return Library::DeleteComponent(L"p-1", L"7", deleted, ec); }};
    deletion.operationName = L"orlo::IProjectComponentLibrary::DeleteComponent";
    deletion.goodAnswer = R"({"data":true})";
    RequestingOperation upgrade{"PUT", "/structural/project/p-1/suite/7/upgrade", "{}", L"OrloWebService::UpgradeComponent - code:",
                                [&](ErrorCode& ec) { return Library::UpgradeComponent(L"p-1", L"7", L"{}", component, ec); }};
    upgrade.operationName = L"orlo::IProjectComponentLibrary::UpgradeComponent";
    upgrade.goodAnswer = R"({"data":{"id":"7"}})";
    RequestingOperation upload{"POST", "/structural/v2/project/p-1/suite/upload", "{}", L"OrloWebService::UploadComponent - code:",
                               [&](ErrorCode& ec) { return Library::UploadComponent(L"p-1", L"{}", component, ec); }};
    upload.operationName = L"orlo::IProjectComponentLibrary::UploadComponent";
    upload.goodAnswer = R"({"data":{"id":"7"}})";
    for (const RequestingOperation* operation : {&deletion, &upgrade, &upload})
        expectFailuresOf(*operation, server, log);
    EXPECT_TRUE(deleted);
    expectBefore();
    for (const RequestingOperation* operation : {&deletion, &upgrade, &upload})
        expectSuccessAtLast(*operation, server, log);
}

} // namespace
} // namespace orlo::test
