// Runs transfers in a process of its own. Arguments: what, the platform's address, the local root.
//   batch      brings the blocks "blocks/a" of "ds-1" and prints the outcome
//   full       the same, with no room for files of more than 64 KiB
//   download   brings "r/f" to the file "Local-f" of the local root and prints the outcome
//   full-download  the same, with no room for files of more than 64 KiB
//   leave      leaves main while a transfer of each kind has just been started
//   leave-busy leaves main while a transfer of each kind waits for its answer, which the platform never gives
//   leave-scope    the same inside a scope that lives on, with an operation on another thread that waits in a scope of its own, while a
//   third
//                  thread cancels scopes
//   exit-in-report leaves by exit, out of the callback that is told of the progress
//   leave-waiting  leaves main while many threads begin transfers and wait for their futures
//   unready    leaves main while the futures are gone already

#include "support/OwnProcess.h"
#include "support/SilentLog.h"
#include "support/Waiting.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>

/// What this program leaves behind when it ends in the middle of its work is no leak; for a build with the address sanitizer.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "detect_leaks=0";
}

namespace {

using namespace orlo;

/// Counts the requests.
class Counter : public test::SilentLog
{
public:
    void LogInfo(const std::wstring& message) override { m_requests += message.find(L"LogRequest") != std::wstring::npos ? 1 : 0; }

    bool waitForRequests(int count) const
    {
        return test::waitUntil([&] { return m_requests >= count; }, std::chrono::seconds(10));
    }

private:
    std::atomic<int> m_requests{0};
};

int print(std::future<PromiseData> future)
{
    const PromiseData outcome = future.get();
    std::cout << (outcome.success ? "success " : "failure ") << outcome.status << ' ' << utils::toString(outcome.message).substr(0, 100)
              << std::endl;
    test::limitFileSize(std::nullopt); // a build for coverage writes its own files at the end
    return 0;
}

/// The ErrorCode is never destroyed: whoever leaves main in the middle of a transfer keeps it alive like this.
ErrorCode& lasting()
{
    return *new ErrorCode;
}

std::future<PromiseData> startBatch()
{
    return HttpClient::downloadBatchFiles(lasting(), "blocks", "ds-1", {"blocks/a"}, nullptr);
}

std::vector<std::future<PromiseData>> startAll(const std::wstring& ownFile)
{
    std::vector<std::future<PromiseData>> futures;
    futures.push_back(HttpClient::uploadFile(lasting(), ownFile, L"n", L"p", true));
    futures.push_back(HttpClient::downloadFile(L"r/f", L"", lasting()));
    futures.push_back(startBatch());
    return futures;
}

int leaveBusy(const std::wstring& ownFile, const Counter& counter)
{
    static auto& futures = *new std::vector<std::future<PromiseData>>(startAll(ownFile));
    return counter.waitForRequests(static_cast<int>(futures.size())) ? 0 : 3;
}

std::atomic<int> answered{0};

void ask()
{
    ICollaborationProjectManager::Get()->GetAllProjects(lasting());
    ++answered;
}

/// Where one thread puts its token for another to cancel it.
class Slot
{
public:
    void put(const CancelToken& token)
    {
        const std::lock_guard lock(m_mutex);
        m_token = token;
        m_changed.notify_one();
    }
    void cancelNext()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_token.has_value(); });
        const CancelToken token = *m_token;
        m_token.reset();
        lock.unlock();
        token.cancel();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<CancelToken> m_token;
};

/// Three threads that are in scopes when main returns; and the scope of main itself, which never ends.
int leaveScope(const std::wstring& ownFile, const Counter& counter)
{
    new CallScope(CancelToken(), [](const Progress&) {});
    static auto& futures = *new std::vector<std::future<PromiseData>>(startAll(ownFile));
    std::thread([] {
        const CallScope scope(CancelToken(), [](const Progress&) {});
        ask();
        test::waitForEver();
    }).detach();
    static Slot& slot = *new Slot;
    std::thread([] {
        while (true)
            slot.cancelNext();
    }).detach();
    std::thread([] {
        while (true) {
            const CancelToken token;
            const CallScope scope(token, [](const Progress&) {});
            slot.put(token);
            ask();
        }
    }).detach();
    return counter.waitForRequests(static_cast<int>(futures.size())) && test::waitUntil([] { return answered > 20; }) ? 0 : 3;
}

/// Takes its time among the statics, while other threads begin transfers and wait for them.
struct SlowEnd
{
    ~SlowEnd() { std::this_thread::sleep_for(std::chrono::milliseconds(30)); }
};

int leaveWaiting()
{
    static const SlowEnd slow;
    static std::atomic<int> ended{0};
    for (int i = 0; i < 16; ++i)
        std::thread([] {
            while (true) {
                HttpClient::downloadFile(L"r/f", L"", lasting()).get();
                ++ended;
            }
        }).detach();
    return test::waitUntil([] { return ended > 16; }) ? 0 : 3;
}

int exitInReport(const std::wstring& ownFile)
{
    const CallScope scope([](const Progress&) { std::exit(0); });
    HttpClient::uploadFile(lasting(), ownFile, L"n", L"p", true).get();
    test::waitForEver();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    const std::string what = argv[1];
    OrloConfig config;
    config.serviceUrls[L"project"] = utils::toWstring(std::string(argv[2]));
    OrloConfigManager::Configure(config);
    utils::setLocalRoot(utils::toWstring(std::string(argv[3])));
    http::setRetryPolicy({0, 0});
    const auto counter = std::make_shared<Counter>();
    ILogManager::Install(counter);
    const std::wstring ownFile = utils::toWstring(std::string(argv[0]));

    if (what == "full" || what == "full-download")
        test::limitFileSize(64 * 1024);
    if (what == "batch" || what == "full")
        return print(startBatch());
    if (what == "download" || what == "full-download")
        return print(HttpClient::downloadFile(L"r/f", utils::toWstring(argv[3] + std::string("/Local-f")), lasting()));
    if (what == "leave") {
        static auto& futures = *new std::vector<std::future<PromiseData>>(startAll(ownFile));
        return futures.size() == 3 ? 0 : 3;
    }
    if (what == "unready")
        return startAll(ownFile).size() == 3 ? 0 : 3;
    if (what == "leave-scope")
        return leaveScope(ownFile, *counter);
    if (what == "leave-waiting")
        return leaveWaiting();
    if (what == "exit-in-report")
        return exitInReport(ownFile);
    if (what == "leave-busy")
        return leaveBusy(ownFile, *counter);
    return 2;
}
