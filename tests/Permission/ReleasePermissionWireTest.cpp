#include "PermissionWireTest.h"
#include "support/RequestFailures.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <OrloAuth/UserSession.h>

#include <gmock/gmock.h>

#include <filesystem>

// Giving the right to write back, taking it away, and asking whether it is still held.
namespace orlo::test {
namespace {

using testing::ElementsAre;

constexpr const char* releaseHeld = "/dataset/monitor/held-token-0/release?force=false";
constexpr const char* forceRelease = "/dataset/monitor/held-token-0/release?force=true";
constexpr const char* asksForOne = R"(["d-1"])";
constexpr const char* heldByOne = R"({"code":10000,"data":[{"dsId":"d-1","monitor":2,"token":"held-token-0"}]})";

const std::wstring releaseBegun = L"I [ORLOSDK][IDataset::ReleaseDatasetPermission] Begin - d-1";
const std::wstring releaseTaken = L"I [ORLOSDK][IDataset::ReleaseDatasetPermission] - release permission token succeed";
const std::wstring releaseEnds = L"I [ORLOSDK][IDataset::ReleaseDatasetPermission] End - release permission succeed";
const std::wstring releaseFails = L"E [ORLOSDK][IDataset::ReleaseDatasetPermission] End - release permission failed";

class ReleasePermissionWireTest : public PermissionWireTest
{
protected:
    bool release(bool unused = true) { return IDatasetPermission::ReleaseDatasetPermission("d-1", result, error, unused); }
};

TEST_F(ReleasePermissionWireTest, isSentWithTheKeptTokenWhichIsForgotten)
{
    for (const bool unused : {true, false}) {
        hold();
        log.clear();
        server.expect("PUT", releaseHeld).reply(200, R"({"code":10000})");
        EXPECT_TRUE(release(unused));
        EXPECT_EQ(result, success);
        EXPECT_EQ(kept(), "");
        expectClear(error);
        EXPECT_THAT(log.lines(),
                    ElementsAre(releaseBegun, releaseTaken,
                                L"I [ORLOSDK][IDataset::ReleaseDatasetPermission] - delete permission token file succeed", releaseEnds));
    }
}

TEST_F(ReleasePermissionWireTest, withoutAKeptTokenSendsNothing)
{
    EXPECT_FALSE(release());
    EXPECT_EQ(result, R"({"code":-1,"msg":"local file have no record permission token"})");
    EXPECT_EQ(server.requestCount(), 0u);
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(releaseBegun, L"E [ORLOSDK][IDataset::ReleaseDatasetPermission] End - release permission token "
                                                       L"failed, no record token in local file"));
}

TEST_F(ReleasePermissionWireTest, withoutAUserSendsNothingAndTellsNothing)
{
    hold();
    UserSession::SignOut();
    EXPECT_FALSE(release());
    EXPECT_EQ(result, "untouched");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_THAT(log.lines(), ElementsAre(releaseBegun, L"E@orlo::IDatasetPermission::ReleaseDatasetPermission "
                                                       L"[IDataset::GetDatasetPermission] 获取UserSession 失败"));
}

TEST_F(ReleasePermissionWireTest, thatIsRefusedKeepsTheToken)
{
    hold();
    server.expect("PUT", releaseHeld).reply(403, R"({"code":40303,"msg":"not yours"})");
    EXPECT_FALSE(release());
    EXPECT_EQ(result, R"({"code":40303,"msg":"not yours"})");
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_THAT(log.lines(),
                ElementsAre(releaseBegun, L"E [ORLOSDK]OrloWebService::ReleaseDatasetPermissionMonitor - code:403", releaseFails));
}

TEST_F(ReleasePermissionWireTest, withoutTheMarkKeepsTheToken)
{
    hold();
    server.expect("PUT", releaseHeld).reply(200, R"({"code":10001,"msg":"busy"})");
    EXPECT_FALSE(release());
    EXPECT_EQ(result, R"({"code":10001,"msg":"busy"})");
    EXPECT_EQ(kept(), "held-token-0");
    expectClear(error);
    EXPECT_THAT(log.lines(),
                ElementsAre(releaseBegun,
                            L"E [ORLOSDK]OrloWebService::ReleaseDatasetPermissionMonitor: response code is 200 but has no mark 10000",
                            releaseFails));
}

TEST_F(ReleasePermissionWireTest, thatIsCutOffKeepsTheToken)
{
    hold();
    server.expect("PUT", releaseHeld).times(4).reset();
    EXPECT_FALSE(release());
    EXPECT_EQ(result, untold);
    EXPECT_EQ(kept(), "held-token-0");
    EXPECT_EQ(error.GetValue(), exceptionValue);
}

TEST_F(ReleasePermissionWireTest, whoseTokenCannotBeForgottenIsGoodAllTheSame)
{
    hold();
    // While the platform answers, another takes the token out of the file.
    server.expect("PUT", releaseHeld).replyWith([](const Request&) {
        utils::PermissionFileHelper::GetInstance()->ReleasePermission("user-1", "d-1");
        Reply reply;
        reply.body = R"({"code":10000})";
        return reply;
    });
    EXPECT_TRUE(release());
    EXPECT_EQ(result, success);
    EXPECT_THAT(log.lines(),
                ElementsAre(releaseBegun, releaseTaken,
                            L"I [ORLOSDK][IDataset::ReleaseDatasetPermission] - delete permission token file fail", releaseEnds));
}

TEST_F(ReleasePermissionWireTest, aTokenThatFitsIntoNoAddressIsNotShown)
{
    ASSERT_TRUE(utils::PermissionFileHelper::GetInstance()->WriteTokenToFile("user-1", "d-1", "held token\n0"));
    EXPECT_FALSE(release());
    EXPECT_EQ(server.requestCount(), 0u);
    expectHttpError(error, exceptionValue, L"generic exception", L"a permission token doesn't fit into an address", 5555);
    EXPECT_FALSE(log.holds(L"held token"));
}

class ForcedReleaseWireTest : public PermissionWireTest
{
protected:
    bool force() { return IDatasetPermission::ReleaseDatasetPermissionForce(L"d-1", error); }
    void listWriters() { server.expect("POST", writers).body(asksForOne).reply(200, heldByOne); }
};

TEST_F(ForcedReleaseWireTest, asksWhoWritesAndTakesItsTokenAwayButLeavesTheFile)
{
    hold();
    listWriters();
    server.expect("PUT", forceRelease).reply(200, R"({"code":10000})");
    EXPECT_TRUE(force());
    EXPECT_EQ(kept(), "held-token-0");
    expectQuiet();
}

TEST_F(ForcedReleaseWireTest, thatIsRefusedTellsThePlatformsWords)
{
    listWriters();
    server.expect("PUT", forceRelease).reply(403, "no");
    EXPECT_FALSE(force());
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 403);
    EXPECT_THAT(log.lines(),
                ElementsAre(L"E [ORLOSDK]OrloWebService::ReleaseDatasetPermissionMonitorForce - code:403error message is: no"));
}

