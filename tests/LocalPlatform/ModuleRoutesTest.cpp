#include "TransferFixture.h"
#include "support/TempFolder.h"

namespace orlo::platform::test {
namespace {

class ModuleRoutes : public TransferTest
{
protected:
    ModuleRoutes()
    {
        project("p1");
        platform.change(addModuleCategory, {"projects", "p1", "beam", "tree", "门", "", "c1"});
        platform.change(addModuleCategory, {"projects", "p1", "beam", "tree", "木门", "c1", "c2"});
        platform.change(addModuleCategory, {"projects", "p1", "beam", "other", "窗", "", "c3"});
        platform.change(addModuleCategory, {"projects", "p1", "slab", "tree", "板", "", "c4"});
    }

    static std::string done(const std::string& data) { return R"({"code":10000,"message":"OK","data":)" + data + "}"; }

    /// A file that has been signed for.
    struct SignedFile
    {
        std::string fileKey;
        std::string target;
    };

    SignedFile sign(const std::string& md5, const std::string& space = "projects/p1") const
    {
        const std::string body = R"({"access_ctl":"private_ctl","fileName":"门","md5":")" + md5 + "\"}";
        return signedFile(demo().post("/" + space + "/types/beam/files/sign_upload_url", body).body);
    }
    SignedFile signedFile(const std::string& answer) const
    {
        const std::string address = jsonText(answer, "data.0.url_with_signature");
        EXPECT_EQ(address.compare(0, platform.url().size(), platform.url()), 0) << address;
        return {jsonText(answer, "data.0.file_key"), address.substr(platform.url().size())};
    }
    /// The key of a file whose bytes have come.
    std::string uploaded(const std::string& bytes, const std::string& md5, const std::string& space = "projects/p1") const
    {
        const SignedFile file = sign(md5, space);
        EXPECT_EQ(send(file.target, bytes).status, 200);
        return file.fileKey;
    }

    static std::string module(const std::string& fileKey, const std::string& md5, const std::string& name = "门",
                              const std::string& category = "c1", bool enforce = true)
    {
        return R"({"application_type":"zok","category_id":")" + category +
               R"(","resource_type":"beam","access_ctl":"private_ctl","file_key":")" + fileKey + R"(","enforce":)" +
               (enforce ? "true" : "false") + R"(,"md5":")" + md5 + R"(","name":")" + name + R"(","url":"u"})";
    }
    Reply add(const std::string& modules, const std::string& space = "projects/p1") const
    {
        return demo().post("/" + space + "/types/module/vmd_files", R"({"vmd_files":[)" + modules + "]}");
    }
    static std::string added(const std::string& id, int version)
    {
        return R"({"success":true,"error_code":"none","resource_id":")" + id + R"(","resource_version":)" + std::to_string(version) + "}";
    }
    static std::string notAdded(const std::string& word, const std::string& id = {})
    {
        return R"({"success":false,"error_code":")" + word + R"(","resource_id":")" + id + R"(","resource_version":0})";
    }

    std::string verdict(const std::string& name, const std::string& category = "c1", const std::string& target = {},
                        const std::string& md5 = "5") const
    {
        const std::string body = R"({"application_type":"zok","md5":")" + md5 + R"(","name":")" + name + R"(","category_id":")" + category +
                                 R"(","resource_type":"beam","target_module_uid":")" + target + "\"}";
        return jsonText(demo().post("/projects/p1/types/module/vmd_file", body).body, "data.0.error_code");
    }

    static constexpr const char* sumOfFirst = "8b04d5e3775d298e78455efc5ca404d5";  // of "first"
    static constexpr const char* sumOfSecond = "a9f0e61a137d86aa9db53465e0801612"; // of "second"
};

TEST_F(ModuleRoutes, CategoriesAreThoseOfTheTreeAndTheResourceType)
{
    EXPECT_THAT(demo().get("/projects/p1/types/beam/category_tree_types/tree/categories").body,
                IsJson(done(R"([{"id":"c1","parent_id":"","name":"门"},{"id":"c2","parent_id":"c1","name":"木门"}])")));
    EXPECT_THAT(demo().get("/projects/p1/types/slab/category_tree_types/tree/categories").body,
                IsJson(done(R"([{"id":"c4","parent_id":"","name":"板"}])")));
    EXPECT_THAT(demo().get("/projects/p1/types/beam/category_tree_types/none/categories").body, IsJson(done("[]")));
    EXPECT_EQ(demo().get("/projects/none/types/beam/category_tree_types/tree/categories").status, 404);
    EXPECT_THAT(demo().get("/planets/p1/types/beam/category_tree_types/tree/categories").body,
                IsJson(R"({"code":40000,"message":"unknown type of a space: planets","data":null})"));
    EXPECT_EQ(nobody().get("/projects/p1/types/beam/category_tree_types/tree/categories").status, 401);
}

