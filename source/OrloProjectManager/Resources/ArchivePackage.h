#pragma once

#include <OrloProjectManager/Projects/DatasetVersion.h>
#include <OrloProjectManager/Resources/IArchivePackage.h>

namespace orlo {

class ArchivePackageProperty final : public IArchivePackageProperty
{
public:
    explicit ArchivePackageProperty(http::ORLOHTTPPayloadArchivePackage record) : m_record(std::move(record)) {}

    const std::wstring& GetPackageId() const override { return m_record.packageId; }
    const std::wstring& GetPackageName() const override { return m_record.packageName; }
    const std::wstring& GetDesc() const override { return m_record.desc; }
    int GetVersion() const override { return m_record.version; }
    const std::wstring& GetReceiver() const override { return m_record.receiver; }
    const std::wstring& GetReceiverName() const override { return m_record.receiverName; }
    const std::wstring& GetSharer() const override { return m_record.sharer; }
    const std::wstring& GetSharerName() const override { return m_record.sharerName; }
    const std::wstring& GetProjectId() const override { return m_record.projectId; }
    const std::wstring& GetCreateTime() const override { return m_record.createTime; }
    bool GetEnable() const override { return m_record.enable; }

private:
    http::ORLOHTTPPayloadArchivePackage m_record;
};

class ArchiveUnit final : public IArchiveUnit
{
public:
    ArchiveUnit(std::wstring id, std::wstring name);

    void add(ArchiveDatasetEntry entry);
    void setStandardCodes(std::vector<std::wstring> standardCodes) { m_standardCodes = std::move(standardCodes); }

    const std::wstring& GetId() const override { return m_id; }
    const std::wstring& GetName() const override { return m_name; }
    int GetTotalSize() const override { return m_totalSize; }
    bool GetDatasets(std::vector<ArchiveDatasetEntry>& datasets) const override;
    bool GetStandardCodes(std::vector<std::wstring>& standardCodes) const override;

private:
    std::wstring m_id;
    std::wstring m_name;
    int m_totalSize = 0;
    std::vector<ArchiveDatasetEntry> m_datasets;
    std::vector<std::wstring> m_standardCodes;
};

class ArchivePackage final : public IArchivePackage
{
public:
    explicit ArchivePackage(std::shared_ptr<IArchivePackageProperty> property) : m_property(std::move(property)) {}

    void add(std::shared_ptr<IArchiveUnit> unit) { m_units.push_back(std::move(unit)); }

    /// Empty where there is no property, as is the name.
    const std::wstring& GetId() const override;
    const std::wstring& GetName() const override;
    std::shared_ptr<IArchivePackageProperty> GetProperty() const override { return m_property; }
    const std::vector<std::shared_ptr<IArchiveUnit>>& GetArchiveUnits() const override { return m_units; }

private:
    std::shared_ptr<IArchivePackageProperty> m_property;
    std::vector<std::shared_ptr<IArchiveUnit>> m_units;
};

// The tree is joined from five lists, in time that grows as they do.

using ArchivePackages = std::vector<std::shared_ptr<ArchivePackage>>;
/// The newest version of each package, by its id. They belong to the list that they were chosen from.
using NewestArchiveVersions = std::map<std::wstring, const http::ORLOHTTPPayloadArchivePackageVersion*>;
using ArchiveUnitVersions = std::map<int, http::ORLOHTTPPayloadArchiveUnitVersion>;
using ArchiveStandardCodes = std::map<int, std::vector<std::wstring>>;

/// Packages without an id are left out.
ArchivePackages toArchivePackages(std::vector<http::ORLOHTTPPayloadArchivePackage> records);

/// Of versions with the same number the later one.
NewestArchiveVersions newestArchiveVersions(const std::vector<http::ORLOHTTPPayloadArchivePackageVersion>& versions);

/// What the newest versions name, in the order of the list, as often as it is named.
struct ArchiveResources
{
    std::vector<std::wstring> resourceIds;
    std::vector<std::wstring> integratePackageIds;
};
ArchiveResources archiveResources(const std::vector<http::ORLOHTTPPayloadArchivePackageVersion>& versions,
                                  const NewestArchiveVersions& newest);

/// The versions whose id, in decimal, is one of the resources; of those with the same id the last one.
ArchiveUnitVersions archiveUnitVersions(std::vector<http::ORLOHTTPPayloadArchiveUnitVersion> versions,
                                        const std::vector<std::wstring>& resourceIds);

/// Gives each package the units of its newest version. A resource that leads to no version is passed over, as is a package without any.
/// Throws for more than four million units and datasets, which no project has.
void addArchiveUnits(ArchivePackages& packages, const NewestArchiveVersions& newest, const ArchiveUnitVersions& unitVersions,
                     const ArchiveStandardCodes& standardCodes, const std::vector<http::ORLOHTTPPayloadDatasetVersion>& datasetVersions);

} // namespace orlo
