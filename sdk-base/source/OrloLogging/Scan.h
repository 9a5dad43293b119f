#pragma once

#include "Characters.h"
#include "PlainForm.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace orlo::redaction {

/// Ways over a text from a place in it. Nothing here remembers anything.
class Scan
{
public:
    static constexpr std::size_t longestName = 64;

    explicit Scan(std::wstring_view text) : m_text(text) {}

    template <class Stop>
    std::size_t forward(std::size_t from, Stop stop) const
    {
        while (from < m_text.size() && !stop(m_text[from]))
            ++from;
        return from;
    }

    std::size_t behindSpaces(std::size_t from) const
    {
        return forward(from, [](wchar_t c) { return !isSpace(c); });
    }

    bool standsAt(std::size_t at, std::wstring_view word) const
    {
        if (m_text.size() - at < word.size())
            return false;
        for (std::size_t i = 0; i < word.size(); ++i) {
            if (lower(m_text[at + i]) != word[i])
                return false;
        }
        return true;
    }

    bool precededBy(std::size_t end, std::wstring_view word) const { return end >= word.size() && standsAt(end - word.size(), word); }

    // The name, not quoted, that ends there.
    std::wstring_view nameBefore(std::size_t end) const
    {
        std::size_t name = end;
        while (name > 0 && end - name < longestName && (isLetterOrDigit(m_text[name - 1]) || isOneOf(m_text[name - 1], L"_-.$")))
            --name;
        std::wstring_view text = m_text.substr(name, end - name);
        // An ampersand escaped for JSON.
        if (backslashesBefore(name) > 0 && text.substr(0, 5) == L"u0026")
            text.remove_prefix(5);
        return text;
    }

    std::size_t backslashesBefore(std::size_t at) const
    {
        std::size_t count = 0;
        while (count < at && m_text[at - count - 1] == L'\\')
            ++count;
        return count;
    }

    // Escaped characters may stand in the word, and end it like others.
    template <class IsEnd>
    std::size_t behindWord(std::size_t from, IsEnd isEnd) const
    {
        while (from < m_text.size()) {
            const std::size_t next = m_text[from] == L'\\' ? behindEscaped(from, isEnd) : isEnd(m_text[from]) ? from : from + 1;
            if (next == from)
                break;
            from = next;
        }
        return from;
    }

    template <class IsEnd>
    std::size_t behindEscaped(std::size_t from, IsEnd isEnd) const
    {
        const std::size_t letter = forward(from, [](wchar_t c) { return c != L'\\'; });
        const std::size_t end = letter < m_text.size() && m_text[letter] == L'u' ? letter + 5 : letter + 1;
        const bool written = letter + 1 < end || (letter < m_text.size() && m_text[letter] == L'/');
        if (!written || end > m_text.size())
            return from;
        const std::wstring plain = PlainForm(m_text.substr(from, end - from)).text();
        return plain.size() == 1 && !isEnd(plain[0]) ? end : from;
    }

    // The quote that closes a string opened by that one behind so many backslashes. A text cut short ends the string too.
    std::size_t endOfString(std::size_t opening, std::size_t depth) const
    {
        std::size_t run = 0;
        for (std::size_t i = opening + 1; i < m_text.size(); ++i) {
            const bool closes = depth == 0 ? run % 2 == 0 : run <= depth;
            if (m_text[i] == m_text[opening] && closes)
                return i - std::min(run, depth);
            run = m_text[i] == L'\\' ? run + 1 : 0;
        }
        return m_text.size();
    }

private:
    std::wstring_view m_text;
};

} // namespace orlo::redaction
