#include "TransferFixture.h"

namespace orlo::platform::test {
namespace {

class TemplateRoutes : public TransferTest
{
protected:
    TemplateRoutes()
    {
        project("p1");
        project("p2");
        platform.change(addDataset, {"塔楼", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
        platform.change(addDataset, {"别处", rootFolder("p2"), {}, "zok", {}, "u1", "", "d2", "m2"});
    }

    static std::string done(const std::string& data) { return R"({"code":10000,"message":"OK","data":)" + data + "}"; }
    static std::string words(int status, const std::string& message)
    {
        return R"({"code":)" + std::to_string(status) + R"(00,"message":")" + message + R"(","data":null})";
    }

    /// A file of a library in the document store.   Returns: its id.
    std::string uploaded(const std::string& bytes = "bytes") const
    {
        return jsonText(send(docUploadAuthority("", "a.dwt").target, bytes).body, "data.fileId");
    }
    static std::string plate(const std::string& name, const std::string& uri)
    {
        return R"({"appVersion":"1.2","name":")" + name + R"(","size":7,"specialty":"ZOK","uri":")" + uri + R"("})";
    }
    Reply addPlate(const std::string& name, const std::string& uri) const
    {
        return demo().post("/customize/project/p1/sample/plate", plate(name, uri));
    }
    std::string plates() const { return demo().get("/customize/project/p1/sample/plates").body; }
    std::string samples() const { return demo().get("/structural/dataset/d1/sample/file/list?projectId=p1").body; }
    std::string resources(const std::string& templateId) const
    {
        return demo().get("/structural/common/template/resources?templateId=" + templateId + "&type=TEMPLATE_FILE").body;
    }
    Reply address(const std::string& resourceId, const std::string& templateId) const
    {
        return demo().get("/structural/common/template/resources/url?resourceId=" + resourceId + "&templateId=" + templateId);
    }
};

TEST_F(TemplateRoutes, AProjectTemplateIsMadeListedAndDeletedByItsOwner)
{
    EXPECT_THAT(demo().get("/project_templates").body, IsJson(done("[]")));
    const std::string made = demo().post("/project_templates", R"({"srcProjectId":"p1","templateName":"塔楼"})").body;
    EXPECT_THAT(made, IsJson(done(R"({"id":"<text>"})")));
    const std::string id = jsonText(made, "data.id");
    const std::string listed = done(R"([{"id":")" + id + R"(","templateName":"塔楼","srcProjectId":"p1"}])");
    EXPECT_THAT(demo().get("/project_templates").body, IsJson(listed));
    const Caller second = other();
    EXPECT_THAT(second.get("/project_templates").body, IsJson(done("[]")));
    EXPECT_EQ(second.del("/project_templates/" + id).status, 403);
    demo().del("/v2/projects/p1");
    EXPECT_THAT(demo().get("/project_templates").body, IsJson(listed)) << "it outlives the project that was kept";
    EXPECT_THAT(demo().del("/project_templates/" + id).body, IsJson(done("true")));
    EXPECT_EQ(demo().del("/project_templates/" + id).status, 404);
    EXPECT_THAT(demo().get("/project_templates").body, IsJson(done("[]")));
}

TEST_F(TemplateRoutes, AProjectTemplateNeedsAProjectThatTheAccountMayWriteAndAName)
{
    EXPECT_EQ(demo().post("/project_templates", R"({"srcProjectId":"none","templateName":"n"})").status, 404);
    EXPECT_EQ(demo().post("/project_templates", R"({"srcProjectId":"p1","templateName":""})").status, 400);
    EXPECT_EQ(demo().post("/project_templates", R"({"templateName":"n"})").status, 400);
    EXPECT_EQ(demo().post("/project_templates", "[]").status, 400);
    EXPECT_EQ(other().post("/project_templates", R"({"srcProjectId":"p1","templateName":"n"})").status, 403);
    EXPECT_EQ(nobody().get("/project_templates").status, 401);
}

TEST_F(TemplateRoutes, AnUploadWithoutAFolderIsAFileOfItsOwnWithTheVersionOne)
{
    const Authority authority = docUploadAuthority("", "a.dwt");
    const std::string stored = send(authority.target, "bytes").body;
    EXPECT_THAT(stored, IsJson(done(R"({"fileId":"<text>","versionIndex":1,"length":5})")));
    EXPECT_THAT(send(authority.target, "bytes").body, IsJson(stored)) << "sent again after a lost answer";
    EXPECT_NE(uploaded(), jsonText(stored, "data.fileId"));
    const std::string path = "/file/doc/" + jsonText(stored, "data.fileId") + "/download/url?version=";
    EXPECT_EQ(fetch(readAuthority(platform, demo().post(path + "1", "null").body, "data.").target).body, "bytes");
    EXPECT_EQ(demo().post(path + "2", "null").status, 404);
}

TEST_F(TemplateRoutes, AFileOfTheStoreBecomesATemplateOfTheProject)
{
    EXPECT_THAT(plates(), IsJson(done("[]")));
    const std::string file = uploaded();
    EXPECT_THAT(addPlate("结构", file).body, IsJson(done(R"({"id":"<text>"})")));
    EXPECT_THAT(plates(), IsJson(done(R"([{"id":"<text>","name":"结构","uri":")" + file +
                                      R"(","samplePlateFrom":"From_Customize","specialty":"ZOK","templateId":"","projectId":"p1",)"
                                      R"("size":"7","createTime":"<time>","updateTime":"<time>"}])")));
    EXPECT_THAT(demo().get("/customize/project/p2/sample/plates").body, IsJson(done("[]")));
    EXPECT_THAT(addPlate("结构", file).body, IsJson(words(409, "the project has a template of that name: 结构")));
    EXPECT_EQ(addPlate("结构 2", file).status, 200);
}

TEST_F(TemplateRoutes, ANameIsThereToTheLetter)
{
    addPlate("结构 A", uploaded());
    const std::string path = "/customize/project/p1/sample/plate/name/exist?name=";
    EXPECT_THAT(demo().get(path + "%E7%BB%93%E6%9E%84%20A").body, IsJson(done("true")));
    EXPECT_THAT(demo().get(path + "%E7%BB%93%E6%9E%84%20a").body, IsJson(done("false")));
    EXPECT_EQ(demo().get(path).status, 400);
    EXPECT_EQ(demo().get("/customize/project/none/sample/plate/name/exist?name=n").status, 404);
}

TEST_F(TemplateRoutes, ATemplateNeedsItsFileItsFieldsAndAWriter)
{
    const std::string file = uploaded();
    EXPECT_THAT(addPlate("n", "none").body, IsJson(words(400, "the file isn't in the document store: none")));
    EXPECT_EQ(addPlate("", file).status, 400);
    EXPECT_EQ(addPlate("n", "").status, 400);
    docUploadAuthority("", "granted.dwt"); // its bytes never come
    const std::string path = "/customize/project/p1/sample/plate";
    EXPECT_EQ(demo().post(path, R"({"appVersion":"","name":"n","size":"7","specialty":"ZOK","uri":")" + file + R"("})").status, 400);
    EXPECT_EQ(demo().post(path, R"({"appVersion":"","name":"n","size":7,"specialty":"zok","uri":")" + file + R"("})").status, 400);
    EXPECT_EQ(demo().post(path, R"({"name":"n","size":7,"specialty":"ZOK","uri":")" + file + R"("})").status, 400);
    EXPECT_EQ(demo().post(path, "null").status, 400);
    EXPECT_EQ(demo().post("/customize/project/none/sample/plate", plate("n", file)).status, 404);
    EXPECT_EQ(other().post(path, plate("n", file)).status, 403);
    EXPECT_EQ(other().get("/customize/project/p1/sample/plates").status, 200);
    EXPECT_THAT(plates(), IsJson(done("[]")));
}

TEST_F(TemplateRoutes, ADatasetTellsWhatItWasStartedWith)
{
    EXPECT_THAT(samples(), IsJson(done("[]")));
    platform.change(addPublicTemplate, {"n", "bytes", "ZOK", "t1"});
    platform.change(addSamplePlate, {"p1", "公共", "t1", "", "ZOK", "plate1"});
    platform.change(addSamplePlate, {"p1", "自己", "", "bytes", "ZIM", "plate2"});
    platform.change(addSampleFile, {"d1", "plate1", "DWT", "s1"});
    EXPECT_THAT(samples(), IsJson(done(R"([{"id":"s1","templateId":"t1","samplePlateId":"plate1","type":"DWT","datasetId":"d1",)"
                                       R"("projectId":"p1","samplePlateFrom":"From_Common","uri":""}])")));
    platform.change(addSampleFile, {"d1", "plate2", "dwt", "s2"});
    EXPECT_EQ(jsonText(samples(), "data.1.samplePlateFrom"), "From_Customize");
    EXPECT_NE(jsonText(samples(), "data.1.uri"), "");
    EXPECT_EQ(demo().get("/structural/dataset/d2/sample/file/list?projectId=p1").status, 404) << "a dataset of another project";
    EXPECT_EQ(demo().get("/structural/dataset/d1/sample/file/list?projectId=none").status, 404);
    EXPECT_EQ(demo().get("/structural/dataset/d1/sample/file/list").status, 400);
}

TEST_F(TemplateRoutes, ThePublicLibraryGivesItsFilesBySignedAddresses)
{
    platform.change(addPublicTemplate, {"平面", "bytes", "ZOK", "t1"});
    const std::string found = resources("t1");
    EXPECT_THAT(found, IsJson(done(R"([{"id":1,"name":"平面","size":5,"type":"TEMPLATE_FILE"}])")));
    const Reply signedOne = address("1", "t1");
    EXPECT_THAT(signedOne.body, IsJson(done(R"("<text>")")));
    EXPECT_EQ(fetch(jsonText(signedOne.body, "data").substr(platform.url().size())).body, "bytes");
    EXPECT_EQ(address("2", "t1").status, 404);
    EXPECT_EQ(address("1", "t2").status, 404);
    EXPECT_EQ(address("01", "t1").status, 404);
    EXPECT_EQ(address("", "t1").status, 400);
    EXPECT_EQ(demo().get("/structural/common/template/resources?templateId=t2&type=TEMPLATE_FILE").status, 404);
    EXPECT_EQ(demo().get("/structural/common/template/resources?templateId=t1&type=IMAGE").status, 400);
    EXPECT_EQ(demo().get("/structural/common/template/resources?templateId=t1").status, 400);
    platform.change(addPublicTemplateFile, "t1", "second", "more");
    EXPECT_EQ(jsonText(resources("t1"), "data.1.name"), "second");
}

TEST_F(TemplateRoutes, TheStandardLibraryHasATemplateForEachSpecialtyAndIsAddedOnce)
{
    platform.change(addStandardTemplates);
    const std::string before = resources("standard-zok");
    platform.change(addStandardTemplates);
    for (const char* id : {"standard-zok", "standard-zim", "standard-zuta", "standard-zeb"})
        EXPECT_EQ(jsonText(resources(id), "data.0.type"), "TEMPLATE_FILE") << id;
    EXPECT_THAT(resources("standard-zok"), IsJson(before));
}

TEST_F(TemplateRoutes, TheProjectsOwnFilesGoWithIt)
{
    const std::string mine = uploaded("mine");
    const std::string shared = uploaded("shared");
    addPlate("a", mine);
    addPlate("b", shared);
    EXPECT_EQ(demo().post("/customize/project/p2/sample/plate", plate("b", shared)).status, 200);
    ASSERT_EQ(demo().del("/v2/projects/p1").status, 200);
    EXPECT_EQ(demo().post("/file/doc/" + mine + "/download/url?version=1", "null").status, 404);
    EXPECT_EQ(demo().post("/file/doc/" + shared + "/download/url?version=1", "null").status, 200) << "another project offers it too";
    const std::vector<StoredFile> left = platform.ask(storedFiles);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].fileId, shared);
}

