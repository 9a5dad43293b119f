#include "Doors.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/CachePlace.h>

#include <algorithm>
#include <vector>

namespace orlo::fuzz {

namespace {

// Nothing is there, so that no link leads anywhere: links are the business of the tests with real folders.
constexpr const wchar_t* cache = L"/no such folder/Files";

/// The names on the way to a path, each ".." taken together with the name before it.
std::vector<std::wstring> stepsTo(const std::wstring& path, const wchar_t* separators)
{
    std::vector<std::wstring> steps;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find_first_of(separators, begin), path.size());
        const std::wstring step = path.substr(begin, end - begin);
        if (step == L".." && !steps.empty())
            steps.pop_back();
        else if (!step.empty() && step != L"." && step != L"..")
            steps.push_back(step);
        begin = end + 1;
    }
    return steps;
}

/// Whichever of the two separators the system goes by.
bool liesBelow(const std::wstring& folder, const std::wstring& path)
{
    const auto isBelow = [&](const wchar_t* separators) {
        const auto outer = stepsTo(folder, separators);
        const auto inner = stepsTo(path, separators);
        return inner.size() > outer.size() && std::equal(outer.begin(), outer.end(), inner.begin());
    };
    return isBelow(L"/") && isBelow(L"/\\");
}

void checkPlace(const std::wstring& path)
{
    require(!utils::holdsNul(path), "no path holds a NUL");
    require(liesBelow(cache, path), "a file of the cache lies below it");
}

void checkEntry(const std::string& dsId, const std::string& folder, const std::wstring& path)
{
    std::wstring file;
    if (path.find(L'/') != std::wstring::npos && findPlaceOfEntry(cache, dsId, folder, path, file))
        checkPlace(file);
}

} // namespace

// The first line is the id of the dataset, the rest the address, or a path that an answer to a batch names.
void datasetUri(std::string_view bytes)
{
    const std::size_t line = std::min(bytes.find('\n'), bytes.size());
    const std::string dsId(bytes.substr(0, line));
    const std::wstring uri = utils::toWstring(std::string(bytes.substr(std::min(line + 1, bytes.size()))));
    if (uri.size() % 2 == 0)
        return checkEntry(dsId, "blocks", uri);
    DatasetUri parsed;
    CachePlace place;
    if (!parse(uri, parsed))
        return;
    std::string folder = utils::toString(parsed.folder);
    utils::NormailizeFilePath(folder);
    checkEntry(dsId, folder, parsed.relative);
    if (!findPlace(cache, dsId, parsed, place))
        return;
    checkPlace(place.file);
    checkPlace(FilePath::Combine(place.folder, L"file"));
    require(dsId.empty() || liesBelow(place.root, place.file), "a file of a dataset lies below the dataset's folder");
}

} // namespace orlo::fuzz
