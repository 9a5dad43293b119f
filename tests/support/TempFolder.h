#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orlo::test {

/// A new, empty folder; gone with everything in it at the end.
class TempFolder
{
public:
    /// Below the system's temporary place.
    TempFolder();
    explicit TempFolder(const std::filesystem::path& parent);
    ~TempFolder();

    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path path(const std::string& utf8Name) const;
    std::wstring wide() const;
    std::wstring wide(const std::string& utf8Name) const;

private:
    std::filesystem::path m_path;
};

/// Lets the local folders of the libraries lie below a folder of the test's; back to the usual places at the end.
class LocalRoot
{
public:
    explicit LocalRoot(const TempFolder& folder);
    ~LocalRoot();

    LocalRoot(const LocalRoot&) = delete;
    LocalRoot& operator=(const LocalRoot&) = delete;
};

std::string readFile(const std::filesystem::path& file);
void writeFile(const std::filesystem::path& file, const std::string& content);

/// Makes a pipe with a name: something at a path that is no file.   Returns: whether it is there.
bool makeNamedPipe(const std::filesystem::path& path);

/// A folder for everybody on another file system than that of a folder; empty if there is none.
std::filesystem::path otherFileSystem(const std::filesystem::path& folder);

/// While it lives, a new file may be read by everybody, and written by its owner alone.
class UsualPermissions
{
public:
    UsualPermissions();
    ~UsualPermissions();

    UsualPermissions(const UsualPermissions&) = delete;
    UsualPermissions& operator=(const UsualPermissions&) = delete;

private:
    unsigned m_before;
};

/// The regular files below a folder, as paths relative to it, sorted; less the marks of living processes.
std::vector<std::string> filesBelow(const std::filesystem::path& folder);

} // namespace orlo::test
