#pragma once

#include <functional>

namespace orlo::test {

/// While it lives, the files of every database that is opened pass through here, and the steps that change or flush one are counted.
/// One of them can be made to go wrong.
class FaultyFiles
{
public:
    FaultyFiles();
    ~FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;

    /// Starts counting anew.
    void reset();
    int steps() const;
    int flushes() const;

    /// From that step on (the first is 1) the disk is full.
    void fillDiskAt(int step);
    /// At that step the process dies; a write is done by half first.
    void killAt(int step);
    /// At that step, before it is done, the thread that does it calls the function.
    void callAt(int step, std::function<void()> function);
};

} // namespace orlo::test
