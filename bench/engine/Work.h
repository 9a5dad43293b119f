#pragma once

#include "Origin.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace orlo::bench {

using Command = std::vector<std::string>;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

enum class Kind { get, upload, download, batch };

/// A row of the table without its protocol.
struct Work
{
    Kind kind;
    int count;        ///< of requests, or files
    int width;        ///< so many at a time
    std::size_t size; ///< of a file
    bool keep;        ///< GETs only
    double aims[2];   ///< for http and https, of the library's time divided by curl's; 0 for none

    std::string name(bool tls) const;
    std::size_t bytes() const { return static_cast<std::size_t>(count) * size; }
};

/// All of the table, or what goes through the delaying proxy.
std::vector<Work> allWork(bool delayed);

/// A folder in memory that is gone with this object; one of a benchmark that was killed is removed first.
class Folder
{
public:
    Folder();
    ~Folder();

    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
    /// Without what the last run left in it.
    std::filesystem::path emptied(const std::string& name) const;

private:
    std::filesystem::path m_path;
};

/// The files that the server has, and that are uploaded. Each is made when it is first needed, and stays.
class Sources
{
public:
    explicit Sources(const Folder& folder) : m_folder(folder / "data") { std::filesystem::create_directories(m_folder); }

    const std::filesystem::path& folder() const { return m_folder; }
    /// The file's name, or the name of the batch's folder.
    static std::string name(const Work& work);
    void make(const Work& work) const;

private:
    std::filesystem::path m_folder;
};

} // namespace orlo::bench
