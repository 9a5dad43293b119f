#include "PlatformFixture.h"
#include "support/TempFolder.h"

#include <limits>

namespace orlo::platform::test {
namespace {

class ComponentRoutes : public PlatformTest
{
protected:
    ComponentRoutes()
    {
        project("p1");
        project("p2");
        for (const ComponentCategorySeed& category : {ComponentCategorySeed{"A", "建筑", "", 1}, ComponentCategorySeed{"A1", "门", "A", 1},
                                                      ComponentCategorySeed{"A2", "窗", "A", 1}, ComponentCategorySeed{"S", "结构", "", 0}})
            platform.change(addComponentCategory, category);
        door = publish("单扇门 Single Door", "A1");
        window = publish("窗 Window", "A2");
        column = publish("柱 Column", "S");
    }

    std::string publish(const std::string& name, const std::string& category, const std::string& id = {})
    {
        return platform.change(addPublicComponent, {name, category, {{"小", R"({"width":900})"}, {"大 <&\">", R"({"width":1200})"}}, id});
    }

    static std::string done(const std::string& data) { return R"({"code":10000,"message":"OK","data":)" + data + "}"; }
    static std::string path(const std::string& rest, const std::string& projectId = "p1")
    {
        return "/structural/project/" + projectId + rest;
    }
    Reply take(const std::string& map, const std::string& projectId = "p1") const
    {
        return demo().post(path("/suite/local", projectId),
                           R"({"softwareVersion":"2024.1","publicComponentIdToProjectComponentIdMap":)" + map + "}");
    }
    /// The project p1 has the door as 101, the window as 102 and the column as 103.
    void takeAll() const { ASSERT_EQ(take("{\"" + door + R"(":"101",")" + window + R"(":"102",")" + column + R"(":"103"})").status, 200); }
    Reply search(const std::string& codes, const std::string& keyword, int page = 1, int pageSize = 10) const
    {
        return demo().post("/structural/project/suites/search", R"({"categoryCodes":)" + codes + R"(,"keyword":")" + keyword +
                                                                    R"(","page":)" + std::to_string(page) + R"(,"pageSize":)" +
                                                                    std::to_string(pageSize) + R"(,"projectId":"p1"})");
    }
    static std::string record(const std::string& id, const std::string& publicId, int version, const std::string& name,
                              const std::string& category)
    {
        return R"({"id":")" + id + R"(","publicComponentId":")" + publicId + R"(","version":)" + std::to_string(version) + R"(,"name":")" +
               name + R"(","categoryCode":")" + category + R"(","thumbnail":"<text>","status":"NORMAL"})";
    }
    static std::string found(int total, const std::string& list)
    {
        return done(R"({"totalCount":)" + std::to_string(total) + R"(,"list":[)" + list + "]}");
    }
    static std::string category(const std::string& code, const std::string& parent, const std::string& name, int level, int weight,
                                int count)
    {
        return R"({"id":"<number>","parentId":)" + std::string(parent.empty() ? "0" : "\"<number>\"") + R"(,"name":")" + name +
               R"(","weight":)" + std::to_string(weight) + R"(,"count":)" + std::to_string(count) + R"(,"level":)" + std::to_string(level) +
               R"(,"code":")" + code + R"(","parentCode":")" + parent + "\"}";
    }
    /// What a signed address gives to somebody without a token.
    Reply fetch(const std::string& address) const { return nobody().get(address.substr(platform.url().size())); }

    std::string door, window, column;
};

