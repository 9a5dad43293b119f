#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/Specialty.h>

#include <string>

namespace orlo {

class ErrorCode;

/// A module file that has been uploaded.
class ORLO_PROJECT_API ICollaborationModule
{
public:
    ICollaborationModule();
    virtual ~ICollaborationModule();

    ICollaborationModule(const ICollaborationModule&) = delete;
    ICollaborationModule& operator=(const ICollaborationModule&) = delete;

    virtual std::wstring GetFileKey() const = 0;
    virtual std::wstring GetUrl() const = 0;
};

/// Reusable design files of the resource service.
class ORLO_PROJECT_API IModuleManager
{
public:
    /// Null in this version, which does not offer modules yet.
    static IModuleManager* Get();

    IModuleManager();
    virtual ~IModuleManager();

    IModuleManager(const IModuleManager&) = delete;
    IModuleManager& operator=(const IModuleManager&) = delete;

    virtual bool GetCategories(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                               const std::wstring& categoryTreeType, std::wstring& categories, ErrorCode& error) = 0;
    virtual bool IsCanUpload(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& applicationType,
                             const std::wstring& md5, const std::wstring& name, const std::wstring& categoryId,
                             const std::wstring& resourceType, const std::wstring& targetModuleUid, ErrorCode& error) = 0;
    virtual bool UploadModuleByJob(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                                   const std::wstring& categoryId, SpecialtyType specialty, const std::wstring& moduleId,
                                   const std::wstring& localFilePath, const std::wstring& fileName, ErrorCode& error) = 0;
};

} // namespace orlo
