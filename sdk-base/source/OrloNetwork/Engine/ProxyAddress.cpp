#include "ProxyAddress.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

#include <cpprest/uri.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <stdexcept>

namespace orlo::http {

namespace {

std::optional<int> valueOfHexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? std::optional(lower - 'a' + 10) : std::nullopt;
}

/// A percent sign that stands for no byte stands for itself.
std::string withoutEscapes(const std::string& text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool hasRoom = text[at] == '%' && at + 2 < text.size();
        const auto high = hasRoom ? valueOfHexDigit(text[at + 1]) : std::nullopt;
        const auto low = hasRoom ? valueOfHexDigit(text[at + 2]) : std::nullopt;
        plain += high && low ? static_cast<char>(*high * 16 + *low) : text[at];
        at += high && low ? 2 : 0;
    }
    return plain;
}

[[noreturn]] void refuseProxy()
{
    throw std::invalid_argument("the address of the proxy can't be read; it has the form host:port");
}

bool isKnownScheme(const std::string& scheme)
{
    static const char* const known[] = {"http", "https", "socks4", "socks4a", "socks5", "socks5h"};
    return std::any_of(std::begin(known), std::end(known), [&](const char* name) { return scheme == name; });
}

/// What stands there instead of a port may be a password whose host was forgotten.
void requirePort(const std::string& authority)
{
    const std::size_t colon = authority.find_last_of(":]");
    if (colon == std::string::npos || authority[colon] == ']')
        return;
    const std::string port = authority.substr(colon + 1);
    if (port.empty() || port.size() > 5 || port.find_first_not_of("0123456789") != std::string::npos)
        refuseProxy();
}

/// As an address is shown and compared: lower case of scheme and host, a slash at its end. Nothing stands behind the port of a proxy.
std::string normalised(const std::string& url)
{
    const std::size_t begin = url.find("://") + 3;
    const std::string authority = url.substr(begin, url.find_first_of("/?#", begin) - begin);
    requirePort(authority);
    try {
        const web::uri address(utils::toNative(url.substr(0, begin) + authority));
        if (!address.host().empty() && isKnownScheme(utils::fromNativeToUtf8(address.scheme())))
            return utils::fromNativeToUtf8(address.to_string());
    }
    catch (const web::uri_exception&) { // its text is the address
    }
    refuseProxy();
}

} // namespace

ProxyAddress readProxyAddress(const std::wstring& text)
{
    constexpr const char* schemeEnd = "://";
    std::string url = utils::toString(text);
    if (url.find(schemeEnd) == std::string::npos)
        url.insert(0, "http://");
    const std::size_t begin = url.find(schemeEnd) + 3;
    ProxyAddress proxy;
    if (const std::size_t end = url.rfind('@'); end != std::string::npos && end >= begin) {
        const std::string login = url.substr(begin, end - begin);
        const std::size_t colon = std::min(login.find(':'), login.size());
        proxy.user = withoutEscapes(login.substr(0, colon));
        proxy.password = withoutEscapes(login.substr(std::min(colon + 1, login.size())));
        url.erase(begin, end + 1 - begin);
    }
    proxy.url = normalised(url);
    return proxy;
}

} // namespace orlo::http
