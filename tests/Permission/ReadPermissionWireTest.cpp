#include "PermissionWireTest.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <OrloAuth/UserSession.h>

#include <gmock/gmock.h>

// The right to read, asked for by itself.
namespace orlo::test {
namespace {

using testing::ElementsAre;

const std::wstring endsForbidden = L"E [ORLOSDK][IDataset::ApplyDatasetReadPermission] End - EDatasetPermission::FORBID";
const std::wstring unmarked = L"E [ORLOSDK]OrloWebService::ReleaseDatasetPermissionMonitor: response code is 200 but has no mark 10000";

class ReadPermissionWireTest : public PermissionWireTest
{
protected:
    bool askToRead() { return IDatasetPermission::AskForReadPermission("d-1", result, error); }
};

TEST_F(ReadPermissionWireTest, isAskedForAndAcknowledgedWithoutAUserOrAFile)
{
    UserSession::SignOut();
    server.expect("POST", applyToRead).reply(200, readGranted);
    server.expect("PUT", acknowledgeReading).reply(200);
    EXPECT_TRUE(askToRead());
    EXPECT_EQ(result, success);
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"I [ORLOSDK][IDataset::ApplyDatasetReadPermission] End - EDatasetPermission::READ_ONLY"));
    EXPECT_FALSE(utils::hasDirectory(utils::PermissionFileHelper::TokenFolder()));
}

TEST_F(ReadPermissionWireTest, thatIsRefusedTellsWhy)
{
    server.expect("POST", applyToRead).reply(403, R"({"code":40301,"msg":"not yours"})");
    EXPECT_FALSE(askToRead());
    EXPECT_EQ(result, R"({"code":40301,"msg":"not yours"})");
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]OrloWebService::ApplyForReadDataset - code:403", endsForbidden));
}

TEST_F(ReadPermissionWireTest, anAnswerWithoutTheMarkIsARefusalInTheWordsOfTheRelease)
{
    server.expect("POST", applyToRead).reply(200, R"({"code":10001,"msg":"locked"})");
    EXPECT_FALSE(askToRead());
    EXPECT_EQ(result, R"({"code":10001,"msg":"locked"})");
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(unmarked, endsForbidden));
}

TEST_F(ReadPermissionWireTest, anAnswerWithoutACodeIsTheReasonAsAWhole)
{
    for (const char* body : {R"({"msg":"x"})", R"({"code":"10000"})", "[1]", "7"}) {
        log.clear();
        server.expect("POST", applyToRead).reply(200, body);
        EXPECT_FALSE(askToRead()) << body;
        EXPECT_THAT(log.lines(),
                    ElementsAre(unmarked, L"E [ORLOSDK][CreateDatasetPermissionByString] : have no define error code", endsForbidden));
    }
    EXPECT_EQ(result, R"({"code":-1,"msg":"7"})");
}

TEST_F(ReadPermissionWireTest, anAnswerWithoutATokenHasTheCodeOfSuccess)
{
    for (const char* body : {R"({"code":10000,"data":{"token":"read-token-1"}})", R"({"code":10000,"data":{"monitor":1}})",
                             R"({"code":10000,"data":[]})", R"({"code":10000})"}) {
        server.expect("POST", applyToRead).reply(200, body);
        EXPECT_FALSE(askToRead()) << body;
        EXPECT_EQ(result, R"({"code":10000,"msg":"ExtractTokenByJson error"})") << body;
    }
    expectClear(error);
}

TEST_F(ReadPermissionWireTest, thatIsNotAcknowledgedIsNone)
{
    server.expect("POST", applyToRead).reply(200, readGranted);
    server.expect("PUT", acknowledgeReading).reply(404, R"({"code":40402,"msg":"gone"})");
    EXPECT_FALSE(askToRead());
    EXPECT_EQ(result, R"({"code":40402,"msg":"gone"})");
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]OrloWebService::ObtainPermissionTokenAck - code:404",
                                         L"I [ORLOSDK][IDataset::GetDatasetPermission] dataset readtoken ack fail", warnsUnknown));
}

TEST_F(ReadPermissionWireTest, aPlatformThatIsNotReachedGivesNone)
{
    server.expect("POST", applyToRead).times(4).reset();
    EXPECT_FALSE(askToRead());
    EXPECT_EQ(result, untold);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(log.lines().back(), endsForbidden);
}

TEST_F(ReadPermissionWireTest, whatAnEarlierAttemptWasToldIsTheReasonWhereTheLastOneHadNoAnswer)
{
    const RetryLimit once(1);
    server.expect("POST", applyToRead).reply(503, R"({"code":50300,"msg":"busy"})");
    server.expect("POST", applyToRead).reset();
    EXPECT_FALSE(askToRead());
    EXPECT_EQ(result, R"({"code":50300,"msg":"busy"})");
}

} // namespace
} // namespace orlo::test
