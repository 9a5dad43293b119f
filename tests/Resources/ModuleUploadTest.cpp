#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Resources/ModuleManager.h>
#include <OrloProjectManager/Transfer/ModuleUpload.h>

#include <fstream>

namespace orlo::test {
namespace {

constexpr const char* signTarget = "/projects/p-1/types/beam/files/sign_upload_url";
constexpr const char* signBody = R"({"access_ctl":"private_ctl","fileName":"门 一","md5":"0cc1"})";
constexpr long long noParameterValue = 3892314117;

std::string signedFor(const std::string& address)
{
    return R"({"code":10000,"data":[{"file_key":"键/1","url_with_signature":")" + address +
           R"("},{"file_key":"other","url_with_signature":"http://127.0.0.1:1/never"}]})";
}

class ModuleUploadTest : public TransferTest
{
protected:
    PromiseData upload(const std::wstring& path, bool gzip = false)
    {
        return outcomeOf(HttpClient::uploadModule(error, L"projects", L"p-1", L"beam", path, L"门 一", L"0cc1", gzip));
    }
    PromiseData upload() { return upload(file); }

    Expectation& expectSigning() { return platform.expect("POST", signTarget).body(signBody); }
    void signingGives(const std::string& pathAndQuery) { expectSigning().reply(200, signedFor(atStore(pathAndQuery))); }

    std::wstring resultFor(const std::string& pathAndQuery) const
    {
        return LR"({"fileKey":"键/1","url":")" + utils::toWstring(atStore(pathAndQuery)) + LR"("})";
    }

    const std::wstring file = localFile("door.vmd", "bytes of a door");
};

TEST_F(ModuleUploadTest, signsAnAddressAndSendsTheBytesThere)
{
    expectSigning()
        .header("Authorization", "Bearer token-secret-1")
        .header("Content-Type", "application/json")
        .reply(200, signedFor(atStore("/m/1?sig=abc")));
    store.expect("PUT", "/m/1?sig=abc")
        .body("bytes of a door")
        .header("Content-Type", "")
        .withoutHeader("Authorization")
        .withoutHeader("Content-Encoding");
    expectOutcome(upload(), true, 200, resultFor("/m/1?sig=abc"));
    expectClear(error);
    EXPECT_FALSE(log.holds(L"sig="));
}

TEST_F(ModuleUploadTest, signsAtTheModuleService)
{
    ScriptedServer modules;
    host.change([&](OrloConfig& config) { config.serviceUrls[L"module"] = modules.wideUrl(); });
    modules.expect("POST", signTarget).body(signBody).reply(200, signedFor(atStore("/m")));
    store.expect("PUT", "/m").anyBody();
    EXPECT_TRUE(upload().success);
}

TEST_F(ModuleUploadTest, whateverTheStoreAnswersTheResultIsOfTheSigning)
{
    for (const char* answer : {"", "garbage", R"({"data":{"fileId":"f"}})"}) {
        signingGives("/m");
        store.expect("PUT", "/m").anyBody().reply(200, answer);
        expectOutcome(upload(), true, 200, resultFor("/m"));
    }
}

TEST_F(ModuleUploadTest, blanksOfAnAddressAreEncodedAndTheResultHasItAsItCame)
{
    signingGives("/m 1?sig=a b");
    store.expect("PUT", "/m%201?sig=a%20b").anyBody();
    expectOutcome(upload(), true, 200, resultFor("/m 1?sig=a b"));
}

TEST_F(ModuleUploadTest, packsTheBytesWhereThatIsWanted)
{
    signingGives("/m");
    store.expect("PUT", "/m").anyBody().header("Content-Encoding", "gzip");
    EXPECT_TRUE(upload(file, true).success);
    const std::string body = store.requests().at(0).body;
    EXPECT_EQ(body.substr(0, 2), "\x1f\x8b");
}

TEST_F(ModuleUploadTest, sendsALargeFileFromWhereItLies)
{
    const std::string content = patterned((16U << 20) + 1);
    signingGives("/m");
    store.expect("PUT", "/m").body(content).header("Content-Length", "16777217");
    EXPECT_TRUE(upload(localFile("large.vmd", content)).success);
}

TEST_F(ModuleUploadTest, aLargeFileThatIsChangedMeanwhileFails)
{
    const std::wstring path = localFile("large.vmd", patterned((16U << 20) + 1));
    expectSigning().replyWith([&](const Request&) {
        std::ofstream(localPath("large.vmd"), std::ios::binary | std::ios::app) << "more";
        Reply reply;
        reply.body = signedFor(atStore("/m"));
        return reply;
    });
    const PromiseData outcome = upload(path);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_NE(outcome.message.find(L"changed"), std::wstring::npos) << utils::toString(outcome.message);
}

TEST_F(ModuleUploadTest, refusesAPathWithoutAFileAndSendsNothing)
{
    for (const std::wstring& path : {wideLocalPath("missing.vmd"), std::wstring(), host.folder().wide()})
        expectOutcome(upload(path), false, 400, L"invalid file path");
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ModuleUploadTest, refusesAFileThatCanNotBeRead)
{
    expectOutcome(upload(L"/proc/self/mem"), false, 400, L"read file fail");
    expectClear(error);
}

