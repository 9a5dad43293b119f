#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class VersionRoutes : public PlatformTest
{
protected:
    VersionRoutes()
    {
        project("p1");
        platform.change(addDataset, {"a", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
        platform.change(addFile, "a", "");
        platform.change(addFile, "b", "");
    }

    static std::string record(int number, const std::string& source, const std::string& status, const std::string& more = {})
    {
        const std::string digits = std::to_string(number);
        return R"({"id":"<number>","version":)" + digits + R"(,"dataSetId":"d1","dataSetSourceFile":")" + source +
               R"(","displayVersion":"V)" + digits + R"(","creationTime":"<time>","status":")" + status + R"(","verifyStatus":"Success",)" +
               (more.empty() ? R"("description":"","metaInfo":"","size":0)" : more) + "}";
    }
    static std::string enveloped(const std::string& data) { return R"({"code":10000,"message":"OK","data":)" + data + "}"; }
};

TEST_F(VersionRoutes, VersionsAreNumberedFromOne)
{
    platform.change(addFile, "remote/塔.bin", "1234567");
    EXPECT_THAT(demo().put("/dataset/d1/version?sourceFile=remote%2F%E5%A1%94.bin", "{}").body,
                IsJson(enveloped(record(1, "remote/塔.bin", "WIP", R"("description":"","metaInfo":"","size":7)"))));
    EXPECT_THAT(demo().put("/dataset/d1/version?sourceFile=b", "").body, IsJson(enveloped(record(2, "b", "WIP"))));
    EXPECT_EQ(demo().put("/dataset/d1/version?sourceFile=", "{}").status, 400);
    EXPECT_EQ(demo().put("/dataset/none/version?sourceFile=b", "{}").status, 404);
}

TEST_F(VersionRoutes, AFileThatIsNotInTheStoreMakesNoVersion)
{
    EXPECT_THAT(demo().put("/dataset/d1/version?sourceFile=read%20file%20fail", "{}").body, IsJson(refusal(400)));
    EXPECT_EQ(demo().get("/v2/datasets/d1/version/latest").status, 404);
}

