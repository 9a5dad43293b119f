#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;

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
        fs::remove_all(host.folder().path("Files"));
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

TEST_F(BatchPathsTest, aNulDoesNotCutThePathOfAnEntryShort)
{
    const fs::path victim = host.folder().path("victim");
    for (const char* path : {"x/../../../victim\\u0000/../Files/ds-1/ok", "x/../victim\\u0000", "x/\\u0000", "x/a\\u0000/b", "\\u0000/a"}) {
        writeFile(victim, "untouched");
        const PromiseData outcome = downloadEntry(path);
        EXPECT_EQ(readFile(victim), "untouched") << path;
        fs::remove(victim);
        expectRefused(outcome, leaves);
    }
}

TEST_F(BatchPathsTest, aNulInTheFolderOrTheDatasetIsRefusedBeforeAnyRequest)
{
    const auto expectRefusal = [&](const std::string& folder, const std::string& dataset) {
        expectOutcome(outcomeOf(HttpClient::downloadBatchFiles(error, folder, dataset, {"blocks/a"}, nullptr)), false, 400, leaves);
        EXPECT_EQ(log.lines(), Lines{std::wstring(L"E [ORLOSDK]") + leaves});
        log.clear();
    };
    expectRefusal(std::string("blo\0cks", 7), "ds-1");
    expectRefusal("blocks", std::string("ds\0", 3));
    EXPECT_EQ(platform.requestCount(), 0U);
}

TEST_F(BatchPathsTest, aLinkThatLeadsOutOfTheCacheIsNotFollowed)
{
    const TempFolder outside;
    writeFile(outside.path("a"), "untouched");
    fs::create_directories(cached("ds-1", "blocks"));
    fs::create_directory_symlink(outside.path(), cached("ds-1", "blocks/link"));
    fs::create_directory_symlink(outside.path("none"), cached("ds-1", "blocks/nowhere"));
    fs::create_directory_symlink(outside.path(), host.folder().path("Files/ds-2"));
    for (const char* path : {"x/link/a", "x/link/deep/a", "x/deep/../link/a", "x/link/../ds-1/a", "x/nowhere/a"})
        expectRefused(downloadEntry(path), leaves);
    expectRefused(downloadEntry("blocks/a", "blocks/link"), leaves);
    expectRefused(downloadEntry("blocks/a", "blocks", "ds-2"), leaves);
    EXPECT_EQ(filesBelow(outside.path()), std::vector<std::string>{"a"});
    EXPECT_EQ(readFile(outside.path("a")), "untouched");
}

TEST_F(BatchPathsTest, aLinkToAnotherDatasetIsNotFollowed)
{
    fs::create_directories(cached("ds-2", "blocks"));
    fs::create_directories(cached("ds-1", ""));
    fs::create_directory_symlink(cached("ds-2", "blocks"), cached("ds-1", "blocks"));
    expectRefused(downloadEntry("blocks/a"), leaves);
}

TEST_F(BatchPathsTest, aLinkThatStaysInTheDatasetIsFollowed)
{
    fs::create_directories(cached("ds-1", "real"));
    fs::create_directory_symlink("real", cached("ds-1", "blocks"));
    expectLandsAt("x/deep/../a", "blocks", "ds-1/real/a");
}

TEST_F(BatchPathsTest, aLinkInPlaceOfTheFileIsReplacedByIt)
{
    const TempFolder outside;
    writeFile(outside.path("a"), "untouched");
    fs::create_directories(cached("ds-1", "blocks"));
    fs::create_symlink(outside.path("a"), cached("ds-1", "blocks/a"));
    expectLandsAt("x/a", "blocks", "ds-1/blocks/a");
    EXPECT_EQ(readFile(outside.path("a")), "untouched");
}

TEST_F(BatchPathsTest, theCacheItselfMayLieBehindALink)
{
    const TempFolder elsewhere;
    fs::create_directory_symlink(elsewhere.path(), host.folder().path("Files"));
    store.expect("GET", "/a").reply(fileReply("x"));
    EXPECT_TRUE(downloadEntry("blocks/deep/a").success);
    EXPECT_EQ(readFile(elsewhere.path("ds-1/blocks/deep/a")), "x");
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
