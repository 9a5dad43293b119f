#include "support/Patterns.h"
#include "support/ProjectObjectTest.h"

#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/NetworkProject/Resources/ArchiveWeb.h>
#include <OrloProjectManager/Resources/ArchivePackage.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* packagesTarget = "/archive-assignment/project/p-1/packages";
constexpr const char* versionsTarget = "/v2/search/archive-packages/versions";
constexpr const char* unitsTarget = "/search/integrate-packages/versions";
constexpr const char* codesTarget = "/integrate-packages/versions/standard/code";
constexpr const char* datasetsTarget = "/v2/versions/byids?mvd=base";

// Two packages; one of them with an older version, and a unit that both name.
constexpr const char* packagesAnswer =
    R"({"code":10000,"msg":"ok","data":[{"packageId":"pk-2","packageName":"总图","desc":"d","version":3,"receiver":"r","receiverName":"rn",)"
    R"("projectId":"p-1","createTime":"2024-03-01","sharer":"s","sharerName":"sn","status":"enable"},{"packageId":"pk-1","status":"stopped"}]})";
constexpr const char* versionsBody = R"(["pk-2","pk-1"])";
constexpr const char* versionsAnswer =
    R"({"code":10000,"data":[{"packageId":"pk-2","version":2,"content":[{"resourceId":"70","integratePackageId":"ip-7"}]},)"
    R"({"packageId":"pk-2","version":3,"content":[{"resourceId":"90","integratePackageId":"ip-9"},)"
    R"({"resourceId":"80","integratePackageId":"ip-8"}]},)"
    R"({"packageId":"pk-1","version":1,"content":[{"resourceId":"80","integratePackageId":"ip-8"}]}]})";
constexpr const char* unitsBody = R"(["ip-9","ip-8","ip-8"])";
constexpr const char* unitsAnswer =
    R"({"code":10000,"data":[{"id":90,"packageId":"ip-9","integratePackageName":"结构","datasetVersions":[6,5]},)"
    R"({"id":91,"packageId":"ip-9","datasetVersions":[99]},{"id":80,"packageId":"ip-8","integratePackageName":"机电","datasetVersions":[4]}]})";
constexpr const char* codesBody = "[80,90]";
constexpr const char* codesAnswer =
    R"({"code":10000,"data":{"vos":[{"versionId":90,"scs":[{"sk":"k","sv":"30-01"},{"sk":"k","sv":"30-02"}]}]}})";
constexpr const char* datasetsBody = "[4,6,5]";
constexpr const char* datasetsAnswer =
    R"({"data":[{"id":4,"version":1,"dataSetId":"d-4","size":7},{"id":5,"version":2,"dataSetId":"d-5","size":-3},)"
    R"({"id":6,"version":3,"dataSetId":"d-6","length":40}]})";

const std::wstring noPackages = L"E [ORLOSDK]OrloWebService::GetArchiveUnitListByArchivePackageId()未正常执行：packageId为空";
const std::wstring noUnits = L"E [ORLOSDK]OrloWebService::GetArchiveUnitVersionById()未正常执行：UnitId为空";
const std::wstring frameName = L"orlo::Project::GetArchivePackageList";

using Packages = std::vector<std::shared_ptr<IArchivePackage>>;

class ArchiveWireTest : public ProjectObjectTest
{
protected:
    void expectPackages(const std::string& answer = packagesAnswer) { server.expect("GET", packagesTarget).reply(200, answer); }
    void expectVersions(const std::string& answer = versionsAnswer, const std::string& body = versionsBody)
    {
        server.expect("POST", versionsTarget).header("Content-Type", "application/json").body(body).reply(200, answer);
    }
    void expectUnits(const std::string& answer = unitsAnswer, const std::string& body = unitsBody)
    {
        server.expect("POST", unitsTarget).header("Content-Type", "application/json").body(body).reply(200, answer);
    }
    void expectCodes(const std::string& answer = codesAnswer, const std::string& body = codesBody)
    {
        server.expect("POST", codesTarget).header("Content-Type", "application/json").body(body).reply(200, answer);
    }
    void expectDatasets(const std::string& answer = datasetsAnswer, const std::string& body = datasetsBody)
    {
        server.expect("POST", datasetsTarget).header("Content-Type", "application/json").body(body).reply(200, answer);
    }
    /// What is asked where no units were found.
    void expectTheRestForNothing()
    {
        expectCodes(R"({"code":10000,"data":{"vos":[]}})", "[]");
        expectDatasets(R"({"data":[]})", "[]");
    }