TEST_F(ModuleUploadTest, refusesAFileOfZeroBytesAndSendsNothing)
{
    expectOutcome(upload(localFile("empty.vmd", "")), false, 400, L"invalid file content");
    expectClear(error);
}

TEST_F(ModuleUploadTest, needsEveryTextForTheSigning)
{
    const std::vector<std::wstring> texts{L"projects", L"p-1", L"beam", L"门 一", L"0cc1"};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        std::vector<std::wstring> given = texts;
        given[i].clear();
        expectOutcome(outcomeOf(HttpClient::uploadModule(error, given[0], given[1], given[2], file, given[3], given[4], false)), false, 400,
                      L"param is empty");
        expectGenericError(error, noParameterValue, L"GenericError", L"param is empty");
        error.Clear();
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ModuleUploadTest, endsWithTheStatusWhereTheSigningIsRefused)
{
    for (const int status : {201, 204, 302, 403, 404, 500}) {
        log.clear();
        error.Clear();
        expectSigning().reply(status, "no");
        expectOutcome(upload(), false, status, L"");
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::SignModuleUploadUrl - code:" + std::to_wstring(status)));
        if (status >= 400)
            expectHttpError(error, errorStatusValue, L"HttpError", L"no", status);
        else
            expectClear(error);
    }
}

TEST_F(ModuleUploadTest, aSigningWithoutAnElementFailsAtTheStoreThatHasNoAddress)
{
    for (const char* body : {"{}", "[]", R"({"data":null})", R"({"data":{}})", R"({"data":[]})", R"({"data":[7]})", R"({"data":[{}]})",
                             R"({"data":[{"file_key":"k"}]})", R"({"data":[{"file_key":"k","url_with_signature":7}]})"}) {
        log.clear();
        error.Clear();
        expectSigning().reply(200, body);
        const PromiseData outcome = upload();
        EXPECT_FALSE(outcome.success) << body;
        EXPECT_EQ(outcome.status, 5555) << body;
        EXPECT_EQ(error.GetValue(), exceptionValue) << body;
    }
}

TEST_F(ModuleUploadTest, aSigningThatIsNoJsonIsALocalFailure)
{
    expectSigning().reply(200, "garbage");
    const PromiseData outcome = upload();
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
}

TEST_F(ModuleUploadTest, endsWithTheWordsOfTheStoreWhereThatRefuses)
{
    signingGives("/m");
    store.expect("PUT", "/m").anyBody().reply(403, "expired");
    expectOutcome(upload(), false, 403, L"expired");
    expectHttpError(error, errorStatusValue, L"HttpError", L"expired", 403);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::PutFileAsync - code:403"));
}

TEST_F(ModuleUploadTest, eachStepIsRepeatedWhereItMayPass)
{
    const RetryLimit two{2};
    expectSigning().reply(503, "busy");
    expectSigning().reset();
    signingGives("/m");
    store.expect("PUT", "/m").body("bytes of a door").reply(500, "busy");
    store.expect("PUT", "/m").body("bytes of a door").reset();
    store.expect("PUT", "/m").body("bytes of a door");
    expectOutcome(upload(), true, 200, resultFor("/m"));
    expectClear(error);
}

TEST_F(ModuleUploadTest, aFileWithoutAKeyIsASuccessOfTheChain)
{
    expectSigning().reply(200, R"({"data":[{"url_with_signature":")" + atStore("/m") + R"("}]})");
    store.expect("PUT", "/m").anyBody();
    expectOutcome(upload(), true, 200, LR"({"fileKey":"","url":")" + utils::toWstring(atStore("/m")) + LR"("})");
}

// What the handler makes of the steps by itself

class UploadModuleHandlerTest : public testing::Test
{
protected:
    void tell(int status, const std::wstring& body, const std::string& stepKey, bool propagate)
    {
        context->propagate = propagate;
        handler->on_complete(status, body, stepKey, context, context->error);
    }
    bool isOpen() const { return future.wait_for(std::chrono::seconds(0)) != std::future_status::ready; }

    LogCapture log;
    ErrorCode error;
    std::shared_ptr<TransferOutcome> outcome = std::make_shared<TransferOutcome>(error);
    std::future<PromiseData> future = outcome->future();
    std::shared_ptr<UploadModuleHandler> handler = std::make_shared<UploadModuleHandler>(outcome, UploadContent{"bytes", false, nullptr});
    std::shared_ptr<ChainContext> context = std::make_shared<ChainContext>(handler, true);
};

TEST_F(UploadModuleHandlerTest, aChainThatIsOverNeedsBothSteps)
{
    tell(200, L"", "PutFile", false);
    expectOutcome(future.get(), false, 200, L"");
}

TEST_F(UploadModuleHandlerTest, aFailedStepEndsAChainThatIsOverWithItsStatusAndBody)
{
    tell(418, L"a teapot", "SignModuleUploadUrl", false);
    expectOutcome(future.get(), false, 418, L"a teapot");
}

