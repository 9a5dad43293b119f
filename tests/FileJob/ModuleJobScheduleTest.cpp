#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

class IdleModuleJob : public UploadModuleJobEntity
{
public:
    IdleModuleJob(const std::wstring& moduleId, std::int64_t time)
        : UploadModuleJobEntity(moduleId, L"", L"projects", "p-1", L"module", L"c-5", L"zok", L"", L"")
    {
        m_jobCreateTime = time;
    }
};

class IdleFileJob : public UploadFileJobEntity
{
public:
    explicit IdleFileJob(std::int64_t time) { m_jobCreateTime = time; }
};

std::shared_ptr<IdleModuleJob> module(const std::wstring& id, std::int64_t time = 10)
{
    return std::make_shared<IdleModuleJob>(id, time);
}

TEST(ModuleJobSchedule, waitsForAJobOfTheSameModule)
{
    const auto job = module(L"m-1");
    EXPECT_FALSE(job->IsCanRun({module(L"m-2"), module(L"m-1")}, {}));
    EXPECT_TRUE(job->IsCanRun({module(L"m-2"), module(L"M-1"), module(L"")}, {}));
    EXPECT_TRUE(job->IsCanRun({}, {module(L"m-1")})) << "one that waits is nobody's obstacle";
}

TEST(ModuleJobSchedule, namesNobodyWhereItMayNotRun)
{
    const auto job = module(L"m-1");
    const auto waiting = module(L"m-2", 20);
    EXPECT_FALSE(job->IsCanRun({module(L"m-1")}, {waiting}));
    EXPECT_EQ(job->GetPriorityJob(), nullptr);
}

TEST(ModuleJobSchedule, namesTheNewestModuleThatWaits)
{
    const auto job = module(L"m-1");
    const auto older = module(L"m-2", 20);
    const auto newest = module(L"m-3", 30);
    const auto other = module(L"m-4", 25);
    EXPECT_TRUE(job->IsCanRun({}, {older, newest, other}));
    EXPECT_EQ(job->GetPriorityJob(), newest);
}

TEST(ModuleJobSchedule, ofEquallyNewModulesNamesTheFirst)
{
    const auto job = module(L"m-1");
    const auto first = module(L"m-2", 30);
    const auto second = module(L"m-3", 30);
    EXPECT_TRUE(job->IsCanRun({}, {first, second}));
    EXPECT_EQ(job->GetPriorityJob(), first);
}

TEST(ModuleJobSchedule, namesAModuleThatIsOlderThanItself)
{
    const auto job = module(L"m-1", 90);
    const auto older = module(L"m-2", 20);
    EXPECT_TRUE(job->IsCanRun({}, {older}));
    EXPECT_EQ(job->GetPriorityJob(), older);
}

TEST(ModuleJobSchedule, ignoresFileJobs)
{
    const auto job = module(L"m-1");
    const auto file = std::make_shared<IdleFileJob>(99);
    const auto waiting = module(L"m-2", 20);
    EXPECT_TRUE(job->IsCanRun({file}, {file, waiting, file}));
    EXPECT_EQ(job->GetPriorityJob(), waiting);
}

TEST(ModuleJobSchedule, namesNobodyWhereNoModuleWaits)
{
    const auto job = module(L"m-1");
    const auto file = std::make_shared<IdleFileJob>(99);
    EXPECT_TRUE(job->IsCanRun({}, {}));
    EXPECT_TRUE(job->IsCanRun({}, {file}));
    EXPECT_EQ(job->GetPriorityJob(), nullptr);
}

TEST(ModuleJobSchedule, keepsNoJobAlive)
{
    const auto job = module(L"m-1");
    EXPECT_TRUE(job->IsCanRun({}, {module(L"m-2", 20)}));
    EXPECT_EQ(job->GetPriorityJob(), nullptr);
}

TEST(ModuleJobSchedule, putsUpWithAListThatHoldsNothing)
{
    EXPECT_TRUE(module(L"m-1")->IsCanRun({nullptr}, {nullptr}));
}

} // namespace
} // namespace orlo::test
