#pragma once

#include <BaseCommon/ErrorCode.h>
#include <OrloLogging/Log.h>
#include <OrloNetwork/Lifetime/Operation.h>

#include <string>
#include <type_traits>
#include <utility>

namespace orlo {

/// The frame of every exported operation: it looks at the ErrorCode that it was handed, does the work, and catches every
/// exception. After an exception the result is the empty one: false, null, an empty list or text. The end of the process waits for what is
/// in a frame, and none begins any more then.
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
        try {
            const http::Operation operation;
            checkEntry(error);
            return work();
        }
        catch (...) {
            caught(error, rungs);
        }
        return std::invoke_result_t<Work>();
    }

    void checkEntry(const ErrorCode& error) const;
    /// Assigns and logs the exception that is being handled.
    void caught(ErrorCode& error, Rungs rungs) const noexcept;
    void report(ErrorCode& error, Rungs rungs) const;

    CallSite m_site;
};

} // namespace orlo
