#include "UploadJobEntity.h"

#include "../Frame/StayLoaded.h"
#include "JobCopy.h"
#include "JobFields.h"

#include <BaseCommon/Files.h>

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
    m_isLeft = false;
    const bool succeeded = resumeExcution();
    if (m_isLeft)
        return false;
    if (succeeded)
        tellHost();
    remove();
    deleteJobCopy(m_localFilePath);
    return succeeded;
}

std::wstring UploadJobEntity::GetFileName() const
{
    return m_fileName.empty() ? utils::getFileName(m_localFilePath) : m_fileName;
}

void UploadJobEntity::Cancelled()
{
    m_outcome.cancel();
    deleteJobCopy(m_localFilePath);
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
bool UploadJobEntity::fail(const ErrorCode& error, const ErrorCode& cause)
{
    m_isLeft = isRunCutOff() || isKept(cause);
    if (m_isLeft)
        return false;
    if (!isRunCancelled() && !isCancelled(error))
        return m_outcome.fail(error);
    m_outcome.cancel();
    return false;
}

bool UploadJobEntity::isKept(const ErrorCode& cause)
{
    const bool isKept = isRunKept(cause);
    m_wasKept = m_wasKept || isKept;
    return isKept;
}

bool UploadJobEntity::missing(const wchar_t* name, const std::wstring& words)
{
    constexpr int noManager = 10010;
    log::error(L"[" + std::wstring(name) + L"::resumeExcution] " + words);
    m_isLeft = isKept(ErrorCode(error::exception, makeHttpError(L"httpError", words, noManager, 0)));
    if (!m_isLeft)
        m_outcome.set(false, noManager, words);
    return false;
}

} // namespace orlo
