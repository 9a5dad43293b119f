#include "Reachability.h"

#include "Engine/Curl.h"
#include "Engine/ProxyAddress.h"
#include "Lifetime/Operation.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/NeverDestroyed.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>

#include <cpprest/uri.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <optional>
#include <string>

namespace orlo::http {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds remembered{3};
constexpr std::chrono::milliseconds betweenLooks{50};

/// What was found last.
struct Finding
{
    std::string address;
    bool isWithinReach = false;
    Clock::time_point time;
};

struct LastFinding
{
    std::mutex mutex;
    std::optional<Finding> finding;
};

LastFinding& lastFinding()
{
    static LastFinding& instance = utils::neverDestroyed(new LastFinding);
    return instance;
}

std::optional<bool> rememberedFor(const std::string& address)
{
    LastFinding& last = lastFinding();
    const std::lock_guard lock(last.mutex);
    if (!last.finding || last.finding->address != address || Clock::now() - last.finding->time > remembered)
        return std::nullopt;
    return last.finding->isWithinReach;
}

void remember(const std::string& address, bool isWithinReach)
{
    LastFinding& last = lastFinding();
    const std::lock_guard lock(last.mutex);
    last.finding = Finding{address, isWithinReach, Clock::now()};
}

/// Host and port, less everything that would be talked over the connection. Empty where nothing is configured.
std::string addressToConnectTo()
{
    const auto config = OrloConfigManager::Get()->snapshot();
    const std::wstring project = OrloConfigManager::Get()->GetServiceUrl(L"project");
    if (project.empty())
        return {};
    const web::uri uri(config->proxy.empty() ? utils::toNative(project) : utils::toNative(readProxyAddress(config->proxy).url));
    const int usualPort = uri.scheme() == utils::toNative(std::string("https")) ? 443 : 80;
    return "http://" + utils::fromNativeToUtf8(uri.host()) + ":" + std::to_string(uri.port() > 0 ? uri.port() : usualPort);
}

curl::Easy connectionTo(const std::string& address)
{
    curl::Easy easy = curl::makeEasy();
    curl::set(easy.get(), CURLOPT_URL, address);
    curl::set(easy.get(), CURLOPT_PROXY, std::string()); // keeps the environment's away
    curl::set(easy.get(), CURLOPT_NOPROXY, std::string());
    curl::set(easy.get(), CURLOPT_NOSIGNAL, 1L);
    curl::set(easy.get(), CURLOPT_QUICK_EXIT, 1L); // a look-up that hangs is left to itself
    curl::set(easy.get(), CURLOPT_CONNECT_ONLY, 1L);
    curl::set(easy.get(), CURLOPT_FRESH_CONNECT, 1L);
    curl::set(easy.get(), CURLOPT_FORBID_REUSE, 1L);
    return easy;
}

/// None where it was broken off, so that nothing was found.
std::optional<bool> canConnectTo(const std::string& address, std::chrono::milliseconds atMost)
{
    const Operation operation; // the end of the process waits for it
    const auto interruption = Interruption::current();
    const auto end = Clock::now() + std::clamp<std::chrono::milliseconds>(atMost, betweenLooks, std::chrono::minutes(10));
    const curl::Easy easy = connectionTo(address);
    const curl::Multi multi = curl::makeMulti();
    curl::Ride ride(multi.get(), easy.get());
    while (Clock::now() < end) {
        if (const auto code = ride.step())
            return *code == CURLE_OK;
        if (interruption && interruption->isRequested())
            return std::nullopt;
        curl::waitUntil(multi.get(), std::min(end, Clock::now() + betweenLooks));
    }
    return false;
}

} // namespace

bool isPlatformWithinReach(std::chrono::milliseconds atMost) noexcept
{
    try {
        const std::string address = addressToConnectTo();
        if (address.empty())
            return false;
        if (const auto known = rememberedFor(address))
            return *known;
        const auto found = canConnectTo(address, atMost);
        if (found)
            remember(address, *found);
        return found.value_or(false);
    }
    catch (const std::exception&) { // the process ends, or the address is none
        return false;
    }
}

bool isSignedInAndOnline() noexcept
{
    return UserSession::GetInstance() && isPlatformWithinReach();
}

} // namespace orlo::http
