#include "RawExchange.h"
#include "TransferFixture.h"

namespace orlo::platform::test {
namespace {

class UploadRoutes : public TransferTest
{
protected:
    static std::string stored(const std::string& fileId, int versionIndex, int length)
    {
        return R"({"code":10000,"message":"OK","data":{"fileId":")" + fileId + R"(","versionIndex":)" + std::to_string(versionIndex) +
               R"(,"length":)" + std::to_string(length) + "}}";
    }
    /// A target whose last digit is another.
    static std::string forged(std::string target)
    {
        target.back() = target.back() == '0' ? '1' : '0';
        return target;
    }
};

TEST_F(UploadRoutes, TheAuthorityIsAnObjectWithoutEnvelope)
{
    const Reply reply = demo().put("/file/new?fileName=%E5%A1%94%20%E6%A5%BC.dwg&filepath=demo%2Fdemo-account", "null");
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body, IsJson(R"({"fileOSSPath":"<text>","fileUrlWithSAS":"<text>"})"));
    const std::string path = jsonText(reply.body, "fileOSSPath");
    EXPECT_EQ(path.compare(0, 18, "demo/demo-account/"), 0) << path;
    EXPECT_EQ(path.substr(path.size() - 12), "/塔 楼.dwg");
}

TEST_F(UploadRoutes, TheAuthorityNeedsNamePathAndToken)
{
    EXPECT_EQ(demo().put("/file/new?fileName=a", "null").status, 400);
    EXPECT_EQ(demo().put("/file/new?filepath=a", "null").status, 400);
    EXPECT_EQ(demo().put("/file/new?fileName=a%2Fb&filepath=a", "null").status, 400);
    EXPECT_EQ(nobody().put("/file/new?fileName=a&filepath=a", "null").status, 401);
}

TEST_F(UploadRoutes, UploadsOfOneNameAreKeptApart)
{
    const Authority first = uploadAuthority();
    const Authority second = uploadAuthority();
    EXPECT_NE(first.remotePath, second.remotePath);
    send(first.target, "first");
    send(second.target, "second");
    EXPECT_EQ(platform.ask(contentOf, first.remotePath), "first");
    EXPECT_EQ(platform.ask(contentOf, second.remotePath), "second");
}

TEST_F(UploadRoutes, APlainUploadAnswersNothing)
{
    const std::string bytes("\0\xff\r\n\r\n", 6);
    const Authority authority = uploadAuthority();
    const Reply reply = send(authority.target, bytes);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "");
    EXPECT_EQ(platform.ask(contentOf, authority.remotePath), bytes);
}

TEST_F(UploadRoutes, TheAnswerToAPlainUploadCanBeChosen)
{
    platform.transfers().setPlainPutAnswer(R"({"data":{"fileId":"f"}})");
    EXPECT_EQ(send(uploadAuthority().target, "x").body, R"({"data":{"fileId":"f"}})");
    platform.transfers().setPlainPutAnswer("");
    EXPECT_EQ(send(uploadAuthority().target, "x").body, "");
}

TEST_F(UploadRoutes, BytesThatComeAgainReplaceTheFirst)
{
    const Authority authority = uploadAuthority();
    send(authority.target, "first");
    send(authority.target, "the second");
    EXPECT_EQ(platform.ask(contentOf, authority.remotePath), "the second");
    ASSERT_EQ(platform.ask(storedFiles).size(), 1u);
    EXPECT_EQ(platform.ask(storedFiles)[0].length, 10);
}

TEST_F(UploadRoutes, StoredFilesAreListedOnceTheirBytesHaveCome)
{
    project("p1");
    const Authority doc = docUploadAuthority(rootFolder("p1"), "b.dwg");
    const Authority plain = uploadAuthority();
    EXPECT_TRUE(platform.ask(storedFiles).empty());
    send(plain.target, "12");
    const std::string fileId = jsonText(send(doc.target, "123").body, "data.fileId");
    const std::vector<StoredFile> files = platform.ask(storedFiles);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].remotePath, doc.remotePath);
    EXPECT_EQ(files[0].fileName, "b.dwg");
    EXPECT_EQ(files[0].fileId, fileId);
    EXPECT_EQ(files[0].versionIndex, 1);
    EXPECT_EQ(files[0].length, 3);
    EXPECT_EQ(files[1].remotePath, plain.remotePath);
    EXPECT_EQ(files[1].fileId, "");
    EXPECT_EQ(files[1].versionIndex, 0);
    EXPECT_THROW(platform.ask(contentOf, "none"), std::runtime_error);
}

