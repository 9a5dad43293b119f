#pragma once

#include "../Transfer/CollaborationFileManager.h"
#include "UploadJobEntity.h"

#include <OrloProjectManager/Resources/ITemplateManager.h>

namespace orlo {

/// What a template job needs of the template manager beyond its interface.
class ITemplateUploads
{
public:
    virtual ~ITemplateUploads() = default;
    virtual std::shared_ptr<ICollaborationFile> UploadTemplateByArkiv(const std::wstring& path, const std::wstring& folderId,
                                                                      ErrorCode& error) = 0;
    virtual bool AddTemplateToProject(const std::wstring& projectId, const std::wstring& uri, const std::wstring& name,
                                      const std::wstring& specialty, long long size, ErrorCode& error) = 0;
};

/// The upload of a file into a project folder, or of a template, as a job.
class UploadFileJobEntity : public UploadJobEntity
{
public:
    static const char* const jobTypeKey;

    UploadFileJobEntity();
    UploadFileJobEntity(std::string projectId, std::wstring folderId, std::wstring localFilePath, std::wstring fileName, std::string fileId,
                        std::string dsId, int dsVersion);
    /// A job of the same id and with the same fields, and an outcome of its own.
    explicit UploadFileJobEntity(const UploadFileJobEntity* other);
    ~UploadFileJobEntity() override;

    std::string GetJobTypeKey() const override;
    std::string ToJson() const override;
    bool operator<(const IJobEntity& other) const override;

    const std::string& GetProjectId() const override { return m_projectId; }

    /// Turns the job into that of a template. Intended: neither this nor the text is saved, so that a template job which is
    /// rebuilt after a restart takes the way of a file.
    void setTemplate(std::wstring templateText);
    bool isFile() const { return m_isFile; }

protected:
    // Where the managers come from; tests put others here.
    virtual CollaborationFileManager* fileManager() const;
    virtual ITemplateUploads* templateManager() const;

private:
    bool upload(ErrorCode& error) override;
    bool fromJsonForCloudify(const JsonWrapper& document) override;
    /// Calls `visit(key, field, words)` for each saved field in its order. words: what is logged where the field can't be read.
    template <class Self, class Visit>
    static void eachField(Self& self, const Visit& visit);
    bool uploadFile(CollaborationFileManager& files, ErrorCode& error);
    bool failUpload(const ErrorCode& error);
    bool bindToDataset(const ICollaborationFile& file, ErrorCode& error);
    bool uploadTemplate(ErrorCode& error);

    std::string m_projectId;
    std::string m_fileId;
    std::string m_dsId;
    std::wstring m_templateText;
    int m_dsVersion = -1;
    bool m_isFile = true;
    /// What a run that failed and was kept leaves for the next one of this process.
    DocumentUpload m_upload;
};

} // namespace orlo
