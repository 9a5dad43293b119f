#include "support/TempFolder.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <OrloNetwork/NetworkCommon.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// What the default logger shows of a loop that used its attempts up.
namespace orlo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* exhausted = "max retry attempts exceeded";

class QuietSuccessTest : public testing::Test
{
protected:
    QuietSuccessTest() { http::setRetryPolicy({0, 0}); }
    ~QuietSuccessTest() override { http::setRetryPolicy({}); }

    /// What stderr shows of a call with one attempt.
    static std::string shown(bool succeeds)
    {
        testing::internal::CaptureStderr();
        ErrorCode error;
        http::SendNormalRequestWithRetry(
            [succeeds](ErrorCode& failure) {
                if (!succeeds)
                    failure.Assign(error::errorStatus, makeHttpError(L"HttpError", L"busy", 503, 0));
                return succeeds;
            },
            false, error);
        return testing::internal::GetCapturedStderr();
    }
    static std::string logText() { return readFile(utils::makePath(utils::getLogPath()) / "orlo.log"); }

    TempFolder m_folder;
    LocalRoot m_root{m_folder};
};

TEST_F(QuietSuccessTest, aSuccessWithTheLastAttemptStaysInTheFile)
{
    EXPECT_THAT(shown(true), Not(HasSubstr(exhausted)));
    EXPECT_THAT(logText(), HasSubstr(exhausted));
}

TEST_F(QuietSuccessTest, aFailureWithTheLastAttemptIsShown)
{
    EXPECT_THAT(shown(false), HasSubstr(exhausted));
    EXPECT_THAT(logText(), HasSubstr(exhausted));
}

} // namespace
} // namespace orlo::test
