#pragma once

#include "Seeds.h"
#include "Server/Faults.h"
#include "Server/RequestLog.h"
#include "Store/Clock.h"
#include "Store/Transfers.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace orlo::platform {

struct Options
{
    /// Keeps platform.db and blobs; made if missing. Empty: the database lives in memory, blobs in a temporary folder, and both end with
    /// the platform.
    std::string dataFolder{};
    int port = 0;          ///< 0: a free port, chosen at the first `start` and kept for the next ones.
    bool seedDemo = false; ///< Registers the user "demo" with account "demo-account" and token "demo-token".
};

/// The platform's REST services in one process, on the loopback interface: for people who try the library out, and for tests that want a
/// server with a memory. All text is UTF-8. Every call below may come from any thread, before `start`, while it runs and after `stop`.
/// Calls throw `std::runtime_error` (or a class below it) when they can't do their work, with the reason in `what()`.
class LocalPlatform
{
public:
    /// Opens or makes the data; nothing listens yet.
    explicit LocalPlatform(const Options& options = {});
    ~LocalPlatform();
    LocalPlatform(const LocalPlatform&) = delete;
    LocalPlatform& operator=(const LocalPlatform&) = delete;

    /// Listens on 127.0.0.1. A second call while running does nothing.
    void start();
    /// Ends every open call and joins every thread. May be started again.
    void stop();
    /// "http://127.0.0.1:PORT", the base address of every service key. Empty before the first `start`.
    std::string url() const;

    /// Runs `work(world)` as one transaction and returns its result. No call is answered meanwhile; what `work` throws rolls back.
    template <class Work>
    auto change(const Work& work) -> std::invoke_result_t<const Work&, World&>;
    /// One of the functions of Seeds.h: `platform.change(addProject, {"Tower", "account"})`.
    template <class Result, class... Parameters>
    Result change(Result (*function)(World&, Parameters...), const std::decay_t<Parameters>&... arguments);

    /// The same for what only reads.
    template <class Question>
    auto ask(const Question& question) const -> std::invoke_result_t<const Question&, const World&>;
    template <class Result, class... Parameters>
    Result ask(Result (*function)(const World&, Parameters...), const std::decay_t<Parameters>&... arguments) const;

    FaultBook& faults();
    RequestLog& requests();
    Transfers& transfers();
    Clock& clock();

private:
    class Core;

    void transact(const std::function<void(World&)>& work) const;

    std::unique_ptr<Core> m_core;
};

template <class Work>
auto LocalPlatform::change(const Work& work) -> std::invoke_result_t<const Work&, World&>
{
    if constexpr (std::is_void_v<std::invoke_result_t<const Work&, World&>>)
        transact(std::cref(work));
    else {
        std::optional<std::invoke_result_t<const Work&, World&>> result;
        transact([&](World& world) { result.emplace(work(world)); });
        return *std::move(result);
    }
}

template <class Result, class... Parameters>
Result LocalPlatform::change(Result (*function)(World&, Parameters...), const std::decay_t<Parameters>&... arguments)
{
    return change([&](World& world) { return function(world, arguments...); });
}

template <class Question>
auto LocalPlatform::ask(const Question& question) const -> std::invoke_result_t<const Question&, const World&>
{
    std::optional<std::invoke_result_t<const Question&, const World&>> answer;
    transact([&](const World& world) { answer.emplace(question(world)); });
    return *std::move(answer);
}

template <class Result, class... Parameters>
Result LocalPlatform::ask(Result (*function)(const World&, Parameters...), const std::decay_t<Parameters>&... arguments) const
{
    return ask([&](const World& world) { return function(world, arguments...); });
}

} // namespace orlo::platform
