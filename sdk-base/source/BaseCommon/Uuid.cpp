#include "Uuid.h"

#include <BaseCommon/Platform.h>

#include <openssl/rand.h>

#include <array>

namespace orlo::uuid {

namespace {

constexpr std::size_t guidLength = 36;

constexpr bool isHyphenPosition(std::size_t i)
{
    return i == 8 || i == 13 || i == 18 || i == 23;
}

constexpr bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

} // namespace

std::string newUUIDV4()
{
    std::array<unsigned char, 16> bytes{};
    utils::keepOpenSsl();
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
        return {};
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U); // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U); // variant of RFC 4122

    std::string text;
    text.reserve(guidLength);
    for (const unsigned char byte : bytes) {
        if (isHyphenPosition(text.size()))
            text += '-';
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0x0FU];
    }
    return text;
}

bool IsValidGUID(const std::string& text)
{
    if (text.size() != guidLength)
        return false;
    for (std::size_t i = 0; i < guidLength; ++i) {
        if (isHyphenPosition(i) ? text[i] != '-' : !isHexDigit(text[i]))
            return false;
    }
    return true;
}

} // namespace orlo::uuid
