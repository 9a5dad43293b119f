#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/Specialty.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <future>
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

    /// What the service knows the file by.
    virtual std::wstring GetFileKey() const = 0;
    /// The signed address that the file went to.
    virtual std::wstring GetUrl() const = 0;
};

/// Reusable design files of the resource service.
///
/// Modules stand in a space (its kind, and which of that kind: a project and its id, for example), under a resource type and a category of
/// a tree. What these texts mean is the service's; they are passed on as they are. Threads: any; what sends a request blocks its caller.
class ORLO_PROJECT_API IModuleManager
{
public:
    /// Never null.
    static IModuleManager* Get();

    /// Brings a module's file to the local disk, through memory.
    /// requestBody: the JSON text that names the module's file; not empty.   localPath: empty for a new file in the temporary folder.
    /// Returns: at once; the future's message is the local path.
    /// Failures, in the future: 400 "invalid remote uri path", "invalid file path"; a status of the platform; 5555.   Requests: two.
    [[nodiscard]] static std::future<PromiseData> DownloadModuleFile(const std::wstring& requestBody, const std::wstring& localPath,
                                                                     const std::wstring& resourceType, const std::wstring& spaceType,
                                                                     const std::wstring& spaceTypeParameter, ErrorCode& error);

    IModuleManager();
    virtual ~IModuleManager();

    IModuleManager(const IModuleManager&) = delete;
    IModuleManager& operator=(const IModuleManager&) = delete;

    /// The categories of a tree. categories: the answer's data, as JSON text; as it was where the operation fails.
    /// Errors: 0xE8000005 "param is empty" for an empty text, which sends nothing; 0xE8000002 transport or exception; a negative value
    /// for an error status.   Requests: one, retried.
    virtual bool GetCategories(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                               const std::wstring& categoryTreeType, std::wstring& categories, ErrorCode& error) = 0;
    /// Whether the service would take a module. md5: the sum of the file's bytes, 32 hexadecimal digits. applicationType, categoryId and
    /// targetModuleUid may be empty.
    /// Errors: 0xE8000002, named "Invalid argument" and with the code 400, where it would not: the message is the service's word for the
    /// reason; otherwise as above.   Requests: one, retried.
    virtual bool IsCanUpload(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& applicationType,
                             const std::wstring& md5, const std::wstring& name, const std::wstring& categoryId,
                             const std::wstring& resourceType, const std::wstring& targetModuleUid, ErrorCode& error) = 0;
    /// Hands a file over to a job, which uploads it and registers it as a module, in this process or a later one. The job owns a copy.
    /// fileName: the module's name; empty for the file's, less its extension.   moduleId: two jobs of one module never run together.
    /// Returns: whether the job is in the hands of the job manager. Without a job manager the job is saved, and runs when one is started.
    /// A job that has registered its module posts the event 4, "module_<moduleId>_<resource id>&<version>".
    virtual bool UploadModuleByJob(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const std::wstring& resourceType,
                                   const std::wstring& categoryId, SpecialtyType specialty, const std::wstring& moduleId,
                                   const std::wstring& localFilePath, const std::wstring& fileName, ErrorCode& error) = 0;
};

} // namespace orlo
