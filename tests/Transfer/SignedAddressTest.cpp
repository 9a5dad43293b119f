#include "support/TransferTestSupport.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

/// Every kind of transfer sends a signed address as it stands.
class SignedAddressTest : public TransferTest
{
protected:
    void expectGoesOutAs(const std::string& given, const std::string& wire)
    {
        upload(given, wire);
        download(given, wire);
        stream(given, wire);
    }

    void upload(const std::string& given, const std::string& wire)
    {
        platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore(given)));
        store.expect("PUT", wire).body("x").header("Content-Type", "").withoutHeader("Authorization").reply(200, "", "");
        EXPECT_TRUE(outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)).success) << given;
    }
    void download(const std::string& given, const std::string& wire)
    {
        platform.expect("POST", "/file/read").body("r").reply(200, authority("r", atStore(given)));
        store.expect("GET", wire).withoutHeader("Authorization").reply(fileReply("x"));
        EXPECT_TRUE(outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)).success) << given;
    }
    void stream(const std::string& given, const std::string& wire)
    {
        expectBatch(R"(["a/b"])", {{"a/b", atStore(given)}});
        store.expect("GET", wire).withoutHeader("Authorization").reply(fileReply("x"));
        EXPECT_TRUE(outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr)).success) << given;
    }
};

TEST_F(SignedAddressTest, goesOutAsItStands)
{
    expectGoesOutAs("/c/b%2Fc%20d.dwg?sv=2020&sig=a%2Bb%2F%3D&se=2024-01-01T00%3A00%3A00Z&x",
                    "/c/b%2Fc%20d.dwg?sv=2020&sig=a%2Bb%2F%3D&se=2024-01-01T00%3A00%3A00Z&x");
    expectGoesOutAs("/c/a+b;c=d,e'(f)*!~@$?a=b&a=b&&=&sig=+/=:@!$'()*,;", "/c/a+b;c=d,e'(f)*!~@$?a=b&a=b&&=&sig=+/=:@!$'()*,;");
}

TEST_F(SignedAddressTest, blanksGoOutAsPercent20)
{
    expectGoesOutAs("/c/a b  c.dwg?sig=x y", "/c/a%20b%20%20c.dwg?sig=x%20y");
}

TEST_F(SignedAddressTest, keepsEmptyAndDottedStepsOfItsPath)
{
    expectGoesOutAs("/c//b/./d/../e?sig=1", "/c//b/./d/../e?sig=1");
}

TEST_F(SignedAddressTest, keepsTwoSlashesAtTheHeadOfItsPath)
{
    expectGoesOutAs("//c/b?sig=1", "//c/b?sig=1");
}

TEST_F(SignedAddressTest, goesToTheRootWithoutAPath)
{
    expectGoesOutAs("?sig=1", "/?sig=1");
    expectGoesOutAs("/", "/");
}

TEST_F(SignedAddressTest, anAddressWithPercentEncodedChineseGoesOutUnchanged)
{
    expectGoesOutAs("/c/%E5%9B%BE.dwg?sig=1", "/c/%E5%9B%BE.dwg?sig=1");
}

class BadAddressTest : public TransferTest, public testing::WithParamInterface<const char*>
{};

TEST_P(BadAddressTest, failsEveryKindOfTransferWithoutAWordOfTheAddress)
{
    const std::string address = GetParam();
    platform.anyOrder();
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", address));
    platform.expect("POST", "/file/read").body("r").reply(200, authority("r", address));
    expectBatch(R"(["a/b"])", {{"a/b", address}});
    const PromiseData outcomes[] = {outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)),
                                    outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error)),
                                    outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr))};
    for (const PromiseData& outcome : outcomes) {
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, 5555);
        EXPECT_NE(outcome.message, L"");
        EXPECT_EQ(outcome.message.find(L"SECRET"), std::wstring::npos) << utils::toString(outcome.message);
    }
    EXPECT_FALSE(log.holds(L"SECRET"));
    EXPECT_EQ(error.GetErrorMessage().find(L"SECRET"), std::wstring::npos);
    EXPECT_FALSE(std::filesystem::exists(localPath("d")));
}

INSTANTIATE_TEST_SUITE_P(WithoutASchemeOrAHost, BadAddressTest,
                         testing::Values("no address at all SECRET", "/c/SECRET?sig=SECRET", "http:///SECRET?sig=SECRET", "?sig=SECRET"));
INSTANTIATE_TEST_SUITE_P(OfAnotherScheme, BadAddressTest,
                         testing::Values("ftp://127.0.0.1/SECRET?sig=SECRET", "file:///etc/SECRET", "ws://127.0.0.1/SECRET"));
INSTANTIATE_TEST_SUITE_P(WithCharactersThatNoAddressHolds, BadAddressTest,
                         testing::Values("http://127.0.0.1/图?sig=SECRET", "http://127.0.0.1/a|b?sig=SECRET",
                                         "http://127.0.0.1/a\\r\\nX-Evil: 1?sig=SECRET", "http://127.0.0.1:x/?sig=SECRET"));
INSTANTIATE_TEST_SUITE_P(WhereNobodyListens, BadAddressTest, testing::Values("http://127.0.0.1:1/c?sig=SECRET"));

} // namespace
} // namespace orlo::test
