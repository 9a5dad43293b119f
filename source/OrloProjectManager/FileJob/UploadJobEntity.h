#pragma once

#include "IUploadFileJobEntity.h"
#include "JobOutcome.h"

#include <OrloJobManager/IFileJob.h>
#include <OrloJobManager/LocalDbJobEntity.h>

namespace orlo {

class JsonWrapper;

/// What the upload jobs have in common: the private copy of a file, an outcome, and the steps around the upload itself.
class UploadJobEntity : public LocalDbJobEntity, public IUploadFileJobEntity, public IFileJob
{
public:
    ~UploadJobEntity() override;

    /// Waits for the outcome if the job has failed.
    ErrorCode ErrorInfo() const override;
    /// Uploads, then drops the row and the copy, however the upload ended. An upload that was cut off hasn't ended, nor has one that failed
    /// and is kept: it leaves both, and no outcome.
    bool Run() override;
    bool LoadFromJson(const std::string& text) override;

    const std::wstring& GetFolderId() const override { return m_folderId; }
    const std::wstring& GetLocalFilePath() const override { return m_localFilePath; }
    std::wstring GetFileName() const override;
    void Cancelled() override;

    std::shared_future<PromiseData> future() const { return m_outcome.future(); }

protected:
    explicit UploadJobEntity(JobType type);
    UploadJobEntity(JobType type, std::wstring folderId, std::wstring localFilePath, std::wstring fileName);

    /// Whether the upload went well; sets the outcome. What it throws counts as a failed step.
    virtual bool upload(ErrorCode& error) = 0;
    /// The upload went well.
    virtual void announce() const {}
    virtual bool fromJsonForCloudify(const JsonWrapper& document) = 0;

    bool succeed(const std::wstring& words);
    bool fail(const ErrorCode& error) { return fail(error, error); }
    /// cause: where the error is that of a later step, the one that the failure began with.
    bool fail(const ErrorCode& error, const ErrorCode& cause);
    /// Whether a run has failed and the job was kept.
    bool wasKept() const { return m_wasKept; }
    /// Fails for want of a manager.   name: the class of the job.
    bool missing(const wchar_t* name, const std::wstring& words);

    std::wstring m_folderId;
    std::wstring m_localFilePath;
    std::wstring m_fileName;

private:
    bool resumeExcution();
    bool isKept(const ErrorCode& cause);
    void tellHost() const;

    JobOutcome m_outcome;
    /// The last run: its row and its copy are those of the next.
    bool m_isLeft = false;
    bool m_wasKept = false;
};

/// Whether a job was created before another of its class.
template <class Entity>
bool isCreatedBefore(const Entity& job, const IJobEntity& other, const CallSite& site)
{
    if (dynamic_cast<const Entity*>(&other))
        return job.GetCreateTime() < other.GetCreateTime();
    // The words name one class for all of them, as they always have.
    log::errorAt(site, L"it is not a UploadFileJobEntity object.");
    return false;
}

} // namespace orlo
