#pragma once

#include <BaseCommon/Interruption.h>
#include <OrloNetwork/Export.h>

#include <pplx/pplxtasks.h>

#include <memory>
#include <optional>

namespace orlo::http {

struct OutermostOperation;

/// What a host's thread does in the library, from its first line to its last. The end of the process cancels the requests of all
/// operations, lets them come back, ten seconds at the most, and only then goes on to what they use: cpprestsdk's pool, OpenSSL, the
/// statics.
class ORLO_NETWORK_API Operation
{
public:
    /// Inside another operation of this thread it is a part of that one, unless a host has begun a scope in between.
    /// Throws std::runtime_error once the end of the process has come, and when the work of this thread is broken off.
    Operation();
    ~Operation();

    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    /// Whether what this thread does is part of one.
    static bool isUnderWay();

    /// Cancels the requests of this thread's operation; none outside of all operations.
    static pplx::cancellation_token token();

private:
    std::unique_ptr<OutermostOperation> m_outermost; ///< null for a part
};

/// Cancels a request when an interruption asks for it.
class ORLO_NETWORK_API Cancellation
{
public:
    /// Null: nothing ever cancels it.
    explicit Cancellation(const std::shared_ptr<Interruption>& interruption);

    pplx::cancellation_token token() const;

private:
    std::optional<pplx::cancellation_token_source> m_source;
    std::optional<Interruption::Listener> m_listener;
};

} // namespace orlo::http
