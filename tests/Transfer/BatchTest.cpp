#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>

#include <regex>

namespace orlo::test {
namespace {

class BatchTest : public TransferTest
{
protected:
    std::future<PromiseData> start(const std::vector<std::string>& seeds, const std::string& folder = "blocks")
    {
        return HttpClient::downloadBatchFiles(error, folder, "ds-1", seeds, nullptr);
    }
    PromiseData download(const std::vector<std::string>& seeds) { return outcomeOf(start(seeds)); }

    /// Three files "one", "two" and "three", one of which is refused.
    PromiseData downloadThreeLosing(const std::string& lost)
    {
        std::vector<BatchEntry> entries;
        for (const std::string name : {"one", "two", "three"}) {
            entries.push_back({"blocks/" + name, atStore("/" + name + "?sig=1")});
            Reply reply = fileReply("bytes of " + name);
            reply.status = name == lost ? 404 : 200;
            store.expect("GET", "/" + name + "?sig=1").reply(reply);
        }
        store.anyOrder();
        expectBatch(R"(["blocks/one","blocks/two","blocks/three"])", entries);
        return download({"blocks/one", "blocks/two", "blocks/three"});
    }

    std::vector<std::string> cachedFiles() const { return filesBelow(cached("ds-1", "")); }
};

TEST_F(BatchTest, keepsItsConnectionsForTheNextFile)
{
    std::vector<std::string> seeds;
    std::vector<BatchEntry> entries;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "f" + std::to_string(i);
        seeds.push_back("blocks/" + name);
        entries.push_back({"blocks/" + name, atStore("/" + name)});
        store.expect("GET", "/" + name).reply(fileReply(name));
    }
    store.anyOrder();
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply(entries));
    expectOutcome(download(seeds), true, 200, L"success to batch download files");
    EXPECT_EQ(cachedFiles().size(), 40U);
    EXPECT_LE(store.connectionCount(), 6U);
}

TEST_F(BatchTest, streamsEveryFileIntoTheCacheOfTheDataset)
{
    const std::string large = patterned(5 << 20);
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS")
        .header("Authorization", "Bearer token-secret-1")
        .header("Content-Type", "application/json")
        .body(R"(["blocks/a.bin","blocks/deep/b.bin"])")
        .reply(200, batchReply({{"blocks/a.bin", atStore("/a?sig=1")}, {"blocks/deep/b.bin", atStore("/b?sig=2")}}));
    store.anyOrder();
    store.expect("GET", "/a?sig=1")
        .withoutHeader("Authorization")
        .withoutHeader("Accept-Encoding")
        .header("Content-Type", "")
        .reply(fileReply(large));
    store.expect("GET", "/b?sig=2").withoutHeader("Authorization").reply(fileReply("small"));
    expectOutcome(download({"blocks/a.bin", "blocks/deep/b.bin"}), true, 200, L"success to batch download files");
    EXPECT_TRUE(readFile(cached("ds-1", "blocks/a.bin")) == large);
    EXPECT_EQ(readFile(cached("ds-1", "blocks/deep/b.bin")), "small");
    EXPECT_EQ(temporaryFiles(), std::vector<std::string>{});
    expectClear(error);
}

TEST_F(BatchTest, logsItsStepsInOrder)
{
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
    store.expect("GET", "/a").reply(fileReply("x"));
    download({"blocks/a"});
    const std::wregex end(LR"(I \[ORLOSDK\]L"END TO GetFileByStreamModeAsync\." --- time costing:\d+ ms\.)");
    ASSERT_TRUE(waitUntil([&] { return log.lines().size() == 6; }));
    const Lines lines = log.lines();
    EXPECT_EQ(lines[2], L"I [ORLOSDK]BEGIN TO GetFileByStreamModeAsync.");
    EXPECT_EQ(lines[3], L"I [ORLOSDK]OrloWebService::LogRequest - GET / at 127.0.0.1/a");
    EXPECT_EQ(lines[4], L"I [ORLOSDK]OrloWebService::LogResponse - GET / - status:200");
    EXPECT_TRUE(std::regex_match(lines[5], end)) << utils::toString(lines[5]);
}

