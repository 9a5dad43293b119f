#include "PermissionWireTest.h"
#include "support/RawServer.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <OrloAuth/UserSession.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

// The right to write: asked for, acknowledged, kept; and what is left where it isn't granted.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class WritePermissionWireTest : public PermissionWireTest
{
protected:
    void grant(const char* target, const char* body = writeGranted) { server.expect("POST", target).reply(200, body); }
    void acknowledge(const char* target = acknowledgeWriting) { server.expect("PUT", target).reply(200); }
    void refuseWriting(const char* target = applyToWrite) { server.expect("POST", target).reply(409, writeRefused); }
};

TEST_F(WritePermissionWireTest, isAskedForAcknowledgedAndKept)
{
    grant(applyToWrite);
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    EXPECT_EQ(result, success);
    EXPECT_EQ(kept(), "write-token-1");
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasNone, asksToWrite, recorded, endsReadWrite));
}

TEST_F(WritePermissionWireTest, aKeptTokenGoesAlongAndIsReplaced)
{
    hold();
    grant(applyToWriteHolding);
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    EXPECT_EQ(kept(), "write-token-1");
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasOne, asksToWrite, recorded, endsReadWrite));
}

TEST_F(WritePermissionWireTest, aFirstCallSendsNoTokenAndASecondOneSendsIt)
{
    grant(applyToWrite);
    acknowledge();
    ask();
    grant("/v3/dataset/d-1/xmonitor/apply?token=write-token-1&ack=1", R"({"code":10000,"data":{"token":"write-token-2","monitor":2}})");
    acknowledge("/dataset/d-1/monitor/ack?token=write-token-2");
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    EXPECT_EQ(kept(), "write-token-2");
}

TEST_F(WritePermissionWireTest, ofKindThreeIsASoftOneAndKeptAlike)
{
    grant(applyToWrite, R"({"code":10000,"data":{"token":"write-token-1","monitor":3}})");
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::SOFT_WRITE);
    EXPECT_EQ(result, success);
    EXPECT_EQ(kept(), "write-token-1");
    EXPECT_EQ(log.lines().back(), L"I [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::SOFT_WRITE");
}

TEST_F(WritePermissionWireTest, ofAnotherKindIsUnknownAndKeptAlike)
{
    for (const char* kind : {"5", "1", "-2"}) {
        utils::PermissionFileHelper::GetInstance()->ReleasePermission("user-1", "d-1");
        grant(applyToWrite, (R"({"code":10000,"data":{"token":"write-token-1","monitor":)" + std::string(kind) + "}}").c_str());
        acknowledge();
        EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN) << kind;
        EXPECT_EQ(result, success);
        EXPECT_EQ(kept(), "write-token-1");
        EXPECT_EQ(log.lines().back(), L"I [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::UNKNOWN");
    }
}

TEST_F(WritePermissionWireTest, withAnEmptyTokenIsAcknowledgedAllTheSameAndThenUnknown)
{
    hold();
    grant(applyToWriteHolding, R"({"code":10000,"data":{"token":"","monitor":2}})");
    acknowledge("/dataset/d-1/monitor/ack");
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasOne, asksToWrite,
                                         L"W [ORLOSDK][IDataset::GetDatasetPermission] error token or tokenType is empty", warnsUnknown));
}

TEST_F(WritePermissionWireTest, withTheKindZeroIsNotKept)
{
    grant(applyToWrite, R"({"code":10000,"data":{"token":"write-token-1","monitor":0}})");
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(kept(), "");
}

TEST_F(WritePermissionWireTest, thatCannotBeKeptIsGoodAllTheSame)
{
    // A folder stands where the file should.
    const std::wstring folder = utils::PermissionFileHelper::TokenFolder();
    std::filesystem::create_directories(utils::makePath(folder) / "DatasetTokens.json");
    grant(applyToWrite);
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    EXPECT_EQ(result, success);
    EXPECT_THAT(log.lines(),
                ElementsAre(begun, hasNone, asksToWrite,
                            L"I [ORLOSDK][IDataset::GetDatasetPermission] error record token to local file fail", endsReadWrite));
}

