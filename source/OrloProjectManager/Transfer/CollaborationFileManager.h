#pragma once

#include <OrloProjectManager/Projects/DatasetVersion.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

namespace orlo {

class CollaborationFile final : public ICollaborationFile
{
public:
    CollaborationFile(std::string datasetId, http::ORLOHTTPPayloadDatasetVersion version);

    std::string GetId() const override { return m_datasetId; }
    std::int32_t GetVersion() const override { return m_version.version; }
    std::int64_t GetLength() const override { return m_version.size; }

private:
    std::string m_datasetId;
    http::ORLOHTTPPayloadDatasetVersion m_version;
};

/// What the document store tells about a file that was uploaded, as a version of a dataset names it.   message: of the upload.
/// Returns: without an id where that tells none, with the version -1 where it tells no number.
http::ORLOHTTPPayloadDatasetVersion documentVersion(const std::wstring& message);

class CollaborationFileManager : public ICollaborationFileManager
{
public:
    std::shared_ptr<ICollaborationFile> UploadFile(const std::wstring& folderId, const std::wstring& path, ErrorCode& error) override;
    std::shared_ptr<ICollaborationFile> UpdateFile(const std::string& dsId, const std::wstring& path, ErrorCode& error) override;

    /// The same through the document store.
    std::shared_ptr<ICollaborationFile> UploadFileByArkiv(const std::wstring& folderId, const std::wstring& path, ErrorCode& error);
    std::shared_ptr<ICollaborationFile> UpdateFileByArkiv(const std::string& dsId, const std::wstring& folderId, const std::wstring& path,
                                                          ErrorCode& error);
};

} // namespace orlo
