#include "ScriptedServer.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace orlo::test {
namespace {

// A client which sends exactly these bytes and gives back the answer up to the end of its body.
class Client
{
public:
    explicit Client(const ScriptedServer& server) : m_connection(connectTo(server.port())) {}

    std::string send(const std::string& request)
    {
        m_connection->write(request);
        std::string answer;
        while (!isWhole(answer) && m_connection->read(answer)) {
        }
        return answer;
    }

private:
    static bool isWhole(const std::string& answer)
    {
        const std::size_t head = answer.find("\r\n\r\n");
        const std::size_t length = answer.find("Content-Length: ");
        if (head == std::string::npos)
            return false;
        return length == std::string::npos || answer.size() >= head + 4 + std::stoul(answer.substr(length + 16));
    }

    std::unique_ptr<Connection> m_connection;
};

std::string request(const std::string& line, const std::string& body = {}, const std::string& headers = {})
{
    return line + " HTTP/1.1\r\nHost: x\r\n" + headers + (body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n") +
           "\r\n" + body;
}

// verify() may report several problems at once, and only the last of them interests here.
std::string problemsOf(ScriptedServer& server)
{
    testing::TestPartResultArray results;
    {
        testing::ScopedFakeTestPartResultReporter reporter(testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
        server.verify();
    }
    std::string all;
    for (int i = 0; i < results.size(); ++i)
        all += std::string(results.GetTestPartResult(i).message()) + "|";
    return all;
}

TEST(ScriptedServer, playsItsScriptInOrder)
{
    ScriptedServer server;
    server.expect("GET", "/projects?scenario=DEFAULT").reply(200, "[]");
    server.expect("POST", "/v2/dataSets").body("{\"name\":\"a\"}").reply(500, "broken", "text/plain");
    Client client(server);
    EXPECT_EQ(client.send(request("GET /projects?scenario=DEFAULT")),
              "HTTP/1.1 200 Scripted\r\nContent-Type: application/json\r\nContent-Length: 2\r\n\r\n[]");
    EXPECT_EQ(client.send(request("POST /v2/dataSets", "{\"name\":\"a\"}")),
              "HTTP/1.1 500 Scripted\r\nContent-Type: text/plain\r\nContent-Length: 6\r\n\r\nbroken");
    EXPECT_EQ(problemsOf(server), "");
}

TEST(ScriptedServer, recordsARequestAsItStandsOnTheWire)
{
    ScriptedServer server;
    server.expect("PUT", "/a%20b//c/../d?q=%E8%AE%BE+x&q=&&e").anyBody().reply(200);
    const std::string body("\x00\xFF\x1F\x8B", 4);
    Client(server).send(request("PUT /a%20b//c/../d?q=%E8%AE%BE+x&q=&&e", body,
                                "B-Header: 2\r\na-header:  1 \r\nContent-Type:\r\nContent-Encoding: gzip\r\n"));
    const Request got = server.requests().at(0);
    EXPECT_EQ(got.target, "/a%20b//c/../d?q=%E8%AE%BE+x&q=&&e");
    EXPECT_EQ(got.body, body);
    EXPECT_EQ(got.headers, (Headers{{"Host", "x"},
                                    {"B-Header", "2"},
                                    {"a-header", "1"},
                                    {"Content-Type", ""},
                                    {"Content-Encoding", "gzip"},
                                    {"Content-Length", "4"}}));
    EXPECT_EQ(got.header("b-hEADER"), "2");
    EXPECT_TRUE(got.hasHeader("content-type"));
    EXPECT_FALSE(got.hasHeader("Authorization"));
}

TEST(ScriptedServer, aRequestThatWasNotExpectedFailsTheTest)
{
    ScriptedServer server;
    EXPECT_EQ(Client(server).send(request("GET /other")).substr(0, 12), "HTTP/1.1 418");
    EXPECT_NONFATAL_FAILURE(server.verify(), "expected no request, got GET /other");
    EXPECT_EQ(problemsOf(server), "") << "a problem is told once";
}

TEST(ScriptedServer, aRequestThatDoesNotComeFailsTheTest)
{
    ScriptedServer server;
    server.expect("GET", "/never");
    EXPECT_NONFATAL_FAILURE(server.verify(), "expected but did not come: GET /never");
}

TEST(ScriptedServer, verifiesAtItsEnd)
{
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedServer server;
            server.expect("GET", "/never");
        },
        "expected but did not come: GET /never");
}

TEST(ScriptedServer, anotherOrderFailsTheTest)
{
    ScriptedServer server;
    server.expect("GET", "/first");
    server.expect("GET", "/second");
    Client client(server);
    client.send(request("GET /second"));
    client.send(request("GET /first"));
    client.send(request("GET /second"));
    EXPECT_NONFATAL_FAILURE(server.verify(), "expected GET /first, got GET /second");
}

TEST(ScriptedServer, anotherMethodFailsTheTest)
{
    ScriptedServer server;
    server.expect("PUT", "/a");
    Client(server).send(request("POST /a"));
    const std::string problems = problemsOf(server);
    EXPECT_NE(problems.find("expected PUT /a, got POST /a"), std::string::npos);
    EXPECT_NE(problems.find("expected but did not come: PUT /a"), std::string::npos);
}

TEST(ScriptedServer, aTargetThatIsOnlyAHeadOfTheExpectedOneFailsTheTest)
{
    ScriptedServer server;
    server.expect("GET", "/a?b=c");
    Client(server).send(request("GET /a"));
    EXPECT_NE(problemsOf(server).find("expected GET /a?b=c, got GET /a"), std::string::npos);
}

TEST(ScriptedServer, anotherBodyFailsTheTest)
{
    for (const char* method : {"POST", "PUT", "DELETE", "GET"}) {
        ScriptedServer server;
        server.expect(method, "/a").body("{\"x\":1}").reply(200);
        Client(server).send(request(std::string(method) + " /a", "{\"x\":1 }"));
        EXPECT_NONFATAL_FAILURE(server.verify(), "expected the body");
    }
}

TEST(ScriptedServer, aBodyWhereNoneWasToldFailsTheTest)
{
    ScriptedServer server;
    server.expect("DELETE", "/a");
    Client(server).send(request("DELETE /a", "null"));
    EXPECT_NONFATAL_FAILURE(server.verify(), "got\n  null");
}

TEST(ScriptedServer, aMissingOrDifferentOrForbiddenHeaderFailsTheTest)
{
    ScriptedServer server;
    server.expect("GET", "/a").header("Authorization", "Bearer t").header("Accept", "x").withoutHeader("Host");
    Client(server).send(request("GET /a", "", "Accept: y\r\n"));
    const std::string problems = problemsOf(server);
    EXPECT_NE(problems.find("expected the header Authorization: Bearer t, got none"), std::string::npos);
    EXPECT_NE(problems.find("expected the header Accept: x, got y"), std::string::npos);
    EXPECT_NE(problems.find("expected no header Host, got x"), std::string::npos);
}

TEST(ScriptedServer, aRequestThatIsCutShortFailsTheTest)
{
    ScriptedServer server;
    {
        const auto connection = connectTo(server.port());
        connection->write("POST /a HTTP/1.1\r\nContent-Length: 10\r\n\r\nabc");
        connection->close();
    }
    EXPECT_TRUE(server.waitForProblem());
    EXPECT_NONFATAL_FAILURE(server.verify(), "cut short");
}

TEST(ScriptedServer, takesItsRequestsInAnyOrderWhereTold)
{
    ScriptedServer server;
    server.anyOrder();
    server.expect("GET", "/first").reply(200, "1");
    server.expect("GET", "/second").reply(200, "2");
    Client client(server);
    EXPECT_EQ(client.send(request("GET /second")).back(), '2');
    EXPECT_EQ(client.send(request("GET /first")).back(), '1');
    EXPECT_EQ(problemsOf(server), "");
    client.send(request("GET /first"));
    EXPECT_NONFATAL_FAILURE(server.verify(), "expected no request, got GET /first");
}

TEST(ScriptedServer, repeatsAnAnswerAsOftenAsTold)
{
    ScriptedServer server;
    server.expect("GET", "/a").times(2).reply(503);
    Client client(server);
    client.send(request("GET /a"));
    client.send(request("GET /a"));
    EXPECT_EQ(problemsOf(server), "");
    EXPECT_EQ(server.count("GET", "/a"), 2u);
}

TEST(ScriptedServer, answersOutsideTheScriptAnyNumberOfTimes)
{
    ScriptedServer server;
    server.always("POST", "/poll").reply(200, "again");
    server.expect("GET", "/a").reply(200, "a");
    Client client(server);
    client.send(request("POST /poll", "1"));
    client.send(request("POST /poll", "2"));
    client.send(request("GET /a"));
    client.send(request("POST /poll", "3"));
    EXPECT_EQ(problemsOf(server), "");
    EXPECT_EQ(server.count("POST", "/poll"), 3u);
    EXPECT_EQ(server.requestCount(), 4u);
    EXPECT_EQ(server.connectionCount(), 1u);
}

TEST(ScriptedServer, computesAnAnswerFromTheRequest)
{
    ScriptedServer server;
    server.always("POST", "/echo").replyWith([&](const Request& got) {
        Reply reply;
        reply.body = got.body + std::to_string(server.requestCount());
        return reply;
    });
    EXPECT_EQ(Client(server).send(request("POST /echo", "abc")),
              "HTTP/1.1 200 Scripted\r\nContent-Type: application/json\r\nContent-Length: 4\r\n\r\nabc1");
}

TEST(ScriptedServer, answersWithoutContentTypeAndWithHeadersOfItsOwn)
{
    ScriptedServer server;
    Reply reply;
    reply.contentType = "";
    reply.headers = {{"X-One", "1"}, {"Retry-After", "5"}};
    reply.body = std::string("\0\1", 2);
    server.expect("GET", "/a").reply(reply);
    EXPECT_EQ(Client(server).send(request("GET /a")),
              "HTTP/1.1 200 Scripted\r\nX-One: 1\r\nRetry-After: 5\r\nContent-Length: 2\r\n\r\n" + std::string("\0\1", 2));
}

TEST(ScriptedServer, aNoContentAnswerHasNoBody)
{
    ScriptedServer server;
    server.expect("GET", "/a").reply(204, "left out", "");
    EXPECT_EQ(Client(server).send(request("GET /a")), "HTTP/1.1 204 Scripted\r\n\r\n");
}

TEST(ScriptedServer, resetsAConnectionInsteadOfAnswering)
{
    ScriptedServer server;
    server.expect("GET", "/a").reset();
    server.expect("GET", "/a").reply(200, "x");
    const auto connection = connectTo(server.port());
    connection->write(request("GET /a"));
    std::string got;
    EXPECT_FALSE(connection->read(got));
    EXPECT_TRUE(connection->wasReset());
    EXPECT_EQ(Client(server).send(request("GET /a")).back(), 'x');
}

TEST(ScriptedServer, waitsForRequestsWithABound)
{
    ScriptedServer server;
    server.always("GET", "/a");
    EXPECT_FALSE(server.waitForRequests(1, std::chrono::milliseconds(1)));
    Client(server).send(request("GET /a"));
    EXPECT_TRUE(server.waitForRequests(1));
}

} // namespace
} // namespace orlo::test
