#pragma once

#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace orlo::test {

/// How often hosts are killed at random instants: as often as ORLO_KILLS says, or 8 times.
inline int wantedKills()
{
    const char* const wanted = std::getenv("ORLO_KILLS");
    return wanted ? std::atoi(wanted) : 8;
}

/// Hosts pour out what they hand over until they are killed, one after the other, each within 150 milliseconds, as chance wants it.
/// Returns: what was accepted.
inline std::vector<std::string> pouredByKilled(int kills, const std::vector<std::string>& command)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random{seed};
    std::uniform_int_distribution<int> microseconds{0, 150000};
    std::vector<std::string> accepted;
    for (int i = 0; i < kills; ++i) {
        ChildProcess host(command);
        EXPECT_EQ(host.ask("start"), "yes");
        const std::string pour = "pour " + std::to_string(i) + "-";
        if (i == 0)
            accepted.push_back(host.ask(pour)); // on a slow machine the others may die before they hand anything over
        else
            host.tell(pour);
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        host.kill();
        for (const std::string& name : host.lines())
            accepted.push_back(name);
    }
    std::cout << "seed " << seed << ", ";
    return accepted;
}

} // namespace orlo::test