    bool get(ErrorCode& ec)
    {
        packages = {nullptr};
        const bool done = project->GetArchivePackageList(packages, ec);
        EXPECT_TRUE(done || packages.empty());
        return done;
    }
    /// The call fails, with that log and a clear ErrorCode.
    void expectFailure(const Lines& lines, const std::string& about)
    {
        log.clear();
        error.Clear();
        EXPECT_FALSE(get(error)) << about;
        server.verify();
        expectClear(error);
        EXPECT_EQ(log.lines(), lines) << about;
    }
    /// One of the two questions for versions fails with a status that isn't 200.
    void expectStatusesOf(const char* target, const char* body, const std::wstring& name, const std::function<void()>& prepare)
    {
        for (const int status : {201, 204, 302, 400, 401, 404, 429, 500, 503}) {
            prepare();
            server.expect("POST", target).body(body).reply(status, status == 204 ? "" : packagesAnswer);
            expectTheRestForNothing();
            log.clear();
            error.Clear();
            EXPECT_FALSE(get(error)) << status;
            server.verify();
            if (status < 400)
                expectClear(error);
            else // what is asked for afterwards doesn't take the reason away
                expectHttpError(error, errorStatusValue, L"HttpError", utils::toWstring(std::string(packagesAnswer)), status);
            EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]" + name + L" - code:" + std::to_wstring(status)}) << status;
        }
    }
    /// One of the questions for versions throws.
    void expectExceptionsOf(const char* target, const char* body, const std::function<void()>& prepare)
    {
        log.clear();
        error.Clear();
        prepare();
        server.expect("POST", target).body(body).reset();
        EXPECT_FALSE(get(error));
        server.verify();
        expectHttpError(error, exceptionValue, L"generic exception", resetBy(server.url()), resetCode);
        EXPECT_EQ(log.lines(), Lines{});
        error.Clear();
        prepare();
        server.expect("POST", target).body(body).reply(200, "<html>");
        EXPECT_FALSE(get(error));
        server.verify();
        expectHttpError(error, exceptionValue, L"HttpError", error.GetErrorMessage(), 5555);
        EXPECT_EQ(log.lines(), Lines{L"E@" + frameName + L" [END_API_IMPLEMENTATION][A generic exception caught] message[" +
                                     error.GetErrorMessage() + L"]"});
    }

    std::vector<ArchiveDatasetEntry> datasetsOf(std::size_t package, std::size_t unit) const
    {
        std::vector<ArchiveDatasetEntry> datasets;
        packages.at(package)->GetArchiveUnits().at(unit)->GetDatasets(datasets);
        return datasets;
    }
    std::vector<std::wstring> codesOf(std::size_t package, std::size_t unit) const
    {
        std::vector<std::wstring> codes;
        packages.at(package)->GetArchiveUnits().at(unit)->GetStandardCodes(codes);
        return codes;
    }

    Packages packages;
};

