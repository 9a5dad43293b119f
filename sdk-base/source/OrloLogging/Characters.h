#pragma once

#include <string_view>

// Kinds of characters as the masking of secrets knows them: without the C locale, and inline, as they are asked for every character.
namespace orlo::redaction {

inline bool isBlank(wchar_t c)
{
    return c <= 0x20 || c == 0x7F || c == 0x85 || c == 0xA0 || c == 0x2028 || c == 0x2029 || c == 0x3000;
}

/// A blank that doesn't end the line.
inline bool isSpace(wchar_t c)
{
    return c == L' ' || c == L'\t';
}

inline wchar_t lower(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

inline bool isLetter(wchar_t c)
{
    return lower(c) >= L'a' && lower(c) <= L'z';
}

inline bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

inline bool isLetterOrDigit(wchar_t c)
{
    return isLetter(c) || isDigit(c);
}

inline bool isQuote(wchar_t c)
{
    return c == L'"' || c == L'\'';
}

inline bool isOneOf(wchar_t c, std::wstring_view set)
{
    return set.find(c) != std::wstring_view::npos;
}

} // namespace orlo::redaction
