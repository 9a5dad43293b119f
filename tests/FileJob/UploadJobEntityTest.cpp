#include "support/LogCapture.h"
#include "support/VirtualSlot.h"
#include "support/WireTest.h"

#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>

#include <gmock/gmock.h>

#include <chrono>
#include <future>

// What file and module jobs have in common.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <class Entity>
std::shared_ptr<Entity> createdAt(std::int64_t time)
{
    class Timed : public Entity
    {
    public:
        explicit Timed(std::int64_t when) { this->m_jobCreateTime = when; }
    };
    return std::make_shared<Timed>(time);
}

/// A job whose upload ends as the test wants.
class EndedJob : public UploadFileJobEntity
{
protected:
    CollaborationFileManager* fileManager() const override { return nullptr; }
};

TEST(UploadJobEntity, theKeysNameTheClassesInTheDatabase)
{
    EXPECT_EQ(UploadFileJobEntity().GetJobTypeKey(), "E6FDB37F - 39D1 - 4BDD - A8E6 - 59E881C78190");
    EXPECT_EQ(UploadModuleJobEntity().GetJobTypeKey(), "0F9C4B72 - B885 - BCD8 - 7F1F - 7BE3E9D17403");
}

TEST(UploadJobEntity, theTypesAreTwoAndFour)
{
    EXPECT_EQ(static_cast<int>(UploadFileJobEntity().GetType()), 2);
    EXPECT_EQ(static_cast<int>(UploadFileJobEntity("p", L"f", L"l", L"n", "i", "d", 1).GetType()), 2);
    EXPECT_EQ(static_cast<int>(UploadModuleJobEntity().GetType()), 4);
    EXPECT_EQ(static_cast<int>(UploadModuleJobEntity(L"m", L"f", L"s", "p", L"r", L"c", L"z", L"l", L"n").GetType()), 4);
}

TEST(UploadJobEntity, theTypeOfATemplatesJobIsThree)
{
    UploadFileJobEntity job;
    job.setTemplate(L"ZOK");
    EXPECT_EQ(static_cast<int>(job.GetType()), 3);
}

TEST(UploadJobEntity, bothClassesAreRebuiltByTheirKeys)
{
    const auto file = makeJobEntity("E6FDB37F - 39D1 - 4BDD - A8E6 - 59E881C78190");
    const auto module = makeJobEntity("0F9C4B72 - B885 - BCD8 - 7F1F - 7BE3E9D17403");
    EXPECT_NE(std::dynamic_pointer_cast<UploadFileJobEntity>(file), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<UploadModuleJobEntity>(module), nullptr);
    EXPECT_EQ(makeJobEntity("E6FDB37F-39D1-4BDD-A8E6-59E881C78190"), nullptr);
}

TEST(UploadJobEntity, aNewJobHasAnIdOfItsOwnAndWaits)
{
    const UploadFileJobEntity first;
    const UploadFileJobEntity second;
    EXPECT_NE(first.JobId(), second.JobId());
    EXPECT_EQ(first.JobId().size(), 36u);
    EXPECT_EQ(first.GetStatus(), JobState::Waiting);
    EXPECT_EQ(first.GetPriorityJob(), nullptr);
}

