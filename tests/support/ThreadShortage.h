#pragma once

namespace orlo::test {

/// While it lives, no thread can be made in this process.
class ThreadShortage
{
public:
    ThreadShortage();
    ~ThreadShortage();
    ThreadShortage(const ThreadShortage&) = delete;
    ThreadShortage& operator=(const ThreadShortage&) = delete;
};

} // namespace orlo::test
