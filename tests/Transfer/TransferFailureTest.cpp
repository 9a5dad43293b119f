#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <algorithm>

namespace orlo::test {
namespace {

enum class Road { upload, compressedUpload, download, batch };

/// How a server breaks a connection, and what is told of it; the code is the transport's number.
struct Break
{
    const char* name;
    RawAnswer answer;
    const wchar_t* words;
    const wchar_t* why;
    int code;
};

const Break beforeHeaders[] = {
    {"resetBeforeHeaders", RawAnswer::resetBeforeAnswer(), L"Failed to read HTTP status line", L"Connection reset by peer", resetCode},
    {"closedBeforeHeaders", RawAnswer::bytes(""), L"Failed to read HTTP status line", L"Empty reply from server", abortedCode},
    {"noHttp", RawAnswer::bytes("garbage\r\n\r\n"), L"Invalid HTTP status line", L"Received HTTP/0.9 when not allowed", 0},
};

const Break inTheBody[] = {
    {"resetMidBody", RawAnswer::resetAfter(rawOk(std::string(1000, 'x')), 300), L"Failed to read response body",
     L"Connection reset by peer", resetCode},
    {"closedMidBody", RawAnswer::closeAfter(rawOk(std::string(1000, 'x')), 300), L"Failed to read response body",
     L"transfer closed with 792 bytes remaining to read", 2},
};

constexpr const wchar_t* refused = L"Failed to connect to any resolved endpoint (127.0.0.1:1: Connection refused)";

std::string nameOf(Road road)
{
    const char* const names[] = {"upload", "compressedUpload", "download", "batch"};
    return names[static_cast<int>(road)];
}

class TransferFailureTest : public TransferTest, public testing::WithParamInterface<Road>
{
protected:
    PromiseData run()
    {
        switch (GetParam()) {
        case Road::upload:
        case Road::compressedUpload:
            return outcomeOf(
                HttpClient::uploadFile(error, localFile("u", patterned(1000)), L"n", L"p", GetParam() == Road::compressedUpload));
        case Road::download:
            return outcomeOf(HttpClient::downloadFile(L"r", wideLocalPath("d"), error));
        default:
            return outcomeOf(HttpClient::downloadBatchFiles(error, "a", "ds-1", {"a/b"}, nullptr));
        }
    }

    void authoritiesGiveTheAddress()
    {
        const auto json = [](const std::string& body) {
            Reply reply;
            reply.body = body;
            return reply;
        };
        const auto one = [this, json](const Request&) { return json(authority("r", address)); };
        platform.always("PUT", "/file/new?fileName=n&filepath=p").replyWith(one);
        platform.always("POST", "/file/read").replyWith(one);
        platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").replyWith([this, json](const Request&) {
            return json(batchReply({{"a/b", address}}));
        });
    }

    void expectFailed(const PromiseData& outcome, const std::wstring& words, int code)
    {
        expectOutcome(outcome, false, 5555, words);
        expectHttpError(error, exceptionValue, L"generic exception", words, code);
        EXPECT_FALSE(std::filesystem::exists(localPath("d")));
        EXPECT_FALSE(std::filesystem::exists(cached("ds-1", "a/b")));
        EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
    }

    std::string address;
};

TEST_P(TransferFailureTest, thePlatformRefusesTheConnection)
{
    moveServices(host, closedAddress);
    expectFailed(run(), refused, unreachableCode);
}

TEST_P(TransferFailureTest, thePlatformBreaksOff)
{
    const auto breaksOff = [this](const Break& how) {
        SCOPED_TRACE(how.name);
        const RawServer broken(how.answer);
        moveServices(host, broken.url());
        expectFailed(run(), failedWith(broken.url(), how.words, how.why), how.code);
    };
    std::for_each(std::begin(beforeHeaders), std::end(beforeHeaders), breaksOff);
    std::for_each(std::begin(inTheBody), std::end(inTheBody), breaksOff);
}

TEST_P(TransferFailureTest, theStoreRefusesTheConnection)
{
    address = "http://127.0.0.1:1/c";
    authoritiesGiveTheAddress();
    expectFailed(run(), refused, unreachableCode);
}

TEST_P(TransferFailureTest, theStoreBreaksOff)
{
    const auto breaksOff = [this](const Break& how) {
        SCOPED_TRACE(how.name);
        const RawServer broken(how.answer);
        address = broken.url() + "/c";
        expectFailed(run(), failedWith(broken.url(), how.words, how.why), how.code);
    };
    authoritiesGiveTheAddress();
    std::for_each(std::begin(beforeHeaders), std::end(beforeHeaders), breaksOff);
    std::for_each(std::begin(inTheBody), std::end(inTheBody), breaksOff);
}

TEST_P(TransferFailureTest, theStoreBreaksAChunkedBodyOff)
{
    const RawServer broken(RawAnswer::bytes("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n40\r\nonly a few bytes of it"));
    address = broken.url() + "/c";
    authoritiesGiveTheAddress();
    const PromiseData outcome = run();
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, TransferFailureTest,
                         testing::Values(Road::upload, Road::compressedUpload, Road::download, Road::batch),
                         [](const auto& road) { return nameOf(road.param); });

} // namespace
} // namespace orlo::test
