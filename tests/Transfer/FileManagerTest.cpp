#include "support/Threads.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo::test {
namespace {

class FileManagerTest : public TransferTest
{
protected:
    std::wstring wideCached(const std::string& dataset, const std::string& path) const
    {
        return utils::toWstring(cached(dataset, path).u8string());
    }

    void expectFile(const std::string& seed, const std::string& content)
    {
        expectBatch("[\"" + seed + "\"]", {{seed, atStore("/a?sig=1")}});
        store.expect("GET", "/a?sig=1").reply(fileReply(content));
    }

    void expectRefused(const std::string& dataset, const std::wstring& uri, const std::wstring& words)
    {
        EXPECT_EQ(IFileManager::DownloadFile(dataset, uri, error), L"");
        EXPECT_EQ(log.count(L"E [ORLOSDK]" + words + uri), 1U);
        EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{});
        log.clear();
    }
};

TEST_F(FileManagerTest, isOneForTheProcess)
{
    EXPECT_NE(IFileManager::Get(), nullptr);
    EXPECT_EQ(IFileManager::Get(), IFileManager::Get());
}

TEST_F(FileManagerTest, bringsAMissingFileIntoTheCache)
{
    expectFile("blocks/deep/a.bin", "content");
    const std::wstring path = IFileManager::DownloadFile("ds-1", L"blocks/deep/a.bin?f=1&x=2", error);
    EXPECT_EQ(path, wideCached("ds-1", "blocks/deep/a.bin"));
    EXPECT_EQ(readFile(cached("ds-1", "blocks/deep/a.bin")), "content");
    expectClear(error);
}

TEST_F(FileManagerTest, aSecondDownloadSendsNothing)
{
    expectFile("blocks/a.bin", "content");
    const std::wstring first = IFileManager::DownloadFile("ds-1", L"blocks/a.bin?f=1", error);
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a.bin?f=2", error), first);
    EXPECT_EQ(platform.requestCount(), 1U);
}

TEST_F(FileManagerTest, trustsAFileThatIsInTheCache)
{
    std::filesystem::create_directories(cached("ds-1", "图块"));
    writeFile(cached("ds-1", "图块/a.bin"), "old");
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"图块/a.bin?f=", error), wideCached("ds-1", "图块/a.bin"));
    EXPECT_EQ(readFile(cached("ds-1", "图块/a.bin")), "old");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FileManagerTest, takesTheTextInFrontOfTheFirstMark)
{
    expectFile("blocks/a", "x");
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=b?f=c", error), wideCached("ds-1", "blocks/a"));
}

TEST_F(FileManagerTest, refusesAUriWithoutItsDelimiters)
{
    for (const wchar_t* uri : {L"", L"blocks/a.bin", L"blocks/a.bin?g=1", L"a.bin?f=1", L"?f=", L"blocks\\a.bin?f=1"})
        expectRefused("ds-1", uri, L"invalid uri: ");
    expectClear(error);
}

TEST_F(FileManagerTest, refusesAUriThatLeavesTheCache)
{
    for (const wchar_t* uri : {L"../a?f=1", L"blocks/../../a?f=1", L"../../../a?f=1", L"blocks/..\\..\\..\\a?f=1", L"./.?f=1"})
        expectRefused("ds-1", uri, L"invalid uri: ");
    expectRefused("..", L"blocks/a?f=1", L"invalid uri: ");
    expectRefused("../x", L"blocks/a?f=1", L"invalid uri: ");
}

TEST_F(FileManagerTest, refusesAUriOrADatasetWithANul)
{
    for (const std::wstring& uri :
         {std::wstring(L"blocks/a\0?f=1", 13), std::wstring(L"blocks\0/../../x/a?f=1", 21), std::wstring(L"\0/a?f=1", 8)})
        expectRefused("ds-1", uri, L"invalid uri: ");
    expectRefused(std::string("ds\0", 3), L"blocks/a?f=1", L"invalid uri: ");
    EXPECT_EQ(platform.requestCount(), 0U);
}

