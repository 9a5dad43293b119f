#pragma once

#include "JsonMatch.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <LocalPlatform/LocalPlatform.h>
#include <functional>
#include <string>

namespace orlo::platform::test {

/// Status and body of an answer; status 0 when the exchange failed.
struct Reply
{
    int status = 0;
    std::string body;
    httplib::Error error = httplib::Error::Success;
};

/// Talks to a platform as one user. Targets are sent as they are.
class Caller
{
public:
    Caller(const std::string& url, std::string token) : m_url(url), m_token(std::move(token)) {}

    Reply get(const std::string& target) const;
    Reply post(const std::string& target, const std::string& body) const;
    Reply put(const std::string& target, const std::string& body) const;
    Reply patch(const std::string& target, const std::string& body) const;
    Reply del(const std::string& target) const;

private:
    httplib::Client client() const;

    std::string m_url;
    std::string m_token;
};

/// A running platform in memory with the user "demo".
class PlatformTest : public testing::Test
{
protected:
    PlatformTest();

    Caller demo() const { return {platform.url(), "demo-token"}; }
    Caller nobody() const { return {platform.url(), {}}; }
    Caller other();
    /// A project of demo's.
    std::string project(const std::string& id) { return platform.change(addProject, {"Tower", "demo-account", id}); }
    std::string rootFolder(const std::string& projectId) const;
    std::string teamOf(const std::string& projectId) const;

    LocalPlatform platform{Options{{}, 0, true}};
};

/// True once the condition holds; false after 30 seconds.
bool eventually(const std::function<bool()>& condition);

/// A refusal's envelope with any message.
std::string refusal(int status);

} // namespace orlo::platform::test
