#pragma once

#include <gmock/gmock.h>

#include <string>

namespace orlo::platform::test {

/// Empty if `actual` is the JSON `expected`, whatever the order of keys, else what differs. The expected strings "<id>", "<time>" and
/// "<text>" stand for any UUID, any time text and any non-empty text, the string "<number>" for any integer above 0.
std::string jsonDifference(const std::string& actual, const std::string& expected);

MATCHER_P(IsJson, expected, "is the JSON " + std::string(expected))
{
    const std::string difference = jsonDifference(arg, expected);
    *result_listener << difference;
    return difference.empty();
}

/// The string at the path, "data.id" or "data.0.id"; fails the test if there is none.
std::string jsonText(const std::string& json, const std::string& path);

} // namespace orlo::platform::test
