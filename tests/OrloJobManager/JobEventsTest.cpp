#include "JobsTest.h"

#include <future>
#include <mutex>
#include <stdexcept>

namespace orlo::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class JobEvents : public JobsTest
{
protected:
    /// One line for each event.
    void keep(const JobEvent& event)
    {
        static const char* const kinds[] = {"added", "started", "ended"};
        const std::lock_guard lock(m_mutex);
        lines.push_back(std::string(kinds[static_cast<int>(event.kind)]) + ' ' + dynamic_cast<const TestJob&>(*event.job).name + ' ' +
                        std::to_string(static_cast<int>(event.state)));
        ids.push_back(event.jobId);
        errors.push_back(event.error);
    }

    JobManagerOptions listening()
    {
        JobManagerOptions options = workers(1);
        options.onEvent = [this](const JobEvent& event) { keep(event); };
        return options;
    }

    Names lines;
    Names ids;
    std::vector<ErrorCode> errors;

private:
    std::mutex m_mutex;
};

TEST_F(JobEvents, tellOfAdditionStartAndEnd)
{
    ASSERT_TRUE(IJobManager::Start(listening()));
    TestJob::behave([](TestJob& job) { return job.remove() && job.name == "good"; });
    const auto good = submit("good");
    ASSERT_TRUE(becomesIdle());
    const auto bad = submit("bad");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop()); // all that was posted has been told then
    EXPECT_THAT(lines, ElementsAre("added good 0", "started good 1", "ended good 2", "added bad 0", "started bad 1", "ended bad 3"));
    EXPECT_THAT(ids, ElementsAre(good->JobId(), good->JobId(), good->JobId(), bad->JobId(), bad->JobId(), bad->JobId()));
    EXPECT_TRUE(errors[2].isClear());
    EXPECT_EQ(errors[5].GetValue(), error::badInput);
    EXPECT_EQ(errors[5].GetErrorMessage(), L"the job failed");
}

TEST_F(JobEvents, tellOfJobsThatWereRebuilt)
{
    saved("roof");
    ASSERT_TRUE(IJobManager::Start(listening()));
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(lines, ElementsAre("added roof 0", "started roof 1", "ended roof 2"));
}

TEST_F(JobEvents, theErrorOfAnExceptionIsItsText)
{
    ASSERT_TRUE(IJobManager::Start(listening()));
    TestJob::behave([](TestJob&) -> bool { throw std::runtime_error("out of paper"); });
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    ASSERT_THAT(errors, SizeIs(3));
    EXPECT_EQ(errors[2].GetValue(), error::exception);
    EXPECT_EQ(errors[2].GetErrorMessage(), L"out of paper");
}

TEST_F(JobEvents, aSlowCallbackHoldsNoJobUp)
{
    auto gate = std::make_shared<Gate>();
    std::atomic<int> told{0};
    JobManagerOptions options = workers(1);
    options.onEvent = [&, gate](const JobEvent&) {
        gate->wait();
        ++told;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    for (int i = 0; i < 20; ++i)
        submit("job");
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(TestJob::ranCount(), 20u);
    EXPECT_EQ(told, 0);
    gate->open();
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_EQ(told, 60);
}

TEST_F(JobEvents, aCallbackThatOutlastsStopIsLetGo)
{
    auto gate = std::make_shared<Gate>();
    auto isOver = std::make_shared<std::atomic<bool>>(false);
    JobManagerOptions options = workers(1);
    options.stopWithin = milliseconds(0);
    options.onEvent = [gate, isOver](const JobEvent& event) {
        gate->wait();
        *isOver = event.kind == JobEvent::Kind::Ended;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    EXPECT_TRUE(log.has(L"W [ORLOSDK]the callback for job events outlasts the stop of the job manager"));
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    EXPECT_TRUE(waitUntil([] { return IJobManager::Get()->RunsJobs(); })) << "the jobs themselves have ended";
    gate->open();
    EXPECT_TRUE(waitUntil([&] { return isOver->load(); }));
}

TEST_F(JobEvents, whatTheCallbackThrowsIsDropped)
{
    JobManagerOptions options = listening();
    options.onEvent = [this](const JobEvent& event) {
        keep(event);
        if (event.kind == JobEvent::Kind::Added)
            throw std::runtime_error("not now");
        if (event.kind == JobEvent::Kind::Started)
            throw 7;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(lines, SizeIs(3));
    EXPECT_THAT(log.lines(), ElementsAre(L"W [ORLOSDK]the callback for job events threw: not now",
                                         L"W [ORLOSDK]the callback for job events threw: unknown exception"));
}

TEST_F(JobEvents, theCallbackMayStopTheManager)
{
    auto result = std::make_shared<std::promise<bool>>();
    JobManagerOptions options = workers(1);
    options.onEvent = [result](const JobEvent& event) {
        if (event.kind == JobEvent::Kind::Ended)
            result->set_value(IJobManager::Stop());
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    EXPECT_FALSE(result->get_future().get()) << "the callback itself is still busy";
    EXPECT_EQ(IJobManager::Get(), nullptr);
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobEvents, aJobThatNeverGivesItsOutcomeAwayHoldsNoWorker)
{
    class Silent : public TestJob
    {
    public:
        explicit Silent(std::shared_ptr<Gate> until) : TestJob("silent"), m_until(std::move(until)) {}
        ErrorCode ErrorInfo() const override
        {
            m_until->wait();
            return {};
        }

    private:
        std::shared_ptr<Gate> m_until;
    };
    auto gate = std::make_shared<Gate>();
    ASSERT_TRUE(IJobManager::Start(listening()));
    const auto silent = std::make_shared<Silent>(gate);
    ASSERT_TRUE(silent->save());
    IJobManager::Get()->AddJob(silent);
    submit("next");
    EXPECT_TRUE(becomesIdle());
    gate->open();
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(lines, SizeIs(6));
}

} // namespace
} // namespace orlo::test
