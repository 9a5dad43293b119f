// The job library with ten thousand jobs: what one more costs, what a start costs, and how much memory each of them takes.

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloJobManager/LocalDbJobEntity.h>

#include <benchmark/benchmark.h>
#include <condition_variable>
#include <filesystem>
#include <malloc.h>
#include <mutex>
#include <string>
#include <vector>

namespace orlo::bench {
namespace {

constexpr int queued = 10000;

/// About as large as an upload job. Those that run wait until the measuring is over.
class QueuedJob : public LocalDbJobEntity
{
public:
    explicit QueuedJob(std::wstring path = {}) : m_path(std::move(path)) {}

    static void letRun(bool mayRun)
    {
        const std::lock_guard<std::mutex> lock(mutex());
        isOpen() = mayRun;
        changed().notify_all();
    }

    bool Run() override
    {
        std::unique_lock<std::mutex> lock(mutex());
        changed().wait(lock, [] { return isOpen(); });
        return true;
    }
    std::string GetJobTypeKey() const override { return "bench job"; }
    bool LoadFromJson(const std::string& text) override
    {
        m_jobId = text.substr(0, 36);
        m_path = utils::toWstring(text.substr(36));
        return true;
    }
    std::string ToJson() const override { return m_jobId + utils::toString(m_path); }
    bool operator<(const IJobEntity& other) const override { return GetCreateTime() < other.GetCreateTime(); }

private:
    static std::mutex& mutex()
    {
        static std::mutex instance;
        return instance;
    }
    static std::condition_variable& changed()
    {
        static std::condition_variable instance;
        return instance;
    }
    static bool& isOpen()
    {
        static bool open = false;
        return open;
    }

    std::wstring m_path;
};

const JobEntityRegistration registration("bench job", [] { return std::make_shared<QueuedJob>(); });

std::shared_ptr<QueuedJob> makeJob()
{
    return std::make_shared<QueuedJob>(
        L"/home/somebody/.local/share/Orlo/Jobs/7f0c4a52-project/1c6a0a5e-5f0e-4b8e-9d3e-6d8d4b0f6a11/滨江医院一期.model");
}

/// An empty local root, gone at the end.
class Root
{
public:
    Root() : m_path(std::filesystem::temp_directory_path() / "orlo-job-bench")
    {
        std::filesystem::remove_all(m_path);
        utils::setLocalRoot(utils::toWstring(m_path.string()));
    }
    ~Root()
    {
        utils::setLocalRoot({});
        std::filesystem::remove_all(m_path);
    }

private:
    std::filesystem::path m_path;
};

void stop()
{
    QueuedJob::letRun(true);
    IJobManager::Stop();
    QueuedJob::letRun(false);
}

void add(int count)
{
    for (int i = 0; i < count; ++i)
        IJobManager::Get()->AddJob(makeJob());
}

/// One more job, while so many wait. Without the row, whose cost is that of the disk.
void addOne(benchmark::State& state)
{
    const Root root;
    IJobManager::Start({});
    add(static_cast<int>(state.range(0)));
    for (auto _ : state)
        add(1);
    stop();
}

/// A job's row: what a host waits for when it hands a file over.
void saveOne(benchmark::State& state)
{
    const Root root;
    for (auto _ : state) {
        const auto job = makeJob();
        if (!job->save())
            return state.SkipWithError("no row");
    }
}

void startWithRows(benchmark::State& state)
{
    const Root root;
    for (int i = 0; i < queued; ++i) {
        if (!makeJob()->save())
            return state.SkipWithError("no row");
    }
    for (auto _ : state) {
        IJobManager::Start({});
        state.PauseTiming();
        if (IJobManager::Get()->GetJobs().size() < queued - 2 * static_cast<std::size_t>(state.iterations() + 1))
            state.SkipWithError("jobs are missing");
        stop();
        state.ResumeTiming();
    }
}

void memoryOfOne(benchmark::State& state)
{
    const Root root;
    IJobManager::Start({});
    double bytes = 0;
    for (auto _ : state) {
        const auto before = mallinfo2().uordblks;
        add(queued);
        bytes = static_cast<double>(mallinfo2().uordblks - before) / queued;
    }
    state.counters["bytes_per_job"] = bytes;
    stop();
}

BENCHMARK(addOne)->Name("Jobs/add")->Arg(0)->Arg(queued)->Unit(benchmark::kMicrosecond)->Iterations(1000)->Repetitions(5);
BENCHMARK(saveOne)->Name("Jobs/save")->Unit(benchmark::kMicrosecond)->UseRealTime()->Iterations(100)->Repetitions(5);
BENCHMARK(startWithRows)->Name("Jobs/startWith10000Rows")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(1);
BENCHMARK(memoryOfOne)->Name("Jobs/memory")->Iterations(1)->Repetitions(1);

} // namespace
} // namespace orlo::bench
