#include "UploadFileJobEntity.h"

#include "JobFields.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo {

const char* const UploadFileJobEntity::jobTypeKey = "E6FDB37F - 39D1 - 4BDD - A8E6 - 59E881C78190";

namespace {

const JobEntityRegistration fileJobRegistration(UploadFileJobEntity::jobTypeKey, [] { return std::make_shared<UploadFileJobEntity>(); });

constexpr const wchar_t* className = L"UploadFileJobEntity";

} // namespace

UploadFileJobEntity::UploadFileJobEntity() : UploadJobEntity(JobType::UploadFile)
{}

UploadFileJobEntity::UploadFileJobEntity(std::string projectId, std::wstring folderId, std::wstring localFilePath, std::wstring fileName,
                                         std::string fileId, std::string dsId, int dsVersion)
    : UploadJobEntity(JobType::UploadFile, std::move(folderId), std::move(localFilePath), std::move(fileName)),
      m_projectId(std::move(projectId)),
      m_fileId(std::move(fileId)),
      m_dsId(std::move(dsId)),
      m_dsVersion(dsVersion)
{}

UploadFileJobEntity::UploadFileJobEntity(const UploadFileJobEntity* other) : UploadFileJobEntity()
{
    if (!other) {
        log::errorAt(ORLO_HERE("orlo::UploadFileJobEntity::UploadFileJobEntity"), L"input entity is null.");
        return;
    }
    m_jobId = other->JobId();
    m_jobCreateTime = other->GetCreateTime();
    m_projectId = other->m_projectId;
    m_folderId = other->m_folderId;
    m_localFilePath = other->m_localFilePath;
    m_fileName = other->m_fileName;
    m_fileId = other->m_fileId;
    m_dsId = other->m_dsId;
    m_templateText = other->m_templateText;
    m_dsVersion = other->m_dsVersion;
    m_isFile = other->m_isFile;
}

UploadFileJobEntity::~UploadFileJobEntity() = default;

void UploadFileJobEntity::setTemplate(std::wstring templateText)
{
    m_isFile = false;
    SetType(JobType::UploadTemplate);
    m_templateText = std::move(templateText);
}

std::string UploadFileJobEntity::GetJobTypeKey() const
{
    return jobTypeKey;
}

template <class Self, class Visit>
void UploadFileJobEntity::eachField(Self& self, const Visit& visit)
{
    visit("createTime", self.m_jobCreateTime, L"parse cloudify m_jobCreateTime failed.");
    visit("projectId", self.m_projectId, L"parse cloudify m_projectId failed.");
    visit("fileName", self.m_fileName, L"parse cloudify m_fileName failed.");
    visit("fileId", self.m_fileId, L"parse cloudify m_fileId failed.");
    visit("folderId", self.m_folderId, L"parse cloudify m_folderId failed.");
    visit("localFilePath", self.m_localFilePath, L"parse cloudify m_localFilePath failed.");
    visit("dsId", self.m_dsId, L"parse cloudify m_localFilePath failed."); // with the word of the key before, on purpose
    visit("dsVersion", self.m_dsVersion, L"parse cloudify m_dsVersion failed.");
}

bool UploadFileJobEntity::fromJsonForCloudify(const JsonWrapper& document)
{
    JobFieldReader reader(document, ORLO_HERE("orlo::UploadFileJobEntity::fromJsonForCloudify"));
    eachField(*this, [&](const char* key, auto& field, const wchar_t* words) { reader.read(key, field, words); });
    return reader.good();
}

std::string UploadFileJobEntity::ToJson() const
{
    JobFields fields;
    eachField(*this, [&](const char* key, const auto& field, const wchar_t*) { fields.add(key, field); });
    return fields.toJson(JobId());
}

bool UploadFileJobEntity::operator<(const IJobEntity& other) const
{
    return isCreatedBefore(*this, other, ORLO_HERE("orlo::UploadFileJobEntity::operator <"));
}

CollaborationFileManager* UploadFileJobEntity::fileManager() const
{
    return dynamic_cast<CollaborationFileManager*>(ICollaborationFileManager::Get());
}

ITemplateUploads* UploadFileJobEntity::templateManager() const
{
    return dynamic_cast<ITemplateUploads*>(ITemplateManager::Get());
}

bool UploadFileJobEntity::upload(ErrorCode& error)
{
    CollaborationFileManager* const files = fileManager();
    if (!files)
        return missing(className, L"ICollaborationFileManager is null");
    if (!wasKept())
        m_upload = {};
    return m_isFile ? uploadFile(*files, error) : uploadTemplate(error);
}

bool UploadFileJobEntity::uploadFile(CollaborationFileManager& files, ErrorCode& error)
{
    if (!m_upload.file)
        m_upload.file = m_fileId.empty() ? files.UploadFileByArkiv(m_folderId, m_localFilePath, m_upload, error)
                                         : files.UpdateFileByArkiv(m_fileId, m_folderId, m_localFilePath, m_upload, error);
    if (!m_upload.file || (!m_dsId.empty() && !bindToDataset(*m_upload.file, error)))
        return failUpload(error);
    return succeed(L"upload file success");
}

// The error may be that of the version which was asked for all the same.
bool UploadFileJobEntity::failUpload(const ErrorCode& error)
{
    return fail(error, m_upload.failure.isClear() ? error : m_upload.failure);
}

bool UploadFileJobEntity::bindToDataset(const ICollaborationFile& file, ErrorCode& error)
{
    return IFileManager::CreateFileDatasetRelationship(m_dsId, m_dsVersion, file.GetId(), file.GetVersion(), error);
}

bool UploadFileJobEntity::uploadTemplate(ErrorCode& error)
{
    ITemplateUploads* const templates = templateManager();
    if (!templates)
        return missing(className, L"pTemplateManager is nullptr");
    const auto file = templates->UploadTemplateByArkiv(m_localFilePath, m_folderId, error);
    if (!file || !templates->AddTemplateToProject(utils::toWstring(m_projectId), utils::toWstring(file->GetId()), m_fileName,
                                                  m_templateText, file->GetVersion(), error))
        return fail(error);
    return succeed(L"Upload template success");
}

} // namespace orlo
