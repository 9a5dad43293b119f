#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/NetworkProject/Transfer/GzipPayload.h>

#include <regex>
#include <stdexcept>

namespace orlo::test {
namespace {

namespace compression = web::http::compression;

/// A compressor that ends a piece as it is told to.
class OddCompressor : public compression::compress_provider
{
public:
    enum class Kind { leavesInput, isNotDone, throws };

    explicit OddCompressor(Kind kind) : m_kind(kind) {}

    const utility::string_t& algorithm() const override { return m_name; }
    std::size_t compress(const std::uint8_t*, std::size_t size, std::uint8_t*, std::size_t, compression::operation_hint, std::size_t& used,
                         bool& done) override
    {
        if (m_kind == Kind::throws)
            throw std::runtime_error("no more");
        used = m_kind == Kind::leavesInput ? size - 1 : size;
        done = m_kind != Kind::isNotDone;
        return 1;
    }
    pplx::task<compression::operation_result> compress(const std::uint8_t*, std::size_t, std::uint8_t*, std::size_t,
                                                       compression::operation_hint) override
    {
        return pplx::task_from_result(compression::operation_result());
    }
    void reset() override {}

private:
    const Kind m_kind;
    const utility::string_t m_name{"gzip"};
};

template <OddCompressor::Kind kind>
std::unique_ptr<compression::compress_provider> makeOdd()
{
    return std::make_unique<OddCompressor>(kind);
}

class GzipTest : public TransferTest
{
protected:
    ~GzipTest() override { OrloWebService::setCompressorMaker(nullptr); }

    PromiseData upload(const std::string& content)
    {
        platform.expect("PUT", "/file/new?fileName=f&filepath=r").reply(200, authority("r/f", atStore("/b?sig=1")));
        return outcomeOf(HttpClient::uploadFile(error, localFile("f", content), L"f", L"r", true));
    }

    void expectArrives(const std::string& content)
    {
        store.expect("PUT", "/b?sig=1").anyBody().header("Content-Encoding", "gzip").header("Content-Type", "").reply(200, "", "");
        expectOutcome(upload(content), true, 200, L"r/f");
        ASSERT_EQ(store.requestCount(), 1U);
        const Request put = store.requests().back();
        EXPECT_EQ(gunzip(put.body), content);
        EXPECT_EQ(put.header("Content-Length"), std::to_string(put.body.size()));
        EXPECT_FALSE(put.hasHeader("Authorization"));
    }

    void expectComplaint(const std::string& content, const std::wstring& words)
    {
        expectOutcome(upload(content), false, 5555, words);
        EXPECT_EQ(log.count(L"E [ORLOSDK]" + words), 1U);
        expectClear(error);
        EXPECT_EQ(store.requestCount(), 0U);
    }
};

TEST_F(GzipTest, tenBytesArriveWhole)
{
    expectArrives(incompressible(10));
}

TEST_F(GzipTest, oneByteArrives)
{
    expectArrives("x");
}

TEST_F(GzipTest, textArrivesSmallerThanItWas)
{
    const std::string text(1 << 20, 'a');
    expectArrives(text);
    EXPECT_LT(store.requests().at(0).body.size(), text.size() / 100);
}

TEST_F(GzipTest, incompressibleMegabytesArriveWhole)
{
    expectArrives(incompressible(3 << 20));
}

TEST_F(GzipTest, logsTheSizeThatIsSent)
{
    expectArrives("some text");
    const std::wregex line(LR"(I \[ORLOSDK\]infoId:[0-9a-fA-F-]{36} - gzipPayloadSize:)" +
                           std::to_wstring(store.requests().at(0).body.size()));
    const Lines lines = log.lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [&](const std::wstring& l) { return std::regex_match(l, line); }), 1);
}

TEST_F(GzipTest, aHundredIncompressibleBytesFitNoBufferAndSaySo)
{
    expectComplaint(incompressible(100), L"OrloWebService::PutFileAsync - compress failed");
}

TEST(GzipPayloadTest, refusesIncompressibleContentOf78To114Bytes)
{
    for (std::size_t size = 78; size <= 114; ++size) {
        Payload payload;
        const wchar_t* const complaint = gzipped(incompressible(size), payload);
        ASSERT_NE(complaint, nullptr) << size;
        EXPECT_STREQ(complaint, L"OrloWebService::PutFileAsync - compress failed");
        EXPECT_EQ(payload.bytes, nullptr);
    }
}

TEST(GzipPayloadTest, takesAllOtherSizes)
{
    for (std::size_t size = 1; size <= 400; ++size) {
        if (size >= 78 && size <= 114)
            continue;
        const std::string content = incompressible(size);
        Payload payload;
        ASSERT_EQ(gzipped(content, payload), nullptr) << size;
        EXPECT_EQ(gunzip({reinterpret_cast<const char*>(payload.bytes), payload.size}), content);
    }
}

TEST_F(GzipTest, withoutACompressorItSaysSo)
{
    OrloWebService::setCompressorMaker([] { return std::unique_ptr<compression::compress_provider>(); });
    expectComplaint("x", L"OrloWebService::PutFileAsync - compressor get failed");
}

TEST_F(GzipTest, aCompressorThatLeavesInputBehindIsAFailure)
{
    OrloWebService::setCompressorMaker(&makeOdd<OddCompressor::Kind::leavesInput>);
    expectComplaint("content", L"OrloWebService::PutFileAsync - compress failed");
}

TEST_F(GzipTest, aCompressorThatIsNotDoneIsAFailure)
{
    OrloWebService::setCompressorMaker(&makeOdd<OddCompressor::Kind::isNotDone>);
    expectComplaint("content", L"OrloWebService::PutFileAsync - compress failed");
}

TEST_F(GzipTest, aCompressorThatThrowsIsAFailure)
{
    OrloWebService::setCompressorMaker(&makeOdd<OddCompressor::Kind::throws>);
    expectComplaint("content", L"OrloWebService::PutFileAsync - compress failed");
}

TEST_F(GzipTest, aMissingCompressorIsNotAskedForAgain)
{
    const RetryLimit three(3);
    OrloWebService::setCompressorMaker([] { return std::unique_ptr<compression::compress_provider>(); });
    expectComplaint("x", L"OrloWebService::PutFileAsync - compressor get failed");
}

} // namespace
} // namespace orlo::test
