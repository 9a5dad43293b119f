#include "JobCopy.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>
#include <OrloLogging/Log.h>

#include <vector>

namespace orlo {

namespace {

bool failed(const CallSite& site, const wchar_t* words)
{
    log::errorAt(site, words);
    return false;
}

/// Whether copies may lie there. The job database stands among the projects' folders, and one of its name would be in its way.
bool isPlaceOfCopies(const std::wstring& copies, const std::wstring& root)
{
    constexpr const wchar_t* database = L"jobs.db";
    return root == copies ||
           (utils::leadsInside(copies, root) && utils::LowerString(utils::getFileName(root)).rfind(database, 0) == std::wstring::npos);
}

bool makeFolder(const std::wstring& path)
{
    return utils::hasDirectory(path) || utils::createDirectory(path);
}

} // namespace

bool CopyFileToTempPath(const std::wstring& path, const std::string& projectId, const std::wstring& fileName, std::wstring& copy)
{
    constexpr const char* function = "orlo::CopyFileToTempPath";
    constexpr const wchar_t* noFolder = L"创建文件路径失败";
    const std::wstring copies = utils::getLocalDbCachePath();
    const std::wstring root = FilePath::Combine(copies, utils::toWstring(projectId));
    if (!isPlaceOfCopies(copies, root) || !makeFolder(root))
        return failed(ORLO_HERE(function), noFolder);
    utils::tellThatProcessLives();
    const std::wstring folder = FilePath::Combine(root, utils::toWstring(uuid::newUUIDV4()));
    // Who removes stray copies may take the project's empty folder along, once it is made.
    if (!utils::createDirectory(folder) && !(makeFolder(root) && utils::createDirectory(folder)))
        return failed(ORLO_HERE(function), noFolder);
    const std::wstring target = FilePath::Combine(folder, fileName.empty() ? utils::getFileName(path) : fileName);
    // A name that points out of its folder would let one job's copy fall on another's.
    if (FilePath(target).GetDirectoryName() != folder || !utils::isPlaceInside(folder, target) || !utils::copyFile(path, target)) {
        utils::removeEmptyDirectory(folder);
        return false;
    }
    copy = target;
    return true;
}

void deleteJobCopy(const std::wstring& copy)
{
    const std::wstring folder = FilePath(copy).GetDirectoryName();
    // A copy has a folder of its own; what lies beside those isn't one, nor what a link leads to.
    if (!utils::isPathInside(folder, copy) || !utils::leadsInside(utils::getLocalDbCachePath(), folder))
        return;
    utils::removeFile(copy);
    std::vector<std::wstring> left;
    if (utils::getSubFiles(folder, left) && left.empty())
        utils::removeEmptyDirectory(folder);
}

} // namespace orlo
