#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/Specialty.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <future>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// A template file of a project's own library or of the public one.
struct SamplePlate
{
    std::wstring id;
    std::wstring name;
    std::wstring uri;
    std::wstring samplePlateFrom;
    std::wstring specialty;
    std::wstring templateId;
    std::wstring projectId;
    std::wstring size;
    std::wstring createTime;
    std::wstring updateTime;
};

/// Template files with which an authoring application starts a dataset.
class ORLO_PROJECT_API ITemplateManager
{
public:
    /// Null in this version, which does not offer templates yet.
    static ITemplateManager* Get();

    ITemplateManager();
    virtual ~ITemplateManager();

    ITemplateManager(const ITemplateManager&) = delete;
    ITemplateManager& operator=(const ITemplateManager&) = delete;

    virtual bool UploadTemplateByJob(const std::wstring& fileName, const std::wstring& projectId, const std::wstring& localPath,
                                     SpecialtyType specialty, ErrorCode& error) = 0;
    virtual bool IsTemplateExistedInProject(const std::wstring& templateName, const std::wstring& projectId, ErrorCode& error) = 0;
    virtual bool GetAllTemplatesOfProject(const std::wstring& projectId, std::vector<SamplePlate>& out, ErrorCode& error) = 0;
    virtual std::future<PromiseData> DownloadTemplateFile(const std::wstring& datasetId, const std::wstring& projectId,
                                                          ErrorCode& error) = 0;
};

} // namespace orlo
