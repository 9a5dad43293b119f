#include "support/ProjectObjectTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* target = "/v2/versions/byids?mvd=base";

class VersionsByIdsWireTest : public WireTest
{
protected:
    bool get(const std::vector<int>& ids, const std::string& mvd, ErrorCode& ec)
    {
        return http::SendNormalRequestWithRetry(&OrloWebService::GetDatasetVersionAccordingMVD, false, ec, out, ids, mvd);
    }

    std::vector<http::ORLOHTTPPayloadDatasetVersion> out;
};

TEST_F(VersionsByIdsWireTest, sendsTheIdsAndReadsTheVersionsInOrder)
{
    server.expect("POST", target)
        .header("Content-Type", "application/json")
        .body("[12,3,-4]")
        .reply(200, R"({"code":10000,"data":[{"id":3,"version":1,"dataSetId":"d-1"},{"data":{"id":12,"refInfo":"r"}},7]})");
    EXPECT_TRUE(get({12, 3, -4}, "base", error));
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0].id, 3);
    EXPECT_EQ(out[0].version, 1);
    EXPECT_EQ(out[0].dataSetId, "d-1");
    EXPECT_EQ(out[0].refInfo, nullptr);
    EXPECT_EQ(out[1].id, 12);
    ASSERT_NE(out[1].refInfo, nullptr);
    EXPECT_EQ(*out[1].refInfo, "r");
    EXPECT_EQ(out[2].id, 0);
    expectQuiet();
}

TEST_F(VersionsByIdsWireTest, sendsAnEmptyListToo)
{
    server.expect("POST", target).body("[]").reply(200, R"({"data":[]})");
    EXPECT_TRUE(get({}, "base", error));
    EXPECT_TRUE(out.empty());
}

TEST_F(VersionsByIdsWireTest, encodesTheCondition)
{
    server.expect("POST", "/v2/versions/byids?mvd=a%20%26%E6%A8%A1").body("[1]").reply(200, R"({"data":[{"id":1}]})");
    EXPECT_TRUE(get({1}, "a &\xE6\xA8\xA1", error));
    EXPECT_EQ(out.size(), 1u);
}

TEST_F(VersionsByIdsWireTest, theCodeOfTheAnswerDoesNotMatter)
{
    server.expect("POST", target).body("[1]").reply(200, R"({"code":7,"data":[{"id":1}]})");
    EXPECT_TRUE(get({1}, "base", error));
    EXPECT_EQ(out.size(), 1u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(VersionsByIdsWireTest, anAnswerWithoutDataFailsInSilence)
{
    for (const char* body : {R"({"code":10000})", R"([{"id":1}])", "null", ""}) {
        server.expect("POST", target).body("[1]").reply(200, body);
        EXPECT_FALSE(get({1}, "base", error)) << body;
        EXPECT_TRUE(out.empty());
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(VersionsByIdsWireTest, anEmptyConditionIsRefusedAndNotRetried)
{
    EXPECT_FALSE(get({1}, "", error));
    expectGenericError(error, 3892314113, L"GenericError", L"mvd is invalid");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetDatasetVersionAccordingMVD()未正常执行：MVDCondition为空"});
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(VersionsByIdsWireTest, failsAsEveryRetriedCallDoes)
{
    expectFailuresOf({"POST", target, "[1,2]", L"OrloWebService::GetDatasetVersionByMVD - code:",
                      [&](ErrorCode& ec) {
                          return get({1, 2}, "base", ec);
                      }},
                     server, log);
    EXPECT_TRUE(out.empty());
}

} // namespace
} // namespace orlo::test
