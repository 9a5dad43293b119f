#include "support/ProjectObjectTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using http::SendNormalRequestWithRetry;
using Version = http::ORLOHTTPPayloadDatasetVersion;

// Uploads make versions, always through the retry loop; so do these tests.
class VersionCreationWireTest : public WireTest
{
protected:
    static Version versionFrom(const std::wstring& sourceFile)
    {
        Version version;
        version.dataSetId = "d-1";
        version.dataSetSourceFile = sourceFile;
        version.version = 3;
        version.size = 5000000000;
        return version;
    }
    bool create(const Version& data, ErrorCode& ec)
    {
        return SendNormalRequestWithRetry(&OrloWebService::CreateVersion, false, ec, out, data);
    }
    bool createDoc(const Version& data, ErrorCode& ec)
    {
        return SendNormalRequestWithRetry(&OrloWebService::CreateDocVersion, false, ec, out, data);
    }
    bool createNumbered(bool published, ErrorCode& ec)
    {
        return SendNormalRequestWithRetry(&OrloWebService::CreateVersionByNumber, false, ec, L"d-1", 4, L"{\"a\":1}", published, L"说明");
    }

    Version out;
};

TEST_F(VersionCreationWireTest, makesAVersionFromASourceFile)
{
    server.expect("PUT", "/dataset/d-1/version?sourceFile=folder/a.orlo")
        .header("Content-Type", "application/json")
        .body("{}")
        .reply(200, R"({"code":10000,"data":{"id":12,"version":4,"dataSetId":"d-1"}})");
    EXPECT_TRUE(create(versionFrom(L"folder/a.orlo"), error));
    EXPECT_EQ(out.id, 12);
    EXPECT_EQ(out.version, 4);
    EXPECT_EQ(out.dataSetId, "d-1");
    expectQuiet();
}

TEST_F(VersionCreationWireTest, encodesTheSourceFile)
{
    server.expect("PUT", "/dataset/d-1/version?sourceFile=a%20b%26c%3Dd%2B%25%23%E6%A8%A1").body("{}").reply(200, "{}");
    EXPECT_TRUE(create(versionFrom(L"a b&c=d+%#模"), error));
    server.expect("PUT", "/dataset/d-1/doc/version?sourceFile=a%20b%26c%3Dd%2B%25%23%E6%A8%A1").anyBody().reply(200, "{}");
    EXPECT_TRUE(createDoc(versionFrom(L"a b&c=d+%#模"), error));
    expectClear(error);
}

TEST_F(VersionCreationWireTest, sendsAnEmptySourceFileToo)
{
    server.expect("PUT", "/dataset/d-1/version?sourceFile=").body("{}").reply(200, "{}");
    EXPECT_TRUE(create(versionFrom(L""), error));
}

TEST_F(VersionCreationWireTest, makesAVersionFromAFileOfTheDocumentStore)
{
    server.expect("PUT", "/dataset/d-1/doc/version?sourceFile=file-1")
        .header("Content-Type", "application/json")
        .body(R"({"length":5000000000,"version":3})")
        .reply(200, R"({"id":12,"version":4,"size":5000000000})");
    EXPECT_TRUE(createDoc(versionFrom(L"file-1"), error));
    EXPECT_EQ(out.id, 12);
    EXPECT_EQ(out.version, 4);
    EXPECT_EQ(out.size, 5000000000);
    expectQuiet();
}

TEST_F(VersionCreationWireTest, status200IsAllThatIsNeeded)
{
    for (const char* body : {R"({"code":7,"message":"no"})", "{}", "[]", "null", ""}) {
        server.expect("PUT", "/dataset/d-1/version?sourceFile=s").body("{}").reply(200, body);
        EXPECT_TRUE(create(versionFrom(L"s"), error)) << body;
        server.expect("PUT", "/dataset/d-1/doc/version?sourceFile=s").anyBody().reply(200, body);
        EXPECT_TRUE(createDoc(versionFrom(L"s"), error)) << body;
        EXPECT_EQ(out.id, 0);
    }
    expectQuiet();
}

TEST_F(VersionCreationWireTest, aDatasetWithoutAnIdIsRefused)
{
    Version data = versionFrom(L"s");
    data.dataSetId.clear();
    EXPECT_FALSE(create(data, error));
    expectGenericError(error, 3892314113, L"GenericError", L"data.dataSetId is empty.");
    error.Clear();
    EXPECT_FALSE(createDoc(data, error));
    expectGenericError(error, 3892314113, L"GenericError", L"data.dataSetId is empty.");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(VersionCreationWireTest, failsAsEveryRetriedCallDoesAndLogsNoStatus)
{
    expectFailuresOf({"PUT", "/dataset/d-1/version?sourceFile=s", "{}", L"", [&](ErrorCode& ec) { return create(versionFrom(L"s"), ec); }},
                     server, log);
    expectFailuresOf({"PUT", "/dataset/d-1/doc/version?sourceFile=s", R"({"length":5000000000,"version":3})", L"",
                      [&](ErrorCode& ec) { return createDoc(versionFrom(L"s"), ec); }},
                     server, log);
    EXPECT_EQ(out.id, 0);
}

TEST_F(VersionCreationWireTest, makesAVersionOfANumber)
{
    server.expect("POST", "/datasets/d-1/versions/4/create")
        .header("Content-Type", "application/json")
        .body(R"({"metaInfo":"{\"a\":1}","status":"Published","description":"说明"})")
        .reply(200, R"({"code":10000})");
    EXPECT_TRUE(createNumbered(true, error));
    server.expect("POST", "/datasets/d-1/versions/4/create")
        .body(R"({"metaInfo":"{\"a\":1}","status":"WIP","description":"说明"})")
        .reply(200, R"({"code":10000,"data":{"id":1}})");
    EXPECT_TRUE(createNumbered(false, error));
    expectQuiet();
}

TEST_F(VersionCreationWireTest, sendsEmptyTextsAndAnyNumber)
{
    server.expect("POST", "/datasets/d-1/versions/-1/create")
        .body(R"({"metaInfo":"","status":"WIP","description":""})")
        .reply(200, R"({"code":10000})");
    EXPECT_TRUE(OrloWebService::CreateVersionByNumber(error, L"d-1", -1, L"", false, L""));
}

TEST_F(VersionCreationWireTest, aVersionOfANumberNeedsTheMark)
{
    const std::pair<const char*, const wchar_t*> rows[] = {{R"({"code":7})", LR"({"code":7})"},
                                                           {R"({"code":"10000"})", LR"({"code":"10000"})"},
                                                           {"{}", L"{}"},
                                                           {"true", L"true"},
                                                           {"", L"null"}};
    for (const auto& [body, logged] : rows) {
        log.clear();
        server.expect("POST", "/datasets/d-1/versions/4/create").anyBody().reply(200, body);
        EXPECT_FALSE(createNumbered(true, error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(),
                  Lines{L"E [ORLOSDK]OrloWebService::CreateVersionByNumber - response is not normal: " + std::wstring(logged)});
    }
}

TEST_F(VersionCreationWireTest, aVersionOfANumberFailsAsEveryRetriedCallDoesAndLogsNoStatus)
{
    expectFailuresOf({"POST", "/datasets/d-1/versions/4/create", R"({"metaInfo":"{\"a\":1}","status":"WIP","description":"说明"})", L"",
                      [&](ErrorCode& ec) { return createNumbered(false, ec); }},
                     server, log);
}

} // namespace
} // namespace orlo::test
