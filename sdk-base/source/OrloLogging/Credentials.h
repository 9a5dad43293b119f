#pragma once

#include <string_view>

// What a credential, and the name of one, looks like.
namespace orlo::redaction {

/// Names are compared by their letters and digits: accessToken, access_token and X-Access-Token are one name.
bool isSecretName(std::wstring_view name);

/// Whether a word behind "Bearer" is a token rather than the name of a part of a building; the rule stands at redact().
bool looksLikeToken(std::wstring_view word);

/// Whether a word behind "Basic" is a user's name and password in base64.
bool looksLikeLogin(std::wstring_view word);

} // namespace orlo::redaction
