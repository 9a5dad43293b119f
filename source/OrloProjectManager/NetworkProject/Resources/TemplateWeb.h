#pragma once

#include <OrloProjectManager/Resources/ITemplateManager.h>
#include <OrloProjectManager/Resources/ProjectTemplate.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orlo {

/// The template file of a dataset.
struct DatasetSampleFile
{
    std::wstring id;
    std::wstring templateId;
    std::wstring samplePlateId;
    std::wstring type;
    std::wstring datasetId;
    std::wstring projectId;
    std::wstring samplePlateFrom;
    std::wstring uri;
};

/// One file of the public library.
struct TemplateResource
{
    std::wstring id; ///< a number on the wire
    std::wstring name;
    std::int64_t size = 0;
    std::wstring type;
};

namespace OrloWebService {

/// Returns: the new template's id; empty on failure.
std::wstring CreateTemplate(ErrorCode& error, const std::wstring& srcProjectId, const std::wstring& templateName);
bool DeleteTemplate(ErrorCode& error, const std::wstring& templateId);
bool GetProjectTemplatesOfUser(ErrorCode& error, std::vector<http::ORLOHTTPPayloadTemplate>& out);

bool AddTemplateToProject(ErrorCode& error, const std::wstring& projectId, const std::wstring& uri, const std::wstring& name,
                          const std::wstring& specialty, long long size);
/// Returns: whether there is one; false on failure too.
bool IsTemplateExistedInProject(ErrorCode& error, const std::wstring& templateName, const std::wstring& projectId);
bool GetAllTemplatesOfProject(ErrorCode& error, std::vector<SamplePlate>& out, const std::wstring& projectId);

/// The record stays empty where the dataset has no template; with more than one it fails.
bool GetDatasetSampleFile(ErrorCode& error, DatasetSampleFile& out, const std::wstring& datasetId, const std::wstring& projectId);
bool GetTemplateResource(ErrorCode& error, TemplateResource& out, const std::wstring& templateId);
/// url: a signed address.
bool GetTemplateResourceUrl(ErrorCode& error, std::wstring& url, const std::wstring& resourceId, const std::wstring& templateId);

} // namespace OrloWebService
} // namespace orlo
