#include <OrloLogging/Redaction.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace orlo {

namespace {

constexpr std::wstring_view maskText = L"***";
constexpr std::size_t longestName = 64;

bool isBlank(wchar_t c)
{
    return c <= 0x20 || c == 0x7F || c == 0x85 || c == 0xA0 || c == 0x2028 || c == 0x2029 || c == 0x3000;
}

wchar_t lower(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool isLetterOrDigit(wchar_t c)
{
    return (lower(c) >= L'a' && lower(c) <= L'z') || (c >= L'0' && c <= L'9');
}

bool isOneOf(wchar_t c, std::wstring_view set)
{
    return set.find(c) != std::wstring_view::npos;
}

bool endsWith(std::wstring_view text, std::wstring_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// accessToken, access_token and X-Access-Token are one name.
bool isSecretName(std::wstring_view name)
{
    constexpr std::wstring_view whole[] = {L"sig", L"pwd"};
    constexpr std::wstring_view ends[] = {L"token",     L"signature",   L"password",   L"secret",        L"apikey",
                                          L"accesskey", L"accesskeyid", L"credential", L"authorization", L"withsas"};
    std::wstring plain;
    for (const wchar_t c : name) {
        if (isLetterOrDigit(c))
            plain += lower(c);
    }
    return std::find(std::begin(whole), std::end(whole), plain) != std::end(whole) ||
           std::any_of(std::begin(ends), std::end(ends), [&](std::wstring_view end) { return endsWith(plain, end); });
}

// Walks over the text once. Every rule that fires masks forward from where it stands and the walk goes on behind the mask.
class Walk
{
public:
    explicit Walk(const std::wstring& text) : m_text(text) {}

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
            parameter();
        else if (c == L'?' && m_inAddress)
            query();
        else if (c == L'b' || c == L'B')
            bearer();
        else if (isBlank(c) || isOneOf(c, L"\"<>"))
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

    template <typename Stop>
    std::size_t forward(std::size_t from, Stop stop) const
    {
        while (from < m_text.size() && !stop(m_text[from]))
            ++from;
        return from;
    }

    bool precededBy(std::size_t end, std::wstring_view word) const
    {
        if (end < word.size())
            return false;
        for (std::size_t i = 0; i < word.size(); ++i) {
            if (lower(m_text[end - word.size() + i]) != word[i])
                return false;
        }
        return true;
    }

    std::size_t backslashesBefore(std::size_t at) const
    {
        std::size_t count = 0;
        while (count < at && m_text[at - count - 1] == L'\\')
            ++count;
        return count;
    }

    void colon()
    {
        if (precededBy(m_at, L"http") || precededBy(m_at, L"https"))
            address();
        else if (precededBy(m_at, L"authorization"))
            headerValue();
        else
            member();
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
        const std::size_t end = forward(authority, [](wchar_t c) { return isBlank(c) || isOneOf(c, L"/?#\\\"<>"); });
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
        std::size_t end = forward(begin, [](wchar_t c) { return isBlank(c) || isOneOf(c, L"\"<>"); });
        while (end > begin && isOneOf(m_text[end - 1], L"\\)]},;.'"))
            --end;
        mask(begin, end);
        m_inAddress = false;
    }

    void headerValue()
    {
        const std::size_t begin = forward(m_at + 1, [](wchar_t c) { return c != L' '; });
        mask(begin, forward(begin, [](wchar_t c) { return c < 0x20 || c == L'"'; }));
    }

    void parameter()
    {
        std::size_t name = m_at;
        while (name > 0 && m_at - name < longestName && (isLetterOrDigit(m_text[name - 1]) || isOneOf(m_text[name - 1], L"_-.$")))
            --name;
        std::wstring_view text = std::wstring_view(m_text).substr(name, m_at - name);
        // An ampersand escaped for JSON.
        if (backslashesBefore(name) > 0 && text.substr(0, 5) == L"u0026")
            text.remove_prefix(5);
        if (isSecretName(text))
            parameterValue(m_at + 1);
    }

    void parameterValue(std::size_t begin)
    {
        const bool quoted = begin < m_text.size() && m_text[begin] == L'"';
        if (quoted) {
            mask(begin + 1, forward(begin + 1, [](wchar_t c) { return c == L'"'; }));
            return;
        }
        mask(begin, forward(begin, [this](wchar_t c) { return isBlank(c) || isOneOf(c, L"\"<>&;,)]}'\\") || (c == L'?' && m_inAddress); }));
    }

    // "name": value, where the quotes may be escaped any number of times.
    void member()
    {
        std::size_t closing = m_at;
        while (closing > 0 && isBlank(m_text[closing - 1]))
            --closing;
        if (closing == 0 || m_text[closing - 1] != L'"')
            return;
        const std::size_t end = closing - 1 - backslashesBefore(closing - 1);
        std::size_t name = end;
        while (name > 0 && end - name < longestName && !isOneOf(m_text[name - 1], L"\"\\"))
            --name;
        if (name > 0 && m_text[name - 1] == L'"' && isSecretName(std::wstring_view(m_text).substr(name, end - name)))
            memberValue(forward(m_at + 1, [](wchar_t c) { return !isBlank(c); }));
    }

    void memberValue(std::size_t begin)
    {
        const std::size_t quote = forward(begin, [](wchar_t c) { return c != L'\\'; });
        if (quote < m_text.size() && m_text[quote] == L'"') {
            mask(quote + 1, endOfString(quote + 1, quote - begin));
        }
        else if (begin < m_text.size() && m_text[begin] == L'[') {
            mask(begin + 1, forward(begin, [](wchar_t c) { return c == L']'; }));
        }
        else if (begin < m_text.size() && (isLetterOrDigit(m_text[begin]) || m_text[begin] == L'-')) {
            literal(begin);
        }
        m_inAddress = false;
    }

    void literal(std::size_t begin)
    {
        const std::size_t end = forward(begin, [](wchar_t c) { return isBlank(c) || isOneOf(c, L",}]"); });
        const std::wstring_view text = std::wstring_view(m_text).substr(begin, end - begin);
        if (text != L"null" && text != L"true" && text != L"false")
            mask(begin, end);
    }

    // The quote that closes a string opened by a quote behind so many backslashes. A text cut short ends the string too.
    std::size_t endOfString(std::size_t from, std::size_t depth) const
    {
        std::size_t run = 0;
        for (std::size_t i = from; i < m_text.size(); ++i) {
            const bool closes = depth == 0 ? run % 2 == 0 : run <= depth;
            if (m_text[i] == L'"' && closes)
                return i - std::min(run, depth);
            run = m_text[i] == L'\\' ? run + 1 : 0;
        }
        return m_text.size();
    }

    void bearer()
    {
        constexpr std::wstring_view word = L"bearer";
        const std::size_t behind = m_at + word.size();
        if ((m_at > 0 && isLetterOrDigit(m_text[m_at - 1])) || behind >= m_text.size() || !precededBy(behind, word))
            return;
        const std::size_t begin = forward(behind, [](wchar_t c) { return c != L' '; });
        if (begin > behind)
            mask(begin, forward(begin, [](wchar_t c) { return !isLetterOrDigit(c) && !isOneOf(c, L"-._~+/=*"); }));
    }

    const std::wstring& m_text;
    std::wstring m_out;
    std::size_t m_copied = 0;
    std::size_t m_at = 0;
    bool m_inAddress = false;
};

void maskAll(std::wstring& text, const std::wstring& secret)
{
    std::size_t found = secret.empty() ? std::wstring::npos : text.find(secret);
    if (found == std::wstring::npos)
        return;
    std::wstring out;
    std::size_t copied = 0;
    for (; found != std::wstring::npos; found = text.find(secret, copied)) {
        out.append(text, copied, found - copied);
        out += maskText;
        copied = found + secret.size();
    }
    out.append(text, copied, std::wstring::npos);
    text = std::move(out);
}

} // namespace

std::wstring redact(std::wstring text, const std::vector<std::wstring>& secrets)
{
    // The longer first: one secret may be the head of another.
    auto ordered = secrets;
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
    for (const std::wstring& secret : ordered)
        maskAll(text, secret);
    return Walk(text).run();
}

} // namespace orlo
