#pragma once

#include <cstddef>
#include <string>

namespace orlo::bench {

/// The address of the platform that both sides of every comparison ask: a server in this process on the loopback address,
/// started at the first use and never stopped. The libraries are set up for it, with a user signed in.
const std::string& serverUrl();

/// What the signed-in user's requests carry in "Authorization".
constexpr const char* authorization = "Bearer bench-token-1";

constexpr int projectCount = 10000;
constexpr std::size_t issueCount = 5000;

} // namespace orlo::bench
