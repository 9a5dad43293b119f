#include "Redaction.h"

#include "Characters.h"
#include "Credentials.h"
#include "Scan.h"
#include "SecretSearch.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace orlo::redaction {

namespace {

// Walks over the text once. Every rule that fires masks forward from where it stands and the walk goes on behind the mask.
class Walk
{
public:
    Walk(const std::wstring& text, const SecretSearch& secrets) : m_text(text), m_scan(text), m_secrets(secrets) {}

    std::wstring run()
    {
        while (m_at < m_text.size())
            step();
        if (m_copied == 0)
            return m_text;
        m_out.append(m_text, m_copied, std::wstring::npos);
        return std::move(m_out);
    }

private:
    void step()
    {
        const wchar_t c = m_text[m_at];
        if (c == L':')
            colon();
        else if (c == L'=')
            equals();
        else if (c == L'?' && m_inAddress)
            query();
        else if (c == L'b' || c == L'B')
            scheme();
        else if (m_inAddress && (isBlank(c) || isOneOf(c, L"\"<>")))
            m_inAddress = false;
        ++m_at;
    }

    // Masks [begin, end) and leaves the walk on the last masked character. Masks come in ascending order and don't overlap.
    void mask(std::size_t begin, std::size_t end)
    {
        if (begin >= end)
            return;
        m_out.append(m_text, m_copied, begin - m_copied);
        m_out += maskText;
        m_copied = end;
        m_at = end - 1;
    }

    void colon()
    {
        if (m_scan.precededBy(m_at, L"http") || m_scan.precededBy(m_at, L"https"))
            address();
        else if (m_scan.precededBy(m_at, L"authorization"))
            headerValue();
        else if (!member())
            header();
    }

    // The slashes may be escaped, as some JSON writers do.
    void address()
    {
        std::size_t authority = m_at + 1;
        int slashes = 0;
        while (authority < m_text.size() && slashes < 2 && isOneOf(m_text[authority], L"/\\")) {
            slashes += m_text[authority] == L'/';
            ++authority;
        }
        if (slashes < 2)
            return;
        m_inAddress = true;
        userInfo(authority);
    }

    void userInfo(std::size_t authority)
    {
        const std::size_t end = m_scan.forward(authority, [](wchar_t c) { return isBlank(c) || isOneOf(c, L"/?#\\\"<>"); });
        std::size_t sign = end;
        while (sign > authority && m_text[sign - 1] != L'@')
            --sign;
        if (sign > authority)
            mask(authority, sign - 1);
        m_at = std::max(m_at, end - 1);
    }

    // What closes the sentence or the quoting around an address is not part of it.
    void query()
    {
        const std::size_t begin = m_at + 1;
        std::size_t end = m_scan.forward(begin, [](wchar_t c) { return isBlank(c) || isOneOf(c, L"\"<>"); });
        while (end > begin && isOneOf(m_text[end - 1], L"\\)]},;.'"))
            --end;
        mask(begin, end);
        m_inAddress = false;
    }

    void headerValue()
    {
        const std::size_t begin = m_scan.behindSpaces(m_at + 1);
        if (!quotedValue(begin))
            mask(begin, m_scan.forward(begin, [](wchar_t c) { return isOneOf(c, L"\r\n\""); }));
    }

    // Of other headers only those whose names are no words of a sentence.
    void header()
    {
        const std::wstring_view name = m_scan.nameBefore(m_at);
        if (name.find(L'-') != std::wstring_view::npos && isSecretName(name))
            value(m_scan.behindSpaces(m_at + 1));
    }

    void equals()
    {
        if (!member())
            parameter();
    }

    // Spaces may stand around the sign, unless it compares.
    void parameter()
    {
        std::size_t end = m_at;
        while (end > 0 && isSpace(m_text[end - 1]))
            --end;
        const std::size_t next = m_at + 1;
        const std::size_t begin = m_scan.behindSpaces(next);
        const bool compares = end < m_at && next < m_text.size() && m_text[next] == L'=';
        if (!compares && isSecretName(m_scan.nameBefore(end)))
            value(begin);
    }

    void value(std::size_t begin)
    {
        const auto ends = [this](wchar_t c) { return isBlank(c) || isOneOf(c, L"\"<>&;,)]}") || (c == L'?' && m_inAddress); };
        if (!quotedValue(begin))
            mask(begin, behindScheme(begin, [&](std::size_t from) { return m_scan.behindWord(from, ends); }));
    }

    // A string in quotes, which may be escaped any number of times.
    bool quotedValue(std::size_t begin)
    {
        const std::size_t quote = m_scan.forward(begin, [](wchar_t c) { return c != L'\\'; });
        if (quote >= m_text.size() || !isQuote(m_text[quote]))
            return false;
        mask(quote + 1, m_scan.endOfString(quote, quote - begin));
        return true;
    }

