#pragma once

#include "../FileJob/UploadFileJobEntity.h"

#include <OrloProjectManager/Resources/ITemplateManager.h>

namespace orlo {

class TemplateManager final : public ITemplateManager, public ITemplateUploads
{
public:
    bool UploadTemplateByJob(const std::wstring& fileName, const std::wstring& projectId, const std::wstring& localPath,
                             SpecialtyType specialty, ErrorCode& error) override;
    bool IsTemplateExistedInProject(const std::wstring& templateName, const std::wstring& projectId, ErrorCode& error) override;
    bool GetAllTemplatesOfProject(const std::wstring& projectId, std::vector<SamplePlate>& out, ErrorCode& error) override;
    std::future<PromiseData> DownloadTemplateFile(const std::wstring& datasetId, const std::wstring& projectId, ErrorCode& error) override;

    /// Uploads a file to the document store.   folderId: empty for the store of templates.
    /// Returns: the file there, known by its id, with the version and the length that the store told; empty on failure.
    std::shared_ptr<ICollaborationFile> UploadTemplateByArkiv(const std::wstring& path, const std::wstring& folderId,
                                                              ErrorCode& error) override;
    /// Makes a file of the document store a template of the project.
    bool AddTemplateToProject(const std::wstring& projectId, const std::wstring& uri, const std::wstring& name,
                              const std::wstring& specialty, long long size, ErrorCode& error) override;
};

} // namespace orlo
