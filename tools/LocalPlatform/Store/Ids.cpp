#include "Ids.h"

#include <openssl/rand.h>

#include <stdexcept>
#include <string_view>

namespace orlo::platform {

namespace {

constexpr std::string_view digits = "0123456789abcdef";

int digitOf(char c)
{
    const std::size_t at = digits.find(c);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

} // namespace

std::string randomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1)
        throw std::runtime_error("no random bytes");
    return bytes;
}

std::string toHex(const std::string& bytes)
{
    std::string hex;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        hex += digits[value >> 4];
        hex += digits[value & 15];
    }
    return hex;
}

std::string fromHex(const std::string& hex)
{
    if (hex.size() % 2 != 0)
        return {};
    std::string bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2) {
        const int high = digitOf(hex[at]);
        const int low = digitOf(hex[at + 1]);
        if (high < 0 || low < 0)
            return {};
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

std::string newId()
{
    std::string bytes = randomBytes(16);
    bytes[6] = static_cast<char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<char>((bytes[8] & 0x3f) | 0x80);
    std::string id = toHex(bytes);
    for (const std::size_t at : {8U, 13U, 18U, 23U})
        id.insert(at, "-");
    return id;
}

} // namespace orlo::platform
