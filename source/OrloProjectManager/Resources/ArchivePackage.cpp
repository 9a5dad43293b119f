#include "ArchivePackage.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace orlo {

using http::ORLOHTTPPayloadArchivePackage;
using http::ORLOHTTPPayloadArchivePackageVersion;
using http::ORLOHTTPPayloadArchiveUint;
using http::ORLOHTTPPayloadArchiveUnitVersion;
using http::ORLOHTTPPayloadDatasetVersion;

IArchivePackageProperty::IArchivePackageProperty() = default;
IArchivePackageProperty::~IArchivePackageProperty() = default;

IArchiveUnit::IArchiveUnit() = default;
IArchiveUnit::~IArchiveUnit() = default;

IArchivePackage::IArchivePackage() = default;
IArchivePackage::~IArchivePackage() = default;

namespace {

constexpr int largestArchiveSize = std::numeric_limits<int>::max();
constexpr std::size_t largestArchiveTree = 4000000;

const std::wstring& noArchiveText()
{
    static const std::wstring& empty = utils::neverDestroyed(new const std::wstring);
    return empty;
}

ArchiveDatasetEntry toArchiveEntry(const ORLOHTTPPayloadDatasetVersion& version)
{
    const std::int64_t size = std::clamp<std::int64_t>(version.size, std::numeric_limits<int>::min(), largestArchiveSize);
    return {utils::toWstring(version.dataSetId), version.version, version.id, static_cast<int>(size)};
}

/// The resources that are numbers in decimal, sorted.
std::vector<int> numbersIn(const std::vector<std::wstring>& resourceIds)
{
    std::vector<int> numbers;
    for (const std::wstring& id : resourceIds) {
        const int number = utils::toInt(id);
        if (utils::toWstring(number) == id)
            numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

/// An answer may be small and yet name the same thing so often that the tree would take all memory.
class ArchiveTreeSize
{
public:
    void add(std::size_t count)
    {
        m_size += count;
        if (m_size > largestArchiveTree)
            throw std::length_error("the archive packages hold too much");
    }

private:
    std::size_t m_size = 0;
};

/// Makes a unit of a version when it is first named; from then on gives the same one.
class ArchiveUnitMaker
{
public:
    ArchiveUnitMaker(const ArchiveUnitVersions& unitVersions, const ArchiveStandardCodes& standardCodes,
                     const std::vector<ORLOHTTPPayloadDatasetVersion>& datasetVersions, ArchiveTreeSize& treeSize)
        : m_unitVersions(unitVersions), m_standardCodes(standardCodes), m_treeSize(treeSize)
    {
        m_datasets.reserve(datasetVersions.size());
        for (const ORLOHTTPPayloadDatasetVersion& version : datasetVersions)
            m_datasets.emplace_back(version.id, &version);
        std::stable_sort(m_datasets.begin(), m_datasets.end(), [](const Dataset& a, const Dataset& b) { return a.first < b.first; });
    }

    /// Null where the resource leads nowhere.
    std::shared_ptr<IArchiveUnit> unitOf(const std::wstring& resourceId)
    {
        // Intended: what is no number asks for the version 0.
        const auto version = m_unitVersions.find(utils::toInt(resourceId));
        if (version == m_unitVersions.end())
            return nullptr;
        std::shared_ptr<IArchiveUnit>& unit = m_units[version->first];
        if (!unit)
            unit = make(version->second);
        return unit;
    }

private:
    using Dataset = std::pair<int, const ORLOHTTPPayloadDatasetVersion*>;

    std::shared_ptr<IArchiveUnit> make(const ORLOHTTPPayloadArchiveUnitVersion& version)
    {
        const auto unit = std::make_shared<ArchiveUnit>(version.packageId, version.integratePackageName);
        for (const int versionId : version.datasetVersions)
            addEntries(*unit, versionId);
        if (const auto codes = m_standardCodes.find(version.id); codes != m_standardCodes.end())
            unit->setStandardCodes(codes->second);
        return unit;
    }

    void addEntries(ArchiveUnit& unit, int versionId)
    {
        const auto first = std::lower_bound(m_datasets.begin(), m_datasets.end(), versionId,
                                            [](const Dataset& dataset, int id) { return dataset.first < id; });
        const auto last = std::find_if(first, m_datasets.end(), [&](const Dataset& dataset) { return dataset.first != versionId; });
        m_treeSize.add(static_cast<std::size_t>(last - first));
        std::for_each(first, last, [&](const Dataset& dataset) { unit.add(toArchiveEntry(*dataset.second)); });
    }

    const ArchiveUnitVersions& m_unitVersions;
    const ArchiveStandardCodes& m_standardCodes;
    ArchiveTreeSize& m_treeSize;
    std::vector<Dataset> m_datasets; ///< by their ids, in the order of the answer where these are equal
    std::map<int, std::shared_ptr<IArchiveUnit>> m_units;
};

} // namespace

ArchiveUnit::ArchiveUnit(std::wstring id, std::wstring name) : m_id(std::move(id)), m_name(std::move(name))
{}

void ArchiveUnit::add(ArchiveDatasetEntry entry)
{
    if (entry.size > 0)
        m_totalSize = entry.size > largestArchiveSize - m_totalSize ? largestArchiveSize : m_totalSize + entry.size;
    m_datasets.push_back(std::move(entry));
}

bool ArchiveUnit::GetDatasets(std::vector<ArchiveDatasetEntry>& datasets) const
{
    datasets = m_datasets;
    return true;
}

bool ArchiveUnit::GetStandardCodes(std::vector<std::wstring>& standardCodes) const
{
    standardCodes = m_standardCodes;
    return true;
}

const std::wstring& ArchivePackage::GetId() const
{
    return m_property ? m_property->GetPackageId() : noArchiveText();
}

const std::wstring& ArchivePackage::GetName() const
{
    return m_property ? m_property->GetPackageName() : noArchiveText();
}

ArchivePackages toArchivePackages(std::vector<ORLOHTTPPayloadArchivePackage> records)
{
    ArchivePackages packages;
    for (ORLOHTTPPayloadArchivePackage& record : records) {
        if (!record.packageId.empty())
            packages.push_back(std::make_shared<ArchivePackage>(std::make_shared<ArchivePackageProperty>(std::move(record))));
    }
    return packages;
}

NewestArchiveVersions newestArchiveVersions(const std::vector<ORLOHTTPPayloadArchivePackageVersion>& versions)
{
    NewestArchiveVersions newest;
    for (const ORLOHTTPPayloadArchivePackageVersion& version : versions) {
        const ORLOHTTPPayloadArchivePackageVersion*& kept = newest[version.packageId];
        if (!kept || version.version >= kept->version)
            kept = &version;
    }
    return newest;
}

ArchiveResources archiveResources(const std::vector<ORLOHTTPPayloadArchivePackageVersion>& versions, const NewestArchiveVersions& newest)
{
    ArchiveResources resources;
    for (const ORLOHTTPPayloadArchivePackageVersion& version : versions) {
        if (newest.at(version.packageId) != &version)
            continue;
        for (const ORLOHTTPPayloadArchiveUint& content : version.contents) {
            resources.resourceIds.push_back(content.resourceId);
            resources.integratePackageIds.push_back(content.integratePackageId);
        }
    }
    return resources;
}

ArchiveUnitVersions archiveUnitVersions(std::vector<ORLOHTTPPayloadArchiveUnitVersion> versions,
                                        const std::vector<std::wstring>& resourceIds)
{
    const std::vector<int> named = numbersIn(resourceIds);
    ArchiveUnitVersions found;
    for (ORLOHTTPPayloadArchiveUnitVersion& version : versions) {
        if (std::binary_search(named.begin(), named.end(), version.id))
            found[version.id] = std::move(version);
    }
    return found;
}

void addArchiveUnits(ArchivePackages& packages, const NewestArchiveVersions& newest, const ArchiveUnitVersions& unitVersions,
                     const ArchiveStandardCodes& standardCodes, const std::vector<ORLOHTTPPayloadDatasetVersion>& datasetVersions)
{
    ArchiveTreeSize treeSize;
    ArchiveUnitMaker maker(unitVersions, standardCodes, datasetVersions, treeSize);
    for (const std::shared_ptr<ArchivePackage>& package : packages) {
        const auto version = newest.find(package->GetId());
        if (version == newest.end())
            continue;
        treeSize.add(version->second->contents.size());
        for (const ORLOHTTPPayloadArchiveUint& content : version->second->contents) {
            if (std::shared_ptr<IArchiveUnit> unit = maker.unitOf(content.resourceId))
                package->add(std::move(unit));
        }
    }
}

} // namespace orlo
