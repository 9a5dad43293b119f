#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/Specialty.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orlo {

class ErrorCode;

/// A place in the tree into which components are sorted.
struct Category
{
    int id = 0;
    int parentId = 0;
    std::wstring name;
    double weight = 0.0; ///< of the order beside its siblings
    int count = 0;       ///< of the components in it
    int level = 0;       ///< in the tree
    std::wstring code;
    std::wstring parentCode;
};

/// A component, or what an operation tells of one: what it doesn't tell stays at its default.
struct Component
{
    std::wstring id;
    std::wstring publicComponentId; ///< the one of the public catalogue that it was taken from
    int version = -1;
    std::wstring name;
    int source = -1;
    int categoryId = -1;
    std::wstring categoryCode;
    std::wstring status;
    std::vector<std::wstring> familyTypeNames;
    std::wstring thumbnail;                                       ///< an address
    std::map<std::wstring, std::vector<std::wstring>> thumbnails; ///< addresses, by the size of the picture in the platform's words
    std::wstring updateStatus;
};

/// Which version of which component the caller holds.
struct ComponentInfo
{
    std::int64_t id;
    int version = -1;
};

/// A drawing that stands for a component in plans.
struct Cutline
{
    std::int64_t id = 0;
    std::wstring name;
    std::wstring thumbnail; ///< an address
    std::wstring placeholderType;
};

/// What to look for.
struct SearchCriteria
{
    SearchCriteria(std::vector<std::wstring> codes, std::wstring word, int pageNumber, int sizeOfPage)
        : categoryCodes(std::move(codes)), keyword(std::move(word)), page(pageNumber), pageSize(sizeOfPage)
    {}

    std::vector<std::wstring> categoryCodes; ///< may be empty
    std::wstring keyword;
    int page; ///< as the platform counts them
    int pageSize;
};

/// The components of a project: parametric parts, taken from a public catalogue or uploaded, in versions. The class keeps nothing.
///
/// Lists are appended to; a Component that is handed over is replaced as a whole, where the operation succeeds. A platform that answers
/// something else than is expected leaves all of it alone, and stands in the log with its answer.
/// Ids, versions and codes go out as they are handed over. A specialty is told to the platform by a number of its own; Unknown is -1 there.
/// Returns: false on failure, with the reason in `error`; a clear `error` then means an answer with a status below 400 that isn't as
/// expected.
/// Errors: 0xE8000002 transport or exception; a negative value for an error status. 0xE8000001 where an argument is empty that is named
/// under "Needs"; nothing is sent then.   Requests: one, retried.   Threads: any; all block their caller.
class ORLO_PROJECT_API IProjectComponentLibrary
{
public:
    /// The codes of the categories that a specialty uses.
    static bool GetCategoryCodes(const std::wstring& projectId, SpecialtyType specialty, std::vector<std::wstring>& codes,
                                 ErrorCode& error);
    /// The categories below some codes, with the count of what fits the keyword.
    /// softwareVersion: goes out as it stands.
    static bool GetCategoryTree(const std::wstring& projectId, const std::vector<std::wstring>& categoryCodes, const std::wstring& keyword,
                                std::wstring softwareVersion, std::vector<Category>& categories, ErrorCode& error);
    /// The categories of those components that have a newer version in the catalogue.
    static bool GetCategoryTreeCanBeUpdated(const std::wstring& projectId, SpecialtyType specialty, const std::vector<ComponentInfo>& held,
                                            const std::wstring& keyword, std::vector<Category>& categories, ErrorCode& error);

    /// One page of what fits.
    /// totalCount: of all pages; as it was where the platform tells none.
    static bool SearchComponents(const std::wstring& projectId, const SearchCriteria& criteria, std::vector<Component>& components,
                                 int& totalCount, ErrorCode& error);
    /// Those of the components that have a newer version in the catalogue.
    /// categoryCode, keyword: empty for all.
    static bool SearchComponentsCanBeUpdated(const std::wstring& projectId, const std::vector<ComponentInfo>& held,
                                             const std::wstring& categoryCode, const std::wstring& keyword, SpecialtyType specialty,
                                             std::vector<Component>& components, ErrorCode& error);
    /// What was added, updated or removed since a time, as the platform counts it; told are the id, which stands in publicComponentId too,
    /// the version, the name and the updateStatus.   Needs: projectId, a specialty other than Unknown.
    static bool GetComponentsChanged(const std::wstring& projectId, SpecialtyType specialty, long long time,
                                     std::vector<Component>& components, ErrorCode& error);

    /// All that is told of a version. A row of thumbnails without a size is left out.
    static bool GetDetailInfoOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version, Component& component,
                                         ErrorCode& error);
    /// Needs: projectId, id.
    static bool IsComponentExist(const std::wstring& projectId, const std::wstring& id, bool& exists, ErrorCode& error);
    /// info: a JSON object about one family type.   Needs: projectId, suiteId, name.
    static bool GetFamilyTypeInfoOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                             const std::wstring& name, std::wstring& info, ErrorCode& error);
    /// info: a JSON object about all family types.   Needs: projectId, suiteId.
    static bool GetAllFamilyTypeInfosOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                                 std::wstring& info, ErrorCode& error);
    /// Needs: projectId, suiteId.
    static bool GetCutlineOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version,
                                      std::vector<Cutline>& cutlines, ErrorCode& error);
    /// url: where the file of the component can be fetched.   Needs: projectId, suiteId.
    static bool GetDownloadUrlOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version, std::wstring& url,
                                          ErrorCode& error);
    /// xml: the answer as it came, whatever it is.   Needs: projectId, suiteId.
    static bool GetXmlInfoOfComponent(const std::wstring& projectId, const std::wstring& suiteId, int version, std::wstring& xml,
                                      ErrorCode& error);

    /// deleted: whether the platform has done so, where the operation succeeds.   Needs: projectId, suiteId.
    static bool DeleteComponent(const std::wstring& projectId, const std::wstring& suiteId, bool& deleted, ErrorCode& error);
    /// body: what the platform is told, sent as it stands.   Needs: projectId, suiteId, body.
    static bool UpgradeComponent(const std::wstring& projectId, const std::wstring& suiteId, const std::wstring& body, Component& component,
                                 ErrorCode& error);
    /// body: what the platform is told, sent as it stands.   Needs: projectId, body.
    static bool UploadComponent(const std::wstring& projectId, const std::wstring& body, Component& component, ErrorCode& error);
};

} // namespace orlo
