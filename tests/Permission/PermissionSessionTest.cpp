#include "PermissionPlatform.h"

#include <gmock/gmock.h>

#include <thread>

// Users who share a dataset through a platform, each in a process of its own.
namespace orlo::test {
namespace {

using testing::AnyOf;

constexpr const char* readsBecauseOfWang = R"(0 {"code":40900,"msg":"wang is writing the dataset"})";
constexpr const char* readsBecauseOfZhang = R"(0 {"code":40900,"msg":"zhang is writing the dataset"})";
constexpr const char* givenBack = R"(yes {"code":10000,"msg":"success"})";

class PermissionSession : public testing::Test
{
protected:
    PermissionPlatform platform;
    TempFolder rootOfWang;
    TempFolder rootOfZhang;
    PermissionProcess wang{platform, rootOfWang, "wang"};
    PermissionProcess zhang{platform, rootOfZhang, "zhang"};
};

TEST_F(PermissionSession, oneWritesTheOtherReadsAndIsToldWhy)
{
    EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(zhang.ask("ask d-1"), readsBecauseOfWang);
    EXPECT_EQ(zhang.ask("valid d-1"), "no");
    EXPECT_EQ(wang.ask("valid d-1"), "yes");
    EXPECT_EQ(wang.ask("release d-1"), givenBack);
    EXPECT_EQ(zhang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(wang.ask("ask d-1"), readsBecauseOfZhang);
}

TEST_F(PermissionSession, theHolderMayAskAgainAndAgain)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(wang.ask("valid d-1"), "yes");
}

TEST_F(PermissionSession, aForcedReleaseLeavesAStaleTokenWhichTheNextQuestionReplaces)
{
    EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(zhang.ask("force d-1"), "yes");
    EXPECT_EQ(wang.ask("valid d-1"), "no") << "nobody writes";
    EXPECT_EQ(wang.ask("release d-1"), R"(no {"code":40400,"msg":"the token is no longer good"})");
    EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(wang.ask("valid d-1"), "yes");
    EXPECT_EQ(zhang.ask("force d-1"), "yes");
    EXPECT_EQ(zhang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(wang.ask("ask d-1"), readsBecauseOfZhang) << "with the stale token";
}

TEST_F(PermissionSession, aForcedReleaseOfNobodyFails)
{
    EXPECT_EQ(wang.ask("force d-1"), "no");
}

TEST_F(PermissionSession, oneWhoLostTheTokenGetsAnotherAndTheOldIsNoLongerGood)
{
    const TempFolder elsewhere;
    EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    PermissionProcess again(platform, elsewhere, "wang");
    EXPECT_EQ(again.ask("ask d-1"), mayWrite);
    EXPECT_EQ(again.ask("valid d-1"), "yes");
    EXPECT_EQ(wang.ask("valid d-1"), "no");
    EXPECT_EQ(wang.ask("release d-1"), R"(no {"code":40400,"msg":"the token is no longer good"})");
}

TEST_F(PermissionSession, theTokenIsKnownAgainAfterARestartOfBothSides)
{
    EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    platform.platform.stop();
    platform.platform.start();
    PermissionProcess again(platform, rootOfWang, "wang");
    EXPECT_EQ(again.ask("valid d-1"), "yes");
    EXPECT_EQ(zhang.ask("ask d-1"), readsBecauseOfWang);
    EXPECT_EQ(again.ask("release d-1"), givenBack);
    EXPECT_EQ(zhang.ask("ask d-1"), mayWrite);
}

TEST_F(PermissionSession, aLeaseLapsesWithTheWorkingDay)
{
    EXPECT_EQ(wang.ask("ask d-1"), mayWrite);
    platform.platform.clock().move(12 * 60 * 60 - 60);
    EXPECT_EQ(zhang.ask("ask d-1"), readsBecauseOfWang);
    platform.platform.clock().move(61);
    EXPECT_EQ(zhang.ask("ask d-1"), mayWrite);
    EXPECT_EQ(wang.ask("valid d-1"), "no");
}

TEST_F(PermissionSession, aTokenThatWasNotAcknowledgedInTimeIsNoneAndIsNotKept)
{
    platform::Fault late;
    late.path = "/dataset/d-1/monitor/ack";
    late.status = 404;
    late.body = R"({"code":40400,"msg":"no such token for the dataset"})";
    platform.platform.faults().add(late);
    EXPECT_EQ(wang.ask("ask d-1"), R"(4 {"code":40400,"msg":"no such token for the dataset"})");
    EXPECT_EQ(wang.ask("release d-1"), R"(no {"code":-1,"msg":"local file have no record permission token"})");
    platform.platform.clock().move(61);
    EXPECT_EQ(zhang.ask("ask d-1"), mayWrite);
}

TEST_F(PermissionSession, rightsOfTheAccountDecideBetweenWritingSoftWritingReadingAndNothing)
{
    platform.allow({"Read", "SoftWrite"});
    EXPECT_EQ(wang.ask("ask d-1"), R"(1 {"code":10000,"msg":"success"})");
    EXPECT_EQ(wang.ask("release d-1"), givenBack);
    platform.allow({"Read"});
    EXPECT_EQ(wang.ask("ask d-1"), R"(0 {"code":40300,"msg":"wang may not write the dataset"})");
    platform.allow({"SoftWrite"});
    EXPECT_EQ(zhang.ask("ask d-1"), R"(1 {"code":10000,"msg":"success"})");
    EXPECT_EQ(wang.ask("ask d-1"), R"(3 {"code":40300,"msg":"wang may not read the dataset"})");
}

TEST_F(PermissionSession, aDatasetThatIsNotThereIsForbidden)
{
    EXPECT_EQ(wang.ask("ask d-9"), R"(3 {"code":40400,"msg":"no such dataset: d-9"})");
}

TEST_F(PermissionSession, ofTwoWhoFightForADatasetOneWritesAtATime)
{
    for (int round = 0; round < 20; ++round) {
        std::string answer;
        std::thread other([&] { answer = zhang.ask("ask d-1"); });
        const std::string ofWang = wang.ask("ask d-1");
        other.join();
        const bool wangWrites = ofWang == mayWrite;
        EXPECT_EQ(wangWrites ? answer : ofWang, wangWrites ? readsBecauseOfWang : readsBecauseOfZhang);
        EXPECT_EQ(wangWrites ? ofWang : answer, mayWrite);
        EXPECT_EQ((wangWrites ? wang : zhang).ask("release d-1"), givenBack);
    }
}

} // namespace
} // namespace orlo::test
