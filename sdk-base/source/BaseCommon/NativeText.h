#pragma once

#include <BaseCommon/Text.h>

#include <string>
#include <utility>

// The one place where the library's text meets the text type of the HTTP library, which is UTF-8 std::string on Linux and std::wstring
// on Windows. Where both types agree the argument itself comes back: keep it alive as long as the reference, or take a copy.
namespace orlo::utils {

#if defined(_WIN32)

using NativeString = std::wstring;

inline const std::wstring& toNative(const std::wstring& text)
{
    return text;
}
inline std::wstring toNative(std::wstring&& text)
{
    return std::move(text);
}
inline std::wstring toNative(const std::string& utf8)
{
    return toWstring(utf8);
}
inline const std::wstring& fromNative(const NativeString& text)
{
    return text;
}
inline std::wstring fromNative(NativeString&& text)
{
    return std::move(text);
}
inline std::string fromNativeToUtf8(const NativeString& text)
{
    return toString(text);
}

#else

using NativeString = std::string;

inline std::string toNative(const std::wstring& text)
{
    return toString(text);
}
inline const std::string& toNative(const std::string& utf8)
{
    return utf8;
}
inline std::string toNative(std::string&& utf8)
{
    return std::move(utf8);
}
inline std::wstring fromNative(const NativeString& text)
{
    return toWstring(text);
}
inline const std::string& fromNativeToUtf8(const NativeString& text)
{
    return text;
}
inline std::string fromNativeToUtf8(NativeString&& text)
{
    return std::move(text);
}

#endif

} // namespace orlo::utils
