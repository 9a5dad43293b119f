#include "support/Bytes.h"
#include "support/PlatformHost.h"
#include "support/Sql.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadJobEntity.h>
#include <OrloProjectManager/Resources/ITemplateManager.h>
#include <OrloProjectManager/Resources/ProjectTemplate.h>

#include <gmock/gmock.h>

// Templates from the user's disk to the platform and back, and whole projects kept as templates.
namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using platform::Fault;
using platform::FaultKind;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class TemplateSession : public testing::Test
{
protected:
    void TearDown() override { IJobManager::Stop(); }

    /// Hands a file to a job and lets it run.   Returns: the job's outcome.
    PromiseData upload(const std::string& name, const std::string& bytes, SpecialtyType specialty = SpecialtyType::ZOK)
    {
        PromiseData outcome;
        JobManagerOptions options;
        options.onEvent = [&outcome](const JobEvent& event) {
            if (event.kind == JobEvent::Kind::Ended)
                outcome = std::dynamic_pointer_cast<UploadJobEntity>(event.job)->future().get();
        };
        EXPECT_TRUE(IJobManager::Start(options));
        writeFile(place.host.folder().path("upload.dwt"), bytes);
        EXPECT_TRUE(manager.UploadTemplateByJob(utils::toWstring(name), L"p-1", place.host.folder().wide("upload.dwt"), specialty, error));
        EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
        EXPECT_TRUE(IJobManager::Stop());
        EXPECT_THAT(rows(), IsEmpty());
        EXPECT_THAT(filesBelow(place.host.folder().path("Jobs/p-1")), IsEmpty());
        return outcome;
    }
    std::vector<std::string> rows() const { return sqlTexts(place.host.folder().path("Jobs/jobs.db"), "SELECT json FROM job"); }

    std::vector<SamplePlate> plates()
    {
        std::vector<SamplePlate> all;
        EXPECT_TRUE(manager.GetAllTemplatesOfProject(L"p-1", all, error));
        return all;
    }
    bool isThere(const std::wstring& name) { return manager.IsTemplateExistedInProject(name, L"p-1", error); }

    /// A dataset that is started with a template of the project.
    std::wstring datasetWith(const std::string& plateId, const std::string& type = "DWT")
    {
        const std::string dataset = place.addDataset("塔楼");
        place.platform.change(platform::addSampleFile, {dataset, plateId, type});
        return utils::toWstring(dataset);
    }
    PromiseData download(const std::wstring& dataset) { return outcomeOf(manager.DownloadTemplateFile(dataset, L"p-1", error)); }
    /// The bytes of what came.
    std::string brought(const std::wstring& dataset)
    {
        const PromiseData outcome = download(dataset);
        EXPECT_TRUE(outcome.success) << utils::toString(outcome.message);
        return readFile(fs::u8path(utils::toString(outcome.message)));
    }
    std::vector<std::string> localTemplates() const { return filesBelow(place.host.folder().path("Templates")); }

    PlatformHost place;
    RetryLimit retries{3};
    LogCapture log;
    ErrorCode error;
    ITemplateManager& manager = *ITemplateManager::Get();
};

TEST_F(TemplateSession, aTemplateGoesUpIsListedAndComesBackForADataset)
{
    EXPECT_FALSE(isThere(L"结构"));
    const std::string bytes = incompressible(2 << 20);
    EXPECT_EQ(upload("结构", bytes).message, L"Upload template success");
    EXPECT_TRUE(isThere(L"结构"));
    EXPECT_FALSE(isThere(L"结"));

    const std::vector<SamplePlate> all = plates();
    ASSERT_THAT(all, SizeIs(1));
    EXPECT_EQ(all[0].name, L"结构");
    EXPECT_EQ(all[0].samplePlateFrom, L"From_Customize");
    EXPECT_EQ(all[0].specialty, L"ZOK");
    EXPECT_EQ(all[0].projectId, L"p-1");
    EXPECT_EQ(all[0].size, L"1") << "the number of the file's version";
    EXPECT_NE(all[0].uri, L"");
    EXPECT_NE(all[0].createTime, L"");

    const std::wstring dataset = datasetWith(utils::toString(all[0].id));
    EXPECT_EQ(brought(dataset), bytes);
    EXPECT_THAT(localTemplates(), ElementsAre(utils::toString(all[0].uri) + ".dwt"));
    const std::size_t requests = place.platform.requests().count("", "/");
    EXPECT_EQ(brought(dataset), bytes);
    EXPECT_EQ(place.platform.requests().count("", "/"), requests + 1) << "what the dataset was started with is asked for anew";
    EXPECT_FALSE(log.holds(L"signature="));
    EXPECT_FALSE(log.holds(L"token-secret-1"));
}

