// One transfer by the library in a process of its own, as a program that links it would do it.
//
//   OrloTransferWorker URL ROOT upload FILE | upload-gzip FILE | download REMOTE FILE | batch COUNT
//
// URL may be "-" for the platform and the user of the environment, ORLO_URL and so on. Prints the seconds that the transfer itself took.

#include "../Help.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/HostSettings.h>
#include <OrloProjectManager/OrloProjectManager.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace orlo;

void setUp(const std::string& url, const std::string& root)
{
    HostSettings settings;
    settings.config.serviceUrls[L"project"] = utils::toWstring(url);
    settings.user = {L"demo", L"demo-account", L"demo-token"};
    if (url == "-")
        settings = configFromEnvironment(settings);
    OrloConfigManager::Configure(settings.config);
    utils::setLocalRoot(utils::toWstring(root));
    UserSession::SignIn(settings.user);
}

std::vector<std::string> seeds(int count)
{
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back("blocks/" + std::to_string(i));
    return names;
}

std::future<PromiseData> start(const std::vector<std::string>& words, ErrorCode& error)
{
    if (words[0] == "download")
        return HttpClient::downloadFile(utils::toWstring(words[1]), utils::toWstring(words[2]), error);
    if (words[0] == "batch")
        return HttpClient::downloadBatchFiles(error, "blocks", "bench-dataset", seeds(std::stoi(words[1])), nullptr);
    return HttpClient::uploadFile(error, utils::toWstring(words[1]), L"", L"", words[0] == "upload-gzip");
}

constexpr const char* help = R"(URL ROOT WORK
  One transfer by the library in a process of its own, for OrloTransferBench. Prints the seconds that it took, and its outcome.
  URL   of the platform; - for that of ORLO_URL, with the user and the rest of the environment's ORLO_ variables
  ROOT  folder for local files
  WORK  upload FILE | upload-gzip FILE | download REMOTE FILE | batch COUNT)";

} // namespace

int main(int argc, char** argv)
{
    if (orlo::bench::answersForItself(argc, argv, "OrloTransferWorker", help))
        return 0;
    if (argc < 5)
        return 2;
    setUp(argv[1], argv[2]);
    ErrorCode error;
    const auto begin = std::chrono::steady_clock::now();
    const PromiseData outcome = start({argv + 3, argv + argc}, error).get();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    if (!outcome.success)
        std::fprintf(stderr, "the transfer failed: %d %s\n", outcome.status, utils::toString(outcome.message).substr(0, 200).c_str());
    std::printf("%.6f\n%s\n", taken.count(), utils::toString(outcome.message).substr(0, 2000).c_str());
    return outcome.success ? 0 : 1;
}
