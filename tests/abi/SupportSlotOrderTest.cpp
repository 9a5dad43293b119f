#include "support/VirtualSlot.h"

#include <BaseCommon/BaseConfigManager.h>
#include <BaseCommon/Callbacks.h>
#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/IOrloEventManager.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloJobManager/LocalDbJobEntity.h>
#include <OrloLogging/ILogManager.h>

#include <gtest/gtest.h>

// A destructor in front takes two places, so an operation that is the n-th of its class behind the destructor stands in slot n + 1.

namespace orlo::test {
namespace {

TEST(SupportSlotOrder, ofTheLogger)
{
    EXPECT_EQ(virtualSlot(&ILogManager::LogInfo), 0u);
    EXPECT_EQ(virtualSlot(&ILogManager::LogWarning), 1u);
    EXPECT_EQ(virtualSlot(&ILogManager::LogError), 2u);
    EXPECT_EQ(virtualSlot(&ILogManager::LogErrorAt), 3u);
}

TEST(SupportSlotOrder, ofTheErrorCategory)
{
    EXPECT_EQ(virtualSlot(&ErrorCategory::GetName), 2u);
    EXPECT_EQ(virtualSlot(&ErrorCategory::GetErrorMessage), 3u);
}

TEST(SupportSlotOrder, ofTheCallbacks)
{
    using Context = std::shared_ptr<OrloCallbackContext>;
    using Plain = void (IOrloCallback::*)(int, const std::wstring&, const std::string&, Context, ErrorCode&);
    using PlainOfFile = void (IOrloFileCallback::*)(int, const std::wstring&, const std::string&, Context, ErrorCode&);
    using WithBytes =
        void (IOrloFileCallback::*)(int, const std::wstring&, const std::vector<unsigned char>&, const std::string&, Context, ErrorCode&);
    EXPECT_EQ(virtualSlot<Plain>(&IOrloCallback::on_complete), 2u);
    EXPECT_EQ(virtualSlot<PlainOfFile>(&IOrloFileCallback::on_complete), 2u);
    EXPECT_EQ(virtualSlot<WithBytes>(&IOrloFileCallback::on_complete), 3u);
}

TEST(SupportSlotOrder, ofTheBridge)
{
    expectSlotsBehindDestructor(&IOrloBridge::UpsertDatasetMeta, &IOrloBridge::GetDatasetMeta, &IOrloBridge::GetSpaceConfig,
                                &IOrloBridge::GetSpaceConfigAllVersions, &IOrloBridge::GetAxisGridConfig,
                                &IOrloBridge::GetAxisGridAllVersions, &IOrloBridge::GetProjectIdByModelingId,
                                &IOrloBridge::CreateVersionByNumber, &IOrloBridge::MarkPublish,
                                &IOrloBridge::TriggerSightlineTranslateWorkerByUploadJob, &IOrloBridge::GetFamilyFileUrl);
}

TEST(SupportSlotOrder, ofTheEventBoardWhoseFourthOperationPosts)
{
    expectSlotsBehindDestructor(&IOrloEventManager::Subscribe, &IOrloEventManager::Unsubscribe, &IOrloEventManager::PostEvent);
}

TEST(SupportSlotOrder, ofTheBaseConfigurationWhoseThirdOperationReads)
{
    EXPECT_EQ(virtualSlot(&BaseConfigManager::GetDefaultRemoteFolder), 3u);
}

TEST(SupportSlotOrder, ofTheConfiguration)
{
    EXPECT_EQ(virtualSlot(&OrloConfigManager::GetServiceUrl), 2u);
    EXPECT_EQ(virtualSlot(&OrloConfigManager::httpTimeout), 3u);
}

TEST(SupportSlotOrder, ofTheJobManagerWhoseFourthOperationAddsAJob)
{
    expectSlotsBehindDestructor(&IJobManager::GetJobs, &IJobManager::GetJob, &IJobManager::AddJob, &IJobManager::WaitForIdle,
                                &IJobManager::WaitForJob, &IJobManager::RunsJobs, &IJobManager::Retry, &IJobManager::Remove,
                                &IJobManager::Pause, &IJobManager::Resume, &IJobManager::GetJobDetails);
}

TEST(SupportSlotOrder, ofTheJobEntitiesFromTheInterfaceDown)
{
    expectEntitySlots<IJobEntity>();
    expectEntitySlots<JobEntity>();
    expectEntitySlots<LocalDbJobEntity>();
}

} // namespace
} // namespace orlo::test