TEST_F(ComponentRoutes, ComponentsOfTheCatalogueAreTakenUnderIdsOfTheClients)
{
    EXPECT_THAT(take("{\"" + door + R"(":"101"})").body, IsJson(R"({"code":"success","message":"OK"})"));
    EXPECT_THAT(search("[]", "").body, IsJson(found(1, record("101", door, 1, "单扇门 Single Door", "A1"))));
    EXPECT_EQ(take("{\"" + door + R"(":"101"})").status, 200) << "once more is the same";
    EXPECT_EQ(take("{\"" + window + R"(":"101"})").status, 409);
    EXPECT_EQ(take("{\"" + window + R"(":"101"})", "p2").status, 200) << "another project has ids of its own";
    EXPECT_EQ(take("{\"" + window + R"(":"102","999":"103"})").status, 404);
    EXPECT_THAT(search("[]", "").body, IsJson(found(1, record("101", door, 1, "单扇门 Single Door", "A1")))) << "all or none";
    EXPECT_EQ(take("{}").status, 200);
    for (const char* id : {"0", "-1", "x", "", "01", "1.5", "4611686018427387904", "99999999999999999999"})
        EXPECT_EQ(take("{\"" + window + "\":\"" + id + "\"}").status, 400) << id;
    EXPECT_EQ(take("{\"" + window + R"(":"4611686018427387903"})").status, 200);
    for (const char* map : {"[]", "7", "\"x\"", "null", R"({"1":7})", R"({"1":{}})"})
        EXPECT_EQ(take(map).status, 400) << map;
    EXPECT_EQ(take("{}", "none").status, 404);
}

TEST_F(ComponentRoutes, ASearchGoesByCategoriesWithWhatIsBelowAndByKeyword)
{
    takeAll();
    const std::string doorRecord = record("101", door, 1, "单扇门 Single Door", "A1");
    const std::string windowRecord = record("102", window, 1, "窗 Window", "A2");
    const std::string columnRecord = record("103", column, 1, "柱 Column", "S");
    EXPECT_THAT(search("[]", "").body, IsJson(found(3, doorRecord + "," + windowRecord + "," + columnRecord)));
    EXPECT_THAT(search(R"(["A"])", "").body, IsJson(found(2, doorRecord + "," + windowRecord)));
    EXPECT_THAT(search(R"(["A2","S","A2"])", "").body, IsJson(found(2, windowRecord + "," + columnRecord)));
    EXPECT_THAT(search(R"(["none"])", "").body, IsJson(found(0, "")));
    EXPECT_THAT(search("[]", "门").body, IsJson(found(1, doorRecord)));
    EXPECT_THAT(search("[]", "WINDOW").body, IsJson(found(1, windowRecord)));
    EXPECT_THAT(search(R"(["A"])", "column").body, IsJson(found(0, "")));
    EXPECT_THAT(search("[]", "%").body, IsJson(found(0, ""))) << "a keyword is no pattern";
}

TEST_F(ComponentRoutes, ASearchTellsOnePageAndTheCountOfAll)
{
    takeAll();
    EXPECT_THAT(search("[]", "", 1, 2).body,
                IsJson(found(3, record("101", door, 1, "单扇门 Single Door", "A1") + "," + record("102", window, 1, "窗 Window", "A2"))));
    EXPECT_THAT(search("[]", "", 2, 2).body, IsJson(found(3, record("103", column, 1, "柱 Column", "S"))));
    EXPECT_THAT(search("[]", "", 3, 2).body, IsJson(found(3, "")));
    for (const auto& [page, pageSize] : {std::pair(0, 10), std::pair(-1, 10), std::pair(1, 0), std::pair(1, -1), std::pair(1, 1001)})
        EXPECT_EQ(search("[]", "", page, pageSize).status, 400) << page << ' ' << pageSize;
    EXPECT_EQ(search("7", "").status, 400);
    EXPECT_EQ(search("[7]", "").status, 400);
}

TEST_F(ComponentRoutes, TheTreeCountsWhatTheProjectHas)
{
    takeAll();
    const auto tree = [&](const std::string& codes, const std::string& keyword) {
        return demo()
            .post(path("/suite/category"), R"({"categoryCodes":)" + codes + R"(,"keyword":")" + keyword + R"(","softwareVersion":"any"})")
            .body;
    };
    EXPECT_THAT(tree("[]", ""), IsJson(done("[" + category("A", "", "建筑", 1, 1, 2) + "," + category("A1", "A", "门", 2, 1, 1) + "," +
                                            category("A2", "A", "窗", 2, 2, 1) + "," + category("S", "", "结构", 1, 2, 1) + "]")));
    EXPECT_THAT(tree(R"(["A"])", "门"), IsJson(done("[" + category("A", "", "建筑", 1, 1, 1) + "," + category("A1", "A", "门", 2, 1, 1) +
                                                    "," + category("A2", "A", "窗", 2, 2, 0) + "]")));
    EXPECT_THAT(tree(R"(["A1"])", ""), IsJson(done("[" + category("A1", "A", "门", 2, 1, 1) + "]")));
    EXPECT_EQ(demo().post(path("/suite/category"), R"({"categoryCodes":[],"keyword":""})").status, 400);
}

