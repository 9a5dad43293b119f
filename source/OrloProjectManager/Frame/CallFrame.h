#pragma once

#include <BaseCommon/ErrorCode.h>
#include <OrloLogging/Log.h>
#include <OrloNetwork/Lifetime/Operation.h>

#include <future>
#include <string>
#include <type_traits>
#include <utility>

namespace orlo {

namespace detail {

template <class Result, class = void>
struct CanBeEmpty : std::false_type
{};
template <class Result>
struct CanBeEmpty<Result, std::void_t<decltype(std::declval<const Result&>().empty())>> : std::true_type
{};

/// Whether an operation with such an outcome has failed. A result that is never empty leaves it to the ErrorCode.
template <class Result>
bool hasFailed(const Result& result, const ErrorCode& error)
{
    if constexpr (CanBeEmpty<Result>::value)
        return result.empty();
    else if constexpr (std::is_constructible_v<bool, const Result&> && !std::is_enum_v<Result>)
        return !result;
    else
        return !error.isClear();
}

/// What goes on behind its operation has the ErrorCode, which nobody else may touch.
template <class Data>
bool hasFailed(const std::future<Data>&, const ErrorCode&)
{
    return false;
}

} // namespace detail

/// The frame of every exported operation: it looks at the ErrorCode that it was handed, does the work, and catches every
/// exception. After an exception the result is the empty one: false, null, an empty list or text. The end of the process waits for what is
/// in a frame, and none begins any more then. What fails after the host has cancelled it is told as cancelled, whatever the reason at hand.
///
///     return CallFrame(ORLO_HERE("orlo::ProjectManager::GetAllProjects")).run(error, [&] { ... });
class CallFrame
{
public:
    explicit CallFrame(const CallSite& site) : m_site(site) {}

    template <class Work>
    std::invoke_result_t<Work> run(ErrorCode& error, Work&& work) const
    {
        return framed(error, std::forward<Work>(work), Rungs::common);
    }

    /// For an operation that calls its web function without the retry loop, which would have caught a transport failure.
    template <class Work>
    std::invoke_result_t<Work> runDirect(ErrorCode& error, Work&& work) const
    {
        return framed(error, std::forward<Work>(work), Rungs::withTransport);
    }

    /// For an operation whose signature has no ErrorCode: the work is handed a private one.
    template <class Work>
    std::invoke_result_t<Work, ErrorCode&> runAlone(Work&& work) const
    {
        ErrorCode error;
        return run(error, [&] { return work(error); });
    }

    template <class Work>
    std::invoke_result_t<Work, ErrorCode&> runDirectAlone(Work&& work) const
    {
        ErrorCode error;
        return runDirect(error, [&] { return work(error); });
    }

private:
    enum class Rungs { common, withTransport };

    template <class Work>
    std::invoke_result_t<Work> framed(ErrorCode& error, Work&& work, Rungs rungs) const
    {
        using Result = std::invoke_result_t<Work>;
        if constexpr (std::is_void_v<Result>) {
            attempt(error, work, rungs);
            if (isCancelledOutside() && !error.isClear())
                error = cancelledError();
        }
        else {
            Result result = Result();
            attempt(
                error, [&] { result = work(); }, rungs);
            if (isCancelledOutside() && detail::hasFailed(result, error))
                error = cancelledError();
            return result;
        }
    }

    template <class Work>
    void attempt(ErrorCode& error, Work&& work, Rungs rungs) const
    {
        try {
            const http::Operation operation;
            checkEntry(error);
            work();
        }
        catch (...) {
            caught(error, rungs);
        }
    }

    /// Whether the host has cancelled the scope that this operation, which is part of no other, is in.
    static bool isCancelledOutside() noexcept;

    void checkEntry(const ErrorCode& error) const;
    /// Assigns and logs the exception that is being handled.
    void caught(ErrorCode& error, Rungs rungs) const noexcept;
    void report(ErrorCode& error, Rungs rungs) const;

    CallSite m_site;
};

} // namespace orlo
