#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloLogging/ILogManager.h>

namespace orlo::test {
namespace {

/// Walks through transfers that fail in every way and looks at everything that is left behind: no address beyond its path,
/// no signature and no token stands anywhere.
class TransferSecretsTest : public TransferTest
{
protected:
    void remember(const PromiseData& outcome)
    {
        left.push_back(outcome.message);
        left.push_back(error.GetErrorMessage());
    }

    void runAll(const std::string& address)
    {
        platform.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", address));
        platform.always("POST", "/file/read").reply(200, authority("r", address));
        platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply({{"a/b", address}}));
        for (const bool gzip : {false, true})
            remember(outcomeOf(HttpClient::uploadFile(error, localFile("u", "content"), L"n", L"p", gzip)));
        remember(outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)));
        remember(outcomeOf(HttpClient::downloadFile(L"r", L"", error)));
        remember(outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr)));
    }

    void expectNothingSecret()
    {
        const auto files = filesBelow(host.folder().path());
        for (const wchar_t* secret : {L"token-secret-1", L"SIGNATURE", L"sig=", L"credential-1"}) {
            EXPECT_FALSE(log.holds(secret)) << utils::toString(secret);
            for (const std::wstring& text : left)
                EXPECT_EQ(text.find(secret), std::wstring::npos) << utils::toString(text);
            for (const std::string& file : files)
                EXPECT_EQ(file.find(utils::toString(secret)), std::string::npos) << file;
        }
    }

    std::vector<std::wstring> left;
};

constexpr const char* query = "?sv=1&cred=credential-1&sig=SIGNATURE%2B1";

TEST_F(TransferSecretsTest, nothingIsToldOfTransfersThatSucceed)
{
    store.always("PUT", std::string("/c/blob") + query).reply(200, "", "");
    store.always("GET", std::string("/c/blob") + query).reply(fileReply("content"));
    runAll(atStore(std::string("/c/blob") + query));
    expectNothingSecret();
}

TEST_F(TransferSecretsTest, nothingIsToldOfTransfersThatAreRefused)
{
    store.always("PUT", std::string("/c/blob") + query).reply(403, "no");
    store.always("GET", std::string("/c/blob") + query).reply(403, "no");
    runAll(atStore(std::string("/c/blob") + query));
    expectNothingSecret();
}

TEST_F(TransferSecretsTest, nothingIsToldOfTransfersThatBreak)
{
    store.always("PUT", std::string("/c/blob") + query).reset();
    store.always("GET", std::string("/c/blob") + query).reset();
    runAll(atStore(std::string("/c/blob") + query));
    expectNothingSecret();
}

TEST_F(TransferSecretsTest, nothingIsToldWhereNobodyListens)
{
    runAll(std::string("http://127.0.0.1:1/c/blob") + query);
    expectNothingSecret();
}

TEST_F(TransferSecretsTest, nothingIsToldOfAddressesThatAreNone)
{
    for (const char* head : {"", "c/blob", "http:/", "http://", "ht tp://h/", "http://127.0.0.1/图", "http://127.0.0.1/ <b>"}) {
        TransferTest::TearDown();
        ScriptedServer other;
        moveServices(host, other.url());
        const std::string address = std::string(head) + query;
        other.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", address));
        other.always("POST", "/file/read").reply(200, authority("r", address));
        other.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply({{"a/b", address}}));
        remember(outcomeOf(HttpClient::uploadFile(error, localFile("u", "content"), L"n", L"p", false)));
        remember(outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)));
        remember(outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr)));
    }
    expectNothingSecret();
}

TEST_F(TransferSecretsTest, theFileThatTheDefaultLoggerWritesIsCleanToo)
{
    ILogManager::Install(nullptr);
    store.always("PUT", std::string("/c/blob") + query).reply(403, "no");
    store.always("GET", std::string("/c/blob") + query).reply(403, "no");
    runAll(atStore(std::string("/c/blob") + query));
    const auto text = [&] {
        std::string all;
        for (const std::string& file : filesBelow(host.folder().path("Logs")))
            all += readFile(host.folder().path("Logs") / file);
        return all;
    };
    ASSERT_TRUE(waitUntil([&] { return text().find("END TO GetFileByStreamModeAsync") != std::string::npos; }));
    EXPECT_EQ(text().find("SIGNATURE"), std::string::npos);
    EXPECT_EQ(text().find("credential-1"), std::string::npos);
    EXPECT_EQ(text().find("token-secret-1"), std::string::npos);
}

} // namespace
} // namespace orlo::test
