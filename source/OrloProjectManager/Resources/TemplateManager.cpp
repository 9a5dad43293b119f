#include "TemplateManager.h"

#include "../FileJob/Submission.h"
#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/ProjectTexts.h"
#include "../NetworkProject/Resources/TemplateWeb.h"
#include "../Transfer/CollaborationFileManager.h"
#include "TemplateDownload.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo {

namespace {

std::shared_ptr<ICollaborationFile> failedTemplateUpload()
{
    log::error(L"TemplateManager::UploadTemplateByArkiv 上传样板文件失败");
    return nullptr;
}

} // namespace

bool TemplateManager::UploadTemplateByJob(const std::wstring& fileName, const std::wstring& projectId, const std::wstring& localPath,
                                          SpecialtyType specialty, ErrorCode& error)
{
    constexpr const char* function = "orlo::TemplateManager::UploadTemplateByJob";
    return CallFrame(ORLO_HERE(function)).run(error, [&] {
        const std::string project = utils::toString(projectId);
        return submitJob(ORLO_HERE(function), localPath, project, std::wstring(), [&](const std::wstring& copy) {
            const auto job =
                std::make_shared<UploadFileJobEntity>(project, std::wstring(), copy, fileName, std::string(), std::string(), -1);
            job->setTemplate(textOf(specialty));
            return job;
        });
    });
}

bool TemplateManager::IsTemplateExistedInProject(const std::wstring& templateName, const std::wstring& projectId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::TemplateManager::IsTemplateExistedInProject")).run(error, [&] {
        return retried(&OrloWebService::IsTemplateExistedInProject, error, templateName, projectId);
    });
}

bool TemplateManager::GetAllTemplatesOfProject(const std::wstring& projectId, std::vector<SamplePlate>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::TemplateManager::GetAllTemplatesOfProject")).run(error, [&] {
        return retried(&OrloWebService::GetAllTemplatesOfProject, error, out, projectId);
    });
}

std::future<PromiseData> TemplateManager::DownloadTemplateFile(const std::wstring& datasetId, const std::wstring& projectId,
                                                               ErrorCode& error)
{
    return downloadTemplateFile(datasetId, projectId, error);
}

std::shared_ptr<ICollaborationFile> TemplateManager::UploadTemplateByArkiv(const std::wstring& path, const std::wstring& folderId,
                                                                           ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::TemplateManager::UploadTemplateByArkiv")).run(error, [&]() -> std::shared_ptr<ICollaborationFile> {
        const PromiseData uploaded = IFileManager::UploadFileByArkiv(path, L"", L"", folderId, error).get();
        if (!uploaded.success)
            return failedTemplateUpload();
        const http::ORLOHTTPPayloadDatasetVersion version = documentVersion(uploaded.message);
        if (version.dataSetSourceFile.empty() || version.version < 0)
            return failedTemplateUpload();
        return std::make_shared<CollaborationFile>(utils::toString(version.dataSetSourceFile), version);
    });
}

bool TemplateManager::AddTemplateToProject(const std::wstring& projectId, const std::wstring& uri, const std::wstring& name,
                                           const std::wstring& specialty, long long size, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::TemplateManager::AddTemplateToProject")).run(error, [&] {
        return retried(&OrloWebService::AddTemplateToProject, error, projectId, uri, name, specialty, size);
    });
}

} // namespace orlo
