#include "support/ChildProcess.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

/// A store that sends the beginning of a large file, and no more.
class HalfFile
{
public:
    std::string url() const { return m_server.url(); }
    bool waitForReader() const
    {
        return waitUntil([this] { return m_sent.load(); });
    }

private:
    std::atomic<bool> m_sent{false};
    SocketServer m_server{[this](Connection& connection) {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n" + std::string(8 << 20, 'x'));
        m_sent = true;
        std::string rest;
        while (connection.read(rest)) {
        }
    }};
};

class TransferLifetimeTest : public testing::Test
{
protected:
    std::vector<std::string> command(const std::string& what) const { return commandOf(platform.url(), what); }
    std::vector<std::string> commandOf(const std::string& url, const std::string& what) const
    {
        return {TRANSFER_CHILD_PROGRAM, what, url, root.path().string()};
    }

    int exitOf(const std::string& what)
    {
        const RunResult result = runProgram(command(what), ChildProcess::Errors::joined);
        output = result.output;
        return result.exitCode;
    }
    void expectCleanExits(int count, const std::string& url, const std::string& what) const
    {
        for (int i = 0; i < count; ++i) {
            const RunResult result = runProgram(commandOf(url, what), ChildProcess::Errors::joined);
            ASSERT_EQ(result.exitCode, 0) << result.output;
            ASSERT_EQ(result.output, "");
        }
    }

    void batchGives(const std::string& address)
    {
        platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply({{"blocks/a", address}}));
    }

    ScriptedServer platform;
    ScriptedServer store;
    const TempFolder root;
    std::string output;
};

TEST_F(TransferLifetimeTest, aProgramOfItsOwnBringsAFile)
{
    batchGives(store.url() + "/a");
    store.always("GET", "/a").reply(fileReply("content"));
    EXPECT_EQ(exitOf("batch"), 0);
    EXPECT_EQ(output, "success 200 success to batch download files\n");
    EXPECT_EQ(readFile(root.path("Files/ds-1/blocks/a")), "content");
}

TEST_F(TransferLifetimeTest, aFullDiskFailsTheStreamAndLeavesNothingBehind)
{
    batchGives(store.url() + "/a");
    store.always("GET", "/a").reply(fileReply(patterned(4 << 20)));
    EXPECT_EQ(exitOf("full"), 0);
    EXPECT_EQ(output, "failure 5555 the temporary file can't be written\n");
    EXPECT_EQ(filesBelow(root.path()), std::vector<std::string>{});
}

TEST_F(TransferLifetimeTest, aFullDiskFailsTheWriteOfADownloadAndLeavesNothingBehind)
{
    platform.always("POST", "/file/read").reply(200, R"({"fileUrlWithSAS":")" + store.url() + R"(/a"})");
    store.always("GET", "/a").reply(fileReply(std::string(1 << 20, 'x')));
    EXPECT_EQ(exitOf("full-download"), 0);
    EXPECT_EQ(output, "failure 200 " + std::string(100, 'x') + "\n");
    EXPECT_EQ(filesBelow(root.path()), std::vector<std::string>{});
}

TEST_F(TransferLifetimeTest, aFileThatStillFitsOnTheFullDiskArrives)
{
    batchGives(store.url() + "/a");
    store.always("GET", "/a").reply(fileReply(patterned(64 * 1024)));
    EXPECT_EQ(exitOf("full"), 0);
    EXPECT_EQ(output, "success 200 success to batch download files\n");
}

TEST_F(TransferLifetimeTest, aStreamThatIsKilledLeavesNoFileUnderTheTargetsName)
{
    const HalfFile half;
    batchGives(half.url() + "/a");
    ChildProcess child(command("batch"));
    const auto temporaryBytes = [this] {
        std::uintmax_t bytes = 0;
        for (const std::string& file : filesBelow(root.path("Temp")))
            bytes += std::filesystem::file_size(root.path("Temp") / file);
        return bytes;
    };
    ASSERT_TRUE(waitUntil([&] { return temporaryBytes() >= 1 << 20; }));
    child.kill();
    EXPECT_EQ(child.wait(), ChildProcess::killed);
    EXPECT_EQ(filesBelow(root.path("Files")), std::vector<std::string>{});
}

