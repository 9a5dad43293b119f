#include "CachePlace.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

namespace orlo {

bool parse(const std::wstring& uri, DatasetUri& parsed)
{
    const std::size_t mark = uri.find(L"?f=");
    const std::size_t separator = uri.find(utils::SeparatorChar());
    if (mark == std::wstring::npos || separator == std::wstring::npos)
        return false;
    parsed.relative = uri.substr(0, mark);
    parsed.folder = uri.substr(0, separator);
    return true;
}

bool findPlace(const std::wstring& cache, const std::string& dsId, const DatasetUri& uri, CachePlace& place)
{
    place.root = FilePath::Combine(cache, utils::toWstring(dsId));
    place.folder = FilePath::Combine(place.root, uri.folder);
    place.file = FilePath::Combine(place.root, uri.relative);
    // Without a dataset it is the batch that refuses, in its own words.
    const bool isPlaceOfDataset = dsId.empty() || utils::leadsInside(cache, place.root);
    // The folder is no part of the file's path where the separator stands behind the mark.
    const bool isFolderOfDataset = utils::isPathInside(place.root, FilePath::Combine(place.folder, L"file"));
    return isPlaceOfDataset && isFolderOfDataset && utils::isPlaceInside(place.root, place.file);
}

bool isCached(const std::wstring& cache, const std::wstring& path)
{
    return utils::fileExists(path) && utils::leadsInside(cache, path);
}

bool findPlaceOfEntry(const std::wstring& cache, const std::string& dsId, const std::string& folder, const std::wstring& path,
                      std::wstring& file)
{
    std::string dataset = utils::toString(FilePath::Combine(cache, utils::toWstring(dsId)));
    utils::NormailizeFilePath(dataset);
    const std::wstring root = utils::toWstring(dataset);
    file = FilePath::Combine(FilePath::Combine(root, utils::toWstring(folder)), path.substr(path.find(L'/') + 1));
    return !utils::holdsNul(path) && utils::leadsInside(cache, root) && utils::isPlaceInside(root, file);
}

} // namespace orlo