    // The end of a value of one word, or of two where the first only says what kind of credential the second is.
    template <class BehindWord>
    std::size_t behindScheme(std::size_t begin, BehindWord behindOne) const
    {
        const std::size_t end = behindOne(begin);
        const std::size_t length = schemeAt(begin);
        const std::size_t next = m_scan.behindSpaces(end);
        return length == end - begin && next > end ? behindOne(next) : end;
    }

    // "name": value, or 'name': value, where the quotes may be escaped any number of times.
    // Returns: false where no name in quotes stands before the sign.
    bool member()
    {
        std::size_t closing = m_at;
        while (closing > 0 && isBlank(m_text[closing - 1]))
            --closing;
        if (closing == 0 || !isQuote(m_text[closing - 1]))
            return false;
        const wchar_t quote = m_text[closing - 1];
        const std::size_t end = closing - 1 - m_scan.backslashesBefore(closing - 1);
        std::size_t name = end;
        while (name > 0 && end - name < Scan::longestName && m_text[name - 1] != quote && m_text[name - 1] != L'\\')
            --name;
        if (name > 0 && m_text[name - 1] == quote && isSecretName(std::wstring_view(m_text).substr(name, end - name)))
            memberValue(m_scan.forward(m_at + 1, [](wchar_t c) { return !isBlank(c); }));
        return true;
    }

    void memberValue(std::size_t begin)
    {
        const bool quoted = quotedValue(begin);
        if (!quoted && begin < m_text.size() && m_text[begin] == L'[')
            mask(begin + 1, m_scan.forward(begin, [](wchar_t c) { return c == L']'; }));
        else if (!quoted && begin < m_text.size() && (isLetterOrDigit(m_text[begin]) || m_text[begin] == L'-'))
            literal(begin);
        m_inAddress = false;
    }

    void literal(std::size_t begin)
    {
        const auto ends = [](wchar_t c) { return isBlank(c) || isOneOf(c, L",}]"); };
        const std::size_t end = behindScheme(begin, [&](std::size_t from) { return m_scan.forward(from, ends); });
        const std::wstring_view text = std::wstring_view(m_text).substr(begin, end - begin);
        if (text != L"null" && text != L"true" && text != L"false")
            mask(begin, end);
    }

    // The length of the word that says there what kind of credential follows, or 0.
    std::size_t schemeAt(std::size_t at) const
    {
        if (at > m_text.size())
            return 0;
        return m_scan.standsAt(at, bearer) ? bearer.size() : m_scan.standsAt(at, basic) ? basic.size() : 0;
    }

    // Also parts of buildings are bearers, and walls are basic, so what follows must look like a credential.
    void scheme()
    {
        const std::size_t length = schemeAt(m_at);
        if (length == 0 || (m_at > 0 && isLetterOrDigit(m_text[m_at - 1])))
            return;
        const std::size_t begin = behindSeparator(m_at + length);
        const std::wstring_view word = wordAt(begin);
        if (begin == m_at + length || word.empty())
            return;
        if (looksLikeToken(word) || (length == basic.size() && looksLikeLogin(word)) || m_secrets.isSecret(word))
            mask(begin, begin + word.size());
    }

    // A space may be encoded, as in an address.
    std::size_t behindSeparator(std::size_t from) const
    {
        const std::size_t begin = m_scan.forward(from, [](wchar_t c) { return !isSpace(c) && c != L'+'; });
        return begin == from && m_text.compare(from, 3, L"%20") == 0 ? from + 3 : begin;
    }

    // Token characters, and not the stop of the sentence.
    std::wstring_view wordAt(std::size_t begin) const
    {
        std::size_t end = m_scan.behindWord(begin, [](wchar_t c) { return !isLetterOrDigit(c) && !isOneOf(c, L"-._~+/=%*"); });
        while (end > begin && m_text[end - 1] == L'.')
            --end;
        return std::wstring_view(m_text).substr(begin, end - begin);
    }

    static constexpr std::wstring_view bearer = L"bearer";
    static constexpr std::wstring_view basic = L"basic";

    const std::wstring& m_text;
    Scan m_scan;
    const SecretSearch& m_secrets;
    std::wstring m_out;
    std::size_t m_copied = 0;
    std::size_t m_at = 0;
    bool m_inAddress = false;
};

} // namespace

} // namespace orlo::redaction

namespace orlo {

std::wstring redact(std::wstring text, const std::vector<std::wstring>& secrets)
{
    const redaction::SecretSearch search(secrets);
    const std::wstring masked = search.mask(std::move(text));
    return redaction::Walk(masked, search).run();
}

} // namespace orlo
