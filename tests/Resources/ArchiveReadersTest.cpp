#include <BaseCommon/NativeText.h>
#include <OrloProjectManager/NetworkProject/Resources/ArchiveReaders.h>

#include <gtest/gtest.h>

#include <string>

namespace orlo::test {
namespace {

using namespace OrloPayloadProcessor;

using ArchiveTexts = std::vector<std::wstring>;

web::json::value archiveJson(const std::string& text)
{
    return web::json::value::parse(utils::toNative(text));
}

/// Reads a marked answer with that "data".
template <class Ack>
Ack readMarked(bool (*read)(const web::json::value&, Ack&), const std::string& data)
{
    Ack ack;
    EXPECT_TRUE(read(archiveJson(R"({"code":10000,"msg":"好","data":)" + data + "}"), ack)) << data;
    EXPECT_EQ(ack.code, 10000) << data;
    EXPECT_EQ(ack.msg, L"好") << data;
    return ack;
}

/// What all four readers do with answers that give no list.
template <class Ack, class Records>
void expectNoRecords(bool (*read)(const web::json::value&, Ack&), Records Ack::*records, const std::string& goodData,
                     const std::vector<std::string>& wrongData)
{
    const Ack good = readMarked(read, goodData);
    ASSERT_FALSE((good.*records).empty());

    Ack ack = good;
    EXPECT_FALSE(read(web::json::value::null(), ack));
    EXPECT_TRUE((ack.*records).empty());
    EXPECT_EQ(ack.msg, L"");

    for (const std::string code : {R"("10000")", "10001", "0", "-1", "10000.0", "10000.5", "4294977296", "null", "[]", "true"}) {
        ack = good;
        EXPECT_TRUE(read(archiveJson(R"({"code":)" + code + R"(,"msg":"不行","data":)" + goodData + "}"), ack)) << code;
        EXPECT_TRUE((ack.*records).empty()) << code;
        EXPECT_EQ(ack.msg, L"不行") << "the words are told all the same: " << code;
    }
    ack = good;
    EXPECT_TRUE(read(archiveJson(R"({"msg":"不行","data":)" + goodData + "}"), ack));
    EXPECT_TRUE((ack.*records).empty());
    EXPECT_EQ(ack.code, 0);
    EXPECT_EQ(ack.msg, L"不行");

    for (const std::string& data : wrongData)
        EXPECT_TRUE((readMarked(read, data).*records).empty()) << data;
    for (const std::string body : {"{}", "[]", "7", "true", R"("text")", R"([{"code":10000}])", R"({"code":10000})", R"({"msg":7})"}) {
        ack = good;
        EXPECT_TRUE(read(archiveJson(body), ack)) << body;
        EXPECT_TRUE((ack.*records).empty()) << body;
        EXPECT_EQ(ack.msg, L"") << body;
    }
}

const std::vector<std::string> noArrays = {"null", "{}", "7", R"("x")", "true", R"({"0":{}})"};

TEST(ArchiveReaders, giveNoPackagesForAnAnswerWithoutAMarkedList)
{
    expectNoRecords(&readArchivePackages, &http::ORLOHTTPPayloadArchivePackageAck::packages, R"([{"packageId":"a"}])", noArrays);
}

TEST(ArchiveReaders, giveNoPackageVersionsForAnAnswerWithoutAMarkedList)
{
    expectNoRecords(&readArchivePackageVersions, &http::ORLOHTTPPayloadArchivePackageVersionAck::versions, R"([{"id":1}])", noArrays);
}

TEST(ArchiveReaders, giveNoUnitVersionsForAnAnswerWithoutAMarkedList)
{
    expectNoRecords(&readArchiveUnitVersions, &http::ORLOHTTPPayloadArchiveUnitVersionAck::versions, R"([{"id":1}])", noArrays);
}

TEST(ArchiveReaders, giveNoStandardCodesForAnAnswerWithoutAMarkedObject)
{
    expectNoRecords(&readArchiveStandardCodes, &http::ORLOHTTPPayloadArchiveUnitStandardCodeAck::standardCodes,
                    R"({"vos":[{"versionId":1,"scs":[]}]})",
                    {"null", "[]", "7", R"([{"vos":[]}])", "{}", R"({"vos":null})", R"({"vos":{"versionId":1}})", R"({"vos":7})"});
}

TEST(ArchiveReaders, readEveryFieldOfAPackage)
{
    const auto ack = readMarked(&readArchivePackages, R"([{"packageId":"id","packageName":"名 🏗","desc":"d","version":7,"receiver":"r",
        "receiverName":"rn","projectId":"p","createTime":"t","sharer":"s","sharerName":"sn","status":"enable","more":[]},{"packageId":"b"}])");
    ASSERT_EQ(ack.packages.size(), 2u);
    const auto& [packageId, packageName, desc, version, receiver, receiverName, projectId, createTime, sharer, sharerName, enable] =
        ack.packages[0];
    EXPECT_EQ(packageId, L"id");
    EXPECT_EQ(packageName, L"名 🏗");
    EXPECT_EQ(desc, L"d");
    EXPECT_EQ(version, 7);
    EXPECT_EQ(receiver, L"r");
    EXPECT_EQ(receiverName, L"rn");
    EXPECT_EQ(projectId, L"p");
    EXPECT_EQ(createTime, L"t");
    EXPECT_EQ(sharer, L"s");
    EXPECT_EQ(sharerName, L"sn");
    EXPECT_TRUE(enable);
    EXPECT_EQ(ack.packages[1].packageId, L"b");
    EXPECT_EQ(ack.packages[1].version, 0);
    EXPECT_FALSE(ack.packages[1].enable);
}

