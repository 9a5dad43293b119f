#pragma once

#include "../FileJob/UploadModuleJobEntity.h"

#include <OrloProjectManager/Resources/IModuleManager.h>

namespace orlo {

class CollaborationModule final : public ICollaborationModule
{
public:
    CollaborationModule(std::wstring fileKey, std::wstring url);

    std::wstring GetFileKey() const override { return m_fileKey; }
    std::wstring GetUrl() const override { return m_url; }

private:
    std::wstring m_fileKey;
    std::wstring m_url;
};

class ModuleManager final : public IModuleManager, public IModuleUploads
{
public:
    bool GetCategories(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                       const std::wstring& categoryTreeType, std::wstring& categories, ErrorCode& error) override;
    bool IsCanUpload(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& applicationType,
                     const std::wstring& md5, const std::wstring& name, const std::wstring& categoryId, const std::wstring& resourceType,
                     const std::wstring& targetModuleUid, ErrorCode& error) override;
    bool UploadModuleByJob(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                           const std::wstring& categoryId, SpecialtyType specialty, const std::wstring& moduleId,
                           const std::wstring& localFilePath, const std::wstring& fileName, ErrorCode& error) override;

    std::shared_ptr<ICollaborationModule> UploadModule(const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                                                       const std::wstring& resourceType, const std::wstring& localPath,
                                                       const std::wstring& fileName, const std::wstring& md5, bool gzip,
                                                       ErrorCode& error) override;
    bool AddModuleToProject(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const NewModule& module,
                            std::string& resource, ErrorCode& error) override;
};

} // namespace orlo
