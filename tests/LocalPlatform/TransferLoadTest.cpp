#include "PlatformProgram.h"
#include "RawExchange.h"
#include "TransferFixture.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

#include <atomic>
#include <csignal>
#include <future>
#include <set>

namespace orlo::platform::test {
namespace {

using orlo::test::inThreads;
using orlo::test::TempFolder;

class TransferLoad : public TransferTest
{};

TEST_F(TransferLoad, OpenDownloadsAreCountedWhileTheyAreOpen)
{
    const std::string target = seeded(noise(100'000));
    Fault slow;
    slow.kind = FaultKind::Delay;
    slow.path = "/blobs/";
    slow.prefix = true;
    slow.calls = 3;
    slow.delayMilliseconds = 600'000;
    platform.faults().add(slow);
    EXPECT_EQ(platform.requests().peakDownloads(), 0u);
    std::vector<std::future<int>> waiting;
    for (int i = 0; i < 3; ++i)
        waiting.push_back(std::async(std::launch::async, [&] { return fetch(target).status; }));
    EXPECT_TRUE(eventually([&] { return platform.requests().openDownloads() == 3; }));
    EXPECT_EQ(platform.requests().peakDownloads(), 3u);
    EXPECT_EQ(fetch(target).status, 200);
    EXPECT_EQ(platform.requests().openDownloads(), 3u);
    EXPECT_EQ(platform.requests().peakDownloads(), 4u);
    platform.requests().clear();
    EXPECT_EQ(platform.requests().peakDownloads(), 3u);
    platform.stop();
    EXPECT_EQ(platform.requests().openDownloads(), 0u);
}

TEST_F(TransferLoad, ClientsThatTakeTurnsAreNeverCountedTogether)
{
    for (const std::size_t size : {0u, 1u, 16'384u, 300'000u}) {
        const std::string target = seeded(std::string(size, 'x'));
        platform.requests().clear();
        inThreads(4, [&] {
            for (int i = 0; i < 25; ++i)
                EXPECT_EQ(fetch(target).body.size(), size);
        });
        EXPECT_LE(platform.requests().peakDownloads(), 4u) << size;
        EXPECT_EQ(platform.requests().count("GET", "/blobs/"), 100u);
        EXPECT_EQ(platform.requests().openDownloads(), 0u);
    }
}

TEST_F(TransferLoad, AStopEndsADownloadThatItsClientDoesNotRead)
{
    const auto connection = connectTo(platform.url());
    const std::string target = seeded(noise(30'000'000)); // more than the sockets hold
    EXPECT_TRUE(connection->write("GET " + target + " HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(eventually([&] { return platform.requests().openDownloads() == 1; }));
    platform.stop();
    EXPECT_EQ(platform.requests().openDownloads(), 0u);
    EXPECT_LT(readAll(*connection).bytes.size(), 30'000'000u);
}

TEST_F(TransferLoad, UploadsAtOnceAllArrive)
{
    std::atomic<int> next{0};
    inThreads(8, [&] {
        for (int i = 0; i < 10; ++i) {
            const std::string bytes = noise(static_cast<std::size_t>(50'000 + next++));
            const Authority authority = uploadAuthority();
            EXPECT_EQ(send(authority.target, bytes).status, 200);
            EXPECT_TRUE(platform.ask(contentOf, authority.remotePath) == bytes);
        }
    });
    EXPECT_EQ(platform.ask(storedFiles).size(), 80u);
}

TEST_F(TransferLoad, OneNameUploadedByArkivFromAllSidesGetsAllVersions)
{
    project("p1");
    const std::string folder = rootFolder("p1");
    inThreads(8, [&] {
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(send(docUploadAuthority(folder).target, "x").status, 200);
    });
    std::set<int> versions;
    for (const StoredFile& file : platform.ask(storedFiles))
        versions.insert(file.versionIndex);
    EXPECT_EQ(versions.size(), 40u);
    EXPECT_EQ(*versions.rbegin(), 40);
}

TEST_F(TransferLoad, AnUploadInProgressHoldsNobodyUp)
{
    const std::string target = uploadAuthority().target;
    Fault stall;
    stall.kind = FaultKind::Stall;
    stall.path = "/blobs/";
    stall.prefix = true;
    stall.method = "PUT";
    stall.bytes = 3;
    stall.delayMilliseconds = 600'000;
    stall.ofRequest = true;
    const int id = platform.faults().add(stall);
    auto upload = std::async(std::launch::async, [&] { return send(target, "bytes").status; });
    EXPECT_TRUE(eventually([&] { return platform.faults().count(id) == 1; }));
    EXPECT_EQ(send(uploadAuthority().target, "bytes").status, 200);
    EXPECT_EQ(platform.ask(storedFiles).size(), 1u);
    platform.stop();
    EXPECT_EQ(upload.get(), 0);
}

TEST(BigFiles, PassThroughWithoutBeingHeldInMemory)
{
    constexpr std::size_t size = 256 * 1024 * 1024;
    const TempFolder folder;
    PlatformProgram program({"--data", folder.path("平台").u8string()});
    const std::string url = program.address();
    const std::string piece = noise(1024 * 1024);

    httplib::Client client(url);
    client.set_read_timeout(60);
    const auto give = [&](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        const std::size_t from = offset % piece.size();
        return sink.write(piece.data() + from, std::min(length, piece.size() - from));
    };
    const auto stored = client.Put("/_control/files?path=big", size, give, "");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->status, 200);

    const Reply authority = Caller(url, "demo-token").post("/file/read", "big");
    std::size_t received = 0;
    std::size_t wrong = 0;
    const auto take = [&](const char* data, std::size_t length) {
        for (std::size_t done = 0; done < length;) {
            const std::size_t from = (received + done) % piece.size();
            const std::size_t count = std::min(length - done, piece.size() - from);
            wrong += piece.compare(from, count, data + done, count) != 0;
            done += count;
        }
        received += length;
        return true;
    };
    EXPECT_TRUE(client.Get(jsonText(authority.body, "fileUrlWithSAS").substr(url.size()), take));
    EXPECT_EQ(received, size);
    EXPECT_EQ(wrong, 0u);
    EXPECT_GT(program.peakMemory(), 0u);
    EXPECT_LT(program.peakMemory(), 128u * 1024 * 1024);
    EXPECT_EQ(program.end(SIGTERM), 0);
}

} // namespace
} // namespace orlo::platform::test
