#include "support/ProcessProbe.h"
#include "support/RawServer.h"
#include "support/Sanitized.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

#include <fstream>

namespace orlo::test {
namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// One wide character for each of the first MiB's bytes.
std::wstring widenedHead(const std::string& content)
{
    std::wstring wide;
    for (std::size_t i = 0; i < std::min(content.size(), mebibyte); ++i)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(content[i]));
    return wide;
}

class LargeDownloadTest : public TransferTest
{
protected:
    PromiseData download() { return outcomeOf(HttpClient::downloadFile(L"remote/plan.dwg", target, error)); }

    void giveAddress(const std::string& address)
    {
        platform.expect("POST", "/file/read").body("remote/plan.dwg").reply(200, authority("x", address));
    }

    void expectFile(const Reply& reply)
    {
        giveAddress(atStore("/b"));
        store.expect("GET", "/b").reply(reply);
    }

    void expectNothingLeft() const { EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{}); }

    void allowUnpacked(unsigned long long bytes)
    {
        host.change([&](OrloConfig& config) { config.largestUnpackedFile = bytes; });
    }

    const std::wstring target = wideLocalPath("plan.dwg");
};

/// Sends the first part of a body, and the rest when it is told to.
class TwoParts
{
public:
    TwoParts(std::string first, std::string second)
        : m_server([this, first = std::move(first), second = std::move(second)](Connection& connection) {
              Request request;
              if (readRequest(connection, request) != ReadResult::request)
                  return;
              connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(first.size() + second.size()) + "\r\n\r\n" + first);
              waitUntil([this] { return m_goesOn.load(); });
              connection.write(second);
          })
    {}

    std::string url() const { return m_server.url(); }
    void goOn() { m_goesOn = true; }

private:
    std::atomic<bool> m_goesOn{false};
    SocketServer m_server;
};

TEST_F(LargeDownloadTest, liesBesideItsPlaceUntilItIsWhole)
{
    const std::string content = patterned(3 * mebibyte);
    TwoParts parts(content.substr(0, 2 * mebibyte), content.substr(2 * mebibyte));
    giveAddress(parts.url() + "/b");
    std::filesystem::create_directories(localPath(""));
    writeFile(localPath("plan.dwg"), "what was there before");
    auto future = HttpClient::downloadFile(L"remote/plan.dwg", target, error);
    const auto besides = [&] {
        for (const std::string& file : filesBelow(localPath(""))) {
            if (utils::isHalfMadeName(utils::toWstring(file)))
                return true;
        }
        return false;
    };
    EXPECT_TRUE(waitUntil(besides));
    EXPECT_EQ(readFile(localPath("plan.dwg")), "what was there before");
    parts.goOn();
    expectOutcome(outcomeOf(future), true, 200, target);
    EXPECT_TRUE(readFile(localPath("plan.dwg")) == content);
    EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/plan.dwg"});
}

TEST_F(LargeDownloadTest, ofAMebibyteIsWrittenInOneGo)
{
    for (const std::size_t size : {mebibyte - 1, mebibyte, mebibyte + 1}) {
        const std::string content = patterned(size);
        expectFile(fileReply(content));
        expectOutcome(download(), true, 200, target);
        EXPECT_TRUE(readFile(localPath("plan.dwg")) == content) << size;
        EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/plan.dwg"}) << size;
    }
}

TEST_F(LargeDownloadTest, thatCanNotBeWrittenFailsWithItsFirstMebibyteAsTheMessage)
{
    const std::string content = patterned(3 * mebibyte);
    std::filesystem::create_directories(localPath("plan.dwg/inner"));
    for (const std::wstring& path : {target, wideLocalPath(std::string(300, 'n')), target + L"/none/plan.dwg"}) {
        expectFile(fileReply(content));
        const PromiseData outcome = outcomeOf(HttpClient::downloadFile(L"remote/plan.dwg", path, error));
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, 200);
        EXPECT_TRUE(outcome.message == widenedHead(content));
    }
    expectNothingLeft();
    expectClear(error);
}

TEST_F(LargeDownloadTest, thatBreaksOffLeavesTheOldFileAndNothingElse)
{
    const RawServer broken(RawAnswer::resetAfter(rawOk(patterned(4 * mebibyte)), 3 * mebibyte));
    giveAddress(broken.url() + "/b");
    std::filesystem::create_directories(localPath(""));
    writeFile(localPath("plan.dwg"), "what was there before");
    const PromiseData outcome = download();
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_EQ(readFile(localPath("plan.dwg")), "what was there before");
    EXPECT_TRUE(waitUntil([&] { return filesBelow(host.folder().path()) == std::vector<std::string>{"Local/plan.dwg"}; }));
}

