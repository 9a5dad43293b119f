#include "Folder.h"

#include "../NetworkProject/Call/TextTable.h"
#include "../Teams/CollaborationTeam.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloLogging/Log.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <iterator>

namespace orlo {

using http::ORLOHTTPPayloadFolder;

namespace {

int folderTypeOf(const std::wstring& text)
{
    static const auto& table = utils::neverDestroyed(
        new const TextTable<int>({{1, L"Process"}, {2, L"Published"}, {3, L"ProjectShare"}, {4, L"OtherFiles"}, {5, L"TeamRelated"}}, 0));
    return table.valueOf(text);
}

std::shared_ptr<Folder> folderWithDatasets(const ORLOHTTPPayloadFolder& record)
{
    const auto folder = std::make_shared<Folder>(record.id, record.name, record.folderType, record.teamId);
    ICollaborationProjectManager* const manager = ICollaborationProjectManager::Get();
    if (!manager) {
        log::errorAt(ORLO_HERE("FolderCreatorAlg::createFolder"), L"pProjectManager is nullptr.");
        return nullptr;
    }
    folder->addDatasets(manager->GetDatasetInfosInFolder(record.id));
    return folder;
}

} // namespace

Folder::Folder(std::wstring id, std::wstring name, std::wstring folderType, std::wstring teamId)
    : m_id(std::move(id)),
      m_name(std::move(name)),
      m_folderType(std::move(folderType)),
      m_team(std::make_shared<CollaborationTeam>(std::move(teamId)))
{}

Folder::~Folder()
{
    // One level at a time: a chain of thousands of folders would overflow the stack if each destroyed its own children.
    std::vector<std::shared_ptr<ICollaborationFolder>> orphans = std::move(m_children);
    while (!orphans.empty()) {
        const std::shared_ptr<ICollaborationFolder> orphan = std::move(orphans.back());
        orphans.pop_back();
        auto* const folder = dynamic_cast<Folder*>(orphan.get());
        if (folder && orphan.use_count() == 1) {
            std::move(folder->m_children.begin(), folder->m_children.end(), std::back_inserter(orphans));
            folder->m_children.clear();
        }
    }
}

std::vector<ICollaborationFolder*> Folder::GetSubFolders()
{
    return rawPointers(m_children);
}

std::vector<ICollaborationFolder*> Folder::GetSubFolders() const
{
    return rawPointers(m_children);
}

std::vector<std::shared_ptr<DatasetInfo>> Folder::GetDatasets() const
{
    return m_datasets;
}

std::wstring Folder::GetId() const
{
    return m_id;
}

std::wstring Folder::GetName() const
{
    return m_name;
}

int Folder::GetFolderType() const
{
    return folderTypeOf(m_folderType);
}

std::shared_ptr<ICollaborationTeam> Folder::GetTeam() const
{
    return m_team;
}

void Folder::addChild(std::shared_ptr<ICollaborationFolder> child)
{
    m_children.push_back(std::move(child));
}

void Folder::addDatasets(std::vector<std::shared_ptr<DatasetInfo>> datasets)
{
    std::move(datasets.begin(), datasets.end(), std::back_inserter(m_datasets));
}

FoldersByParent groupByParent(std::vector<ORLOHTTPPayloadFolder> records)
{
    FoldersByParent groups;
    for (ORLOHTTPPayloadFolder& record : records)
        groups[record.parentId].push_back(std::move(record));
    return groups;
}

FolderCreatorAlg::FolderCreatorAlg(FoldersByParent records) : m_records(std::move(records))
{}

std::vector<ORLOHTTPPayloadFolder> FolderCreatorAlg::takeChildren(const std::wstring& parentId)
{
    const auto found = m_records.find(parentId);
    if (found == m_records.end())
        return {};
    std::vector<ORLOHTTPPayloadFolder> children = std::move(found->second);
    m_records.erase(found);
    return children;
}

std::shared_ptr<ICollaborationFolder> FolderCreatorAlg::createFolder(const ORLOHTTPPayloadFolder& record)
{
    struct Waiting
    {
        ORLOHTTPPayloadFolder record;
        std::shared_ptr<Folder> parent;
    };
    std::shared_ptr<Folder> top;
    std::vector<Waiting> waiting{{record, nullptr}};
    while (!waiting.empty()) {
        const Waiting next = std::move(waiting.back());
        waiting.pop_back();
        const std::shared_ptr<Folder> folder = folderWithDatasets(next.record);
        if (!folder)
            log::errorAt(ORLO_HERE("FolderCreatorAlg::createFolder"), L"folder is nullptr.");
        if (next.parent)
            next.parent->addChild(folder);
        else
            top = folder;
        if (!folder)
            continue;
        std::vector<ORLOHTTPPayloadFolder> children = takeChildren(next.record.id);
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            waiting.push_back({std::move(*child), folder});
    }
    return top;
}

std::vector<ICollaborationFolder*> rawPointers(const std::vector<std::shared_ptr<ICollaborationFolder>>& folders)
{
    std::vector<ICollaborationFolder*> pointers;
    pointers.reserve(folders.size());
    for (const auto& folder : folders)
        pointers.push_back(folder.get());
    return pointers;
}

ICollaborationFolder* findFolder(std::vector<ICollaborationFolder*> roots, const std::function<bool(const ICollaborationFolder&)>& fits)
{
    std::vector<ICollaborationFolder*> waiting(roots.rbegin(), roots.rend());
    while (!waiting.empty()) {
        ICollaborationFolder* const folder = waiting.back();
        waiting.pop_back();
        if (!folder)
            continue;
        if (fits(*folder))
            return folder;
        const std::vector<ICollaborationFolder*> children = folder->GetSubFolders();
        waiting.insert(waiting.end(), children.rbegin(), children.rend());
    }
    return nullptr;
}

} // namespace orlo
