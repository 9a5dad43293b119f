#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

namespace orlo::test {

/// The exit of a process that was killed, as ChildProcess tells it.
inline constexpr int killedExit = 1000 + SIGKILL;

/// How often hosts are killed at random instants: as often as ORLO_KILLS says, or 8 times.
inline int wantedKills()
{
    const char* const wanted = std::getenv("ORLO_KILLS");
    return wanted ? std::atoi(wanted) : 8;
}

/// Waits up to 150 milliseconds, as chance wants it.
class RandomInstants
{
public:
    std::string seed() const { return "seed " + std::to_string(m_seed); }
    void wait() { std::this_thread::sleep_for(std::chrono::microseconds(m_microseconds(m_random))); }

private:
    const unsigned m_seed = std::random_device{}();
    std::mt19937 m_random{m_seed};
    std::uniform_int_distribution<int> m_microseconds{0, 150000};
};

} // namespace orlo::test