TEST_F(LargeDownloadTest, isRepeatedWhole)
{
    const RetryLimit once(1);
    const std::string content = patterned(3 * mebibyte);
    giveAddress(atStore("/b"));
    Reply partly = fileReply(content);
    store.expect("GET", "/b").reply(503, std::string(2 * mebibyte, 'e'));
    store.expect("GET", "/b").reply(fileReply(content));
    expectOutcome(download(), true, 200, target);
    EXPECT_TRUE(readFile(localPath("plan.dwg")) == content);
    EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/plan.dwg"});
}

TEST_F(LargeDownloadTest, isUnpackedAsItComes)
{
    const std::string content(40 * mebibyte, 'z');
    expectFile(fileReply(gzipOf(content), "gzip"));
    expectOutcome(download(), true, 200, target);
    EXPECT_TRUE(readFile(localPath("plan.dwg")) == content);
}

TEST_F(LargeDownloadTest, isUnpackedNoFurtherThanTheHostAllows)
{
    allowUnpacked(4 * mebibyte);
    expectFile(fileReply(gzipOf(std::string(4 * mebibyte, 'z')), "gzip"));
    expectOutcome(download(), true, 200, target);
    std::filesystem::remove(localPath("plan.dwg"));
    expectFile(fileReply(gzipOf(std::string(4 * mebibyte + 1, 'z')), "gzip"));
    expectOutcome(download(), false, 5555, L"a compressed answer is too large");
    EXPECT_TRUE(waitUntil([&] { return filesBelow(host.folder().path()).empty(); }));
}

TEST_F(LargeDownloadTest, whosePackedBytesEndTooSoonIsNoFile)
{
    const std::string packed = gzipOf(patterned(3 * mebibyte));
    expectFile(fileReply(packed.substr(0, packed.size() - 9), "gzip"));
    expectOutcome(download(), false, 5555, L"a compressed answer is cut short");
    EXPECT_TRUE(waitUntil([&] { return filesBelow(host.folder().path()).empty(); }));
}

TEST_F(LargeDownloadTest, thatIsPackedWithoutAWordAboutItIsRefused)
{
    const std::string packed = gzipOf(incompressible(2 * mebibyte));
    ASSERT_GT(packed.size(), mebibyte);
    expectFile(fileReply(packed));
    expectOutcome(download(), false, 500, L"a_gzip_stream_extracted");
    EXPECT_TRUE(waitUntil([&] { return filesBelow(host.folder().path()).empty(); }));
}

TEST_F(LargeDownloadTest, thatIsRefusedKeepsTheFirstMebibyteOfTheWords)
{
    const std::string words(5 * mebibyte, 'w');
    expectFile([&] {
        Reply reply = fileReply(words);
        reply.status = 404;
        return reply;
    }());
    expectOutcome(download(), false, 404, std::wstring(mebibyte, L'w'));
    expectNothingLeft();
}

TEST_F(LargeDownloadTest, takesNoMoreMemoryThanASmallOne)
{
    if (isSanitized || !PeakMemory().isExact())
        GTEST_SKIP() << "the sanitizers keep what is freed, or the system doesn't forget the peak";
    constexpr std::size_t mebibytes = 192;
    const std::string piece = patterned(mebibyte);
    const SocketServer server([&](Connection& connection) {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(mebibytes << 20) + "\r\n\r\n");
        for (std::size_t i = 0; i < mebibytes && connection.write(piece); ++i) {
        }
    });
    giveAddress(server.url() + "/b");
    const PeakMemory memory;
    expectOutcome(download(), true, 200, target);
    EXPECT_EQ(std::filesystem::file_size(localPath("plan.dwg")), mebibytes << 20);
    EXPECT_LT(memory.mebibytes(), 32u);
}

class LargeUploadTest : public TransferTest
{
protected:
    static constexpr std::size_t largest = 16 * mebibyte; ///< that is read into memory

    PromiseData upload(const std::wstring& path) { return outcomeOf(HttpClient::uploadFile(error, path, L"n", L"p", false)); }

    /// Does something between the moment in which the file was opened and that in which it is sent.
    void whenAskedForAddress(std::function<void()> work)
    {
        platform.expect("PUT", "/file/new?fileName=n&filepath=p").replyWith([this, work = std::move(work)](const Request&) {
            work();
            Reply reply;
            reply.body = authority("r", atStore("/c"));
            return reply;
        });
    }

    void expectBytes(const std::string& content) { store.expect("PUT", "/c").body(content).reply(200, ""); }

    std::wstring file(const std::string& content) { return localFile("u", content); }
    std::filesystem::path filePath() const { return localPath("u"); }

