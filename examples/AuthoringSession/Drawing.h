#pragma once

#include <string>
#include <vector>

namespace session {

/// A tree as a person would draw it.
struct Drawing
{
    std::wstring label;
    std::vector<Drawing> below;
};

/// One line for each node.
std::vector<std::wstring> linesOf(const Drawing& tree);

} // namespace session
