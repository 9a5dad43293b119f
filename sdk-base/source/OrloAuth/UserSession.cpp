#include "UserSession.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloAuth/SessionWatch.h>
#include <OrloLogging/SecretGuard.h>

#include <mutex>
#include <utility>

namespace orlo {

namespace {

struct State
{
    std::mutex mutex;
    std::shared_ptr<UserSession> session;
    SessionWatch watch = nullptr;
};

State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

void put(std::shared_ptr<UserSession> session)
{
    const std::lock_guard lock(state().mutex);
    state().session.swap(session);
}

void replaceSession(const std::shared_ptr<UserSession>& session)
{
    SessionWatch watch = nullptr;
    {
        const std::lock_guard lock(state().mutex);
        watch = state().watch;
    }
    const auto replace = [&] { put(session); };
    if (watch)
        watch(session, replace);
    else
        replace();
}

} // namespace

void watchSessions(SessionWatch watch)
{
    const std::lock_guard lock(state().mutex);
    state().watch = watch;
}

UserSession::UserSession(UserIdentity identity) : m_identity(std::move(identity)), m_signIn(std::make_shared<const int>(0))
{}

UserSession::~UserSession() = default;

void UserSession::SignIn(const UserIdentity& identity)
{
    SecretGuard::protect(identity.accessToken);
    replaceSession(std::make_shared<UserSession>(identity));
}

void UserSession::SignOut()
{
    replaceSession(nullptr);
}

std::shared_ptr<UserSession> UserSession::GetInstance()
{
    const std::lock_guard lock(state().mutex);
    return state().session;
}

bool UserSession::isOfSameUser(const UserSession& other) const
{
    return m_identity.userId == other.m_identity.userId && m_identity.accountId == other.m_identity.accountId;
}

// No watch is told: it is the same user who works on.
void UserSession::continueWith(const std::wstring& token) const
{
    if (token.empty() || token == m_identity.accessToken)
        return;
    SecretGuard::protect(token);
    auto next = std::make_shared<UserSession>(UserIdentity{m_identity.userId, m_identity.accountId, token});
    next->m_signIn = m_signIn;
    // What was swapped out is freed after the lock is gone.
    const std::lock_guard lock(state().mutex);
    if (state().session.get() == this)
        state().session.swap(next);
}

std::wstring UserSession::GetId() const
{
    return m_identity.userId;
}

std::wstring UserSession::getAccountId() const
{
    return m_identity.accountId;
}

std::wstring UserSession::getAccessToken() const
{
    return m_identity.accessToken;
}

} // namespace orlo
