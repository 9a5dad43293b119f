#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace orlo::platform {
class LocalPlatform;
}

namespace session {

/// The folder of a session: one that is kept for the next session, or one that goes with this one.
class SessionFolder
{
public:
    /// kept: empty for a folder that goes.
    explicit SessionFolder(const std::string& kept);
    ~SessionFolder();
    SessionFolder(const SessionFolder&) = delete;
    SessionFolder& operator=(const SessionFolder&) = delete;

    std::wstring path(const std::wstring& name) const;
    /// For what the user looks at when the session is over: among the rest, or, where that goes, among the data of the user's applications.
    const std::wstring& pictures() const { return m_pictures; }

private:
    std::filesystem::path m_path;
    std::wstring m_pictures;
    bool m_isKept;
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
    /// Makes the user "li" known. Only on a platform of our own.
    void addColleague() const;
    /// Lets the project's first team share the first version of a dataset with another. Only on a platform of our own.
    void share(const std::string& projectId, const std::string& teamId, const std::string& datasetId) const;
    /// The id of a component of the public catalogue. As the rest here: only on a platform of our own.
    std::wstring publicComponent(const std::string& name) const;
    /// Lets a dataset begin with a template that its project offers.
    void startDataset(const std::string& datasetId, const std::string& templateId) const;
    void addModuleCategory(const std::string& projectId, const std::string& name) const;
    /// Bundles the first version of a dataset for the archive.
    void bundle(const std::string& projectId, const std::string& datasetId) const;
    /// No upload comes to its end from now on. Only on a platform of our own.
    void slowUploadsDown() const;

private:
    std::unique_ptr<orlo::platform::LocalPlatform> m_own;
    std::string m_url;
};

} // namespace session
