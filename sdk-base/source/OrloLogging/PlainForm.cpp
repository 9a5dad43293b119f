#include "PlainForm.h"

#include <algorithm>
#include <climits>
#include <iterator>

namespace orlo::redaction {

namespace {

struct Decoded
{
    unsigned long value = 0;
    std::size_t end = 0; // 0: nothing was decoded
};

int digitOf(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return static_cast<int>(c - L'0');
    if (c >= L'a' && c <= L'f')
        return static_cast<int>(c - L'a') + 10;
    return c >= L'A' && c <= L'F' ? static_cast<int>(c - L'A') + 10 : -1;
}

Decoded hex(std::wstring_view text, std::size_t at, std::size_t digits)
{
    if (at > text.size() || text.size() - at < digits)
        return {};
    Decoded result{0, at + digits};
    for (; at < result.end; ++at) {
        const int digit = digitOf(text[at]);
        if (digit < 0)
            return {};
        result.value = result.value * 16 + static_cast<unsigned long>(digit);
    }
    return result;
}

std::size_t behindBackslashes(std::wstring_view text, std::size_t at)
{
    return std::min(text.find_first_not_of(L'\\', at), text.size());
}

// One or more backslashes, "u" and four digits.
Decoded unitAt(std::wstring_view text, std::size_t at)
{
    const std::size_t letter = behindBackslashes(text, at);
    return letter > at && letter < text.size() && text[letter] == L'u' ? hex(text, letter + 1, 4) : Decoded{};
}

bool isBetween(unsigned long value, unsigned long first, unsigned long last)
{
    return value >= first && value <= last;
}

// "%" and two digits; the "%" may be escaped itself, any number of times.
Decoded byteAt(std::wstring_view text, std::size_t at)
{
    if (at >= text.size() || text[at] != L'%')
        return {};
    ++at;
    while (text.compare(at, 2, L"25") == 0 && hex(text, at + 2, 2).end != 0)
        at += 2;
    return hex(text, at, 2);
}

// The bytes of one character. What is no UTF-8 is taken for Latin-1.
Decoded characterAt(std::wstring_view text, std::size_t at)
{
    const Decoded lead = byteAt(text, at);
    if (lead.end == 0 || lead.value < 0xC2 || lead.value > 0xF4)
        return lead;
    const int following = lead.value < 0xE0 ? 1 : lead.value < 0xF0 ? 2 : 3;
    Decoded result{lead.value & (0x3FU >> following), lead.end};
    for (int i = 0; i < following; ++i) {
        const Decoded next = byteAt(text, result.end);
        if (next.end == 0 || !isBetween(next.value, 0x80, 0xBF))
            return lead;
        result = {result.value << 6 | (next.value & 0x3F), next.end};
    }
    return result.value <= 0x10FFFF ? result : lead;
}

} // namespace

PlainForm::PlainForm(std::wstring_view source) : m_source(source)
{
    m_text.reserve(source.size());
    while (m_at < source.size()) {
        if (source[m_at] == L'\\')
            backslashes();
        else if (source[m_at] == L'%')
            percent();
        else
            run();
    }
}

const PlainForm::Anchor& PlainForm::anchorOf(std::size_t at) const
{
    return *std::prev(std::upper_bound(m_anchors.begin(), m_anchors.end(), at,
                                       [](std::size_t place, const Anchor& anchor) { return place < anchor.at; }));
}

std::size_t PlainForm::beginOf(std::size_t at) const
{
    const Anchor& anchor = anchorOf(at);
    return at == anchor.at ? anchor.begin : anchor.end + (at - anchor.at - 1);
}

std::size_t PlainForm::endOf(std::size_t at) const
{
    const Anchor& anchor = anchorOf(at);
    return anchor.end + (at - anchor.at);
}

void PlainForm::run()
{
    std::size_t end = m_at;
    while (end < m_source.size() && m_source[end] != L'\\' && m_source[end] != L'%')
        ++end;
    m_anchors.push_back({m_text.size(), m_at, m_at + 1});
    m_text.append(m_source, m_at, end - m_at);
    m_at = end;
}

void PlainForm::backslashes()
{
    const Decoded unit = unitAt(m_source, m_at);
    if (unit.end == 0) {
        m_at = behindBackslashes(m_source, m_at);
        return;
    }
    const Decoded low = isBetween(unit.value, 0xD800, 0xDBFF) ? unitAt(m_source, unit.end) : Decoded{};
    if (low.end != 0 && isBetween(low.value, 0xDC00, 0xDFFF))
        append(0x10000 + ((unit.value - 0xD800) << 10) + (low.value - 0xDC00), m_at, low.end);
    else
        append(unit.value, m_at, unit.end);
}

void PlainForm::percent()
{
    const Decoded character = characterAt(m_source, m_at);
    if (character.end == 0)
        append(L'%', m_at, m_at + 1);
    else
        append(character.value, m_at, character.end);
}

void PlainForm::append(unsigned long codePoint, std::size_t begin, std::size_t end)
{
    m_at = end;
    // A backslash that was escaped goes like one that wasn't.
    if (codePoint == L'\\')
        return;
    const auto add = [&](unsigned long unit) {
        m_anchors.push_back({m_text.size(), begin, end});
        m_text += static_cast<wchar_t>(unit);
    };
    if (sizeof(wchar_t) * CHAR_BIT < 20 && codePoint > 0xFFFF) {
        add(0xD800 + ((codePoint - 0x10000) >> 10));
        add(0xDC00 + (codePoint & 0x3FF));
    }
    else {
        add(codePoint);
    }
}

} // namespace orlo::redaction