TEST_F(WritePermissionWireTest, thatThePlatformDoesNotAcknowledgeIsUnknownAndNotKept)
{
    hold();
    grant(applyToWriteHolding);
    server.expect("PUT", acknowledgeWriting).reply(404, R"({"code":40401,"msg":"too late"})");
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, R"({"code":40401,"msg":"too late"})");
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasOne, asksToWrite, L"E [ORLOSDK]OrloWebService::ObtainPermissionTokenAck - code:404",
                                         L"I [ORLOSDK][IDataset::GetDatasetPermission] error dataset token ack fail", warnsUnknown));
}

TEST_F(WritePermissionWireTest, anAcknowledgementWithAnotherStatusIsAFailureToo)
{
    grant(applyToWrite);
    server.expect("PUT", acknowledgeWriting).reply(204);
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, untold);
    expectClear(error);
    EXPECT_EQ(kept(), "");
}

TEST_F(WritePermissionWireTest, whoseAcknowledgementIsCutOffLeavesReading)
{
    const RetryLimit once(1);
    hold();
    grant(applyToWriteHolding);
    server.expect("PUT", acknowledgeWriting).times(2).reset();
    EXPECT_EQ(ask(), EDatasetPermission::READ_ONLY);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_EQ(log.lines().back(), warnsUnknown) << "the line tells UNKNOWN, whatever the result";
}

TEST_F(WritePermissionWireTest, whatAnAcknowledgementAnswersIsNotRead)
{
    for (const char* body : {"<html>", R"({"code":40000})", "[]"}) {
        utils::PermissionFileHelper::GetInstance()->ReleasePermission("user-1", "d-1");
        grant(applyToWrite);
        server.expect("PUT", acknowledgeWriting).reply(200, body);
        EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE) << body;
    }
}

TEST_F(WritePermissionWireTest, thatIsRefusedLeavesReadingAndTellsWhyWritingIsNot)
{
    hold();
    refuseWriting(applyToWriteHolding);
    server.expect("POST", applyToRead).reply(200, readGranted);
    server.expect("PUT", acknowledgeReading).reply(200);
    EXPECT_EQ(ask(), EDatasetPermission::READ_ONLY);
    EXPECT_EQ(result, writeRefused);
    EXPECT_EQ(kept(), "held-token-0") << "a token to read is never kept, and a refusal changes nothing";
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasOne, asksToWrite, L"E [ORLOSDK]OrloWebService::ApplyForWriteDataset - code:409",
                                         asksToRead, endsReadOnly));
}

TEST_F(WritePermissionWireTest, thatIsRefusedWithReadingIsForbidden)
{
    refuseWriting();
    server.expect("POST", applyToRead).reply(403, R"({"code":40301,"msg":"not yours"})");
    EXPECT_EQ(ask(), EDatasetPermission::FORBID);
    EXPECT_EQ(result, R"({"code":40301,"msg":"not yours"})");
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasNone, asksToWrite, L"E [ORLOSDK]OrloWebService::ApplyForWriteDataset - code:409",
                                         asksToRead, L"E [ORLOSDK]OrloWebService::ApplyForReadDataset - code:403",
                                         L"E [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::FORBID"));
}

TEST_F(WritePermissionWireTest, thatIsRefusedWhileReadingIsCutOffLeavesReading)
{
    const RetryLimit once(1);
    refuseWriting();
    server.expect("POST", applyToRead).times(2).reset();
    EXPECT_EQ(ask(), EDatasetPermission::READ_ONLY);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(log.lines().back(), L"E [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::READ_ONLY");
}

