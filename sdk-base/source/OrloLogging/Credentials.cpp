#include "Credentials.h"

#include "Characters.h"
#include "PlainForm.h"
#include "SecretSearch.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace orlo::redaction {

namespace {

constexpr std::size_t longestName = 64;
constexpr std::size_t shortestPadded = 8;
constexpr std::size_t shortestMixed = 16;
constexpr std::size_t shortestMixedRun = 12;
constexpr std::size_t shortestOfAnySort = 32;

bool startsWith(std::wstring_view text, std::wstring_view head)
{
    return text.substr(0, head.size()) == head;
}

bool endsWith(std::wstring_view text, std::wstring_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool isPadded(std::wstring_view word)
{
    return word.size() >= shortestPadded && word.back() == L'=';
}

// Letters and digits in a row, some of each, as only chance puts them; codes of parts have their hyphens.
bool hasMixedRun(std::wstring_view word)
{
    for (std::size_t at = 0; at < word.size(); ++at) {
        const std::size_t begin = at;
        bool letter = false;
        bool digit = false;
        for (; at < word.size() && isLetterOrDigit(word[at]); ++at) {
            letter = letter || isLetter(word[at]);
            digit = digit || isDigit(word[at]);
        }
        if (letter && digit && at - begin >= shortestMixedRun)
            return true;
    }
    return false;
}

int sixBitsOf(wchar_t c)
{
    if (c >= L'A' && c <= L'Z')
        return static_cast<int>(c - L'A');
    if (c >= L'a' && c <= L'z')
        return static_cast<int>(c - L'a') + 26;
    if (isDigit(c))
        return static_cast<int>(c - L'0') + 52;
    if (isOneOf(c, L"+-"))
        return 62;
    return isOneOf(c, L"/_") ? 63 : -1;
}

// Empty for what is no base64.
std::string fromBase64(std::wstring_view word)
{
    while (!word.empty() && word.back() == L'=')
        word.remove_suffix(1);
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const wchar_t c : word) {
        const int six = sixBitsOf(c);
        if (six < 0)
            return {};
        bits = (bits << 6 | static_cast<unsigned>(six)) & 0xFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

} // namespace

bool isSecretName(std::wstring_view name)
{
    constexpr std::wstring_view whole[] = {L"sig", L"pwd"};
    constexpr std::wstring_view ends[] = {L"token",     L"signature",   L"password",   L"secret",        L"apikey",
                                          L"accesskey", L"accesskeyid", L"credential", L"authorization", L"withsas"};
    // Of a longer name the end is what tells.
    std::array<wchar_t, longestName> letters{};
    std::size_t first = letters.size();
    for (auto c = name.rbegin(); c != name.rend() && first > 0; ++c) {
        if (isLetterOrDigit(*c))
            letters[--first] = lower(*c);
    }
    const std::wstring_view plain(letters.data() + first, letters.size() - first);
    return std::find(std::begin(whole), std::end(whole), plain) != std::end(whole) ||
           std::any_of(std::begin(ends), std::end(ends), [&](std::wstring_view end) { return endsWith(plain, end); });
}

bool looksLikeToken(std::wstring_view word)
{
    const std::wstring plain = PlainForm(word).text();
    // What was masked in part is a credential, and so is what is left of it.
    if (plain.find(maskText) != std::wstring::npos || isPadded(plain) || plain.size() >= shortestOfAnySort)
        return true;
    const bool isWebToken = startsWith(plain, L"eyJ") && plain.size() >= shortestPadded;
    return isWebToken || (plain.size() >= shortestMixed && hasMixedRun(plain));
}

bool looksLikeLogin(std::wstring_view word)
{
    const std::wstring plain = PlainForm(word).text();
    if (plain.find(maskText) != std::wstring::npos || isPadded(plain))
        return true;
    const std::string bytes = fromBase64(plain);
    return bytes.find(':') != std::string::npos && std::none_of(bytes.begin(), bytes.end(), isControl) && utils::isValidUtf8(bytes);
}

} // namespace orlo::redaction
