#pragma once

#include <bitset>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orlo::redaction {

constexpr std::wstring_view maskText = L"***";

/// Finds known secrets in a text, as they are and in the escaped forms of JSON strings and addresses, all of them in one go.
class SecretSearch
{
public:
    /// The secrets must stay as long as the search.
    explicit SecretSearch(const std::vector<std::wstring>& secrets);

    /// Masks what the text holds of any of the secrets, those of 1 to 3 characters excepted, which stand in many an ordinary word.
    std::wstring mask(std::wstring text) const;

    /// Whether the whole word is one of the secrets, the shortest ones included.
    bool isSecret(std::wstring_view word) const;

private:
    struct Span
    {
        std::size_t begin;
        std::size_t end;
    };

    std::size_t longestAt(std::wstring_view text, std::size_t at) const;
    template <class Found>
    void forEachFound(std::wstring_view text, Found found) const;
    std::vector<Span> spansIn(std::wstring_view text) const;

    static constexpr std::size_t heads = 4096;
    static std::size_t headOf(std::wstring_view text, std::size_t at);

    std::vector<std::wstring> m_plain;        // what those with escapes are without
    std::vector<std::wstring_view> m_secrets; // these and those, the longer first
    std::size_t m_searched = 0;               // so many of them are searched for in a text
    std::bitset<heads> m_heads;               // how they begin
};

} // namespace orlo::redaction