TEST_F(WritePermissionWireTest, aTokenToReadThatIsNotAcknowledgedIsUnknown)
{
    refuseWriting();
    server.expect("POST", applyToRead).reply(200, readGranted);
    server.expect("PUT", acknowledgeReading).reply(404, R"({"code":40402,"msg":"gone"})");
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, R"({"code":40402,"msg":"gone"})");
    EXPECT_THAT(log.lines(), ElementsAre(begun, hasNone, asksToWrite, L"E [ORLOSDK]OrloWebService::ApplyForWriteDataset - code:409",
                                         asksToRead, L"E [ORLOSDK]OrloWebService::ObtainPermissionTokenAck - code:404",
                                         L"I [ORLOSDK][IDataset::GetDatasetPermission] dataset readtoken ack fail", warnsUnknown));
}

TEST_F(WritePermissionWireTest, aTokenToReadWhoseAcknowledgementIsCutOffLeavesReading)
{
    const RetryLimit once(1);
    refuseWriting();
    server.expect("POST", applyToRead).reply(200, readGranted);
    server.expect("PUT", acknowledgeReading).times(2).reset();
    EXPECT_EQ(ask(), EDatasetPermission::READ_ONLY);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(log.lines().back(), warnsUnknown);
}

TEST_F(WritePermissionWireTest, aPlatformThatIsNotReachedLeavesReading)
{
    hold();
    server.expect("POST", applyToWriteHolding).times(4).reset();
    EXPECT_EQ(ask(), EDatasetPermission::READ_ONLY);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(log.lines().back(), L"W [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::READ_ONLY");
    EXPECT_EQ(log.count(L"E [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded"), 1u);
}

TEST_F(WritePermissionWireTest, anAnswerThatNobodyCanReadLeavesReading)
{
    server.expect("POST", applyToWrite).reply(200, "<html>", "text/html");
    EXPECT_EQ(ask(), EDatasetPermission::READ_ONLY);
    EXPECT_EQ(result, untold);
    EXPECT_EQ(error.GetValue(), exceptionValue);
}

TEST_F(WritePermissionWireTest, aRefusalThatSaysNoCodeIsUnknownWithItsWords)
{
    for (const char* words : {"<h1>no</h1>", "", R"({"msg":"x"})", R"({"code":"40901","msg":"x"})", R"({"code":4090100000000})", "[1]"}) {
        log.clear();
        error.Clear();
        server.expect("POST", applyToWrite).reply(403, words);
        EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN) << words;
        EXPECT_THAT(result, HasSubstr(R"({"code":-1,"msg":)"));
        EXPECT_EQ(log.lines().back(), warnsUnknown);
        EXPECT_EQ(log.lines().size(), 6u) << "one line about the words: " << words;
    }
    server.expect("POST", applyToWrite).reply(403, R"({"msg":"x"})");
    ask();
    EXPECT_EQ(result, R"({"code":-1,"msg":"{\"msg\":\"x\"}"})");
}

TEST_F(WritePermissionWireTest, aRefusalWithTheCodeMinusOneIsUnknown)
{
    server.expect("POST", applyToWrite).reply(403, R"({"code":-1,"msg":"x"})");
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, R"({"code":-1,"msg":"x"})");
}

TEST_F(WritePermissionWireTest, anAnswerWithoutItsTokenIsUnknown)
{
    hold();
    for (const char* body : {R"({"code":10000,"data":{"monitor":2}})", R"({"code":10000,"data":{"token":"write-token-1"}})",
                             R"({"code":10000,"data":{"token":"write-token-1","monitor":"2"}})",
                             R"({"code":10000,"data":{"token":7,"monitor":2}})", R"({"code":10000})", R"({"code":10000,"data":null})",
                             R"({"code":40901,"data":{"token":"write-token-1","monitor":2}})", "[]", "7"}) {
        log.clear();
        server.expect("POST", applyToWriteHolding).reply(200, body);
        EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN) << body;
        EXPECT_EQ(result, R"({"code":-1,"msg":"ExtractTokenByJson error"})") << body;
        EXPECT_EQ(kept(), "held-token-0");
        expectClear(error);
        EXPECT_THAT(log.lines(), ElementsAre(begun, hasOne, asksToWrite, warnsUnknown)) << body;
    }
}

