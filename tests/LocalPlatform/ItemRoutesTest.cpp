#include "PlatformFixture.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

#include <atomic>

namespace orlo::platform::test {
namespace {

using orlo::test::inThreads;

class ItemRoutes : public PlatformTest
{
protected:
    ItemRoutes()
    {
        project("p1");
        project("p2");
        platform.change(addDataset, {"塔楼", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
        platform.change(addDataset, {"裙楼", rootFolder("p1"), {}, "zok", {}, "u1", "", "d2", "m2"});
        platform.change(addDataset, {"别处", rootFolder("p2"), {}, "zok", {}, "u1", "", "d3", "m3"});
    }

    static std::string done(const std::string& data) { return R"({"code":10000,"message":"OK","data":)" + data + "}"; }
    static std::string record(const std::string& id, int version, const std::string& value, int revision = 0)
    {
        return R"({"id":")" + id + R"(","version":)" + std::to_string(version) +
               (revision ? R"(,"revision":)" + std::to_string(revision) : "") + R"(,"configValue":")" + value +
               R"(","birthTime":"<time>","creationTime":"<time>"})";
    }
    static std::string config(int version, const std::string& value)
    {
        return R"({"scopeEntityId":"1","version":)" + std::to_string(version) + R"(,"configValue":")" + value +
               R"(","birthTime":"<time>","creationTime":"<time>"})";
    }
    Reply add(int revision, const std::string& document = "{}") const
    {
        return demo().post("/v2/p1/sub_item/" + std::to_string(revision), document);
    }
    std::string latest() const { return demo().get("/v2/p1/config/binder/p1/type/SubItem/latest").body; }
    std::string at(int revision) const { return demo().get("/v2/p1/sub_item/revision/" + std::to_string(revision)).body; }
};

TEST_F(ItemRoutes, EveryChangeBeginsARevisionAndTheOlderOnesAreKept)
{
    EXPECT_THAT(latest(), IsJson(done("[]")));
    EXPECT_THAT(add(0, R"({ "楼":1})").body, IsJson(done(R"({"id":"1","version":1,"revision":1})")));
    EXPECT_THAT(add(1, R"({"b":1})").body, IsJson(done(R"({"id":"2","version":1,"revision":2})")));
    EXPECT_THAT(demo().put("/v2/p1/sub_item/1/2", R"({"楼":2})").body, IsJson(done(R"({"id":"1","version":2,"revision":3})")));
    EXPECT_THAT(demo().del("/v2/p1/sub_item/2/3").body, IsJson(done(R"({"revision":4})")));
    EXPECT_THAT(latest(), IsJson(done("[" + record("1", 2, R"({\"楼\":2})", 4) + "]")));

    EXPECT_THAT(demo().get("/v2/p1/sub_item/revision/0").body, IsJson(done("[]")));
    EXPECT_THAT(at(1), IsJson(done("[" + record("1", 1, R"({ \"楼\":1})", 1) + "]")));
    EXPECT_THAT(at(2), IsJson(done("[" + record("1", 1, R"({ \"楼\":1})", 2) + "," + record("2", 1, R"({\"b\":1})", 2) + "]")));
    EXPECT_THAT(at(3), IsJson(done("[" + record("1", 2, R"({\"楼\":2})", 3) + "," + record("2", 1, R"({\"b\":1})", 3) + "]")));
    EXPECT_THAT(at(4), IsJson(latest()));
    EXPECT_EQ(demo().get("/v2/p1/sub_item/revision/5").status, 404);
    EXPECT_EQ(demo().get("/v2/p1/sub_item/revision/-1").status, 404);
    EXPECT_EQ(demo().get("/v2/p1/sub_item/revision/now").status, 400);
}

