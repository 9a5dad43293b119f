#include "Chapters.h"
#include "LocalFiles.h"
#include "UploadDesk.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

/// Waits for the one job that was handed over.
void awaitUpload(Story& story, UploadDesk& desk)
{
    const JobEvent event = desk.next(JobEvent::Kind::Ended);
    sayEnd(story, event);
    story.expect(event.state == JobState::Succeeded, L"the job failed", event.error);
}

/// Parts from the public catalogue, under the project's own ids.
void components(Story& story, ICollaborationProject& project, const Platform& platform)
{
    ErrorCode error;
    const std::map<std::wstring, std::wstring> taken{{L"101", platform.publicComponent("单扇平开门 Single door")},
                                                     {L"102", platform.publicComponent("矩形柱 Rectangular column")}};
    story.expect(project.AddComponentsWithIds(taken, error), L"the components could not be added", error);
    story.say(L"Took a door and a column from the public catalogue.", L"ICollaborationProject::AddComponentsWithIds");

    std::vector<Component> found;
    int total = 0;
    story.expect(IProjectComponentLibrary::SearchComponents(project.GetId(), {{}, L"柱", 1, 10}, found, total, error) && total == 1,
                 L"the column was not found", error);
    Component column;
    story.expect(
        IProjectComponentLibrary::GetDetailInfoOfComponent(project.GetId(), found.front().id, found.front().version, column, error),
        L"the column could not be read", error);
    std::wstring types;
    for (const std::wstring& type : column.familyTypeNames)
        types += (types.empty() ? L"" : L", ") + type;
    story.say(L"Searched for 柱: " + column.name + L", version " + std::to_wstring(column.version) + L", comes as " + types,
              L"IProjectComponentLibrary::SearchComponents, GetDetailInfoOfComponent; sizes in mm");
}

/// A file with which new drawings begin: handed over by one user, brought to the disk of the next.
void templates(Story& story, ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder)
{
    ErrorCode error;
    ITemplateManager& manager = *ITemplateManager::Get();
    const std::string bytes = drawingBytes(100 << 10, 41);
    const std::wstring path = makeFile(story, localFolder, L"施工图.dwt", bytes);
    {
        UploadDesk desk(story);
        story.expect(manager.UploadTemplateByJob(L"施工图", project.GetId(), path, SpecialtyType::ZOK, error),
                     L"the template was not accepted", error);
        awaitUpload(story, desk);
    }
    std::vector<SamplePlate> offered;
    story.expect(manager.GetAllTemplatesOfProject(project.GetId(), offered, error) && !offered.empty(), L"there is no template", error);
    story.say(L"The project offers the template " + offered.back().name + L", for " + offered.back().specialty,
              L"ITemplateManager::UploadTemplateByJob, GetAllTemplatesOfProject");

    const std::string dataset = firstDraft(story, project).id;
    platform.startDataset(dataset, utils::toString(offered.back().id));
    const PromiseData brought = manager.DownloadTemplateFile(utils::toWstring(dataset), project.GetId(), error).get();
    story.expect(brought.success && hasBytes(brought.message, bytes), L"the template did not come: " + brought.message, error);
    story.say(L"Brought it to this disk for a dataset that begins with it; the bytes are the same.",
              L"ITemplateManager::DownloadTemplateFile");
}

/// A module is known by where it stands: a space, a resource type, a category.
class ModuleShelf
{
public:
    ModuleShelf(Story& story, std::wstring projectId) : m_story(story), m_projectId(std::move(projectId)) {}

    std::wstring firstCategory() const
    {
        ErrorCode error;
        std::wstring text;
        JsonWrapper categories;
        JsonWrapper first;
        std::string id;
        std::string name;
        m_story.expect(IModuleManager::Get()->GetCategories(space, m_projectId, type, L"tree", text, error) &&
                           categories.Parse(utils::toString(text)) && categories.Get(0, first) && first.Get("id", id) &&
                           first.Get("name", name),
                       L"there is no category for modules", error);
        m_story.say(L"Modules stand in categories; the first is " + utils::toWstring(name), L"IModuleManager::GetCategories");
        return utils::toWstring(id);
    }

    /// Asks before the bytes go anywhere.
    void ask(const std::wstring& path, const std::wstring& category) const
    {
        ErrorCode error;
        const bool isWanted = IModuleManager::Get()->IsCanUpload(space, m_projectId, L"zok", utils::toWstring(utils::md5(path)), module,
                                                                 category, type, L"", error);
        m_story.say(std::wstring(L"May the module ") + module + L" come? " + (isWanted ? L"Yes." : L"No: " + error.GetErrorMessage()),
                    L"IModuleManager::IsCanUpload");
    }

    void handOver(const std::wstring& path, const std::wstring& category) const
    {
        ErrorCode error;
        m_story.expect(IModuleManager::Get()->UploadModuleByJob(space, m_projectId, type, category, SpecialtyType::ZOK, L"module-1", path,
                                                                module, error),
                       L"the module was not accepted", error);
    }

private:
    static constexpr const wchar_t* space = L"projects";
    static constexpr const wchar_t* type = L"beam";
    static constexpr const wchar_t* module = L"桁架";

    Story& m_story;
    std::wstring m_projectId;
};

void modules(Story& story, ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder)
{
    platform.addModuleCategory(utils::toString(project.GetId()), "梁 Beams");
    const ModuleShelf shelf(story, project.GetId());
    const std::wstring category = shelf.firstCategory();
    const std::wstring path = makeFile(story, localFolder, L"桁架.vmd", drawingBytes(64 << 10, 42));
    shelf.ask(path, category);
    {
        UploadDesk desk(story);
        shelf.handOver(path, category);
        awaitUpload(story, desk);
    }
    shelf.ask(path, category);
}

/// Bundles for the archive, with what is in them.
void archive(Story& story, ICollaborationProject& project, const Platform& platform)
{
    const auto datasets = firstFolder(story, project).GetDatasets();
    story.expect(!datasets.empty(), L"there is no dataset");
    platform.bundle(utils::toString(project.GetId()), datasets.front()->id);
    ErrorCode error;
    std::vector<std::shared_ptr<IArchivePackage>> packages;
    story.expect(project.GetArchivePackageList(packages, error), L"the archive packages could not be read", error);
    for (const auto& package : packages) {
        story.say(L"Archive package " + package->GetName() + L", for " + package->GetProperty()->GetReceiverName() + L":",
                  L"ICollaborationProject::GetArchivePackageList");
        for (const auto& unit : package->GetArchiveUnits()) {
            std::vector<ArchiveDatasetEntry> entries;
            unit->GetDatasets(entries);
            story.say(L"  - " + unit->GetName() + L": " + std::to_wstring(entries.size()) + L" dataset, " +
                          std::to_wstring(unit->GetTotalSize()) + L" bytes",
                      L"IArchiveUnit::GetDatasets, GetTotalSize");
        }
    }
}

} // namespace

void libraries(Story& story, ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder)
{
    if (!platform.isOurOwn())
        return;
    story.chapter(L"Libraries of the project", __FILE__);
    components(story, project, platform);
    templates(story, project, platform, localFolder);
    modules(story, project, platform, localFolder);
    archive(story, project, platform);
}

} // namespace session