TEST_F(ModuleRoutes, CategoriesAreAddedByAControlCall)
{
    const std::string body = R"({"spaceType":"projects","space":"p1","resourceType":"beam","tree":"other","name":"天窗","parentId":"c3"})";
    EXPECT_THAT(nobody().post("/_control/module-categories", body).body, IsJson(done(R"({"id":"<id>"})")));
    EXPECT_THAT(demo().get("/projects/p1/types/beam/category_tree_types/other/categories").body,
                IsJson(done(R"([{"id":"c3","parent_id":"","name":"窗"},{"id":"<id>","parent_id":"c3","name":"天窗"}])")));
    EXPECT_THROW(platform.change(addModuleCategory, {"projects", "p1", "beam", "tree", "n", "c4"}), std::runtime_error)
        << "a parent of another resource type";
    EXPECT_THROW(platform.change(addModuleCategory, {"projects", "p1", "beam", "tree", "n", "", "c1"}), std::runtime_error);
    EXPECT_EQ(nobody().post("/_control/module-categories", R"({"spaceType":"projects"})").status, 400);
}

TEST_F(ModuleRoutes, AFileGoesUpAndComesDownThroughSignedAddresses)
{
    const std::string bytes = noise(100'000);
    const SignedFile file = sign("any");
    EXPECT_EQ(send(file.target, bytes).status, 200);
    EXPECT_EQ(platform.ask(contentOf, file.fileKey), bytes);
    const std::string key = R"({"file_key":")" + file.fileKey + "\"}";
    const Reply reply = demo().post("/projects/p1/types/beam/files/sign_download_url", key);
    EXPECT_THAT(reply.body, IsJson(done(R"([{"file_key":")" + file.fileKey + R"(","url_with_signature":"<text>"}])")));
    EXPECT_EQ(fetch(signedFile(reply.body).target).body, bytes);
    EXPECT_EQ(fetch(file.target).status, 403) << "signed for the other method";
    EXPECT_EQ(demo().post("/projects/p1/types/slab/files/sign_download_url", key).status, 404) << "of another resource type";
}

TEST_F(ModuleRoutes, OnlyWhatHasArrivedComesDown)
{
    const std::string key = sign("any").fileKey;
    EXPECT_EQ(demo().post("/projects/p1/types/beam/files/sign_download_url", R"({"file_key":")" + key + "\"}").status, 404);
    platform.change(addFile, "seeded.bin", "bytes");
    EXPECT_EQ(demo().post("/projects/p1/types/beam/files/sign_download_url", R"({"file_key":"seeded.bin"})").status, 404)
        << "not a module's";
    EXPECT_EQ(demo().post("/projects/p1/types/beam/files/sign_download_url", "{}").status, 400);
}

TEST_F(ModuleRoutes, SigningNeedsANameASumAndThePrivateAccess)
{
    for (const char* body : {R"({"access_ctl":"private_ctl","fileName":"门"})", R"({"access_ctl":"private_ctl","md5":"5"})",
                             R"({"access_ctl":"public_ctl","fileName":"门","md5":"5"})", R"({"fileName":"门","md5":"5"})",
                             R"({"access_ctl":"private_ctl","fileName":"a/b","md5":"5"})", "[]"})
        EXPECT_EQ(demo().post("/projects/p1/types/beam/files/sign_upload_url", body).status, 400) << body;
}

TEST_F(ModuleRoutes, ARegisteredFileIsTheFirstVersionOfAModule)
{
    const std::string key = uploaded("first", sumOfFirst);
    EXPECT_THAT(add(module(key, sumOfFirst)).body, IsJson(done("[" + added("<id>", 1) + "]")));
    const std::vector<StoredModule> modules = platform.ask(storedModules);
    ASSERT_EQ(modules.size(), 1u);
    EXPECT_EQ(modules[0].version, 1);
    EXPECT_EQ(modules[0].categoryId, "c1");
    EXPECT_EQ(modules[0].name, "门");
    EXPECT_EQ(modules[0].applicationType, "zok");
    EXPECT_EQ(modules[0].fileKey, key);
    EXPECT_THAT(
        nobody().get("/_control/modules").body,
        IsJson(done(R"([{"id":")" + modules[0].id + R"(","version":1,"categoryId":"c1","name":"门","applicationType":"zok","fileKey":")" +
                    key + R"(","length":5}])")));
}

