#pragma once

#include <LocalPlatform/LocalPlatform.h>

namespace orlo::test {

/// A platform that runs and knows the demo user.
struct DemoPlatform : platform::LocalPlatform
{
    DemoPlatform() : LocalPlatform({{}, 0, true}) { start(); }
};

} // namespace orlo::test
