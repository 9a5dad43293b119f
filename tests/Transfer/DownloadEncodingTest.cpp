#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

/// A 200 with a gzip body in chunks that end where they are told to.
std::string chunkedGzip(const std::string& compressed, const std::vector<std::size_t>& sizes)
{
    std::string text = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n";
    std::size_t at = 0;
    for (const std::size_t size : sizes) {
        char head[32];
        std::snprintf(head, sizeof head, "%zx\r\n", size);
        text += head + compressed.substr(at, size) + "\r\n";
        at += size;
    }
    EXPECT_EQ(at, compressed.size());
    return text + "0\r\n\r\n";
}

class DownloadEncodingTest : public TransferTest
{
protected:
    PromiseData downloadFrom(const std::string& address)
    {
        platform.expect("POST", "/file/read").body("r").reply(200, authority("x", address));
        return outcomeOf(HttpClient::downloadFile(L"r", target, error));
    }

    PromiseData downloadReply(const Reply& reply)
    {
        store.expect("GET", "/b").reply(reply);
        return downloadFrom(atStore("/b"));
    }

    void expectWrites(const Reply& reply, const std::string& content)
    {
        expectOutcome(downloadReply(reply), true, 200, target);
        EXPECT_TRUE(readFile(localPath("f")) == content);
    }

    void expectRefused(const Reply& reply, const std::wstring& words)
    {
        expectOutcome(downloadReply(reply), false, 5555, words);
        EXPECT_FALSE(std::filesystem::exists(localPath("f")));
        expectHttpError(error, exceptionValue, L"generic exception", words, 5555);
    }

    const std::wstring target = wideLocalPath("f");
    const std::string text = std::string(100000, 'a') + patterned(100000);
};

TEST_F(DownloadEncodingTest, inflatesAGzipAnswer)
{
    expectWrites(fileReply(gzipOf(text), "gzip"), text);
}

TEST_F(DownloadEncodingTest, knowsTheEncodingInAnyCase)
{
    expectWrites(fileReply(gzipOf(text), "GZip"), text);
    expectWrites(fileReply(gzipOf(text), "x-gzip"), text);
}

TEST_F(DownloadEncodingTest, inflatesAllMembersOfAGzipAnswer)
{
    expectWrites(fileReply(gzipOf("one ") + gzipOf("") + gzipOf("two"), "gzip"), "one two");
}

TEST_F(DownloadEncodingTest, takesAnIdentityAnswerAsItIs)
{
    expectWrites(fileReply(text, "identity"), text);
}

TEST_F(DownloadEncodingTest, anAnswerThatInflatesToNothingMakesNoFile)
{
    expectOutcome(downloadReply(fileReply(gzipOf(""), "gzip")), false, 200, L"");
    EXPECT_FALSE(std::filesystem::exists(localPath("f")));
}

TEST_F(DownloadEncodingTest, aGzipFileInsideAGzipAnswerStaysCompressed)
{
    expectOutcome(downloadReply(fileReply(gzipOf(gzipOf(text)), "gzip")), false, 500, L"a_gzip_stream_extracted");
}

TEST_F(DownloadEncodingTest, aGzipAnswerThatIsCutShortFailsWhereverItIsCut)
{
    const std::string compressed = gzipOf(text);
    for (const std::size_t left : {compressed.size() - 1, compressed.size() - 8, compressed.size() / 2, std::size_t{11}, std::size_t{1}})
        expectRefused(fileReply(compressed.substr(0, left), "gzip"), L"a compressed answer is cut short");
}

TEST_F(DownloadEncodingTest, aFalseEncodingHeaderFails)
{
    expectRefused(fileReply("this is no gzip at all", "gzip"), L"a compressed answer is broken");
}

TEST_F(DownloadEncodingTest, bytesThatWereChangedOnTheWayFail)
{
    std::string compressed = gzipOf(text);
    compressed[compressed.size() - 5] = static_cast<char>(compressed[compressed.size() - 5] ^ 1);
    expectRefused(fileReply(compressed, "gzip"), L"a compressed answer is broken");
}

TEST_F(DownloadEncodingTest, theWordsOfACompressedErrorAreReadable)
{
    Reply reply = fileReply(gzipOf("<Error>没有</Error>"), "gzip");
    reply.status = 404;
    expectOutcome(downloadReply(reply), false, 404, L"<Error>没有</Error>");
}

TEST_F(DownloadEncodingTest, aBrokenCompressedErrorKeepsItsStatus)
{
    Reply reply = fileReply("no gzip", "gzip");
    reply.status = 404;
    expectOutcome(downloadReply(reply), false, 404, L"no gzip");
}

TEST_F(DownloadEncodingTest, aTailThatComesLateInItsOwnSmallChunkArrives)
{
    const std::string zeros(1 << 20, '\0');
    const std::string compressed = gzipOf(zeros);
    for (const std::size_t tail : {1U, 2U, 8U, 10U, 18U}) {
        const RawServer late(RawAnswer::bytes(chunkedGzip(compressed, {compressed.size() - tail, tail})).fragments(1000));
        for (int i = 0; i < 10; ++i) {
            const PromiseData outcome = downloadFrom(late.url() + "/f");
            ASSERT_TRUE(outcome.success) << outcome.status << " " << utils::toString(outcome.message.substr(0, 300)) << error.GetValue();
            ASSERT_TRUE(readFile(localPath("f")) == zeros);
        }
    }
}

TEST_F(DownloadEncodingTest, anAnswerInChunksOfOneByteArrives)
{
    const std::string compressed = gzipOf("a short text");
    const RawServer slow(RawAnswer::bytes(chunkedGzip(compressed, std::vector<std::size_t>(compressed.size(), 1))).fragments(1));
    EXPECT_TRUE(downloadFrom(slow.url() + "/f").success);
    EXPECT_EQ(readFile(localPath("f")), "a short text");
}

} // namespace
} // namespace orlo::test
