#include "Clock.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace orlo::platform {

std::int64_t Clock::milliseconds() const
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count() + m_offsetSeconds * 1000;
}

std::int64_t Clock::seconds() const
{
    return milliseconds() / 1000;
}

std::string Clock::text() const
{
    const std::int64_t all = milliseconds();
    const auto whole = static_cast<std::time_t>(all / 1000);
    std::tm utc{};
    gmtime_r(&whole, &utc);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    std::array<char, 8> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03dZ", static_cast<int>(all % 1000));
    return std::string(date.data()) + fraction.data();
}

} // namespace orlo::platform
