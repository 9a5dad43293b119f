#include "CallerTree.h"

namespace orlo::test {

CallerNode& CallerTree::make(const std::wstring& id, SpaceType type)
{
    CallerNode& node = m_nodes.emplace_back();
    node.id = id;
    node.type = type;
    return node;
}

CallerNode& CallerTree::addRoot(const std::wstring& id, SpaceType type)
{
    CallerNode& node = make(id, type);
    m_items.push_back(shared(node));
    return node;
}

CallerNode& CallerTree::addChild(CallerNode& parent, const std::wstring& id, SpaceType type)
{
    CallerNode& node = make(id, type);
    parent.subSpaces.push_back(shared(node));
    return node;
}

} // namespace orlo::test
