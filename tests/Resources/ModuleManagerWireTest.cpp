#include "support/RequestFailures.h"

#include <BaseCommon/LocalFolders.h>
#include <OrloProjectManager/Resources/ModuleManager.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

constexpr long long emptyParameterValue = 3892314117;

class ModuleManagerWire : public WireTest
{
protected:
    static ModuleManager& manager() { return dynamic_cast<ModuleManager&>(*IModuleManager::Get()); }

    Expectation& expectCategories() { return server.expect("GET", categoriesTarget); }
    bool categoriesOf(const std::wstring& tree = L"tree-1")
    {
        return manager().GetCategories(L"projects", L"p-1", L"beam", tree, categories, error);
    }

    Expectation& expectCheck() { return server.expect("POST", checkTarget).body(checkBody); }
    bool canUpload(ErrorCode& code)
    {
        return manager().IsCanUpload(L"projects", L"p-1", L"zok", L"0cc1", L"门 \"一\"", L"c-5", L"beam", L"uid-7", code);
    }

    static NewModule newModule() { return {L"zok", L"c-5", L"beam", L"key/1", L"0cc1", L"门", L"http://store/1?sig=1"}; }
    Expectation& expectModule() { return server.expect("POST", modulesTarget).body(moduleBody); }
    bool add(ErrorCode& code) { return manager().AddModuleToProject(L"projects", L"p-1", newModule(), resource, code); }

    void expectRefusedAsEmpty(bool result)
    {
        EXPECT_FALSE(result);
        expectGenericError(error, emptyParameterValue, L"GenericError", L"param is empty");
        EXPECT_EQ(log.lines(), Lines{});
        error.Clear();
    }
    /// The service says no, in a word of its own.
    void expectRefusedWith(const std::wstring& word)
    {
        expectHttpError(error, exceptionValue, L"Invalid argument", word, 400);
        EXPECT_EQ(log.lines(), Lines{});
        error.Clear();
    }
    void expectNotNormal(const std::wstring& line)
    {
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::" + line});
        log.clear();
    }

    static constexpr const char* categoriesTarget = "/projects/p-1/types/beam/category_tree_types/tree-1/categories";
    static constexpr const char* checkTarget = "/projects/p-1/types/module/vmd_file";
    static constexpr const char* checkBody =
        R"({"application_type":"zok","md5":"0cc1","name":"门 \"一\"","category_id":"c-5","resource_type":"beam","target_module_uid":"uid-7"})";
    static constexpr const char* modulesTarget = "/projects/p-1/types/module/vmd_files";
    static constexpr const char* moduleBody =
        R"({"vmd_files":[{"application_type":"zok","category_id":"c-5","resource_type":"beam","access_ctl":"private_ctl",)"
        R"("file_key":"key/1","enforce":true,"md5":"0cc1","name":"门","url":"http://store/1?sig=1"}]})";

    std::wstring categories = L"before";
    std::string resource = "before";
};

TEST_F(ModuleManagerWire, thereIsOneManagerForTheProcess)
{
    ASSERT_NE(IModuleManager::Get(), nullptr);
    EXPECT_EQ(IModuleManager::Get(), IModuleManager::Get());
}

TEST_F(ModuleManagerWire, aModuleIsItsFileKeyAndItsUrl)
{
    const CollaborationModule module(L"键/1", L"http://store/1");
    EXPECT_EQ(module.GetFileKey(), L"键/1");
    EXPECT_EQ(module.GetUrl(), L"http://store/1");
}

// GetCategories

TEST_F(ModuleManagerWire, categoriesAreTheDataAsText)
{
    expectCategories()
        .header("Authorization", "Bearer token-secret-1")
        .reply(200, R"({"code":10000,"data":[{"id":"c-1","name":"门","children":[{"id":"c-2"}]},{"id":"c-3"}]})");
    EXPECT_TRUE(categoriesOf());
    EXPECT_EQ(categories, LR"([{"children":[{"id":"c-2"}],"id":"c-1","name":"门"},{"id":"c-3"}])");
    expectQuiet();
}

TEST_F(ModuleManagerWire, categoriesAreAnyDataWhateverTheCode)
{
    for (const char* data : {"{}", "[]", "null", "7", "true", R"("文")"}) {
        expectCategories().reply(200, R"({"code":5,"data":)" + std::string(data) + "}");
        EXPECT_TRUE(categoriesOf()) << data;
        EXPECT_EQ(categories, utils::toWstring(std::string(data)));
    }
    expectQuiet();
}

