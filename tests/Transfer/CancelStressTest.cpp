// Scopes that are cancelled from other threads at random instants, with the real parts: a platform, transfers of every kind, operations.
// ORLO_CANCELS says how many; the target stress-cancels takes 10,000.

#include "support/PlatformHost.h"
#include "support/Threads.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/CallScope.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <random>
#include <thread>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;

constexpr int stressThreads = 4;
constexpr std::size_t sizeOfFile = 300'000;

int wantedCancelsOfScopes()
{
    const char* const wanted = std::getenv("ORLO_CANCELS");
    return wanted ? std::atoi(wanted) : 400;
}

/// Cancels tokens, each a little later, on a thread of its own.
class Canceller
{
public:
    Canceller() : m_thread([this] { run(); }) {}
    ~Canceller()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ends = true;
            m_changed.notify_all();
        }
        m_thread.join();
    }

    void cancelIn(microseconds time, const CancelToken& token)
    {
        const std::lock_guard lock(m_mutex);
        m_tokens.emplace_back(std::chrono::steady_clock::now() + time, token);
        m_changed.notify_all();
    }

private:
    void run()
    {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return m_ends || !m_tokens.empty(); });
            if (m_tokens.empty())
                return;
            const auto [when, token] = m_tokens.front();
            m_tokens.pop_front();
            lock.unlock();
            std::this_thread::sleep_until(when);
            token.cancel();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::pair<std::chrono::steady_clock::time_point, CancelToken>> m_tokens;
    bool m_ends = false;
    std::thread m_thread;
};

class CancelStress : public testing::Test
{
protected:
    CancelStress()
    {
        http::setRetryPolicy({2, 0});
        http::setBackoffPolicy(http::BackoffPolicy{3ms, 2, 20ms, 0.5, true});
        writeFile(host.host.folder().path("source"), patterned(sizeOfFile));
        host.platform.change(platform::addFile, "stored", patterned(sizeOfFile));
        platform::DatasetSeed dataset;
        dataset.id = "ds-1";
        dataset.name = "blocks";
        dataset.folderId = "f-1";
        host.platform.change(platform::addDataset, dataset);
        for (const char* seed : {"b/1", "b/2", "b/3"})
            host.platform.change(platform::addDatasetFile, "ds-1", seed, patterned(sizeOfFile));
    }
    ~CancelStress() override { http::setBackoffPolicy(std::nullopt); }

    /// One piece of work, of a kind that the number tells, in a scope that is cancelled after a while.
    void cancelOnce(int number, std::mt19937& random, Canceller& canceller)
    {
        const CancelToken token;
        std::atomic<int> reports{0};
        ErrorCode error;
        PromiseData outcome;
        bool isDone = false;
        {
            const CallScope scope(token, [&](const Progress&) { ++reports; });
            canceller.cancelIn(microseconds(std::uniform_int_distribution<int>(0, 6000)(random)), token);
            switch (number % 5) {
            case 0:
                outcome = outcomeOf(HttpClient::uploadFile(error, host.host.folder().wide("source"), L"n", L"p", number % 2 == 0));
                break;
            case 1:
                outcome = outcomeOf(HttpClient::downloadFile(L"stored", target(number), error));
                break;
            case 2:
                outcome = outcomeOf(HttpClient::downloadBatchFiles(error, "b", "ds-1", {"b/1", "b/2", "b/3"}, nullptr));
                break;
            case 3:
                isDone = !ICollaborationProjectManager::Get()->GetAllProjects(error).empty();
                break;
            default:
                isDone = ICollaborationFileManager::Get()->UploadFile(L"f-1", host.host.folder().wide("source"), error) != nullptr;
            }
        }
        const bool hasSucceeded = number % 5 < 3 ? outcome.success : isDone;
        ++(hasSucceeded ? m_successes : m_cancels);
        EXPECT_TRUE(hasSucceeded || isCancelled(error)) << number % 5 << ' ' << utils::toString(error.GetErrorMessage());
        if (number % 5 == 1)
            expectWholeOrNone(number, hasSucceeded);
    }

    std::wstring target(int number) const { return host.host.folder().wide("Local-" + std::to_string(number)); }

    void expectWholeOrNone(int number, bool hasSucceeded)
    {
        const auto path = host.host.folder().path("Local-" + std::to_string(number));
        if (hasSucceeded)
            EXPECT_EQ(std::filesystem::file_size(path), sizeOfFile);
        else
            EXPECT_FALSE(std::filesystem::exists(path)) << number;
        std::filesystem::remove(path);
    }

    void expectNothingLeft() const
    {
        EXPECT_TRUE(waitUntil([&] { return leftBehind().empty(); })) << testing::PrintToString(leftBehind());
    }
    std::vector<std::string> leftBehind() const
    {
        std::vector<std::string> left;
        for (const std::string& file : filesBelow(host.host.folder().path(""))) {
            const bool isKnown = file == "source" || file.rfind("Files/ds-1/b/", 0) == 0;
            if (!isKnown)
                left.push_back(file);
        }
        return left;
    }

    PlatformHost host;
    LogCapture log;
    std::atomic<int> m_successes{0};
    std::atomic<int> m_cancels{0};
};

TEST_F(CancelStress, atRandomInstantsLeavesNothingBehind)
{
    const int wanted = wantedCancelsOfScopes();
    inThreads(stressThreads, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        Canceller canceller;
        for (int number = thread; m_cancels < wanted && number < 40 * wanted; number += stressThreads)
            cancelOnce(number, random, canceller);
    });
    EXPECT_GE(m_cancels, wanted);
    RecordProperty("cancels", m_cancels);
    RecordProperty("successes", m_successes);
    expectNothingLeft();
}

} // namespace
} // namespace orlo::test
