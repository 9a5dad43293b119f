#include "support/ProcessProbe.h"
#include "support/TransferTestSupport.h"

#include <algorithm>
#include <atomic>

namespace orlo::test {
namespace {

class TransferLoadTest : public TransferTest
{
protected:
    TransferLoadTest()
    {
        platform.always("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/up")));
        platform.always("POST", "/file/read").reply(200, authority("r", atStore("/down")));
        store.always("PUT", "/up").reply(200, "", "");
        store.always("GET", "/down").reply(fileReply(content));
    }

    std::vector<std::future<PromiseData>> startTogether(int pairs)
    {
        std::vector<std::future<PromiseData>> futures;
        for (int i = 0; i < pairs; ++i) {
            errors.push_back(std::make_unique<ErrorCode>());
            futures.push_back(HttpClient::uploadFile(*errors.back(), file, L"n", L"p", i % 2 == 0));
            errors.push_back(std::make_unique<ErrorCode>());
            futures.push_back(HttpClient::downloadFile(L"r", wideLocalPath("d" + std::to_string(i)), *errors.back()));
        }
        return futures;
    }

    void expectAllSucceed(std::vector<std::future<PromiseData>>&& futures)
    {
        for (auto& future : futures)
            EXPECT_TRUE(outcomeOf(future).success);
        for (const auto& own : errors)
            EXPECT_EQ(own->GetValue(), 0);
    }

    const std::string content = patterned(100000);
    const std::wstring file = localFile("u", content);
    std::vector<std::unique_ptr<ErrorCode>> errors;
};

TEST_F(TransferLoadTest, twoHundredTransfersAtOnceFinishAndLeaveNothingBehind)
{
    // The servers of this test keep a thread and a socket for each connection until the client lets go of it, and two to listen. What else
    // there is belongs to the handles that earlier synchronous calls of the process left for later ones.
    const auto isQuiet = [before = socketCount()] { return socketCount() <= before; };
    expectAllSucceed(startTogether(2));
    ASSERT_TRUE(waitUntil(isQuiet));
    const std::size_t quietDescriptors = descriptorCount();
    const std::size_t quietThreads = threadCount();

    std::atomic<bool> running{true};
    std::size_t mostThreads = 0;
    std::thread watcher([&] {
        while (running) {
            mostThreads = std::max(mostThreads, threadCount());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const std::size_t connectionsBefore = platform.connectionCount() + store.connectionCount();
    expectAllSucceed(startTogether(100));
    running = false;
    watcher.join();
    const std::size_t connections = platform.connectionCount() + store.connectionCount() - connectionsBefore;
    // The pool and the like, a worker for each transfer, and a thread for each connection of the servers.
    EXPECT_LE(mostThreads, quietThreads + 200 + connections + 10);

    EXPECT_TRUE(waitUntil(isQuiet)) << socketCount();
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() <= quietDescriptors; })) << descriptorCount() << " after " << quietDescriptors;
    EXPECT_TRUE(waitUntil([&] { return threadCount() <= quietThreads; })) << threadCount() << " after " << quietThreads;
    EXPECT_EQ(temporaryFiles(), std::vector<std::string>{});
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(readFile(localPath("d" + std::to_string(i))) == content);
    EXPECT_EQ(filesBelow(host.folder().path("Local")).size(), 101U);
}

TEST_F(TransferLoadTest, twoHundredFailuresAtOnceFinishToo)
{
    moveServices(host, closedAddress);
    auto futures = startTogether(100);
    for (auto& future : futures)
        EXPECT_EQ(outcomeOf(future).status, 5555);
    for (const auto& own : errors)
        EXPECT_EQ(own->GetValue(), exceptionValue);
}

TEST_F(TransferLoadTest, moreStreamsAtOnceThanThreadsOfThePoolFinish)
{
    std::vector<BatchEntry> entries;
    for (int i = 0; i < 8; ++i)
        entries.push_back({"a/" + std::to_string(i), atStore("/down")});
    platform.always("POST", "/datasets/ds-1/blockFiles/readSAS").reply(200, batchReply(entries));
    std::vector<std::future<PromiseData>> futures;
    for (int i = 0; i < 50; ++i) {
        errors.push_back(std::make_unique<ErrorCode>());
        futures.push_back(HttpClient::downloadBatchFiles(*errors.back(), "batch" + std::to_string(i), "ds-1", {"x"}, nullptr));
    }
    expectAllSucceed(std::move(futures));
    EXPECT_EQ(filesBelow(cached("ds-1", "")).size(), 400U);
    EXPECT_EQ(temporaryFiles(), std::vector<std::string>{});
}

} // namespace
} // namespace orlo::test
