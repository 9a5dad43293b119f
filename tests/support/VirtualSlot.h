#pragma once

#include <cstddef>
#include <cstring>

namespace orlo::test {

/// The place of a virtual operation in the table of its class, as the compiler made it (Itanium ABI: a virtual destructor
/// takes two places, and a pointer to a virtual member holds its offset plus one).
template <typename Member>
std::size_t virtualSlot(Member member)
{
    std::ptrdiff_t raw[2] = {};
    static_assert(sizeof member == sizeof raw);
    std::memcpy(raw, &member, sizeof raw);
    return static_cast<std::size_t>(raw[0] - 1) / sizeof(void*);
}

} // namespace orlo::test
