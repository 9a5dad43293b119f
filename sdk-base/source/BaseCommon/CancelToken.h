#pragma once

#include <BaseCommon/Export.h>

#include <memory>

namespace orlo {

class Interruption;

/// A host's way to cancel what it has begun. Copies are the same token. It is cancelled once and stays so: new work wants a new token.
///
///     const orlo::CancelToken token;
///     cancelButton.onClick = [token] { token.cancel(); };
///     const orlo::CallScope scope(token);
///
/// Threads: any; `cancel` comes back at once and calls nothing of the host's. It is not for a handler of signals.
class ORLO_BASE_API CancelToken
{
public:
    CancelToken();
    ~CancelToken();
    CancelToken(const CancelToken&);
    CancelToken& operator=(const CancelToken&);

    /// Whatever is bound to the token ends soon, as failed with error::cancelled.
    void cancel() const noexcept;
    bool isCancelled() const noexcept;

    /// For the libraries.
    const std::shared_ptr<Interruption>& interruption() const noexcept { return m_interruption; }

private:
    std::shared_ptr<Interruption> m_interruption;
};

} // namespace orlo
