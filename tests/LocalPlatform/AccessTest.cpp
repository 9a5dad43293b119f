#include "PlatformFixture.h"
#include "RawExchange.h"

namespace orlo::platform::test {
namespace {

class Access : public PlatformTest
{};

TEST_F(Access, CallsWithoutAKnownTokenAreRefused)
{
    project("p1");
    const Caller stranger(platform.url(), "wrong-token");
    for (const Caller& caller : {nobody(), stranger}) {
        const Reply reply = caller.get("/projects?scenario=DEFAULT");
        EXPECT_EQ(reply.status, 401);
        EXPECT_THAT(reply.body, IsJson(refusal(401)));
        EXPECT_EQ(caller.post("/v3/projects", R"({"name":"A","status":"Ongoing"})").status, 401);
        EXPECT_EQ(caller.del("/v2/projects/p1").status, 401);
    }
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 200);
}

TEST_F(Access, TheTokenMustComeAsABearerToken)
{
    const std::string head = "GET /projects HTTP/1.1\r\nHost: a\r\nConnection: close\r\nAuthorization: ";
    EXPECT_EQ(exchange(platform.url(), head + "demo-token\r\n\r\n").status(), 401);
    EXPECT_EQ(exchange(platform.url(), head + "Basic demo-token\r\n\r\n").status(), 401);
    EXPECT_EQ(exchange(platform.url(), head + "Bearer demo-token\r\n\r\n").status(), 200);
}

TEST_F(Access, ATokenCanChangeHands)
{
    project("p1");
    platform.addUser({"next", "next-account", "demo-token"});
    EXPECT_THAT(demo().get("/projects?scenario=OWNER").body, IsJson("[]"));
}

TEST_F(Access, UnknownPathsAndMethodsAreRefused)
{
    EXPECT_THAT(demo().get("/nowhere").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().get("/v2/projects/").status, 404);
    EXPECT_EQ(demo().put("/projects", "{}").status, 405);
}

TEST_F(Access, IdsArePercentDecodedOnce)
{
    const auto create = [this](const std::string& id) {
        EXPECT_EQ(demo().post("/v3/projects", R"({"name":"A","status":"Ongoing","id":")" + id + R"("})").status, 200) << id;
    };
    const auto read = [this](const std::string& segment) { return jsonText(demo().get("/v2/projects/" + segment).body, "data.id"); };
    create("项目 一");
    create("a/b");
    create("a+b");
    create("50%25");
    EXPECT_EQ(read("%E9%A1%B9%E7%9B%AE%20%E4%B8%80"), "项目 一");
    EXPECT_EQ(read("%e9%a1%b9%e7%9b%ae%20%e4%b8%80"), "项目 一");
    EXPECT_EQ(read("a%2Fb"), "a/b");
    EXPECT_EQ(read("a+b"), "a+b");
    EXPECT_EQ(read("50%2525"), "50%25");
    const auto rootOf = [this](const std::string& query) {
        return jsonText(demo().get("/folder/byproject?projectId=" + query).body, "0.projectId");
    };
    EXPECT_EQ(rootOf("%E9%A1%B9%E7%9B%AE%20%E4%B8%80"), "项目 一");
    EXPECT_EQ(rootOf("a%2Fb"), "a/b");
    EXPECT_EQ(rootOf("a/b"), "a/b");
    EXPECT_EQ(rootOf("a%2Bb"), "a+b");
    EXPECT_EQ(rootOf("a+b"), "a+b");
}

TEST_F(Access, BadEscapesAndBadUtf8AreRefused)
{
    EXPECT_EQ(demo().get("/v2/projects/%zz").status, 400);
    EXPECT_EQ(demo().get("/v2/projects/%4").status, 400);
    EXPECT_EQ(demo().get("/v2/projects/%").status, 400);
    EXPECT_EQ(demo().get("/v2/projects/%C3%28").status, 400);
    EXPECT_EQ(demo().get("/v2/projects/%00").status, 400);
    EXPECT_EQ(demo().get("/folder/byproject?projectId=%ff").status, 400);
}

TEST_F(Access, AMalformedRequestIsAnsweredAndClosed)
{
    const RawReply reply = exchange(platform.url(), "NONSENSE\r\n\r\n");
    EXPECT_EQ(reply.status(), 400);
    EXPECT_FALSE(reply.reset);
    EXPECT_EQ(demo().get("/projects").status, 200);
}

TEST_F(Access, ALongPathIsHandled)
{
    EXPECT_EQ(demo().get("/v2/projects/" + std::string(7000, 'x')).status, 404);
}

TEST_F(Access, TwoRequestsInOnePacketGetTwoAnswers)
{
    const std::string request = "GET /projects HTTP/1.1\r\nHost: a\r\nAuthorization: Bearer demo-token\r\n";
    const RawReply reply = exchange(platform.url(), request + "\r\n" + request + "Connection: close\r\n\r\n");
    const std::size_t second = reply.bytes.find("HTTP/1.1 200", 1);
    EXPECT_EQ(reply.status(), 200);
    EXPECT_NE(second, std::string::npos);
    EXPECT_EQ(platform.requestCount("GET", "/projects"), 2u);
}

} // namespace
} // namespace orlo::platform::test
