#pragma once

#include "VirtualSlot.h"

#include <gtest/gtest.h>

namespace orlo::test {

/// The operations of every job class stand in the same slots.
template <class Entity>
void expectEntitySlots()
{
    EXPECT_EQ(virtualSlot(&Entity::GetStatus), 2u);
    EXPECT_EQ(virtualSlot(&Entity::GetType), 3u);
    EXPECT_EQ(virtualSlot(&Entity::JobId), 4u);
    EXPECT_EQ(virtualSlot(&Entity::ErrorInfo), 5u);
    EXPECT_EQ(virtualSlot(&Entity::GetCreateTime), 6u);
    EXPECT_EQ(virtualSlot(&Entity::Run), 7u);
    EXPECT_EQ(virtualSlot(&Entity::IsCanRun), 8u);
    EXPECT_EQ(virtualSlot(&Entity::SetStatus), 9u);
    EXPECT_EQ(virtualSlot(&Entity::SetType), 10u);
    EXPECT_EQ(virtualSlot(&Entity::GetPriorityJob), 11u);
    EXPECT_EQ(virtualSlot(&Entity::remove), 12u);
    EXPECT_EQ(virtualSlot(&Entity::GetJobTypeKey), 13u);
    EXPECT_EQ(virtualSlot(&Entity::LoadFromJson), 14u);
    EXPECT_EQ(virtualSlot(&Entity::ToJson), 15u);
    EXPECT_EQ(virtualSlot(&Entity::save), 16u);
    EXPECT_EQ(virtualSlot(&Entity::operator<), 17u);
}

} // namespace orlo::test