TEST_F(ModuleRoutes, TheSameNameIsAFurtherVersionWhereThatIsEnforced)
{
    const std::string first = jsonText(add(module(uploaded("first", sumOfFirst), sumOfFirst)).body, "data.0.resource_id");
    const std::string key = uploaded("second", sumOfSecond);
    EXPECT_THAT(add(module(key, sumOfSecond, "门", "c1", false)).body, IsJson(done("[" + notAdded("name_exists", first) + "]")));
    EXPECT_THAT(add(module(key, sumOfSecond)).body, IsJson(done("[" + added(first, 2) + "]")));
    EXPECT_EQ(platform.ask(storedModules).size(), 2u);
    EXPECT_THAT(add(module(uploaded("first", sumOfFirst), sumOfFirst, "门", "c2")).body, IsJson(done("[" + added("<id>", 1) + "]")))
        << "another category";
}

TEST_F(ModuleRoutes, AFileThatIsRegisteredAgainIsTheSameVersion)
{
    const std::string key = uploaded("first", sumOfFirst);
    const std::string receipt = add(module(key, sumOfFirst)).body;
    EXPECT_EQ(add(module(key, sumOfFirst)).body, receipt);
    EXPECT_EQ(platform.ask(storedModules).size(), 1u);
}

TEST_F(ModuleRoutes, WhatIsWrongWithAModuleIsToldInAWord)
{
    const std::string key = uploaded("first", sumOfFirst);
    const auto expectRefused = [&](const std::string& body, const char* word) {
        EXPECT_THAT(add(body).body, IsJson(done("[" + notAdded(word) + "]")));
    };
    expectRefused(module(key, sumOfFirst, "门", "none"), "category_not_found");
    expectRefused(module(key, sumOfFirst, "门", "c4"), "category_not_found");
    expectRefused(module("none", sumOfFirst), "file_not_found");
    expectRefused(module(sign(sumOfFirst).fileKey, sumOfFirst), "file_not_uploaded");
    expectRefused(module(key, sumOfSecond), "md5_mismatch");
    expectRefused(module(uploaded("first", sumOfSecond), sumOfSecond), "md5_mismatch");
    EXPECT_TRUE(platform.ask(storedModules).empty());
}

TEST_F(ModuleRoutes, ModulesOfOneCallAreJudgedOneByOne)
{
    const std::string key = uploaded("first", sumOfFirst);
    EXPECT_THAT(add(module(key, sumOfFirst, "a") + "," + module("none", sumOfFirst, "b")).body,
                IsJson(done("[" + added("<id>", 1) + "," + notAdded("file_not_found") + "]")));
    EXPECT_THAT(add("").body, IsJson(done("[]")));
    EXPECT_EQ(add(module(uploaded("second", sumOfSecond), sumOfSecond, "c") + ",7").status, 400);
    EXPECT_EQ(platform.ask(storedModules).size(), 1u) << "a call that is refused changes nothing";
    for (const char* body : {"{}", R"({"vmd_files":{}})", R"({"vmd_files":7})", "[]"})
        EXPECT_EQ(demo().post("/projects/p1/types/module/vmd_files", body).status, 400) << body;
}

TEST_F(ModuleRoutes, ACheckTellsWhetherAModuleWouldBeTaken)
{
    EXPECT_EQ(verdict("门"), "none");
    EXPECT_EQ(verdict("门", "none"), "category_not_found");
    EXPECT_EQ(verdict("门", "c1", "none"), "module_not_found");
    const std::string id = jsonText(add(module(uploaded("first", sumOfFirst), sumOfFirst)).body, "data.0.resource_id");
    EXPECT_EQ(verdict("门"), "name_exists");
    EXPECT_EQ(verdict("门", "c2"), "none");
    EXPECT_EQ(verdict("门", "c1", id, sumOfFirst), "file_unchanged");
    EXPECT_EQ(verdict("门", "c1", id, sumOfSecond), "none");
    add(module(uploaded("second", sumOfSecond), sumOfSecond));
    EXPECT_EQ(verdict("门", "c1", id, sumOfFirst), "none") << "the newest version counts";
    EXPECT_EQ(demo().post("/projects/p1/types/module/vmd_file", R"({"resource_type":"beam"})").status, 400);
}

