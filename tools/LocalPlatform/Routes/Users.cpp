#include "Users.h"

#include "../Store/Clock.h"
#include "../Store/Store.h"

namespace orlo::platform {

namespace {

void requireChange(int changedRows)
{
    if (changedRows == 0)
        throw Refusal(404, "no such access token");
}

} // namespace

void addUser(World& world, const User& user)
{
    if (user.userId.empty() || user.accountId.empty() || user.accessToken.empty())
        throw Refusal(400, "a user needs an id, an account and a token");
    world.tables.run("INSERT OR REPLACE INTO user (accessToken, userId, accountId) VALUES (?, ?, ?)", user.accessToken, user.userId,
                     user.accountId);
}

void setRevoked(World& world, const std::string& accessToken, bool revoked)
{
    requireChange(world.tables.run("UPDATE user SET revoked = ? WHERE accessToken = ?", revoked ? 1 : 0, accessToken));
}

void expireIn(World& world, const std::string& accessToken, std::int64_t seconds)
{
    requireChange(world.tables.run("UPDATE user SET expires = ? WHERE accessToken = ?", world.clock.seconds() + seconds, accessToken));
}

User userOfToken(World& world, const std::string& accessToken)
{
    const auto userId = world.tables.text("SELECT userId FROM user WHERE accessToken = ?", accessToken);
    const auto accountId = world.tables.text("SELECT accountId FROM user WHERE accessToken = ?", accessToken);
    if (!userId || !accountId)
        throw Refusal(401, "the access token is missing or unknown");
    if (world.tables.integer("SELECT revoked FROM user WHERE accessToken = ?", accessToken) != 0)
        throw Refusal(401, "the access token was revoked");
    const auto expires = world.tables.integer("SELECT expires FROM user WHERE accessToken = ?", accessToken);
    if (expires && world.clock.seconds() >= *expires)
        throw Refusal(401, "the access token has expired");
    return {*userId, *accountId, accessToken};
}

} // namespace orlo::platform
