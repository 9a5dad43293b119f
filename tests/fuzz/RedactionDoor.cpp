#include "Doors.h"

#include <BaseCommon/Text.h>
#include <OrloLogging/Redaction.h>

#include <algorithm>

namespace orlo::fuzz {

namespace {

constexpr const wchar_t* credential = L"eyJ0Q7hX2kP9zR4w";

/// Forms in which a credential stands, each behind the text at hand.
constexpr const wchar_t* forms[] = {L"\nhttps://store/b?sig=@&x=1",
                                    L"\nhttp://user:@@store/b",
                                    L"\n\"accessToken\": \"@\"",
                                    L"\nAuthorization: Bearer @",
                                    L"\nsig=@&more",
                                    L"\n{\"body\":\"{\\\"password\\\":\\\"@\\\"}\"}"};

std::wstring planted(const std::wstring& form)
{
    const std::size_t at = form.find(L'@');
    return form.substr(0, at) + credential + form.substr(at + 1);
}

/// Whether the second text is the first with masks in the place of some parts of it. Asterisks of the text's own beside a mask look like
/// a part of it, so every way of reading them is followed: how much of the first text may be behind the second's first characters.
bool masksOnlyMore(const std::wstring& once, const std::wstring& twice)
{
    if (once == twice)
        return true;
    constexpr std::wstring_view mask = L"***";
    using Lengths = std::vector<char>;
    std::vector<Lengths> behind(twice.size() + 1, Lengths(once.size() + 1));
    behind[0][0] = 1;
    for (std::size_t at = 0; at < twice.size(); ++at) {
        const Lengths& here = behind[at];
        for (std::size_t i = 0; i < once.size(); ++i)
            behind[at + 1][i + 1] |= here[i] && once[i] == twice[at];
        if (twice.compare(at, mask.size(), mask) == 0) {
            const auto first = std::find(here.begin(), here.end(), 1) - here.begin();
            Lengths& next = behind[at + mask.size()];
            std::fill(next.begin() + first, next.end(), 1);
        }
    }
    return behind.back().back() != 0;
}

/// A line goes through more than one hand. The next one may take what a mask left for a name or a credential, and mask that too.
void checkAgain(const std::wstring& once, const std::vector<std::wstring>& secrets)
{
    require(masksOnlyMore(once, redact(once, secrets)), "what is masked stays masked, and nothing else is changed");
}

/// The text up to the first blank is the secret, and stands wherever the rest says "@".
void checkSecret(const std::wstring& text)
{
    const std::size_t end = text.find(L' ');
    const std::wstring secret = text.substr(0, end);
    if (end == std::wstring::npos || secret.size() < 4 || secret.find_first_of(L"*@") != std::wstring::npos)
        return;
    std::wstring line = text.substr(end);
    utils::strReplace(line, L"@", secret);
    const std::wstring masked = redact(line, {secret});
    require(masked.find(secret) == std::wstring::npos, "a given secret stands nowhere");
    checkAgain(masked, {secret});
}

} // namespace

// The first byte says which of the promises is looked at.
void redaction(std::string_view bytes)
{
    if (bytes.empty())
        return;
    const auto first = static_cast<unsigned char>(bytes.front());
    const std::wstring text = utils::toWstring(std::string(bytes.substr(1)));
    if (first % 4 == 0)
        return checkSecret(text);
    if (first % 4 == 1) {
        const std::wstring form = planted(forms[first / 4 % std::size(forms)]);
        return require(redact(text + form, {}).find(credential) == std::wstring::npos, "a credential is masked, whatever stands before it");
    }
    const std::wstring masked = redact(text, {});
    require(masksOnlyMore(text, masked), "all that isn't masked stays as it is");
    checkAgain(masked, {});
}

} // namespace orlo::fuzz