TEST_F(WritePermissionWireTest, anotherStatusThanTwoHundredIsUnknownWithAClearErrorCode)
{
    server.expect("POST", applyToWrite).reply(201, writeGranted);
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, untold);
    expectClear(error);
}

TEST_F(WritePermissionWireTest, aBusyPlatformIsAskedAgain)
{
    server.expect("POST", applyToWrite).reply(503, R"({"code":50300,"msg":"busy"})");
    grant(applyToWrite);
    server.expect("PUT", acknowledgeWriting).reply(503);
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    EXPECT_EQ(result, success);
    expectClear(error);
}

TEST_F(WritePermissionWireTest, withoutAUserNothingIsAskedAndNothingTold)
{
    UserSession::SignOut();
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, "untouched");
    EXPECT_THAT(log.lines(), ElementsAre(begun, L"E@orlo::IDatasetPermission::GetDatasetPermission [IDataset::GetDatasetPermission] "
                                                L"获取UserSession 失败"));
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(WritePermissionWireTest, withoutAFolderForTheTokensNothingIsAsked)
{
    // A file stands where the folder should.
    const std::filesystem::path folder = utils::makePath(utils::PermissionFileHelper::TokenFolder());
    std::filesystem::create_directories(folder.parent_path());
    std::ofstream(folder) << "x";
    EXPECT_EQ(ask(), EDatasetPermission::UNKNOWN);
    EXPECT_EQ(result, "untouched");
    EXPECT_THAT(log.lines(), ElementsAre(begun, L"E [ORLOSDK][IDataset::GetDatasetPermission] 创建保存dataset token信息文件夹失败"));
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(WritePermissionWireTest, theFolderForTheTokensIsMadeWhereItIsNotThere)
{
    const std::wstring folder = utils::PermissionFileHelper::TokenFolder();
    ASSERT_FALSE(utils::hasDirectory(folder));
    server.expect("POST", applyToWrite).reply(403, "no");
    ask();
    EXPECT_TRUE(utils::hasDirectory(folder));
}

TEST_F(WritePermissionWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    grant(applyToWrite);
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    expectClear(error);
    EXPECT_EQ(log.lines().front(), L"E@orlo::IDatasetPermission::GetDatasetPermission 传入的ErrorCode，已有错误存在:earlier");
}

TEST_F(WritePermissionWireTest, anExceptionIsUnknown)
{
    // A path can't hold a NUL.
    EXPECT_EQ(IDatasetPermission::GetDatasetPermission(std::string("d\0x", 3), result, error), EDatasetPermission::READ_ONLY)
        << "the retry loop catches it, and the value is above 0";
    expectHttpError(error, exceptionValue, L"generic exception", L"a path can't hold a NUL", 5555);
}

TEST_F(WritePermissionWireTest, theTokenIsEncodedInTheQuery)
{
    ASSERT_TRUE(utils::PermissionFileHelper::GetInstance()->WriteTokenToFile("user-1", "d-1", "a b/+&钥"));
    grant("/v3/dataset/d-1/xmonitor/apply?token=a%20b/%2B%26%E9%92%A5&ack=1");
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
}

TEST_F(WritePermissionWireTest, eachUserKeepsATokenOfHisOwn)
{
    hold();
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    grant(applyToWrite);
    acknowledge();
    EXPECT_EQ(ask(), EDatasetPermission::READ_WRITE);
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_EQ(utils::PermissionFileHelper::GetInstance()->GetDatasetTokenFromFile("user-2", "d-1"), "write-token-1");
}

} // namespace
} // namespace orlo::test
