#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace orlo::test {

/// Like MatchesRegex, whose patterns know fewer signs on some systems.
MATCHER_P(FitsPattern, pattern, "")
{
    return std::regex_match(std::string(arg), std::regex(pattern));
}

inline bool startsWith(const std::string& name, const std::string& head)
{
    return name.rfind(head, 0) == 0;
}

} // namespace orlo::test
