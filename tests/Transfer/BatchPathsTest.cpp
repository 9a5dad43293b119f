#include "TransferTestSupport.h"

#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

class BatchPathsTest : public TransferTest
{
protected:
    /// The answer's only entry has that path.
    PromiseData downloadEntry(const std::string& path, const std::string& folder = "blocks", const std::string& dataset = "ds-1")
    {
        platform.expect("POST", "/datasets/" + dataset + "/blockFiles/readSAS")
            .body(R"(["blocks/a"])")
            .reply(200, batchReply({{path, atStore("/a")}}));
        return outcomeOf(HttpClient::downloadBatchFiles(error, folder, dataset, {"blocks/a"}, nullptr));
    }

    void expectLandsAt(const std::string& path, const std::string& folder, const std::string& place)
    {
        store.expect("GET", "/a").reply(fileReply("x"));
        EXPECT_TRUE(downloadEntry(path, folder).success);
        EXPECT_EQ(filesBelow(host.folder().path("Files")), std::vector<std::string>{place});
        std::filesystem::remove_all(host.folder().path("Files"));
    }

    void expectRefused(const PromiseData& outcome, const std::wstring& words)
    {
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, 200);
        EXPECT_EQ(log.count(L"E [ORLOSDK]" + words), 1U);
        EXPECT_EQ(store.requestCount(), 0U);
        EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{});
        log.clear();
    }
};

constexpr const wchar_t* leaves = L"invalid seed which leaves the cache folder";

TEST_F(BatchPathsTest, theFolderOfTheCallStandsInPlaceOfTheFirstStep)
{
    expectLandsAt("other/deep/a.bin", "blocks", "ds-1/blocks/deep/a.bin");
    expectLandsAt("blocks/a.bin", "", "ds-1/a.bin");
    expectLandsAt("blocks/a.bin", "one\\\\two//three", "ds-1/one/two/three/a.bin");
}

TEST_F(BatchPathsTest, seedsAreNormalisedBeforeTheyAreAskedFor)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS")
        .body(R"(["blocks/a/b","c/d","图/纸"])")
        .reply(200, batchReply({{"blocks/a", atStore("/a")}}));
    store.expect("GET", "/a").reply(fileReply("x"));
    EXPECT_TRUE(outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {"blocks\\a\\\\b", "c//d", "图/纸"}, nullptr)).success);
}

TEST_F(BatchPathsTest, chineseNamesAndBlanksLandAsTheyAre)
{
    expectLandsAt("blocks/楼层 一/平面图.dwg", "图 块", "ds-1/图 块/楼层 一/平面图.dwg");
}

TEST_F(BatchPathsTest, aPathOfMoreThan260CharactersLands)
{
    const std::string deep = std::string(120, 'a') + "/" + std::string(120, 'b') + "/" + std::string(120, 'c');
    expectLandsAt("blocks/" + deep, "blocks", "ds-1/blocks/" + deep);
}

TEST_F(BatchPathsTest, aFolderUpInsideTheCacheIsAllowed)
{
    expectLandsAt("blocks/deep/../a.bin", "blocks", "ds-1/blocks/a.bin");
    expectLandsAt("blocks//abs/a.bin", "blocks", "ds-1/blocks/abs/a.bin");
}

TEST_F(BatchPathsTest, refusesASeedWithoutASlash)
{
    for (const char* path : {"a", "", "a\\\\b"}) {
        const PromiseData outcome = downloadEntry(path);
        expectRefused(outcome, L"invalid seed which has no '/'");
        // The step that started the entry was the authority.
        EXPECT_NE(outcome.message.find(L"datasetFilePath"), std::wstring::npos);
    }
}

TEST_F(BatchPathsTest, refusesAnEntryThatLeavesTheCache)
{
    for (const char* path : {"a/../../../x", "a/../../x", "a/..", "a/../..", "a/..\\\\..\\\\x", "a/b/../../../x", "a//../../x", "/../../x"})
        expectRefused(downloadEntry(path), leaves);
}

TEST_F(BatchPathsTest, refusesAFolderThatLeavesTheCache)
{
    for (const char* folder : {"..", "../..", "a/../..", "..\\..\\x"})
        expectRefused(downloadEntry("blocks/a", folder), leaves);
}

TEST_F(BatchPathsTest, refusesADatasetThatLeavesTheCache)
{
    // On the wire the dots are what the caller gave; the local folder is what counts.
    platform.always("POST", "/datasets/x/blockFiles/readSAS").reply(200, batchReply({{"blocks/a", atStore("/a")}}));
    platform.always("POST", "/datasets/../blockFiles/readSAS").reply(200, batchReply({{"blocks/a", atStore("/a")}}));
    platform.always("POST", "/blockFiles/readSAS").reply(200, batchReply({{"blocks/a", atStore("/a")}}));
    expectRefused(outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "..", {"blocks/a"}, nullptr)), leaves);
}

TEST_F(BatchPathsTest, aBadSeedAmongGoodOnesFailsTheBatchAndTheOthersArrive)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS")
        .anyBody()
        .reply(200, batchReply({{"bad", atStore("/never")}, {"blocks/a", atStore("/a")}, {"blocks/b", atStore("/b")}}));
    store.anyOrder();
    store.expect("GET", "/a").reply(fileReply("a"));
    store.expect("GET", "/b").reply(fileReply("b"));
    const PromiseData outcome = outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {"x"}, nullptr));
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 200);
    EXPECT_TRUE(waitUntil([&] { return filesBelow(cached("ds-1", "")) == std::vector<std::string>{"blocks/a", "blocks/b"}; }));
}

TEST_F(BatchPathsTest, aBadSeedThatAStreamWouldStartEndsTheBatchWithThatStream)
{
    std::vector<BatchEntry> entries;
    for (int i = 0; i < 6; ++i) {
        entries.push_back({"blocks/" + std::to_string(i), atStore("/" + std::to_string(i))});
        store.always("GET", "/" + std::to_string(i)).reply(fileReply("x"));
    }
    entries.push_back({"bad", atStore("/never")});
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply(entries));
    expectOutcome(outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {"x"}, nullptr)), false, 200, L"");
    EXPECT_TRUE(waitUntil([&] { return filesBelow(cached("ds-1", "")).size() == 6; }));
    EXPECT_EQ(log.count(L"E [ORLOSDK]invalid seed which has no '/'"), 1U);
}

} // namespace
} // namespace orlo::test
