#include "support/PlatformHost.h"
#include "support/Sql.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/IOrloEventManager.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>
#include <OrloProjectManager/Resources/IModuleManager.h>

#include <gmock/gmock.h>

#include <mutex>

// Modules handed to jobs, run by the real manager, on a platform that keeps them.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The host's event board, while it lives; told by the threads of jobs.
class EventBoard : public IOrloEventManager
{
public:
    EventBoard() { Install(this); }
    ~EventBoard() override { Install(nullptr); }

    int Subscribe(int, Listener) override { return 0; }
    bool Unsubscribe(int) override { return false; }
    void PostEvent(int eventType, const std::wstring& value) override
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::to_wstring(eventType) + L" " + value);
    }

    std::vector<std::wstring> posted() const
    {
        const std::lock_guard lock(m_mutex);
        return m_posted;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::wstring> m_posted;
};

class ModuleJobPlatform : public testing::Test
{
protected:
    ModuleJobPlatform() { place.platform.change(platform::addModuleCategory, {"projects", "p-1", "beam", "tree", "门", "", "c-5"}); }
    void TearDown() override { IJobManager::Stop(); }

    void start(unsigned workers = 2)
    {
        JobManagerOptions options;
        options.workers = workers;
        options.onEvent = [this](const JobEvent& event) {
            const std::lock_guard lock(m_mutex);
            if (event.kind == JobEvent::Kind::Ended)
                ended.push_back(event.job);
        };
        ASSERT_TRUE(IJobManager::Start(options));
    }
    void finish()
    {
        EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
        EXPECT_TRUE(IJobManager::Stop());
    }
    bool submit(const std::wstring& path, const std::wstring& name = L"木门", const std::wstring& moduleId = L"模-1",
                const std::wstring& category = L"c-5", SpecialtyType specialty = SpecialtyType::ZUTA)
    {
        return IModuleManager::Get()->UploadModuleByJob(L"projects", L"p-1", L"beam", category, specialty, moduleId, path, name, error);
    }

    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories(place.host.folder().path("Local"));
        writeFile(place.host.folder().path("Local") / std::filesystem::u8path(name), content);
        return place.host.folder().wide("Local/" + name);
    }
    /// None where no job was ever saved.
    std::vector<std::string> rows() const
    {
        const std::filesystem::path database = jobs() / "jobs.db";
        return std::filesystem::exists(database) ? sqlTexts(database, "SELECT json FROM job") : std::vector<std::string>();
    }
    std::vector<std::string> copies() const { return filesBelow(jobs() / "p-1"); }
    std::filesystem::path jobs() const { return place.host.folder().path("Jobs"); }

    std::vector<platform::StoredModule> modules() const { return place.platform.ask(platform::storedModules); }
    std::string bytesOf(const platform::StoredModule& module) const { return place.platform.ask(platform::contentOf, module.fileKey); }
    static std::wstring eventOf(const platform::StoredModule& module, const std::wstring& moduleId = L"模-1")
    {
        return L"4 module_" + moduleId + L"_" + utils::toWstring(module.id) + L"&" + std::to_wstring(module.version);
    }
    PromiseData outcome() const { return std::dynamic_pointer_cast<UploadJobEntity>(ended.at(0))->future().get(); }

    PlatformHost place;
    RetryLimit retries{3};
    LogCapture log;
    EventBoard board;
    ErrorCode error;
    std::vector<std::shared_ptr<IJobEntity>> ended;

private:
    std::mutex m_mutex;
};

TEST_F(ModuleJobPlatform, anUploadBecomesAModuleAndTheHostIsTold)
{
    const std::string bytes = incompressible(300000);
    start();
    EXPECT_TRUE(submit(localFile("门.vmd", bytes)));
    expectClear(error);
    finish();
    ASSERT_THAT(modules(), SizeIs(1));
    const platform::StoredModule module = modules()[0];
    EXPECT_EQ(module.version, 1);
    EXPECT_EQ(module.categoryId, "c-5");
    EXPECT_EQ(module.name, "木门");
    EXPECT_EQ(module.applicationType, "zuta");
    EXPECT_EQ(bytesOf(module), bytes);
    EXPECT_THAT(board.posted(), ElementsAre(eventOf(module)));
    expectOutcome(outcome(), true, 200, L"Upload Module success");
    EXPECT_EQ(ended.at(0)->GetType(), JobType::UploadModule);
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, aSecondUploadOfANameIsItsNextVersion)
{
    start();
    EXPECT_TRUE(submit(localFile("门.vmd", "first")));
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
    EXPECT_TRUE(submit(localFile("门.vmd", "the second")));
    finish();
    ASSERT_THAT(modules(), SizeIs(2));
    EXPECT_EQ(modules()[0].id, modules()[1].id);
    EXPECT_EQ(modules()[1].version, 2);
    EXPECT_EQ(bytesOf(modules()[1]), "the second");
    EXPECT_THAT(board.posted(), ElementsAre(eventOf(modules()[0]), eventOf(modules()[1])));
}

