#include "PlatformFixture.h"
#include "RawExchange.h"

#include <sstream>

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
    platform.change(addUser, {"next", "next-account", "demo-token"});
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

TEST_F(Access, AMalformedRequestIsAnsweredInWordsAndClosed)
{
    for (const char* request : {"NONSENSE\r\n\r\n", "BREW /projects HTTP/1.1\r\n\r\n", "GET /projects HTTP/3\r\n\r\n"}) {
        const RawReply reply = exchange(platform.url(), request);
        EXPECT_EQ(reply.status(), 400) << request;
        EXPECT_THAT(reply.body(), IsJson(refusal(400))) << request;
        EXPECT_FALSE(reply.reset) << request;
    }
    EXPECT_EQ(demo().get("/projects").status, 200);
}

// A question mark is an ordinary character of a query.
TEST_F(Access, AQueryMayHoldQuestionMarks)
{
    EXPECT_EQ(platform.change(addProject, {"Tower", "demo-account", "p?1??"}), "p?1??");
    EXPECT_EQ(jsonText(demo().get("/folder/byproject?projectId=p?1??").body, "0.projectId"), "p?1??");
    EXPECT_EQ(jsonText(demo().get("/folder/byproject?projectId=p%3F1?%3F").body, "0.projectId"), "p?1??");
    EXPECT_EQ(jsonText(demo().get("/v2/projects/p%3F1%3F%3F?a=?b").body, "data.id"), "p?1??");
    EXPECT_EQ(platform.requests().count("GET", "/folder/byproject"), 2u);
}

TEST_F(Access, QuestionMarksInTwoRequestsOfOnePacketAreTheirOwn)
{
    const std::string request = "GET /resource/limit?a=?b?c HTTP/1.1\r\nX: ???\r\nAuthorization: Bearer demo-token\r\n";
    const RawReply reply = exchange(platform.url(), request + "\r\n" + request + "Connection: close\r\n\r\n");
    EXPECT_EQ(reply.status(), 200);
    EXPECT_NE(reply.bytes.find("HTTP/1.1 200", 1), std::string::npos);
    EXPECT_EQ(platform.requests().count("GET", "/resource/limit"), 2u);
}

// Nobody could tell where the body ends; waiting for more would hold the client up.
TEST_F(Access, ABodyWithoutALengthIsRefusedAtOnce)
{
    for (const char* line : {"POST /v3/projects", "PUT /file/new?fileName=a&filepath=b", "PATCH /_control/transfers", "PUT /blobs/x",
                             "POST /_control/users", "POST /nowhere"}) {
        for (const char* header : {"", "Content-Length: x\r\n", "Transfer-Encoding: gzip\r\n"}) {
            const RawReply reply =
                exchange(platform.url(), line + std::string(" HTTP/1.1\r\nAuthorization: Bearer demo-token\r\n") + header + "\r\n{}");
            EXPECT_EQ(reply.status(), 411) << line << " " << header;
            EXPECT_THAT(reply.body(), IsJson(R"({"code":41100,"message":"the request needs a Content-Length","data":null})")) << line;
            EXPECT_FALSE(reply.reset) << line;
        }
    }
    EXPECT_EQ(demo().get("/projects").status, 200);
}

TEST_F(Access, ACallWithoutABodyNeedsNoLength)
{
    project("p1");
    const std::string rest = " HTTP/1.1\r\nConnection: close\r\nAuthorization: Bearer demo-token\r\n\r\n";
    EXPECT_EQ(exchange(platform.url(), "GET /v2/projects/p1" + rest).status(), 200);
    EXPECT_EQ(exchange(platform.url(), "DELETE /v2/projects/p1" + rest).status(), 200);
}

TEST_F(Access, AChunkedBodyNeedsNoLength)
{
    const std::string body = R"({"name":"A","status":"Ongoing","id":"p1"})";
    std::ostringstream size;
    size << std::hex << body.size();
    const RawReply reply =
        exchange(platform.url(), "POST /v3/projects HTTP/1.1\r\nConnection: close\r\nAuthorization: Bearer demo-token\r\n"
                                 "Transfer-Encoding: chunked\r\n\r\n" +
                                     size.str() + "\r\n" + body + "\r\n0\r\n\r\n");
    EXPECT_EQ(reply.status(), 200);
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 200);
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
    EXPECT_EQ(platform.requests().count("GET", "/projects"), 2u);
}

} // namespace
} // namespace orlo::platform::test
