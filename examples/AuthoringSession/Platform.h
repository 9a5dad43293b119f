#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace orlo::platform {
class LocalPlatform;
}

namespace session {

/// A folder for the length of one session.
class SessionFolder
{
public:
    SessionFolder();
    ~SessionFolder();
    SessionFolder(const SessionFolder&) = delete;
    SessionFolder& operator=(const SessionFolder&) = delete;

    std::wstring path(const std::wstring& name) const;

private:
    std::filesystem::path m_path;
};

/// The platform that the session talks to over HTTP: the one at an address, or one of its own in this process.
class Platform
{
public:
    Platform(const std::string& url, const SessionFolder& folder);
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    bool isOurOwn() const { return m_own != nullptr; }
    std::wstring url() const;

    /// Puts a file into a dataset, as another application would have. Only on a platform of our own.
    void addDatasetFile(const std::string& datasetId, const std::string& path, const std::string& bytes) const;

private:
    std::unique_ptr<orlo::platform::LocalPlatform> m_own;
    std::string m_url;
};

} // namespace session
