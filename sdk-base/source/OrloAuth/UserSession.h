#pragma once

#include <OrloAuth/Export.h>

#include <memory>
#include <string>

namespace orlo {

/// Who is signed in.
struct UserIdentity
{
    std::wstring userId;
    std::wstring accountId;
    std::wstring accessToken;
};

/// The signed-in user. A session that was handed out stays as it is, whoever signs in later.
class ORLO_AUTH_API UserSession
{
public:
    explicit UserSession(UserIdentity identity);
    ~UserSession();

    /// Replaces whoever was signed in. The access token is masked in every later log line.   Threads: any.
    static void SignIn(const UserIdentity& identity);
    static void SignOut();

    /// Returns: the current session; null when nobody is signed in.   Threads: any.
    static std::shared_ptr<UserSession> GetInstance();

    std::wstring GetId() const;
    std::wstring getAccountId() const;
    std::wstring getAccessToken() const;

private:
    const UserIdentity m_identity;
};

} // namespace orlo