TEST(UploadJobEntity, theFutureIsThereFromTheStartAndWaits)
{
    const UploadFileJobEntity file("p", L"f", L"l", L"n", "i", "d", 1);
    const UploadModuleJobEntity module;
    for (const auto& future : {UploadFileJobEntity().future(), file.future(), module.future()})
        EXPECT_TRUE(future.valid());
    EXPECT_EQ(file.future().wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    EXPECT_EQ(module.future().wait_for(std::chrono::seconds(0)), std::future_status::timeout);
}

TEST(UploadJobEntity, theInterfaceTellsProjectFolderAndFile)
{
    const UploadFileJobEntity file("p-1", L"f-1", L"/a/b", L"n", "i", "d", 1);
    const IUploadFileJobEntity& upload = file;
    EXPECT_EQ(upload.GetProjectId(), "p-1");
    EXPECT_EQ(upload.GetFolderId(), L"f-1");
    EXPECT_EQ(upload.GetLocalFilePath(), L"/a/b");
}

TEST(UploadJobEntity, aCopyHasTheSameFieldsAndAFutureOfItsOwn)
{
    const LogCapture log;
    EndedJob job;
    ASSERT_TRUE(job.LoadFromJson(R"({"jobId":"j-1","cloudifyFile":{"createTime":1700000000123,"projectId":"p-1","fileName":"n",)"
                                 R"("fileId":"d-3","folderId":"f-1","localFilePath":"/a/b","dsId":"ds-4","dsVersion":7}})"));
    job.setTemplate(L"ZOK");
    const UploadFileJobEntity copy(&job);
    EXPECT_EQ(copy.ToJson(), job.ToJson());
    EXPECT_FALSE(copy.isFile());
    EXPECT_EQ(copy.GetType(), JobType::UploadFile);
    EXPECT_FALSE(job.Run());
    EXPECT_EQ(job.future().wait_for(std::chrono::seconds(0)), std::future_status::ready);
    EXPECT_EQ(copy.future().wait_for(std::chrono::seconds(0)), std::future_status::timeout);
}

TEST(UploadJobEntity, aCopyOfNothingIsLoggedAndANewEmptyJob)
{
    const LogCapture log;
    const UploadFileJobEntity job(nullptr);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::UploadFileJobEntity::UploadFileJobEntity input entity is null."));
    EXPECT_EQ(job.JobId().size(), 36u);
    EXPECT_EQ(job.GetProjectId(), "");
    EXPECT_TRUE(job.isFile());
}

template <class Entity>
void expectOrderByCreateTime()
{
    const LogCapture log;
    const auto early = createdAt<Entity>(10);
    const auto late = createdAt<Entity>(20);
    const auto asLate = createdAt<Entity>(20);
    EXPECT_TRUE(*early < *late);
    EXPECT_FALSE(*late < *early);
    EXPECT_FALSE(*late < *asLate);
    EXPECT_FALSE(*asLate < *late);
    EXPECT_FALSE(*late < *late);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(UploadJobEntity, jobsOfOneClassAreOrderedByCreateTimeAlone)
{
    expectOrderByCreateTime<UploadFileJobEntity>();
    expectOrderByCreateTime<UploadModuleJobEntity>();
}

TEST(UploadJobEntity, jobsOfTwoClassesHaveNoOrder)
{
    const LogCapture log;
    const auto file = createdAt<UploadFileJobEntity>(10);
    const auto module = createdAt<UploadModuleJobEntity>(20);
    EXPECT_FALSE(*file < *module);
    EXPECT_FALSE(*module < *file);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::UploadFileJobEntity::operator < it is not a UploadFileJobEntity object.",
                                         L"E@orlo::UploadModuleJobEntity::operator < it is not a UploadFileJobEntity object."));
}

TEST(UploadJobEntity, aFileJobWaitsForNobody)
{
    UploadFileJobEntity job;
    const auto other = std::make_shared<UploadFileJobEntity>();
    EXPECT_TRUE(job.IsCanRun({other}, {other}));
    EXPECT_EQ(job.GetPriorityJob(), nullptr);
}

template <class Entity>
void expectErrorInfoByState()
{
    Entity job;
    for (const JobState state : {JobState::Waiting, JobState::Running, JobState::Succeeded, static_cast<JobState>(9)}) {
        job.SetStatus(state);
        const ErrorCode error = job.ErrorInfo();
        EXPECT_EQ(error.GetValue(), 0);
        EXPECT_EQ(error.GetCategory(), nullptr);
    }
}

TEST(UploadJobEntity, theErrorIsEmptyUnlessTheJobHasFailed)
{
    expectErrorInfoByState<UploadFileJobEntity>();
    expectErrorInfoByState<UploadModuleJobEntity>();
}

TEST(UploadJobEntity, theErrorOfAFailedJobWaitsForTheOutcomeAndTellsIt)
{
    const LogCapture log;
    EndedJob job;
    job.SetStatus(JobState::Failed);
    auto asked = std::async(std::launch::async, [&] { return job.ErrorInfo(); });
    EXPECT_EQ(asked.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    EXPECT_FALSE(job.Run());
    ASSERT_EQ(asked.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    expectHttpError(asked.get(), exceptionValue, L"httpError", L"ICollaborationFileManager is null", 10010);
}

TEST(UploadJobEntity, theOperationsStandInTheirSlots)
{
    expectEntitySlots<UploadFileJobEntity>();
    expectEntitySlots<UploadModuleJobEntity>();
}

TEST(UploadJobEntity, theGettersOfTheUploadStandInTheirSlots)
{
    expectSlotsBehindDestructor(&IUploadFileJobEntity::GetProjectId, &IUploadFileJobEntity::GetFolderId,
                                &IUploadFileJobEntity::GetLocalFilePath);
}

} // namespace
} // namespace orlo::test
