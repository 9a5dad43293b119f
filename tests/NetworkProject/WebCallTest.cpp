#include "support/WireTest.h"

#include <OrloProjectManager/NetworkProject/Call/WebCall.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace orlo::test {
namespace {

class WebCallTest : public WireTest
{
protected:
    static WebCall sample(const std::wstring& path = L"/sample")
    {
        return {L"OrloWebService::Sample", service::project, methods::GET, path};
    }

    WebAnswer answered(int status, const std::string& body, const std::string& contentType = "application/json")
    {
        server.expect("GET", "/sample").reply(status, body, contentType);
        return sample().send(error);
    }
};

TEST_F(WebCallTest, encodesTheValuesOfAQuery)
{
    server.expect("GET", "/sample?a=%E4%B8%AD%E6%96%87&b=x%20y&c=a%26b&d=1%2B1&e=50%25&f=a%3Db&g=").reply(200);
    sample()
        .query(L"a", L"中文")
        .query(L"b", L"x y")
        .query(L"c", L"a&b")
        .query(L"d", L"1+1")
        .query(L"e", L"50%")
        .query(L"f", L"a=b")
        .query(L"g", L"")
        .send(error);
}

TEST_F(WebCallTest, encodesWhatWouldEndTheQuery)
{
    server.expect("GET", "/sample?a=x%23y&b=%0D%0Ax&c=%22%3C%3E").reply(200);
    sample().query(L"a", L"x#y").query(L"b", L"\r\nx").query(L"c", L"\"<>").send(error);
}

TEST_F(WebCallTest, addsTheKeysOfAQueryInTheOrderOfTheCalls)
{
    server.expect("GET", "/sample?z=1&a=2&m=3").reply(200);
    sample().query(L"z", L"1").query(L"a", L"2").query(L"m", L"3").send(error);
}

TEST_F(WebCallTest, joinsAQueryToOneThatThePathHolds)
{
    server.expect("GET", "/sample?first=1&second=2").reply(200);
    sample(L"/sample?first=1").query(L"second", L"2").send(error);
}

TEST_F(WebCallTest, fillsEveryOccurrenceOfAPlaceholder)
{
    server.expect("GET", "/a/x/b/7/c/x/-3").reply(200);
    sample(L"/a/{id}/b/{version}/c/{id}/{other}").place(L"{id}", L"x").place(L"{version}", 7).place(L"{other}", -3).send(error);
}

TEST_F(WebCallTest, widensANarrowValueOfAPlaceholder)
{
    server.expect("GET", "/a/narrow").reply(200);
    sample(L"/a/{id}").place(L"{id}", std::string("narrow")).send(error);
}

TEST_F(WebCallTest, aPathThatIsNoUriThrowsAndSendsNothing)
{
    for (const wchar_t* path : {L"/a b", L"/名称", L"/{id}", L"/a\r\nX: y"})
        EXPECT_THROW(sample(path).send(error), std::exception) << path;
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(WebCallTest, aPathWithANulThrowsAndSendsNothing)
{
    const std::wstring id = std::wstring(L"f-1") + L'\0' + L"x";
    EXPECT_THROW(sample(L"/folders/{id}/datasets").place(L"{id}", id).send(error), std::invalid_argument);
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(WebCallTest, aServiceWithoutAnAddressThrowsAndNamesTheService)
{
    OrloConfigManager::Configure({});
    try {
        sample().send(error);
        FAIL() << "nothing was thrown";
    }
    catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "no address is configured for the service \"project\"");
    }
}

TEST_F(WebCallTest, anAddressThatIsNoneThrows)
{
    for (const char* address : {"not an address", "ftp://127.0.0.1/", "http://", "127.0.0.1:80", "file:///etc/hosts"}) {
        moveServices(host, address);
        EXPECT_THROW(sample().send(error), std::exception) << address;
    }
}

TEST_F(WebCallTest, aPathOfTheBaseAddressStaysInFront)
{
    moveServices(host, server.url() + "/gateway/");
    server.expect("GET", "/gateway/sample?a=1").reply(200);
    sample().query(L"a", L"1").send(error);
}

TEST_F(WebCallTest, eachServiceHasAnAddressOfItsOwn)
{
    OrloConfig config = host.config();
    for (auto& [key, url] : config.serviceUrls)
        url += L"/" + key;
    OrloConfigManager::Configure(config);
    const std::pair<const wchar_t*, const char*> services[] = {{service::project, "/project/x"},
                                                               {service::structure, "/structure/x"},
                                                               {service::module, "/module/x"},
                                                               {service::authorization, "/authorization/x"},
                                                               {service::slproxy, "/slproxy/x"}};
    for (const auto& [key, target] : services) {
        server.expect("GET", target).reply(200);
        WebCall(L"OrloWebService::Sample", key, methods::GET, L"/x").send(error);
    }
}

TEST_F(WebCallTest, sendsTheKeysOfABodyInTheOrderOfTheCalls)
{
    server.expect("POST", "/sample").body(R"({"z":"1","a":2,"m":[true],"n":"窄","e":"","x":{}})").reply(200);
    WebCall(L"OrloWebService::Sample", service::project, methods::POST, L"/sample")
        .body(JsonBody()
                  .add(L"z", std::wstring(L"1"))
                  .add(L"a", 2)
                  .add(L"m", web::json::value::array({web::json::value::boolean(true)}))
                  .add(L"n", std::string("窄"))
                  .add(L"e", std::wstring())
                  .addUnlessEmpty(L"left-out", L"")
                  .add(L"x", web::json::value::object())
                  .done())
        .send(error);
}

TEST_F(WebCallTest, sendsATextAsItStands)
{
    server.expect("PUT", "/sample").body("{ \"b\":1,\n\"a\":2 }").reply(200);
    WebCall(L"OrloWebService::Sample", service::project, methods::PUT, L"/sample").body(std::wstring(L"{ \"b\":1,\n\"a\":2 }")).send(error);
}

TEST_F(WebCallTest, textsBecomeJsonStringsAndArrays)
{
    EXPECT_EQ(jsonText(L"a\"中").serialize(), "\"a\\\"中\"");
    EXPECT_EQ(jsonText(std::string("中")).serialize(), "\"中\"");
}

TEST_F(WebCallTest, statusTwoHundredAloneIsOk)
{
    EXPECT_TRUE(answered(200, "").ok());
    EXPECT_EQ(log.lines(), Lines{});
    for (const int status : {201, 204, 302, 400, 500})
        EXPECT_FALSE(answered(status, "").ok()) << status;
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]OrloWebService::Sample - code:201", L"E [ORLOSDK]OrloWebService::Sample - code:204",
                                  L"E [ORLOSDK]OrloWebService::Sample - code:302", L"E [ORLOSDK]OrloWebService::Sample - code:400",
                                  L"E [ORLOSDK]OrloWebService::Sample - code:500"}));
}

