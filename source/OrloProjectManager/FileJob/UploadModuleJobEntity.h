#pragma once

#include "../NetworkProject/Resources/ModuleWeb.h"
#include "UploadJobEntity.h"

#include <OrloProjectManager/Resources/IModuleManager.h>

namespace orlo {

/// What a module job needs of the module manager beyond its interface.
class IModuleUploads
{
public:
    virtual ~IModuleUploads() = default;
    virtual std::shared_ptr<ICollaborationModule> UploadModule(const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                                                               const std::wstring& resourceType, const std::wstring& localPath,
                                                               const std::wstring& fileName, const std::wstring& md5, bool gzip,
                                                               ErrorCode& error) = 0;
    /// Publishes an uploaded module. resource: "<id>&<version>", as the service answers.
    virtual bool AddModuleToProject(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const NewModule& module,
                                    std::string& resource, ErrorCode& error) = 0;
};

/// The upload of a module as a job.
class UploadModuleJobEntity : public UploadJobEntity
{
public:
    static const char* const jobTypeKey;

    UploadModuleJobEntity();
    UploadModuleJobEntity(std::wstring moduleId, std::wstring folderId, std::wstring spaceType, std::string spaceTypeParameter,
                          std::wstring resourceType, std::wstring categoryId, std::wstring specialty, std::wstring localFilePath,
                          std::wstring fileName);
    ~UploadModuleJobEntity() override;

    /// Two jobs of one module never run together. The newest waiting module job is remembered as the one to run first.
    bool IsCanRun(const List& running, const List& waiting) override;
    std::string GetJobTypeKey() const override;
    std::string ToJson() const override;
    bool operator<(const IJobEntity& other) const override;

    const std::string& GetProjectId() const override { return m_spaceTypeParameter; }

protected:
    // Where the manager comes from; tests put another here.
    virtual IModuleUploads* moduleManager() const;

private:
    bool upload(ErrorCode& error) override;
    void announce() const override;
    bool fromJsonForCloudify(const JsonWrapper& document) override;
    bool uploadModule(IModuleUploads& modules, ErrorCode& error);
    /// Calls `visit(key, field, words)` for each saved field in its order. words: what is logged where the field can't be read.
    template <class Self, class Visit>
    static void eachField(Self& self, const Visit& visit);

    std::wstring m_moduleId;
    std::wstring m_spaceType;
    std::string m_spaceTypeParameter;
    std::wstring m_resourceType;
    std::wstring m_categoryId;
    std::wstring m_specialty;
    /// What the service made of the upload.
    std::string m_resource;
};

} // namespace orlo
