#include "TransferFixture.h"

#include <LocalPlatform/Server/Gzip.h>
#include <random>

namespace orlo::platform::test {

namespace {

httplib::Client client(const std::string& url)
{
    httplib::Client result(url);
    result.set_url_encode(false);
    result.set_decompress(false);
    result.set_read_timeout(60);
    return result;
}

Reply toReply(const httplib::Result& result)
{
    return result ? Reply{result->status, result->body, result.error()} : Reply{0, {}, result.error()};
}

} // namespace

Authority readAuthority(const LocalPlatform& platform, const std::string& body, const std::string& place)
{
    const std::string address = jsonText(body, place + "fileUrlWithSAS");
    EXPECT_EQ(address.compare(0, platform.url().size(), platform.url()), 0) << address;
    return {jsonText(body, place + "fileOSSPath"), address.substr(platform.url().size())};
}

Reply signedGet(const std::string& url, const std::string& target, const httplib::Headers& headers)
{
    return toReply(client(url).Get(target, headers));
}

Reply signedPut(const std::string& url, const std::string& target, const std::string& bytes, const httplib::Headers& headers)
{
    return toReply(client(url).Put(target, headers, bytes, ""));
}

std::string gzipped(const std::string& bytes)
{
    std::string packed;
    GzipWriter writer([&](std::string_view piece) { packed.append(piece); });
    writer.feed(bytes);
    writer.finish();
    return packed;
}

std::string noise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::mt19937 random(7);
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

Authority TransferTest::uploadAuthority(const std::string& fileName) const
{
    return readAuthority(platform, demo().put("/file/new?fileName=" + fileName + "&filepath=demo%2Fdemo-account", "null").body);
}

Authority TransferTest::docUploadAuthority(const std::string& folderId, const std::string& fileName) const
{
    const std::string query = "?fileName=" + fileName + "&filepath=demo&targetFolderId=" + folderId;
    return readAuthority(platform, demo().get("/file/doc/upload/url/with/filename" + query).body, "data.");
}

Authority TransferTest::downloadAuthority(const std::string& remotePath) const
{
    return readAuthority(platform, demo().post("/file/read", remotePath).body);
}

std::string TransferTest::seeded(const std::string& bytes)
{
    platform.change(addFile, "seeded.bin", bytes);
    return downloadAuthority("seeded.bin").target;
}

} // namespace orlo::platform::test