TEST_F(ModuleManagerWire, categoriesComeFromTheModuleService)
{
    ScriptedServer modules;
    host.change([&](OrloConfig& config) { config.serviceUrls[L"module"] = modules.wideUrl() + L"/base"; });
    modules.expect("GET", std::string("/base") + categoriesTarget).reply(200, R"({"data":[]})");
    EXPECT_TRUE(categoriesOf());
}

TEST_F(ModuleManagerWire, categoriesWithoutDataAreNotNormal)
{
    for (const char* body : {"{}", R"({"code":10000,"Data":[]})", "[]", "7", R"("data")"}) {
        expectCategories().reply(200, body);
        EXPECT_FALSE(categoriesOf()) << body;
        expectNotNormal(L"GetModuleCategories - response is not normal: " + (body == std::string(R"({"code":10000,"Data":[]})")
                                                                                 ? std::wstring(LR"({"Data":[],"code":10000})")
                                                                                 : utils::toWstring(std::string(body))));
    }
    expectCategories().reply(200);
    EXPECT_FALSE(categoriesOf());
    expectNotNormal(L"GetModuleCategories - response is not normal: null");
    EXPECT_EQ(categories, L"before");
}

TEST_F(ModuleManagerWire, categoriesNeedEveryPartOfTheirAddress)
{
    ModuleManager& modules = manager();
    expectRefusedAsEmpty(modules.GetCategories(L"", L"p-1", L"beam", L"tree-1", categories, error));
    expectRefusedAsEmpty(modules.GetCategories(L"projects", L"", L"beam", L"tree-1", categories, error));
    expectRefusedAsEmpty(modules.GetCategories(L"projects", L"p-1", L"", L"tree-1", categories, error));
    expectRefusedAsEmpty(modules.GetCategories(L"projects", L"p-1", L"beam", L"", categories, error));
    EXPECT_EQ(categories, L"before");
}

TEST_F(ModuleManagerWire, categoriesFailAsEveryRequestDoes)
{
    RequestingOperation operation;
    operation.method = "GET";
    operation.target = categoriesTarget;
    operation.failureWords = L"OrloWebService::GetModuleCategories - code:";
    operation.goodAnswer = R"({"data":[]})";
    operation.succeeds = [](ErrorCode& code) {
        std::wstring out;
        return IModuleManager::Get()->GetCategories(L"projects", L"p-1", L"beam", L"tree-1", out, code);
    };
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
}

TEST_F(ModuleManagerWire, whatIsNoPartOfAnAddressIsAnExceptionAndSendsNothing)
{
    for (const wchar_t* space : {L"项", L"a b"}) {
        EXPECT_FALSE(manager().GetCategories(L"projects", space, L"beam", L"tree", categories, error));
        const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
        ASSERT_NE(failure, nullptr);
        EXPECT_EQ(error.GetValue(), exceptionValue);
        EXPECT_EQ(failure->GetCode(), 5555);
        error.Clear();
    }
    EXPECT_EQ(categories, L"before");
}

// IsCanUpload

TEST_F(ModuleManagerWire, aModuleWithNothingAgainstItCanBeUploaded)
{
    expectCheck()
        .header("Content-Type", "application/json")
        .reply(200, R"({"code":5,"data":[{"error_code":"none"},{"error_code":"other"}]})");
    EXPECT_TRUE(canUpload(error));
    expectQuiet();
}

TEST_F(ModuleManagerWire, anyOtherWordIsARefusalWithThatWord)
{
    for (const std::wstring word : {L"name_exists", L"None", L"none ", L"", L"重名"}) {
        expectCheck().reply(200, R"({"code":10000,"data":[{"error_code":")" + utils::toString(word) + R"("}]})");
        EXPECT_FALSE(canUpload(error));
        expectRefusedWith(word);
    }
}

TEST_F(ModuleManagerWire, anAnswerWithoutAWordIsNotNormal)
{
    for (const std::string body :
         {"{}", R"({"data":null})", R"({"data":{}})", R"({"data":[]})", R"({"data":[7]})", R"({"data":[{}]})",
          R"({"data":[{"error_code":1}]})", R"({"data":[{"error_code":null}]})", R"({"data":[[{"error_code":"none"}]]})", "[]", "7"}) {
        expectCheck().reply(200, body);
        EXPECT_FALSE(canUpload(error)) << body;
        expectNotNormal(L"IsModuleCanUpload - response is not normal: " + utils::toWstring(body));
    }
}

