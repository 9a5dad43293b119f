#pragma once

#include "../Seeds.h"
#include "../Server/Answer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace orlo::platform {

/// Refused with 404 if it isn't there.
void requireProject(World& world, const std::string& projectId);
/// Refused with 403 unless the account owns the project or may write something in it.
void requireWriter(World& world, const std::string& projectId, const std::string& accountId);

/// The id itself, a new one if it is empty; 409 if the table has a row with it already.
std::string freeId(World& world, const std::string& table, const std::string& id);

/// Refused with 400 for a text that isn't known.
template <std::size_t Count>
void requireOneOf(const std::array<const char*, Count>& known, const std::string& text, const std::string& what)
{
    if (std::find(known.begin(), known.end(), text) == known.end())
        throw Refusal(400, "unknown " + what + ": " + text);
}

} // namespace orlo::platform
