#pragma once

#include "HostSetup.h"

#include <LocalPlatform/LocalPlatform.h>
#include <map>
#include <string>
#include <vector>

namespace orlo::test {

/// A running platform with the project "p-1" and its folder "f-1", and a host that may ask it anything.
class PlatformHost
{
public:
    PlatformHost();

    /// The folder's parent.
    std::string rootFolder() const;
    /// The ids of the folder's datasets, by their names.
    std::multimap<std::string, std::string> datasets() const;
    std::vector<std::string> datasets(const std::string& name) const;
    /// How many versions of a dataset there are.
    int versions(const std::string& datasetId) const;
    /// The bytes of the newest versions of the folder's datasets, by the datasets' names.
    std::multimap<std::string, std::string> contents() const;
    /// Whether the newest version of one of the datasets with that name has the bytes.
    bool holds(const std::string& name, const std::string& bytes) const;
    /// Makes a dataset in the folder.   Returns: its id.
    std::string addDataset(const std::string& name);
    /// Makes the first version of a dataset, without a file.
    bool addVersion(const std::string& datasetId) const;

    platform::LocalPlatform platform;
    HostSetup host;

private:
    static std::string start(platform::LocalPlatform& platform);
};

} // namespace orlo::test