TEST_F(ModuleManagerWire, aCheckNeedsItsSpaceASumANameAndAResourceType)
{
    ModuleManager& modules = manager();
    expectRefusedAsEmpty(modules.IsCanUpload(L"", L"p", L"a", L"5", L"n", L"c", L"r", L"t", error));
    expectRefusedAsEmpty(modules.IsCanUpload(L"s", L"", L"a", L"5", L"n", L"c", L"r", L"t", error));
    expectRefusedAsEmpty(modules.IsCanUpload(L"s", L"p", L"a", L"", L"n", L"c", L"r", L"t", error));
    expectRefusedAsEmpty(modules.IsCanUpload(L"s", L"p", L"a", L"5", L"", L"c", L"r", L"t", error));
    expectRefusedAsEmpty(modules.IsCanUpload(L"s", L"p", L"a", L"5", L"n", L"c", L"", L"t", error));
}

TEST_F(ModuleManagerWire, whatOnlyTheServiceUnderstandsGoesOutAsItIsEvenEmpty)
{
    server.expect("POST", "/s/p/types/module/vmd_file")
        .body(R"({"application_type":"","md5":"5","name":"n","category_id":"","resource_type":"r","target_module_uid":""})")
        .reply(200, R"({"data":[{"error_code":"none"}]})");
    EXPECT_TRUE(manager().IsCanUpload(L"s", L"p", L"", L"5", L"n", L"", L"r", L"", error));
}

TEST_F(ModuleManagerWire, aCheckFailsAsEveryRequestDoes)
{
    RequestingOperation operation;
    operation.method = "POST";
    operation.target = checkTarget;
    operation.body = checkBody;
    operation.failureWords = L"OrloWebService::IsModuleCanUpload - code:";
    operation.goodAnswer = R"({"data":[{"error_code":"none"}]})";
    operation.succeeds = [this](ErrorCode& code) { return canUpload(code); };
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
}

// AddModuleToProject

TEST_F(ModuleManagerWire, anAddedModuleIsItsIdAndItsVersion)
{
    expectModule()
        .header("Content-Type", "application/json")
        .reply(200,
               R"({"code":5,"data":[{"success":true,"error_code":"none","resource_id":"r-8","resource_version":2},{"success":false}]})");
    EXPECT_TRUE(add(error));
    EXPECT_EQ(resource, "r-8&2");
    expectQuiet();
}

TEST_F(ModuleManagerWire, anAnswerWithoutAModuleIsASuccessThatTellsNothing)
{
    expectModule().reply(200, R"({"data":[]})");
    EXPECT_TRUE(add(error));
    EXPECT_EQ(resource, "before");
    expectQuiet();
}

struct Receipt
{
    const char* json;
    const char* resource;
    const wchar_t* word; ///< null for a success
};

class ModuleReceipts : public ModuleManagerWire, public testing::WithParamInterface<Receipt>
{};

// Intended: the caller gets the id and the version of a refusal too.
TEST_P(ModuleReceipts, areReadFieldByField)
{
    expectModule().reply(200, R"({"data":[)" + std::string(GetParam().json) + "]}");
    EXPECT_EQ(add(error), GetParam().word == nullptr);
    EXPECT_EQ(resource, GetParam().resource);
    if (GetParam().word)
        expectRefusedWith(GetParam().word);
    expectQuiet();
}

INSTANTIATE_TEST_SUITE_P(
    ModuleManagerWire, ModuleReceipts,
    testing::Values(Receipt{R"({"success":true})", "&0", nullptr},
                    Receipt{R"({"success":true,"error_code":"odd","resource_id":"块-1","resource_version":-3})", "块-1&-3", nullptr},
                    Receipt{R"({"success":true,"resource_id":7,"resource_version":"2"})", "&0", nullptr},
                    Receipt{R"({"success":true,"resource_id":"r","resource_version":2147483647})", "r&2147483647", nullptr},
                    Receipt{R"({"success":true,"resource_id":"r","resource_version":2147483648})", "r&0", nullptr},
                    Receipt{R"({"success":true,"resource_id":"r","resource_version":2.5})", "r&0", nullptr},
                    Receipt{R"({"success":false,"error_code":"name_exists","resource_id":"r-8","resource_version":2})", "r-8&2",
                            L"name_exists"},
                    Receipt{R"({"error_code":"重名","resource_id":"r-8"})", "r-8&0", L"重名"},
                    Receipt{R"({"success":1,"error_code":null})", "&0", L""}, Receipt{R"({"success":"true"})", "&0", L""},
                    Receipt{"{}", "&0", L""}, Receipt{"7", "&0", L""}, Receipt{"null", "&0", L""}, Receipt{"[]", "&0", L""}));

