#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/NetworkProject/Transfer/StreamWeb.h>
#include <OrloProjectManager/NetworkProject/Transfer/TransferWeb.h>
#include <OrloProjectManager/Transfer/TransferChain.h>

#include <future>

namespace orlo::test {
namespace {

/// What a step told its handler.
struct Told
{
    int status;
    std::wstring body;
    std::vector<unsigned char> data;
    std::string stepKey;
    bool propagate;
};

class StepListener : public IOrloFileCallback
{
public:
    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode&) override
    {
        m_told.set_value({status, body, {}, stepKey, context->propagate});
    }
    void on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data, const std::string& stepKey,
                     std::shared_ptr<OrloCallbackContext> context, ErrorCode&) override
    {
        m_told.set_value({status, body, data, stepKey, context->propagate});
    }

    Told told()
    {
        auto future = m_told.get_future();
        if (future.wait_for(std::chrono::seconds(60)) == std::future_status::ready)
            return future.get();
        ADD_FAILURE() << "the step tells nothing";
        return {};
    }

private:
    std::promise<Told> m_told;
};

class TransferWebTest : public TransferTest
{
protected:
    void expectTold(int status, const std::wstring& body, const std::string& stepKey, bool propagate)
    {
        const Told told = listener->told();
        EXPECT_EQ(told.status, status);
        EXPECT_EQ(told.body, body);
        EXPECT_EQ(told.stepKey, stepKey);
        EXPECT_EQ(told.propagate, propagate);
        EXPECT_EQ(told.data.size(), 0U);
    }

    const std::shared_ptr<StepListener> listener = std::make_shared<StepListener>();
    const std::shared_ptr<ChainContext> context = std::make_shared<ChainContext>(listener, true);
    const std::string content = "content";
};

TEST_F(TransferWebTest, anAuthorityHandsTheWholeBodyOn)
{
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, R"( { "a" : [1, "文"] } )");
    OrloWebService::AcquireUploadAuthorityAsync(context->error, L"n", L"p", context);
    expectTold(200, LR"({"a":[1,"文"]})", "AcquireUploadAuthority", true);
}

TEST_F(TransferWebTest, anAuthorityByArkivHandsTheDataOn)
{
    platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=n&filepath=p&targetFolderId=t").reply(200, R"({"data":{"a":1}})");
    OrloWebService::AcquireUploadAuthorityByArkivAsync(context->error, L"n", L"p", L"t", context);
    expectTold(200, LR"({"a":1})", "AcquireUploadAuthority", true);
}

TEST_F(TransferWebTest, aRefusedAuthorityClearsTheFlagFirst)
{
    platform.expect("POST", "/file/read").anyBody().reply(404, "no");
    OrloWebService::AcquireDownloadAuthorityAsync(context->error, L"r", context);
    expectTold(404, L"", "AcquireDownloadAuthority", false);
}

TEST_F(TransferWebTest, aBatchAuthorityWithoutSeedsIsRefusedBeforeOneWithoutADataset)
{
    EXPECT_FALSE(OrloWebService::AcquireBatchDownloadAuthorityAsync(error, "", {}, context));
    expectTold(400, L"seeds is empty", "AcquireBatchDownloadAuthority", false);
    expectGenericError(error, badInputValue, L"GenericError", L"seeds is empty");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK][OrloWebService::AcquireBatchDownloadAuthorityAsync] seeds is empty"});
}

TEST_F(TransferWebTest, aBatchAuthorityThatIsSentSaysSo)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").body(R"(["a\"b\\c"])").reply(200, "[]");
    EXPECT_TRUE(OrloWebService::AcquireBatchDownloadAuthorityAsync(context->error, "ds-1", {"a\"b\\c"}, context));
    expectTold(200, L"[]", "AcquireBatchDownloadAuthority", true);
}

TEST_F(TransferWebTest, aPutHandsTheStoresJsonOn)
{
    store.expect("PUT", "/b").body("content").reply(200, R"({ "data" : 7 })", "text/plain");
    EXPECT_TRUE(OrloWebService::PutFileAsync(context->error, atStore("/b"), content, context, false));
    expectTold(200, LR"({"data":7})", "PutFile", true);
}

TEST_F(TransferWebTest, aPutThatCanNotBeCompressedSaysSo)
{
    OrloWebService::setCompressorMaker([] { return std::unique_ptr<web::http::compression::compress_provider>(); });
    EXPECT_FALSE(OrloWebService::PutFileAsync(context->error, atStore("/b"), content, context, true));
    OrloWebService::setCompressorMaker(nullptr);
    EXPECT_EQ(listener->told().stepKey, "PutFile");
    log.clear(); // its BEGIN line has no end
}

TEST_F(TransferWebTest, aFileComesAsBytesAndAsOneCharacterForEachByte)
{
    store.expect("GET", "/b").reply(fileReply("a\xFF"));
    OrloWebService::GetFileAsync(context->error, utils::toWstring(atStore("/b")), context);
    const Told told = listener->told();
    EXPECT_EQ(told.status, 200);
    EXPECT_EQ(told.body, L"a\u00FF");
    EXPECT_EQ(told.data, (std::vector<unsigned char>{'a', 0xFF}));
    EXPECT_EQ(told.stepKey, "GetFile");
}

TEST_F(TransferWebTest, aFailedMoveClearsTheFlagAndKeepsTheStatus)
{
    const std::wstring target = wideLocalPath("t");
    localFile("t/in-the-way", "");
    store.expect("GET", "/b").reply(fileReply("x"));
    OrloWebService::GetFileByStreamModeAsync(context->error, utils::toWstring(atStore("/b")), target, context);
    expectTold(200, L"", "GetFileByStreamMode", false);
}

TEST_F(TransferWebTest, withoutAHandlerNobodyIsToldAndNothingBreaks)
{
    context->handler = nullptr;
    platform.anyOrder();
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, "{}");
    platform.expect("POST", "/file/read").anyBody().reset();
    store.anyOrder();
    store.expect("PUT", "/b").anyBody().reply(404, "");
    store.expect("GET", "/b").reply(fileReply("x"));
    store.expect("GET", "/s").reply(fileReply("x"));
    const auto other = [] { return std::make_shared<ChainContext>(nullptr, true); };
    const auto contexts = {other(), other(), other(), other(), other()};
    const auto* const at = contexts.begin();
    OrloWebService::AcquireUploadAuthorityAsync(at[0]->error, L"n", L"p", at[0]);
    OrloWebService::AcquireDownloadAuthorityAsync(at[1]->error, L"r", at[1]);
    OrloWebService::PutFileAsync(at[2]->error, atStore("/b"), content, at[2], false);
    OrloWebService::GetFileAsync(at[3]->error, utils::toWstring(atStore("/b")), at[3]);
    OrloWebService::GetFileByStreamModeAsync(at[4]->error, utils::toWstring(atStore("/s")), wideLocalPath("s"), at[4]);
    EXPECT_FALSE(OrloWebService::AcquireBatchDownloadAuthorityAsync(error, "ds-1", {}, context));
    EXPECT_TRUE(waitUntil([&] { return platform.requestCount() == 2 && store.requestCount() == 3; }));
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(localPath("s")); }));
}

} // namespace
} // namespace orlo::test
