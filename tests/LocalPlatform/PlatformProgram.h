#pragma once

#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace orlo::platform::test {

/// The program as a child process.
class PlatformProgram : public orlo::test::ChildProcess
{
public:
    explicit PlatformProgram(const std::vector<std::string>& arguments) : ChildProcess(command(arguments)) {}

    /// The address in its first line.
    std::string address()
    {
        const std::string words = "listening on ";
        const std::string first = readLine();
        EXPECT_EQ(first.compare(0, words.size() + 17, words + "http://127.0.0.1:"), 0) << first;
        return first.substr(std::min(words.size(), first.size()));
    }
    /// Returns: its end after the signal.
    int end(int number)
    {
        signal(number);
        return wait();
    }

private:
    static std::vector<std::string> command(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), ORLO_LOCAL_PLATFORM_PROGRAM);
        return arguments;
    }
};

} // namespace orlo::platform::test
