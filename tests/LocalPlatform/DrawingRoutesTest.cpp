#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class DrawingRoutes : public PlatformTest
{
protected:
    DrawingRoutes()
    {
        project("p1");
        platform.change(addFile, "a", "x");
        for (const std::string id : {"d1", "d2", "d3"}) {
            platform.change(addDataset, {"图纸 " + id, rootFolder("p1"), {}, "zok", {}, "u1", "", id, "m-" + id});
            demo().put("/dataset/" + id + "/version?sourceFile=a", "{}");
        }
        demo().put("/dataset/d2/version?sourceFile=a", "{}");
    }

    Reply bind(const std::string& dataset, int version, const std::string& drawing, int drawingVersion) const
    {
        return demo().post("/dataset/dwg/binding", R"({"datasetId":")" + dataset + R"(","datasetVersion":)" + std::to_string(version) +
                                                       R"(,"dwgId":")" + drawing + R"(","dwgVersion":)" + std::to_string(drawingVersion) +
                                                       "}");
    }
    static std::string enveloped(const std::string& data) { return R"({"code":10000,"message":"OK","data":)" + data + "}"; }
};

TEST_F(DrawingRoutes, TheFirstDatasetIsTheMainOneTheOthersAreLinked)
{
    EXPECT_THAT(bind("d2", 2, "图/1", 3).body, IsJson(enveloped("null")));
    EXPECT_EQ(bind("d1", 1, "图/1", 3).status, 200);
    EXPECT_EQ(bind("d3", 1, "图/1", 3).status, 200);
    EXPECT_THAT(demo().get("/dwg/%E5%9B%BE%2F1/version/3/bind-info").body, IsJson(enveloped(R"({"linkedDatasets":[
                    {"datasetId":"d1","datasetName":"图纸 d1","datasetVersion":1,"displayVersion":"V1"},
                    {"datasetId":"d3","datasetName":"图纸 d3","datasetVersion":1,"displayVersion":"V1"}],
                    "mainDataset":{"datasetId":"d2","datasetName":"图纸 d2","datasetVersion":2,"displayVersion":"V2"}})")));
}

TEST_F(DrawingRoutes, EachVersionOfADrawingHasItsOwnBindings)
{
    bind("d1", 1, "dwg", 1);
    bind("d2", 1, "dwg", 2);
    EXPECT_THAT(demo().get("/dwg/dwg/version/1/bind-info").body, IsJson(enveloped(R"({"linkedDatasets":[],
                    "mainDataset":{"datasetId":"d1","datasetName":"图纸 d1","datasetVersion":1,"displayVersion":"V1"}})")));
    EXPECT_THAT(demo().get("/dwg/dwg/version/3/bind-info").body, IsJson(enveloped(R"({"linkedDatasets":[]})")));
    EXPECT_EQ(demo().get("/dwg/dwg/version/new/bind-info").status, 400);
}

TEST_F(DrawingRoutes, ABindingMadeTwiceIsOne)
{
    EXPECT_EQ(bind("d1", 1, "dwg", 1).status, 200);
    EXPECT_EQ(bind("d1", 1, "dwg", 1).status, 200);
    EXPECT_THAT(demo().get("/dwg/dwg/version/1/bind-info").body, IsJson(enveloped(R"({"linkedDatasets":[],
                    "mainDataset":{"datasetId":"d1","datasetName":"图纸 d1","datasetVersion":1,"displayVersion":"V1"}})")));
}

TEST_F(DrawingRoutes, OnlyVersionsThatAreThereAreBound)
{
    EXPECT_EQ(bind("none", 1, "dwg", 1).status, 404);
    EXPECT_EQ(bind("d1", 2, "dwg", 1).status, 404);
    EXPECT_EQ(bind("d1", 1, "", 1).status, 400);
    EXPECT_EQ(demo().post("/dataset/dwg/binding", R"({"datasetId":"d1","datasetVersion":"1","dwgId":"d","dwgVersion":1})").status, 400);
    EXPECT_EQ(nobody().get("/dwg/dwg/version/1/bind-info").status, 401);
}

} // namespace
} // namespace orlo::platform::test
