#include "TransferTestSupport.h"

#include <BaseCommon/Text.h>

#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace orlo::test {

namespace fs = std::filesystem;

PromiseData outcomeOf(std::future<PromiseData>& future)
{
    if (future.valid() && future.wait_for(std::chrono::seconds(60)) == std::future_status::ready)
        return future.get();
    ADD_FAILURE() << "the future does not become ready";
    return {};
}

PromiseData outcomeOf(std::future<PromiseData>&& future)
{
    return outcomeOf(future);
}

void expectOutcome(const PromiseData& outcome, bool success, int status, const std::wstring& message)
{
    EXPECT_EQ(outcome.success, success);
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(utils::toString(outcome.message), utils::toString(message));
    EXPECT_TRUE(outcome.counters.empty());
    EXPECT_TRUE(outcome.sizes.empty());
    EXPECT_EQ(outcome.note, "");
}

std::string incompressible(std::size_t size)
{
    std::mt19937 random(12345);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 24); });
    return bytes;
}

std::string patterned(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 256) & 0xFF);
    return bytes;
}

std::string gzipOf(const std::string& content)
{
    constexpr int withGzipHeader = MAX_WBITS + 16;
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, withGzipHeader, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string compressed(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

std::string gunzip(const std::string& compressed)
{
    constexpr int withGzipHeader = MAX_WBITS + 16;
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, withGzipHeader), Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
    stream.avail_in = static_cast<uInt>(compressed.size());
    std::string content;
    int result = Z_OK;
    while (result == Z_OK) {
        char piece[65536];
        stream.next_out = reinterpret_cast<Bytef*>(piece);
        stream.avail_out = sizeof piece;
        result = inflate(&stream, Z_NO_FLUSH);
        content.append(piece, sizeof piece - stream.avail_out);
    }
    EXPECT_EQ(result, Z_STREAM_END);
    EXPECT_EQ(stream.avail_in, 0U);
    inflateEnd(&stream);
    return content;
}

Reply fileReply(const std::string& bytes, const std::string& encoding)
{
    Reply reply;
    reply.body = bytes;
    reply.contentType = "application/octet-stream";
    if (!encoding.empty())
        reply.headers.emplace_back("Content-Encoding", encoding);
    return reply;
}

std::vector<std::string> filesBelow(const fs::path& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (fs::recursive_directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (at->is_regular_file() && at->path().extension() != ".alive")
            files.push_back(at->path().lexically_relative(folder).u8string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string batchReply(const std::vector<BatchEntry>& entries)
{
    std::string text;
    for (const BatchEntry& entry : entries)
        text += (text.empty() ? "" : ",") + (R"({"datasetFilePath":")" + entry.datasetFilePath + R"(","datasetFilePathWithSAS":")" +
                                             entry.datasetFilePathWithSAS + R"("})");
    return R"({"code":10000,"data":[)" + text + "]}";
}

void TransferTest::TearDown()
{
    // Every step at the store says when it begins, and then how it ended; the last of it comes after the future.
    const auto isQuiet = [this] {
        std::size_t begun = 0;
        std::size_t ended = 0;
        for (const std::wstring& line : log.lines()) {
            begun += line.find(L"I [ORLOSDK]BEGIN TO ") == 0 ? 1 : 0;
            ended += line.find(L"I [ORLOSDK]L\"END TO ") == 0 || line.find(L" - exception caught: message[") != std::wstring::npos ||
                             line.find(L"E [ORLOSDK]OrloWebService::PutFileAsync - compress") == 0
                         ? 1
                         : 0;
        }
        return begun <= ended;
    };
    EXPECT_TRUE(waitUntil(isQuiet));
}

std::wstring TransferTest::localFile(const std::string& name, const std::string& content) const
{
    fs::create_directories(localPath(name).parent_path());
    writeFile(localPath(name), content);
    return wideLocalPath(name);
}

std::wstring TransferTest::wideLocalPath(const std::string& name) const
{
    fs::create_directories(localPath(name).parent_path());
    return utils::toWstring(localPath(name).u8string());
}

fs::path TransferTest::cached(const std::string& dataset, const std::string& path) const
{
    return host.folder().path("Files") / fs::u8path(dataset) / fs::u8path(path);
}

std::vector<std::string> TransferTest::temporaryFiles() const
{
    return filesBelow(host.folder().path("Temp"));
}

std::string TransferTest::authority(const std::string& remotePath, const std::string& address) const
{
    return R"({"fileOSSPath":")" + remotePath + R"(","fileUrlWithSAS":")" + address + R"("})";
}

void TransferTest::expectBatch(const std::string& seedsBody, const std::vector<BatchEntry>& entries)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").body(seedsBody).reply(200, batchReply(entries));
}

} // namespace orlo::test
