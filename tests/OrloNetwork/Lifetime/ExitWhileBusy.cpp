// Leaves main while something is still under way.
//   request   a request waits for its answer on a detached thread; it says so when it comes back without one
//   late      a static destructor asks for something; it says what becomes of it
//   waiting   a failed request waits for its next attempt
//   repeating failed requests are repeated without a pause

#include "support/OwnProcess.h"
#include "support/SilentLog.h"
#include "support/Sockets.h"
#include "support/Waiting.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Lifetime/Operation.h>
#include <OrloNetwork/Lifetime/WorkPermit.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>
#include <OrloNetwork/WebRequest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <string>
#include <thread>

namespace {

using namespace orlo;

std::atomic<int> arrived{0};
std::atomic<bool> dropsWork{false};

/// What a library would write to is not looked at here.
class CountedWarnings : public test::SilentLog
{
public:
    void LogWarning(const std::wstring&) override { ++warnings; }

    std::atomic<int> warnings{0};
};

bool waitUntilReached(const std::atomic<int>& count, int wanted)
{
    return test::waitUntil([&] { return count >= wanted; }, std::chrono::seconds(10));
}

/// No more permits are given once the end of the process has come.
/// Takes requests and never answers; lives as long as the process.
std::wstring stallingServer()
{
    static auto& server = *new test::SocketServer([](test::Connection& connection) {
        std::string request;
        connection.read(request);
        ++arrived;
        while (connection.read(request)) {
        }
    });
    return utils::toWstring(server.url());
}

int leaveDuringARequest()
{
    const std::wstring url = stallingServer();
    std::thread([url] {
        ErrorCode error;
        const http::Operation operation;
        const auto client = OrloWebService::CreateClient(url);
        const web::uri path(utils::toNative(std::string("/thing")));
        try {
            OrloWebService::ExecuteRequest(*client, OrloWebService::CreateRequest(web::http::methods::GET, path, web::json::value::null()),
                                           error);
        }
        catch (const std::exception&) { // cancelled
            test::say("the request came back\n");
        }
    }).detach();
    return waitUntilReached(arrived, 1) ? 0 : 3;
}

void launchFailingChain()
{
    const auto context = std::make_shared<OrloCallbackContext>(nullptr, true);
    const auto error = std::make_shared<ErrorCode>();
    http::launchWithRetry(context, *error, [context, error] {
        pplx::create_task([context, error] {
            error->Assign(error::errorStatus, std::make_shared<HttpError>(L"HttpError", L"", 503, 0));
            const auto handler = context->handler;
            handler->on_complete(503, L"", "Step", context, *error);
        });
    });
}

int leaveDuringRetries(unsigned pauseSeconds, int repeats)
{
    const auto log = std::make_shared<CountedWarnings>();
    ILogManager::Install(log);
    http::setRetryPolicy({std::numeric_limits<unsigned>::max(), pauseSeconds});
    for (int i = 0; i < 8; ++i)
        launchFailingChain();
    return waitUntilReached(log->warnings, repeats) ? 0 : 3;
}

/// Made before anything of the library's, so that it goes after that.
struct LateAsker
{
    ~LateAsker()
    {
        if (!asks)
            return;
        try {
            const http::Operation operation;
        }
        catch (const std::exception& refusal) {
            test::say(refusal.what());
            test::say("\n");
        }
    }
    bool asks = false;
} lateAsker;

int leaveAndAskLater()
{
    const http::WorkPermit used; // as of any request
    lateAsker.asks = true;
    return 0;
}

} // namespace

/// Asked by the leak sanitizer. What is queued in cpprestsdk's pool when the process ends is never freed, with all that it holds.
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off()
{
    return dropsWork ? 1 : 0;
}

/// The server's threads end with their clients, when nobody joins threads any more; for a build with the thread sanitizer.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options()
{
    return "report_thread_leaks=0";
}

int main(int argc, char** argv)
{
    const std::string what = argc == 2 ? argv[1] : "";
    if (what == "request")
        return leaveDuringARequest();
    if (what == "waiting")
        return leaveDuringRetries(3600, 8);
    if (what == "repeating") {
        dropsWork = true;
        return leaveDuringRetries(0, 200);
    }
    if (what == "late")
        return leaveAndAskLater();
    return 2;
}
