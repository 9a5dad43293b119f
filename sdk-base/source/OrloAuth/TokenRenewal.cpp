#include "TokenRenewal.h"

#include "UserSession.h"

#include <BaseCommon/Interruption.h>
#include <BaseCommon/NeverDestroyed.h>
#include <OrloLogging/Log.h>

#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace orlo {

namespace {

constexpr std::chrono::minutes longestRenewal{1};

thread_local bool isAskingHere = false;

/// One at a time.
class Renewal
{
public:
    static Renewal& instance()
    {
        static Renewal& renewal = utils::neverDestroyed(new Renewal);
        return renewal;
    }

    void setSource(std::shared_ptr<const TokenSource> source)
    {
        const std::lock_guard lock(m_mutex);
        m_source.swap(source); // what was there is freed after the lock is gone
    }

    bool renew(const std::shared_ptr<UserSession>& refused)
    {
        // A source that calls the platform itself, and is refused, has nobody to ask.
        if (isAskingHere)
            return false;
        std::unique_lock lock(m_mutex);
        if (!m_source || hasOther(*refused))
            return m_source != nullptr;
        if (m_isUnderWay)
            return await(lock, *refused);
        m_isUnderWay = true;
        const auto source = m_source;
        lock.unlock();
        ask(*source, refused);
        lock.lock();
        m_isUnderWay = false;
        m_changed.notify_all();
        return hasOther(*refused);
    }

private:
    static bool hasOther(const UserSession& refused)
    {
        const auto current = UserSession::GetInstance();
        return current && current->isOfSameUser(refused) && current->getAccessToken() != refused.getAccessToken();
    }

    bool await(std::unique_lock<std::mutex>& lock, const UserSession& refused)
    {
        const auto work = Interruption::current();
        lock.unlock();
        const Interruption::Listener listener(work, [this] {
            const std::lock_guard awakening(m_mutex);
            m_changed.notify_all();
        });
        lock.lock();
        const auto isBrokenOff = [&] { return work && work->isRequested(); };
        m_changed.wait_for(lock, longestRenewal, [&] { return !m_isUnderWay || isBrokenOff(); });
        return hasOther(refused);
    }

    static void ask(const TokenSource& source, const std::shared_ptr<UserSession>& refused)
    {
        isAskingHere = true;
        try {
            refused->continueWith(source({refused->GetId(), refused->getAccountId(), refused->getAccessToken()}));
        }
        catch (const std::exception&) { // its words may hold anything
            log::warning(L"the token source threw an exception");
        }
        catch (...) {
            log::warning(L"the token source threw an unknown exception");
        }
        isAskingHere = false;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::shared_ptr<const TokenSource> m_source;
    bool m_isUnderWay = false;
};

} // namespace

void UserSession::SetTokenSource(TokenSource source)
{
    Renewal::instance().setSource(source ? std::make_shared<const TokenSource>(std::move(source)) : nullptr);
}

bool renewToken(const std::shared_ptr<UserSession>& refused) noexcept
{
    try {
        return refused && Renewal::instance().renew(refused);
    }
    catch (const std::exception&) { // no memory for it
        return false;
    }
}

} // namespace orlo
