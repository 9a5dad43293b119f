#include "support/TransferTestSupport.h"

namespace orlo::test {
namespace {

class ModuleDownloadTest : public TransferTest
{
protected:
    PromiseData download(const std::wstring& body)
    {
        return outcomeOf(HttpClient::downloadModuleFile(body, target, L"beam", L"team", L"t-1", error));
    }

    Expectation& expectAuthority()
    {
        return platform.expect("POST", "/team/t-1/types/beam/files/sign_download_url").body(R"({"key":"梁"})");
    }

    std::string reply(const std::string& address) const
    {
        return R"({"code":10000,"data":[{"file_key":"k","url_with_signature":")" + address +
               R"("},{"file_key":"other","url_with_signature":"http://127.0.0.1:1/never"}]})";
    }

    const std::wstring target = wideLocalPath("module.bin");
};

TEST_F(ModuleDownloadTest, takesTheAddressOfTheFirstElement)
{
    expectAuthority()
        .header("Authorization", "Bearer token-secret-1")
        .header("Content-Type", "text/plain; charset=utf-8")
        .reply(200, reply(atStore("/m?sig=1")));
    store.expect("GET", "/m?sig=1").withoutHeader("Authorization").reply(fileReply("module"));
    expectOutcome(download(LR"({"key":"梁"})"), true, 200, target);
    EXPECT_EQ(readFile(localPath("module.bin")), "module");
    expectClear(error);
}

TEST_F(ModuleDownloadTest, goesToTheModuleService)
{
    ScriptedServer modules;
    host.change([&](OrloConfig& config) { config.serviceUrls[L"module"] = modules.wideUrl(); });
    modules.expect("POST", "/team/t-1/types/beam/files/sign_download_url").body("{}").reply(200, reply(atStore("/m")));
    store.expect("GET", "/m").reply(fileReply("module"));
    EXPECT_TRUE(download(L"{}").success);
}

TEST_F(ModuleDownloadTest, refusesAnEmptyBodyAndSendsNothing)
{
    expectOutcome(download(L""), false, 400, L"invalid remote uri path");
    expectClear(error);
}

TEST_F(ModuleDownloadTest, endsWithTheStatusWhenTheAuthorityIsRefused)
{
    expectAuthority().reply(403, "no");
    expectOutcome(download(LR"({"key":"梁"})"), false, 403, L"");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::AcquireDownloadAuthorityAsyncForModuleFile - code:403"));
}

TEST_F(ModuleDownloadTest, anAuthorityWithoutAnElementFailsAtTheFile)
{
    for (const char* body : {"{}", R"({"data":[]})", R"({"data":{}})", R"({"data":[7]})", R"({"data":[{"file_key":"k"}]})"}) {
        log.clear();
        expectAuthority().reply(200, body);
        const PromiseData outcome = download(LR"({"key":"梁"})");
        EXPECT_FALSE(outcome.success) << body;
        EXPECT_EQ(outcome.status, 5555) << body;
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::GetFileAsync failsGetFile")) << body;
    }
}

TEST_F(ModuleDownloadTest, anAuthorityThatIsNoJsonReachesThePlainHandler)
{
    expectAuthority().reply(200, "garbage");
    EXPECT_EQ(download(LR"({"key":"梁"})").status, 5555);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::GetFileAsync failsAcquireDownloadModuleFileAuthority"));
}

} // namespace
} // namespace orlo::test
