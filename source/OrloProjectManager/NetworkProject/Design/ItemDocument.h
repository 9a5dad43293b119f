#pragma once

#include <OrloProjectManager/Design/ConfigType.h>

#include <optional>
#include <string>

namespace orlo {

/// What is stored for a building item or a configuration of its own: the host's JSON, wrapped with the schema that it follows.
/// Returns: an empty text for a type that no item has; nothing where the content can't be read as JSON.
std::optional<std::wstring> itemDocument(ConfigType type, const std::wstring& content);

} // namespace orlo
