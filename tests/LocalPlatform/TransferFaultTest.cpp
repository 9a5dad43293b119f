#include "RawExchange.h"
#include "TransferFixture.h"
#include "support/TempFolder.h"

#include <future>

namespace orlo::platform::test {
namespace {

using orlo::test::TempFolder;

class TransferFaults : public TransferTest
{
protected:
    static Fault fault(FaultKind kind, const std::string& method, std::size_t bytes)
    {
        Fault result;
        result.kind = kind;
        result.path = "/blobs/";
        result.prefix = true;
        result.method = method;
        result.bytes = bytes;
        return result;
    }
    static Fault ofRequest(FaultKind kind, std::size_t bytes)
    {
        Fault result = fault(kind, "PUT", bytes);
        result.ofRequest = true;
        return result;
    }
    RawReply rawGet(const std::string& target) const { return exchange(platform.url(), "GET " + target + " HTTP/1.1\r\n\r\n"); }
    RawReply rawPut(const std::string& target, const std::string& bytes) const
    {
        return exchange(platform.url(),
                        "PUT " + target + " HTTP/1.1\r\nContent-Length: " + std::to_string(bytes.size()) + "\r\n\r\n" + bytes);
    }
};

TEST_F(TransferFaults, ADownloadIsResetInTheMiddleOfItsBody)
{
    const std::string bytes = noise(3'000'000);
    const std::string target = seeded(bytes);
    const int id = platform.faults().add(fault(FaultKind::ResetAfterBytes, "GET", 2'000'000));
    const RawReply reply = rawGet(target);
    EXPECT_TRUE(reply.reset);
    EXPECT_EQ(reply.bytes.size(), 2'000'000u);
    EXPECT_TRUE(bytes.compare(0, reply.body().size(), reply.body()) == 0);
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_TRUE(fetch(target).body == bytes);
}

TEST_F(TransferFaults, ADownloadIsCutInTheMiddleOfItsBody)
{
    const std::string bytes = noise(3'000'000);
    const std::string target = seeded(bytes);
    const int id = platform.faults().add(fault(FaultKind::CutBody, "GET", 1'234'567));
    const RawReply reply = rawGet(target);
    EXPECT_FALSE(reply.reset);
    EXPECT_EQ(reply.status(), 200);
    EXPECT_NE(reply.bytes.find("Content-Length: 3000000\r\n"), std::string::npos);
    EXPECT_TRUE(reply.body() == bytes.substr(0, 1'234'567));
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(TransferFaults, APackedDownloadIsCutToo)
{
    const std::string bytes = noise(100'000);
    const std::string target = seeded(bytes);
    platform.transfers().setGzipAnswers(true);
    platform.faults().add(fault(FaultKind::CutBody, "GET", 50'000));
    const RawReply reply = exchange(platform.url(), "GET " + target + " HTTP/1.1\r\nAccept-Encoding: gzip\r\n\r\n");
    EXPECT_TRUE(reply.body() == gzipped(bytes).substr(0, 50'000));
}

TEST_F(TransferFaults, ADownloadIsRefusedWithAStatusOrDelayed)
{
    const std::string target = seeded("bytes");
    platform.faults().add(fault(FaultKind::Status, "GET", 0));
    EXPECT_EQ(fetch(target).status, 503);
    Fault slow = fault(FaultKind::Delay, "GET", 0);
    slow.delayMilliseconds = 20;
    const int id = platform.faults().add(slow);
    EXPECT_EQ(fetch(target).body, "bytes");
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(TransferFaults, AStalledDownloadGoesOnAfterAWhile)
{
    const std::string bytes = noise(1'000'000);
    const std::string target = seeded(bytes);
    Fault stall = fault(FaultKind::Stall, "GET", 500'000);
    stall.delayMilliseconds = 30;
    const int id = platform.faults().add(stall);
    EXPECT_TRUE(fetch(target).body == bytes);
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(TransferFaults, AStalledDownloadSendsWhatIsBeforeTheStallOnly)
{
    const std::string bytes = noise(1'000'000);
    const std::string target = seeded(bytes);
    Fault stall = fault(FaultKind::Stall, "GET", 500'000);
    stall.delayMilliseconds = 600'000;
    platform.faults().add(stall);
    auto download = std::async(std::launch::async, [&] { return rawGet(target); });
    EXPECT_TRUE(eventually([&] { return platform.requests().openDownloads() == 1; }));
    EXPECT_EQ(demo().get("/projects").status, 200);
    platform.stop();
    const std::string body = download.get().body();
    EXPECT_LE(body.size(), 500'000u);
    EXPECT_TRUE(bytes.compare(0, body.size(), body) == 0);
    EXPECT_EQ(platform.requests().openDownloads(), 0u);
}

TEST_F(TransferFaults, AStallEndsWhenItsClientLeaves)
{
    const std::string target = seeded(noise(1'000'000));
    Fault stall = fault(FaultKind::Stall, "GET", 1000);
    stall.delayMilliseconds = 600'000;
    platform.faults().add(stall);
    auto connection = connectTo(platform.url());
    EXPECT_TRUE(connection->write("GET " + target + " HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(eventually([&] { return platform.requests().openDownloads() == 1; }));
    connection.reset();
    EXPECT_TRUE(eventually([&] { return platform.requests().openDownloads() == 0; }));
}

TEST_F(TransferFaults, AnUploadIsResetInTheMiddleOfItsBody)
{
    const std::string target = uploadAuthority().target;
    const int id = platform.faults().add(ofRequest(FaultKind::ResetAfterBytes, 10));
    const RawReply reply = rawPut(target, noise(1000));
    EXPECT_TRUE(reply.reset);
    EXPECT_EQ(reply.bytes, "");
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(TransferFaults, ALongUploadIsResetInTheMiddleOfItsBody)
{
    const std::string target = uploadAuthority().target;
    const int id = platform.faults().add(ofRequest(FaultKind::ResetAfterBytes, 2'000'000));
    EXPECT_EQ(send(target, noise(30'000'000)).status, 0);
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
    EXPECT_EQ(send(target, "whole").status, 200);
}

TEST_F(TransferFaults, AnUploadIsEndedInOrderWithoutAnAnswer)
{
    const std::string target = uploadAuthority().target;
    const int id = platform.faults().add(ofRequest(FaultKind::CutBody, 10));
    const RawReply reply = rawPut(target, noise(1000));
    EXPECT_FALSE(reply.reset);
    EXPECT_EQ(reply.bytes, "");
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(TransferFaults, AnUploadShorterThanTheFaultIsEndedAtItsEnd)
{
    const std::string target = uploadAuthority().target;
    platform.faults().add(ofRequest(FaultKind::ResetAfterBytes, 1'000'000));
    EXPECT_TRUE(rawPut(target, "short").reset);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(TransferFaults, AStalledUploadGoesOnAfterAWhile)
{
    const std::string bytes = noise(1'000'000);
    const Authority authority = uploadAuthority();
    Fault stall = ofRequest(FaultKind::Stall, 500'000);
    stall.delayMilliseconds = 30;
    const int id = platform.faults().add(stall);
    EXPECT_EQ(send(authority.target, bytes).status, 200);
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_TRUE(platform.ask(contentOf, authority.remotePath) == bytes);
}

TEST_F(TransferFaults, AStalledUploadEndsWithThePlatformAndLeavesNothing)
{
    const std::string target = uploadAuthority().target;
    Fault stall = ofRequest(FaultKind::Stall, 10);
    stall.delayMilliseconds = 600'000;
    const int id = platform.faults().add(stall);
    auto upload = std::async(std::launch::async, [&] { return rawPut(target, noise(1000)).bytes; });
    EXPECT_TRUE(eventually([&] { return platform.faults().count(id) == 1; }));
    platform.stop();
    EXPECT_EQ(upload.get(), "");
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(TransferFaults, AnUploadWhoseAnswerIsLostIsStored)
{
    const Authority authority = uploadAuthority();
    Fault lost = fault(FaultKind::ResetBeforeAnswer, "PUT", 0);
    lost.carryOut = true;
    platform.faults().add(lost);
    EXPECT_TRUE(rawPut(authority.target, "bytes").reset);
    EXPECT_EQ(platform.ask(contentOf, authority.remotePath), "bytes");
}

TEST_F(TransferFaults, AnUploadRefusedWithAStatusHearsItBehindItsWholeBody)
{
    const Authority authority = uploadAuthority();
    const int id = platform.faults().add(fault(FaultKind::Status, "PUT", 0));
    EXPECT_EQ(send(authority.target, noise(10'000'000)).status, 503);
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
}

TEST_F(TransferFaults, EndedUploadsLeaveNoFileBehind)
{
    const TempFolder folder;
    LocalPlatform onDisk(Options{folder.path("平台").u8string(), 0, true});
    onDisk.start();
    const Caller caller(onDisk.url(), "demo-token");
    const Authority authority = readAuthority(onDisk, caller.put("/file/new?fileName=a&filepath=b", "null").body);
    for (const FaultKind kind : {FaultKind::ResetAfterBytes, FaultKind::CutBody}) {
        onDisk.faults().add(ofRequest(kind, 2'000'000));
        EXPECT_EQ(signedPut(onDisk.url(), authority.target, noise(5'000'000)).status, 0);
    }
    const auto entries = [&] {
        const std::filesystem::directory_iterator all(folder.path("平台") / "blobs");
        return std::distance(begin(all), end(all));
    };
    EXPECT_TRUE(eventually([&] { return entries() == 0; }));
    EXPECT_EQ(signedPut(onDisk.url(), authority.target, "whole").status, 200);
    EXPECT_EQ(entries(), 1);
}

} // namespace
} // namespace orlo::platform::test