TEST_F(ItemRoutes, AStaleRevisionIsRefusedWithTheCurrentOne)
{
    add(0);
    add(1);
    for (const int stale : {0, 1, 3, -1, 2147483647}) {
        const std::string words = R"({"code":40900,"message":"the revision is 2 now, not )" + std::to_string(stale) + R"(","data":null})";
        EXPECT_THAT(add(stale).body, IsJson(words));
        EXPECT_THAT(demo().put("/v2/p1/sub_item/1/" + std::to_string(stale), "{}").body, IsJson(words));
        EXPECT_THAT(demo().del("/v2/p1/sub_item/1/" + std::to_string(stale)).body, IsJson(words));
    }
    EXPECT_EQ(add(0).status, 409);
    EXPECT_THAT(latest(), IsJson(done("[" + record("1", 1, "{}", 2) + "," + record("2", 1, "{}", 2) + "]")));
    EXPECT_EQ(demo().post("/v2/p2/sub_item/0", "{}").status, 200) << "another project has a revision of its own";
}

TEST_F(ItemRoutes, WhereAllItemsAreGoneAWriterFindsTheRevisionZero)
{
    add(0);
    demo().del("/v2/p1/sub_item/1/1");
    EXPECT_THAT(latest(), IsJson(done("[]")));
    EXPECT_EQ(add(1).status, 409);
    EXPECT_THAT(add(0).body, IsJson(done(R"({"id":"2","version":1,"revision":3})")));
    EXPECT_EQ(add(0).status, 409) << "there is an item again";
    demo().del("/v2/p1/sub_item/2/3");
    EXPECT_THAT(add(4).body, IsJson(done(R"({"id":"3","version":1,"revision":5})"))) << "whoever counts along is right, too";
}

TEST_F(ItemRoutes, OfWritersWithOneRevisionExactlyOneWins)
{
    add(0);
    std::atomic<int> won{0};
    std::atomic<int> lost{0};
    inThreads(8, [&] {
        const int status = demo().put("/v2/p1/sub_item/1/1", "{}").status;
        won += status == 200;
        lost += status == 409;
    });
    EXPECT_EQ(won, 1);
    EXPECT_EQ(lost, 7);
}

TEST_F(ItemRoutes, VersionsOfAnItemAreNumberedFromOne)
{
    add(0, R"({"v":1})");
    demo().put("/v2/p1/sub_item/1/1", R"({"v":2})");
    EXPECT_THAT(demo().get("/v2/p1/sub_item/1/version/1").body, IsJson(done(record("1", 1, R"({\"v\":1})"))));
    EXPECT_THAT(demo().get("/v2/p1/sub_item/1/version/2").body, IsJson(done(record("1", 2, R"({\"v\":2})"))));
    EXPECT_THAT(demo().get("/v2/p1/sub_item/1/version/-1").body, IsJson(done(record("1", 2, R"({\"v\":2})"))));
    EXPECT_THAT(demo().get("/v2/p1/sub_item/1/latest").body, IsJson(done(record("1", 2, R"({\"v\":2})"))));
    EXPECT_EQ(demo().get("/v2/p1/sub_item/1/version/3").status, 404);
    EXPECT_EQ(demo().get("/v2/p1/sub_item/1/version/x").status, 400);
    for (const char* id : {"2", "01", "1.0", "x", "%201"})
        EXPECT_EQ(demo().get(std::string("/v2/p1/sub_item/") + id + "/latest").status, 404) << id;
    EXPECT_EQ(demo().get("/v2/p2/sub_item/1/latest").status, 404) << "it is another project's";
    EXPECT_EQ(demo().get("/v2/p2/sub_item/1/version/1").status, 404);
}

