#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace orlo::test {
namespace {

constexpr const wchar_t* notSuccess = L"E [ORLOSDK]OrloWebService::GetResourceLimit not success.";

class ResourceStatusWireTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();
    ResourceStatus status;

    void limitsAre(const std::string& body) { server.expect("GET", "/resource/limit").reply(200, body); }
    void ownedAre(const std::string& body) { server.expect("GET", "/projects?scenario=OWNER").reply(200, body); }

    /// Fails with these log lines and no error; no further request follows.
    void expectRefused(const std::string& body, const Lines& lines)
    {
        limitsAre(body);
        log.clear();
        EXPECT_FALSE(manager.GetResourceStatus(status, error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), lines) << body;
        expectUntouched();
    }

    void expectUntouched() const
    {
        EXPECT_EQ(status.projectCount, 0);
        EXPECT_EQ(status.projectNumber, 0);
        EXPECT_EQ(status.spaceUsed, 0);
        EXPECT_EQ(status.spaceSize, 0);
    }
};

TEST(ResourceStatusRecord, isAllZeroAtFirst)
{
    const ResourceStatus status;
    EXPECT_EQ(status.projectCount, 0);
    EXPECT_EQ(status.projectNumber, 0);
    EXPECT_EQ(status.spaceUsed, 0);
    EXPECT_EQ(status.spaceSize, 0);
    static_assert(std::is_same_v<decltype(status.spaceUsed), std::int64_t>);
    static_assert(std::is_same_v<decltype(status.spaceSize), int>);
}

TEST_F(ResourceStatusWireTest, countsTheOwnedProjectsAndAddsTheirSizes)
{
    limitsAre(R"({"code":10000,"data":{"projectNumber":20,"spaceSize":1024}})");
    ownedAre(R"([{"id":"a","size":5000000000},{"id":"b"},{"id":"c","size":7}])");
    EXPECT_TRUE(manager.GetResourceStatus(status, error));
    EXPECT_EQ(status.projectCount, 3);
    EXPECT_EQ(status.projectNumber, 20);
    EXPECT_EQ(status.spaceUsed, 5000000007);
    EXPECT_EQ(status.spaceSize, 1024);
    expectQuiet();
}

TEST_F(ResourceStatusWireTest, theShortFormGivesTheSame)
{
    limitsAre(R"({"data":{"projectNumber":20,"spaceSize":1024}})");
    ownedAre(R"([{"id":"a","size":5}])");
    EXPECT_TRUE(manager.GetResourceStatus(status));
    EXPECT_EQ(status.projectCount, 1);
    EXPECT_EQ(status.spaceUsed, 5);
}

TEST_F(ResourceStatusWireTest, aUserWithoutProjectsUsesNothing)
{
    limitsAre(R"({"data":{"projectNumber":20,"spaceSize":1024}})");
    ownedAre("[]");
    status.projectCount = 9;
    status.spaceUsed = 9;
    EXPECT_TRUE(manager.GetResourceStatus(status, error));
    EXPECT_EQ(status.projectCount, 0);
    EXPECT_EQ(status.spaceUsed, 0);
}

TEST_F(ResourceStatusWireTest, aLimitThatIsNoIntegerIsMinusOne)
{
    limitsAre(R"({"data":{"projectNumber":"20","spaceSize":1.5}})");
    ownedAre("[]");
    EXPECT_TRUE(manager.GetResourceStatus(status, error));
    EXPECT_EQ(status.projectNumber, -1);
    EXPECT_EQ(status.spaceSize, -1);
    expectQuiet();
}

TEST_F(ResourceStatusWireTest, sizesThatDoNotFitTogetherStopAtTheLimit)
{
    limitsAre(R"({"data":{"projectNumber":1,"spaceSize":1}})");
    ownedAre(R"([{"size":9223372036854775807},{"size":9223372036854775807}])");
    EXPECT_TRUE(manager.GetResourceStatus(status, error));
    EXPECT_EQ(status.spaceUsed, std::numeric_limits<std::int64_t>::max());
}

TEST_F(ResourceStatusWireTest, aPersonalAccountHasNoQuotaAndAnInfoLineSaysSo)
{
    expectRefused(R"({"code":10000,"data":null})", {L"I [ORLOSDK]个人账号, 没有资源额度的概念。", notSuccess});
}

TEST_F(ResourceStatusWireTest, anAnswerWithoutAnObjectDataIsLogged)
{
    for (const char* body : {"{}", R"({"data":[]})", R"({"data":"x"})", R"({"data":7})", "[]", "7", "null", ""})
        expectRefused(body, {L"E [ORLOSDK]jInfos is null.", notSuccess});
}

TEST_F(ResourceStatusWireTest, aMissingLimitOfProjectsIsLogged)
{
    expectRefused(R"({"data":{"spaceSize":1024}})", {L"E [ORLOSDK]异常，没有获取到projectNumber字段", notSuccess});
    expectRefused(R"({"data":{}})", {L"E [ORLOSDK]异常，没有获取到projectNumber字段", notSuccess});
}

TEST_F(ResourceStatusWireTest, aMissingLimitOfSpaceIsLogged)
{
    expectRefused(R"({"data":{"projectNumber":20}})", {L"E [ORLOSDK]异常，没有获取到spaceSize", notSuccess});
}

TEST_F(ResourceStatusWireTest, failsAsEveryRetriedOperationDoesAndSaysSo)
{
    RequestingOperation question{"GET", "/resource/limit", "", L"OrloWebService::GetResourceLimit - code:",
                                 [&](ErrorCode& ec) { return manager.GetResourceStatus(status, ec); }};
    question.afterwards = notSuccess;
    question.goodAnswer = R"({"data":{"projectNumber":20,"spaceSize":1024}})";
    expectFailuresOf(question, server, log);
    expectUntouched();
    expectSuccessAtLast(question, server, log, [&] { ownedAre("[]"); });
}

TEST_F(ResourceStatusWireTest, aFailedListingCountsAsNoProjectsAndIsNotReported)
{
    limitsAre(R"({"data":{"projectNumber":20,"spaceSize":1024}})");
    server.expect("GET", "/projects?scenario=OWNER").reply(404, "gone");
    EXPECT_TRUE(manager.GetResourceStatus(status, error));
    EXPECT_EQ(status.projectCount, 0);
    EXPECT_EQ(status.projectNumber, 20);
    EXPECT_EQ(status.spaceUsed, 0);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetAllProjects - code:404"});
}

} // namespace
} // namespace orlo::test
