#pragma once

#include "ErrorNumbers.h"
#include "HostSetup.h"
#include "LogCapture.h"
#include "ScriptedServer.h"

#include <BaseCommon/ErrorCode.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orlo::test {

// The values of an ErrorCode as a host sees them, in decimal digits.
constexpr long long badInputValue = 3892314113;
constexpr long long exceptionValue = 3892314114;
constexpr long long errorStatusValue = -402653182;

using Lines = std::vector<std::wstring>;

void expectClear(const ErrorCode& error);
/// The subcode must be 0.
void expectHttpError(const ErrorCode& error, long long value, const std::wstring& name, const std::wstring& message, int code);
void expectGenericError(const ErrorCode& error, long long value, const std::wstring& name, const std::wstring& message);

/// The words of a failure of the transport: what failed, with the server of an address, and why.
std::wstring failedWith(const std::string& url, const std::wstring& what, const std::wstring& why);
/// The server reset the connection instead of answering.
std::wstring resetBy(const std::string& url);
/// The server said nothing until the time-out.
std::wstring silenceOf(const std::string& url);

/// An address where nobody listens.
inline constexpr const char* closedAddress = "http://127.0.0.1:1";

/// Lets every service of the platform lie at one address, with everything else as it was.
void moveServices(const HostSetup& host, const std::string& url);

/// Sets a retry policy without pauses; the default one is back at the end.
class RetryLimit
{
public:
    explicit RetryLimit(unsigned limit);
    ~RetryLimit();

    RetryLimit(const RetryLimit&) = delete;
    RetryLimit& operator=(const RetryLimit&) = delete;
};

/// A host whose platform is a scripted server, with three retries and no pause between them.
class WireTest : public testing::Test
{
protected:
    /// No error, and nothing in the log.
    void expectQuiet() const
    {
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{});
    }

    ScriptedServer server;
    HostSetup host{server.url()};
    RetryLimit retries{3};
    LogCapture log;
    ErrorCode error;
};

} // namespace orlo::test
