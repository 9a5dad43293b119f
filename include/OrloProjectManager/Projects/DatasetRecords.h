#pragma once

#include <string>

namespace orlo {

/// What a dataset holds, found from the text of its type.
enum class DatasetKind : int {
    Other = 0,
    NoneStandard = 1, ///< "noneStandard", "cloudify", "dwg"
    Standard = 2      ///< "workunit", "standard", "zok"
};

/// Any is known to the team operations only.
enum class DatasetStatus : int { Draft = 0, Committed = 1, Any = 2 };

/// A dataset. All texts are empty and the type is Other where an operation failed.
struct DatasetInfo
{
    std::string id;
    std::string modelingDatasetId;
    std::wstring name;
    DatasetKind type = DatasetKind::Other;
    std::wstring description;
    std::wstring ownerId;
    std::wstring specialtyId;
    std::wstring teamId;
    std::wstring projectId;
};

namespace http {

/// A dataset, as the platform sends it.
struct ORLOHTTPPayloadDataset
{
    std::wstring folderId;
    std::string id;
    std::string modelingDatasetId; ///< has no key of its own here and stays empty
    std::wstring name;
    std::wstring nameSpace;
    std::wstring schemaDefinition;
    int codeVersion = 0;
    int tipVersion = 0;
    std::wstring type;
    std::wstring specialtyId;
    std::wstring ownerId;
    std::wstring description;
    std::wstring teamId;
    std::wstring projectId;
};

} // namespace http
} // namespace orlo
