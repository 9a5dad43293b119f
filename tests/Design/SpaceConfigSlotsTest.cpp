#include "support/VirtualSlot.h"

#include <OrloProjectManager/Design/ISpaceConfig.h>
#include <OrloProjectManager/Design/SpaceConfig.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

// The destructor is the first operation and takes two places.

TEST(SpaceConfigItemSlots, standInTheOrderOfTheInterface)
{
    expectSlotsBehindDestructor(&ISpaceConfigItem::GetId, &ISpaceConfigItem::GetName, &ISpaceConfigItem::GetDescription,
                                &ISpaceConfigItem::GetType, &ISpaceConfigItem::GetArchitectureLevel, &ISpaceConfigItem::GetStructureLevel,
                                &ISpaceConfigItem::GetSubSpaces);
}

TEST(SpaceConfigSlots, standInTheOrderOfTheInterface)
{
    EXPECT_EQ(virtualSlot(&ISpaceConfig::GetVersion), 2u);
    EXPECT_EQ(virtualSlot(&ISpaceConfig::GetItems), 3u);
}

TEST(SpaceConfigItem, hasWhatItWasMadeFromAndLeavesTheVectorEmpty)
{
    std::vector<std::shared_ptr<ISpaceConfigItem>> none;
    std::vector<std::shared_ptr<ISpaceConfigItem>> children{
        std::make_shared<SpaceConfigItem>(L"child", static_cast<SpaceType>(3), L"", L"", L"", L"", std::move(none))};
    const SpaceConfigItem item(L"id", static_cast<SpaceType>(1), L"name", L"architecture", L"structure", L"description",
                               std::move(children));
    EXPECT_TRUE(children.empty()); // NOLINT(bugprone-use-after-move): promised
    EXPECT_EQ(item.GetId(), L"id");
    EXPECT_EQ(item.GetName(), L"name");
    EXPECT_EQ(item.GetDescription(), L"description");
    EXPECT_EQ(static_cast<int>(item.GetType()), 1);
    EXPECT_EQ(item.GetArchitectureLevel(), L"architecture");
    EXPECT_EQ(item.GetStructureLevel(), L"structure");
    ASSERT_EQ(item.GetSubSpaces().size(), 1u);
    EXPECT_EQ(item.GetSubSpaces()[0]->GetId(), L"child");
}

TEST(SpaceConfigItem, isCopiedWithItsChildrenShared)
{
    std::vector<std::shared_ptr<ISpaceConfigItem>> children{nullptr};
    const SpaceConfigItem item(L"id", SpaceType::Region, L"name", L"", L"", L"", std::move(children));
    const SpaceConfigItem copy = item; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.GetId(), L"id");
    EXPECT_EQ(copy.GetSubSpaces().size(), 1u);
}

} // namespace
} // namespace orlo::test
