#include "TokenRenewal.h"

#include "UserSession.h"

#include <BaseCommon/Interruption.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/ProcessEnd.h>
#include <OrloLogging/Log.h>

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace orlo {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::minutes longestRenewal{1};
constexpr std::chrono::milliseconds betweenLooks{50}; ///< at the end of the process, which wakes nobody here

thread_local bool isAskingHere = false;

/// One at a time, on a thread of its own: a host that takes its time holds nobody up who has given up, nor the end of the process.
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

    bool renew(const std::shared_ptr<UserSession>& refused, Clock::time_point made)
    {
        // A source that calls the platform itself, and is refused, has nobody to ask.
        if (isAskingHere)
            return false;
        std::unique_lock lock(m_mutex);
        if (m_isUnderWay && !m_askedFor->isOfSameSignIn(*refused))
            await(lock); // what comes of it is another's
        if (!m_source || hasOther(*refused))
            return m_source != nullptr;
        if (!m_isUnderWay) {
            if (!isCurrent(*refused) || hasFailedSince(*refused, made))
                return false;
            begin(refused);
        }
        await(lock);
        return hasOther(*refused);
    }

private:
    static bool hasOther(const UserSession& refused)
    {
        const auto current = UserSession::GetInstance();
        return current && current->isOfSameUser(refused) && current->getAccessToken() != refused.getAccessToken();
    }

    static bool isCurrent(const UserSession& refused)
    {
        const auto current = UserSession::GetInstance();
        return current && current->isOfSameSignIn(refused);
    }

    /// Many requests may be refused at once: what the source had none for isn't asked for again by those that were made before it said so.
    bool hasFailedSince(const UserSession& refused, Clock::time_point made) const
    {
        return m_failedFor && m_failedFor->isOfSameSignIn(refused) && made <= m_failedAt;
    }

    void begin(const std::shared_ptr<UserSession>& refused)
    {
        m_isUnderWay = true;
        m_askedFor = refused;
        try {
            std::thread([this, source = m_source, refused] {
                isAskingHere = true;
                ask(*source, *refused);
                end(refused);
                utils::forgetOpenSslOfThread();
            }).detach();
        }
        catch (...) {
            m_isUnderWay = false;
            throw;
        }
    }

    void end(const std::shared_ptr<UserSession>& refused)
    {
        const std::lock_guard lock(m_mutex);
        m_isUnderWay = false;
        if (!hasOther(*refused)) {
            m_failedFor = refused;
            m_failedAt = Clock::now();
        }
        m_changed.notify_all();
    }

    void await(std::unique_lock<std::mutex>& lock)
    {
        const auto work = Interruption::current();
        lock.unlock();
        const Interruption::Listener listener(work, [this] {
            const std::lock_guard awakening(m_mutex);
            m_changed.notify_all();
        });
        lock.lock();
        const auto end = Clock::now() + longestRenewal;
        const auto isOver = [&] { return !m_isUnderWay || (work && work->isRequested()) || ProcessEnd::hasBegun(); };
        while (!isOver() && Clock::now() < end)
            m_changed.wait_for(lock, betweenLooks);
    }

    static void ask(const TokenSource& source, const UserSession& refused) noexcept
    {
        try {
            refused.continueWith(source({refused.GetId(), refused.getAccountId(), refused.getAccessToken()}));
        }
        catch (...) { // its words may hold anything
            log::warning(L"the token source threw an exception");
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::shared_ptr<const TokenSource> m_source;
    bool m_isUnderWay = false;
    std::shared_ptr<UserSession> m_askedFor; ///< last
    std::shared_ptr<UserSession> m_failedFor;
    Clock::time_point m_failedAt;
};

} // namespace

void UserSession::SetTokenSource(TokenSource source)
{
    Renewal::instance().setSource(source ? std::make_shared<const TokenSource>(std::move(source)) : nullptr);
}

bool renewToken(const std::shared_ptr<UserSession>& refused, Clock::time_point made) noexcept
{
    try {
        return refused && Renewal::instance().renew(refused, made);
    }
    catch (const std::exception&) { // no memory, or no thread, for it
        return false;
    }
}

} // namespace orlo
