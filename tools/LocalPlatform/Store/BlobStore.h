#pragma once

#include "OpenFile.h"
#include "StagedBlob.h"

#include <filesystem>
#include <memory>
#include <string>

namespace orlo::platform {

/// Contents of files by id, one file each. A name holds a whole content or none at all. Any thread may call.
class BlobStore
{
public:
    /// folder: empty takes a temporary one, which goes with the store.
    explicit BlobStore(const std::filesystem::path& folder);
    ~BlobStore();
    BlobStore(const BlobStore&) = delete;
    BlobStore& operator=(const BlobStore&) = delete;

    /// A new content, to be kept later.
    std::unique_ptr<StagedBlob> stage() const;
    /// The id must come from `newId`: it becomes a file's name. A content that is there already is replaced.
    void keep(StagedBlob& staged, const std::string& id) const;
    void put(const std::string& id, const std::string& bytes) const;

    /// Both refuse an unknown id with 404.
    OpenFile open(const std::string& id) const;
    std::string get(const std::string& id) const;

    void remove(const std::string& id) const;

private:
    std::filesystem::path fileOf(const std::string& id) const;

    bool m_temporary;
    std::filesystem::path m_folder;
};

} // namespace orlo::platform
