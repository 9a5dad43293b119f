#include "LocalFolders.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>

#include <mutex>

namespace orlo::utils {

namespace {

struct LocalRoot
{
    std::mutex mutex;
    std::wstring folder;
};

LocalRoot& localRoot()
{
    static LocalRoot& root = utils::neverDestroyed(new LocalRoot);
    return root;
}

std::wstring currentRoot()
{
    LocalRoot& root = localRoot();
    const std::lock_guard lock(root.mutex);
    return root.folder;
}

std::wstring made(const std::wstring& folder)
{
    createDirectoryRecursively(folder);
    return folder;
}

std::wstring localFolder(std::wstring (*usersFolder)(), const wchar_t* name)
{
    const std::wstring root = currentRoot();
    return made(FilePath::Combine(root.empty() ? FilePath::Combine(usersFolder(), L"Orlo") : root, name));
}

} // namespace

void setLocalRoot(const std::wstring& folder)
{
    std::wstring absolute;
    if (holdsNul(folder)) {
        absolute = folder; // a place that can't be made; what is to be kept there fails
    }
    else if (!folder.empty()) {
        std::error_code error;
        const std::filesystem::path path = std::filesystem::absolute(makePath(folder), error).lexically_normal();
        absolute = error ? folder : fromPath(path);
    }
    while (absolute.size() > 1 && (absolute.back() == L'/' || absolute.back() == SeparatorChar().front()))
        absolute.pop_back();

    LocalRoot& root = localRoot();
    const std::lock_guard lock(root.mutex);
    root.folder = absolute;
}

std::wstring getTempPath()
{
    return localFolder(userCacheFolder, L"Temp");
}
std::wstring getLocalDbCachePath()
{
    return localFolder(userDataFolder, L"Jobs");
}
std::wstring getLocalFileCachePath()
{
    return localFolder(userCacheFolder, L"Files");
}
std::wstring getTemplatesPath()
{
    return localFolder(userCacheFolder, L"Templates");
}
std::wstring getProcessesPath()
{
    return localFolder(userDataFolder, L"Processes");
}
std::wstring getLogPath()
{
    return localFolder(userStateFolder, L"Logs");
}

std::wstring getLocalAppDataPath()
{
    const std::wstring root = currentRoot();
    return made(root.empty() ? userDataFolder() : FilePath::Combine(root, L"AppData"));
}

} // namespace orlo::utils
