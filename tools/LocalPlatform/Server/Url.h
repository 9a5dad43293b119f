#pragma once

#include <map>
#include <string>
#include <vector>

namespace orlo::platform {

/// A request target taken apart before it is decoded, so that "%2F" in an id stays part of the id.
struct Target
{
    std::vector<std::string> segments;        ///< Decoded, one for each part between slashes.
    std::map<std::string, std::string> query; ///< Decoded; the first of equal names counts.

    /// "/" and the decoded segments.
    std::string path() const;
};

/// Percent-decoding only: a "+" stays a plus. A bad escape or text that isn't UTF-8 is refused with 400.
Target readTarget(const std::string& target);

} // namespace orlo::platform