TEST_F(ItemRoutes, ADeletedItemHasItsVersionsAndNothingElse)
{
    add(0, R"({"v":1})");
    demo().post("/v2/p1/sub_item/1/config/type/Coordinate", "{}");
    demo().post("/design/config/data/bind", R"({"configType":"SubItem","cfgId":"1","dataId":"d1","projectId":"p1"})");
    demo().del("/v2/p1/sub_item/1/1");
    EXPECT_EQ(demo().get("/v2/p1/sub_item/1/latest").status, 404);
    EXPECT_EQ(demo().put("/v2/p1/sub_item/1/2", "{}").status, 404);
    EXPECT_EQ(demo().del("/v2/p1/sub_item/1/2").status, 404);
    EXPECT_EQ(demo().get("/v2/p1/config/binder/1/type/Coordinate/latest").status, 404);
    EXPECT_EQ(demo().put("/v2/p1/config/subItem/1/type/Coordinate/version/1", "{}").status, 404);
    EXPECT_THAT(demo().get("/design/config/data/by/design?dataId=d1&projectId=p1&type=SubItem").body, IsJson(done("[]")));
    EXPECT_THAT(demo().get("/v2/p1/sub_item/1/version/1").body, IsJson(done(record("1", 1, R"({\"v\":1})"))));
    EXPECT_EQ(demo().get("/v2/p1/config/1/Coordinate/version/1").status, 200);
    EXPECT_EQ(demo().put("/v2/p1/sub_item/1/1", "{}").status, 409) << "the revision comes first";
}

TEST_F(ItemRoutes, AnItemHasConfigurationsOfThreeTypesEachWithVersions)
{
    add(0);
    for (const std::string type : {"SpaceConfig", "GridConfig", "Coordinate"}) {
        EXPECT_THAT(demo().get("/v2/p1/config/binder/1/type/" + type + "/latest").body, IsJson(done("[]")));
        EXPECT_THAT(demo().post("/v2/p1/sub_item/1/config/type/" + type, R"({"v":1})").body,
                    IsJson(done(R"({"scopeEntityId":"1","version":1})")));
        EXPECT_THAT(demo().put("/v2/p1/config/subItem/1/type/" + type + "/version/1", R"({"v":2})").body,
                    IsJson(done(R"({"scopeEntityId":"1","version":2})")));
        EXPECT_THAT(demo().get("/v2/p1/config/1/" + type + "/version/1").body, IsJson(done(config(1, R"({\"v\":1})"))));
        EXPECT_THAT(demo().get("/v2/p1/config/1/" + type + "/version/-1").body, IsJson(done(config(2, R"({\"v\":2})"))));
        EXPECT_EQ(demo().get("/v2/p1/config/1/" + type + "/version/3").status, 404);
        EXPECT_THAT(demo().get("/v2/p1/config/binder/1/type/" + type + "/latest").body,
                    IsJson(done("[" + config(2, R"({\"v\":2})") + "]")));
    }
    EXPECT_THAT(latest(), IsJson(done("[" + record("1", 1, "{}", 1) + "]"))) << "they are no revision of the items";
}

TEST_F(ItemRoutes, AConfigurationIsCreatedOnceAndUpdatedFromItsNewestVersion)
{
    add(0);
    const char* const made = "/v2/p1/sub_item/1/config/type/GridConfig";
    const std::string changed = "/v2/p1/config/subItem/1/type/GridConfig/version/";
    EXPECT_EQ(demo().put(changed + "1", "{}").status, 409) << "there is none yet";
    EXPECT_EQ(demo().put(changed + "0", "{}").status, 400);
    EXPECT_EQ(demo().post(made, "{}").status, 200);
    EXPECT_THAT(demo().post(made, "{}").body,
                IsJson(R"({"code":40900,"message":"the configuration has version 1 now, not 0","data":null})"));
    EXPECT_EQ(demo().put(changed + "1", "{}").status, 200);
    EXPECT_THAT(demo().put(changed + "1", "{}").body,
                IsJson(R"({"code":40900,"message":"the configuration has version 2 now, not 1","data":null})"));
    for (const char* type : {"SubItem", "Other", "spaceConfig"}) {
        EXPECT_EQ(demo().post(std::string("/v2/p1/sub_item/1/config/type/") + type, "{}").status, 400) << type;
        EXPECT_EQ(demo().get(std::string("/v2/p1/config/binder/1/type/") + type + "/latest").status, 400) << type;
        EXPECT_EQ(demo().get(std::string("/v2/p1/config/1/") + type + "/version/1").status, 400) << type;
    }
    EXPECT_EQ(demo().post("/v2/p1/sub_item/9/config/type/GridConfig", "{}").status, 404);
    EXPECT_EQ(demo().get("/v2/p1/config/binder/9/type/GridConfig/latest").status, 404);
}

