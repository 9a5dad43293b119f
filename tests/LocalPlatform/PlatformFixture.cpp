#include "PlatformFixture.h"

#include "support/Waiting.h"

#include <chrono>

namespace orlo::platform::test {

namespace {

Reply toReply(const httplib::Result& result)
{
    if (!result)
        return {0, {}, result.error()};
    return {result->status, result->body, result.error()};
}

constexpr const char* jsonType = "application/json";

} // namespace

httplib::Client Caller::client() const
{
    httplib::Client client(m_url);
    client.set_url_encode(false);
    client.set_read_timeout(30);
    if (!m_token.empty())
        client.set_default_headers({{"Authorization", "Bearer " + m_token}});
    return client;
}

Reply Caller::get(const std::string& target) const
{
    return toReply(client().Get(target));
}

Reply Caller::post(const std::string& target, const std::string& body) const
{
    return toReply(client().Post(target, body, jsonType));
}

Reply Caller::put(const std::string& target, const std::string& body) const
{
    return toReply(client().Put(target, body, jsonType));
}

Reply Caller::patch(const std::string& target, const std::string& body) const
{
    return toReply(client().Patch(target, body, jsonType));
}

Reply Caller::del(const std::string& target) const
{
    return toReply(client().Delete(target));
}

PlatformTest::PlatformTest()
{
    platform.start();
}

Caller PlatformTest::other()
{
    platform.change(addUser, {"second", "second-account", "second-token"});
    return {platform.url(), "second-token"};
}

std::string PlatformTest::rootFolder(const std::string& projectId) const
{
    return jsonText(demo().get("/projects/" + projectId + "/rootfolder").body, "data.id");
}

std::string PlatformTest::teamOf(const std::string& projectId) const
{
    return jsonText(demo().get("/projects/" + projectId + "/teams").body, "data.0.id");
}

bool eventually(const std::function<bool()>& condition)
{
    return orlo::test::waitUntil(condition, std::chrono::seconds(30));
}

std::string refusal(int status)
{
    return R"({"code":)" + std::to_string(status) + R"(00,"message":"<text>","data":null})";
}

} // namespace orlo::platform::test
