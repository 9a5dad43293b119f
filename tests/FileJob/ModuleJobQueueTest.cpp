#include "support/HostSetup.h"
#include "support/LogCapture.h"
#include "support/TestJob.h"
#include "support/Waiting.h"

#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>

#include <gmock/gmock.h>

#include <map>
#include <mutex>
#include <thread>

// Module jobs in the hands of the real job manager.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Notes which modules are uploaded, by their names.
class QueuedModules : public IModuleUploads
{
public:
    std::shared_ptr<ICollaborationModule> UploadModule(const std::wstring&, const std::wstring&, const std::wstring&, const std::wstring&,
                                                       const std::wstring& fileName, const std::wstring&, bool, ErrorCode&) override
    {
        enter(fileName);
        std::this_thread::yield();
        leave(fileName);
        return nullptr;
    }
    bool AddModuleToProject(const std::wstring&, const std::wstring&, const NewModule&, std::string&, ErrorCode&) override { return false; }

    std::vector<std::wstring> uploaded() const
    {
        const std::lock_guard lock(m_mutex);
        return m_uploaded;
    }

private:
    void enter(const std::wstring& name)
    {
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(++m_running[name], 1);
        m_uploaded.push_back(name);
    }
    void leave(const std::wstring& name)
    {
        const std::lock_guard lock(m_mutex);
        --m_running[name];
    }

    mutable std::mutex m_mutex;
    std::map<std::wstring, int> m_running;
    std::vector<std::wstring> m_uploaded;
};

class QueuedModule : public UploadModuleJobEntity
{
public:
    QueuedModule(const std::wstring& moduleId, std::int64_t time, QueuedModules& modules)
        : UploadModuleJobEntity(moduleId, L"", L"projects", "p-1", L"module", L"c-5", L"zok", L"", moduleId), m_modules(modules)
    {
        m_jobCreateTime = time;
    }

protected:
    IModuleUploads* moduleManager() const override { return &m_modules; }

private:
    QueuedModules& m_modules;
};

class ModuleJobQueue : public testing::Test
{
protected:
    void TearDown() override
    {
        gate->open();
        IJobManager::Stop();
        TestJob::forgetAll();
    }
    static void start(unsigned workers)
    {
        JobManagerOptions options;
        options.workers = workers;
        ASSERT_TRUE(IJobManager::Start(options));
    }
    void submit(const std::wstring& moduleId, std::int64_t time)
    {
        const auto job = std::make_shared<QueuedModule>(moduleId, time, modules);
        ASSERT_TRUE(job->save());
        IJobManager::Get()->AddJob(job);
    }

    HostSetup host{"http://127.0.0.1:1"};
    LogCapture log;
    QueuedModules modules;
    const std::shared_ptr<Gate> gate = std::make_shared<Gate>();
};

TEST_F(ModuleJobQueue, theNewestModuleGoesFirst)
{
    TestJob::behave(waitAt(gate));
    start(1);
    IJobManager::Get()->AddJob(std::make_shared<TestJob>("blocker", 1));
    ASSERT_TRUE(waitUntil([this] { return gate->arrived() == 1; }));
    submit(L"oldest", 10);
    submit(L"newest", 30);
    submit(L"middle", 20);
    gate->open();
    ASSERT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)));
    EXPECT_THAT(modules.uploaded(), ElementsAre(L"newest", L"middle", L"oldest"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ModuleJobQueue, twoJobsOfOneModuleNeverRunTogether)
{
    start(4);
    for (int i = 0; i < 40; ++i)
        submit(L"module " + std::to_wstring(i % 3), i);
    ASSERT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)));
    EXPECT_EQ(modules.uploaded().size(), 40u);
    EXPECT_THAT(log.lines(), IsEmpty());
}

} // namespace
} // namespace orlo::test
