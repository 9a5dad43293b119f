// Work by the library in a process of its own, as a program that links it would do it.
//
//   OrloEngineWorker URL ROOT [--ca FILE] [--keep] [--watch] WORK
//
// URL may be "-" for the platform and the user of the environment, ORLO_URL and so on.
// WORK is one of: get COUNT THREADS | upload FILE | download REMOTE FILE | batch FOLDER COUNT
// --keep lets the library keep its connections, --watch counts its threads, which takes a second longer. Prints what Usage.h says.

#include "../Help.h"
#include "Usage.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/HostSettings.h>
#include <OrloProjectManager/OrloProjectManager.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

#include <memory>
#include <vector>

namespace {

using namespace orlo;
using Words = std::vector<std::string>;

struct Options
{
    std::string url;
    std::string root;
    std::string caFile;
    bool keep = false;
    bool watch = false;
    Words work;
};

Options optionsOf(const Words& words)
{
    Options options{words[0], words[1], {}, false, false, {}};
    size_t next = 2;
    for (; next < words.size() && words[next].compare(0, 2, "--") == 0; ++next) {
        if (words[next] == "--ca" && next + 1 < words.size())
            options.caFile = words[++next];
        options.keep = options.keep || words[next] == "--keep";
        options.watch = options.watch || words[next] == "--watch";
    }
    options.work.assign(words.begin() + static_cast<std::ptrdiff_t>(next), words.end());
    return options;
}

void setUp(const Options& options)
{
    HostSettings settings;
    settings.config.serviceUrls[L"project"] = utils::toWstring(options.url);
    settings.config.caFile = utils::toWstring(options.caFile);
    settings.config.keepConnections = options.keep;
    settings.user = {L"demo", L"demo-account", L"demo-token"};
    if (options.url == "-")
        settings = configFromEnvironment(settings);
    OrloConfigManager::Configure(settings.config);
    utils::setLocalRoot(utils::toWstring(options.root));
    UserSession::SignIn(settings.user);
}

bool getOne(ICollaborationProjectManager& manager)
{
    ErrorCode error;
    const DatasetInfo info = manager.GetDatasetInfo("5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10", error);
    if (error.isClear() && info.name == L"east tower")
        return true;
    std::fprintf(stderr, "a request failed: %s\n", utils::toString(error.GetErrorMessage()).substr(0, 200).c_str());
    return false;
}

bool getMany(int count, int threads)
{
    std::atomic<int> left{count};
    std::atomic<int> good{0};
    const auto getUntilNoneIsLeft = [&] {
        ICollaborationProjectManager* const manager = ICollaborationProjectManager::Get();
        while (left.fetch_sub(1) > 0)
            good += getOne(*manager) ? 1 : 0;
    };
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i)
        others.emplace_back(getUntilNoneIsLeft);
    getUntilNoneIsLeft();
    for (std::thread& other : others)
        other.join();
    return good == count;
}

std::vector<std::string> seeds(const std::string& folder, int count)
{
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(folder + "/" + std::to_string(i));
    return names;
}

bool transfer(const Words& work)
{
    ErrorCode error;
    std::future<PromiseData> future;
    if (work[0] == "upload")
        future = HttpClient::uploadFile(error, utils::toWstring(work[1]), L"", L"", false);
    else if (work[0] == "download")
        future = HttpClient::downloadFile(utils::toWstring(work[1]), utils::toWstring(work[2]), error);
    else
        future = HttpClient::downloadBatchFiles(error, "blocks", "bench-dataset", seeds(work[1], std::stoi(work[2])), nullptr);
    const PromiseData outcome = future.get();
    if (!outcome.success)
        std::fprintf(stderr, "the transfer failed: %d %s\n", outcome.status, utils::toString(outcome.message).substr(0, 200).c_str());
    return outcome.success;
}

bool doWork(const Words& work)
{
    return work[0] == "get" ? getMany(std::stoi(work[1]), std::stoi(work[2])) : transfer(work);
}

constexpr const char* help = R"(URL ROOT [--ca FILE] [--keep] [--watch] WORK
  Work by the library in a process of its own, for OrloEngineBench. Prints the seconds that the work took, and what memory and threads.
  URL      of the platform; - for that of ORLO_URL, with the user and the rest of the environment's ORLO_ variables
  ROOT     folder for local files
  --ca     PEM file of the certificates to trust
  --keep   keeps connections
  --watch  counts threads, which takes a second longer
  WORK     get COUNT THREADS | upload FILE | download REMOTE FILE | batch FOLDER COUNT)";

} // namespace

int main(int argc, char** argv)
{
    if (bench::answersForItself(argc, argv, "OrloEngineWorker", help))
        return 0;
    if (argc < 5)
        return 2;
    const Options options = optionsOf({argv + 1, argv + argc});
    setUp(options);
    const auto watch = options.watch ? std::make_unique<bench::ThreadWatch>() : nullptr;
    const auto begin = std::chrono::steady_clock::now();
    const bool good = doWork(options.work);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    const long peak = bench::statusNumber("VmHWM");
    const long threads = watch ? watch->most() : 0;
    if (watch)
        std::this_thread::sleep_for(std::chrono::seconds(1));
    bench::report(taken.count(), peak, threads, watch ? bench::statusNumber("Threads") : 0);
    return good ? 0 : 1;
}