TEST_F(ModuleJobPlatform, withoutANameTheModuleHasThatOfTheFileLessItsExtension)
{
    start();
    EXPECT_TRUE(submit(localFile("木门.v2.vmd", "bytes"), L""));
    finish();
    ASSERT_THAT(modules(), SizeIs(1));
    EXPECT_EQ(modules()[0].name, "木门.v2");
}

TEST_F(ModuleJobPlatform, aJobOwnsACopyThatHasTheFilesOwnName)
{
    EXPECT_FALSE(submit(localFile("门.vmd", "bytes")));
    EXPECT_THAT(copies(), ElementsAre(testing::EndsWith("/门.vmd")));
}

TEST_F(ModuleJobPlatform, whatIsSubmittedWithoutAManagerIsSavedAndUploadedByTheNext)
{
    EXPECT_FALSE(submit(localFile("门.vmd", "bytes")));
    EXPECT_TRUE(log.has(L"E@orlo::ModuleManager::UploadModuleByJob pMgr is null"));
    expectClear(error);
    ASSERT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(
        rows()[0],
        testing::AllOf(testing::HasSubstr(R"("moduleId":"模-1","spaceType":"projects","spaceTypeParameter":"p-1","resourceType":"beam",)"
                                          R"("categoryId":"c-5","fileName":"木门","folderId":"","localFilePath":")"),
                       testing::EndsWith(R"(/门.vmd","specialty":"zuta"}})")));
    std::filesystem::remove(place.host.folder().path("Local/门.vmd"));
    start();
    finish();
    ASSERT_THAT(modules(), SizeIs(1));
    EXPECT_EQ(bytesOf(modules()[0]), "bytes");
    EXPECT_THAT(board.posted(), ElementsAre(eventOf(modules()[0])));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, aSpecialtyGoesOutAsItsNameInLowerCase)
{
    const std::vector<std::pair<SpecialtyType, std::string>> texts{
        {SpecialtyType::ZOK, "zok"}, {SpecialtyType::ZIM, "zim"},         {SpecialtyType::ZUTA, "zuta"},
        {SpecialtyType::ZEB, "zeb"}, {SpecialtyType::Unknown, "unknown"}, {static_cast<SpecialtyType>(9), "unknown"}};
    start(1);
    for (const auto& [specialty, text] : texts) {
        EXPECT_TRUE(submit(localFile("门.vmd", "bytes"), L"", L"模-1", L"c-5", specialty));
        EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
        EXPECT_EQ(modules().back().applicationType, text);
    }
}

TEST_F(ModuleJobPlatform, aRefusalOfTheServiceFailsTheJobInItsWord)
{
    start();
    EXPECT_TRUE(submit(localFile("门.vmd", "bytes"), L"木门", L"模-1", L"no such category"));
    finish();
    EXPECT_THAT(modules(), IsEmpty());
    expectOutcome(outcome(), false, 10011, L"上传文件失败：category_not_found");
    expectHttpError(ended.at(0)->ErrorInfo(), exceptionValue, L"httpError", L"上传文件失败：category_not_found", 10011);
    EXPECT_THAT(board.posted(), IsEmpty());
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, anEmptyFileFailsTheJobWithoutARequest)
{
    const std::wstring file = localFile("空.vmd", "");
    place.platform.requests().clear();
    start();
    EXPECT_TRUE(submit(file));
    finish();
    expectOutcome(outcome(), false, 10011, L"上传文件失败：");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]ModuleManager::UploadModuleByArkiv 上传模块文件失败"));
    EXPECT_EQ(place.platform.requests().count("", ""), 0u);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, whatMayPassIsTriedAgainAndTheModuleIsThereOnce)
{
    const auto strike = [&](const char* path, platform::FaultKind kind, bool carryOut) {
        platform::Fault fault;
        fault.kind = kind;
        fault.path = path;
        fault.prefix = true;
        fault.carryOut = carryOut;
        fault.calls = 1;
        place.platform.faults().add(fault);
    };
    const RetryLimit three{3};
    strike("/projects/p-1/types/beam/files/", platform::FaultKind::Status, false);
    strike("/blobs/", platform::FaultKind::ResetBeforeAnswer, true);
    strike("/projects/p-1/types/module/vmd_files", platform::FaultKind::ResetBeforeAnswer, true);
    start();
    EXPECT_TRUE(submit(localFile("门.vmd", "bytes")));
    finish();
    ASSERT_THAT(modules(), SizeIs(1)) << "the answer of the first registering was lost";
    EXPECT_THAT(board.posted(), ElementsAre(eventOf(modules()[0])));
}

