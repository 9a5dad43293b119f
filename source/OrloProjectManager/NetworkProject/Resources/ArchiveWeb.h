#pragma once

#include <OrloProjectManager/Resources/IArchivePackage.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

// What the tree of a project's archive packages is joined from. An input that is refused is told in the log alone. The list in the record
// is empty for an answer that isn't marked as a success, which is none of their failures.
namespace OrloWebService {

/// The packages of a project. Refuses an empty id, and works for a signed-in user only.
bool GetArchivePackageListByProjectId(ErrorCode& error, http::ORLOHTTPPayloadArchivePackageAck& out, const std::wstring& projectId);
/// All versions of packages, with the units that they name. Refuses an empty list.
bool GetArchiveUnitListByArchivePackageId(ErrorCode& error, http::ORLOHTTPPayloadArchivePackageVersionAck& out,
                                          const std::vector<std::wstring>& packageIds);
/// All versions of units, by the ids of their integrate packages. Refuses an empty list.
bool GetArchiveUnitVersionById(ErrorCode& error, http::ORLOHTTPPayloadArchiveUnitVersionAck& out, const std::vector<std::wstring>& unitIds);
/// The standard codes of versions of units; an empty list is asked for, too.
bool GetArchiveUnitStandardCode(ErrorCode& error, http::ORLOHTTPPayloadArchiveUnitStandardCodeAck& out,
                                const std::vector<int>& unitVersionIds);

} // namespace OrloWebService
} // namespace orlo