TEST_F(ArchiveWireTest, fiveQuestionsInOrderGiveTheTree)
{
    expectPackages();
    expectVersions();
    expectUnits();
    expectCodes();
    expectDatasets();
    ASSERT_TRUE(get(error));
    server.verify();
    ASSERT_EQ(packages.size(), 2u);
    EXPECT_EQ(packages[0]->GetId(), L"pk-2");
    EXPECT_EQ(packages[0]->GetName(), L"总图");
    const auto property = packages[0]->GetProperty();
    EXPECT_EQ(property->GetDesc(), L"d");
    EXPECT_EQ(property->GetVersion(), 3);
    EXPECT_EQ(property->GetReceiver(), L"r");
    EXPECT_EQ(property->GetReceiverName(), L"rn");
    EXPECT_EQ(property->GetSharer(), L"s");
    EXPECT_EQ(property->GetSharerName(), L"sn");
    EXPECT_EQ(property->GetProjectId(), L"p-1");
    EXPECT_EQ(property->GetCreateTime(), L"2024-03-01");
    EXPECT_TRUE(property->GetEnable());
    EXPECT_FALSE(packages[1]->GetProperty()->GetEnable());

    ASSERT_EQ(packages[0]->GetArchiveUnits().size(), 2u);
    const IArchiveUnit& structure = *packages[0]->GetArchiveUnits()[0];
    EXPECT_EQ(structure.GetId(), L"ip-9");
    EXPECT_EQ(structure.GetName(), L"结构");
    EXPECT_EQ(structure.GetTotalSize(), 40) << "the negative size is left out";
    const std::vector<ArchiveDatasetEntry> datasets = datasetsOf(0, 0);
    ASSERT_EQ(datasets.size(), 2u);
    EXPECT_EQ(datasets[0].datasetId, L"d-6");
    EXPECT_EQ(datasets[0].version, 3);
    EXPECT_EQ(datasets[0].versionId, 6);
    EXPECT_EQ(datasets[0].size, 40);
    EXPECT_EQ(datasets[1].datasetId, L"d-5");
    EXPECT_EQ(datasets[1].size, -3);
    EXPECT_EQ(codesOf(0, 0), (std::vector<std::wstring>{L"30-01", L"30-02"}));
    EXPECT_EQ(packages[0]->GetArchiveUnits()[1]->GetName(), L"机电");
    EXPECT_TRUE(codesOf(0, 1).empty());

    ASSERT_EQ(packages[1]->GetArchiveUnits().size(), 1u);
    EXPECT_EQ(packages[1]->GetArchiveUnits()[0]->GetId(), L"ip-8");
    EXPECT_EQ(packages[1]->GetArchiveUnits()[0]->GetTotalSize(), 7);
    expectQuiet();
}

TEST_F(ArchiveWireTest, theTreeIsBuiltAnewOnEachCall)
{
    for (int call = 0; call < 2; ++call) {
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes();
        expectDatasets();
    }
    ASSERT_TRUE(project->GetArchivePackageList(packages, error));
    const Packages first = packages;
    ASSERT_TRUE(project->GetArchivePackageList(packages));
    ASSERT_EQ(packages.size(), 2u) << "the earlier content is gone";
    EXPECT_NE(packages[0], first[0]);
    project.reset();
    EXPECT_EQ(first[0]->GetArchiveUnits().size(), 2u) << "a tree outlives its project";
    expectQuiet();
}

TEST_F(ArchiveWireTest, theShortFormFailsAlike)
{
    server.expect("GET", packagesTarget).reply(404);
    packages = {nullptr};
    EXPECT_FALSE(project->GetArchivePackageList(packages));
    EXPECT_TRUE(packages.empty());
}

TEST_F(ArchiveWireTest, anyTextIsAnIdInABody)
{
    expectPackages(R"({"code":10000,"data":[{"packageId":"包\"1"}]})");
    expectVersions(R"({"code":10000,"data":[{"packageId":"包\"1","content":[{"resourceId":"1","integratePackageId":"单\\元"}]}]})",
                   R"(["包\"1"])");
    expectUnits(R"({"code":10000,"data":[{"id":1}]})", R"(["单\\元"])");
    expectCodes(R"({"code":10000,"data":{}})", "[1]");
    expectDatasets(R"({"data":[]})", "[]");
    EXPECT_TRUE(get(error));
    ASSERT_EQ(packages.size(), 1u);
    EXPECT_EQ(packages[0]->GetArchiveUnits().size(), 1u);
    expectQuiet();
}

TEST_F(ArchiveWireTest, aPackageWithoutAnIdIsAskedForAndLeftOut)
{
    // Intended: its empty id goes along.
    expectPackages(R"({"code":10000,"data":[{"packageName":"no id"},{"packageId":"pk-1"},null]})");
    expectVersions(R"({"code":10000,"data":[{"packageId":"pk-1","content":[{"resourceId":"1","integratePackageId":"ip"}]}]})",
                   R"(["","pk-1",""])");
    expectUnits(R"({"code":10000,"data":[{"id":1}]})", R"(["ip"])");
    expectCodes(R"({"code":10000,"data":{}})", "[1]");
    expectDatasets(R"({"data":[]})", "[]");
    EXPECT_TRUE(get(error));
    ASSERT_EQ(packages.size(), 1u);
    EXPECT_EQ(packages[0]->GetId(), L"pk-1");
    expectQuiet();
}

