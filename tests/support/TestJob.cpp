#include "TestJob.h"

#include <BaseCommon/JsonWrapper.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace orlo::test {

namespace {

struct Record
{
    std::mutex mutex;
    TestJob::Behaviour behaviour;
    std::vector<std::string> ran;
    std::atomic<std::size_t> comparisons{0};
};

Record& record()
{
    static Record& instance = *new Record;
    return instance;
}

const JobEntityRegistration registration("test job", [] { return std::make_shared<TestJob>(); });

} // namespace

TestJob::TestJob(std::string jobName, std::int64_t createTime) : name(std::move(jobName))
{
    m_jobCreateTime = createTime;
    SetType(JobType::UploadFile);
}

TestJob::~TestJob() = default;

void TestJob::behave(Behaviour behaviour)
{
    const std::lock_guard lock(record().mutex);
    record().behaviour = std::move(behaviour);
}

std::vector<std::string> TestJob::ran()
{
    const std::lock_guard lock(record().mutex);
    return record().ran;
}

std::size_t TestJob::ranCount()
{
    const std::lock_guard lock(record().mutex);
    return record().ran.size();
}

std::size_t TestJob::comparisons()
{
    return record().comparisons;
}

void TestJob::forgetAll()
{
    behave(nullptr);
    const std::lock_guard lock(record().mutex);
    record().ran.clear();
    record().comparisons = 0;
}

bool TestJob::Run()
{
    Behaviour behaviour;
    {
        const std::lock_guard lock(record().mutex);
        record().ran.push_back(name);
        behaviour = record().behaviour;
    }
    return behaviour ? behaviour(*this) : remove();
}

bool TestJob::IsCanRun(const List& running, const List& waiting)
{
    return !mayRun || mayRun(running, waiting);
}

ErrorCode TestJob::ErrorInfo() const
{
    if (GetStatus() == JobState::Failed)
        return {error::badInput, std::make_shared<GenericError>(L"the job failed")};
    return LocalDbJobEntity::ErrorInfo();
}

bool TestJob::LoadFromJson(const std::string& text)
{
    JsonWrapper document;
    long long time = 0;
    if (!document.Parse(text) || !document.Get("jobId", m_jobId) || !document.Get("createTime", time) || !document.Get("name", name))
        return false;
    m_jobCreateTime = time;
    return true;
}

std::string TestJob::ToJson() const
{
    JsonWrapper document;
    document.Add("jobId", JobId());
    document.Add("createTime", static_cast<long long>(GetCreateTime()));
    document.Add("name", name);
    return document.ToString();
}

bool TestJob::operator<(const IJobEntity& other) const
{
    ++record().comparisons;
    return GetCreateTime() < dynamic_cast<const TestJob&>(other).GetCreateTime();
}

std::vector<std::string> namesOf(const IJobEntity::List& jobs)
{
    std::vector<std::string> names;
    for (const auto& job : jobs)
        names.push_back(dynamic_cast<const TestJob&>(*job).name);
    std::sort(names.begin(), names.end());
    return names;
}

void Gate::open()
{
    const std::lock_guard lock(m_mutex);
    m_isOpen = true;
    m_changed.notify_all();
}

bool Gate::wait()
{
    ++m_arrived;
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(60), [this] { return m_isOpen; });
}

TestJob::Behaviour waitAt(const std::shared_ptr<Gate>& gate)
{
    return [gate](TestJob& job) { return gate->wait() && job.remove(); };
}

std::shared_ptr<Gate> holdJobs()
{
    auto gate = std::make_shared<Gate>();
    TestJob::behave(waitAt(gate));
    return gate;
}

} // namespace orlo::test
