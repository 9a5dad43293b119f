#include "Users.h"

#include "Store.h"

namespace orlo::platform {

void addUser(World& world, const User& user)
{
    if (user.userId.empty() || user.accountId.empty() || user.accessToken.empty())
        throw Refusal(400, "a user needs an id, an account and a token");
    world.tables.run("INSERT OR REPLACE INTO user (accessToken, userId, accountId) VALUES (?, ?, ?)", user.accessToken, user.userId,
                     user.accountId);
}

User userOfToken(World& world, const std::string& accessToken)
{
    const auto userId = world.tables.text("SELECT userId FROM user WHERE accessToken = ?", accessToken);
    const auto accountId = world.tables.text("SELECT accountId FROM user WHERE accessToken = ?", accessToken);
    if (!userId || !accountId)
        throw Refusal(401, "the access token is missing or unknown");
    return {*userId, *accountId, accessToken};
}

} // namespace orlo::platform
