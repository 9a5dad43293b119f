#include "Charset.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

constexpr wchar_t replacement = 0xFFFD;

std::string trimmed(std::string text)
{
    constexpr const char* blanks = " \t";
    text.erase(0, std::min(text.find_first_not_of(blanks), text.size()));
    text.erase(text.find_last_not_of(blanks) + 1);
    return text;
}

std::string unquoted(std::string text)
{
    const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return isQuoted ? trimmed(text.substr(1, text.size() - 2)) : text;
}

/// The value of a parameter of a content type, in lower case; empty if it has none.
std::string parameterOf(const std::string& contentType, const std::string& name)
{
    std::vector<std::string> parts;
    utils::SplitString(parts, utils::toString(utils::LowerString(utils::toWstring(contentType))), ";");
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::size_t sign = parts[i].find('=');
        if (sign != std::string::npos && trimmed(parts[i].substr(0, sign)) == name)
            return unquoted(trimmed(parts[i].substr(sign + 1)));
    }
    return {};
}

void appendWide(std::wstring& text, unsigned long codePoint)
{
    if (sizeof(wchar_t) * CHAR_BIT < 20 && codePoint > 0xFFFF) {
        text += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        codePoint = 0xDC00 + (codePoint & 0x3FF);
    }
    text += static_cast<wchar_t>(codePoint);
}

/// Reads UTF-16, unit by unit.
class Utf16Reader
{
public:
    Utf16Reader(std::string_view bytes, bool isBigEnd) : m_bytes(bytes), m_isBigEnd(isBigEnd) {}

    /// Returns: false if some of it isn't valid, half a unit at the end included.
    bool read(std::wstring& text)
    {
        bool isValid = m_bytes.size() % 2 == 0;
        while (m_at + 1 < m_bytes.size()) {
            const unsigned long unit = unitAt(m_at);
            m_at += 2;
            if (isHigh(unit) && m_at + 1 < m_bytes.size() && isLow(unitAt(m_at))) {
                appendWide(text, 0x10000 + ((unit - 0xD800) << 10) + (unitAt(m_at) - 0xDC00));
                m_at += 2;
            }
            else {
                const bool isAlone = isHigh(unit) || isLow(unit);
                isValid = isValid && !isAlone;
                text += isAlone ? replacement : static_cast<wchar_t>(unit);
            }
        }
        return isValid;
    }

private:
    static bool isHigh(unsigned long unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
    static bool isLow(unsigned long unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
    unsigned long unitAt(std::size_t at) const
    {
        const auto first = static_cast<unsigned char>(m_bytes[at]);
        const auto second = static_cast<unsigned char>(m_bytes[at + 1]);
        return m_isBigEnd ? first * 256UL + second : second * 256UL + first;
    }

    std::string_view m_bytes;
    bool m_isBigEnd;
    std::size_t m_at = 0;
};

Decoding fromUtf16(std::string_view bytes, bool isBigEnd, std::string& utf8)
{
    std::wstring text;
    const bool isValid = Utf16Reader(bytes, isBigEnd).read(text);
    utf8 = utils::toString(text);
    return isValid ? Decoding::done : Decoding::invalid;
}

/// The byte order mark tells the order; without one the high byte comes first.
Decoding fromMarkedUtf16(std::string_view bytes, std::string& utf8)
{
    const std::string_view mark = bytes.substr(0, 2);
    const bool isMarked = mark == "\xFF\xFE" || mark == "\xFE\xFF";
    return fromUtf16(isMarked ? bytes.substr(2) : bytes, mark != "\xFF\xFE", utf8);
}

std::string fromLatin1(std::string_view bytes)
{
    std::wstring text;
    text.reserve(bytes.size());
    for (const char byte : bytes)
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return utils::toString(text);
}

} // namespace

Charset charsetOf(const utility::string_t& contentType)
{
    static constexpr std::pair<const char*, Charset> names[] = {{"", Charset::utf8},
                                                                {"utf-8", Charset::utf8},
                                                                {"utf8", Charset::utf8},
                                                                {"us-ascii", Charset::utf8},
                                                                {"ascii", Charset::utf8},
                                                                {"iso-8859-1", Charset::latin1},
                                                                {"latin1", Charset::latin1},
                                                                {"utf-16", Charset::utf16},
                                                                {"utf-16le", Charset::utf16LittleEnd},
                                                                {"utf-16be", Charset::utf16BigEnd}};
    const std::string wanted = parameterOf(utils::fromNativeToUtf8(contentType), "charset");
    const auto found = std::find_if(std::begin(names), std::end(names), [&](const auto& name) { return wanted == name.first; });
    return found == std::end(names) ? Charset::unknown : found->second;
}

Decoding toUtf8(Charset charset, std::string_view bytes, std::string& utf8)
{
    switch (charset) {
    case Charset::utf8:
        utf8 = bytes;
        return utils::isValidUtf8(bytes) ? Decoding::done : Decoding::invalid;
    case Charset::latin1:
        utf8 = fromLatin1(bytes);
        return Decoding::done;
    case Charset::utf16:
        return fromMarkedUtf16(bytes, utf8);
    case Charset::utf16LittleEnd:
        return fromUtf16(bytes, false, utf8);
    case Charset::utf16BigEnd:
        return fromUtf16(bytes, true, utf8);
    case Charset::unknown:
        break;
    }
    return Decoding::unknownCharset;
}

} // namespace orlo::http
