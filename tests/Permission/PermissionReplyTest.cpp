#include "support/LogCapture.h"

#include <OrloProjectManager/NetworkProject/Permission/DatasetPermissionWeb.h>

#include <gmock/gmock.h>

// What a refusal, and a grant, read as.
namespace orlo::test {
namespace {

using OrloPayloadProcessor::CreateDatasetPermissionByString;
using OrloPayloadProcessor::ExtractTokenByJson;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PermissionReply, tellsItsCodeAndItsWords)
{
    const LogCapture log;
    const DatasetPermissionFailure failure = CreateDatasetPermissionByString(L"{\"msg\":\"被占用\",\"code\":-7,\"data\":\"x\"}");
    EXPECT_EQ(failure.code, -7);
    EXPECT_EQ(failure.message, L"被占用");
    EXPECT_EQ(failure.data, "") << "stays empty, whatever there is";
    EXPECT_EQ(CreateDatasetPermissionByString(L"{\"code\":5}").message, L"");
    EXPECT_EQ(CreateDatasetPermissionByString(L"{\"code\":5,\"msg\":7}").message, L"");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(PermissionReply, thatIsNoJsonIsTheWordsAsAWhole)
{
    for (const wchar_t* reply : {L"", L"no", L"{\"code\":5", L"{\"code\":5} x", L"\xFFFD", L"NaN"}) {
        const LogCapture log;
        const DatasetPermissionFailure failure = CreateDatasetPermissionByString(reply);
        EXPECT_EQ(failure.code, -1);
        EXPECT_EQ(failure.message, reply);
        EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK][CreateDatasetPermissionByString] : Failed extract message to json"))
            << std::string(reply, reply + std::wcslen(reply));
    }
}

TEST(PermissionReply, withoutAnIntegerForACodeIsTheWordsAsAWhole)
{
    for (const wchar_t* reply : {L"{}", L"{\"code\":\"5\",\"msg\":\"x\"}", L"{\"code\":5.5}", L"{\"code\":2147483648}", L"{\"code\":null}",
                                 L"[]", L"5", L"null", L"\"x\""}) {
        const LogCapture log;
        const DatasetPermissionFailure failure = CreateDatasetPermissionByString(reply);
        EXPECT_EQ(failure.code, -1);
        EXPECT_EQ(failure.message, reply);
        EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK][CreateDatasetPermissionByString] : have no define error code"));
    }
}

TEST(PermissionReply, nestedWithoutEndIsNoJson)
{
    const LogCapture log;
    EXPECT_EQ(CreateDatasetPermissionByString(std::wstring(100000, L'[')).code, -1);
    EXPECT_EQ(
        CreateDatasetPermissionByString(L"{\"code\":5,\"data\":" + std::wstring(100000, L'[') + std::wstring(100000, L']') + L"}").code,
        -1);
}

TEST(PermissionGrant, needsATokenAndAKind)
{
    std::string token = "old";
    int monitor = 9;
    EXPECT_TRUE(ExtractTokenByJson(web::json::value::parse(R"({"token":"钥","monitor":-3})"), token, monitor));
    EXPECT_EQ(token, "钥");
    EXPECT_EQ(monitor, -3);
    EXPECT_FALSE(ExtractTokenByJson(web::json::value::parse(R"({"token":"new"})"), token, monitor));
    EXPECT_EQ(token, "new") << "what is there is read";
    EXPECT_EQ(monitor, -3) << "what isn't is left alone";
    EXPECT_FALSE(ExtractTokenByJson(web::json::value::parse(R"({"token":5,"monitor":2})"), token, monitor));
    EXPECT_EQ(token, "new");
    EXPECT_EQ(monitor, 2);
    EXPECT_FALSE(ExtractTokenByJson(web::json::value::parse(R"({"token":"x","monitor":2.5})"), token, monitor));
    EXPECT_FALSE(ExtractTokenByJson(web::json::value(), token, monitor));
}

} // namespace
} // namespace orlo::test