TEST_F(ModuleJobPlatform, jobsOfOneModuleGoOneAfterTheOther)
{
    start(4);
    for (int i = 0; i < 12; ++i)
        EXPECT_TRUE(submit(localFile("门" + std::to_string(i) + ".vmd", "bytes " + std::to_string(i))));
    finish();
    ASSERT_THAT(modules(), SizeIs(12));
    for (const platform::StoredModule& module : modules())
        EXPECT_EQ(module.id, modules()[0].id);
    EXPECT_EQ(modules().back().version, 12);
    EXPECT_THAT(board.posted(), SizeIs(12));
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, aFileThatIsNotThereIsRefused)
{
    start();
    EXPECT_FALSE(submit(place.host.folder().wide("Local/missing.vmd")));
    EXPECT_TRUE(log.has(L"E@orlo::ModuleManager::UploadModuleByJob copy file failed"));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, aSpaceThatLeadsOutOfTheCopiesIsRefused)
{
    const std::wstring file = localFile("门.vmd", "bytes");
    for (const wchar_t* space : {L"..", L"../p-1", L"a/../..", L"jobs.db"}) {
        EXPECT_FALSE(
            IModuleManager::Get()->UploadModuleByJob(L"projects", space, L"beam", L"c-5", SpecialtyType::ZOK, L"m", file, L"", error));
        EXPECT_TRUE(log.has(L"E@orlo::ModuleManager::UploadModuleByJob copy file failed")) << utils::toString(std::wstring(space));
        log.clear();
    }
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(ModuleJobPlatform, anEarlierErrorIsLoggedAndHoldsNothingUp)
{
    start();
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    EXPECT_TRUE(submit(localFile("门.vmd", "bytes")));
    finish();
    EXPECT_TRUE(log.has(L"E@orlo::ModuleManager::UploadModuleByJob 传入的ErrorCode，已有错误存在:earlier"));
    EXPECT_THAT(modules(), SizeIs(1));
}

TEST_F(ModuleJobPlatform, aRunThatStopCutsOffIsRepeatedByTheNextStart)
{
    platform::Fault stall;
    stall.kind = platform::FaultKind::Delay;
    stall.path = "/projects/p-1/types/module/vmd_files";
    stall.delayMilliseconds = 60000;
    const int fault = place.platform.faults().add(stall);
    JobManagerOptions impatient;
    impatient.stopWithin = std::chrono::milliseconds(1);
    ASSERT_TRUE(IJobManager::Start(impatient));
    EXPECT_TRUE(submit(localFile("门.vmd", "bytes")));
    ASSERT_TRUE(waitUntil([&] { return place.platform.faults().count(fault) == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    EXPECT_THAT(board.posted(), IsEmpty());
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(copies(), SizeIs(1));
    start();
    finish();
    ASSERT_THAT(modules(), SizeIs(1));
    EXPECT_THAT(board.posted(), ElementsAre(eventOf(modules()[0])));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(ModuleJobPlatform, noSecretIsLogged)
{
    start();
    EXPECT_TRUE(submit(localFile("门.vmd", "bytes")));
    finish();
    EXPECT_THAT(modules(), SizeIs(1));
    EXPECT_FALSE(log.holds(L"token-secret-1"));
    EXPECT_FALSE(log.holds(L"signature="));
}

} // namespace
} // namespace orlo::test
