#pragma once

#include <map>
#include <string>
#include <utility>

// The text of the file in which PermissionFileHelper keeps its tokens. For this library only.
namespace orlo::utils {

/// By user id, then dataset id.
using Tokens = std::map<std::pair<std::string, std::string>, std::string>;

/// Adds the entries of a text. False if it isn't that of such a file; an entry that lacks something is passed over.
bool parseTokens(const std::string& text, Tokens& tokens);

std::string textOf(const Tokens& tokens);

} // namespace orlo::utils
