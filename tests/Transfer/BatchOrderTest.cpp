#include "support/TransferTestSupport.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace orlo::test {
namespace {

/// Holds requests back and counts how many wait at once.
class Gate
{
public:
    Reply pass(const Reply& reply)
    {
        std::unique_lock lock(m_mutex);
        ++m_arrived;
        m_peak = std::max(m_peak, ++m_inside);
        m_changed.notify_all();
        m_changed.wait_for(lock, std::chrono::seconds(60), [this] { return m_permits > 0; });
        --m_permits;
        --m_inside;
        return reply;
    }
    void letGo(int count)
    {
        const std::lock_guard lock(m_mutex);
        m_permits += count;
        m_changed.notify_all();
    }
    bool waitForArrivals(int count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(60), [&] { return m_arrived >= count; });
    }
    int arrived() const { return locked(m_arrived); }
    int peak() const { return locked(m_peak); }

private:
    int locked(const int& value) const
    {
        const std::lock_guard lock(m_mutex);
        return value;
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_arrived = 0;
    int m_inside = 0;
    int m_peak = 0;
    int m_permits = 0;
};

class BatchOrderTest : public TransferTest
{
protected:
    std::future<PromiseData> start(int files)
    {
        std::vector<BatchEntry> entries;
        for (int i = 0; i < files; ++i) {
            const std::string name = std::to_string(i);
            entries.push_back({"blocks/" + name, atStore("/" + name)});
            store.always("GET", "/" + name).replyWith([this, name](const Request&) { return gate.pass(fileReply("file " + name)); });
        }
        platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply(entries));
        return HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {"blocks"}, nullptr);
    }

    void expectFiles(int files)
    {
        for (int i = 0; i < files; ++i)
            EXPECT_EQ(readFile(cached("ds-1", "blocks/" + std::to_string(i))), "file " + std::to_string(i));
        EXPECT_EQ(filesBelow(cached("ds-1", "")).size(), static_cast<std::size_t>(files));
    }

    Gate gate;
};

TEST_F(BatchOrderTest, tenFilesRunAtMostSixAtOnceAndEachEndStartsTheNext)
{
    auto future = start(10);
    ASSERT_TRUE(gate.waitForArrivals(6));
    for (int seventh = 7; seventh <= 10; ++seventh) {
        EXPECT_EQ(gate.arrived(), seventh - 1);
        gate.letGo(1);
        ASSERT_TRUE(gate.waitForArrivals(seventh));
    }
    gate.letGo(6);
    EXPECT_TRUE(outcomeOf(future).success);
    EXPECT_EQ(gate.peak(), 6);
    expectFiles(10);
}

TEST_F(BatchOrderTest, startsTheEntriesInTheOrderOfTheAnswer)
{
    gate.letGo(3);
    EXPECT_TRUE(outcomeOf(start(3)).success);
    std::vector<std::wstring> started;
    for (const std::wstring& line : log.lines()) {
        if (line.find(L"I [ORLOSDK]OrloWebService::LogRequest - GET / at 127.0.0.1/") == 0)
            started.push_back(line.substr(line.rfind(L'/')));
    }
    EXPECT_EQ(started, (std::vector<std::wstring>{L"/0", L"/1", L"/2"}));
}

TEST_F(BatchOrderTest, oneSeedRunsOneStream)
{
    auto future = start(1);
    ASSERT_TRUE(gate.waitForArrivals(1));
    gate.letGo(1);
    EXPECT_TRUE(outcomeOf(future).success);
    EXPECT_EQ(store.requestCount(), 1U);
    expectFiles(1);
}

TEST_F(BatchOrderTest, aHundredFilesAllArrive)
{
    gate.letGo(100);
    EXPECT_TRUE(outcomeOf(start(100)).success);
    EXPECT_LE(gate.peak(), 6);
    EXPECT_EQ(store.requestCount(), 100U);
    expectFiles(100);
    EXPECT_EQ(temporaryFiles(), std::vector<std::string>{});
}

TEST_F(BatchOrderTest, afterAFailureTheOtherStreamsStillStartTheNext)
{
    std::vector<BatchEntry> entries{{"blocks/lost", atStore("/lost")}};
    store.always("GET", "/lost").reply(404, "");
    for (int i = 1; i < 12; ++i) {
        const std::string name = std::to_string(i);
        entries.push_back({"blocks/" + name, atStore("/" + name)});
        store.always("GET", "/" + name).reply(fileReply(name));
    }
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(200, batchReply(entries));
    expectOutcome(outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {"x"}, nullptr)), false, 404, L"");
    EXPECT_TRUE(waitUntil([&] { return filesBelow(cached("ds-1", "")).size() == 11; }));
    EXPECT_EQ(store.requestCount(), 12U);
}

} // namespace
} // namespace orlo::test