    void expectChanged(const PromiseData& outcome)
    {
        constexpr const wchar_t* words = L"the file was changed while it was being uploaded";
        expectOutcome(outcome, false, 5555, words);
        expectHttpError(error, exceptionValue, L"generic exception", words, 5555);
    }
};

TEST_F(LargeUploadTest, isSentThoughItsNameIsGone)
{
    const std::string content = patterned(largest + 1);
    const std::wstring path = file(content);
    whenAskedForAddress([path] { EXPECT_TRUE(utils::removeFile(path)); });
    expectBytes(content);
    expectOutcome(upload(path), true, 200, L"r");
    expectClear(error);
}

TEST_F(LargeUploadTest, isSentThoughAnotherFileHasItsName)
{
    const std::string content = patterned(largest + 4711);
    const std::wstring path = file(content);
    whenAskedForAddress([path] { EXPECT_TRUE(utils::writeFileAtomically(path, "another one")); });
    expectBytes(content);
    expectOutcome(upload(path), true, 200, L"r");
    EXPECT_EQ(error.isClear(), true);
}

TEST_F(LargeUploadTest, isSentAgainFromItsBeginning)
{
    const RetryLimit once(1);
    const std::string content = incompressible(largest + 3 * mebibyte);
    whenAskedForAddress([] {});
    store.expect("PUT", "/c").body(content).reply(503, "busy");
    expectBytes(content);
    expectOutcome(upload(file(content)), true, 200, L"r");
}

TEST_F(LargeUploadTest, thatWasWrittenToBeforeItIsSentFails)
{
    const RetryLimit more(2);
    const std::wstring path = file(patterned(largest + 1));
    whenAskedForAddress([this] { std::ofstream(filePath(), std::ios::app) << "more"; });
    expectChanged(upload(path));
    EXPECT_EQ(store.requestCount(), 0U);
}

TEST_F(LargeUploadTest, thatWasWrittenToBetweenTwoAttemptsFails)
{
    const RetryLimit more(2);
    const std::string content = patterned(largest + 1);
    whenAskedForAddress([] {});
    store.expect("PUT", "/c").body(content).replyWith([this](const Request&) {
        std::fstream(filePath(), std::ios::in | std::ios::out) << "other bytes";
        Reply reply;
        reply.status = 503;
        return reply;
    });
    expectChanged(upload(file(content)));
}

TEST_F(LargeUploadTest, thatWasWrittenToWhileItWasSentFailsThoughTheStoreTookIt)
{
    const std::string content = patterned(largest + 1);
    whenAskedForAddress([] {});
    store.expect("PUT", "/c").body(content).replyWith([this](const Request&) {
        std::fstream(filePath(), std::ios::in | std::ios::out) << "other bytes";
        return Reply{};
    });
    expectChanged(upload(file(content)));
}

TEST_F(LargeUploadTest, thatGetsShorterWhileItIsSentFails)
{
    const std::wstring path = file(patterned(4 * largest));
    const SocketServer stubborn([this](Connection& connection) {
        std::string received;
        while (received.size() < mebibyte && connection.read(received)) {
        }
        std::filesystem::resize_file(filePath(), mebibyte);
        while (connection.read(received)) {
        }
    });
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", stubborn.url() + "/c"));
    expectChanged(upload(path));
}

TEST_F(LargeUploadTest, ofSixteenMebibytesIsReadBefore)
{
    const std::string content = patterned(largest);
    const std::wstring path = file(content);
    whenAskedForAddress([this] { std::fstream(filePath(), std::ios::in | std::ios::out) << "other bytes"; });
    expectBytes(content);
    expectOutcome(upload(path), true, 200, L"r");
}

TEST_F(LargeUploadTest, takesNoMoreMemoryThanASmallOne)
{
    if (isSanitized || !PeakMemory().isExact())
        GTEST_SKIP() << "the sanitizers keep what is freed, or the system doesn't forget the peak";
    constexpr std::size_t mebibytes = 192;
    std::filesystem::create_directories(localPath(""));
    {
        std::ofstream large(filePath(), std::ios::binary);
        const std::string piece = patterned(mebibyte);
        for (std::size_t i = 0; i < mebibytes; ++i)
            large << piece;
    }
    std::atomic<std::size_t> taken{0};
    const SocketServer sink([&](Connection& connection) {
        std::string piece;
        while (taken < (mebibytes << 20) && connection.read(piece)) {
            taken += piece.size();
            piece.clear();
        }
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    });
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", sink.url() + "/c"));
    const PeakMemory memory;
    expectOutcome(upload(wideLocalPath("u")), true, 200, L"r");
    EXPECT_GE(taken, mebibytes << 20);
    EXPECT_LT(memory.mebibytes(), 32u);
}

} // namespace
} // namespace orlo::test