TEST_F(ArchiveWireTest, onlyTheUnitVersionsThatAResourceNamesAreAskedAbout)
{
    expectPackages();
    expectVersions();
    expectUnits(R"({"code":10000,"data":[{"id":91,"datasetVersions":[1]},{"id":70,"datasetVersions":[2]},{"datasetVersions":[3]}]})");
    expectCodes(R"({"code":10000,"data":{}})", "[]");
    expectDatasets(R"({"data":[]})", "[]");
    EXPECT_TRUE(get(error));
    ASSERT_EQ(packages.size(), 2u);
    EXPECT_TRUE(packages[0]->GetArchiveUnits().empty());
    expectQuiet();
}

// Nothing to ask for

TEST_F(ArchiveWireTest, aProjectWithoutPackagesIsAFailureAfterTheRestWasAsked)
{
    for (const char* body : {R"({"code":10000,"data":[]})", R"({"code":10000})", R"({"code":10000,"data":{}})",
                             R"({"code":"10000","data":[{"packageId":"a"}]})", R"({"code":40300,"msg":"no","data":[{"packageId":"a"}]})",
                             R"({"data":[{"packageId":"a"}]})", R"([{"packageId":"a"}])", "7", "{}"}) {
        expectPackages(body);
        expectTheRestForNothing();
        expectFailure({noPackages}, body);
    }
}

TEST_F(ArchiveWireTest, packagesWithoutUnitsAreAFailureAfterTheRestWasAsked)
{
    for (const char* body : {R"({"code":10000,"data":[]})", R"({"code":10000,"data":[{"packageId":"pk-1","version":1}]})",
                             R"({"code":10000,"data":[{"packageId":"pk-1","content":{}}]})", R"({"code":1,"data":[]})", "[]", "{}",
                             R"({"code":10000,"data":[{"packageId":"pk-1","version":1,"content":[{"resourceId":"1"}]},)"
                             R"({"packageId":"pk-1","version":2,"content":[]}]})"}) {
        expectPackages();
        expectVersions(body);
        expectTheRestForNothing();
        expectFailure({noUnits}, body);
    }
}

TEST_F(ArchiveWireTest, unitsThatAreNotMarkedLeaveThePackagesWithoutUnits)
{
    for (const char* body : {R"({"code":10000,"data":[]})", R"({"code":1,"data":[{"id":80}]})", R"({"data":[{"id":80}]})", "[]", "{}"}) {
        expectPackages();
        expectVersions();
        expectUnits(body);
        expectTheRestForNothing();
        EXPECT_TRUE(get(error)) << body;
        ASSERT_EQ(packages.size(), 2u) << body;
        EXPECT_TRUE(packages[0]->GetArchiveUnits().empty()) << body;
    }
    expectQuiet();
}

TEST_F(ArchiveWireTest, codesThatAreNotMarkedLeaveTheUnitsWithoutCodes)
{
    for (const char* body : {R"({"code":1,"data":{"vos":[{"versionId":90,"scs":[{"sv":"x"}]}]}})", R"({"code":10000,"data":[]})", "[]"}) {
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes(body);
        expectDatasets();
        EXPECT_TRUE(get(error)) << body;
        EXPECT_TRUE(codesOf(0, 0).empty()) << body;
        EXPECT_EQ(datasetsOf(0, 0).size(), 2u) << body;
    }
    expectQuiet();
}

TEST_F(ArchiveWireTest, datasetsThatAreNoArrayLeaveTheUnitsWithoutDatasets)
{
    for (const char* body : {R"({"data":null})", R"({"data":{}})", R"({"data":[null,7,{"id":"6"}]})", R"({"code":1,"data":[]})"}) {
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes();
        expectDatasets(body);
        EXPECT_TRUE(get(error)) << body;
        EXPECT_TRUE(datasetsOf(0, 0).empty()) << body;
        EXPECT_EQ(packages[0]->GetArchiveUnits()[0]->GetTotalSize(), 0) << body;
    }
    expectQuiet();
}

TEST_F(ArchiveWireTest, anAnswerThatIsNullIsAFailureInSilence)
{
    for (const char* null : {"null", ""}) {
        expectPackages(null);
        expectFailure({}, "packages");
        expectPackages();
        expectVersions(null);
        expectTheRestForNothing();
        expectFailure({}, "versions");
        expectPackages();
        expectVersions();
        expectUnits(null);
        expectTheRestForNothing();
        expectFailure({}, "units");
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes(null);
        expectFailure({}, "codes");
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes();
        expectDatasets(null);
        expectFailure({}, "datasets");
    }
}

