#include <OrloProjectManager/NetworkProject/Projects/DatasetReaders.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using Version = http::ORLOHTTPPayloadDatasetVersion;

Version versionOf(const std::string& json)
{
    Version version;
    OrloPayloadProcessor::readDatasetVersion(web::json::value::parse(json), version);
    return version;
}

constexpr const char* full =
    R"({"id":12,"version":3,"dataSetId":"d-1","dataSetSourceFile":"源.orlo","displayVersion":"V3","creationTime":"2024",)"
    R"("status":"Published","verify":"v","verifyStatus":"vs","metaInfo":"{\"a\":1}","viewingInfo":"vi","rawData":"r",)"
    R"("rawDataFile":"rf","refInfoFile":"if","refInfo":"参照","suiteCount":5,"size":5000000000,"length":7})";

void expectFull(const Version& version)
{
    EXPECT_EQ(version.id, 12);
    EXPECT_EQ(version.version, 3);
    EXPECT_EQ(version.dataSetId, "d-1");
    EXPECT_EQ(version.dataSetSourceFile, L"源.orlo");
    EXPECT_EQ(version.displayVersion, L"V3");
    EXPECT_EQ(version.creationTime, L"2024");
    EXPECT_EQ(version.status, L"Published");
    EXPECT_EQ(version.verify, "v");
    EXPECT_EQ(version.verifyStatus, "vs");
    EXPECT_EQ(version.metaInfo, R"({"a":1})");
    EXPECT_EQ(version.viewingInfo, "vi");
    EXPECT_EQ(version.rawData, "r");
    EXPECT_EQ(version.rawDataFile, "rf");
    EXPECT_EQ(version.refInfoFile, "if");
    ASSERT_NE(version.refInfo, nullptr);
    EXPECT_EQ(*version.refInfo, "\xE5\x8F\x82\xE7\x85\xA7");
    EXPECT_EQ(version.suiteCount, 5);
    EXPECT_EQ(version.size, 5000000000);
}

TEST(VersionReader, readsTheObjectUnderData)
{
    expectFull(versionOf(R"({"code":10000,"id":99,"version":98,"data":)" + std::string(full) + "}"));
}

TEST(VersionReader, readsTheValueItselfWhereThereIsNoDataObject)
{
    expectFull(versionOf(full));
    for (const char* data : {"null", "[]", "7", "\"text\""})
        expectFull(versionOf(R"({"data":)" + std::string(data) + "," + std::string(full).substr(1)));
}

TEST(VersionReader, theVersionStatusIsEmptyWhateverTheAnswerHolds)
{
    for (const char* json :
         {R"({"versionStatus":3,"version":2})", R"({"versionStatus":3,"version":"2"})", R"({"versionStatus":"Published"})",
          R"({"versionStatus":"Published","version":"V2"})", R"({"data":{"versionStatus":1,"version":"V2"}})"})
        EXPECT_EQ(versionOf(json).versionStatus, L"") << json;
    EXPECT_EQ(versionOf(R"({"versionStatus":3,"version":2})").version, 2);
    EXPECT_EQ(versionOf(R"({"versionStatus":3,"version":"2"})").version, 0);
}

TEST(VersionReader, aRefInfoThatIsNoTextStaysNull)
{
    for (const char* json : {R"({"refInfo":7})", R"({"refInfo":null})", R"({"refInfo":{"a":1}})", R"({"refInfo":["x"]})", "{}"})
        EXPECT_EQ(versionOf(json).refInfo, nullptr) << json;
    const Version empty = versionOf(R"({"refInfo":""})");
    ASSERT_NE(empty.refInfo, nullptr);
    EXPECT_EQ(*empty.refInfo, "");
}

TEST(VersionReader, theSizeComesFromSizeOrElseFromLength)
{
    EXPECT_EQ(versionOf(R"({"size":5000000000,"length":7})").size, 5000000000);
    EXPECT_EQ(versionOf(R"({"length":7,"size":5000000000})").size, 5000000000);
    EXPECT_EQ(versionOf(R"({"length":6000000000})").size, 6000000000);
    EXPECT_EQ(versionOf(R"({"size":12.9})").size, 12);
    EXPECT_EQ(versionOf(R"({"size":0,"length":7})").size, 0);
    EXPECT_EQ(versionOf(R"({"size":"5","length":7})").size, 7);
    EXPECT_EQ(versionOf(R"({"size":"5"})").size, 0);
    EXPECT_EQ(versionOf("{}").size, 0);
}

TEST(VersionReader, aFieldOfAnotherTypeKeepsItsDefault)
{
    const Version version =
        versionOf(R"({"id":"12","version":3.5,"dataSetId":1,"dataSetSourceFile":null,"displayVersion":[],"creationTime":{},"status":2,)"
                  R"("verify":true,"verifyStatus":1,"metaInfo":{"a":1},"viewingInfo":[],"rawData":0,"rawDataFile":null,"refInfoFile":7,)"
                  R"("suiteCount":9000000000})");
    EXPECT_EQ(version.id, 0);
    EXPECT_EQ(version.version, 0);
    EXPECT_EQ(version.suiteCount, 0);
    EXPECT_EQ(version.dataSetSourceFile + version.displayVersion + version.creationTime + version.status, L"");
    EXPECT_EQ(version.dataSetId + version.verify + version.verifyStatus + version.metaInfo + version.viewingInfo + version.rawData +
                  version.rawDataFile + version.refInfoFile,
              "");
}

TEST(VersionReader, aValueThatIsNoObjectIsAnEmptyVersion)
{
    for (const char* json : {"[]", "null", "7", "\"text\""}) {
        EXPECT_EQ(versionOf(json).id, 0) << json;
        EXPECT_EQ(versionOf(json).dataSetId, "") << json;
        EXPECT_EQ(versionOf(json).refInfo, nullptr) << json;
    }
}

} // namespace
} // namespace orlo::test
