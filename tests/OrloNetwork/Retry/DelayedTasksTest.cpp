#include "support/ProcessProbe.h"
#include "support/ThreadShortage.h"
#include "support/Threads.h"
#include "support/Waiting.h"

#include <OrloNetwork/Lifetime/WorkPermit.h>
#include <OrloNetwork/Retry/DelayedTasks.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace orlo::test {
namespace {

using http::runAfter;
using std::chrono::seconds;

/// Not counting what the first piece of work of a process makes once, cpprestsdk's pool.
std::size_t threads()
{
    const http::WorkPermit poolIsThere;
    return threadCount();
}

/// What the tasks noted down, in order.
class Notes
{
public:
    void add(const std::string& note)
    {
        const std::lock_guard lock(m_mutex);
        m_notes.push_back(note);
    }
    std::vector<std::string> all() const
    {
        const std::lock_guard lock(m_mutex);
        return m_notes;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_notes;
};

class DelayedTasksTest : public testing::Test
{
protected:
    void note(seconds pause, const std::string& text)
    {
        runAfter(pause, [notes = notes, text] { notes->add(text); });
    }
    bool waitForNotes(std::size_t count) const
    {
        return waitUntil([&] { return notes->all().size() >= count; });
    }

    std::shared_ptr<Notes> notes = std::make_shared<Notes>();
};

TEST_F(DelayedTasksTest, runsATaskNoSoonerThanAfterItsPause)
{
    const auto start = std::chrono::steady_clock::now();
    const auto ranAt = std::make_shared<std::atomic<std::chrono::steady_clock::rep>>(0);
    runAfter(seconds(1), [ranAt] { *ranAt = std::chrono::steady_clock::now().time_since_epoch().count(); });
    ASSERT_TRUE(waitUntil([&] { return *ranAt != 0; }));
    EXPECT_GE(std::chrono::steady_clock::duration(ranAt->load()), start.time_since_epoch() + seconds(1));
}

TEST_F(DelayedTasksTest, tasksOfOnePauseRunInTheOrderInWhichTheyCame)
{
    std::vector<std::string> expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back(std::to_string(i));
        note(seconds(0), expected.back());
    }
    ASSERT_TRUE(waitForNotes(100));
    EXPECT_EQ(notes->all(), expected);
}

TEST_F(DelayedTasksTest, aTaskWithAShorterPauseOvertakesOneThatWaits)
{
    note(seconds(2), "late");
    note(seconds(1), "middle");
    note(seconds(0), "early");
    ASSERT_TRUE(waitForNotes(3));
    EXPECT_EQ(notes->all(), (std::vector<std::string>{"early", "middle", "late"}));
}

TEST_F(DelayedTasksTest, itsOneThreadEndsWhenNothingIsLeft)
{
    const auto before = threads();
    for (int i = 0; i < 10; ++i)
        note(seconds(1), "task");
    EXPECT_EQ(threads(), before + 1);
    ASSERT_TRUE(waitForNotes(10));
    EXPECT_TRUE(waitUntil([&] { return threads() == before; }));
}

TEST_F(DelayedTasksTest, beginsAnewAfterItsThreadEnded)
{
    const auto before = threads();
    for (std::size_t round = 1; round <= 20; ++round) {
        note(seconds(0), "task");
        ASSERT_TRUE(waitForNotes(round));
        ASSERT_TRUE(waitUntil([&] { return threads() == before; }));
    }
}

TEST_F(DelayedTasksTest, everyOneOfManyTasksFromManyThreadsRunsOnce)
{
    const auto ran = std::make_shared<std::atomic<int>>(0);
    inThreads(8, [ran] {
        for (int i = 0; i < 1000; ++i)
            runAfter(seconds(0), [ran] { ++*ran; });
    });
    EXPECT_TRUE(waitUntil([&] { return *ran == 8000 && ran.use_count() == 1; }));
    EXPECT_EQ(*ran, 8000);
}

TEST_F(DelayedTasksTest, aTaskMayAddATask)
{
    runAfter(seconds(0), [this] { note(seconds(0), "second"); });
    EXPECT_TRUE(waitForNotes(1));
}

/// Adds a task when it goes.
class AddsAtItsEnd
{
public:
    explicit AddsAtItsEnd(std::shared_ptr<Notes> notes) : m_notes(std::move(notes)) {}
    ~AddsAtItsEnd()
    {
        runAfter(seconds(0), [notes = m_notes] { notes->add("after the end"); });
    }
    AddsAtItsEnd(const AddsAtItsEnd&) = delete;
    AddsAtItsEnd& operator=(const AddsAtItsEnd&) = delete;

private:
    std::shared_ptr<Notes> m_notes;
};

TEST_F(DelayedTasksTest, whatATaskHeldMayAddATaskWhenItGoes)
{
    runAfter(seconds(0), [held = std::make_shared<AddsAtItsEnd>(notes)] {});
    EXPECT_TRUE(waitForNotes(1));
}

TEST_F(DelayedTasksTest, aTaskThatThrowsStopsNoOther)
{
    runAfter(seconds(0), [] { throw std::runtime_error("task"); });
    note(seconds(0), "next");
    EXPECT_TRUE(waitForNotes(1));
}

TEST_F(DelayedTasksTest, withoutAThreadTheTaskIsRefusedAndTheNextOneRuns)
{
    {
        const ThreadShortage shortage;
        EXPECT_THROW(note(seconds(0), "refused"), std::system_error);
    }
    note(seconds(0), "taken");
    ASSERT_TRUE(waitForNotes(1));
    EXPECT_EQ(notes->all(), (std::vector<std::string>{"taken"}));
}

} // namespace
} // namespace orlo::test