TEST_F(ComponentRoutes, CategoriesBelongToSpecialties)
{
    const auto codes = [&](const std::string& major) { return demo().get(path("/suite/major/categories?major=" + major)).body; };
    EXPECT_THAT(codes("1"), IsJson(done(R"(["A","A1","A2"])")));
    EXPECT_THAT(codes("0"), IsJson(done(R"(["S"])")));
    EXPECT_THAT(codes("2"), IsJson(done("[]")));
    EXPECT_THAT(codes("-1"), IsJson(done(R"(["A","A1","A2","S"])"))) << "all";
    EXPECT_THAT(codes("x"), IsJson(refusal(400)));
    EXPECT_EQ(demo().get(path("/suite/major/categories")).status, 400);
}

TEST_F(ComponentRoutes, WhatHasANewerVersionInTheCatalogueIsFound)
{
    takeAll();
    publish("双扇门 Double Door", "A1", door);
    publish("柱 Column 2", "S", column);
    publish("柱 Column 3", "S", column);
    const auto check = [&](const std::string& held, const std::string& query) {
        return demo().post(path("/suites/check4update?" + query), held).body;
    };
    const std::string newDoor = record("101", door, 2, "双扇门 Double Door", "A1");
    const std::string newColumn = record("103", column, 3, "柱 Column 3", "S");
    const std::string all = R"([{"id":101,"version":1},{"id":102,"version":1},{"id":103,"version":1},{"id":999,"version":1}])";
    EXPECT_THAT(check(all, "major=-1"), IsJson(done("[" + newDoor + "," + newColumn + "]")));
    EXPECT_THAT(check(all, "major=0"), IsJson(done("[" + newColumn + "]")));
    EXPECT_THAT(check(all, "category_code=A&major=-1"), IsJson(done("[" + newDoor + "]")));
    EXPECT_THAT(check(all, "keyword=column&major=-1"), IsJson(done("[" + newColumn + "]")));
    EXPECT_THAT(check(R"([{"id":103,"version":2},{"id":101,"version":2}])", "major=-1"), IsJson(done("[" + newColumn + "]")));
    EXPECT_THAT(check(R"([{"id":101,"version":-1}])", "major=-1"), IsJson(done("[" + newDoor + "]"))) << "the version that the project has";
    EXPECT_THAT(check("[]", "major=-1"), IsJson(done("[]")));
    EXPECT_EQ(demo().post(path("/suites/check4update"), "[]").status, 400) << "without major";
    for (const char* held :
         {"{}", "", "[7]", R"(["x"])", R"([{"id":"101","version":1}])", R"([{"id":101}])", R"([{"id":1.5,"version":1}])"})
        EXPECT_EQ(demo().post(path("/suites/check4update?major=-1"), held).status, 400) << held;

    const auto tree = [&](const std::string& major, const std::string& keyword) {
        return demo()
            .post(path("/renewable/suites/categories"),
                  R"({"keyword":")" + keyword + R"(","major":)" + major + R"(,"projectComponentRequestBeans":)" + all + "}")
            .body;
    };
    EXPECT_THAT(tree("-1", ""), IsJson(done("[" + category("A", "", "建筑", 1, 1, 1) + "," + category("A1", "A", "门", 2, 1, 1) + "," +
                                            category("S", "", "结构", 1, 2, 1) + "]")));
    EXPECT_THAT(tree("1", "double"),
                IsJson(done("[" + category("A", "", "建筑", 1, 1, 1) + "," + category("A1", "A", "门", 2, 1, 1) + "]")));
    EXPECT_THAT(tree("2", ""), IsJson(done("[]")));
}

