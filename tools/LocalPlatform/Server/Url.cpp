#include "Url.h"

#include "../Store/Ids.h"
#include "Answer.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

namespace orlo::platform {

namespace {

bool isUtf8(const std::string& text)
{
    rapidjson::MemoryStream input(text.data(), text.size());
    while (input.Tell() < text.size()) {
        unsigned codepoint = 0;
        if (!rapidjson::UTF8<>::Decode(input, &codepoint))
            return false;
    }
    return true;
}

char escaped(const std::string& text, std::size_t at)
{
    std::string hex = text.substr(at, 2);
    for (char& c : hex)
        c = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    const std::string byte = hex.size() == 2 ? fromHex(hex) : std::string();
    if (byte.empty())
        throw Refusal(400, "bad percent escape in the address");
    return byte.front();
}

std::string decoded(const std::string& text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            plain += text[at];
            continue;
        }
        plain += escaped(text, at + 1);
        at += 2;
    }
    if (!isUtf8(plain) || plain.find('\0') != std::string::npos)
        throw Refusal(400, "the address isn't UTF-8 text");
    return plain;
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (std::size_t to = text.find(separator); to != std::string::npos; to = text.find(separator, from)) {
        parts.push_back(text.substr(from, to - from));
        from = to + 1;
    }
    parts.push_back(text.substr(from));
    return parts;
}

void readQuery(const std::string& text, std::map<std::string, std::string>& query)
{
    for (const std::string& pair : split(text, '&')) {
        const std::size_t equals = pair.find('=');
        const std::string value = equals == std::string::npos ? std::string() : pair.substr(equals + 1);
        if (!pair.empty())
            query.emplace(decoded(pair.substr(0, equals)), decoded(value));
    }
}

} // namespace

std::string Target::path() const
{
    std::string whole;
    for (const std::string& segment : segments)
        whole += "/" + segment;
    return whole;
}

Target readTarget(const std::string& target)
{
    const std::string withoutFragment = target.substr(0, target.find('#'));
    const std::size_t mark = withoutFragment.find('?');
    Target result;
    if (withoutFragment.empty() || withoutFragment.front() != '/')
        throw Refusal(400, "the address must begin with a slash");
    for (const std::string& segment : split(withoutFragment.substr(1, mark == std::string::npos ? mark : mark - 1), '/'))
        result.segments.push_back(decoded(segment));
    if (mark != std::string::npos)
        readQuery(withoutFragment.substr(mark + 1), result.query);
    return result;
}

} // namespace orlo::platform
