#pragma once

#include <BaseCommon/Export.h>

#include <string>
#include <string_view>
#include <vector>

// Text of the library. Wide text is std::wstring in the platform's own unit (UTF-32 where wchar_t has 32 bits, UTF-16 where it has 16),
// narrow text is UTF-8. Nothing here looks at the C locale and nothing throws for its input: bytes that are no UTF-8 and wide values
// that are no code point read as U+FFFD. All functions may be called from any thread.
namespace orlo::utils {

/// Widens UTF-8 text. Each maximal part of a broken sequence becomes one U+FFFD.
ORLO_BASE_API std::wstring toWstring(const std::string& text);
/// Decimal digits, with a "-" for negative values.
ORLO_BASE_API std::wstring toWstring(int value);
ORLO_BASE_API std::wstring toWstring(unsigned int value);
ORLO_BASE_API std::wstring toWstring(long long value);

/// Narrows to UTF-8. A lone surrogate or a value beyond U+10FFFF becomes U+FFFD, so the result is always valid UTF-8.
ORLO_BASE_API std::string toString(const std::wstring& text);

/// The same two conversions under names that say the encoding.
ORLO_BASE_API std::wstring Utf8ToUnicode(const std::string& text);
ORLO_BASE_API std::string UnicodeToUtf8(const std::wstring& text);

/// Whether the bytes are valid UTF-8: no overlong forms, no surrogates, nothing beyond U+10FFFF.
ORLO_BASE_API bool isValidUtf8(std::string_view bytes);

/// Widens and drops one carriage return at the end, with the line feed that may follow it.
ORLO_BASE_API std::wstring toWstringTrimTrailingCarriageReturn(const std::string& text);

/// The decimal number at the head of the text: blanks, a sign, digits; what follows the digits is ignored.
/// Returns: 0 where there are no digits; the nearest limit of the type where the number is out of its range.
ORLO_BASE_API int toInt(const std::wstring& text);
ORLO_BASE_API long long toInt64(const std::wstring& text);

/// Replaces every occurrence of `from`, left to right, in place. The text put in is not searched again.
/// Returns: whether anything was replaced; false for an empty `from`.
ORLO_BASE_API bool strReplace(std::wstring& text, const std::wstring& from, const std::wstring& to);

/// Copy with the letters A to Z in lower case; all other letters stay, whatever the locale.
ORLO_BASE_API std::wstring LowerString(const std::wstring& text);

/// Replaces `out` with the pieces between the separators, empty ones included: always one piece more than there are separators.
/// An empty separator splits nothing.
ORLO_BASE_API void SplitString(std::vector<std::string>& out, const std::string& text, const std::string& separator);

/// A new random GUID in lower case, without braces; empty if the system has no random numbers to give.
ORLO_BASE_API std::wstring generateGuid();

} // namespace orlo::utils