TEST_F(TemplateRoutes, ControlCallsSeedTemplates)
{
    const Caller control = nobody();
    EXPECT_THAT(control.post("/_control/templates", R"({"name":"n","text":"bytes","specialty":"ZEB","id":"t1"})").body,
                IsJson(done(R"({"id":"t1"})")));
    EXPECT_THAT(control.post("/_control/plates", R"({"projectId":"p1","name":"公共","templateId":"t1","id":"a"})").body,
                IsJson(done(R"({"id":"a"})")));
    EXPECT_THAT(control.post("/_control/plates", R"({"projectId":"p1","name":"自己","text":"own","specialty":"ZOK","id":"b"})").body,
                IsJson(done(R"({"id":"b"})")));
    EXPECT_THAT(control.post("/_control/samples", R"({"datasetId":"d1","samplePlateId":"a","type":"rte"})").body,
                IsJson(done(R"({"id":"<text>"})")));
    EXPECT_EQ(jsonText(plates(), "data.0.size"), "5");
    EXPECT_EQ(jsonText(plates(), "data.1.size"), "3");
    EXPECT_EQ(jsonText(samples(), "data.0.type"), "rte");

    EXPECT_EQ(control.post("/_control/templates", R"({"name":"n","id":"t1"})").status, 409);
    EXPECT_EQ(control.post("/_control/templates", R"({"name":"n","specialty":"X"})").status, 400);
    EXPECT_EQ(control.post("/_control/plates", R"({"projectId":"none","name":"n"})").status, 404);
    EXPECT_EQ(control.post("/_control/plates", R"({"projectId":"p1","name":"n","templateId":"none"})").status, 404);
    EXPECT_EQ(control.post("/_control/plates", R"({"projectId":"p1","name":"公共"})").status, 409);
    EXPECT_EQ(control.post("/_control/samples", R"({"datasetId":"d2","samplePlateId":"a"})").status, 404);
    EXPECT_EQ(control.post("/_control/samples", R"({"datasetId":"none","samplePlateId":"a"})").status, 404);
}

TEST_F(TemplateRoutes, TheCallsNeedAToken)
{
    for (const char* path :
         {"/customize/project/p1/sample/plates", "/customize/project/p1/sample/plate/name/exist?name=n",
          "/structural/dataset/d1/sample/file/list?projectId=p1", "/structural/common/template/resources?templateId=t1&type=TEMPLATE_FILE",
          "/structural/common/template/resources/url?resourceId=1&templateId=t1"})
        EXPECT_EQ(nobody().get(path).status, 401) << path;
}

} // namespace
} // namespace orlo::platform::test