TEST_F(ModuleRoutes, AProjectsModulesAreForItsWritersToChangeAndForAllToRead)
{
    const Caller stranger = other();
    const std::string signature = R"({"access_ctl":"private_ctl","fileName":"门","md5":"5"})";
    const std::string candidate =
        R"({"application_type":"","md5":"5","name":"门","category_id":"c1","resource_type":"beam","target_module_uid":""})";
    const std::string key = uploaded("first", sumOfFirst);
    const std::string modules = R"({"vmd_files":[)" + module(key, sumOfFirst) + "]}";
    EXPECT_EQ(stranger.post("/projects/p1/types/beam/files/sign_upload_url", signature).status, 403);
    EXPECT_EQ(stranger.post("/projects/p1/types/module/vmd_file", candidate).status, 403);
    EXPECT_EQ(stranger.post("/projects/p1/types/module/vmd_files", modules).status, 403);
    EXPECT_EQ(stranger.get("/projects/p1/types/beam/category_tree_types/tree/categories").status, 200);
    EXPECT_EQ(stranger.post("/projects/p1/types/beam/files/sign_download_url", R"({"file_key":")" + key + "\"}").status, 200);
    platform.change(grantPermission, "p1", "second-account", "Module", {"Write"});
    EXPECT_EQ(stranger.post("/projects/p1/types/beam/files/sign_upload_url", signature).status, 200);
    EXPECT_EQ(stranger.post("/projects/p1/types/module/vmd_files", modules).status, 200);
}

TEST_F(ModuleRoutes, AnAccountsSpaceIsItsOwn)
{
    platform.change(addModuleCategory, {"accounts", "demo-account", "beam", "tree", "门", "", "mine"});
    const std::string key = uploaded("first", sumOfFirst, "accounts/demo-account");
    EXPECT_THAT(add(module(key, sumOfFirst, "门", "mine"), "accounts/demo-account").body, IsJson(done("[" + added("<id>", 1) + "]")));
    EXPECT_EQ(other().get("/accounts/demo-account/types/beam/category_tree_types/tree/categories").status, 403);
    EXPECT_EQ(other().post("/accounts/demo-account/types/beam/files/sign_download_url", R"({"file_key":")" + key + "\"}").status, 403);
    EXPECT_THAT(add(module(key, sumOfFirst)).body, IsJson(done("[" + notAdded("file_not_found") + "]"))) << "in the project";
}

TEST_F(ModuleRoutes, ModulesGoWithTheirProject)
{
    const SignedFile file = sign(sumOfFirst);
    send(file.target, "first");
    add(module(file.fileKey, sumOfFirst));
    const std::string target =
        signedFile(demo().post("/projects/p1/types/beam/files/sign_download_url", R"({"file_key":")" + file.fileKey + "\"}").body).target;
    EXPECT_EQ(demo().del("/v2/projects/p1").status, 200);
    EXPECT_TRUE(platform.ask(storedModules).empty());
    EXPECT_TRUE(platform.ask(storedFiles).empty());
    EXPECT_EQ(fetch(target).status, 404);
}

TEST_F(ModuleRoutes, ModulesOutliveThePlatform)
{
    const orlo::test::TempFolder folder;
    const auto keep = [&](const std::function<void(LocalPlatform&)>& use) {
        LocalPlatform kept(Options{folder.path().string(), 0, true});
        kept.start();
        use(kept);
    };
    keep([&](LocalPlatform& kept) {
        kept.change(addProject, {"Tower", "demo-account", "p1"});
        kept.change(addModuleCategory, {"projects", "p1", "beam", "tree", "门", "", "c1"});
        const Caller caller(kept.url(), "demo-token");
        const SignedFile file = [&] {
            const std::string body = R"({"access_ctl":"private_ctl","fileName":"门","md5":")" + std::string(sumOfFirst) + "\"}";
            const std::string answer = caller.post("/projects/p1/types/beam/files/sign_upload_url", body).body;
            return SignedFile{jsonText(answer, "data.0.file_key"), jsonText(answer, "data.0.url_with_signature").substr(kept.url().size())};
        }();
        signedPut(kept.url(), file.target, "first");
        EXPECT_EQ(caller.post("/projects/p1/types/module/vmd_files", R"({"vmd_files":[)" + module(file.fileKey, sumOfFirst) + "]}").status,
                  200);
    });
    keep([](LocalPlatform& kept) {
        const auto modules = kept.ask(storedModules);
        ASSERT_EQ(modules.size(), 1u);
        EXPECT_EQ(kept.ask(contentOf, modules[0].fileKey), "first");
    });
}

} // namespace
} // namespace orlo::platform::test