TEST_F(FileManagerTest, refusesAUriWhoseFolderIsALinkThatLeadsOut)
{
    const TempFolder outside;
    writeFile(outside.path("a"), "not of the cache");
    std::filesystem::create_directories(cached("ds-1", ""));
    std::filesystem::create_directory_symlink(outside.path(), cached("ds-1", "blocks"));
    std::filesystem::create_directory_symlink(outside.path(), host.folder().path("Files/ds-2"));
    for (const wchar_t* uri : {L"blocks/a?f=1", L"blocks/new?f=1", L"x/../blocks/a?f=1"})
        expectRefused("ds-1", uri, L"invalid uri: ");
    expectRefused("ds-2", L"blocks/a?f=1", L"invalid uri: ");
    EXPECT_EQ(filesBelow(outside.path()), std::vector<std::string>{"a"});
}

TEST_F(FileManagerTest, aLinkThatLeadsOutIsNoCachedFileAndIsReplaced)
{
    const TempFolder outside;
    writeFile(outside.path("secret"), "not of the cache");
    std::filesystem::create_directories(cached("ds-1", "blocks"));
    std::filesystem::create_symlink(outside.path("secret"), cached("ds-1", "blocks/a"));
    expectFile("blocks/a", "content");
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), wideCached("ds-1", "blocks/a"));
    EXPECT_EQ(readFile(cached("ds-1", "blocks/a")), "content");
    EXPECT_EQ(readFile(outside.path("secret")), "not of the cache");
}

TEST_F(FileManagerTest, aCacheBehindALinkIsTrusted)
{
    const TempFolder elsewhere;
    std::filesystem::create_directory_symlink(elsewhere.path(), host.folder().path("Files"));
    std::filesystem::create_directories(elsewhere.path("ds-1/blocks"));
    writeFile(elsewhere.path("ds-1/blocks/a"), "old");
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), wideCached("ds-1", "blocks/a"));
}

TEST_F(FileManagerTest, anEmptyDatasetFailsInTheBatch)
{
    expectRefused("", L"blocks/a?f=1", L"failed to download file from uri: ");
    expectGenericError(error, badInputValue, L"GenericError", L"dataset id is empty");
}

TEST_F(FileManagerTest, aFolderThatCanNotBeMadeFailsBeforeAnyRequest)
{
    std::filesystem::create_directories(cached("ds-1", ""));
    writeFile(cached("ds-1", "blocks"), "a file in place of the folder");
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), L"");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]failed to create path: " + wideCached("ds-1", "blocks")});
}

TEST_F(FileManagerTest, makesTheFolderBeforeItAsks)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().replyWith([this](const Request&) {
        EXPECT_TRUE(std::filesystem::is_directory(cached("ds-1", "blocks")));
        Reply reply;
        reply.status = 404;
        return reply;
    });
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), L"");
}

TEST_F(FileManagerTest, aFailedDownloadGivesNothingAndSaysSo)
{
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
    store.expect("GET", "/a").reply(404, "no");
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), L"");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]failed to download file from uri: blocks/a?f=1"));
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 404);
    EXPECT_FALSE(std::filesystem::exists(cached("ds-1", "blocks/a")));
}

TEST_F(FileManagerTest, aReplyWithoutEntriesGivesNothingInsteadOfWaitingForEver)
{
    for (const char* body : {R"({"data":[]})", "{}", "[]", ""}) {
        platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, body);
        EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), L"") << body;
    }
    EXPECT_EQ(log.count(L"E [ORLOSDK]failed to download file from uri: blocks/a?f=1"), 4U);
}