TEST_F(ComponentRoutes, AnUpgradeGoesToTheNewestOrToTheVersionThatIsNamed)
{
    takeAll();
    publish("门 2", "A1", door);
    publish("门 3", "A1", door);
    const auto upgrade = [&](const std::string& body, const std::string& id = "101") {
        return demo().put(path("/suite/" + id + "/upgrade"), body);
    };
    EXPECT_THAT(upgrade(R"({"version":2})").body, IsJson(done(record("101", door, 2, "门 2", "A1"))));
    EXPECT_THAT(upgrade("{}").body, IsJson(done(record("101", door, 3, "门 3", "A1"))));
    EXPECT_THAT(upgrade("{}").body, IsJson(R"({"code":40900,"message":"the component has version 3 already","data":null})"));
    EXPECT_EQ(upgrade(R"({"version":2})").status, 409);
    EXPECT_EQ(upgrade(R"({"version":4})").status, 404);
    EXPECT_EQ(upgrade("[]").status, 400);
    EXPECT_EQ(upgrade("{}", "999").status, 404);
    EXPECT_THAT(demo().get(path("/suite/101/1/info")).body, testing::HasSubstr("单扇门 Single Door")) << "earlier ones are kept";
}

TEST_F(ComponentRoutes, AnUploadIsAComponentOfTheProjectAndIsUpgradedByAnother)
{
    takeAll();
    const auto upload = [&](const std::string& body) { return demo().post("/structural/v2/project/p1/suite/upload", body); };
    EXPECT_THAT(upload(R"({"name":"自建门","categoryCode":"A1","familyTypes":[{"name":"t","parameters":{"w":1}}],"xml":"<a/>"})").body,
                IsJson(done(record("104", "", 1, "自建门", "A1"))));
    EXPECT_THAT(demo().put(path("/suite/104/upgrade"), R"({"name":"自建门 2","categoryCode":"A2"})").body,
                IsJson(done(record("104", "", 2, "自建门 2", "A2"))));
    EXPECT_EQ(demo().get(path("/suite/104/detail/xml?version=1")).body, "<a/>");
    EXPECT_THAT(search("[]", "自建").body, IsJson(found(1, record("104", "", 2, "自建门 2", "A2"))));
    for (const char* body :
         {"", "[]", "{}", R"({"name":"n"})", R"({"name":"","categoryCode":"A1"})", R"({"name":"n","categoryCode":"none"})",
          R"({"name":"n","categoryCode":"A1","familyTypes":{}})", R"({"name":"n","categoryCode":"A1","familyTypes":[7]})",
          R"({"name":"n","categoryCode":"A1","familyTypes":[{"name":7}]})",
          R"({"name":"n","categoryCode":"A1","familyTypes":[{"name":"t","parameters":[]}]})",
          R"({"name":"n","categoryCode":"A1","xml":7})"})
        EXPECT_EQ(upload(body).status, 400) << body;
    EXPECT_EQ(upload(R"({"name":"n","categoryCode":"A1","fileOSSPath":"none"})").status, 404);
}

TEST_F(ComponentRoutes, AComponentIsToldInFull)
{
    takeAll();
    const auto detail = [&] { return demo().get(path("/suite/101/1/info")); };
    const auto expected = [&](const std::string& updateStatus) {
        return done(R"({"id":"101","publicComponentId":")" + door + R"(","version":1,"name":"单扇门 Single Door","categoryCode":"A1",)" +
                    R"("thumbnail":"<text>","status":"NORMAL","source":0,"categoryId":"<number>","familyTypeNames":["小","大 <&\">"],)" +
                    R"("thumbnailSizes":[{"size":"128","thumbnails":["<text>"]},{"size":"512","thumbnails":["<text>"]}],"updateStatus":")" +
                    updateStatus + "\"}");
    };
    EXPECT_THAT(detail().body, IsJson(expected("NEWEST")));
    publish("门 2", "A1", door);
    EXPECT_THAT(detail().body, IsJson(expected("UPDATABLE")));
    EXPECT_EQ(demo().get(path("/suite/101/-1/info")).status, 200) << "the version that the project has";
    EXPECT_EQ(demo().get(path("/suite/101/2/info")).status, 404) << "the project hasn't got it yet";
    EXPECT_EQ(demo().get(path("/suite/101/x/info")).status, 400);
    EXPECT_EQ(demo().get(path("/suite/999/1/info")).status, 404);
    EXPECT_EQ(demo().get(path("/suite/101/1/info", "p2")).status, 404) << "it is another project's";
}

