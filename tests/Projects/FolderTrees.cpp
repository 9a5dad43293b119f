#include "FolderTrees.h"

namespace orlo::test {

namespace {

std::wstring drawnOne(const ICollaborationFolder* folder)
{
    if (!folder)
        return L"null";
    const std::wstring id = folder->GetId().empty() ? L"-" : folder->GetId();
    const auto children = folder->GetSubFolders();
    return children.empty() ? id : id + L"{" + drawn(children) + L"}";
}

} // namespace

std::wstring drawn(const std::vector<ICollaborationFolder*>& roots)
{
    std::wstring all;
    for (const ICollaborationFolder* root : roots)
        all += (all.empty() ? L"" : L" ") + drawnOne(root);
    return all;
}

std::wstring drawn(const Folders& roots)
{
    std::vector<ICollaborationFolder*> pointers;
    for (const auto& root : roots)
        pointers.push_back(root.get());
    return drawn(pointers);
}

std::vector<std::string> datasetIds(const ICollaborationFolder& folder)
{
    std::vector<std::string> ids;
    for (const auto& dataset : folder.GetDatasets())
        ids.push_back(dataset->id);
    return ids;
}

} // namespace orlo::test
