#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orlo::redaction {

/// A text without the escapes of JSON strings and of addresses, at whatever depth, so that all the forms of a secret look alike:
/// a backslash goes, "\u00e9" and "%C3%A9" and "%25C3%25A9" become the character. For comparing only; it isn't decoding.
class PlainForm
{
public:
    explicit PlainForm(std::wstring_view source);

    const std::wstring& text() const { return m_text; }

    /// Where in the source the character at `at` stands.
    std::size_t beginOf(std::size_t at) const;
    std::size_t endOf(std::size_t at) const;

    /// Whether the text can have a plain form other than itself.
    static bool hasEscapes(std::wstring_view text)
    {
        return text.find(L'\\') != std::wstring_view::npos || text.find(L'%') != std::wstring_view::npos;
    }

private:
    // A character here, and what follows it, up to the next anchor, as it stands in the source.
    struct Anchor
    {
        std::size_t at;
        std::size_t begin;
        std::size_t end;
    };

    const Anchor& anchorOf(std::size_t at) const;
    void run();
    void backslashes();
    void percent();
    void append(unsigned long codePoint, std::size_t begin, std::size_t end);

    std::wstring_view m_source;
    std::size_t m_at = 0;
    std::wstring m_text;
    std::vector<Anchor> m_anchors;
};

} // namespace orlo::redaction
