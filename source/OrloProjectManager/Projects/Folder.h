#pragma once

#include "../NetworkProject/Projects/FolderReaders.h"

#include <OrloProjectManager/Projects/ICollaborationFolder.h>

#include <functional>
#include <map>

namespace orlo {

class Folder final : public ICollaborationFolder
{
public:
    Folder(std::wstring id, std::wstring name, std::wstring folderType, std::wstring teamId);
    ~Folder() override;

    std::vector<ICollaborationFolder*> GetSubFolders() override;
    std::vector<ICollaborationFolder*> GetSubFolders() const override;
    std::vector<std::shared_ptr<DatasetInfo>> GetDatasets() const override;
    std::wstring GetId() const override;
    std::wstring GetName() const override;
    int GetFolderType() const override;
    std::shared_ptr<ICollaborationTeam> GetTeam() const override;

    void addChild(std::shared_ptr<ICollaborationFolder> child);
    void addDatasets(std::vector<std::shared_ptr<DatasetInfo>> datasets);

private:
    std::wstring m_id;
    std::wstring m_name;
    std::wstring m_folderType;
    std::vector<std::shared_ptr<ICollaborationFolder>> m_children;
    std::shared_ptr<ICollaborationTeam> m_team;
    std::vector<std::shared_ptr<DatasetInfo>> m_datasets;
};

/// Folder records by the id of their parent, in the order of the answer.
using FoldersByParent = std::map<std::wstring, std::vector<http::ORLOHTTPPayloadFolder>>;

FoldersByParent groupByParent(std::vector<http::ORLOHTTPPayloadFolder> records);

/// Builds folder trees out of records. Each group of children is used once, so that a record joins the tree at most once
/// whatever the platform's answer says, and a tree of any depth needs no deep stack.
class FolderCreatorAlg
{
public:
    explicit FolderCreatorAlg(FoldersByParent records);

    /// The records without a parent; they are then no longer here.
    std::vector<http::ORLOHTTPPayloadFolder> takeRoots() { return takeChildren(std::wstring()); }

    /// A folder with all that is below it. Asks for the datasets of each folder, a node first, then its children in order.
    std::shared_ptr<ICollaborationFolder> createFolder(const http::ORLOHTTPPayloadFolder& record);

private:
    std::vector<http::ORLOHTTPPayloadFolder> takeChildren(const std::wstring& parentId);

    FoldersByParent m_records;
};

/// What the raw pointers refer to lives as long as the folders.
std::vector<ICollaborationFolder*> rawPointers(const std::vector<std::shared_ptr<ICollaborationFolder>>& folders);

/// The first folder that fits, a node before its children; null if none does.
ICollaborationFolder* findFolder(std::vector<ICollaborationFolder*> roots, const std::function<bool(const ICollaborationFolder&)>& fits);

} // namespace orlo
