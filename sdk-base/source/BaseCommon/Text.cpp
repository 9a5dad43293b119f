#include "Text.h"

#include <BaseCommon/Uuid.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

namespace orlo::utils {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr char32_t lastCodePoint = 0x10FFFF;
// Stands for a broken sequence; no code point has this value.
constexpr char32_t malformed = 0xFFFFFFFF;

constexpr bool isSurrogate(char32_t value)
{
    return value >= 0xD800 && value <= 0xDFFF;
}

// The number of ASCII bytes at the head. Most text is nothing else, so it is looked at eight bytes at a time.
std::size_t asciiPrefix(const char* begin, const char* end)
{
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    const char* at = begin;
    for (std::uint64_t block = 0; end - at >= static_cast<std::ptrdiff_t>(sizeof block); at += sizeof block) {
        std::memcpy(&block, at, sizeof block);
        if ((block & highBits) != 0)
            break;
    }
    while (at != end && static_cast<unsigned char>(*at) < 0x80)
        ++at;
    return static_cast<std::size_t>(at - begin);
}

// What may follow a lead byte: how many bytes, and within which bounds the first of them lies.
struct Trail
{
    unsigned count;
    unsigned char low;
    unsigned char high;
};

Trail trailOf(unsigned char lead)
{
    if (lead < 0xC2 || lead > 0xF4)
        return {0, 0, 0};
    if (lead < 0xE0)
        return {1, 0x80, 0xBF};
    const unsigned count = lead < 0xF0 ? 2 : 3;
    switch (lead) {
    case 0xE0:
        return {count, 0xA0, 0xBF};
    case 0xED:
        return {count, 0x80, 0x9F};
    case 0xF0:
        return {count, 0x90, 0xBF};
    case 0xF4:
        return {count, 0x80, 0x8F};
    default:
        return {count, 0x80, 0xBF};
    }
}

// Takes one code point that is not ASCII, or the longest part of a broken sequence that could have begun one.
char32_t takeUtf8(const char*& at, const char* end)
{
    const auto lead = static_cast<unsigned char>(*at++);
    auto [count, low, high] = trailOf(lead);
    if (count == 0)
        return malformed;
    char32_t value = lead & (0x3FU >> count);
    for (; count > 0; --count, low = 0x80, high = 0xBF) {
        if (at == end)
            return malformed;
        const auto next = static_cast<unsigned char>(*at);
        if (next < low || next > high)
            return malformed;
        value = (value << 6) | (next & 0x3FU);
        ++at;
    }
    return value;
}

template <class Sink>
void decodeUtf8(const char* at, const char* end, Sink sink)
{
    while (at != end) {
        if (static_cast<unsigned char>(*at) < 0x80) {
            sink(static_cast<unsigned char>(*at++));
            continue;
        }
        const char32_t value = takeUtf8(at, end);
        sink(value == malformed ? replacementCharacter : value);
    }
}

// Takes one code point of wide text, whose unit has 16 or 32 bits.
template <class Unit>
char32_t takeWide(const Unit*& at, const Unit* end)
{
    if constexpr (sizeof(Unit) == 2) {
        const char32_t first = static_cast<char16_t>(*at++);
        if (!isSurrogate(first))
            return first;
        const char32_t second = at != end ? static_cast<char16_t>(*at) : U'\0';
        if (first > 0xDBFF || second < 0xDC00 || second > 0xDFFF)
            return replacementCharacter;
        ++at;
        return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
    }
    else {
        const auto value = static_cast<char32_t>(*at++);
        return value > lastCodePoint || isSurrogate(value) ? replacementCharacter : value;
    }
}

template <class Unit>
constexpr std::size_t wideUnitsOf(char32_t value)
{
    return sizeof(Unit) == 2 && value > 0xFFFF ? 2 : 1;
}

template <class Unit>
void putWide(Unit*& at, char32_t value)
{
    if (wideUnitsOf<Unit>(value) == 1) {
        *at++ = static_cast<Unit>(value);
        return;
    }
    *at++ = static_cast<Unit>(0xD7C0 + (value >> 10));
    *at++ = static_cast<Unit>(0xDC00 + (value & 0x3FF));
}

constexpr std::size_t utf8BytesOf(char32_t value)
{
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

void putUtf8(char*& at, char32_t value)
{
    if (value < 0x80) {
        *at++ = static_cast<char>(value);
        return;
    }
    const std::size_t trailing = utf8BytesOf(value) - 1;
    *at++ = static_cast<char>((0xFF00U >> (trailing + 1)) | (value >> (6 * trailing)));
    for (std::size_t left = trailing; left-- > 0;)
        *at++ = static_cast<char>(0x80 | ((value >> (6 * left)) & 0x3F));
}

// Text up to this many units is converted in one go on the stack. Longer text is gone over twice, so that the result takes no more
// memory than it needs.
constexpr std::size_t shortText = 256;

template <class Unit>
std::basic_string<Unit> widenShort(const char* begin, const char* end)
{
    std::array<Unit, shortText> wide;
    Unit* out = wide.data();
    decodeUtf8(begin, end, [&](char32_t value) { putWide(out, value); });
    return std::basic_string<Unit>(wide.data(), out);
}

template <class Unit>
std::basic_string<Unit> widen(std::string_view text)
{
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (asciiPrefix(begin, end) == text.size())
        return std::basic_string<Unit>(begin, end);
    if (text.size() <= shortText)
        return widenShort<Unit>(begin, end);
    std::size_t units = 0;
    decodeUtf8(begin, end, [&](char32_t value) { units += wideUnitsOf<Unit>(value); });
    std::basic_string<Unit> wide(units, Unit());
    Unit* out = wide.data();
    decodeUtf8(begin, end, [&](char32_t value) { putWide(out, value); });
    return wide;
}

template <class Unit>
bool isAscii(const std::basic_string<Unit>& text)
{
    char32_t bits = 0;
    for (const Unit unit : text)
        bits |= static_cast<char32_t>(unit);
    return bits < 0x80;
}

template <class Unit>
std::string narrowAscii(const std::basic_string<Unit>& text)
{
    std::string utf8(text.size(), '\0');
    std::transform(text.begin(), text.end(), utf8.begin(), [](Unit unit) { return static_cast<char>(unit); });
    return utf8;
}

template <class Unit>
std::string narrow(const std::basic_string<Unit>& text)
{
    if (isAscii(text))
        return narrowAscii(text);
    const Unit* end = text.data() + text.size();
    std::size_t bytes = 0;
    for (const Unit* at = text.data(); at != end;)
        bytes += utf8BytesOf(takeWide(at, end));
    std::string utf8(bytes, '\0');
    char* out = utf8.data();
    for (const Unit* at = text.data(); at != end;)
        putUtf8(out, takeWide(at, end));
    return utf8;
}

bool isBlank(wchar_t c)
{
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}
bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// Counts downwards, since the lowest value has no positive counterpart.
long long negatedDigits(const wchar_t* at, const wchar_t* end)
{
    constexpr long long lowest = std::numeric_limits<long long>::min();
    long long value = 0;
    for (; at != end && isDigit(*at); ++at) {
        const int digit = static_cast<int>(*at - L'0');
        if (value < (lowest + digit) / 10)
            return lowest;
        value = value * 10 - digit;
    }
    return value;
}

} // namespace

std::wstring toWstring(const std::string& text)
{
    return widen<wchar_t>(text);
}
std::wstring Utf8ToUnicode(const std::string& text)
{
    return widen<wchar_t>(text);
}
std::string toString(const std::wstring& text)
{
    return narrow(text);
}
std::string UnicodeToUtf8(const std::wstring& text)
{
    return narrow(text);
}

std::wstring toWstring(int value)
{
    return std::to_wstring(value);
}
std::wstring toWstring(unsigned int value)
{
    return std::to_wstring(value);
}
std::wstring toWstring(long long value)
{
    return std::to_wstring(value);
}

bool isValidUtf8(std::string_view bytes)
{
    const char* at = bytes.data();
    const char* end = at + bytes.size();
    while (at != end) {
        if (static_cast<unsigned char>(*at) < 0x80)
            at += asciiPrefix(at, end);
        else if (takeUtf8(at, end) == malformed)
            return false;
    }
    return true;
}

std::wstring toWstringTrimTrailingCarriageReturn(const std::string& text)
{
    std::wstring wide = toWstring(text);
    const std::size_t size = wide.size();
    if (size >= 2 && wide[size - 2] == L'\r' && wide[size - 1] == L'\n')
        wide.resize(size - 2);
    else if (size >= 1 && wide[size - 1] == L'\r')
        wide.resize(size - 1);
    return wide;
}

long long toInt64(const std::wstring& text)
{
    const wchar_t* at = text.data();
    const wchar_t* end = at + text.size();
    while (at != end && isBlank(*at))
        ++at;
    const bool isNegative = at != end && *at == L'-';
    if (at != end && (*at == L'-' || *at == L'+'))
        ++at;
    const long long value = negatedDigits(at, end);
    if (isNegative)
        return value;
    return value == std::numeric_limits<long long>::min() ? std::numeric_limits<long long>::max() : -value;
}

int toInt(const std::wstring& text)
{
    const long long value = toInt64(text);
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

bool strReplace(std::wstring& text, const std::wstring& from, const std::wstring& to)
{
    std::size_t found = from.empty() ? std::wstring::npos : text.find(from);
    if (found == std::wstring::npos)
        return false;
    std::wstring replaced;
    std::size_t done = 0;
    for (; found != std::wstring::npos; found = text.find(from, done)) {
        replaced.append(text, done, found - done).append(to);
        done = found + from.size();
    }
    replaced.append(text, done, std::wstring::npos);
    text = std::move(replaced);
    return true;
}

std::wstring LowerString(const std::wstring& text)
{
    std::wstring lower = text;
    for (wchar_t& c : lower) {
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    return lower;
}

void SplitString(std::vector<std::string>& out, const std::string& text, const std::string& separator)
{
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    std::size_t found = separator.empty() ? std::string::npos : text.find(separator);
    for (; found != std::string::npos; found = text.find(separator, begin)) {
        pieces.push_back(text.substr(begin, found - begin));
        begin = found + separator.size();
    }
    pieces.push_back(text.substr(begin));
    out = std::move(pieces); // last, since `text` may be one of the old pieces
}

std::wstring generateGuid()
{
    return toWstring(uuid::newUUIDV4());
}

} // namespace orlo::utils
