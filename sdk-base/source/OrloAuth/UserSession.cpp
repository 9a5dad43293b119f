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

UserSession::UserSession(UserIdentity identity) : m_identity(std::move(identity))
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
