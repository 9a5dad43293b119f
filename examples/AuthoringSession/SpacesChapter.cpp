#include "Chapters.h"
#include "Drawing.h"
#include "SpacesPicture.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <algorithm>

namespace session {

using namespace orlo;

namespace {

using Items = std::vector<std::shared_ptr<ISpaceConfigItem>>;

/// A node of this application's own. The library's objects never change, so a changed tree is a new one.
class Space final : public ISpaceConfigItem
{
public:
    Space(std::wstring id, std::wstring name, SpaceType type, std::wstring level)
        : m_id(std::move(id)), m_name(std::move(name)), m_level(std::move(level)), m_type(type)
    {}
    explicit Space(const ISpaceConfigItem& other)
        : m_id(other.GetId()),
          m_name(other.GetName()),
          m_description(other.GetDescription()),
          m_level(other.GetArchitectureLevel()),
          m_structureLevel(other.GetStructureLevel()),
          m_type(other.GetType())
    {
        for (const auto& child : other.GetSubSpaces())
            m_below.push_back(std::make_shared<Space>(*child));
    }

    void add(std::shared_ptr<ISpaceConfigItem> child) { m_below.push_back(std::move(child)); }

    const std::wstring& GetId() const override { return m_id; }
    const std::wstring& GetName() const override { return m_name; }
    const std::wstring& GetDescription() const override { return m_description; }
    SpaceType GetType() const override { return m_type; }
    const std::wstring& GetArchitectureLevel() const override { return m_level; }
    const std::wstring& GetStructureLevel() const override { return m_structureLevel; }
    const Items& GetSubSpaces() const override { return m_below; }

private:
    std::wstring m_id;
    std::wstring m_name;
    std::wstring m_description;
    std::wstring m_level;
    std::wstring m_structureLevel;
    SpaceType m_type;
    Items m_below;
};

class Spaces final : public ISpaceConfig
{
public:
    explicit Spaces(const ISpaceConfig& other)
    {
        for (const auto& root : other.GetItems())
            m_items.push_back(std::make_shared<Space>(*root));
    }

    int GetVersion() const override { return 0; }
    const Items& GetItems() const override { return m_items; }

    /// The first region of the tree; null if it has none.
    Space* firstRegion() const
    {
        Items waiting = m_items;
        while (!waiting.empty()) {
            const auto space = waiting.back();
            waiting.pop_back();
            if (space->GetType() == SpaceType::Region)
                return static_cast<Space*>(space.get());
            waiting.insert(waiting.end(), space->GetSubSpaces().begin(), space->GetSubSpaces().end());
        }
        return nullptr;
    }

private:
    Items m_items;
};

Drawing drawn(const ISpaceConfigItem& space)
{
    const std::wstring level = space.GetArchitectureLevel();
    Drawing drawing{space.GetName() + (level.empty() ? L"" : L" at " + level), {}};
    for (const auto& child : space.GetSubSpaces())
        drawing.below.push_back(drawn(*child));
    return drawing;
}

std::vector<int> versionsOf(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    std::vector<int> versions = project.GetSpaceConfigVersions(error);
    story.expect(error.isClear() && !versions.empty(), L"the versions of the spaces could not be listed", error);
    return versions;
}

std::shared_ptr<ISpaceConfig> latest(Story& story, ICollaborationProject& project)
{
    const std::vector<int> versions = versionsOf(story, project);
    ErrorCode error;
    auto spaces = project.GetSpaceConfig(*std::max_element(versions.begin(), versions.end()), error);
    story.expect(spaces != nullptr, L"the spaces could not be read", error);
    return spaces;
}

void show(Story& story, const ISpaceConfig& spaces)
{
    story.say(L"The spaces, version " + std::to_wstring(spaces.GetVersion()) + L", levels in metres:",
              L"ICollaborationProject::GetSpaceConfig");
    for (const auto& root : spaces.GetItems())
        story.say(linesOf(drawn(*root)));
}

std::shared_ptr<Space> newFloor(const std::wstring& name, const std::wstring& level)
{
    return std::make_shared<Space>(utils::toWstring(uuid::newUUIDV4()), name, SpaceType::Floor, level);
}

void addFloors(Story& story, ICollaborationProject& project, const ISpaceConfig& current)
{
    const auto changed = std::make_shared<Spaces>(current);
    Space* const region = changed->firstRegion();
    story.expect(region != nullptr, L"the spaces have no region");
    region->add(newFloor(L"二层", L"3.600"));
    region->add(newFloor(L"地下一层", L"-4.200"));
    story.expect(HttpClient::updateSpaceConfig(HttpClient::stringifySpaceConfig(changed), project.GetId()),
                 L"the changed spaces could not be stored");
    story.say(L"Added a floor and a basement, levels in metres, and stored the tree.", L"HttpClient::updateSpaceConfig");
}

} // namespace

void spaces(Story& story, ICollaborationProject& project, Pictures& pictures)
{
    story.chapter(L"Sites, buildings, regions and floors", __FILE__);
    const auto first = latest(story, project);
    show(story, *first);
    addFloors(story, project, *first);
    const auto second = latest(story, project);
    show(story, *second);
    pictures.keep(story, L"spaces.svg", spacesPicture(*second));
    story.say(L"Versions kept by the platform: " + std::to_wstring(versionsOf(story, project).size()),
              L"ICollaborationProject::GetSpaceConfigVersions");
}

} // namespace session
