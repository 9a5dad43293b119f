#include "UploadDesk.h"

#include <OrloJobManager/IFileJob.h>
#include <OrloNetwork/Reachability.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

namespace session {

using namespace orlo;

namespace {

constexpr std::chrono::minutes patience{2};

} // namespace

/// Filled by the thread of the job library that tells, emptied by the one that tells the story.
class UploadDesk::Inbox
{
public:
    void put(const JobEvent& event)
    {
        const std::lock_guard lock(m_mutex);
        m_events.push_back(event);
        m_arrived.notify_one();
    }

    std::optional<JobEvent> take()
    {
        std::unique_lock lock(m_mutex);
        if (!m_arrived.wait_for(lock, patience, [this] { return !m_events.empty(); }))
            return std::nullopt;
        JobEvent event = std::move(m_events.front());
        m_events.pop_front();
        return event;
    }

    std::vector<JobEvent> takeAll()
    {
        const std::lock_guard lock(m_mutex);
        std::vector<JobEvent> all(m_events.begin(), m_events.end());
        m_events.clear();
        return all;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<JobEvent> m_events;
};

UploadDesk::UploadDesk(Story& story) : m_story(story), m_inbox(std::make_shared<Inbox>())
{
    JobManagerOptions options;
    options.onEvent = [inbox = m_inbox](const JobEvent& event) { inbox->put(event); };
    // No upload is given up because the network or the platform has a bad hour.
    options.onFailure = keepIfItMaySucceed;
    options.mayStart = http::isSignedInAndOnline;
    m_story.expect(IJobManager::Start(options), L"the job manager could not be started");
}

UploadDesk::~UploadDesk()
{
    IJobManager::Stop();
}

JobEvent UploadDesk::next(JobEvent::Kind kind)
{
    for (;;) {
        const std::optional<JobEvent> event = m_inbox->take();
        m_story.expect(event.has_value(), L"the job manager tells nothing any more");
        if (event->kind == kind)
            return *event;
    }
}

std::vector<JobEvent> UploadDesk::finish()
{
    for (const auto& job : IJobManager::Get()->GetJobs())
        m_story.expect(IJobManager::Get()->WaitForJob(job->JobId(), patience), L"the uploads don't come to an end");
    IJobManager::Stop(); // what happened before has been told when it returns
    return m_inbox->takeAll();
}

std::wstring fileNameOf(const JobEvent& event)
{
    const auto* const ofFile = dynamic_cast<const IFileJob*>(event.job.get());
    return ofFile ? ofFile->GetFileName() : L"?";
}

void sayEnd(Story& story, const JobEvent& event)
{
    const bool wentWell = event.state == JobState::Succeeded;
    story.say(fileNameOf(event) + (wentWell ? L" has been uploaded." : L" could not be uploaded: " + inWords(event.error)),
              L"JobManagerOptions::onEvent");
}

} // namespace session
