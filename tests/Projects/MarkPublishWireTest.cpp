#include "support/ProjectObjectTest.h"

#include <OrloProjectManager/Projects/IWorkUnit.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* markPublish = "/datasets/d-1/3/markPublish";
constexpr const char* sent = R"({"description":"说明 \"一\""})";

class MarkPublishWireTest : public WireTest
{
protected:
    bool mark() { return IWorkUnit::MarkPublish("d-1", 3, L"说明 \"一\"", error); }
};

TEST_F(MarkPublishWireTest, givesWhatThePlatformAnswers)
{
    server.expect("POST", markPublish).header("Content-Type", "application/json").body(sent).reply(200, R"({"code":10000,"data":true})");
    EXPECT_TRUE(mark());
    server.expect("POST", markPublish).body(sent).reply(200, R"({"code":10000,"data":false})");
    EXPECT_FALSE(mark());
    expectQuiet();
}

TEST_F(MarkPublishWireTest, theCodeOfTheAnswerDoesNotMatter)
{
    for (const char* body : {R"({"code":7,"data":true})", R"({"data":true})", R"({"code":"x","data":true})"}) {
        server.expect("POST", markPublish).body(sent).reply(200, body);
        EXPECT_TRUE(mark()) << body;
    }
    expectQuiet();
}

TEST_F(MarkPublishWireTest, anAnswerWithoutABooleanIsFalse)
{
    for (const char* body : {R"({"code":10000})", R"({"code":10000,"data":"true"})", R"({"code":10000,"data":1})",
                             R"({"code":10000,"data":null})", R"({"code":10000,"data":[true]})", "true", "[]", "null", ""}) {
        server.expect("POST", markPublish).body(sent).reply(200, body);
        EXPECT_FALSE(mark()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(MarkPublishWireTest, theVersionStandsInThePathAsDigits)
{
    server.expect("POST", "/datasets/d-2/0/markPublish").body(R"({"description":""})").reply(200, R"({"data":true})");
    EXPECT_TRUE(IWorkUnit::MarkPublish("d-2", 0, L"", error));
    server.expect("POST", "/datasets/d-2/-1/markPublish").body(R"({"description":""})").reply(200, R"({"data":true})");
    EXPECT_TRUE(IWorkUnit::MarkPublish("d-2", -1, L"", error));
    server.expect("POST", "/datasets/d-2/2147483647/markPublish").body(R"({"description":""})").reply(200, R"({"data":true})");
    EXPECT_TRUE(IWorkUnit::MarkPublish("d-2", 2147483647, L"", error));
}

TEST_F(MarkPublishWireTest, failsAsEveryRequestingOperationDoesAndLogsNoStatus)
{
    expectFailuresOf({"POST", markPublish, sent, L"", [&](ErrorCode& ec) { return IWorkUnit::MarkPublish("d-1", 3, L"说明 \"一\"", ec); }},
                     server, log);
}

TEST_F(MarkPublishWireTest, aRequestThatSucceedsAtLastGivesItsAnswer)
{
    server.expect("POST", markPublish).body(sent).reply(503);
    server.expect("POST", markPublish).body(sent).reply(200, R"({"data":true})");
    EXPECT_TRUE(mark());
    expectClear(error);
}

TEST_F(MarkPublishWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("POST", markPublish).body(sent).reply(200, R"({"data":true})");
    EXPECT_TRUE(mark());
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::IWorkUnit::MarkPublish 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

} // namespace
} // namespace orlo::test