TEST_F(TemplateSession, aNameThatIsTakenIsRefusedAndTheFirstStays)
{
    EXPECT_TRUE(upload("结构", "first").success);
    const PromiseData second = upload("结构", "second");
    EXPECT_EQ(second.status, 10011);
    EXPECT_NE(second.message.find(L"the project has a template of that name: 结构"), std::wstring::npos);
    ASSERT_THAT(plates(), SizeIs(1));
    EXPECT_EQ(brought(datasetWith(utils::toString(plates()[0].id))), "first");
}

TEST_F(TemplateSession, thePublicLibraryComesAtOnceAndOnlyOnce)
{
    place.platform.change(platform::addStandardTemplates);
    place.platform.change(platform::addStandardTemplates);
    const std::string plate = place.platform.change(platform::addSamplePlate, {"p-1", "标准", "standard-zok"});
    ASSERT_THAT(plates(), SizeIs(1));
    EXPECT_EQ(plates()[0].samplePlateFrom, L"From_Common");
    EXPECT_EQ(plates()[0].templateId, L"standard-zok");
    const std::wstring dataset = datasetWith(plate);
    EXPECT_EQ(brought(dataset), "sheet A1; scale 1:100; unit mm; layers axis, beam, column, slab, wall\n");
    ASSERT_THAT(localTemplates(), SizeIs(1));
    EXPECT_EQ(localTemplates()[0].rfind("standard-zok-", 0), 0u);
    EXPECT_EQ(brought(dataset), "sheet A1; scale 1:100; unit mm; layers axis, beam, column, slab, wall\n");
    EXPECT_EQ(place.platform.requests().count("GET", "/structural/common/template/resources/url"), 1u);
    EXPECT_EQ(place.platform.requests().count("GET", "/blobs/"), 1u);
}

TEST_F(TemplateSession, ofADatasetWithNoneOrTwoTemplatesNothingComes)
{
    const std::wstring bare = utils::toWstring(place.addDataset("bare"));
    expectOutcome(download(bare), false, 400, L"工作单元没有配置样本。");
    const std::string plate = place.platform.change(platform::addSamplePlate, {"p-1", "n", "", "bytes"});
    const std::wstring two = datasetWith(plate);
    place.platform.change(platform::addSampleFile, {utils::toString(two), plate});
    expectOutcome(download(two), false, 400, L"response data isn't normal.");
    EXPECT_EQ(download(L"none").status, 400);
    EXPECT_EQ(error.GetValue(), errorStatusValue);
    EXPECT_THAT(localTemplates(), IsEmpty());
}

