#include "UploadJobEntity.h"

#include "../Frame/StayLoaded.h"
#include "JobCopy.h"
#include "JobFields.h"

namespace orlo {

UploadJobEntity::UploadJobEntity(JobType type)
{
    stayLoaded(); // the job library has it in its queue
    SetType(type);
}

UploadJobEntity::UploadJobEntity(JobType type, std::wstring folderId, std::wstring localFilePath, std::wstring fileName)
    : UploadJobEntity(type)
{
    m_folderId = std::move(folderId);
    m_localFilePath = std::move(localFilePath);
    m_fileName = std::move(fileName);
}

UploadJobEntity::~UploadJobEntity() = default;

ErrorCode UploadJobEntity::ErrorInfo() const
{
    switch (GetStatus()) {
    case JobState::Succeeded:
        return {};
    case JobState::Failed:
        return m_outcome.asErrorCode();
    default:
        return JobEntity::ErrorInfo();
    }
}

bool UploadJobEntity::Run()
{
    m_wasCutOff = false;
    const bool succeeded = resumeExcution();
    if (m_wasCutOff)
        return false;
    if (succeeded)
        tellHost();
    remove();
    deleteJobCopy(m_localFilePath);
    return succeeded;
}

bool UploadJobEntity::LoadFromJson(const std::string& text)
{
    JsonWrapper document;
    return document.Parse(text) && document.Get(JobFields::idKey, m_jobId) && fromJsonForCloudify(document);
}

bool UploadJobEntity::resumeExcution()
{
    ErrorCode error;
    try {
        return upload(error);
    }
    catch (...) { // the reason, as far as there is one, stands in the ErrorCode
        return fail(error);
    }
}

// What a host throws at us mustn't keep the row and the copy.
void UploadJobEntity::tellHost() const
{
    try {
        announce();
    }
    catch (...) {
        log::errorAt(ORLO_HERE("orlo::UploadJobEntity::Run"), L"the host's event board threw an exception.");
    }
}

bool UploadJobEntity::succeed(const std::wstring& words)
{
    m_outcome.set(true, 200, words);
    return true;
}

// Decided here and once: what cuts the run off behind a failure has no part in it.
bool UploadJobEntity::fail(const ErrorCode& error)
{
    m_wasCutOff = isRunCutOff();
    return !m_wasCutOff && m_outcome.fail(error);
}

bool UploadJobEntity::missing(const wchar_t* name, const std::wstring& words)
{
    log::error(L"[" + std::wstring(name) + L"::resumeExcution] " + words);
    m_outcome.set(false, 10010, words);
    return false;
}

} // namespace orlo
