#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <numeric>
#include <vector>

namespace orlo::test {

/// The place of a virtual operation in the table of its class, as the compiler made it (Itanium ABI: a virtual destructor
/// takes two places, and a pointer to a virtual member holds its offset plus one).
template <class Member>
std::size_t virtualSlot(Member member)
{
    std::ptrdiff_t raw[2] = {};
    static_assert(sizeof member == sizeof raw);
    std::memcpy(raw, &member, sizeof raw);
    return static_cast<std::size_t>(raw[0] - 1) / sizeof(void*);
}

/// The operations of a class that has a virtual destructor in front stand one behind the other.
template <class... Members>
void expectSlotsBehindDestructor(Members... members)
{
    const std::vector<std::size_t> slots{virtualSlot(members)...};
    std::vector<std::size_t> expected(slots.size());
    std::iota(expected.begin(), expected.end(), std::size_t{2});
    EXPECT_EQ(slots, expected);
}

/// The operations of every job class stand in the same slots.
template <class Entity>
void expectEntitySlots()
{
    expectSlotsBehindDestructor(&Entity::GetStatus, &Entity::GetType, &Entity::JobId, &Entity::ErrorInfo, &Entity::GetCreateTime,
                                &Entity::Run, &Entity::IsCanRun, &Entity::SetStatus, &Entity::SetType, &Entity::GetPriorityJob,
                                &Entity::remove, &Entity::GetJobTypeKey, &Entity::LoadFromJson, &Entity::ToJson, &Entity::save,
                                &Entity::operator<);
}

} // namespace orlo::test
