#pragma once

#include <cstdint>
#include <string>

namespace orlo::platform {

/// Signs addresses so that whoever holds one may use it, with that method and until it expires, and nothing else.
class Signer
{
public:
    explicit Signer(std::string key);

    /// The query to put behind `path`: "expires=<seconds since 1970>&signature=<hex>".
    std::string query(const std::string& method, const std::string& path, std::int64_t expires) const;

    /// Refuses with 403 what is expired, altered or not signed.
    void check(const std::string& method, const std::string& path, const std::string& expires, const std::string& signature,
               std::int64_t now) const;

private:
    std::string signature(const std::string& method, const std::string& path, const std::string& expires) const;

    std::string m_key;
};

} // namespace orlo::platform