TEST_F(UploadModuleHandlerTest, theSigningAloneIsNotEnough)
{
    tell(200, LR"({"data":[{"file_key":"k","url_with_signature":"u"}]})", "SignModuleUploadUrl", false);
    expectOutcome(future.get(), false, 200, LR"({"data":[{"file_key":"k","url_with_signature":"u"}]})");
}

// Intended: a chain that goes on although the bytes are there has succeeded, signed or not.
TEST_F(UploadModuleHandlerTest, bytesThatAreThereWhileTheChainGoesOnAreASuccess)
{
    tell(200, L"", "PutFile", true);
    expectOutcome(future.get(), true, 200, LR"({"fileKey":"","url":""})");
}

TEST_F(UploadModuleHandlerTest, stepsOfOtherChainsAreNoneOfIts)
{
    tell(200, LR"({"data":[{"file_key":"k","url_with_signature":"u"}]})", "AcquireUploadAuthority", false);
    EXPECT_FALSE(future.get().success);
}

TEST_F(UploadModuleHandlerTest, aSecondEndIsLoggedAndTheFirstStands)
{
    tell(403, L"no", "SignModuleUploadUrl", false);
    tell(200, L"", "PutFile", true);
    expectOutcome(future.get(), false, 403, L"no");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0].find(L"E@UploadModuleHandler::on_complete [END_SET_FALSE_TO_PROMISE]"), 0u);
}

TEST_F(UploadModuleHandlerTest, behindTheSigningTheBytesAreTheLastStep)
{
    ScriptedServer store;
    const HostSetup host{store.url()};
    store.expect("PUT", "/m").body("bytes");
    tell(200, LR"({"data":[{"file_key":"k","url_with_signature":")" + store.wideUrl() + LR"(/m"}]})", "SignModuleUploadUrl", true);
    expectOutcome(outcomeOf(future), true, 200, LR"({"fileKey":"k","url":")" + store.wideUrl() + LR"(/m"})");
    EXPECT_FALSE(context->propagate);
    EXPECT_TRUE(waitUntil([&] { return log.lines().back().find(L"I [ORLOSDK]L\"END TO PutFile.") == 0; }));
}

// What the manager makes of the outcome

class ModuleManagerUpload : public ModuleUploadTest
{
protected:
    static constexpr const wchar_t* failed = L"E [ORLOSDK]ModuleManager::UploadModuleByArkiv 上传模块文件失败";

    std::shared_ptr<ICollaborationModule> uploadModule(const std::wstring& path)
    {
        auto& manager = dynamic_cast<ModuleManager&>(*IModuleManager::Get());
        return manager.UploadModule(L"projects", L"p-1", L"beam", path, L"门 一", L"0cc1", false, error);
    }
};

TEST_F(ModuleManagerUpload, givesTheKeyAndTheAddressOfTheFile)
{
    signingGives("/m?sig=1");
    store.expect("PUT", "/m?sig=1").body("bytes of a door");
    const auto module = uploadModule(file);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->GetFileKey(), L"键/1");
    EXPECT_EQ(module->GetUrl(), utils::toWstring(atStore("/m?sig=1")));
    EXPECT_FALSE(log.has(failed));
    expectClear(error);
}

TEST_F(ModuleManagerUpload, aFailureIsLoggedUnderAnOlderName)
{
    EXPECT_EQ(uploadModule(wideLocalPath("missing.vmd")), nullptr);
    EXPECT_EQ(log.lines(), Lines{failed});
    expectClear(error);
    expectSigning().reply(403, "no");
    EXPECT_EQ(uploadModule(file), nullptr);
    EXPECT_EQ(log.count(failed), 2u);
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 403);
}

TEST_F(ModuleManagerUpload, aFileWithoutAKeyIsAFailure)
{
    expectSigning().reply(200, R"({"data":[{"url_with_signature":")" + atStore("/m") + R"("}]})");
    store.expect("PUT", "/m").anyBody();
    EXPECT_EQ(uploadModule(file), nullptr);
    EXPECT_EQ(log.count(failed), 1u);
}

TEST_F(ModuleManagerUpload, looksAtAnEarlierErrorFirst)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    EXPECT_EQ(uploadModule(L""), nullptr);
    EXPECT_TRUE(log.has(L"E@orlo::ModuleManager::UploadModule 传入的ErrorCode，已有错误存在:earlier"));
}

TEST_F(ModuleManagerUpload, aDownloadThroughTheFaceIsThatOfAModulesFile)
{
    platform.expect("POST", "/team/t-1/types/beam/files/sign_download_url")
        .body(R"({"file_key":"键/1"})")
        .reply(200, signedFor(atStore("/m?sig=1")));
    store.expect("GET", "/m?sig=1").reply(fileReply("module"));
    const std::wstring target = wideLocalPath("module.vmd");
    expectOutcome(outcomeOf(IModuleManager::DownloadModuleFile(LR"({"file_key":"键/1"})", target, L"beam", L"team", L"t-1", error)), true,
                  200, target);
    EXPECT_EQ(readFile(localPath("module.vmd")), "module");
}

} // namespace
} // namespace orlo::test
