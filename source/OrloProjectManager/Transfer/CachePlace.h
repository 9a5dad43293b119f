#pragma once

#include <string>

namespace orlo {

/// What the address of a dataset's file says: "<folder>/<rest>?f=<more>".
struct DatasetUri
{
    std::wstring folder;
    std::wstring relative; ///< folder and rest
};

bool parse(const std::wstring& uri, DatasetUri& parsed);

/// Where a file of a dataset is kept.
struct CachePlace
{
    std::wstring root;   ///< the dataset's folder below that of all datasets
    std::wstring folder; ///< that of the file, or one above it
    std::wstring file;
};

/// Where the file of an address lies.   cache: the folder of all datasets. Without a dataset id the file lies directly below it.
/// Returns: false for a place that isn't below the cache, wherever links lead to.
bool findPlace(const std::wstring& cache, const std::string& dsId, const DatasetUri& uri, CachePlace& place);

/// Whether a file is there. A link that leads out of the cache is no file of it.
bool isCached(const std::wstring& cache, const std::wstring& path);

/// Where a batch puts the file that an answer names.   folder: below the dataset's, normalised. path: has a "/", behind which the name
/// below that folder begins.
/// Returns: false for a place that isn't below the dataset's folder, wherever links lead to.
bool findPlaceOfEntry(const std::wstring& cache, const std::string& dsId, const std::string& folder, const std::wstring& path,
                      std::wstring& file);

} // namespace orlo
