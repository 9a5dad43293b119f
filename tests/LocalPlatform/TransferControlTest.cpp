#include "TransferFixture.h"

namespace orlo::platform::test {
namespace {

class TransferControl : public TransferTest
{};

const std::string acknowledged = R"({"code":10000,"message":"OK","data":null})";

TEST_F(TransferControl, StoresListsAndShowsFiles)
{
    const std::string bytes = noise(2'000'000);
    EXPECT_THAT(send("/_control/files?path=demo%2F%E5%A1%94.bin", bytes).body, IsJson(acknowledged));
    EXPECT_TRUE(platform.ask(contentOf, "demo/塔.bin") == bytes);
    EXPECT_THAT(nobody().get("/_control/files").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"remotePath":"demo/塔.bin","fileName":"塔.bin","length":2000000}]})"));
    EXPECT_TRUE(fetch("/_control/files/content?path=demo%2F%E5%A1%94.bin").body == bytes);
    EXPECT_EQ(nobody().get("/_control/files/content?path=none").status, 404);
    EXPECT_EQ(send("/_control/files", "x").status, 400);
    EXPECT_EQ(platform.requests().peakDownloads(), 0u);
}

TEST_F(TransferControl, StoresFilesOfDatasets)
{
    project("p1");
    platform.change(addDataset, {"a", rootFolder("p1"), {}, "zok", {}, "u1", "", "数据", "m1"});
    const Reply reply = send("/_control/datasets/%E6%95%B0%E6%8D%AE/files?path=a%2Fb.bin", "bytes");
    EXPECT_EQ(reply.body.find(R"({"code":10000,"message":"OK","data":{"path":"/blobs/)"), 0u) << reply.body;
    EXPECT_EQ(jsonText(reply.body, "data.path"), platform.change(addDatasetFile, "数据", "a/b.bin", "newer"));
    EXPECT_EQ(send("/_control/datasets/none/files?path=a", "x").status, 404);
    EXPECT_EQ(send("/_control/datasets/a%2Fb/files?path=a", "x").status, 404);
}

TEST_F(TransferControl, ShowsAndChangesHowTransfersBehave)
{
    EXPECT_THAT(nobody().get("/_control/transfers").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"signedLifetime":900,"gzipAnswers":false,"plainPutAnswer":"",
                    "openDownloads":0,"peakDownloads":0}})"));
    fetch(seeded("bytes"));
    const Reply reply = nobody().patch("/_control/transfers", R"({"signedLifetime":5,"gzipAnswers":true,"plainPutAnswer":"{}"})");
    EXPECT_THAT(reply.body, IsJson(R"({"code":10000,"message":"OK","data":{"signedLifetime":5,"gzipAnswers":true,"plainPutAnswer":"{}",
                    "openDownloads":0,"peakDownloads":1}})"));
    const Authority authority = uploadAuthority();
    EXPECT_EQ(send(authority.target, "x").body, "{}");
    platform.clock().move(6);
    EXPECT_EQ(send(authority.target, "x").status, 403);
    EXPECT_EQ(nobody().patch("/_control/transfers", R"({"gzipAnswers":1})").status, 400);
}

TEST_F(TransferControl, ListsTranslations)
{
    project("p1");
    platform.change(addDataset, {"a", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
    platform.change(addFile, "a", "x");
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    demo().post("/v1/upload", R"({"dataSetId":"d1","versionId":1,"toType":"glb"})");
    EXPECT_THAT(nobody().get("/_control/translations").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"dataSetId":"d1","versionId":1,"toType":"glb"}]})"));
}

TEST_F(TransferControl, AddsFaultsOfRequests)
{
    const std::string target = uploadAuthority().target;
    const Reply reply = nobody().post("/_control/faults", R"({"kind":"cutBody","path":"/blobs/","prefix":true,"method":"PUT","bytes":2,
        "ofRequest":true})");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(send(target, "bytes").status, 0);
    EXPECT_EQ(send(target, "bytes").status, 200);
    const Reply stall =
        nobody().post("/_control/faults", R"({"kind":"stall","path":"/blobs/","prefix":true,"bytes":2,"delayMilliseconds":5})");
    EXPECT_EQ(stall.status, 200);
    EXPECT_EQ(send(target, "bytes").status, 200);
    EXPECT_EQ(nobody().post("/_control/faults", R"({"kind":"cutBody","path":"/projects","ofRequest":true})").status, 400);
}

} // namespace
} // namespace orlo::platform::test
