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

} // namespace orlo::test