TEST_F(ComponentRoutes, FamilyTypesAndCutlinesAreToldByVersion)
{
    takeAll();
    EXPECT_THAT(demo().get(path("/suite/101/1/family/info?name=%E5%B0%8F")).body,
                IsJson(done(R"({"name":"小","parameters":{"width":900}})")));
    EXPECT_EQ(demo().get(path("/suite/101/1/family/info?name=none")).status, 404);
    EXPECT_EQ(demo().get(path("/suite/101/1/family/info")).status, 400);
    EXPECT_THAT(
        demo().get(path("/suite/101/family_types?version=1")).body,
        IsJson(done(R"({"familyTypes":[{"name":"小","parameters":{"width":900}},{"name":"大 <&\">","parameters":{"width":1200}}]})")));
    EXPECT_EQ(demo().get(path("/suite/101/family_types")).status, 400);
    EXPECT_EQ(demo().get(path("/suite/101/family_types?version=2")).status, 404);
    EXPECT_THAT(demo().get(path("/suite/101/placeholder?version=1")).body,
                IsJson(done(R"([{"id":"<number>","name":"平面 Plan","thumbnail":"<text>","placeholderType":"PLAN"},)"
                            R"({"id":"<number>","name":"立面 Elevation","thumbnail":"<text>","placeholderType":"ELEVATION"}])")));
    EXPECT_EQ(demo().get(path("/suite/101/placeholder?version=2")).status, 404);
}

TEST_F(ComponentRoutes, TheXmlTellsTheParametersOfTheFamilyTypes)
{
    takeAll();
    const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<component name=\"单扇门 Single Door\" category=\"A1\">\n"
                            "  <parameter familyType=\"小\" name=\"width\" value=\"900\"/>\n"
                            "  <parameter familyType=\"大 &lt;&amp;&quot;&gt;\" name=\"width\" value=\"1200\"/>\n</component>\n";
    EXPECT_EQ(demo().get(path("/suite/101/detail/xml?version=1")).body, xml);
    EXPECT_EQ(demo().get(path("/suite/101/detail/xml?version=9")).status, 404);
    const std::string address = jsonText(demo().get(path("/suite/101/1")).body, "data");
    EXPECT_EQ(fetch(address).body, xml) << "it is the file of a component without one";
}

TEST_F(ComponentRoutes, AddressesAreSignedAndExpire)
{
    takeAll();
    const std::string file = jsonText(demo().get(path("/suite/101/1")).body, "data");
    const std::string picture = jsonText(demo().get(path("/suite/101/1/info")).body, "data.thumbnailSizes.1.thumbnails.0");
    EXPECT_EQ(fetch(file).status, 200);
    EXPECT_THAT(fetch(picture).body, testing::HasSubstr("width=\"512\""));
    EXPECT_THAT(fetch(picture).body, testing::HasSubstr("单扇门 Single Door"));
    EXPECT_EQ(demo().get(file.substr(platform.url().size())).status, 400) << "a token has no business there";
    for (const std::string& address : {file, picture}) {
        EXPECT_EQ(fetch(address + "0").status, 403) << "altered";
        EXPECT_EQ(fetch(address.substr(0, address.find('?'))).status, 403) << "not signed";
    }
    platform.clock().move(901);
    EXPECT_EQ(fetch(file).status, 403);
    EXPECT_EQ(fetch(picture).status, 403);
}

TEST_F(ComponentRoutes, AnUploadedFileIsTheFileOfItsComponent)
{
    platform.change(addFile, "families/door.rfa", "bytes of the family");
    const std::string made =
        demo()
            .post("/structural/v2/project/p1/suite/upload", R"({"name":"门","categoryCode":"A1","fileOSSPath":"families/door.rfa"})")
            .body;
    EXPECT_EQ(jsonText(made, "data.id"), "1");
    EXPECT_EQ(fetch(jsonText(demo().get(path("/suite/1/1")).body, "data")).body, "bytes of the family");
    EXPECT_EQ(demo().get(path("/suite/1/2")).status, 404);
}

