#include "Doors.h"

#include <cstddef>
#include <cstdint>

// DOOR is the function that this program feeds. What it throws is a finding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    orlo::fuzz::DOOR(std::string_view(reinterpret_cast<const char*>(bytes), size));
    return 0;
}
