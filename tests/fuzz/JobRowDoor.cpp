#include "Doors.h"
#include "Silence.h"

#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>

namespace orlo::fuzz {

namespace {

template <class Job>
void checkRow(const std::string& text)
{
    Job job;
    if (!job.LoadFromJson(text))
        return;
    const std::string written = job.ToJson();
    Job again;
    require(again.LoadFromJson(written), "a job that was written can be read");
    require(again.ToJson() == written, "a job that was read back is written as before");
    require(again.JobId() == job.JobId() && again.GetCreateTime() == job.GetCreateTime(), "a job keeps its id and its time");
    require(again.GetProjectId() == job.GetProjectId() && again.GetFolderId() == job.GetFolderId() &&
                again.GetLocalFilePath() == job.GetLocalFilePath(),
            "a job keeps its place and its file");
}

} // namespace

void jobRow(std::string_view bytes)
{
    Silence::install();
    const std::string text(bytes);
    checkRow<UploadFileJobEntity>(text);
    checkRow<UploadModuleJobEntity>(text);
}

} // namespace orlo::fuzz
