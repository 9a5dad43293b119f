#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/Resources/ModuleManager.h>

#include <gtest/gtest.h>

// Modules from the question whether they are wanted to the download by another host, through a platform.
namespace orlo::test {
namespace {

class ModuleSession : public testing::Test
{
protected:
    ModuleSession()
    {
        place.platform.change(platform::addModuleCategory, {"projects", "p-1", "beam", "tree", "门", "", "c-5"});
        place.platform.change(platform::addModuleCategory, {"projects", "p-1", "beam", "tree", "木门", "c-5", "c-6"});
        std::filesystem::create_directories(place.host.folder().path("Local"));
    }

    static ModuleManager& manager() { return dynamic_cast<ModuleManager&>(*IModuleManager::Get()); }

    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        writeFile(place.host.folder().path("Local") / std::filesystem::u8path(name), content);
        return place.host.folder().wide("Local/" + name);
    }
    static std::wstring sumOf(const std::wstring& path) { return utils::toWstring(utils::md5(path)); }

    bool canUpload(const std::wstring& path, const std::wstring& name, const std::wstring& target = L"")
    {
        return manager().IsCanUpload(L"projects", L"p-1", L"zok", sumOf(path), name, L"c-5", L"beam", target, error);
    }
    std::shared_ptr<ICollaborationModule> upload(const std::wstring& path, bool gzip = false)
    {
        return manager().UploadModule(L"projects", L"p-1", L"beam", path, L"木门", sumOf(path), gzip, error);
    }
    bool add(const ICollaborationModule& module, const std::wstring& md5, const std::wstring& category = L"c-5")
    {
        const NewModule added{L"zok", category, L"beam", module.GetFileKey(), md5, L"木门", module.GetUrl()};
        return manager().AddModuleToProject(L"projects", L"p-1", added, resource, error);
    }
    std::wstring requestFor(const ICollaborationModule& module) const { return LR"({"file_key":")" + module.GetFileKey() + LR"("})"; }

    PlatformHost place;
    RetryLimit retries{1};
    LogCapture log;
    ErrorCode error;
    std::string resource;
};

TEST_F(ModuleSession, theCategoriesOfATreeAreToldAsJson)
{
    std::wstring categories;
    EXPECT_TRUE(manager().GetCategories(L"projects", L"p-1", L"beam", L"tree", categories, error));
    EXPECT_EQ(categories, LR"([{"id":"c-5","name":"门","parent_id":""},{"id":"c-6","name":"木门","parent_id":"c-5"}])");
    EXPECT_FALSE(manager().GetCategories(L"projects", L"p-9", L"beam", L"tree", categories, error));
    EXPECT_NE(error.GetErrorMessage().find(L"no such project: p-9"), std::wstring::npos);
}

TEST_F(ModuleSession, aModuleIsAskedForUploadedAddedAndBroughtBack)
{
    const std::string bytes = incompressible(200000);
    for (const bool gzip : {false, true}) {
        const std::wstring file = localFile("门.vmd", bytes + (gzip ? "packed" : ""));
        const auto module = upload(file, gzip);
        ASSERT_NE(module, nullptr) << error.GetValue();
        EXPECT_TRUE(add(*module, sumOf(file)));
        const std::wstring target = place.host.folder().wide("Local/back.vmd");
        const PromiseData back =
            outcomeOf(IModuleManager::DownloadModuleFile(requestFor(*module), target, L"beam", L"projects", L"p-1", error));
        expectOutcome(back, true, 200, target);
        EXPECT_EQ(sumOf(target), sumOf(file));
    }
    const auto modules = place.platform.ask(platform::storedModules);
    ASSERT_EQ(modules.size(), 2u);
    EXPECT_EQ(resource, modules[1].id + "&2");
    expectClear(error);
}

TEST_F(ModuleSession, theServiceTellsWhyItWouldNotTakeAModule)
{
    const std::wstring file = localFile("门.vmd", "bytes");
    EXPECT_TRUE(canUpload(file, L"木门"));
    const auto module = upload(file);
    ASSERT_NE(module, nullptr);
    ASSERT_TRUE(add(*module, sumOf(file)));
    EXPECT_FALSE(canUpload(file, L"木门"));
    expectHttpError(error, exceptionValue, L"Invalid argument", L"name_exists", 400);
    const std::wstring id = utils::toWstring(place.platform.ask(platform::storedModules).at(0).id);
    error.Clear();
    EXPECT_FALSE(canUpload(file, L"木门", id));
    expectHttpError(error, exceptionValue, L"Invalid argument", L"file_unchanged", 400);
    error.Clear();
    EXPECT_TRUE(canUpload(localFile("门.vmd", "others"), L"木门", id));
    expectClear(error);
}

TEST_F(ModuleSession, aModuleThatIsNotWhatItSaysIsRefusedInAWord)
{
    const std::wstring file = localFile("门.vmd", "bytes");
    const auto module = upload(file);
    ASSERT_NE(module, nullptr);
    EXPECT_FALSE(add(*module, sumOf(file), L"c-9"));
    EXPECT_EQ(resource, "&0");
    expectHttpError(error, exceptionValue, L"Invalid argument", L"category_not_found", 400);
    error.Clear();
    EXPECT_FALSE(add(*module, L"0cc1"));
    expectHttpError(error, exceptionValue, L"Invalid argument", L"md5_mismatch", 400);
    EXPECT_TRUE(place.platform.ask(platform::storedModules).empty());
}

TEST_F(ModuleSession, whoMayNotWriteInAProjectReadsItsModules)
{
    const std::wstring file = localFile("门.vmd", "bytes");
    const auto module = upload(file);
    ASSERT_NE(module, nullptr);
    place.platform.change(platform::addUser, {"user-2", "account-2", "token-secret-2"});
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    EXPECT_FALSE(canUpload(file, L"木门"));
    EXPECT_NE(error.GetErrorMessage().find(L"may not write"), std::wstring::npos);
    error.Clear();
    EXPECT_EQ(upload(file), nullptr);
    error.Clear();
    EXPECT_FALSE(add(*module, sumOf(file)));
    error.Clear();
    const std::wstring target = place.host.folder().wide("Local/back.vmd");
    EXPECT_TRUE(outcomeOf(IModuleManager::DownloadModuleFile(requestFor(*module), target, L"beam", L"projects", L"p-1", error)).success);
}

} // namespace
} // namespace orlo::test
