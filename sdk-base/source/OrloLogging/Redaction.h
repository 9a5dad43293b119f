#pragma once

#include <OrloLogging/Export.h>

#include <string>
#include <vector>

namespace orlo {

/// Masks with "***" what must not stand in a log: the given secrets; user names and queries of http(s) addresses; the value of
/// a parameter ("sig=...") or JSON member ("accessToken":"...") that is named like a token, a signature or a password, at any
/// depth of quoting; what follows "Bearer" and "Authorization:". Everything else stays as it is.
/// Works in one pass over the text and one for each secret.
ORLO_LOGGING_API std::wstring redact(std::wstring text, const std::vector<std::wstring>& secrets);

} // namespace orlo
