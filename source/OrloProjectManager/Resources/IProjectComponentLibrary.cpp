#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Resources/ComponentWeb.h"

#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>

namespace orlo {

namespace {

/// One operation is one request.
template <class... Parameters, class... Arguments>
bool askLibrary(const CallSite& site, ErrorCode& error, bool (*webFunction)(ErrorCode&, Parameters...), Arguments&&... arguments)
{
    return CallFrame(site).run(error, [&] { return retried(webFunction, error, arguments...); });
}

} // namespace

bool IProjectComponentLibrary::GetCategoryCodes(const std::wstring& projectId, SpecialtyType specialty, std::vector<std::wstring>& codes,
                                                ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetCategoryCodes"), error, &OrloWebService::GetCategoryCodes, codes,
                      projectId, specialty);
}

bool IProjectComponentLibrary::GetCategoryTree(const std::wstring& projectId, const std::vector<std::wstring>& categoryCodes,
                                               const std::wstring& keyword, std::wstring softwareVersion, std::vector<Category>& categories,
                                               ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetCategoryTree"), error, &OrloWebService::GetCategoryTree, categories,
                      projectId, categoryCodes, keyword, softwareVersion);
}

bool IProjectComponentLibrary::GetCategoryTreeCanBeUpdated(const std::wstring& projectId, SpecialtyType specialty,
                                                           const std::vector<ComponentInfo>& held, const std::wstring& keyword,
                                                           std::vector<Category>& categories, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetCategoryTreeCanBeUpdated"), error,
                      &OrloWebService::GetCategoryTreeCanBeUpdated, categories, projectId, specialty, held, keyword);
}

bool IProjectComponentLibrary::SearchComponents(const std::wstring& projectId, const SearchCriteria& criteria,
                                                std::vector<Component>& components, int& totalCount, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::SearchComponents"), error, &OrloWebService::SearchComponents, components,
                      totalCount, projectId, criteria);
}

bool IProjectComponentLibrary::SearchComponentsCanBeUpdated(const std::wstring& projectId, const std::vector<ComponentInfo>& held,
                                                            const std::wstring& categoryCode, const std::wstring& keyword,
                                                            SpecialtyType specialty, std::vector<Component>& components, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::SearchComponentsCanBeUpdated"), error,
                      &OrloWebService::SearchComponentsCanBeUpdated, components, projectId, held, categoryCode, keyword, specialty);
}

bool IProjectComponentLibrary::GetComponentsChanged(const std::wstring& projectId, SpecialtyType specialty, long long time,
                                                    std::vector<Component>& components, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetComponentsChanged"), error, &OrloWebService::GetComponentsChanged,
                      components, projectId, specialty, time);
}

bool IProjectComponentLibrary::GetDetailInfoOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                        Component& component, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetDetailInfoOfComponent"), error,
                      &OrloWebService::GetDetailInfoOfComponent, component, projectId, suiteId, version);
}

bool IProjectComponentLibrary::IsComponentExist(const std::wstring& projectId, const std::wstring& id, bool& exists, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::IsComponentExist"), error, &OrloWebService::IsComponentExist, exists,
                      projectId, id);
}

bool IProjectComponentLibrary::GetFamilyTypeInfoOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                            const std::wstring& name, std::wstring& info, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetFamilyTypeInfoOfComponent"), error,
                      &OrloWebService::GetFamilyTypeInfoOfComponent, info, projectId, suiteId, version, name);
}

bool IProjectComponentLibrary::GetAllFamilyTypeInfosOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                                std::wstring& info, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetAllFamilyTypeInfosOfComponent"), error,
                      &OrloWebService::GetAllFamilyTypeInfosOfComponent, info, projectId, suiteId, version);
}

bool IProjectComponentLibrary::GetCutlineOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                     std::vector<Cutline>& cutlines, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetCutlineOfComponent"), error, &OrloWebService::GetCutlineOfComponent,
                      cutlines, projectId, suiteId, version);
}

bool IProjectComponentLibrary::GetDownloadUrlOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                         std::wstring& url, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetDownloadUrlOfComponent"), error,
                      &OrloWebService::GetDownloadUrlOfComponent, url, projectId, suiteId, version);
}

bool IProjectComponentLibrary::GetXmlInfoOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                     std::wstring& xml, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::GetXmlInfoOfComponent"), error, &OrloWebService::GetXmlInfoOfComponent,
                      xml, projectId, suiteId, version);
}

bool IProjectComponentLibrary::DeleteComponent(const std::wstring& projectId, const std::wstring& suiteId, bool& deleted, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::DeleteComponent"), error, &OrloWebService::DeleteComponent, deleted,
                      projectId, suiteId);
}

bool IProjectComponentLibrary::UpgradeComponent(const std::wstring& projectId, const std::wstring& suiteId, const std::wstring& body,
                                                Component& component, ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::UpgradeComponent"), error, &OrloWebService::UpgradeComponent, component,
                      projectId, suiteId, body);
}

bool IProjectComponentLibrary::UploadComponent(const std::wstring& projectId, const std::wstring& body, Component& component,
                                               ErrorCode& error)
{
    return askLibrary(ORLO_HERE("orlo::IProjectComponentLibrary::UploadComponent"), error, &OrloWebService::UploadComponent, component,
                      projectId, body);
}

} // namespace orlo
