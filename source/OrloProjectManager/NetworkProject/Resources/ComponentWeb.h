#pragma once

#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>

#include <map>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

// The components of a project. An answer is judged by what its "data" is, not by its code; one that isn't as it should be is logged.
// Lists are appended to, a component is replaced as a whole; a failure leaves both alone.
namespace OrloWebService {

bool GetCategoryCodes(ErrorCode& error, std::vector<std::wstring>& codes, const std::wstring& projectId, SpecialtyType specialty);
bool GetCategoryTree(ErrorCode& error, std::vector<Category>& categories, const std::wstring& projectId,
                     const std::vector<std::wstring>& categoryCodes, const std::wstring& keyword, const std::wstring& softwareVersion);
bool GetCategoryTreeCanBeUpdated(ErrorCode& error, std::vector<Category>& categories, const std::wstring& projectId,
                                 SpecialtyType specialty, const std::vector<ComponentInfo>& held, const std::wstring& keyword);

/// totalCount: as it was where the platform tells none.
bool SearchComponents(ErrorCode& error, std::vector<Component>& components, int& totalCount, const std::wstring& projectId,
                      const SearchCriteria& criteria);
bool SearchComponentsCanBeUpdated(ErrorCode& error, std::vector<Component>& components, const std::wstring& projectId,
                                  const std::vector<ComponentInfo>& held, const std::wstring& categoryCode, const std::wstring& keyword,
                                  SpecialtyType specialty);
bool GetComponentsChanged(ErrorCode& error, std::vector<Component>& components, const std::wstring& projectId, SpecialtyType specialty,
                          long long time);

bool GetDetailInfoOfComponent(ErrorCode& error, Component& component, const std::wstring& projectId, const std::wstring& suiteId,
                              int version);
bool IsComponentExist(ErrorCode& error, bool& exists, const std::wstring& projectId, const std::wstring& id);
/// info: JSON.
bool GetFamilyTypeInfoOfComponent(ErrorCode& error, std::wstring& info, const std::wstring& projectId, const std::wstring& suiteId,
                                  int version, const std::wstring& name);
bool GetAllFamilyTypeInfosOfComponent(ErrorCode& error, std::wstring& info, const std::wstring& projectId, const std::wstring& suiteId,
                                      int version);
bool GetCutlineOfComponent(ErrorCode& error, std::vector<Cutline>& cutlines, const std::wstring& projectId, const std::wstring& suiteId,
                           int version);
bool GetDownloadUrlOfComponent(ErrorCode& error, std::wstring& url, const std::wstring& projectId, const std::wstring& suiteId,
                               int version);
/// The body, whatever it is.
bool GetXmlInfoOfComponent(ErrorCode& error, std::wstring& xml, const std::wstring& projectId, const std::wstring& suiteId, int version);

bool DeleteComponent(ErrorCode& error, bool& deleted, const std::wstring& projectId, const std::wstring& suiteId);
bool UpgradeComponent(ErrorCode& error, Component& component, const std::wstring& projectId, const std::wstring& suiteId,
                      const std::wstring& body);
bool UploadComponent(ErrorCode& error, Component& component, const std::wstring& projectId, const std::wstring& body);

/// ids: public components, by the ids that they have or are to have in the project. Here the code counts: the text "success".
bool AddComponentsWithIds(ErrorCode& error, const std::wstring& projectId, const std::map<std::wstring, std::wstring>& ids);

/// Returns: the address of a family's file; empty on failure.
std::wstring GetFamilyFileUrl(ErrorCode& error, const std::wstring& projectId, const std::wstring& familyId,
                              const std::wstring& familyVersion);

} // namespace OrloWebService
} // namespace orlo