TEST_F(ModuleManagerWire, anAnswerWhoseDataIsNoArrayIsNotNormalInTheWordsOfTheCategories)
{
    for (const std::string body : {"{}", R"({"data":null})", R"({"data":{"success":true}})", R"({"data":"[]"})", "[]", "7"}) {
        expectModule().reply(200, body);
        EXPECT_FALSE(add(error)) << body;
        expectNotNormal(L"GetModuleCategories - response is not normal: " + utils::toWstring(body));
    }
    EXPECT_EQ(resource, "before");
}

TEST_F(ModuleManagerWire, anAdditionNeedsASpaceAResourceTypeAndAFile)
{
    ModuleManager& modules = manager();
    expectRefusedAsEmpty(modules.AddModuleToProject(L"", L"p", newModule(), resource, error));
    expectRefusedAsEmpty(modules.AddModuleToProject(L"s", L"", newModule(), resource, error));
    for (std::wstring NewModule::*const text :
         {&NewModule::resourceType, &NewModule::fileKey, &NewModule::md5, &NewModule::name, &NewModule::url}) {
        NewModule module = newModule();
        (module.*text).clear();
        expectRefusedAsEmpty(modules.AddModuleToProject(L"s", L"p", module, resource, error));
    }
    EXPECT_EQ(resource, "before");
}

TEST_F(ModuleManagerWire, anAdditionWithoutACategoryIsLeftToTheService)
{
    NewModule module = newModule();
    module.applicationType.clear();
    module.categoryId.clear();
    server.expect("POST", modulesTarget)
        .body(R"({"vmd_files":[{"application_type":"","category_id":"","resource_type":"beam","access_ctl":"private_ctl",)"
              R"("file_key":"key/1","enforce":true,"md5":"0cc1","name":"门","url":"http://store/1?sig=1"}]})")
        .reply(200, R"({"data":[{"error_code":"category_not_found"}]})");
    EXPECT_FALSE(manager().AddModuleToProject(L"projects", L"p-1", module, resource, error));
    expectRefusedWith(L"category_not_found");
}

TEST_F(ModuleManagerWire, anAdditionFailsAsEveryRequestDoesInTheWordsOfTheCategories)
{
    RequestingOperation operation;
    operation.method = "POST";
    operation.target = modulesTarget;
    operation.body = moduleBody;
    operation.failureWords = L"OrloWebService::GetModuleCategories - code:"; // on purpose
    operation.goodAnswer = R"({"data":[{"success":true}]})";
    operation.succeeds = [this](ErrorCode& code) { return add(code); };
    expectFailuresOf(operation, server, log);
    expectSuccessAtLast(operation, server, log);
}

// Each in its frame

TEST_F(ModuleManagerWire, anEarlierErrorIsLoggedAndHoldsNothingUp)
{
    const auto expectTold = [&](const std::wstring& function, const std::function<void()>& call) {
        error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
        call();
        EXPECT_EQ(log.lines(), Lines{L"E@orlo::ModuleManager::" + function + L" 传入的ErrorCode，已有错误存在:earlier"});
        log.clear();
    };
    expectCategories().reply(200, R"({"data":[]})");
    expectCheck().reply(200, R"({"data":[{"error_code":"none"}]})");
    expectModule().reply(200, R"({"data":[]})");
    expectTold(L"GetCategories", [&] { EXPECT_TRUE(categoriesOf()); });
    expectTold(L"IsCanUpload", [&] { EXPECT_TRUE(canUpload(error)); });
    expectTold(L"AddModuleToProject", [&] { EXPECT_TRUE(add(error)); });
}

TEST_F(ModuleManagerWire, noSecretIsLogged)
{
    expectModule().reply(403, R"({"message":"no","url":"http://store/1?sig=abc"})");
    EXPECT_FALSE(add(error));
    EXPECT_FALSE(log.holds(L"sig="));
    EXPECT_FALSE(log.holds(L"token-secret-1"));
}

} // namespace
} // namespace orlo::test
