#include "support/Threads.h"

#include <BaseCommon/Uuid.h>
#include <OrloJobManager/GeneralInstanceCreator.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloJobManager/LocalDbJobEntity.h>

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace orlo::test {
namespace {

class Job : public LocalDbJobEntity
{
public:
    bool Run() override { return true; }
    std::string GetJobTypeKey() const override { return "A Job"; }
    bool LoadFromJson(const std::string&) override { return true; }
    std::string ToJson() const override { return "{}"; }
    bool operator<(const IJobEntity& other) const override { return GetCreateTime() < other.GetCreateTime(); }

    void runAfter(const std::shared_ptr<IJobEntity>& other) { m_priorityJob = other; }
};

// A static initialiser of another library, which may run before anything of the job library.
const int registeredEarly = 7;
const bool earlyRegistration = [] {
    GeneralInstanceCreator::Get()->setInstance(typeid(Job), const_cast<int*>(&registeredEarly));
    return true;
}();
const JobEntityRegistration earlyJob("early key", [] { return std::make_shared<Job>(); });

TEST(JobEntity, numbersItsStatesAndTypes)
{
    EXPECT_EQ(static_cast<int>(JobState::Succeeded), 2);
    EXPECT_EQ(static_cast<int>(JobState::Failed), 3);
    EXPECT_EQ(static_cast<int>(JobType::UploadFile), 2);
    EXPECT_EQ(static_cast<int>(JobType::UploadTemplate), 3);
    EXPECT_EQ(static_cast<int>(JobType::UploadModule), 4);
}

TEST(JobEntity, hasAnIdAndACreateTimeOfItsOwn)
{
    const Job first;
    const Job second;
    EXPECT_TRUE(uuid::IsValidGUID(first.JobId()));
    EXPECT_NE(first.JobId(), second.JobId());
    EXPECT_GT(first.GetCreateTime(), 1'500'000'000'000);
    EXPECT_LE(first.GetCreateTime(), second.GetCreateTime());
}

TEST(JobEntity, waitsUntilItIsToldOtherwise)
{
    Job job;
    EXPECT_EQ(job.GetStatus(), JobState::Waiting);
    EXPECT_EQ(job.GetType(), JobType::Unknown);
    job.SetStatus(JobState::Failed);
    job.SetType(JobType::UploadModule);
    EXPECT_EQ(job.GetStatus(), JobState::Failed);
    EXPECT_EQ(job.GetType(), JobType::UploadModule);
}

TEST(JobEntity, mayRunBesideAnyOtherAndTellsOfNoError)
{
    Job job;
    EXPECT_TRUE(job.IsCanRun({std::make_shared<Job>()}, {std::make_shared<Job>()}));
    EXPECT_TRUE(job.ErrorInfo().isClear());
    EXPECT_EQ(job.ErrorInfo().GetCategory(), nullptr);
}

TEST(JobEntity, twoJobsThatNameEachOtherAsFirstDoNotKeepEachOtherAlive)
{
    auto one = std::make_shared<Job>();
    auto other = std::make_shared<Job>();
    one->runAfter(other);
    other->runAfter(one);
    EXPECT_EQ(one->GetPriorityJob(), other);
    const std::weak_ptr<Job> watch = other;
    other.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(one->GetPriorityJob(), nullptr);
}

TEST(JobManager, runsTwoJobsAtOnceAndStopsWithinTenSecondsUnlessToldOtherwise)
{
    const JobManagerOptions options;
    EXPECT_EQ(options.workers, 2u);
    EXPECT_EQ(options.stopWithin, std::chrono::seconds(10));
    EXPECT_FALSE(options.onEvent);
}

TEST(GeneralInstanceCreator, takesInstancesFromStaticInitialisers)
{
    ASSERT_TRUE(earlyRegistration);
    EXPECT_EQ(GeneralInstanceCreator::Get()->getInstance(typeid(Job)), &registeredEarly);
}

TEST(GeneralInstanceCreator, keepsOneInstanceForEachType)
{
    auto* const creator = GeneralInstanceCreator::Get();
    int first = 1;
    int second = 2;
    EXPECT_EQ(creator->getInstance(typeid(float)), nullptr);
    creator->setInstance(typeid(float), &first);
    creator->setInstance(typeid(double), &second);
    EXPECT_EQ(creator->getInstance(typeid(float)), &first);
    creator->setInstance(typeid(float), &second);
    EXPECT_EQ(creator->getInstance(typeid(float)), &second);
    creator->setInstance(typeid(float), nullptr);
    EXPECT_EQ(creator->getInstance(typeid(float)), nullptr);
    EXPECT_EQ(creator->getInstance(typeid(double)), &second);
    creator->setInstance(typeid(double), nullptr);
}

TEST(GeneralInstanceCreator, servesManyThreads)
{
    auto* const creator = GeneralInstanceCreator::Get();
    int shared = 0;
    inThreads(4, [&] {
        for (int n = 0; n < 1000; ++n) {
            creator->setInstance(typeid(long), &shared);
            EXPECT_EQ(creator->getInstance(typeid(long)), &shared);
        }
    });
    creator->setInstance(typeid(long), nullptr);
}

TEST(JobRegistry, isKeptUnderTheTypeOfTheDatabaseJob)
{
    EXPECT_NE(GeneralInstanceCreator::Get()->getInstance(typeid(LocalDbJobEntity)), nullptr);
}

TEST(JobRegistry, makesAnEmptyJobOfTheClassBehindAKey)
{
    const auto made = makeJobEntity("early key");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetJobTypeKey(), "A Job");
    EXPECT_NE(makeJobEntity("early key"), made);
}

TEST(JobRegistry, knowsAKeyForAsLongAsItsRegistrationLives)
{
    EXPECT_EQ(makeJobEntity("short key"), nullptr);
    {
        const JobEntityRegistration registration("short key", [] { return std::make_shared<Job>(); });
        EXPECT_NE(makeJobEntity("short key"), nullptr);
    }
    EXPECT_EQ(makeJobEntity("short key"), nullptr);
}

TEST(JobRegistry, aTakenKeyStaysWithItsFirstOwner)
{
    {
        const JobEntityRegistration second("early key", [] { return std::shared_ptr<Job>(); });
        EXPECT_NE(makeJobEntity("early key"), nullptr);
    }
    EXPECT_NE(makeJobEntity("early key"), nullptr);
}

} // namespace
} // namespace orlo::test
