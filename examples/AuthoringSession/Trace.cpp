#include "Trace.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/CallObserver.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace session {

void traceInto(const std::string& path)
{
    using namespace std::chrono;
    struct Trace
    {
        std::mutex mutex; // several threads may tell at once
        std::ofstream file;
        steady_clock::time_point begin = steady_clock::now();
    };
    const auto trace = std::make_shared<Trace>();
    trace->file.open(std::filesystem::u8path(path));
    if (!(trace->file << "[\n"))
        throw std::runtime_error("the trace can't be written to " + path);

    orlo::http::setCallObserver([trace](const orlo::http::CallRecord& call) {
        const std::lock_guard lock(trace->mutex);
        const double end = duration<double, std::micro>(steady_clock::now() - trace->begin).count();
        trace->file << R"({"ph":"X","pid":1,"tid":)" << std::hash<std::thread::id>()(std::this_thread::get_id()) % 1000 << R"(,"ts":)"
                    << static_cast<long long>(end - 1000 * call.milliseconds) << R"(,"dur":)"
                    << static_cast<long long>(1000 * call.milliseconds) << R"(,"name":")" << orlo::utils::toString(call.operation)
                    << R"(","args":{"status":)" << call.status << R"(,"attempt":)" << call.attempt << R"(,"sent":)" << call.bytesSent
                    << R"(,"received":)" << call.bytesReceived << R"(,"request":")" << orlo::utils::toString(call.requestId) << "\"}},\n"
                    << std::flush;
    });
}

} // namespace session
