#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/DatasetRecords.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ICollaborationTeam;

/// A folder of a project's tree. Made by the project's operations; holds what it was made with and asks for nothing.
class ORLO_PROJECT_API ICollaborationFolder
{
public:
    ICollaborationFolder();
    virtual ~ICollaborationFolder();

    ICollaborationFolder(const ICollaborationFolder&) = delete;
    ICollaborationFolder& operator=(const ICollaborationFolder&) = delete;

    /// The children, in the order of the platform. The pointers live as long as this folder.
    virtual std::vector<ICollaborationFolder*> GetSubFolders() = 0;
    virtual std::vector<ICollaborationFolder*> GetSubFolders() const = 0;
    virtual std::vector<std::shared_ptr<DatasetInfo>> GetDatasets() const = 0;
    virtual std::wstring GetId() const = 0;
    virtual std::wstring GetName() const = 0;
    /// 1 process, 2 published, 3 shared in the project, 4 other files, 5 of a team; 0 any other.
    virtual int GetFolderType() const = 0;
    /// The team that the folder belongs to, made without a request; its id may be empty.
    virtual std::shared_ptr<ICollaborationTeam> GetTeam() const = 0;
};

} // namespace orlo
