#pragma once

#include <OrloAuth/Export.h>

#include <functional>
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

/// Gives a new access token for the user who is signed in; an empty text, or the token that he has, where there is none to be had.
using TokenSource = std::function<std::wstring(const UserIdentity& signedIn)>;

/// The signed-in user. A session that was handed out stays as it is, whoever signs in later.
class ORLO_AUTH_API UserSession
{
public:
    explicit UserSession(UserIdentity identity);
    ~UserSession();

    /// Replaces whoever was signed in. The access token is masked in every later log line.   Threads: any.
    static void SignIn(const UserIdentity& identity);
    static void SignOut();

    /// For tokens that expire: when the platform answers a request with the status 401, the source is asked once, by one thread while the
    /// others that were refused wait, and the call is repeated once with the new token, which is that of the session from then on. What the
    /// source tells for somebody who has signed out meanwhile is dropped. It is called on a thread of its own; who waits for it can be
    /// cancelled, and waits a minute at the most. It must not wait for an operation that needs the token. What it throws counts as no
    /// token. Addresses that are signed carry no token. Null: a 401 is a failure like others, which is the default.   Threads: any.
    static void SetTokenSource(TokenSource source);

    /// Returns: the current session; null when nobody is signed in.   Threads: any.
    static std::shared_ptr<UserSession> GetInstance();

    std::wstring GetId() const;
    std::wstring getAccountId() const;
    std::wstring getAccessToken() const;

    bool isOfSameUser(const UserSession& other) const;
    /// Whether one came out of the other by nothing but new tokens.
    bool isOfSameSignIn(const UserSession& other) const { return m_signIn == other.m_signIn; }

    /// Puts a session with a new token in the place of this one, if this is still the current one and the token is another.
    void continueWith(const std::wstring& token) const;

private:
    const UserIdentity m_identity;
    std::shared_ptr<const int> m_signIn; ///< one for each
};

} // namespace orlo
