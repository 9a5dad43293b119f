#include "Here.h"

#include <BaseCommon/NeverDestroyed.h>

#include <functional>
#include <mutex>
#include <vector>

namespace orlo::http {

namespace {

/// Made handles are kept for the next calls: to make one takes longer than a small call.
class Carriers
{
public:
    std::unique_ptr<Carrier> take()
    {
        {
            const std::lock_guard lock(m_mutex);
            if (!m_free.empty()) {
                auto last = std::move(m_free.back());
                m_free.pop_back();
                return last;
            }
        }
        return std::make_unique<Carrier>();
    }

    void giveBack(std::unique_ptr<Carrier> carrier)
    {
        curl_easy_reset(carrier->easy.get());
        const std::lock_guard lock(m_mutex);
        if (m_free.size() < most)
            m_free.push_back(std::move(carrier));
    }

private:
    static constexpr std::size_t most = 16;

    std::mutex m_mutex;
    std::vector<std::unique_ptr<Carrier>> m_free;
};

Carriers& carriers()
{
    static Carriers& instance = utils::neverDestroyed(new Carriers);
    return instance;
}

/// Wakes the one who waits when the call is cancelled.
class Awakening
{
public:
    Awakening(const pplx::cancellation_token& token, CURLM* multi) : m_token(token)
    {
        if (m_token.is_cancelable())
            m_registration = m_token.register_callback([multi] { curl_multi_wakeup(multi); });
    }
    ~Awakening()
    {
        if (m_token.is_cancelable())
            m_token.deregister_callback(m_registration); // it waits for one that runs
    }
    Awakening(const Awakening&) = delete;
    Awakening& operator=(const Awakening&) = delete;

private:
    const pplx::cancellation_token m_token;
    pplx::cancellation_token_registration m_registration;
};

} // namespace

Ending carryOn(const std::shared_ptr<Transfer>& transfer, const Carrier& carrier, const std::atomic<bool>& stops)
{
    transfer->attach(carrier.easy.get(), nullptr);
    const Awakening awakening(transfer->token(), carrier.multi.get());
    curl::Ride ride(carrier.multi.get(), carrier.easy.get());
    while (true) {
        if (stops || transfer->token().is_canceled())
            return {[transfer] { transfer->endWith(cancelled()); }, false};
        if (const auto ended = ride.step())
            return {[transfer, code = *ended] { transfer->end(code); }, *ended == CURLE_OK};
        if (Transfer::Clock::now() >= transfer->due())
            return {[transfer] { transfer->endTooLate(); }, false};
        curl::waitUntil(carrier.multi.get(), transfer->due());
    }
}

void carryHere(const std::shared_ptr<Transfer>& transfer)
{
    static const std::atomic<bool> never{false};
    auto carrier = carriers().take();
    bool canBeUsedAgain = false;
    try {
        const Ending ending = carryOn(transfer, *carrier, never);
        ending.tell();
        canBeUsedAgain = ending.canBeUsedAgain;
    }
    catch (...) {
        transfer->endWith(std::current_exception());
        return; // what is the matter with the handle nobody knows
    }
    if (canBeUsedAgain)
        carriers().giveBack(std::move(carrier));
}

} // namespace orlo::http
