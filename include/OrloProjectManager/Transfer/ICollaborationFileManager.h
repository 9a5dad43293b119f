#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Transfer/ICollaborationFile.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// Files as versions of datasets in project folders: at once, or as jobs that outlive the application.
class ORLO_PROJECT_API ICollaborationFileManager
{
public:
    /// The one manager of the process; never null, owned by the library.
    static ICollaborationFileManager* Get();

    ICollaborationFileManager();
    virtual ~ICollaborationFileManager();

    ICollaborationFileManager(const ICollaborationFileManager&) = delete;
    ICollaborationFileManager& operator=(const ICollaborationFileManager&) = delete;

    /// Uploads a file, makes a dataset for it in a folder, and a version that holds it.
    /// Returns: empty on failure. What was made on the platform before a failing step stays there.
    /// Errors: 0xE8000002 transport or exception; a negative value for an error status.
    /// Requests: four, retried.   Threads: any; blocks the caller.
    virtual std::shared_ptr<ICollaborationFile> UploadFile(const std::wstring& folderId, const std::wstring& path, ErrorCode& error) = 0;

    /// Uploads a file as the next version of a dataset.
    /// dsId: not empty, or nothing is sent and the result is empty.
    /// Requests: three, retried.   Threads: any; blocks the caller.
    virtual std::shared_ptr<ICollaborationFile> UpdateFile(const std::string& dsId, const std::wstring& path, ErrorCode& error) = 0;

    /// Whether a folder holds a dataset with the very name of the file; its id then goes to `dsId`.
    /// Requests: two, and one for each folder of the project.   Threads: any; blocks the caller.
    static bool IsFileExistInProject(const std::string& projectId, const std::wstring& folderId, const std::wstring& path,
                                     std::wstring& dsId);

    /// Hands a file to a job, which uploads it later, after a restart too. The file is copied first: what happens to it
    /// afterwards doesn't matter to the job. A job that has run is gone, whether it ended well or badly.
    /// Returns: false if the copy or the job can't be saved, or if no job manager runs; in that last case the job stays
    /// saved for the next one.   Requests: none.   Threads: any.
    static bool UploadFileByJob(const std::string& projectId, const std::wstring& folderId, const std::wstring& path);
    /// The same under another name; an empty one is the file's own.
    static bool UploadFileByJob(const std::string& projectId, const std::wstring& folderId, const std::wstring& path,
                                const std::wstring& fileName);
    /// The same as the next version of the dataset `fileId`.
    static bool UpdateFileByJob(const std::string& projectId, const std::wstring& folderId, const std::wstring& fileId,
                                const std::wstring& path);
    /// One job for each file; a file whose name stands in the folder becomes the next version of that dataset.
    /// Returns: false at the first file that can't be handed over; the jobs before it stay.
    /// Requests: two, and one for each folder of the project.
    static bool UploadFilesByJob(const std::string& projectId, const std::wstring& folderId, const std::vector<std::wstring>& paths);
    /// The same, and each file is bound to a version of a dataset.
    static bool UploadFilesWithDsByJob(const std::string& projectId, const std::wstring& folderId, const std::vector<std::wstring>& paths,
                                       const std::string& dsId, int dsVersion);
};

} // namespace orlo