TEST_F(TransferLifetimeTest, whatAKilledStreamLeavesIsRemovedByTheFirstTransferOfTheNextProcess)
{
    const HalfFile half;
    for (const std::string& address : {half.url(), half.url(), store.url(), store.url()})
        platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply({{"blocks/a", address + "/a"}}));
    ChildProcess living(command("batch"));
    const auto leftBehind = [this] { return filesBelow(root.path("Temp")).size(); };
    ASSERT_TRUE(waitUntil([&] { return leftBehind() == 1; }));
    ChildProcess killed(command("batch"));
    ASSERT_TRUE(waitUntil([&] { return leftBehind() == 2; }));
    killed.kill();
    store.always("GET", "/a").reply(fileReply("content"));
    // As long as a process lives that began before, it may be its.
    EXPECT_EQ(exitOf("batch"), 0);
    EXPECT_EQ(leftBehind(), 2U);
    living.kill();
    EXPECT_EQ(exitOf("batch"), 0);
    EXPECT_EQ(leftBehind(), 0U);
    EXPECT_EQ(filesBelow(root.path()), std::vector<std::string>{"Files/ds-1/blocks/a"});
}

TEST_F(TransferLifetimeTest, aDownloadThatIsKilledLeavesNoFileUnderTheTargetsName)
{
    const HalfFile half;
    platform.always("POST", "/file/read").reply(200, R"({"fileUrlWithSAS":")" + half.url() + R"(/a"})");
    ChildProcess child(command("download"));
    ASSERT_TRUE(half.waitForReader());
    child.kill();
    EXPECT_EQ(child.wait(), ChildProcess::killed);
    // Nobody knows of the half of it that lies beside its place.
    for (const std::string& file : filesBelow(root.path()))
        EXPECT_TRUE(utils::isHalfMadeName(utils::toWstring(file))) << file;
}

/// Refuses every request; a program that leaves may cut its request short.
class Refuser
{
public:
    std::string url() const { return m_server.url(); }

private:
    SocketServer m_server{[](Connection& connection) {
        Request request;
        Reply refusal;
        refusal.status = 404;
        while (readRequest(connection, request) == ReadResult::request && connection.write(refusal.wire("GET")))
            request = {};
    }};
};

class LeavingTest : public TransferLifetimeTest, public testing::WithParamInterface<const char*>
{};

TEST_P(LeavingTest, isCleanEveryTime)
{
    const Refuser refuser;
    expectCleanExits(40, refuser.url(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(RightAfterTheStart, LeavingTest, testing::Values("leave"));
INSTANTIATE_TEST_SUITE_P(WithoutTheFutures, LeavingTest, testing::Values("unready"));

TEST_F(TransferLifetimeTest, leavingMainWhileTransfersWaitForTheirAnswersIsClean)
{
    SocketServer silent([](Connection& connection) {
        std::string request;
        while (connection.read(request)) {
        }
    });
    expectCleanExits(20, silent.url(), "leave-busy");
}

TEST_F(TransferLifetimeTest, leavingMainWhileScopesAreCancelledIsClean)
{
    SocketServer silent([](Connection& connection) {
        std::string request;
        while (connection.read(request)) {
        }
    });
    expectCleanExits(20, silent.url(), "leave-scope");
}

TEST_F(TransferLifetimeTest, leavingMainWhileThreadsWaitForTheirFuturesThrowsAtNobody)
{
    ScriptedServer refusing;
    refusing.always("POST", "/file/read").reply(403);
    expectCleanExits(20, refusing.url(), "leave-waiting");
}

TEST_F(TransferLifetimeTest, leavingByExitOutOfAProgressReportIsClean)
{
    ScriptedServer answering;
    answering.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, "{}");
    expectCleanExits(10, answering.url(), "exit-in-report");
}

} // namespace
} // namespace orlo::test