TEST_F(UploadRoutes, AnEmptyFileIsAFile)
{
    const Authority authority = uploadAuthority();
    EXPECT_EQ(send(authority.target, "").status, 200);
    EXPECT_EQ(platform.ask(contentOf, authority.remotePath), "");
    EXPECT_EQ(platform.ask(storedFiles).size(), 1u);
}

TEST_F(UploadRoutes, AGzipBodyIsStoredUnpacked)
{
    project("p1");
    const std::string bytes = noise(3'000'000) + std::string(3'000'000, 'x');
    const Authority plain = uploadAuthority();
    EXPECT_EQ(send(plain.target, gzipped(bytes), {{"Content-Encoding", "gzip"}}).status, 200);
    EXPECT_TRUE(platform.ask(contentOf, plain.remotePath) == bytes);
    const Reply doc = send(docUploadAuthority(rootFolder("p1")).target, gzipped(bytes), {{"Content-Encoding", "gzip"}});
    EXPECT_THAT(doc.body, IsJson(stored("<id>", 1, 6'000'000)));
}

TEST_F(UploadRoutes, ABrokenGzipBodyIsRefusedAndNotStored)
{
    const Authority authority = uploadAuthority();
    std::string packed = gzipped(noise(100'000));
    EXPECT_THAT(send(authority.target, packed.substr(0, 50'000), {{"Content-Encoding", "gzip"}}).body, IsJson(refusal(400)));
    packed[50'000] = static_cast<char>(packed[50'000] ^ 0x10);
    EXPECT_EQ(send(authority.target, packed, {{"Content-Encoding", "gzip"}}).status, 400);
    EXPECT_EQ(send(authority.target, "plain", {{"Content-Encoding", "gzip"}}).status, 400);
    EXPECT_EQ(send(authority.target, "", {{"Content-Encoding", "gzip"}}).status, 400);
    EXPECT_EQ(send(authority.target, "plain", {{"Content-Encoding", "br"}}).status, 415);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(UploadRoutes, AnUploadWithoutALengthIsRefused)
{
    const std::string target = uploadAuthority().target;
    const RawReply reply = exchange(platform.url(), "PUT " + target + " HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\n\r\n");
    EXPECT_EQ(reply.status(), 411);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(UploadRoutes, AFollowingRequestOnTheConnectionIsFoundBehindARefusedBody)
{
    const std::string body = "GET /projects HTTP/1.1\r\n\r\n";
    const std::string length = std::to_string(body.size());
    const RawReply reply =
        exchange(platform.url(), "PUT /blobs/a HTTP/1.1\r\nContent-Length: " + length + "\r\n\r\n" + body +
                                     "GET /resource/limit HTTP/1.1\r\nConnection: close\r\nAuthorization: Bearer demo-token\r\n\r\n");
    EXPECT_EQ(reply.status(), 403);
    EXPECT_EQ(reply.bytes.substr(reply.bytes.rfind("\r\n\r\n") + 4), R"({"code":10000,"message":"OK","data":null})");
    EXPECT_EQ(platform.requests().count("GET", "/"), 1u);
}

TEST_F(UploadRoutes, ABodyThatEndsEarlyIsNotStored)
{
    const std::string target = uploadAuthority().target;
    {
        const auto connection = connectTo(platform.url());
        EXPECT_TRUE(connection->write("PUT " + target + " HTTP/1.1\r\nContent-Length: 1000\r\n\r\nbegin"));
        EXPECT_TRUE(eventually([&] { return platform.requests().count("PUT", "/blobs/") == 1; }));
    }
    EXPECT_EQ(send(target, "whole").status, 200);
    ASSERT_EQ(platform.ask(storedFiles).size(), 1u);
    EXPECT_EQ(platform.ask(storedFiles)[0].length, 5);
}

TEST_F(UploadRoutes, ASignedAddressIsForItsMethodOnly)
{
    const Authority authority = uploadAuthority();
    EXPECT_THAT(fetch(authority.target).body, IsJson(refusal(403)));
    send(authority.target, "bytes");
    EXPECT_THAT(send(downloadAuthority(authority.remotePath).target, "other").body, IsJson(refusal(403)));
    EXPECT_EQ(platform.ask(contentOf, authority.remotePath), "bytes");
}

TEST_F(UploadRoutes, AnExpiredOrAlteredAddressTakesNothing)
{
    const Authority authority = uploadAuthority();
    EXPECT_EQ(send(forged(authority.target), "bytes").status, 403);
    EXPECT_EQ(send(authority.target.substr(0, authority.target.find('?')), "bytes").status, 403);
    platform.clock().move(901);
    EXPECT_THAT(send(authority.target, "bytes").body, IsJson(refusal(403)));
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(UploadRoutes, AnAccessTokenAtASignedAddressIsRefused)
{
    const Authority authority = uploadAuthority();
    EXPECT_THAT(send(authority.target, "bytes", {{"Authorization", "Bearer demo-token"}}).body, IsJson(refusal(400)));
    EXPECT_EQ(send(authority.target, "bytes", {{"Authorization", "demo-token"}}).status, 400);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(UploadRoutes, TheLifeOfAddressesCanBeChosen)
{
    platform.transfers().setSignedLifetime(5);
    const Authority authority = uploadAuthority();
    platform.transfers().setSignedLifetime(0);
    EXPECT_EQ(send(uploadAuthority().target, "bytes").status, 403);
    EXPECT_EQ(send(authority.target, "bytes").status, 200);
    platform.clock().move(6);
    EXPECT_EQ(send(authority.target, "bytes").status, 403);
}

TEST_F(UploadRoutes, AnUploadByArkivTellsFileVersionAndLength)
{
    project("p1");
    const Reply reply = send(docUploadAuthority(rootFolder("p1"), "b.dwg").target, "bytes");
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body, IsJson(stored("<id>", 1, 5)));
}

TEST_F(UploadRoutes, TheSameNameInTheSameFolderIsAFurtherVersion)
{
    project("p1");
    const std::string folder = rootFolder("p1");
    const std::string fileId = jsonText(send(docUploadAuthority(folder, "b.dwg").target, "1").body, "data.fileId");
    const Authority second = docUploadAuthority(folder, "b.dwg");
    EXPECT_THAT(send(second.target, "22").body, IsJson(stored(fileId, 2, 2)));
    EXPECT_THAT(send(second.target, "22").body, IsJson(stored(fileId, 2, 2))) << "sent again after a lost answer";
    const std::string other = platform.change(addFolder, {folder, "other"});
    EXPECT_NE(jsonText(send(docUploadAuthority(other, "b.dwg").target, "1").body, "data.fileId"), fileId);
    EXPECT_NE(jsonText(send(docUploadAuthority(folder, "c.dwg").target, "1").body, "data.fileId"), fileId);
}

TEST_F(UploadRoutes, AnUploadByArkivNeedsItsFolder)
{
    const std::string base = "/file/doc/upload/url/with/filename?fileName=a&filepath=b";
    EXPECT_THAT(demo().get(base + "&targetFolderId=none").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().get(base).status, 400);
    EXPECT_EQ(nobody().get(base).status, 401);
}

TEST_F(UploadRoutes, AnUploadBecomesAVersion)
{
    project("p1");
    const std::string folder = rootFolder("p1");
    const std::string dataset =
        jsonText(demo().post("/v2/dataSets", R"({"name":"a.b.c","folderId":")" + folder + R"(","type":"c"})").body, "data.id");
    const Authority authority = uploadAuthority();
    const std::string target = "/dataset/" + dataset + "/version?sourceFile=" + authority.remotePath;
    EXPECT_EQ(demo().put(target, "{}").status, 400) << "the bytes haven't come";
    send(authority.target, "1234");
    EXPECT_THAT(demo().put(target, "{}").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"<number>","version":1,"dataSetId":")" + dataset +
                       R"(","dataSetSourceFile":")" + authority.remotePath + R"(","displayVersion":"V1","creationTime":"<time>",)" +
                       R"("status":"WIP","description":"","verifyStatus":"Success","metaInfo":"","size":4}})"));
}

TEST_F(UploadRoutes, AnUploadByArkivBecomesAVersion)
{
    project("p1");
    const std::string folder = rootFolder("p1");
    platform.change(addDataset, {"a", folder, {}, "", {}, "", "", "d1", "m1"});
    const std::string fileId = jsonText(send(docUploadAuthority(folder).target, "12345").body, "data.fileId");
    const std::string target = "/dataset/d1/doc/version?sourceFile=" + fileId;
    EXPECT_THAT(demo().put(target, R"({"length":5,"version":1})").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"<number>","version":1,"dataSetId":"d1","dataSetSourceFile":")" +
                       fileId +
                       R"(","displayVersion":"V1","creationTime":"<time>","status":"WIP","description":"","verifyStatus":"Success",)" +
                       R"("metaInfo":"","size":5}})"));
    EXPECT_THAT(demo().get("/projects?scenario=OWNER").body,
                IsJson(R"([{"creationTime":"<time>","description":"","id":"p1","name":"Tower","owner":"demo-account",
                    "status":"Ongoing","size":5}])"));
    EXPECT_EQ(demo().put(target, R"({"length":6,"version":1})").status, 400);
    EXPECT_EQ(demo().put(target, R"({"length":5,"version":2})").status, 400);
    EXPECT_EQ(demo().put(target, R"({"length":5,"version":-1})").status, 400);
    EXPECT_EQ(demo().put(target, R"({"length":"5","version":1})").status, 400);
    EXPECT_EQ(demo().put(target, R"({"length":5})").status, 400);
    EXPECT_EQ(demo().put("/dataset/d1/doc/version?sourceFile=none", R"({"length":5,"version":1})").status, 400);
}

TEST_F(UploadRoutes, AFileOfAProjectIsDeletedWithAllItsVersions)
{
    project("p1");
    project("p2");
    const std::string folder = rootFolder("p1");
    const std::string fileId = jsonText(send(docUploadAuthority(folder).target, "1").body, "data.fileId");
    send(docUploadAuthority(folder).target, "2");
    const std::string address = "/file/doc/" + fileId + "/download/url?version=1";
    const std::string target = readAuthority(platform, demo().post(address, "null").body, "data.").target;
    EXPECT_EQ(demo().del("/projects/p2/files/" + fileId).status, 404);
    EXPECT_EQ(demo().del("/projects/none/files/" + fileId).status, 404);
    EXPECT_EQ(other().del("/projects/p1/files/" + fileId).status, 403);
    EXPECT_EQ(fetch(target).status, 200);
    EXPECT_THAT(demo().del("/projects/p1/files/" + fileId).body, IsJson(R"({"code":10000,"message":"OK","data":null})"));
    EXPECT_EQ(fetch(target).status, 404);
    EXPECT_EQ(demo().post(address, "null").status, 404);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
    EXPECT_EQ(demo().del("/projects/p1/files/" + fileId).status, 404);
}

TEST_F(UploadRoutes, FilesGoWithTheirProject)
{
    project("p1");
    const Authority authority = docUploadAuthority(rootFolder("p1"));
    send(authority.target, "1");
    const std::string target = downloadAuthority(authority.remotePath).target;
    EXPECT_EQ(fetch(target).status, 200);
    demo().del("/v2/projects/p1");
    EXPECT_EQ(fetch(target).status, 404);
    EXPECT_EQ(send(authority.target, "1").status, 404);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

} // namespace
} // namespace orlo::platform::test
