#include "JobReplacement.h"

#include "JobCopies.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <stdexcept>

namespace orlo {

namespace {

std::wstring folderOf(const std::wstring& path)
{
    return FilePath(path).GetDirectoryName();
}

/// Holds the name that the damaged database gets, from before it gets it until the new one is in its place.
std::wstring noteOf(const std::wstring& path)
{
    return path + L".replacing";
}

bool holdsBytes(const std::wstring& path)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(utils::makePath(path), error);
    return utils::fileExists(path) && !error && size > 0;
}

/// A name beside the database that nothing bears yet.
std::wstring freeName(const std::wstring& path)
{
    for (long long number = 1;; ++number) {
        std::wstring name = path + L".damaged-" + utils::toWstring(number);
        if (!utils::fileExists(name) && !utils::fileExists(name + L"-wal"))
            return name;
    }
}

/// Empty if there is no note, or none that was written here.
std::wstring notedName(const std::wstring& path)
{
    std::string text;
    if (!utils::fileExists(noteOf(path)) || !utils::readWholeFile(noteOf(path), text))
        return {};
    const std::wstring name = utils::toWstring(text);
    const bool isOurs = name.rfind(utils::getFileName(path) + L".damaged-", 0) == 0 && utils::getFileName(name) == name;
    return isOurs ? FilePath::Combine(folderOf(path), name) : std::wstring();
}

std::wstring note(const std::wstring& path)
{
    const std::wstring known = notedName(path);
    if (!known.empty())
        return known;
    const std::wstring name = freeName(path);
    if (!utils::writeFileAtomically(noteOf(path), utils::toString(utils::getFileName(name)), utils::FileAccess::ownerOnly))
        throw std::runtime_error("it is damaged and can't be set aside");
    return name;
}

/// The database comes last: once it bears the name, all of it does. A log without its database would be taken for that of the next.
bool move(const std::wstring& path, const std::wstring& name)
{
    for (const wchar_t* end : {L"-wal", L"-shm", L"-journal"}) {
        if (utils::fileExists(path + end) && !utils::renameOver(path + end, name + end))
            return false;
    }
    return utils::fileExists(path) ? utils::renameOver(path, name) : utils::writeNewFile(name, {}, true);
}

void removeDatabase(const std::wstring& path)
{
    for (const wchar_t* end : {L"-wal", L"-shm", L"-journal", L""})
        utils::removeFile(path + end);
}

} // namespace

bool isReplacementUnfinished(const std::wstring& path)
{
    return !notedName(path).empty();
}

bool isEmptied(const std::wstring& path)
{
    if (utils::hasDirectory(path) || holdsBytes(path))
        return false;
    return holdsBytes(path + L"-wal") || (utils::fileExists(path) && holdFiles(jobCopiesBelow(folderOf(path))));
}

std::wstring setAside(const std::wstring& path)
{
    const std::wstring name = note(path);
    if (!utils::fileExists(name) && !move(path, name))
        throw std::runtime_error("it is damaged and can't be set aside");
    utils::flushFolder(folderOf(path));
    return name;
}

std::optional<Salvage> replaceSetAside(const std::wstring& path, const std::wstring& aside)
{
    std::optional<Salvage> salvage;
    if (!utils::fileExists(path)) {
        salvage = salvageJobs(aside);
        const std::wstring made = path + L".new";
        removeDatabase(made);
        JobDatabase::make(made, salvage->rows);
        if (!utils::renameOver(made, path))
            throw std::runtime_error("the new database can't be put in its place");
        utils::flushFolder(folderOf(path));
    }
    utils::removeFile(noteOf(path));
    return salvage;
}

} // namespace orlo