TEST_F(FileManagerTest, aFileThatCanNotBeMovedToItsPlaceGivesNothing)
{
    // Its name is too long; a folder stands in its place; a file stands where its folder is to be.
    std::filesystem::create_directories(cached("ds-1", "blocks/folder"));
    writeFile(cached("ds-1", "blocks/file"), "in the way");
    for (const std::string& path : {"blocks/" + std::string(300, 'n'), std::string("blocks/folder"), std::string("blocks/file/a")}) {
        expectFile(path, "content");
        EXPECT_EQ(IFileManager::DownloadFile("ds-1", utils::toWstring(path) + L"?f=1", error), L"") << path;
        EXPECT_EQ(log.count(L"E [ORLOSDK]Failed to move file to \"" + wideCached("ds-1", path) + L"\""), 1U);
        EXPECT_EQ(log.count(L"E [ORLOSDK]failed to download file from uri: " + utils::toWstring(path) + L"?f=1"), 1U);
    }
    EXPECT_EQ(readFile(cached("ds-1", "blocks/file")), "in the way");
}

TEST_F(FileManagerTest, anAnswerThatNamesAnotherFileGivesNothing)
{
    expectBatch(R"(["blocks/a"])", {{"blocks/b", atStore("/a")}});
    store.expect("GET", "/a").reply(fileReply("content"));
    EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", error), L"");
    EXPECT_EQ(log.count(L"E [ORLOSDK]failed to download file from uri: blocks/a?f=1"), 1U);
}

TEST_F(FileManagerTest, manyThreadsMayAskForTheSameFile)
{
    platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply({{"blocks/a", atStore("/a")}}));
    const std::string content = patterned(300000);
    store.always("GET", "/a").reply(fileReply(content));
    inThreads(8, [&] {
        ErrorCode own;
        EXPECT_EQ(IFileManager::DownloadFile("ds-1", L"blocks/a?f=1", own), wideCached("ds-1", "blocks/a"));
    });
    EXPECT_TRUE(readFile(cached("ds-1", "blocks/a")) == content);
    EXPECT_EQ(temporaryFiles(), std::vector<std::string>{});
}

TEST_F(FileManagerTest, anEarlierErrorIsLogged)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"earlier"));
    IFileManager::DownloadFile("ds-1", L"no uri", error);
    EXPECT_EQ(log.lines().at(0), L"E@orlo::IFileManager::DownloadFile 传入的ErrorCode，已有错误存在:earlier");
}

TEST_F(FileManagerTest, uploadsGoOutUncompressed)
{
    const std::wstring file = localFile("f", "plain");
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/1")));
    store.expect("PUT", "/1").body("plain").withoutHeader("Content-Encoding").reply(200, "", "");
    expectOutcome(outcomeOf(IFileManager::UploadFile(file, L"n", L"p", error)), true, 200, L"r");
    platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=n&filepath=p&targetFolderId=t")
        .reply(200, R"({"data":)" + authority("r", atStore("/2")) + "}");
    store.expect("PUT", "/2").body("plain").withoutHeader("Content-Encoding").reply(200, "", "");
    expectOutcome(outcomeOf(IFileManager::UploadFileByArkiv(file, L"n", L"p", L"t", error)), true, 200, L"r");
}

TEST_F(FileManagerTest, downloadsByArkivAskForVersionOneUnlessToldOtherwise)
{
    const std::wstring target = wideLocalPath("f");
    for (const char* version : {"1", "5"}) {
        platform.expect("POST", std::string("/file/doc/f-1/download/url?version=") + version)
            .reply(200, R"({"data":)" + authority("r", atStore("/1")) + "}");
        store.expect("GET", "/1").reply(fileReply("x"));
    }
    expectOutcome(outcomeOf(IFileManager::DownloadFileByArkiv(L"f-1", target, error)), true, 200, target);
    expectOutcome(outcomeOf(IFileManager::DownloadFileByArkiv(L"f-1", 5, target, error)), true, 200, target);
}

TEST_F(FileManagerTest, downloadsAFileByItsRemotePath)
{
    const std::wstring target = wideLocalPath("f");
    platform.expect("POST", "/file/read").body("r/f").reply(200, authority("r", atStore("/1")));
    store.expect("GET", "/1").reply(fileReply("x"));
    std::future<PromiseData> future = IFileManager::DownloadFile(std::wstring(L"r/f"), target, error);
    expectOutcome(outcomeOf(future), true, 200, target);
}

} // namespace
} // namespace orlo::test
