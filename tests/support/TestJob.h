#pragma once

#include <OrloJobManager/LocalDbJobEntity.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orlo::test {

/// A job with a name, whose behaviour a test decides. Rebuilt from its row through the key "test job".
class TestJob : public LocalDbJobEntity
{
public:
    using Behaviour = std::function<bool(TestJob&)>;
    using MayRun = std::function<bool(const List& running, const List& waiting)>;

    TestJob() = default;
    explicit TestJob(std::string jobName, std::int64_t createTime = 1000);
    ~TestJob() override;

    /// What the Run of all of them does from now on; null: drops the row and ends well.
    static void behave(Behaviour behaviour);
    /// The names of those that were run, in the order of their starts.
    static std::vector<std::string> ran();
    static std::size_t ranCount();
    /// How often any was compared with another.
    static std::size_t comparisons();
    static void forgetAll();

    bool Run() override;
    bool IsCanRun(const List& running, const List& waiting) override;
    ErrorCode ErrorInfo() const override;
    std::string GetJobTypeKey() const override { return "test job"; }
    bool LoadFromJson(const std::string& text) override;
    std::string ToJson() const override;
    bool operator<(const IJobEntity& other) const override;

    void runAfter(const std::shared_ptr<IJobEntity>& other) { m_priorityJob = other; }

    std::string name;
    MayRun mayRun;
};

/// The names, sorted.
std::vector<std::string> namesOf(const IJobEntity::List& jobs);

/// Holds jobs in their Run until it is opened, at most a minute.
class Gate
{
public:
    void open();
    /// Returns: whether it was opened.
    bool wait();
    /// How many came to it.
    int arrived() const { return m_arrived; }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOpen = false;
    std::atomic<int> m_arrived{0};
};

/// A behaviour: waits at the gate, then drops the row and ends well.
TestJob::Behaviour waitAt(const std::shared_ptr<Gate>& gate);
/// All jobs behave so from now on.   Returns: their gate.
std::shared_ptr<Gate> holdJobs();

} // namespace orlo::test
