#pragma once

#include <OrloProjectManager/Design/ISpaceConfig.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace orlo::test {

/// A node as a host would write its own: open fields behind the interface.
class CallerNode : public ISpaceConfigItem
{
public:
    const std::wstring& GetId() const override { return id; }
    const std::wstring& GetName() const override { return name; }
    const std::wstring& GetDescription() const override { return description; }
    SpaceType GetType() const override { return type; }
    const std::wstring& GetArchitectureLevel() const override { return architectureLevel; }
    const std::wstring& GetStructureLevel() const override { return structureLevel; }
    const std::vector<std::shared_ptr<ISpaceConfigItem>>& GetSubSpaces() const override { return subSpaces; }

    std::wstring id;
    std::wstring name;
    std::wstring description;
    SpaceType type = SpaceType::Site;
    std::wstring architectureLevel;
    std::wstring structureLevel;
    std::vector<std::shared_ptr<ISpaceConfigItem>> subSpaces;
};

/// A tree of a host. It owns its nodes side by side; the pointers between them own nothing, so that a tree of any depth,
/// and one that runs in a circle, goes away without recursion.
class CallerTree : public ISpaceConfig
{
public:
    int GetVersion() const override { return 0; }
    const std::vector<std::shared_ptr<ISpaceConfigItem>>& GetItems() const override { return m_items; }

    /// A node without a place in the tree yet.
    CallerNode& make(const std::wstring& id, SpaceType type = SpaceType::Site);
    CallerNode& addRoot(const std::wstring& id, SpaceType type = SpaceType::Site);
    CallerNode& addChild(CallerNode& parent, const std::wstring& id, SpaceType type = SpaceType::Site);
    void addNullRoot() { m_items.push_back(nullptr); }

    /// The tree as the operations take it; it stays with its owner.
    std::shared_ptr<ISpaceConfig> shared() { return {std::shared_ptr<void>(), this}; }
    static std::shared_ptr<ISpaceConfigItem> shared(CallerNode& node) { return {std::shared_ptr<void>(), &node}; }

private:
    std::deque<CallerNode> m_nodes;
    std::vector<std::shared_ptr<ISpaceConfigItem>> m_items;
};

} // namespace orlo::test