TEST_F(ComponentRoutes, WhatIsDeletedIsGoneAndItsIdIsNotGivenAgain)
{
    takeAll();
    const auto exists = [&](const std::string& id) { return demo().get(path("/subject/suite/" + id + "/exist")).body; };
    EXPECT_THAT(exists("101"), IsJson(done(R"({"exist":true})")));
    EXPECT_THAT(demo().get(path("/suite/103")).body, IsJson(done("true")));
    EXPECT_THAT(demo().get(path("/suite/103")).body, IsJson(done("false"))) << "there is nothing left to delete";
    EXPECT_THAT(demo().get(path("/suite/999")).body, IsJson(done("false")));
    EXPECT_THAT(exists("103"), IsJson(done(R"({"exist":false})")));
    EXPECT_THAT(exists("999"), IsJson(done(R"({"exist":false})")));
    EXPECT_EQ(demo().get(path("/suite/103/1/info")).status, 404);
    EXPECT_THAT(search(R"(["S"])", "").body, IsJson(found(0, "")));
    const std::string made = demo().post("/structural/v2/project/p1/suite/upload", R"({"name":"门","categoryCode":"A1"})").body;
    EXPECT_EQ(jsonText(made, "data.id"), "104");

    publish("柱 Column 2", "S", column);
    EXPECT_EQ(take("{\"" + column + R"(":"103"})").status, 200) << "taken again";
    EXPECT_THAT(search(R"(["S"])", "").body, IsJson(found(1, record("103", column, 2, "柱 Column 2", "S"))));
}

TEST_F(ComponentRoutes, ChangesAreToldSinceATime)
{
    const auto since = [&](std::int64_t time, const std::string& major = "-1") {
        return demo().get(path("/components/changed?major=" + major + "&time=" + std::to_string(time))).body;
    };
    const auto row = [](const std::string& id, int version, const std::string& name, const std::string& status) {
        return R"({"id":)" + id + R"(,"version":)" + std::to_string(version) + R"(,"name":")" + name + R"(","updateStatus":")" + status +
               "\"}";
    };
    const auto told = [](const std::string& rows) { return done(R"({"time":"<number>","updateComponents":[)" + rows + "]}"); };
    takeAll();
    EXPECT_THAT(since(0), IsJson(told(row("101", 1, "单扇门 Single Door", "ADD") + "," + row("102", 1, "窗 Window", "ADD") + "," +
                                      row("103", 1, "柱 Column", "ADD"))));
    EXPECT_THAT(since(0, "0"), IsJson(told(row("103", 1, "柱 Column", "ADD"))));
    platform.clock().move(10);
    const std::int64_t then = platform.clock().seconds() * 1000 - 5000;
    EXPECT_THAT(since(then), IsJson(told("")));
    publish("门 2", "A1", door);
    demo().put(path("/suite/101/upgrade"), "{}");
    platform.clock().move(1);
    demo().get(path("/suite/102"));
    demo().post("/structural/v2/project/p1/suite/upload", R"({"name":"自建","categoryCode":"A1"})");
    demo().post("/structural/v2/project/p1/suite/upload", R"({"name":"短命","categoryCode":"A1"})");
    demo().get(path("/suite/105"));
    platform.clock().move(1);
    EXPECT_THAT(since(then), IsJson(told(row("101", 2, "门 2", "UPDATE") + "," + row("102", 1, "窗 Window", "DELETE") + "," +
                                         row("104", 1, "自建", "ADD"))))
        << "what came and went within the time isn't told";
    EXPECT_THAT(since(platform.clock().seconds() * 1000), IsJson(told("")));
    EXPECT_THAT(since(std::numeric_limits<std::int64_t>::max()), IsJson(told("")));
    for (const char* query : {"major=-1", "time=0", "major=x&time=0", "major=-1&time=x", "major=-1&time=9223372036854775808"})
        EXPECT_EQ(demo().get(path(std::string("/components/changed?") + query)).status, 400) << query;
}

TEST_F(ComponentRoutes, WhoMayNotWriteMayReadOnly)
{
    takeAll();
    const Caller reader = other();
    EXPECT_EQ(reader.get(path("/suite/101/1/info")).status, 200);
    EXPECT_EQ(reader.get(path("/suite/101")).status, 403) << "that deletes";
    EXPECT_EQ(reader.put(path("/suite/101/upgrade"), "{}").status, 403);
    EXPECT_EQ(reader.post("/structural/v2/project/p1/suite/upload", R"({"name":"n","categoryCode":"A1"})").status, 403);
    EXPECT_EQ(reader.post(path("/suite/local"), R"({"softwareVersion":"","publicComponentIdToProjectComponentIdMap":{}})").status, 403);
    platform.change(grantPermission, "p1", "second-account", "Component", {"Write"});
    EXPECT_THAT(reader.get(path("/suite/101")).body, IsJson(done("true")));
    EXPECT_EQ(nobody().get(path("/suite/102/1/info")).status, 401);
}