TEST_F(VersionRoutes, AVersionIsCreatedUnderAGivenNumber)
{
    const std::string body = R"({"metaInfo":"{\"a\":1}","status":"Published","description":"first"})";
    const std::string expected = enveloped(record(7, "", "Published", R"("description":"first","metaInfo":"{\"a\":1}","size":0)"));
    EXPECT_THAT(demo().post("/datasets/d1/versions/7/create", body).body, IsJson(expected));
    EXPECT_EQ(demo().post("/datasets/d1/versions/7/create", body).status, 409);
    EXPECT_THAT(demo().put("/dataset/d1/version?sourceFile=b", "{}").body, IsJson(enveloped(record(8, "b", "WIP"))));
    EXPECT_EQ(demo().post("/datasets/d1/versions/-1/create", body).status, 400);
    EXPECT_EQ(demo().post("/datasets/d1/versions/seven/create", body).status, 400);
    EXPECT_EQ(demo().post("/datasets/d1/versions/9/create", R"({"metaInfo":"","status":"Done","description":""})").status, 400);
    EXPECT_EQ(demo().post("/datasets/none/versions/9/create", body).status, 404);
}

TEST_F(VersionRoutes, TheLatestOrANumberedVersionIsRead)
{
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    demo().put("/dataset/d1/version?sourceFile=b", "{}");
    EXPECT_THAT(demo().get("/v2/datasets/d1/version/latest?onlySuccess=true&mvd=base").body, IsJson(enveloped(record(2, "b", "WIP"))));
    EXPECT_THAT(demo().get("/v2/datasets/d1/version/1?onlySuccess=false&mvd=base").body, IsJson(enveloped(record(1, "a", "WIP"))));
    EXPECT_THAT(demo().get("/v2/datasets/d1/version/0?onlySuccess=false&mvd=base").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().get("/v2/datasets/d1/version/newest").status, 400);
    EXPECT_EQ(demo().get("/v2/datasets/none/version/latest").status, 404);
}

TEST_F(VersionRoutes, VersionsAreReadByTheirIds)
{
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    demo().put("/dataset/d1/version?sourceFile=b", "{}");
    EXPECT_THAT(demo().post("/v2/versions/byids?mvd=base", "[2,1,99]").body,
                IsJson(enveloped("[" + record(1, "a", "WIP") + "," + record(2, "b", "WIP") + "]")));
    EXPECT_THAT(demo().post("/v2/versions/byids?mvd=base", "[]").body, IsJson(enveloped("[]")));
    EXPECT_EQ(demo().post("/v2/versions/byids", "[1]").status, 400);
    EXPECT_EQ(demo().post("/v2/versions/byids?mvd=base", R"(["1"])").status, 400);
}

TEST_F(VersionRoutes, AVersionIsMarkedAsPublished)
{
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    EXPECT_THAT(demo().post("/datasets/d1/1/markPublish", R"({"description":"发布"})").body, IsJson(enveloped("true")));
    EXPECT_THAT(demo().get("/v2/datasets/d1/version/1").body,
                IsJson(enveloped(record(1, "a", "Published", R"("description":"发布","metaInfo":"","size":0)"))));
    EXPECT_EQ(demo().post("/datasets/d1/2/markPublish", R"({"description":""})").status, 404);
    EXPECT_EQ(demo().post("/datasets/none/1/markPublish", R"({"description":""})").status, 404);
}

TEST_F(VersionRoutes, AVersionKeepsAValueForEachKey)
{
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    EXPECT_EQ(demo().get("/version/1/meta?key=SpaceConfigVersion").status, 404);
    EXPECT_THAT(demo().post("/version/1/meta", R"({"SpaceConfigVersion":"3"})").body, IsJson(enveloped("null")));
    EXPECT_EQ(demo().post("/version/1/meta", R"({"AxisGridVersions":"{\"轴\":[1,2]}"})").status, 200);
    EXPECT_EQ(demo().get("/version/1/meta?key=SpaceConfigVersion").body, "3") << "the bare text";
    EXPECT_EQ(demo().get("/version/1/meta?key=AxisGridVersions").body, R"({"轴":[1,2]})");
    EXPECT_EQ(demo().post("/version/1/meta", R"({"SpaceConfigVersion":""})").status, 200);
    EXPECT_EQ(demo().get("/version/1/meta?key=SpaceConfigVersion").status, 200);
    EXPECT_EQ(demo().get("/version/1/meta?key=SpaceConfigVersion").body, "");
}

/// A document that two datasets share counts for itself.
TEST_F(VersionRoutes, TheDocumentsOwnVersionIsToldWhereItIsAnother)
{
    const std::string folder = rootFolder("p1");
    platform.change(addDataset, {"b", folder, {}, "zok", {}, "u1", "", "d2", "m2"});
    const std::string authority = "/file/doc/upload/url/with/filename?fileName=a.dwg&filepath=demo&targetFolderId=" + folder;
    std::string fileId;
    for (const char* bytes : {"one", "two"}) {
        const std::string address = jsonText(demo().get(authority).body, "data.fileUrlWithSAS");
        fileId = jsonText(nobody().put(address.substr(platform.url().size()), bytes).body, "data.fileId");
    }
    const auto version = [&](const std::string& dataset, const std::string& own) {
        return demo().put("/dataset/" + dataset + "/doc/version?sourceFile=" + fileId, R"({"length":3,"version":)" + own + "}").status;
    };
    EXPECT_EQ(version("d1", "1"), 200);
    EXPECT_EQ(version("d2", "2"), 200);
    const std::string ofDocument = R"("description":"","metaInfo":"","size":3)";
    EXPECT_THAT(demo().get("/v2/datasets/d1/version/1").body, IsJson(enveloped(record(1, fileId, "WIP", ofDocument))));
    std::string shared = record(1, fileId, "WIP", ofDocument + R"(,"versionIndex":2)");
    shared.replace(shared.find("\"d1\""), 4, "\"d2\"");
    EXPECT_THAT(demo().get("/v2/datasets/d2/version/latest").body, IsJson(enveloped(shared)));
    EXPECT_EQ(demo().get("/version/2/meta?key=versionIndex").body, "2");
}

TEST_F(VersionRoutes, WhatIsKeptUnderTheKeyOfTheDocumentsVersionIsToldAsANumber)
{
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    demo().post("/version/1/meta", R"({"versionIndex":"7\",\"x\":\"y"})");
    EXPECT_THAT(demo().get("/v2/datasets/d1/version/1").body,
                IsJson(enveloped(record(1, "a", "WIP", R"("description":"","metaInfo":"","size":0,"versionIndex":7)"))));
}

TEST_F(VersionRoutes, MetadataOfNoVersionOrOfMoreThanOneMemberIsRefused)
{
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    for (const char* body : {"", "{}", "[]", "7", R"({"a":1})", R"({"a":null})", R"({"a":{}})", R"({"a":"1","b":"2"})",
                             R"({"a":"1","a":"2"})", R"({"":"1"})", R"(["a"])"})
        EXPECT_EQ(demo().post("/version/1/meta", body).status, 400) << body;
    EXPECT_EQ(demo().get("/version/1/meta?key=a").status, 404);
    EXPECT_EQ(demo().get("/version/1/meta?key=").status, 400);
    EXPECT_EQ(demo().get("/version/1/meta").status, 400);
    EXPECT_EQ(demo().get("/version/2/meta?key=a").status, 404);
    EXPECT_EQ(demo().post("/version/2/meta", R"({"a":"1"})").status, 404);
    EXPECT_EQ(demo().get("/version/x/meta?key=a").status, 400);
    EXPECT_EQ(nobody().get("/version/1/meta?key=a").status, 401);
}

} // namespace
} // namespace orlo::platform::test
