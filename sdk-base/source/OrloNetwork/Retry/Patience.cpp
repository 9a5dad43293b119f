#include "Patience.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/RequestError.h>
#include <BaseCommon/Uuid.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <utility>

namespace orlo::http {

namespace {

std::atomic<unsigned> retryLimit{RetryPolicy{}.limit};
std::atomic<unsigned> retryInterval{RetryPolicy{}.intervalSeconds};

struct SetBackoff
{
    std::mutex mutex;
    std::optional<BackoffPolicy> policy;
    std::minstd_rand random;
    bool isSeeded = false;
};

SetBackoff& setBackoff()
{
    static SetBackoff& instance = utils::neverDestroyed(new SetBackoff);
    return instance;
}

/// 0 to 1.
double chance()
{
    SetBackoff& set = setBackoff();
    const std::lock_guard lock(set.mutex);
    if (!std::exchange(set.isSeeded, true))
        set.random.seed(static_cast<unsigned>(std::hash<std::string>()(uuid::newUUIDV4())));
    return std::uniform_real_distribution<double>(0, 1)(set.random);
}

/// Whatever a host wrote.
BackoffPolicy sane(BackoffPolicy policy)
{
    constexpr std::chrono::milliseconds none{0};
    constexpr std::chrono::milliseconds most = std::chrono::hours(24);
    policy.longestPause = std::clamp(policy.longestPause, none, most);
    policy.firstPause = std::clamp(policy.firstPause, none, most);
    policy.factor = std::isfinite(policy.factor) ? std::max(policy.factor, 1.0) : 1.0;
    policy.jitter = std::isfinite(policy.jitter) ? std::clamp(policy.jitter, 0.0, 1.0) : 0.0;
    return policy;
}

std::chrono::milliseconds grownPause(const BackoffPolicy& policy, unsigned repetition)
{
    const double growth = std::min(std::pow(policy.factor, std::max(repetition, 1U) - 1.0), 1e12); // finite
    const double capped =
        std::min(static_cast<double>(policy.firstPause.count()) * growth, static_cast<double>(policy.longestPause.count()));
    return std::chrono::milliseconds(static_cast<std::int64_t>(capped * (1 - policy.jitter * chance())));
}

} // namespace

void setRetryPolicy(const RetryPolicy& policy)
{
    retryLimit = policy.limit;
    retryInterval = policy.intervalSeconds;
}

unsigned int getRetryLimitation()
{
    return retryLimit;
}

unsigned int getRetryInterval()
{
    return retryInterval;
}

void setBackoffPolicy(const std::optional<BackoffPolicy>& policy)
{
    const std::lock_guard lock(setBackoff().mutex);
    setBackoff().policy = policy ? std::optional(sane(*policy)) : std::nullopt;
}

Patience Patience::now()
{
    const std::lock_guard lock(setBackoff().mutex);
    return {getRetryLimitation(), std::chrono::seconds(getRetryInterval()), setBackoff().policy};
}

std::chrono::milliseconds Patience::pauseBefore(unsigned repetition, const ErrorCode& error) const
{
    if (!backoff)
        return interval;
    const RequestDetails* const failed = backoff->heedsRetryAfter ? requestDetails(error) : nullptr;
    if (failed && failed->retryAfter)
        return std::min<std::chrono::milliseconds>(*failed->retryAfter, backoff->longestPause);
    return grownPause(*backoff, repetition);
}

} // namespace orlo::http
