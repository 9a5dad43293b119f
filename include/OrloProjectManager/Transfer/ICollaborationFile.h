#pragma once

#include <OrloProjectManager/Export.h>

#include <cstdint>
#include <string>

namespace orlo {

/// A file that has become a version of a dataset.
class ORLO_PROJECT_API ICollaborationFile
{
public:
    ICollaborationFile();
    virtual ~ICollaborationFile();

    ICollaborationFile(const ICollaborationFile&) = delete;
    ICollaborationFile& operator=(const ICollaborationFile&) = delete;

    /// The dataset that holds the file.
    virtual std::string GetId() const = 0;
    virtual std::int32_t GetVersion() const = 0;
    /// Bytes, as the platform counts them.
    virtual std::int64_t GetLength() const = 0;
};

} // namespace orlo
