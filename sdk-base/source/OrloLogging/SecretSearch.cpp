#include "SecretSearch.h"

#include "PlainForm.h"

#include <algorithm>

namespace orlo::redaction {

namespace {

constexpr std::size_t shortestSearched = 4;

} // namespace

SecretSearch::SecretSearch(const std::vector<std::wstring>& secrets)
{
    for (const std::wstring& secret : secrets) {
        if (PlainForm::hasEscapes(secret))
            m_plain.push_back(PlainForm(secret).text());
    }
    m_secrets.assign(secrets.begin(), secrets.end());
    m_secrets.insert(m_secrets.end(), m_plain.begin(), m_plain.end());
    // The longer first: one secret may be the head of another.
    std::stable_sort(m_secrets.begin(), m_secrets.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
    for (; m_searched < m_secrets.size() && m_secrets[m_searched].size() >= shortestSearched; ++m_searched)
        m_heads.set(headOf(m_secrets[m_searched], 0));
}

std::wstring SecretSearch::mask(std::wstring text) const
{
    const std::vector<Span> spans = spansIn(text);
    if (spans.empty())
        return text;
    std::wstring out;
    std::size_t copied = 0;
    for (const Span& span : spans) {
        out.append(text, copied, span.begin - copied);
        out += maskText;
        copied = span.end;
    }
    return out.append(text, copied, std::wstring::npos);
}

bool SecretSearch::isSecret(std::wstring_view word) const
{
    const std::wstring plain = PlainForm(word).text();
    return !word.empty() &&
           std::any_of(m_secrets.begin(), m_secrets.end(), [&](const auto& secret) { return secret == word || secret == plain; });
}

// In ascending order, and none overlaps another.
std::vector<SecretSearch::Span> SecretSearch::spansIn(std::wstring_view text) const
{
    std::vector<Span> found;
    forEachFound(text, [&](std::size_t begin, std::size_t end) { found.push_back({begin, end}); });
    if (m_searched > 0 && PlainForm::hasEscapes(text)) {
        const PlainForm plain(text);
        forEachFound(plain.text(), [&](std::size_t begin, std::size_t end) {
            found.push_back({plain.beginOf(begin), plain.endOf(end - 1)});
        });
    }
    std::sort(found.begin(), found.end(), [](const Span& a, const Span& b) { return a.begin < b.begin; });
    std::vector<Span> apart;
    for (const Span& span : found) {
        if (!apart.empty() && span.begin < apart.back().end)
            apart.back().end = std::max(apart.back().end, span.end);
        else
            apart.push_back(span);
    }
    return apart;
}

template <class Found>
void SecretSearch::forEachFound(std::wstring_view text, Found found) const
{
    if (m_searched == 0)
        return;
    for (std::size_t at = 0; at + shortestSearched <= text.size(); ++at) {
        if (!m_heads[headOf(text, at)])
            continue;
        if (const std::size_t length = longestAt(text, at); length > 0)
            found(at, at + length);
    }
}

std::size_t SecretSearch::longestAt(std::wstring_view text, std::size_t at) const
{
    for (std::size_t i = 0; i < m_searched; ++i) {
        if (text.compare(at, m_secrets[i].size(), m_secrets[i]) == 0)
            return m_secrets[i].size();
    }
    return 0;
}

// A number for the first two characters, which turns away nearly every place where no secret begins.
std::size_t SecretSearch::headOf(std::wstring_view text, std::size_t at)
{
    return (static_cast<std::size_t>(text[at]) * 61 + static_cast<std::size_t>(text[at + 1])) % heads;
}

} // namespace orlo::redaction