TEST_F(TemplateSession, aDownloadThatBreaksOffLeavesNoHalfFile)
{
    const std::string bytes = incompressible(3 << 20);
    place.platform.change(platform::addPublicTemplate, {"n", bytes, "ZOK", "t-2"});
    const std::string path = "/blobs/";
    const std::wstring common = datasetWith(place.platform.change(platform::addSamplePlate, {"p-1", "a", "t-2"}));
    const std::wstring own = datasetWith(place.platform.change(platform::addSamplePlate, {"p-1", "b", "", bytes}));
    for (const FaultKind kind : {FaultKind::CutBody, FaultKind::ResetAfterBytes}) {
        Fault broken;
        broken.kind = kind;
        broken.path = path;
        broken.prefix = true;
        broken.method = "GET";
        broken.calls = 8;
        broken.bytes = 2 << 20;
        const int fault = place.platform.faults().add(broken);
        EXPECT_FALSE(download(common).success);
        EXPECT_FALSE(error.isClear());
        EXPECT_THAT(localTemplates(), IsEmpty());
        expectOutcome(download(own), false, 400, L"样板文件从Arkiv下载失败");
        // What came of it stands beside its place until the last step of the transfer lets go.
        EXPECT_TRUE(waitUntil([this] { return localTemplates().empty(); }));
        EXPECT_EQ(place.platform.faults().count(fault), 8);
    }
    Fault once;
    once.kind = FaultKind::CutBody;
    once.path = path;
    once.prefix = true;
    once.bytes = 1000;
    const int fault = place.platform.faults().add(once);
    EXPECT_EQ(brought(common), bytes) << "the second attempt brings it";
    EXPECT_EQ(place.platform.faults().count(fault), 1);
    EXPECT_EQ(brought(own), bytes);
    EXPECT_TRUE(waitUntil([this] { return filesBelow(place.host.folder().path("Temp")).empty(); }));
}

TEST_F(TemplateSession, anotherUserReadsButAddsNothing)
{
    place.platform.change(platform::addUser, {"user-2", "account-2", "token-2"});
    const std::wstring dataset = datasetWith(place.platform.change(platform::addSamplePlate, {"p-1", "n", "", "bytes"}));
    UserSession::SignIn({L"user-2", L"account-2", L"token-2"});
    const PromiseData refused = upload("mine", "bytes");
    EXPECT_EQ(refused.status, 10011);
    EXPECT_NE(refused.message.find(L"the account may not write in this project"), std::wstring::npos);
    EXPECT_EQ(brought(dataset), "bytes");
}

// Intended: a job that an earlier process left doesn't know that it is one of a template. It takes the way of a file, without a folder,
// and so it fails.
TEST_F(TemplateSession, aJobOfAnEarlierProcessAddsNoTemplateAndLeavesNothing)
{
    writeFile(place.host.folder().path("upload.dwt"), "bytes");
    EXPECT_FALSE(manager.UploadTemplateByJob(L"n", L"p-1", place.host.folder().wide("upload.dwt"), SpecialtyType::ZOK, error));
    EXPECT_THAT(rows(), SizeIs(1));
    ASSERT_TRUE(IJobManager::Start({}));
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(plates(), IsEmpty());
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(filesBelow(place.host.folder().path("Jobs/p-1")), IsEmpty());
}

TEST_F(TemplateSession, aProjectIsKeptListedAndForgotten)
{
    const std::wstring id = HttpClient::createTemplate(L"p-1", L"塔楼");
    const std::wstring second = HttpClient::createTemplate(L"p-1", L"塔楼");
    ASSERT_NE(id, L"");
    EXPECT_NE(second, id);
    std::vector<ProjectTemplate> mine;
    EXPECT_TRUE(HttpClient::getProjectTemplatesOfUser(mine));
    ASSERT_THAT(mine, SizeIs(2));
    EXPECT_EQ(mine[0].id + L"|" + mine[0].templateName + L"|" + mine[0].srcProjectId, id + L"|塔楼|p-1");

    place.platform.change(platform::addUser, {"user-2", "account-2", "token-2"});
    UserSession::SignIn({L"user-2", L"account-2", L"token-2"});
    EXPECT_FALSE(HttpClient::deleteTemplate(id));
    EXPECT_EQ(HttpClient::createTemplate(L"p-1", L"mine"), L"");
    std::vector<ProjectTemplate> theirs;
    EXPECT_TRUE(HttpClient::getProjectTemplatesOfUser(theirs));
    EXPECT_THAT(theirs, IsEmpty());

    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    EXPECT_TRUE(HttpClient::deleteTemplate(id));
    EXPECT_FALSE(HttpClient::deleteTemplate(id));
    EXPECT_EQ(HttpClient::createTemplate(L"none", L"n"), L"");
    mine.clear();
    EXPECT_TRUE(HttpClient::getProjectTemplatesOfUser(mine));
    ASSERT_THAT(mine, SizeIs(1));
    EXPECT_EQ(mine[0].id, second);
}

} // namespace
} // namespace orlo::test
