#include "Chapters.h"
#include "LocalFiles.h"
#include "UploadDesk.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <csignal>
#include <cstdlib>

namespace session {

using namespace orlo;

namespace {

/// The user's drawings, each handed to a job of its own.
class HandOver
{
public:
    HandOver(Story& story, ICollaborationProject& project, std::wstring localFolder)
        : m_story(story),
          m_projectId(utils::toString(project.GetId())),
          m_folderId(firstFolder(story, project).GetId()),
          m_localFolder(std::move(localFolder))
    {}

    void file(const std::wstring& name, unsigned seed) const
    {
        const std::wstring path = makeFile(m_story, m_localFolder, name, drawingBytes(512 << 10, seed));
        m_story.expect(ICollaborationFileManager::UploadFileByJob(m_projectId, m_folderId, path, name), L"the job was not accepted");
        m_story.say(L"Handed over " + name, L"ICollaborationFileManager::UploadFileByJob");
    }
    void firstFile() const { file(L"立面图.dwg", 11); }
    void otherFiles() const
    {
        file(L"structure.ifc", 12);
        file(L"schedule.xlsx", 13);
    }

private:
    Story& m_story;
    std::string m_projectId;
    std::wstring m_folderId;
    std::wstring m_localFolder;
};

/// Ends the process as a power cut would: nothing is flushed, closed or told.
[[noreturn]] void endAtOnce()
{
#if defined(SIGKILL)
    std::raise(SIGKILL);
#endif
    std::_Exit(137);
}

} // namespace

void earlierJobs(Story& story)
{
    // Stopped again behind it, so that the day begins when all of that is done.
    const std::vector<JobEvent> events = UploadDesk(story).finish();
    if (events.empty())
        return;
    story.chapter(L"What an earlier session left", __FILE__);
    for (const JobEvent& event : events) {
        if (event.kind == JobEvent::Kind::Added)
            story.say(L"Still to be uploaded: " + fileNameOf(event), L"IJobManager::Start, JobManagerOptions::onEvent");
    }
    for (const JobEvent& event : events) {
        if (event.kind == JobEvent::Kind::Ended)
            sayEnd(story, event);
    }
    story.say(L"Nothing is left now.", L"IJobManager::WaitForIdle");
}

void jobs(Story& story, ICollaborationProject& project, const std::wstring& localFolder)
{
    story.chapter(L"Jobs", __FILE__);
    UploadDesk desk(story);
    const HandOver handOver(story, project, localFolder);
    handOver.firstFile();
    handOver.otherFiles();
    story.say(L"The jobs have copies of their own: the drawings may change or go.");
    for (int i = 0; i < 3; ++i) {
        const JobEvent event = desk.next(JobEvent::Kind::Ended);
        sayEnd(story, event);
        story.expect(event.state == JobState::Succeeded, L"a job failed", event.error);
    }
    showFolder(story, firstFolder(story, project), L"ICollaborationProject::GetFolders");
}

void crashAmidJobs(Story& story, ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder)
{
    story.chapter(L"Jobs, and a crash", __FILE__);
    UploadDesk desk(story);
    const HandOver handOver(story, project, localFolder);
    handOver.firstFile();
    sayEnd(story, desk.next(JobEvent::Kind::Ended));
    platform.slowUploadsDown();
    handOver.otherFiles();
    story.say(L"The upload of " + fileNameOf(desk.next(JobEvent::Kind::Started)) + L" has begun.");
    story.say(L"The process ends here, in the middle of its work.");
    endAtOnce();
}

} // namespace session
