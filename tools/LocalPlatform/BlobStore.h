#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <string>

namespace orlo::platform {

/// Contents of files by id: one file each below the data folder, or in memory when there is none.
class BlobStore
{
public:
    /// folder: empty keeps everything in memory.
    explicit BlobStore(std::filesystem::path folder);

    /// The id must come from `newId`: it becomes a file's name.
    void put(const std::string& id, const std::string& bytes);
    /// Refuses an unknown id with 404.
    std::string get(const std::string& id) const;
    void remove(const std::string& id);

private:
    std::filesystem::path fileOf(const std::string& id) const;

    std::filesystem::path m_folder;
    mutable std::mutex m_mutex;
    std::map<std::string, std::string> m_memory;
};

} // namespace orlo::platform
