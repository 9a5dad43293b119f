#pragma once

#include <string>

namespace orlo {

/// What can be asked of every upload job.
class IUploadFileJobEntity
{
public:
    virtual ~IUploadFileJobEntity() = default;

    virtual const std::string& GetProjectId() const = 0;
    virtual const std::wstring& GetFolderId() const = 0;
    virtual const std::wstring& GetLocalFilePath() const = 0;
};

} // namespace orlo
