#pragma once

#include "support/TempFolder.h"
#include "support/Waiting.h"

#include <BaseCommon/LivingProcesses.h>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace orlo::test {

/// Writes a file over and over until its time is later than that of all that was written before.   Returns: that time.
inline std::filesystem::file_time_type writtenNow(const std::filesystem::path& path)
{
    writeFile(path, "x");
    const auto first = std::filesystem::last_write_time(path);
    EXPECT_TRUE(waitUntil([&] {
        writeFile(path, "x");
        return std::filesystem::last_write_time(path) > first;
    }));
    const auto time = std::filesystem::last_write_time(path);
    // What is written from now on has a later time again.
    EXPECT_TRUE(waitUntil([&] {
        writeFile(path.string() + ".next", "x");
        return std::filesystem::last_write_time(path.string() + ".next") > time;
    }));
    std::filesystem::remove(path.string() + ".next");
    return time;
}

/// A process that lives at the local root of the moment until it is killed.
class LivingChild
{
public:
    /// work: what it does before the constructor returns.   then: what it does over and over behind that.
    explicit LivingChild(
        const std::function<void()>& work = [] {}, const std::function<void()>& then = [] { ::pause(); })
    {
        int ready[2];
        if (::pipe(ready) != 0)
            return;
        m_process = ::fork();
        if (m_process == 0) {
            const bool isTold = utils::tellThatProcessLives();
            work();
            if (!isTold || ::write(ready[1], "r", 1) != 1)
                ::_exit(1);
            for (;;)
                then();
        }
        ::close(ready[1]);
        char mark = 0;
        EXPECT_EQ(::read(ready[0], &mark, 1), 1);
        ::close(ready[0]);
    }
    ~LivingChild() { kill(); }
    LivingChild(const LivingChild&) = delete;
    LivingChild& operator=(const LivingChild&) = delete;

    void kill()
    {
        if (m_process <= 0)
            return;
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        m_process = -1;
    }

private:
    pid_t m_process = -1;
};

} // namespace orlo::test