TEST_F(ForcedReleaseWireTest, withoutTheMarkIsAnErrorWithTheAnswer)
{
    listWriters();
    server.expect("PUT", forceRelease).reply(200, R"({"code":10001,"msg":"x"})");
    EXPECT_FALSE(force());
    const std::wstring text = L"OrloWebService::ReleaseDatasetPermissionMonitorForce: response code is 200 but has no mark 10000"
                              L"{\"code\":10001,\"msg\":\"x\"}";
    expectGenericError(error, exceptionValue, L"GenericError", text);
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]" + text));
}

TEST_F(ForcedReleaseWireTest, ofADatasetThatNobodyWritesSendsNoRelease)
{
    server.expect("POST", writers).body(asksForOne).reply(200, R"({"code":10000,"data":[]})");
    EXPECT_FALSE(force());
    const std::wstring text = L"OrloWebService::GetDatasetEditToken - response is not normal: []";
    expectGenericError(error, exceptionValue, L"GenericError", text);
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]" + text));
}

TEST_F(ForcedReleaseWireTest, failsAsEveryRequestingOperationDoes)
{
    RequestingOperation list{"POST", writers, asksForOne, L"OrloWebService::GetDatasetEditToken - code:",
                             [](ErrorCode& ec) { return IDatasetPermission::ReleaseDatasetPermissionForce(L"d-1", ec); }};
    expectFailuresOf(list, server, log);
}

class EditTokenWireTest : public PermissionWireTest
{
protected:
    bool isValid() { return IDatasetPermission::IsEditTokenValid(L"d-1", error); }
};

TEST_F(EditTokenWireTest, isValidWhereThePlatformNamesTheKeptOne)
{
    hold();
    server.expect("POST", writers).body(asksForOne).reply(200, heldByOne);
    EXPECT_TRUE(isValid());
    expectQuiet();
}

TEST_F(EditTokenWireTest, isNotValidWhereThePlatformNamesAnother)
{
    hold();
    for (const char* token : {"Held-token-0", "held-token-0 ", "held-token-", ""}) {
        server.expect("POST", writers).body(asksForOne).reply(200, R"({"code":10000,"data":[{"token":")" + std::string(token) + R"("}]})");
        EXPECT_FALSE(isValid()) << token;
    }
    expectQuiet();
}

TEST_F(EditTokenWireTest, twoWritersAreNoAnswerAndTheirTokensStandInNoText)
{
    hold();
    server.expect("POST", writers)
        .body(asksForOne)
        .reply(200, R"({"code":10000,"data":[{"token":"held-token-0","monitor":2},{"token":"another-token"}]})");
    EXPECT_FALSE(isValid());
    const std::wstring text =
        L"OrloWebService::GetDatasetEditToken - response is not normal: [{\"monitor\":2,\"token\":\"***\"},{\"token\":\"***\"}]";
    expectGenericError(error, exceptionValue, L"GenericError", text);
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]" + text));
}

TEST_F(EditTokenWireTest, anAnswerThatIsNoSuccessIsNoAnswer)
{
    for (const char* body : {R"({"code":10001,"data":[{"token":"held-token-0"}]})", R"({"code":10000})", R"({"code":10000,"data":null})"}) {
        server.expect("POST", writers).body(asksForOne).reply(200, body);
        EXPECT_FALSE(isValid()) << body;
        expectGenericError(error, exceptionValue, L"GenericError", L"OrloWebService::GetDatasetEditToken - response is not normal: null");
    }
}

TEST_F(EditTokenWireTest, withoutAUserIsAnException)
{
    UserSession::SignOut();
    server.expect("POST", writers).body(asksForOne).reply(200, heldByOne);
    EXPECT_FALSE(isValid());
    expectHttpError(error, exceptionValue, L"HttpError", L"nobody is signed in", 5555);
}

TEST_F(EditTokenWireTest, failsAsEveryRequestingOperationDoes)
{
    expectFailuresOf({"POST", writers, asksForOne, L"OrloWebService::GetDatasetEditToken - code:",
                      [](ErrorCode& ec) { return IDatasetPermission::IsEditTokenValid(L"d-1", ec); }},
                     server, log);
}

} // namespace
} // namespace orlo::test