TEST_F(ComponentRoutes, AProjectThatIsNotThereHasNoComponents)
{
    for (const char* target : {"/suite/major/categories?major=1", "/suite/1/1/info", "/suite/1/1", "/suite/1", "/subject/suite/1/exist",
                               "/suite/1/family_types?version=1", "/components/changed?major=1&time=0"})
        EXPECT_EQ(demo().get(path(target, "none")).status, 404) << target;
    EXPECT_EQ(demo().post(path("/suites/check4update?major=1", "none"), "[]").status, 404);
    EXPECT_EQ(demo().put(path("/suite/1/upgrade", "none"), "{}").status, 404);
}

TEST_F(ComponentRoutes, ComponentsGoWithTheirProjectAndTheCatalogueStays)
{
    takeAll();
    demo().post("/structural/v2/project/p1/suite/upload", R"({"name":"自建","categoryCode":"A1"})");
    ASSERT_EQ(demo().del("/v2/projects/p1").status, 200);
    project("p1");
    EXPECT_THAT(search("[]", "").body, IsJson(found(0, "")));
    takeAll();
}

TEST_F(ComponentRoutes, TheCatalogueIsExtendedByControlCalls)
{
    EXPECT_EQ(nobody().post("/_control/componentCategories", R"({"code":"M","name":"机电","major":2})").status, 200);
    EXPECT_EQ(nobody().post("/_control/componentCategories", R"({"code":"M","name":"机电"})").status, 409);
    EXPECT_EQ(nobody().post("/_control/componentCategories", R"({"code":"M1","name":"管","parentCode":"none"})").status, 400);
    EXPECT_EQ(nobody().post("/_control/componentCategories", R"({"code":"M1"})").status, 400);
    const std::string made = nobody()
                                 .post("/_control/publicComponents",
                                       R"({"name":"管 Pipe","categoryCode":"M","familyTypes":[{"name":"DN50","parameters":{"d":50}}]})")
                                 .body;
    const std::string id = jsonText(made, "data.id");
    EXPECT_EQ(nobody().post("/_control/publicComponents", R"({"name":"管 Pipe 2","categoryCode":"M","id":")" + id + "\"}").status, 200);
    EXPECT_EQ(nobody().post("/_control/publicComponents", R"({"name":"n","categoryCode":"M","id":"999"})").status, 404);
    EXPECT_EQ(nobody().post("/_control/publicComponents", R"({"name":"n","categoryCode":"none"})").status, 400);
    EXPECT_THAT(nobody().get("/_control/publicComponents").body,
                testing::HasSubstr(R"({"id":")" + id + R"(","version":2,"name":"管 Pipe 2","categoryCode":"M"})"));
}

TEST(ComponentCatalogue, HasADozenComponentsAndIsMadeOnce)
{
    const orlo::test::TempFolder folder;
    const auto count = [&] {
        LocalPlatform platform({folder.path("平台").u8string(), 0, true});
        platform.change(addStandardComponents);
        platform.start();
        const std::string all = Caller(platform.url(), {}).get("/_control/publicComponents").body;
        EXPECT_EQ(Caller(platform.url(), {}).post("/_control/standardComponents", "").status, 200);
        EXPECT_EQ(Caller(platform.url(), {}).get("/_control/publicComponents").body, all);
        EXPECT_THAT(all, testing::HasSubstr("矩形柱 Rectangular column"));
        std::size_t components = 0;
        for (std::size_t at = all.find("\"version\":1"); at != std::string::npos; at = all.find("\"version\":1", at + 1))
            ++components;
        return components;
    };
    EXPECT_EQ(count(), 12u);
    EXPECT_EQ(count(), 12u) << "after a restart";
}

} // namespace
} // namespace orlo::platform::test
