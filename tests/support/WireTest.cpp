#include "WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>

namespace orlo::test {

void expectClear(const ErrorCode& error)
{
    EXPECT_TRUE(error.GetValue() == 0 || error.GetValue() == -402653184) << error.GetValue();
    EXPECT_EQ(error.GetCategory(), nullptr);
    EXPECT_EQ(error.GetErrorMessage(), L"");
}

void expectHttpError(const ErrorCode& error, long long value, const std::wstring& name, const std::wstring& message, int code)
{
    EXPECT_EQ(error.GetValue(), value);
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetName(), name);
    EXPECT_EQ(failure->GetErrorMessage(), message);
    EXPECT_EQ(failure->GetCode(), code);
    EXPECT_EQ(failure->GetSubcode(), 0);
    EXPECT_EQ(error.GetErrorMessage(), message);
}

void expectGenericError(const ErrorCode& error, long long value, const std::wstring& name, const std::wstring& message)
{
    EXPECT_EQ(error.GetValue(), value);
    const auto failure = std::dynamic_pointer_cast<GenericError>(error.GetCategory());
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetName(), name);
    EXPECT_EQ(failure->GetErrorMessage(), message);
    EXPECT_EQ(error.GetErrorMessage(), message);
}

std::wstring failedWith(const std::string& url, const std::wstring& what, const std::wstring& why)
{
    const std::string withoutScheme = url.substr(url.find("://") + 3);
    return what + L" (" + utils::toWstring(withoutScheme.substr(0, withoutScheme.find('/'))) + L": " + why + L")";
}

std::wstring resetBy(const std::string& url)
{
    return failedWith(url, L"Failed to read HTTP status line", L"Connection reset by peer");
}

std::wstring silenceOf(const std::string& url)
{
    return failedWith(url, L"Failed to read HTTP status line", L"nothing came or went in time");
}

void moveServices(const HostSetup& host, const std::string& url)
{
    OrloConfig config = host.config();
    for (auto& service : config.serviceUrls)
        service.second = utils::toWstring(url);
    OrloConfigManager::Configure(config);
}

RetryLimit::RetryLimit(unsigned limit)
{
    http::setRetryPolicy({limit, 0});
}

RetryLimit::~RetryLimit()
{
    http::setRetryPolicy({});
}

} // namespace orlo::test