TEST_F(ArchiveWireTest, datasetsWithoutDataAreAFailureInSilence)
{
    for (const char* body : {"{}", R"({"code":10000})", "[]", "7"}) {
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes();
        expectDatasets(body);
        expectFailure({}, body);
    }
}

// Failures

TEST_F(ArchiveWireTest, thePackagesFailAsEveryDirectQuestionDoesAndNothingElseIsAsked)
{
    RequestingOperation list{"GET", packagesTarget, "", L"OrloWebService::GetArchivePackageListByProjectId - code:",
                             [&](ErrorCode& ec) { return get(ec); }};
    list.frame = frameName;
    list.goodAnswer = packagesAnswer;
    expectFailuresOf(list, server, log);
}

TEST_F(ArchiveWireTest, whereTheVersionsOfPackagesFailTheRestIsAskedForNothing)
{
    const auto prepare = [&] { expectPackages(); };
    expectStatusesOf(versionsTarget, versionsBody, L"OrloWebService::GetArchiveUnitListByArchivePackageId", prepare);
    expectExceptionsOf(versionsTarget, versionsBody, prepare);
}

TEST_F(ArchiveWireTest, whereTheVersionsOfUnitsFailTheRestIsAskedForNothing)
{
    const auto prepare = [&] {
        expectPackages();
        expectVersions();
    };
    expectStatusesOf(unitsTarget, unitsBody, L"OrloWebService::GetArchiveUnitVersionById", prepare);
    expectExceptionsOf(unitsTarget, unitsBody, prepare);
}

TEST_F(ArchiveWireTest, theCodesFailAsEveryDirectQuestionDoesAndNoDatasetsAreAskedFor)
{
    RequestingOperation codes{"POST", codesTarget, codesBody, L"OrloWebService::GetArchiveUnitStandardCode - code:",
                              [&](ErrorCode& ec) { return get(ec); }};
    codes.prepare = [&] {
        expectPackages();
        expectVersions();
        expectUnits();
    };
    codes.frame = frameName;
    codes.goodAnswer = codesAnswer;
    expectFailuresOf(codes, server, log);
}

TEST_F(ArchiveWireTest, theDatasetsFailAsEveryRetriedQuestionDoes)
{
    RequestingOperation datasets{"POST", datasetsTarget, datasetsBody, L"OrloWebService::GetDatasetVersionByMVD - code:",
                                 [&](ErrorCode& ec) { return get(ec); }};
    datasets.prepare = [&] {
        expectPackages();
        expectVersions();
        expectUnits();
        expectCodes();
    };
    datasets.goodAnswer = datasetsAnswer;
    expectFailuresOf(datasets, server, log);
    expectSuccessAtLast(datasets, server, log);
    EXPECT_EQ(packages.size(), 2u);
    EXPECT_EQ(datasetsOf(0, 0).size(), 2u);
}

TEST_F(ArchiveWireTest, ofTwoFailuresTheErrorCodeTellsTheFirst)
{
    expectPackages();
    server.expect("POST", versionsTarget).body(versionsBody).reply(404, "first");
    server.expect("POST", codesTarget).body("[]").reply(403, "second");
    EXPECT_FALSE(get(error));
    expectHttpError(error, errorStatusValue, L"HttpError", L"first", 404);
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]OrloWebService::GetArchiveUnitListByArchivePackageId - code:404",
                                  L"E [ORLOSDK]OrloWebService::GetArchiveUnitStandardCode - code:403"}));
}

TEST_F(ArchiveWireTest, anExceptionBehindAFailureLeavesTheFirstReason)
{
    const Lines told{L"E [ORLOSDK]OrloWebService::GetArchiveUnitListByArchivePackageId - code:404"};
    expectPackages();
    server.expect("POST", versionsTarget).body(versionsBody).reply(404, "first");
    server.expect("POST", codesTarget).body("[]").reset();
    EXPECT_FALSE(get(error));
    server.verify();
    expectHttpError(error, errorStatusValue, L"HttpError", L"first", 404);
    EXPECT_EQ(log.lines(), told);

    log.clear();
    error.Clear();
    expectPackages();
    server.expect("POST", versionsTarget).body(versionsBody).reply(404, "first");
    server.expect("POST", codesTarget).body("[]").reply(200, "<html>");
    EXPECT_FALSE(get(error));
    server.verify();
    expectHttpError(error, errorStatusValue, L"HttpError", L"first", 404);
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_EQ(log.lines()[0], told[0]);
    EXPECT_TRUE(startsWith(utils::toString(log.lines()[1]), "E@orlo::Project::GetArchivePackageList [END_API_IMPLEMENTATION]"));
}

