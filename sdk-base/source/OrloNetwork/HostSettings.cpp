#include "HostSettings.h"

#include <BaseCommon/Platform.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/SecretGuard.h>

#include <limits>
#include <optional>

namespace orlo {

namespace {

constexpr const wchar_t* services[] = {L"project", L"structure", L"module", L"message", L"authorization", L"slproxy"};

/// Leaves the setting as it is where the variable is missing or empty.
void take(const char* name, std::wstring& setting)
{
    if (const auto value = utils::environmentVariable(name); value && !value->empty())
        setting = *value;
}

std::optional<int> wholeNumber(const std::wstring& text)
{
    constexpr int most = std::numeric_limits<int>::max();
    int number = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9')
            return std::nullopt;
        const int digit = static_cast<int>(c - L'0');
        if (number > (most - digit) / 10)
            return std::nullopt;
        number = number * 10 + digit;
    }
    return number;
}

void takeTimeout(int& seconds)
{
    std::wstring text;
    take("ORLO_TIMEOUT", text);
    if (text.empty())
        return;
    if (const auto number = wholeNumber(text); number.value_or(0) > 0)
        seconds = *number;
    else // without the text: who mixes variables up may have put a token there
        log::warning(L"configFromEnvironment - ORLO_TIMEOUT is not a whole number of seconds above 0, and is ignored");
}

} // namespace

HostSettings configFromEnvironment(HostSettings defaults)
{
    std::wstring url;
    take("ORLO_URL", url);
    if (!url.empty()) {
        for (const wchar_t* service : services)
            defaults.config.serviceUrls[service] = url;
    }
    take("ORLO_TOKEN", defaults.user.accessToken);
    take("ORLO_USER", defaults.user.userId);
    take("ORLO_ACCOUNT", defaults.user.accountId);
    take("ORLO_CA", defaults.config.caFile);
    take("ORLO_PROXY", defaults.config.proxy);
    takeTimeout(defaults.config.httpTimeoutSeconds);
    SecretGuard::protect(defaults.user.accessToken);
    return defaults;
}

} // namespace orlo