TEST_F(ItemRoutes, DatasetsAreBoundToItemsOfTheirProject)
{
    add(0);
    add(1);
    const auto bind = [&](const std::string& item, const std::string& dataset, const std::string& owner = "p1") {
        return demo()
            .post("/design/config/data/bind",
                  R"({"configType":"SubItem","cfgId":")" + item + R"(","dataId":")" + dataset + R"(","projectId":")" + owner + "\"}")
            .status;
    };
    EXPECT_EQ(bind("2", "d1"), 200);
    EXPECT_EQ(bind("1", "d1"), 200);
    EXPECT_EQ(bind("1", "d2"), 200);
    EXPECT_EQ(bind("1", "d2"), 200) << "twice is once";
    const auto row = [](const std::string& item, const std::string& dataset) {
        return R"({"cfgId":)" + item + R"(,"dataId":")" + dataset + R"(","configType":"SubItem","projectId":"p1"})";
    };
    EXPECT_THAT(demo().get("/design/config/data/by/design?dataId=d1&projectId=p1&type=SubItem").body,
                IsJson(done("[" + row("2", "d1") + "," + row("1", "d1") + "]")));
    EXPECT_THAT(demo().get("/design/config/data/by/cfg?cfgId=1&projectId=p1&type=SubItem").body,
                IsJson(done("[" + row("1", "d1") + "," + row("1", "d2") + "]")));
    EXPECT_THAT(demo().get("/design/config/data/by/cfg?cfgId=1&projectId=p2&type=SubItem").body, IsJson(done("[]")));
    EXPECT_EQ(bind("9", "d1"), 404);
    EXPECT_EQ(bind("1", "none"), 404);
    EXPECT_EQ(bind("1", "d3"), 404) << "the dataset is another project's";
    EXPECT_EQ(bind("1", "d3", "p2"), 404) << "the item is another project's";
    EXPECT_EQ(bind("", "d1"), 400);
    EXPECT_EQ(demo().post("/design/config/data/bind", R"({"configType":"GridConfig","cfgId":"1","dataId":"d1","projectId":"p1"})").status,
              400);
    EXPECT_EQ(demo().post("/design/config/data/bind", R"({"configType":"SubItem","cfgId":1,"dataId":"d1","projectId":"p1"})").status, 400);
    EXPECT_EQ(demo().get("/design/config/data/by/cfg?cfgId=1&projectId=p1&type=GridConfig").status, 400);
    EXPECT_EQ(demo().get("/design/config/data/by/cfg?projectId=p1&type=SubItem").status, 400);
    EXPECT_EQ(demo().get("/design/config/data/by/design?dataId=d1&type=SubItem").status, 400);
}

TEST_F(ItemRoutes, OnlyJsonObjectsAreDocuments)
{
    add(0);
    for (const char* body : {"", "[]", "7", "{\"a\":"}) {
        EXPECT_EQ(add(1, body).status, 400) << body;
        EXPECT_EQ(demo().put("/v2/p1/sub_item/1/1", body).status, 400) << body;
        EXPECT_EQ(demo().post("/v2/p1/sub_item/1/config/type/GridConfig", body).status, 400) << body;
    }
    EXPECT_THAT(latest(), IsJson(done("[" + record("1", 1, "{}", 1) + "]"))) << "a refused change begins no revision";
}

