#include "ModuleManager.h"

#include "../FileJob/Submission.h"
#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/ProjectTexts.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

namespace orlo {

namespace {

/// The handle of what was uploaded; null where the outcome is a failure or doesn't tell of a file.
std::shared_ptr<ICollaborationModule> uploadedModule(const PromiseData& outcome)
{
    JsonWrapper told;
    std::string fileKey;
    std::string url;
    if (outcome.success && told.Parse(utils::toString(outcome.message))) {
        told.Get("fileKey", fileKey);
        told.Get("url", url);
    }
    if (fileKey.empty() || url.empty())
        return nullptr;
    return std::make_shared<CollaborationModule>(utils::toWstring(fileKey), utils::toWstring(url));
}

} // namespace

CollaborationModule::CollaborationModule(std::wstring fileKey, std::wstring url) : m_fileKey(std::move(fileKey)), m_url(std::move(url))
{}

bool ModuleManager::GetCategories(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                                  const std::wstring& categoryTreeType, std::wstring& categories, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ModuleManager::GetCategories")).run(error, [&] {
        return retried(&OrloWebService::GetModuleCategories, error, categories, spaceType, spaceTypeParameter, resourceType,
                       categoryTreeType);
    });
}

bool ModuleManager::IsCanUpload(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& applicationType,
                                const std::wstring& md5, const std::wstring& name, const std::wstring& categoryId,
                                const std::wstring& resourceType, const std::wstring& targetModuleUid, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ModuleManager::IsCanUpload")).run(error, [&] {
        return retried(&OrloWebService::IsModuleCanUpload, error, spaceType, spaceTypeParameter, applicationType, md5, name, categoryId,
                       resourceType, targetModuleUid);
    });
}

bool ModuleManager::UploadModuleByJob(const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                                      const std::wstring& resourceType, const std::wstring& categoryId, SpecialtyType specialty,
                                      const std::wstring& moduleId, const std::wstring& localFilePath, const std::wstring& fileName,
                                      ErrorCode& error)
{
    constexpr const char* function = "orlo::ModuleManager::UploadModuleByJob";
    return CallFrame(ORLO_HERE(function)).run(error, [&] {
        const std::string space = utils::toString(spaceTypeParameter);
        // The copy keeps the file's own name: the module's is one of the service, and may be none that a file can have.
        return submitJob(ORLO_HERE(function), localFilePath, space, std::wstring(), [&](const std::wstring& copy) {
            return std::make_shared<UploadModuleJobEntity>(moduleId, std::wstring(), spaceType, space, resourceType, categoryId,
                                                           utils::LowerString(textOf(specialty)), copy, fileName);
        });
    });
}

std::shared_ptr<ICollaborationModule> ModuleManager::UploadModule(const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                                                                  const std::wstring& resourceType, const std::wstring& localPath,
                                                                  const std::wstring& fileName, const std::wstring& md5, bool gzip,
                                                                  ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ModuleManager::UploadModule")).run(error, [&] {
        auto module = uploadedModule(
            HttpClient::uploadModule(error, spaceType, spaceTypeParameter, resourceType, localPath, fileName, md5, gzip).get());
        // Intended: the line has a name that the operation once had.
        if (!module)
            log::error(L"ModuleManager::UploadModuleByArkiv 上传模块文件失败");
        return module;
    });
}

bool ModuleManager::AddModuleToProject(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const NewModule& module,
                                       std::string& resource, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ModuleManager::AddModuleToProject")).run(error, [&] {
        return retried(&OrloWebService::AddModuleToProject, error, resource, spaceType, spaceTypeParameter, module);
    });
}

} // namespace orlo
