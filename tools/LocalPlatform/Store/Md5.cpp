#include "Md5.h"

#include "OpenFile.h"

#include <openssl/evp.h>

#include <memory>
#include <stdexcept>

namespace orlo::platform {

std::string md5Of(const OpenFile& file)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    bool isGood = context && EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) == 1;
    file.read([&](std::string_view piece) { isGood = isGood && EVP_DigestUpdate(context.get(), piece.data(), piece.size()) == 1; });
    if (!isGood || EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1)
        throw std::runtime_error("MD5 failed");
    return {reinterpret_cast<const char*>(digest.data()), length};
}

std::string toBase64(const std::string& bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0'); // with the NUL at its end
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace orlo::platform
