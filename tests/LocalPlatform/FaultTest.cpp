#include "PlatformFixture.h"
#include "RawExchange.h"

#include <future>

namespace orlo::platform::test {
namespace {

class Faults : public PlatformTest
{
protected:
    static Fault fault(FaultKind kind, const std::string& path)
    {
        Fault result;
        result.kind = kind;
        result.path = path;
        return result;
    }

    RawReply rawGet(const std::string& target) const
    {
        return exchange(platform.url(), "GET " + target + " HTTP/1.1\r\nHost: a\r\nAuthorization: Bearer demo-token\r\n\r\n");
    }
};

TEST_F(Faults, AStatusStrikesTheNextCallsAndIsCounted)
{
    Fault unavailable = fault(FaultKind::Status, "/projects");
    unavailable.calls = 2;
    const int id = platform.faults().add(unavailable);
    EXPECT_EQ(platform.faults().count(id), 0);
    const Reply first = demo().get("/projects?scenario=OWNER");
    EXPECT_EQ(first.status, 503);
    EXPECT_THAT(first.body, IsJson(refusal(503)));
    EXPECT_EQ(demo().get("/projects").status, 503);
    EXPECT_EQ(demo().get("/projects").status, 200);
    EXPECT_EQ(platform.faults().count(id), 2);
    EXPECT_EQ(platform.requests().count("GET", "/projects"), 3u);
}

TEST_F(Faults, AStatusCarriesItsOwnBody)
{
    Fault early = fault(FaultKind::Status, "/resource/limit");
    early.status = 201;
    early.body = R"({"code":10000,"data":{}})";
    platform.faults().add(early);
    const Reply reply = demo().get("/resource/limit");
    EXPECT_EQ(reply.status, 201);
    EXPECT_EQ(reply.body, R"({"code":10000,"data":{}})");
}

TEST_F(Faults, OnlyTheMethodAndPathThatWereNamedAreStruck)
{
    Fault all = fault(FaultKind::Status, "/v2/projects/");
    all.method = "DELETE";
    all.prefix = true;
    all.calls = -1;
    const int id = platform.faults().add(all);
    project("项目");
    EXPECT_EQ(demo().get("/v2/projects/%E9%A1%B9%E7%9B%AE").status, 200);
    EXPECT_EQ(demo().del("/v2/projects/%E9%A1%B9%E7%9B%AE").status, 503);
    EXPECT_EQ(demo().del("/v2/projects/x").status, 503);
    EXPECT_EQ(platform.faults().count(id), 2);
    platform.faults().clear();
    EXPECT_EQ(demo().del("/v2/projects/%E9%A1%B9%E7%9B%AE").status, 200);
    EXPECT_EQ(platform.faults().count(id), 0);
}

TEST_F(Faults, AStruckCallDoesNoWorkUnlessToldTo)
{
    Fault refusing = fault(FaultKind::Status, "/v3/projects");
    platform.faults().add(refusing);
    EXPECT_EQ(demo().post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, 503);
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 404);

    refusing.carryOut = true;
    platform.faults().add(refusing);
    EXPECT_EQ(demo().post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, 503);
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 200);
}

TEST_F(Faults, AResetComesBeforeTheFirstByte)
{
    const int id = platform.faults().add(fault(FaultKind::ResetBeforeAnswer, "/projects"));
    const RawReply reply = rawGet("/projects");
    EXPECT_TRUE(reply.reset);
    EXPECT_EQ(reply.bytes, "");
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(Faults, ALostAnswerLeavesTheWorkDone)
{
    Fault lost = fault(FaultKind::ResetBeforeAnswer, "/v3/projects");
    lost.carryOut = true;
    platform.faults().add(lost);
    EXPECT_EQ(demo().post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, 0);
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 200);
}

