#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class TranslationRoutes : public PlatformTest
{
protected:
    TranslationRoutes()
    {
        project("p1");
        platform.change(addFile, "a", "x");
        platform.change(addDataset, {"a", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
        demo().put("/dataset/d1/version?sourceFile=a", "{}");
        demo().put("/dataset/d1/version?sourceFile=a", "{}");
    }
};

TEST_F(TranslationRoutes, WishesAreNotedInTheirOrder)
{
    EXPECT_TRUE(platform.ask(translations).empty());
    EXPECT_THAT(demo().post("/v1/upload", R"({"dataSetId":"d1","versionId":2,"toType":"轻量"})").body,
                IsJson(R"({"code":10000,"message":"OK","data":null})"));
    EXPECT_EQ(demo().post("/v1/upload", R"({"dataSetId":"d1","versionId":1,"toType":"glb"})").status, 200);
    const std::vector<Translation> all = platform.ask(translations);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].dataSetId, "d1");
    EXPECT_EQ(all[0].versionId, 2);
    EXPECT_EQ(all[0].toType, "轻量");
    EXPECT_EQ(all[1].versionId, 1);
    EXPECT_EQ(all[1].toType, "glb");
}

TEST_F(TranslationRoutes, AWishNeedsItsVersion)
{
    EXPECT_EQ(demo().post("/v1/upload", R"({"dataSetId":"none","versionId":1,"toType":"glb"})").status, 404);
    EXPECT_EQ(demo().post("/v1/upload", R"({"dataSetId":"d1","versionId":3,"toType":"glb"})").status, 404);
    EXPECT_EQ(demo().post("/v1/upload", R"({"dataSetId":"","versionId":0,"toType":"glb"})").status, 400);
    EXPECT_EQ(demo().post("/v1/upload", R"({"dataSetId":"d1","versionId":"1","toType":"glb"})").status, 400);
    EXPECT_EQ(demo().post("/v1/upload", R"({"dataSetId":"d1","versionId":1,"toType":""})").status, 400);
    EXPECT_EQ(nobody().post("/v1/upload", R"({"dataSetId":"d1","versionId":1,"toType":"glb"})").status, 401);
    EXPECT_TRUE(platform.ask(translations).empty());
}

} // namespace
} // namespace orlo::platform::test
