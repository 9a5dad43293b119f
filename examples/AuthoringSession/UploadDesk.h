#pragma once

#include "Story.h"

#include <OrloJobManager/IJobManager.h>

#include <memory>
#include <string>
#include <vector>

namespace session {

/// The job manager while it runs, and what it tells. An application has one from its start to its end.
class UploadDesk
{
public:
    /// Jobs that an earlier process left start at once.
    explicit UploadDesk(Story& story);
    ~UploadDesk();
    UploadDesk(const UploadDesk&) = delete;
    UploadDesk& operator=(const UploadDesk&) = delete;

    /// Waits for the next event of the kind, past all others.
    orlo::JobEvent next(orlo::JobEvent::Kind kind);

    /// Waits until no job is left, stops the manager, and gives all events that `next` didn't.
    std::vector<orlo::JobEvent> finish();

private:
    class Inbox;

    Story& m_story;
    std::shared_ptr<Inbox> m_inbox;
};

/// The name of the file that the job uploads.
std::wstring fileNameOf(const orlo::JobEvent& event);

/// Says how an upload ended.
void sayEnd(Story& story, const orlo::JobEvent& event);

} // namespace session
