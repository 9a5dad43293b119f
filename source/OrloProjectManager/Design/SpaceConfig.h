#pragma once

#include <OrloProjectManager/Design/ISpaceConfig.h>

#include <cpprest/json.h>

namespace orlo {

class SpaceConfigItem final : public ISpaceConfigItem
{
public:
    /// Leaves the vector that it is given empty.
    SpaceConfigItem(std::wstring id, SpaceType type, std::wstring name, std::wstring architectureLevel, std::wstring structureLevel,
                    std::wstring description, std::vector<std::shared_ptr<ISpaceConfigItem>>&& subSpaces);

    const std::wstring& GetId() const override { return m_id; }
    const std::wstring& GetName() const override { return m_name; }
    const std::wstring& GetDescription() const override { return m_description; }
    SpaceType GetType() const override { return m_type; }
    const std::wstring& GetArchitectureLevel() const override { return m_architectureLevel; }
    const std::wstring& GetStructureLevel() const override { return m_structureLevel; }
    const std::vector<std::shared_ptr<ISpaceConfigItem>>& GetSubSpaces() const override { return m_subSpaces; }

private:
    std::wstring m_id;
    std::wstring m_name;
    std::wstring m_architectureLevel;
    std::wstring m_structureLevel;
    std::wstring m_description;
    SpaceType m_type;
    std::vector<std::shared_ptr<ISpaceConfigItem>> m_subSpaces;
};

class SpaceConfig final : public ISpaceConfig
{
public:
    SpaceConfig(int version, std::wstring scopeEntityId, std::vector<std::shared_ptr<ISpaceConfigItem>> items);

    int GetVersion() const override { return m_version; }
    const std::vector<std::shared_ptr<ISpaceConfigItem>>& GetItems() const override { return m_items; }

private:
    int m_version;
    std::wstring m_scopeEntityId; ///< handed out by no operation
    std::vector<std::shared_ptr<ISpaceConfigItem>> m_items;
};

/// Reads the platform's answer about one version. A document of another schema version gives an object without items and a
/// log line. Throws json_exception for an answer without its three members, and for a node without what it must have.
std::shared_ptr<ISpaceConfig> parseSpaceConfig(const web::json::value& answer);

/// The document text of a space tree, its keys sorted. Throws std::invalid_argument for a null, and for a node that
/// contains itself.
std::wstring spaceDocumentOf(const ISpaceConfig* config);

} // namespace orlo
