#pragma once

#include <OrloLogging/Export.h>

#include <string>
#include <vector>

namespace orlo {

/// Masks with "***" what must not stand in a log. Everything else stays as it is.
/// - The given secrets, also with their characters escaped as in JSON strings or encoded as in addresses. One of 1 to 3 characters
///   stands in many an ordinary word: it is masked only where a credential stands, which is what the other rules are about.
/// - User names and queries of http(s) addresses.
/// - Whatever its length, the value of a parameter (sig=..., token = '...'), of a JSON member ("accessToken":"...", also in single
///   quotes) or of a header with a hyphen (X-Api-Key: ...) that is named like a token, a signature or a password, at any depth of
///   quoting; and what follows "Authorization:".
/// - A word behind "Bearer" or "Basic" that looks like a credential, as also parts of buildings are called that: one of the secrets,
///   whatever its length; 8 characters or more that begin with "eyJ" or end with "="; 16 or more with 12 letters and digits in a row, of
///   both kinds; 32 or more of any kind; behind "Basic" also a name, ":" and a password in base64.
/// Works in one pass over the text, and one or two for all the secrets together.
ORLO_LOGGING_API std::wstring redact(std::wstring text, const std::vector<std::wstring>& secrets);

} // namespace orlo
