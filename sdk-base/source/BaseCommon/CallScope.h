#pragma once

#include <BaseCommon/CancelToken.h>
#include <BaseCommon/Export.h>
#include <BaseCommon/Progress.h>

#include <memory>

namespace orlo {

class Interruption;

/// Binds what this thread begins, until the scope ends, to a token and to a callback: operations, and transfers whose futures may become
/// ready later. One scope inside another adds to it: either token cancels, and both callbacks are told.
///
///     const orlo::CancelToken token;
///     orlo::CallScope scope(token, [](const orlo::Progress& progress) { showBar(progress.fileBytesDone, progress.fileBytesInAll); });
///     auto uploaded = orlo::IFileManager::UploadFile(path, L"", L"", error).get();
///     if (orlo::isCancelled(error)) ...
///
/// Cancelling: an operation that is waiting for the network or for its next attempt comes back at once, as failed with error::cancelled;
/// one that begins later fails without a request. Of a transfer the future becomes ready with status 5555 and the message "cancelled". No
/// part of a file stays under its name, or beside it. Whether the platform has carried out a request that was under way nobody knows, as
/// with every failure of the network. What succeeds before it sees the token has succeeded.
///
/// Progress: at most ten times a second, and the last state always; one call at a time, on a thread that the scope has for it, which the
/// host may hold up; the last state on the thread that ends the scope. The end of the scope waits for a call that is under way, and none
/// comes behind it: a transfer that outlives its scope goes on, and can be cancelled, but isn't told of any more.
///
/// Nothing is thrown: without the memory for it a scope binds nothing.
/// Threads: a scope ends on the thread that it began on. Scopes of one thread may end in any order; the innermost one that is left counts.
/// Requests: none.
class ORLO_BASE_API CallScope
{
public:
    explicit CallScope(const CancelToken& token, ProgressCallback onProgress = nullptr);
    explicit CallScope(ProgressCallback onProgress);
    ~CallScope();

    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    struct State;

    void bind(const std::shared_ptr<Interruption>& token, ProgressCallback onProgress);

    std::unique_ptr<State> m_state;
};

} // namespace orlo
