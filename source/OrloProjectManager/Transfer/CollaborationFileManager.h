#pragma once

#include <BaseCommon/ErrorCode.h>
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

/// An upload through the document store, step by step: what a caller who may try it again has to know of it.
struct DocumentUpload
{
    std::string datasetId;                    ///< that was made for the file; another try makes no second one
    std::shared_ptr<ICollaborationFile> file; ///< null until the upload is whole
    ErrorCode failure;                        ///< that of the bytes, whatever the steps behind them say; clear where they arrived
};

class CollaborationFileManager : public ICollaborationFileManager
{
public:
    std::shared_ptr<ICollaborationFile> UploadFile(const std::wstring& folderId, const std::wstring& path, ErrorCode& error) override;
    std::shared_ptr<ICollaborationFile> UpdateFile(const std::string& dsId, const std::wstring& path, ErrorCode& error) override;

    /// The same through the document store.
    std::shared_ptr<ICollaborationFile> UploadFileByArkiv(const std::wstring& folderId, const std::wstring& path, ErrorCode& error);
    std::shared_ptr<ICollaborationFile> UpdateFileByArkiv(const std::string& dsId, const std::wstring& folderId, const std::wstring& path,
                                                          ErrorCode& error);

    /// The same for who tries again.   upload: of the try before; an empty one for the first.
    std::shared_ptr<ICollaborationFile> UploadFileByArkiv(const std::wstring& folderId, const std::wstring& path, DocumentUpload& upload,
                                                          ErrorCode& error);
    std::shared_ptr<ICollaborationFile> UpdateFileByArkiv(const std::string& dsId, const std::wstring& folderId, const std::wstring& path,
                                                          DocumentUpload& upload, ErrorCode& error);
};

} // namespace orlo
