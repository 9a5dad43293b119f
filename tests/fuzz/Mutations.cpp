#include "Mutations.h"

#include <string_view>

namespace orlo::fuzz {

namespace {

constexpr std::string_view odd[] = {std::string_view("\0", 1),
                                    "\"",
                                    "\\",
                                    "\\\"",
                                    "\\ud800",
                                    "\\u0000",
                                    "..",
                                    "/",
                                    "\\..\\",
                                    "%2e",
                                    "?",
                                    "=",
                                    ":",
                                    " ",
                                    "\n",
                                    "[[[[",
                                    "{}",
                                    "]",
                                    "}",
                                    ",",
                                    "null",
                                    "true",
                                    "-0",
                                    "0e67",
                                    "1e999",
                                    "1e-400",
                                    "18446744073709551616",
                                    "1.11111111111111111111E-335",
                                    "\xF0\x9F\x98\x80",
                                    "\xF0",
                                    "\xED\xA0\x80",
                                    "\xC3",
                                    "\xFF",
                                    "\xEF\xBB\xBF",
                                    "\xE6\x96\x87"};

} // namespace

std::string Mutations::next()
{
    std::string text = m_seeds[below(m_seeds.size())];
    for (std::size_t left = 1 + below(8); left > 0; --left)
        change(text);
    return text;
}

/// A part of some seed.
std::string Mutations::piece()
{
    const std::string& seed = m_seeds[below(m_seeds.size())];
    const std::size_t begin = below(seed.size() + 1);
    return seed.substr(begin, below(seed.size() - begin + 1));
}

void Mutations::change(std::string& text)
{
    const std::size_t at = below(text.size() + 1);
    const std::size_t count = below(text.size() - at + 1);
    switch (below(6)) {
    case 0:
        text.erase(at, count);
        break;
    case 1:
        text.insert(at, odd[below(std::size(odd))]);
        break;
    case 2:
        text.insert(at, text.substr(at, count));
        break;
    case 3:
        text.insert(at, piece());
        break;
    case 4:
        text.resize(at);
        break;
    default:
        if (at < text.size())
            text[at] = static_cast<char>(m_random());
        break;
    }
}

} // namespace orlo::fuzz