TEST_F(ArchiveWireTest, anExceptionBehindAnEmptyAnswerIsTheReason)
{
    expectPackages(R"({"code":10000,"data":[]})");
    server.expect("POST", codesTarget).body("[]").reset();
    EXPECT_FALSE(get(error));
    expectHttpError(error, exceptionValue, L"generic exception", resetBy(server.url()), resetCode);
    EXPECT_EQ(log.lines(), Lines{noPackages});
}

TEST_F(ArchiveWireTest, aProjectWithoutAnIdIsToldInTheLogAndSendsNothing)
{
    project = projectOf(L"");
    expectFailure({L"E [ORLOSDK]OrloWebService::GetArchivePackageListByProjectId()未正常执行：projectId为空"}, "no id");
    UserSession::SignOut();
    expectFailure({L"E [ORLOSDK]OrloWebService::GetArchivePackageListByProjectId()未正常执行：projectId为空"}, "the id comes first");
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ArchiveWireTest, withoutAUserNothingIsSent)
{
    UserSession::SignOut();
    expectFailure({L"E [ORLOSDK]OrloWebService::GetArchivePackageListByProjectId()未正常执行：orloUserInfo为空"}, "no user");
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ArchiveWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    for (const std::wstring& id : {std::wstring(L"项"), std::wstring(L"p 1"), std::wstring(L"p\0001", 3)}) {
        error.Clear();
        project = projectOf(id);
        EXPECT_FALSE(get(error));
        EXPECT_EQ(error.GetValue(), exceptionValue);
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(ArchiveWireTest, anErrorOnEntryIsLoggedAndStaysWhereNothingIsAsked)
{
    const auto earlier = std::make_shared<GenericError>(L"earlier");
    error.Assign(badInputValue, earlier);
    UserSession::SignOut();
    EXPECT_FALSE(get(error));
    EXPECT_EQ(error.GetCategory(), earlier);
    EXPECT_EQ(log.lines(), (Lines{L"E@" + frameName + L" 传入的ErrorCode，已有错误存在:earlier",
                                  L"E [ORLOSDK]OrloWebService::GetArchivePackageListByProjectId()未正常执行：orloUserInfo为空"}));
}

TEST_F(ArchiveWireTest, anErrorOnEntryIsWipedByTheLastQuestion)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    expectPackages();
    expectVersions();
    expectUnits();
    expectCodes();
    expectDatasets();
    EXPECT_TRUE(get(error));
    expectClear(error);
}

TEST_F(ArchiveWireTest, anErrorOnEntryIsWipedWhereNoPackagesWereFound)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    expectPackages(R"({"code":10000,"data":[]})");
    expectTheRestForNothing();
    EXPECT_FALSE(get(error));
    expectClear(error);
    EXPECT_EQ(log.lines(), (Lines{L"E@" + frameName + L" 传入的ErrorCode，已有错误存在:earlier", noPackages}));
}

TEST_F(ArchiveWireTest, anErrorOnEntryIsReplacedByTheFirstReason)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    expectPackages();
    server.expect("POST", versionsTarget).body(versionsBody).reply(404, "first");
    expectTheRestForNothing();
    EXPECT_FALSE(get(error));
    expectHttpError(error, errorStatusValue, L"HttpError", L"first", 404);
}

TEST_F(ArchiveWireTest, aTreeThatWouldTakeAllMemoryIsAnException)
{
    std::string numbers = "5";
    std::string versions = R"({"id":5})";
    for (int i = 1; i < 3000; ++i) {
        numbers += ",5";
        versions += R"(,{"id":5})";
    }
    expectPackages();
    expectVersions();
    expectUnits(R"({"code":10000,"data":[{"id":80,"datasetVersions":[)" + numbers + "]}]}");
    expectCodes(codesAnswer, "[80]");
    expectDatasets(R"({"data":[)" + versions + "]}", "[" + numbers + "]");
    EXPECT_FALSE(get(error));
    expectHttpError(error, exceptionValue, L"HttpError", L"the archive packages hold too much", 5555);
}

} // namespace
} // namespace orlo::test
