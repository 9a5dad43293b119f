#include "Signing.h"

#include "../Server/Answer.h"
#include "Ids.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>
#include <charconv>

namespace orlo::platform {

namespace {

std::string hmacSha256(const std::string& key, const std::string& text)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    if (!HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), reinterpret_cast<const unsigned char*>(text.data()), text.size(),
              digest.data(), &length))
        throw std::runtime_error("HMAC failed");
    return {reinterpret_cast<const char*>(digest.data()), length};
}

bool sameText(const std::string& left, const std::string& right)
{
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

std::int64_t secondsOf(const std::string& text)
{
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

} // namespace

Signer::Signer(std::string key) : m_key(std::move(key))
{}

std::string Signer::signature(const std::string& method, const std::string& path, const std::string& expires) const
{
    return toHex(hmacSha256(m_key, method + "\n" + path + "\n" + expires));
}

std::string Signer::query(const std::string& method, const std::string& path, std::int64_t expires) const
{
    const std::string until = std::to_string(expires);
    return "expires=" + until + "&signature=" + signature(method, path, until);
}

void Signer::check(const std::string& method, const std::string& path, const std::string& expires, const std::string& given,
                   std::int64_t now) const
{
    if (!sameText(signature(method, path, expires), given))
        throw Refusal(403, "the signature of the address is wrong");
    if (secondsOf(expires) <= now)
        throw Refusal(403, "the address has expired");
}

} // namespace orlo::platform
