#include "RawExchange.h"
#include "TransferFixture.h"

namespace orlo::platform::test {
namespace {

class DownloadRoutes : public TransferTest
{
protected:
    DownloadRoutes()
    {
        project("p1");
        platform.change(addDataset, {"a", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
    }
};

TEST_F(DownloadRoutes, TheAuthorityIsAskedForByThePlainPath)
{
    platform.change(addFile, "demo/塔 楼.dwg", "bytes");
    const Reply reply = demo().post("/file/read", "demo/塔 楼.dwg");
    EXPECT_THAT(reply.body, IsJson(R"({"fileOSSPath":"demo/塔 楼.dwg","fileUrlWithSAS":"<text>"})"));
    EXPECT_EQ(fetch(readAuthority(platform, reply.body).target).body, "bytes");
}

TEST_F(DownloadRoutes, OnlyWhatIsStoredCanBeRead)
{
    EXPECT_THAT(demo().post("/file/read", "none").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().post("/file/read", "").status, 404);
    EXPECT_EQ(demo().post("/file/read", uploadAuthority().remotePath).status, 404);
    EXPECT_EQ(nobody().post("/file/read", "none").status, 401);
}

TEST_F(DownloadRoutes, EveryVersionByArkivCanBeRead)
{
    const std::string folder = rootFolder("p1");
    const Authority first = docUploadAuthority(folder);
    const std::string fileId = jsonText(send(first.target, "one").body, "data.fileId");
    send(docUploadAuthority(folder).target, "two");
    const std::string base = "/file/doc/" + fileId + "/download/url";
    const Reply reply = demo().post(base + "?version=1", "null");
    EXPECT_THAT(reply.body,
                IsJson(R"({"code":10000,"message":"OK","data":{"fileOSSPath":")" + first.remotePath + R"(","fileUrlWithSAS":"<text>"}})"));
    EXPECT_EQ(fetch(readAuthority(platform, reply.body, "data.").target).body, "one");
    EXPECT_EQ(fetch(readAuthority(platform, demo().post(base + "?version=2", "null").body, "data.").target).body, "two");
    EXPECT_EQ(demo().post(base + "?version=3", "null").status, 404);
    EXPECT_EQ(demo().post(base + "?version=new", "null").status, 400);
    EXPECT_EQ(demo().post(base, "null").status, 400);
    EXPECT_EQ(demo().post("/file/doc/none/download/url?version=1", "null").status, 404);
}

TEST_F(DownloadRoutes, SeedsNameTheFilesOfADataset)
{
    const std::string path = platform.change(addDatasetFile, "d1", "块/a b.bin", "first");
    platform.change(addDatasetFile, "d1", "top.bin", "second");
    const Reply reply = demo().post("/datasets/d1/blockFiles/readSAS", R"(["top.bin","块/a b.bin"])");
    EXPECT_THAT(reply.body, IsJson(R"({"code":10000,"message":"OK","data":[
        {"datasetFilePath":"top.bin","datasetFilePathWithSAS":"<text>"},
        {"datasetFilePath":"块/a b.bin","datasetFilePathWithSAS":"<text>"}]})"));
    EXPECT_EQ(fetch(jsonText(reply.body, "data.0.datasetFilePathWithSAS").substr(platform.url().size())).body, "second");
    const std::string target = jsonText(reply.body, "data.1.datasetFilePathWithSAS").substr(platform.url().size());
    EXPECT_EQ(fetch(target).body, "first");
    EXPECT_EQ(target.substr(0, target.find('?')), path);
}

TEST_F(DownloadRoutes, AFileOfADatasetIsReplacedUnderTheSameAddress)
{
    const std::string path = platform.change(addDatasetFile, "d1", "a/b", "first");
    EXPECT_EQ(platform.change(addDatasetFile, "d1", "a/b", "second"), path);
    const Reply reply = demo().post("/datasets/d1/blockFiles/readSAS", R"(["a/b"])");
    EXPECT_EQ(fetch(jsonText(reply.body, "data.0.datasetFilePathWithSAS").substr(platform.url().size())).body, "second");
}

TEST_F(DownloadRoutes, OneUnknownSeedRefusesTheBatch)
{
    platform.change(addDatasetFile, "d1", "a/b", "bytes");
    EXPECT_THAT(demo().post("/datasets/d1/blockFiles/readSAS", R"(["a/b","a/c"])").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().post("/datasets/none/blockFiles/readSAS", R"(["a/b"])").status, 404);
    EXPECT_EQ(demo().post("/datasets/d1/blockFiles/readSAS", R"({"a":"b"})").status, 400);
    EXPECT_THAT(demo().post("/datasets/d1/blockFiles/readSAS", "[]").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    EXPECT_THROW(platform.change(addDatasetFile, "none", "a", ""), std::runtime_error);
    EXPECT_THROW(platform.change(addDatasetFile, "d1", "", ""), std::runtime_error);
}

TEST_F(DownloadRoutes, AFileComesWholeWithItsLength)
{
    const std::string bytes = noise(5'000'000);
    const std::string target = seeded(bytes);
    const RawReply reply = exchange(platform.url(), "GET " + target + " HTTP/1.1\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(reply.status(), 200);
    EXPECT_NE(reply.bytes.find("Content-Length: 5000000\r\n"), std::string::npos);
    EXPECT_NE(reply.bytes.find("Content-Type: application/octet-stream\r\n"), std::string::npos);
    EXPECT_TRUE(reply.body() == bytes);
}

TEST_F(DownloadRoutes, ManyFilesComeOverOneConnection)
{
    const std::string request = "GET " + seeded("some bytes") + " HTTP/1.1\r\n";
    const RawReply reply = exchange(platform.url(), request + "\r\n" + request + "\r\n" + request + "Connection: close\r\n\r\n");
    std::size_t bodies = 0;
    for (std::size_t at = reply.bytes.find("\r\n\r\nsome bytes"); at != std::string::npos;
         at = reply.bytes.find("\r\n\r\nsome bytes", at + 1))
        ++bodies;
    EXPECT_EQ(bodies, 3u);
}

TEST_F(DownloadRoutes, AnEmptyFileIsAnEmptyBody)
{
    const Reply reply = fetch(seeded(""));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "");
    EXPECT_EQ(platform.requests().openDownloads(), 0u);
}

TEST_F(DownloadRoutes, AnAccessTokenAtASignedAddressIsRefused)
{
    const std::string target = seeded("bytes");
    EXPECT_THAT(demo().get(target).body, IsJson(refusal(400)));
    EXPECT_EQ(fetch(target, {{"Authorization", "Basic YTpi"}}).status, 400);
    EXPECT_EQ(fetch(target).status, 200);
}

TEST_F(DownloadRoutes, TheSumOfTheBytesIsToldWhenThatIsSwitchedOn)
{
    const std::string target = seeded("bytes");
    const auto head = [&](const std::string& more) {
        return exchange(platform.url(), "GET " + target + " HTTP/1.1\r\nConnection: close\r\n" + more + "\r\n").bytes;
    };
    EXPECT_EQ(head("").find("Content-MD5"), std::string::npos);
    platform.transfers().setSums(Sums::told);
    EXPECT_NE(head("").find("Content-MD5: SzpiGLs+OnMD6KFxpg/Pkg==\r\n"), std::string::npos);
    platform.transfers().setSums(Sums::wrong);
    EXPECT_NE(head("").find("Content-MD5: "), std::string::npos);
    EXPECT_EQ(head("").find("SzpiGLs+OnMD6KFxpg/Pkg=="), std::string::npos);
    platform.transfers().setGzipAnswers(true);
    EXPECT_EQ(head("Accept-Encoding: gzip\r\n").find("Content-MD5"), std::string::npos) << "it would be that of the packed bytes";
}

TEST_F(DownloadRoutes, AnswersArePackedForThoseWhoAcceptItWhenThatIsSwitchedOn)
{
    const std::string bytes = noise(100'000) + std::string(2'000'000, 'x');
    const std::string target = seeded(bytes);
    EXPECT_TRUE(fetch(target, {{"Accept-Encoding", "gzip"}}).body == bytes);
    platform.transfers().setGzipAnswers(true);
    const Reply packed = fetch(target, {{"Accept-Encoding", "deflate, gzip"}});
    EXPECT_TRUE(packed.body == gzipped(bytes));
    EXPECT_TRUE(fetch(target, {{"Accept-Encoding", "identity"}}).body == bytes);
    const RawReply raw = exchange(platform.url(), "GET " + target + " HTTP/1.1\r\nAccept-Encoding: gzip\r\nConnection: close\r\n\r\n");
    EXPECT_NE(raw.bytes.find("Content-Encoding: gzip\r\n"), std::string::npos);
    EXPECT_NE(raw.bytes.find("Content-Length: " + std::to_string(packed.body.size()) + "\r\n"), std::string::npos);
}

TEST_F(DownloadRoutes, AFileThatIsReplacedMeanwhileComesAsItWas)
{
    const std::string bytes = noise(20'000'000); // more than the sockets hold
    const auto connection = connectTo(platform.url());
    EXPECT_TRUE(connection->write("GET " + seeded(bytes) + " HTTP/1.1\r\nConnection: close\r\n\r\n"));
    EXPECT_TRUE(eventually([&] { return platform.requests().openDownloads() == 1; }));
    RawReply reply;
    EXPECT_TRUE(connection->read(reply.bytes));
    platform.change(addFile, "seeded.bin", "other");
    while (connection->read(reply.bytes))
        ;
    EXPECT_TRUE(reply.body() == bytes);
    EXPECT_EQ(platform.ask(contentOf, "seeded.bin"), "other");
}

} // namespace
} // namespace orlo::platform::test
