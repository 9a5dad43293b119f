#include "Users.h"

#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

void requireChange(int changedRows)
{
    if (changedRows == 0)
        throw Refusal(404, "no such access token");
}

Answer addUserCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    addUser(world, {body.filledText("userId"), body.filledText("accountId"), body.filledText("accessToken")});
    return done();
}

/// A token's end: now, by a revocation, or in so many seconds of the platform's clock.
Answer changeTokenCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string token = body.filledText("accessToken");
    if (!body.has("revoked") && !body.has("expiresIn"))
        throw Refusal(400, "\"revoked\" or \"expiresIn\" is needed");
    if (body.has("revoked"))
        setRevoked(world, token, body.flagOr("revoked", false));
    if (body.has("expiresIn"))
        expireTokenIn(world, token, body.integer("expiresIn"));
    return done();
}

Answer setQuotaCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string account = body.filledText("accountId");
    if (body.flagOr("personal", false))
        setPersonal(world, account);
    else
        setQuota(world, account, readNumber(std::to_string(body.integer("projectNumber")), "projectNumber"),
                 readNumber(std::to_string(body.integer("spaceSize")), "spaceSize"));
    return done();
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

void expireTokenIn(World& world, const std::string& accessToken, std::int64_t seconds)
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

void setQuota(World& world, const std::string& accountId, int projectNumber, int spaceSize)
{
    world.tables.run("INSERT OR REPLACE INTO quota (accountId, projectNumber, spaceSize) VALUES (?, ?, ?)", accountId, projectNumber,
                     spaceSize);
}

void setPersonal(World& world, const std::string& accountId)
{
    world.tables.run("DELETE FROM quota WHERE accountId = ?", accountId);
}

void requireRoomForProject(World& world, const std::string& accountId)
{
    const auto limit = world.tables.integer("SELECT projectNumber FROM quota WHERE accountId = ?", accountId);
    const auto owned = world.tables.integer("SELECT COUNT(*) FROM project WHERE owner = ? AND sample = 0", accountId);
    if (limit && *limit >= 0 && owned >= limit)
        throw Refusal(409, "the account's number of projects is used up");
}

void addUserControls(Router& router)
{
    router.addControl("POST", "users", addUserCall);
    router.addControl("POST", "tokens", changeTokenCall);
    router.addControl("POST", "quota", setQuotaCall);
}

} // namespace orlo::platform
