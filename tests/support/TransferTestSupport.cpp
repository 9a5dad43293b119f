#include "TransferTestSupport.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <chrono>

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

Reply fileReply(const std::string& bytes, const std::string& encoding)
{
    Reply reply;
    reply.body = bytes;
    reply.contentType = "application/octet-stream";
    if (!encoding.empty())
        reply.headers.emplace_back("Content-Encoding", encoding);
    return reply;
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
