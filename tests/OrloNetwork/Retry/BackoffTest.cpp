// The pauses between attempts, where a host wants others than those of one length.

#include "OrloNetwork/ChainProbe.h"

#include <BaseCommon/RequestError.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloNetwork/Retry/Patience.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using http::BackoffPolicy;
using http::Patience;
using std::chrono::milliseconds;

class BackoffTest : public testing::Test
{
protected:
    ~BackoffTest() override { http::setBackoffPolicy(std::nullopt); }

    static milliseconds pause(unsigned repetition, const ErrorCode& error = {}) { return Patience::now().pauseBefore(repetition, error); }

    static ErrorCode askedFor(std::optional<std::chrono::seconds> pause)
    {
        RequestDetails details;
        details.retryAfter = pause;
        return {error::errorStatus, makeRequestError(L"HttpError", L"", 429, 0, details)};
    }
};

TEST_F(BackoffTest, isOffByDefault)
{
    const RetryPolicyGuard policy({3, 7});
    for (const unsigned repetition : {1U, 2U, 3U})
        EXPECT_EQ(pause(repetition), 7s);
    EXPECT_EQ(pause(1, askedFor(2s)), 7s);
}

TEST_F(BackoffTest, doublesUpToTheLongestPause)
{
    http::setBackoffPolicy(BackoffPolicy{100ms, 2, 1000ms, 0, true});
    EXPECT_EQ(pause(1), 100ms);
    EXPECT_EQ(pause(2), 200ms);
    EXPECT_EQ(pause(3), 400ms);
    EXPECT_EQ(pause(4), 800ms);
    EXPECT_EQ(pause(5), 1000ms);
    EXPECT_EQ(pause(4'000'000'000U), 1000ms);
}

TEST_F(BackoffTest, leavesOutAPartOfEachPauseAtRandom)
{
    http::setBackoffPolicy(BackoffPolicy{1000ms, 1, 1000ms, 0.5, true});
    std::set<milliseconds> seen;
    for (int i = 0; i < 200; ++i) {
        const milliseconds one = pause(1);
        EXPECT_GE(one, 500ms);
        EXPECT_LE(one, 1000ms);
        seen.insert(one);
    }
    EXPECT_GT(seen.size(), 20U);
    EXPECT_LT(*seen.begin(), 650ms);
    EXPECT_GT(*seen.rbegin(), 850ms);
}

TEST_F(BackoffTest, heedsWhatThePlatformAsksFor)
{
    http::setBackoffPolicy(BackoffPolicy{100ms, 2, 10s, 0.5, true});
    EXPECT_EQ(pause(1, askedFor(3s)), 3s);
    EXPECT_EQ(pause(5, askedFor(0s)), 0ms);
    EXPECT_EQ(pause(1, askedFor(3600s)), 10s);
}

TEST_F(BackoffTest, doesNotHeedItWhereTheHostDoesNotWantThat)
{
    http::setBackoffPolicy(BackoffPolicy{100ms, 2, 10s, 0, false});
    EXPECT_EQ(pause(1, askedFor(3s)), 100ms);
}

TEST_F(BackoffTest, sensibleWhateverAHostWrites)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double factor : {nan, infinite, -infinite, -1.0, 0.0, 1e308}) {
        for (const double jitter : {nan, infinite, -infinite, -1.0, 2.0}) {
            for (const milliseconds length : {milliseconds::min(), -1ms, 0ms, 1ms, milliseconds::max()}) {
                http::setBackoffPolicy(BackoffPolicy{length, factor, length, jitter, true});
                for (const unsigned repetition : {0U, 1U, 2U, std::numeric_limits<unsigned>::max()}) {
                    EXPECT_GE(pause(repetition), 0ms);
                    EXPECT_LE(pause(repetition), 24h);
                }
            }
        }
    }
}

TEST_F(BackoffTest, aCallKeepsThePolicyThatItStartedWith)
{
    http::setBackoffPolicy(BackoffPolicy{100ms, 1, 100ms, 0, true});
    const Patience started = Patience::now();
    http::setBackoffPolicy(BackoffPolicy{5s, 1, 5s, 0, true});
    EXPECT_EQ(started.pauseBefore(1, {}), 100ms);
    EXPECT_EQ(pause(1), 5s);
}

TEST_F(BackoffTest, theRetryLoopMakesItsPauses)
{
    const RetryPolicyGuard policy({3, 3600});
    http::setBackoffPolicy(BackoffPolicy{1ms, 2, 3600s, 0, true});
    int attempts = 0;
    ErrorCode error;
    const bool done = http::SendNormalRequestWithRetry(
        [&](ErrorCode& ec) {
            if (++attempts < 3)
                ec = {error::errorStatus, makeRequestError(L"HttpError", L"", 503, 0, {})};
            return attempts == 3;
        },
        false, error);
    EXPECT_TRUE(done);
    EXPECT_EQ(attempts, 3);
}

} // namespace
} // namespace orlo::test
