#include "Chapters.h"
#include "GridPicture.h"
#include "HospitalGrid.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <algorithm>
#include <cmath>

namespace session {

using namespace orlo;

namespace {

// The axis grid

std::wstring inMillimetres(double millimetres)
{
    return std::to_wstring(std::llround(millimetres)) + L" mm";
}

/// The grid as the platform has it now. Good until the next one is read.
IAxisGrid& lastGrid(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    IAxisGrid* const grid = project.GetAxisGridConfig(-1, error);
    story.expect(grid != nullptr, L"the axis grid could not be read", error);
    const std::vector<IAxisCurve*> axes = grid->GetCurves();
    const auto arcs =
        std::count_if(axes.begin(), axes.end(), [](const IAxisCurve* axis) { return axis->GetCurveType() == CurveType::Arc; });
    story.say(L"Read the last version of the grid, " + std::to_wstring(grid->GetVersion()) + L": " +
                  std::to_wstring(static_cast<long long>(axes.size()) - arcs) + L" straight axes and " + std::to_wstring(arcs) + L" arcs",
              L"ICollaborationProject::GetAxisGridConfig");
    return *grid;
}

void storeGrid(Story& story, ICollaborationProject& project, IAxisGrid& grid)
{
    ErrorCode error;
    story.expect(project.UpdateAxisGrid(&grid, error), L"the axis grid could not be stored", error);
}

void measure(Story& story, const IAxisGrid& grid, const std::wstring& from, const std::wstring& to)
{
    IAxisCurve* const a = axisNamed(grid, from);
    IAxisCurve* const b = axisNamed(grid, to);
    story.expect(a != nullptr && b != nullptr, L"the grid came back without " + from + L" or " + to);
    story.say(L"From axis " + from + L" to axis " + to + L": " + inMillimetres(grid.GetDistance(a->GetId(), b->GetId())),
              L"IAxisGrid::GetDistance");
}

/// Moves an upright axis, 1 to 10, to the left.
void moveLeft(Story& story, IAxisGrid& grid, const std::wstring& name, double millimetres)
{
    auto* const axis = dynamic_cast<IAxisLine*>(axisNamed(grid, name));
    story.expect(axis != nullptr, L"there is no straight axis " + name);
    const Point3d start = axis->GetStartPt();
    const Point3d end = axis->GetEndPt();
    axis->SetStartPt({start.x - millimetres, start.y, start.z});
    axis->SetEndPt({end.x - millimetres, end.y, end.z});
    story.say(L"Moved axis " + name + L" by " + inMillimetres(millimetres) + L" to the left.", L"IAxisLine::SetStartPt, SetEndPt");
}

void sayGridVersions(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    std::wstring all;
    for (const int version : project.GetAxisGridConfigVersions(error))
        all += (all.empty() ? L"" : L", ") + std::to_wstring(version);
    story.expect(error.isClear(), L"the versions of the axis grid could not be listed", error);
    story.say(L"Versions of the grid: " + all, L"ICollaborationProject::GetAxisGridConfigVersions");
}

void axisGrid(Story& story, ICollaborationProject& project, Pictures& pictures)
{
    storeGrid(story, project, *hospitalGrid());
    story.say(L"Drew the axes 1 to 10, A to K and the arcs R1 and R2, and stored the grid.",
              L"IAxisGrid::Create, ICollaborationProject::UpdateAxisGrid");
    IAxisGrid& first = lastGrid(story, project);
    measure(story, first, L"1", L"2");
    measure(story, first, L"A", L"K");
    moveLeft(story, first, L"1", 600.0);
    storeGrid(story, project, first);
    story.say(L"Stored it again. The grid in hand is version " + std::to_wstring(first.GetVersion()) + L" still.",
              L"ICollaborationProject::UpdateAxisGrid");
    sayGridVersions(story, project);
    const IAxisGrid& second = lastGrid(story, project); // the first is gone
    measure(story, second, L"1", L"2");
    pictures.keep(story, L"axis-grid.svg", gridPicture(second));
}

// Building items

/// The host's content in a document of an item.
JsonWrapper contentOf(Story& story, const ProjectItemConfig& config)
{
    JsonWrapper document;
    story.expect(document.Parse(utils::toString(config.configValue)), L"a document of the building item can't be read");
    return document["data"];
}

std::wstring textIn(const JsonWrapper& content, const char* key)
{
    std::string text;
    content.Get(key, text);
    return utils::toWstring(text);
}

/// Returns: the revision, which the next writer has to name.
int readItems(Story& story, ICollaborationProject& project)
{
    ErrorCode error;
    int revision = -1;
    std::vector<ProjectItemConfig> items;
    story.expect(project.GetLatestBuildingItems(items, revision, error), L"the building items could not be read", error);
    story.say(L"Building items at revision " + std::to_wstring(revision) + (items.empty() ? L": none" : L":"),
              L"ICollaborationProject::GetLatestBuildingItems");
    for (const ProjectItemConfig& item : items) {
        const JsonWrapper content = contentOf(story, item);
        story.say(L"  - " + textIn(content, "name") + L", version " + std::to_wstring(item.version) + L": " + textIn(content, "use"));
    }
    return revision;
}

std::wstring addItem(Story& story, ICollaborationProject& project, int revision)
{
    ErrorCode error;
    std::wstring id;
    story.expect(project.AddBuildingItem(id, revision, LR"({"name":"门诊楼","use":"门诊"})", error), L"the item could not be added", error);
    story.say(L"Added the item 门诊楼.", L"ICollaborationProject::AddBuildingItem");
    return id;
}

/// A writer names the revision that it has read; when another was faster, the platform says so.
bool changeItem(Story& story, ICollaborationProject& project, const std::wstring& id, int revision)
{
    http::HttpMessage refusal;
    if (project.UpdateBuildingItem(refusal, revision, id, LR"({"name":"门诊楼","use":"门诊和急诊"})")) {
        story.say(L"Changed the item with revision " + std::to_wstring(revision) + L".", L"ICollaborationProject::UpdateBuildingItem");
        return true;
    }
    story.say(L"Changing the item with revision " + std::to_wstring(revision) + L" was refused (" + std::to_wstring(refusal.code) +
                  L"), in the platform's words: " + refusal.message,
              L"ICollaborationProject::UpdateBuildingItem");
    return false;
}

void elevations(Story& story, ICollaborationProject& project, const std::wstring& itemId)
{
    http::HttpMessage refusal;
    story.expect(project.CreateProjectItemConfig(refusal, itemId, ConfigType::ItemElevationSet,
                                                 LR"({"elevations":[{"name":"一层","height":0},{"name":"二层","height":3600}]})"),
                 L"the elevation set was refused: " + refusal.message);
    ErrorCode error;
    ProjectItemConfig config;
    story.expect(project.GetLatestProjectItemConfig(config, itemId, ConfigType::ItemElevationSet, error),
                 L"the elevation set could not be read", error);
    std::wstring all;
    const JsonWrapper elevations = contentOf(story, config)["elevations"];
    JsonWrapper elevation;
    for (int i = 0; elevations.Get(i, elevation); ++i) {
        double height = 0.0;
        story.expect(elevation.Get("height", height), L"an elevation came back without its height");
        all += (all.empty() ? L"" : L", ") + textIn(elevation, "name") + L" at " + inMillimetres(height);
    }
    story.say(L"Gave it an elevation set, and read version " + std::to_wstring(config.version) + L": " + all,
              L"ICollaborationProject::CreateProjectItemConfig, GetLatestProjectItemConfig");
}

void bind(Story& story, ICollaborationProject& project, const std::wstring& itemId)
{
    const DatasetInfo dataset = firstDraft(story, project);
    const std::wstring datasetId = utils::toWstring(dataset.id);
    ErrorCode error;
    story.expect(project.AssociateDatasetAndBuildingItem(datasetId, itemId, error), L"the dataset could not be bound", error);
    std::vector<std::wstring> items;
    std::vector<std::wstring> datasets;
    story.expect(project.GetBuildingItemIdsByDatasetId(items, datasetId, error), L"the items of the dataset could not be read", error);
    story.expect(project.GetDatasetIdsByBuildingItemId(datasets, itemId, error), L"the datasets of the item could not be read", error);
    story.expect(items == std::vector<std::wstring>{itemId} && datasets == std::vector<std::wstring>{datasetId},
                 L"the item and the dataset don't know of each other");
    story.say(L"Bound the dataset " + dataset.name + L" to it; each now tells the other's id.",
              L"ICollaborationProject::AssociateDatasetAndBuildingItem");
}

void buildingItems(Story& story, ICollaborationProject& project)
{
    const int read = readItems(story, project);
    const std::wstring id = addItem(story, project, read);
    const int current = readItems(story, project);
    story.expect(!changeItem(story, project, id, read), L"a stale revision was not refused");
    story.expect(changeItem(story, project, id, current), L"the item could not be changed");
    readItems(story, project);
    elevations(story, project, id);
    bind(story, project, id);
}

} // namespace

void design(Story& story, ICollaborationProject& project, Pictures& pictures)
{
    story.chapter(L"Axis grid and building items", __FILE__);
    axisGrid(story, project, pictures);
    buildingItems(story, project);
}

} // namespace session
