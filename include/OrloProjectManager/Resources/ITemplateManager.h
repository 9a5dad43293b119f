#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/Specialty.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <future>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// A template file of a project's own library or of the public one.
struct SamplePlate
{
    std::wstring id;
    std::wstring name;
    std::wstring uri;             ///< in the project's own library: the file in the document store
    std::wstring samplePlateFrom; ///< "From_Common", the public library, or "From_Customize", the project's own
    std::wstring specialty;       ///< "ZOK", "ZIM", "ZUTA", "ZEB" or "Unknown"
    std::wstring templateId;      ///< in the public library
    std::wstring projectId;
    std::wstring size;
    std::wstring createTime;
    std::wstring updateTime;
};

/// Template files with which an authoring application starts a dataset.
/// Errors: 0xE8000002 transport or exception; a negative value for an error status.   Threads: any.
class ORLO_PROJECT_API ITemplateManager
{
public:
    /// The one manager of the process; never null, owned by the library.
    static ITemplateManager* Get();

    ITemplateManager();
    virtual ~ITemplateManager();

    ITemplateManager(const ITemplateManager&) = delete;
    ITemplateManager& operator=(const ITemplateManager&) = delete;

    /// Hands a file to a job, which uploads it and adds it to the project's own library. The file is copied first: what happens to it
    /// afterwards doesn't matter to the job. A job that has run is gone, whether it ended well or badly. One that outlives its process is
    /// run by the next as the upload of a file, which adds no template.
    /// fileName: the template's name in the library; it needn't be that of the file.   specialty: a value without a name is "Unknown".
    /// Returns: false if the copy or the job can't be saved, or if no job manager runs; in that last case the job stays saved for
    /// the next one.   Requests: none.
    virtual bool UploadTemplateByJob(const std::wstring& fileName, const std::wstring& projectId, const std::wstring& localPath,
                                     SpecialtyType specialty, ErrorCode& error) = 0;
    /// Whether the project's own library has a template of that name. False on failure too: the ErrorCode tells; clear for an answer that
    /// isn't as expected.
    /// Errors: also 0xE8000005 for an empty name or project id.   Requests: one, retried.   Blocks the caller.
    virtual bool IsTemplateExistedInProject(const std::wstring& templateName, const std::wstring& projectId, ErrorCode& error) = 0;
    /// Appends the templates that a project offers, in the platform's order.
    /// Returns: false, with the list as it was, on failure.
    /// Errors: also 0xE8000001 for an empty project id.   Requests: one, retried.   Blocks the caller.
    virtual bool GetAllTemplatesOfProject(const std::wstring& projectId, std::vector<SamplePlate>& out, ErrorCode& error) = 0;
    /// Brings the template of a dataset to the local folder of templates. A file that is there already is taken as it is, however old.
    /// The file appears under its name only when it is whole. Two downloads of one file may go on at once; the later replaces the
    /// earlier.
    /// Returns at once; keep the ErrorCode alive until the future is ready, which never holds an exception.
    /// Message: the local path, with the status 200; or why there is none, with the status 400: the platform's words, or those of a
    /// dataset that has no template, of one whose template comes from nowhere known, or whose name would lead out of the folder.
    /// Requests: up to four, retried.
    [[nodiscard]] virtual std::future<PromiseData> DownloadTemplateFile(const std::wstring& datasetId, const std::wstring& projectId,
                                                                        ErrorCode& error) = 0;
};

} // namespace orlo