TEST_F(ItemRoutes, WritingNeedsARightToWriteInTheProject)
{
    add(0);
    const Caller second = other();
    const auto statuses = [&] {
        return std::vector<int>{
            second.put("/v2/p1/sub_item/1/1", "{}").status,
            second.post("/v2/p1/sub_item/1/config/type/Coordinate", "{}").status,
            second.put("/v2/p1/config/subItem/1/type/Coordinate/version/1", "{}").status,
            second.post("/design/config/data/bind", R"({"configType":"SubItem","cfgId":"1","dataId":"d1","projectId":"p1"})").status,
            second.post("/v2/p1/sub_item/2", "{}").status,
            second.del("/v2/p1/sub_item/1/3").status,
        };
    };
    EXPECT_EQ(statuses(), std::vector<int>(6, 403));
    EXPECT_EQ(nobody().post("/v2/p1/sub_item/1", "{}").status, 401);
    EXPECT_EQ(second.get("/v2/p1/sub_item/1/latest").status, 200) << "reading is free";
    platform.change(grantPermission, "p1", "second-account", "SubItem", {"Write"});
    EXPECT_EQ(statuses(), std::vector<int>(6, 200));
    EXPECT_EQ(demo().post("/v2/none/sub_item/0", "{}").status, 404);
    EXPECT_EQ(demo().get("/v2/none/config/binder/none/type/SubItem/latest").status, 404);
}

TEST_F(ItemRoutes, ItemsGoWithTheirProject)
{
    add(0);
    demo().post("/v2/p1/sub_item/1/config/type/Coordinate", "{}");
    demo().post("/design/config/data/bind", R"({"configType":"SubItem","cfgId":"1","dataId":"d1","projectId":"p1"})");
    ASSERT_EQ(demo().del("/v2/projects/p1").status, 200);
    project("p1");
    EXPECT_THAT(latest(), IsJson(done("[]")));
    EXPECT_EQ(demo().get("/v2/p1/sub_item/1/version/1").status, 404);
    EXPECT_THAT(add(0).body, IsJson(done(R"({"id":"2","version":1,"revision":1})"))) << "an id is never used again";
}

TEST(ItemRoutesRestart, KeepsItemsConfigurationsBindingsAndTheRevision)
{
    const orlo::test::TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    const std::vector<std::string> targets{"/v2/p1/config/binder/p1/type/SubItem/latest", "/v2/p1/sub_item/revision/1",
                                           "/v2/p1/config/1/GridConfig/version/1",
                                           "/design/config/data/by/design?dataId=d1&projectId=p1&type=SubItem"};
    std::vector<std::string> before;
    {
        LocalPlatform platform(Options{data, 0, true});
        platform.start();
        platform.change(addProject, {"塔楼", "demo-account", "p1"});
        const Caller demo(platform.url(), "demo-token");
        const std::string root = jsonText(demo.get("/projects/p1/rootfolder").body, "data.id");
        platform.change(addDataset, {"a", root, {}, "zok", {}, "u1", "", "d1", "m1"});
        demo.post("/v2/p1/sub_item/0", R"({"a":1})");
        demo.put("/v2/p1/sub_item/1/1", R"({"a":2})");
        demo.post("/v2/p1/sub_item/1/config/type/GridConfig", R"({"g":1})");
        demo.post("/design/config/data/bind", R"({"configType":"SubItem","cfgId":"1","dataId":"d1","projectId":"p1"})");
        for (const std::string& target : targets)
            before.push_back(demo.get(target).body);
    }
    EXPECT_NE(before[0].find(R"("revision":2)"), std::string::npos);
    EXPECT_NE(before[3].find(R"("cfgId":1)"), std::string::npos);
    LocalPlatform platform(Options{data, 0, false});
    platform.start();
    const Caller demo(platform.url(), "demo-token");
    for (std::size_t i = 0; i < targets.size(); ++i)
        EXPECT_EQ(demo.get(targets[i]).body, before[i]);
    EXPECT_EQ(demo.post("/v2/p1/sub_item/1", "{}").status, 409);
    EXPECT_EQ(demo.post("/v2/p1/sub_item/2", "{}").status, 200);
}

} // namespace
} // namespace orlo::platform::test