TEST_F(BatchTest, anEmptyRemoteFileMakesAnEmptyFile)
{
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
    store.expect("GET", "/a").reply(fileReply(""));
    EXPECT_TRUE(download({"blocks/a"}).success);
    EXPECT_EQ(std::filesystem::file_size(cached("ds-1", "blocks/a")), 0U);
}

TEST_F(BatchTest, aCompressedStreamIsWrittenAsItComes)
{
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
    store.expect("GET", "/a").reply(fileReply("\x1F\x8B\x08 and more", "gzip"));
    EXPECT_TRUE(download({"blocks/a"}).success);
    EXPECT_EQ(readFile(cached("ds-1", "blocks/a")), "\x1F\x8B\x08 and more");
}

TEST_F(BatchTest, refusesNoSeedsAndSendsNothing)
{
    expectOutcome(download({}), false, 400, L"no download seed");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]empty seed passed into worker_download_batch_files"});
    expectClear(error);
}

TEST_F(BatchTest, refusesAnEmptyDatasetAndSendsNothing)
{
    expectOutcome(outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "", {"a/b"}, nullptr)), false, 400, L"dataset id is empty");
    EXPECT_TRUE(log.has(L"E [ORLOSDK][OrloWebService::AcquireBatchDownloadAuthorityAsync] dataset id is empty"));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]failed to batch download files"));
    expectGenericError(error, badInputValue, L"GenericError", L"dataset id is empty");
}

TEST_F(BatchTest, endsWithTheStatusWhenTheAuthorityIsRefused)
{
    for (const int status : {201, 302, 404, 500}) {
        log.clear();
        platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(status, "no");
        expectOutcome(download({"blocks/a"}), false, status, L"");
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::AcquireBatchDownloadAuthorityAsync - code:" + std::to_wstring(status)));
        EXPECT_TRUE(log.has(L"E [ORLOSDK]failed to batch download files"));
    }
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 500);
}

TEST_F(BatchTest, anAuthorityThatIsNoJsonFails)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, "garbage");
    EXPECT_EQ(download({"blocks/a"}).status, 5555);
    EXPECT_EQ(error.GetValue(), exceptionValue);
}

class LostFileTest : public BatchTest, public testing::WithParamInterface<const char*>
{};

TEST_P(LostFileTest, failsTheBatchAndKeepsTheOthers)
{
    expectOutcome(downloadThreeLosing(GetParam()), false, 404, L"");
    ASSERT_TRUE(waitUntil([&] { return cachedFiles().size() == 2; }));
    for (const std::string name : {"one", "two", "three"}) {
        if (name != GetParam()) {
            EXPECT_EQ(readFile(cached("ds-1", "blocks/" + name)), "bytes of " + name);
        }
    }
    EXPECT_EQ(log.count(L"E [ORLOSDK]OrloWebService::GetFileByStreamModeAsync - code:404"), 1U);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]failed to batch download files"));
    expectHttpError(error, errorStatusValue, L"HttpError", utils::toWstring(std::string("bytes of ") + GetParam()), 404);
    EXPECT_TRUE(waitUntil([&] { return temporaryFiles().empty(); }));
}

INSTANTIATE_TEST_SUITE_P(TheFirst, LostFileTest, testing::Values("one"));
INSTANTIATE_TEST_SUITE_P(TheMiddle, LostFileTest, testing::Values("two"));
INSTANTIATE_TEST_SUITE_P(TheLast, LostFileTest, testing::Values("three"));

TEST_F(BatchTest, twoLostFilesReachThePromiseTwiceAndTheFirstOutcomeStands)
{
    store.anyOrder();
    store.expect("GET", "/a").reply(404, "");
    store.expect("GET", "/b").replyWith([this](const Request&) {
        // The second failure comes when the first has ended the batch.
        EXPECT_TRUE(waitUntil([&] { return log.has(L"E [ORLOSDK]failed to batch download files"); }));
        Reply reply;
        reply.status = 403;
        return reply;
    });
    expectBatch(R"(["blocks/a","blocks/b"])", {{"blocks/a", atStore("/a")}, {"blocks/b", atStore("/b")}});
    expectOutcome(download({"blocks/a", "blocks/b"}), false, 404, L"");
    const auto secondAttempt = [&] {
        for (const LogEntry& entry : log.entries()) {
            if (entry.function == "DownloadBatchFilesHandler::on_complete" && entry.tag == L"[ORLOSDK]" &&
                entry.message.find(L"[END_SET_FALSE_TO_PROMISE]") == 0 && entry.message.size() > 27)
                return true;
        }
        return false;
    };
    EXPECT_TRUE(waitUntil(secondAttempt));
    EXPECT_EQ(log.count(L"E [ORLOSDK]failed to batch download files"), 2U);
    expectHttpError(error, errorStatusValue, L"HttpError", L"", 404);
}

