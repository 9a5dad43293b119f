#pragma once

#include <OrloProjectManager/Export.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

/// The kind of a node of the space tree.
enum class SpaceType : int { Site = 0, Building = 1, Region = 2, Floor = 3 };

/// A node of the space tree. Levels are texts and come back as they went in.
class ORLO_PROJECT_API ISpaceConfigItem
{
public:
    ISpaceConfigItem();
    ISpaceConfigItem(const ISpaceConfigItem&);
    ISpaceConfigItem& operator=(const ISpaceConfigItem&);
    virtual ~ISpaceConfigItem();

    virtual const std::wstring& GetId() const = 0;
    virtual const std::wstring& GetName() const = 0;
    virtual const std::wstring& GetDescription() const = 0;
    virtual SpaceType GetType() const = 0;
    virtual const std::wstring& GetArchitectureLevel() const = 0;
    virtual const std::wstring& GetStructureLevel() const = 0;
    virtual const std::vector<std::shared_ptr<ISpaceConfigItem>>& GetSubSpaces() const = 0;
};

/// One version of a project's space tree. The library's own objects never change; to change a tree, build another
/// implementation of this interface and write that.
class ORLO_PROJECT_API ISpaceConfig
{
public:
    ISpaceConfig();
    ISpaceConfig(const ISpaceConfig&);
    ISpaceConfig& operator=(const ISpaceConfig&);
    virtual ~ISpaceConfig();

    virtual int GetVersion() const = 0;
    /// The roots of the tree.
    virtual const std::vector<std::shared_ptr<ISpaceConfigItem>>& GetItems() const = 0;
};

namespace HttpClient {

/// The document text of a space tree. A node with children loses its levels, which the document keeps for leaves alone.
/// Returns: empty on failure: a null config, a null node, a node that contains itself.   Requests: none.   Threads: any.
ORLO_PROJECT_API std::wstring stringifySpaceConfig(std::shared_ptr<ISpaceConfig> config);

/// Stores a document text as a new version of a project's space configuration.
/// Returns: false for an empty argument, a text that is no JSON, and on failure; the reason is logged only.
/// Requests: one, not retried.   Threads: any; blocks the caller.
ORLO_PROJECT_API bool updateSpaceConfig(const std::wstring& configText, const std::wstring& projectId);

} // namespace HttpClient

} // namespace orlo