TEST_F(Faults, AResetComesAfterAsManyBytesAsAsked)
{
    Fault late = fault(FaultKind::ResetAfterBytes, "/projects");
    late.bytes = 20;
    const int id = platform.faults().add(late);
    const RawReply reply = rawGet("/projects");
    EXPECT_TRUE(reply.reset);
    EXPECT_EQ(reply.bytes, "HTTP/1.1 200 OK\r\nCon");
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(Faults, AResetBehindALongAnswerLosesNothingBeforeIt)
{
    project("p1");
    platform.change(addFont, {"p1", "big", std::string(8 * 1024 * 1024, 'x'), "ttf", "Project", "demo", "font1"});
    const std::string body = demo().get("/style-family/font/project/download/uri?fontId=font1&projectId=p1").body;
    const std::string target = jsonText(body, "data.fileUrlWithSAS").substr(platform.url().size());
    Fault late = fault(FaultKind::ResetAfterBytes, "/blobs/");
    late.prefix = true;
    late.bytes = 5 * 1024 * 1024;
    platform.faults().add(late);
    const RawReply reply = exchange(platform.url(), "GET " + target + " HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_TRUE(reply.reset);
    EXPECT_EQ(reply.bytes.size(), 5u * 1024 * 1024);
}

TEST_F(Faults, ACutBodyPromisesMoreThanItSends)
{
    project("p1");
    Fault cut = fault(FaultKind::CutBody, "/v2/projects/p1");
    cut.bytes = 10;
    const int id = platform.faults().add(cut);
    const RawReply reply = rawGet("/v2/projects/p1");
    EXPECT_FALSE(reply.reset);
    EXPECT_EQ(reply.status(), 200);
    EXPECT_EQ(reply.body(), R"({"code":10)");
    const std::size_t length = reply.bytes.find("Content-Length: ");
    ASSERT_NE(length, std::string::npos);
    EXPECT_GT(std::stoi(reply.bytes.substr(length + 16)), 100);
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(Faults, ABodyCutToNothingStillHasItsHead)
{
    platform.faults().add(fault(FaultKind::CutBody, "/projects"));
    const RawReply reply = rawGet("/projects");
    EXPECT_EQ(reply.status(), 200);
    EXPECT_NE(reply.bytes.find("Content-Length: 2\r\n"), std::string::npos);
    EXPECT_EQ(reply.body(), "");
}

TEST_F(Faults, AnAnswerShorterThanTheFaultEndsTheConnectionAllTheSame)
{
    Fault late = fault(FaultKind::ResetAfterBytes, "/projects");
    late.bytes = 100000;
    platform.faults().add(late);
    const RawReply reply = rawGet("/projects");
    EXPECT_EQ(reply.body(), "[]");
    EXPECT_TRUE(reply.reset);
}

TEST_F(Faults, GarbageIsNoJson)
{
    const int id = platform.faults().add(fault(FaultKind::Garbage, "/projects"));
    const Reply reply = demo().get("/projects");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, R"({"code":10000,"data":[<<garbage)");
    EXPECT_EQ(platform.faults().count(id), 1);
}

TEST_F(Faults, ADelayLetsTheNextFaultStrikeTheSameCall)
{
    Fault slow = fault(FaultKind::Delay, "/projects");
    slow.delayMilliseconds = 60;
    const int delay = platform.faults().add(slow);
    const int status = platform.faults().add(fault(FaultKind::Status, "/projects"));
    EXPECT_EQ(demo().get("/projects").status, 503);
    EXPECT_EQ(platform.faults().count(delay), 1);
    EXPECT_EQ(platform.faults().count(status), 1);
}

TEST_F(Faults, AStallHoldsTheBodyBackForAWhile)
{
    Fault stall = fault(FaultKind::Stall, "/projects");
    stall.bytes = 1;
    stall.delayMilliseconds = 30;
    const int id = platform.faults().add(stall);
    EXPECT_EQ(demo().get("/projects").body, "[]");
    EXPECT_EQ(platform.faults().count(id), 1);
    EXPECT_EQ(demo().get("/projects").body, "[]");
}

TEST_F(Faults, ADelayedCallHoldsUpNeitherTheOthersNorTheStop)
{
    Fault slow = fault(FaultKind::Delay, "/projects");
    slow.delayMilliseconds = 600000;
    const int id = platform.faults().add(slow);
    auto waiting = std::async(std::launch::async, [this] { return demo().get("/projects").status; });
    EXPECT_TRUE(eventually([&] { return platform.faults().count(id) == 1; }));
    EXPECT_EQ(demo().get("/resource/limit").status, 200);
    platform.stop();
    EXPECT_EQ(waiting.get(), 0);
}

TEST_F(Faults, FaultsThatCannotBeCarriedOutAreRefused)
{
    Fault wrong = fault(FaultKind::Status, "/projects");
    wrong.status = 99;
    EXPECT_THROW(platform.faults().add(wrong), std::invalid_argument);
    EXPECT_THROW(platform.faults().add(fault(FaultKind::Status, "projects")), std::invalid_argument);
    Fault negative = fault(FaultKind::Delay, "/projects");
    negative.delayMilliseconds = -1;
    EXPECT_THROW(platform.faults().add(negative), std::invalid_argument);
    Fault ofRequest = fault(FaultKind::Stall, "/blobs/");
    ofRequest.ofRequest = true;
    EXPECT_THROW(platform.faults().add(ofRequest), std::invalid_argument);
    ofRequest.method = "PUT";
    EXPECT_GT(platform.faults().add(ofRequest), 0);
    ofRequest.kind = FaultKind::Status;
    EXPECT_THROW(platform.faults().add(ofRequest), std::invalid_argument);
    ofRequest.kind = FaultKind::CutBody;
    ofRequest.path = "/file/new";
    EXPECT_THROW(platform.faults().add(ofRequest), std::invalid_argument);
}

} // namespace
} // namespace orlo::platform::test