TEST_F(WebCallTest, failureWordsCanBeOthersOrNone)
{
    server.expect("GET", "/sample").times(2).reply(404);
    EXPECT_FALSE(sample().failureWords(L"Another::Name - code:").send(error).ok());
    EXPECT_FALSE(sample().failsSilently().send(error).ok());
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Another::Name - code:404"});
}

TEST_F(WebCallTest, theMarkIsTheIntegerTenThousand)
{
    EXPECT_TRUE(answered(200, R"({"code":10000})").marked());
    EXPECT_TRUE(answered(200, R"({"data":[],"code":10000,"message":"ok"})").succeeded());
    for (const char* body :
         {R"({"code":"10000"})", R"({"code":10000.0})", R"({"code":true})", R"({"code":null})", R"({"code":[10000]})", R"({"code":0})",
          R"({"code":-10000})", R"({"code":4294977296})", R"({"Code":10000})", "{}", "[10000]", "10000", "\"10000\"", "null", ""}) {
        EXPECT_FALSE(answered(200, body).succeeded()) << body;
        EXPECT_FALSE(answered(200, body).marked()) << body;
    }
}

TEST_F(WebCallTest, anAnswerWithoutTheMarkIsLoggedWithItsBodyWhereTheFormHasThat)
{
    EXPECT_FALSE(answered(200, R"({"code":7,"message":"不正常"})").marked());
    EXPECT_FALSE(answered(200, R"({"code":7})").succeeded());
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::Sample - response is not normal: {\"code\":7,\"message\":\"不正常\"}"});
}

TEST_F(WebCallTest, anotherStatusIsLoggedAsSuchInEveryForm)
{
    EXPECT_FALSE(answered(201, R"({"code":10000,"data":1})").marked());
    EXPECT_FALSE(answered(201, R"({"code":10000,"data":1})").succeeded());
    EXPECT_FALSE(answered(201, R"({"code":10000,"data":1})").okWithData());
    EXPECT_EQ(log.count(L"E [ORLOSDK]OrloWebService::Sample - code:201"), 3u);
    EXPECT_EQ(log.lines().size(), 3u);
}

TEST_F(WebCallTest, theMemberDataIsFoundWhateverTheCode)
{
    EXPECT_TRUE(answered(200, R"({"code":7,"data":1})").okWithData());
    EXPECT_TRUE(answered(200, R"({"data":null})").okWithData());
    for (const char* body : {R"({"code":10000})", "[]", "7", "\"data\"", "null", ""})
        EXPECT_FALSE(answered(200, body).okWithData()) << body;
    EXPECT_EQ(answered(200, R"({"data":[1,2]})").data().size(), 2u);
    EXPECT_TRUE(answered(200, "{}").data().is_null());
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(WebCallTest, anErrorStatusLeavesTheBodyAsItStandsInTheErrorCode)
{
    answered(422, "{\"code\" : 7, \"message\":\"不\"}\n", "text/plain");
    expectHttpError(error, -402653182, L"HttpError", L"{\"code\" : 7, \"message\":\"不\"}\n", 422);
    answered(500, "");
    expectHttpError(error, -402653182, L"HttpError", L"", 500);
    answered(599, "\xC3\x28");
    expectHttpError(error, -402653182, L"HttpError", L"\xFFFD(", 599);
}

TEST_F(WebCallTest, aStatusBelowFourHundredLeavesTheErrorCodeAlone)
{
    for (const int status : {200, 201, 204, 304, 399}) {
        answered(status, "");
        expectClear(error);
    }
}

TEST_F(WebCallTest, aCallCanBeSentAgainAndMakesARequestOfItsOwn)
{
    server.expect("POST", "/sample").body("[1]").times(2).reply(200);
    const WebCall call = WebCall(L"OrloWebService::Sample", service::project, methods::POST, L"/sample")
                             .body(web::json::value::array({web::json::value::number(1)}));
    EXPECT_TRUE(call.send(error).ok());
    EXPECT_TRUE(call.send(error).ok());
}

} // namespace
} // namespace orlo::test