TEST_F(BatchTest, aMoveThatFailsForTheLastFileToFinishIsNoFailure)
{
    writeFile(host.folder().path("x"), "");
    std::filesystem::create_directories(cached("ds-1", "blocks/a/in-the-way"));
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
    store.expect("GET", "/a").reply(fileReply("kept"));
    expectOutcome(download({"blocks/a"}), true, 200, L"success to batch download files");
    const std::wstring target = utils::toWstring(cached("ds-1", "blocks/a").u8string());
    EXPECT_EQ(log.count(L"E [ORLOSDK]Failed to move file to \"" + target + L"\""), 1U);
    // The temporary file stays.
    ASSERT_EQ(temporaryFiles().size(), 1U);
    EXPECT_EQ(readFile(host.folder().path("Temp") / temporaryFiles()[0]), "kept");
}

TEST_F(BatchTest, aMoveThatFailsBeforeTheLastFileFailsTheBatch)
{
    std::filesystem::create_directories(cached("ds-1", "blocks/a/in-the-way"));
    expectBatch(R"(["blocks/a","blocks/b"])", {{"blocks/a", atStore("/a")}, {"blocks/b", atStore("/b")}});
    store.anyOrder();
    store.expect("GET", "/a").reply(fileReply("kept"));
    store.expect("GET", "/b").replyWith([this](const Request&) {
        EXPECT_TRUE(waitUntil([&] { return log.has(L"E [ORLOSDK]failed to batch download files"); }));
        return fileReply("good");
    });
    expectOutcome(download({"blocks/a", "blocks/b"}), false, 200, L"");
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(cached("ds-1", "blocks/b")); }));
    EXPECT_EQ(readFile(cached("ds-1", "blocks/b")), "good");
    expectClear(error);
}

TEST_F(BatchTest, aTemporaryFileThatCanNotBeMadeFailsTheBatch)
{
    writeFile(host.folder().path("Temp"), "a file in place of the folder");
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
    store.expect("GET", "/a").reply(fileReply("x"));
    expectOutcome(download({"blocks/a"}), false, 5555, L"the temporary file can't be made");
    expectHttpError(error, exceptionValue, L"generic exception", L"the temporary file can't be made", 5555);
    EXPECT_EQ(cachedFiles(), std::vector<std::string>{});
}

TEST_F(BatchTest, aReplyWithoutEntriesLeavesTheFuturePending)
{
    for (const char* body : {R"({"data":[]})", "{}", "[]", "null", "", R"({"data":{"datasetFilePath":"a/b"}})", R"({"data":null})"}) {
        log.clear();
        platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, body);
        // The caller's ErrorCode is not touched later either.
        auto callers = std::make_unique<ErrorCode>();
        const auto future = HttpClient::downloadBatchFiles(*callers, "blocks", "ds-1", {"blocks/a"}, nullptr);
        ASSERT_TRUE(waitUntil([&] { return log.lines().size() >= 3; })) << body;
        EXPECT_EQ(log.lines().at(2), L"W [ORLOSDK]the platform named no file for a batch download; its future stays pending");
        EXPECT_EQ(future.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout) << body;
        callers.reset();
        EXPECT_EQ(log.lines().size(), 3U);
    }
}

TEST_F(BatchTest, anEntryWithoutAnAddressFails)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, R"({"data":[{"datasetFilePath":"blocks/a"}]})");
    EXPECT_EQ(download({"blocks/a"}).status, 5555);
    EXPECT_EQ(store.requestCount(), 0U);
}

} // namespace
} // namespace orlo::test