TEST(ArchiveReaders, knowOneWordForAPackageThatIsEnabled)
{
    for (const std::string status :
         {R"("Enable")", R"("ENABLE")", R"("enabled")", R"("enable ")", R"("disable")", R"("")", "true", "1", "null", R"(["enable"])"}) {
        const auto ack = readMarked(&readArchivePackages, R"([{"status":)" + status + "}]");
        ASSERT_EQ(ack.packages.size(), 1u) << status;
        EXPECT_FALSE(ack.packages[0].enable) << status;
    }
}

TEST(ArchiveReaders, readEveryFieldOfAPackageVersion)
{
    const auto ack = readMarked(&readArchivePackageVersions, R"([{"id":5,"version":2,"ownerId":"o","ownerName":"on","packageId":"p",
        "content":[{"resourceId":"12","integratePackageId":"i","type":"t"},{},null,7,{"resourceId":12,"type":[]}]},{"content":{}}])");
    ASSERT_EQ(ack.versions.size(), 2u);
    const auto& [id, version, ownerId, ownerName, packageId, contents] = ack.versions[0];
    EXPECT_EQ(id, 5);
    EXPECT_EQ(version, 2);
    EXPECT_EQ(ownerId, L"o");
    EXPECT_EQ(ownerName, L"on");
    EXPECT_EQ(packageId, L"p");
    ASSERT_EQ(contents.size(), 5u);
    const auto& [resourceId, integratePackageId, type] = contents[0];
    EXPECT_EQ(resourceId + L"|" + integratePackageId + L"|" + type, L"12|i|t");
    for (std::size_t i = 1; i < contents.size(); ++i)
        EXPECT_EQ(contents[i].resourceId + contents[i].integratePackageId + contents[i].type, L"") << i;
    EXPECT_TRUE(ack.versions[1].contents.empty());
}

TEST(ArchiveReaders, readEveryFieldOfAUnitVersion)
{
    const auto ack = readMarked(&readArchiveUnitVersions, R"([{"id":12,"version":3,"integrateStatus":"s","packageId":"i",
        "integratePackageName":"名","creationTime":"t","datasetVersions":[4,-5,"6",7.5,null,4294967296,4]},{"datasetVersions":{}},{"id":1}])");
    ASSERT_EQ(ack.versions.size(), 3u);
    const auto& [id, version, integrateStatus, packageId, integratePackageName, creationTime, datasetVersions] = ack.versions[0];
    EXPECT_EQ(id, 12);
    EXPECT_EQ(version, 3);
    EXPECT_EQ(integrateStatus, L"s");
    EXPECT_EQ(packageId, L"i");
    EXPECT_EQ(integratePackageName, L"名");
    EXPECT_EQ(creationTime, L"t");
    EXPECT_EQ(datasetVersions, (std::vector<int>{4, -5, 4}));
    EXPECT_TRUE(ack.versions[1].datasetVersions.empty());
    EXPECT_TRUE(ack.versions[2].datasetVersions.empty());
}

TEST(ArchiveReaders, leaveFieldsOfAnotherTypeAtTheirDefaults)
{
    const auto packages = readMarked(
        &readArchivePackages,
        R"([{"packageId":7,"packageName":null,"desc":[],"version":"7","receiver":{},"sharer":true},{"version":2147483648},null,7])");
    ASSERT_EQ(packages.packages.size(), 4u);
    for (const auto& package : packages.packages) {
        EXPECT_EQ(package.packageId + package.packageName + package.desc + package.receiver + package.sharer, L"");
        EXPECT_EQ(package.version, 0);
    }
    const auto versions = readMarked(&readArchivePackageVersions, R"([{"id":-2147483649,"version":1.5,"ownerId":1,"packageId":[]},[]])");
    ASSERT_EQ(versions.versions.size(), 2u);
    for (const auto& version : versions.versions) {
        EXPECT_EQ(version.ownerId + version.packageId, L"");
        EXPECT_EQ(version.id, 0);
        EXPECT_EQ(version.version, 0);
    }
    const auto units = readMarked(&readArchiveUnitVersions, R"([{"id":"12","version":null,"packageId":3},"x"])");
    ASSERT_EQ(units.versions.size(), 2u);
    for (const auto& unit : units.versions) {
        EXPECT_EQ(unit.id, 0);
        EXPECT_EQ(unit.packageId, L"");
    }
}

TEST(ArchiveReaders, gatherTheStandardCodesOfEachVersion)
{
    const auto ack = readMarked(&readArchiveStandardCodes, R"({"vos":[
        {"versionId":12,"scs":[{"sk":"key","sv":"30-01.10"},{"sv":"标准"},{"sk":"alone"},{"sv":7},null,"x",{"sv":""}]},
        {"versionId":-3},{"versionId":4,"scs":{"sv":"x"}},{"versionId":12,"scs":[{"sv":"later"}]},
        {"versionId":"5","scs":[{"sv":"x"}]},{"versionId":4294967308,"scs":[{"sv":"x"}]},{"scs":[{"sv":"x"}]},null,7]})");
    ASSERT_EQ(ack.standardCodes.size(), 3u);
    EXPECT_EQ(ack.standardCodes.at(12), (ArchiveTexts{L"30-01.10", L"标准", L"", L"later"}));
    EXPECT_EQ(ack.standardCodes.at(-3), ArchiveTexts());
    EXPECT_EQ(ack.standardCodes.at(4), ArchiveTexts());
}

} // namespace
} // namespace orlo::test
