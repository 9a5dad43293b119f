#pragma once

#include <OrloProjectManager/Export.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

// Archive packages: numbered bundles that are assigned to a project. The newest version of a package names archive units, and each of these
// versions of datasets and standard codes. `ICollaborationProject::GetArchivePackageList` reads them all.
//
// The objects hold what was read and never change. They may be read from any thread, and outlive their project; references live as long as
// the object that gave them. No getter sends anything or fails.

/// What a package tells about itself.
class ORLO_PROJECT_API IArchivePackageProperty
{
public:
    IArchivePackageProperty();
    IArchivePackageProperty(const IArchivePackageProperty&) = delete;
    IArchivePackageProperty& operator=(const IArchivePackageProperty&) = delete;

    virtual const std::wstring& GetPackageId() const = 0;
    virtual const std::wstring& GetPackageName() const = 0;
    virtual const std::wstring& GetDesc() const = 0;
    virtual int GetVersion() const = 0;
    virtual const std::wstring& GetReceiver() const = 0;
    virtual const std::wstring& GetReceiverName() const = 0;
    virtual const std::wstring& GetSharer() const = 0;
    virtual const std::wstring& GetSharerName() const = 0;
    virtual const std::wstring& GetProjectId() const = 0;
    virtual const std::wstring& GetCreateTime() const = 0;
    virtual bool GetEnable() const = 0;

    virtual ~IArchivePackageProperty();
};

/// A version of a dataset in an archive unit.
struct ArchiveDatasetEntry
{
    std::wstring datasetId;
    int version = 0;   ///< its number in the dataset
    int versionId = 0; ///< its own id
    int size = 0;      ///< bytes; the nearest limit where they don't fit 32 bits
};

/// A version of an integrate package, as a package names it. Packages that name the same one share the object.
class ORLO_PROJECT_API IArchiveUnit
{
public:
    IArchiveUnit();
    IArchiveUnit(const IArchiveUnit&) = delete;
    IArchiveUnit& operator=(const IArchiveUnit&) = delete;

    /// The id of the integrate package.
    virtual const std::wstring& GetId() const = 0;
    virtual const std::wstring& GetName() const = 0;
    /// Bytes of the datasets together, those with a negative size left out; 2147483647 where there are more.
    virtual int GetTotalSize() const = 0;
    /// Replaces the content of `datasets`.   Returns: true.
    virtual bool GetDatasets(std::vector<ArchiveDatasetEntry>& datasets) const = 0;
    /// Replaces the content of `standardCodes`.   Returns: true.
    virtual bool GetStandardCodes(std::vector<std::wstring>& standardCodes) const = 0;

    virtual ~IArchiveUnit();
};

/// A package with the units of its newest version.
class ORLO_PROJECT_API IArchivePackage
{
public:
    IArchivePackage();
    IArchivePackage(const IArchivePackage&) = delete;
    IArchivePackage& operator=(const IArchivePackage&) = delete;

    virtual const std::wstring& GetId() const = 0;
    virtual const std::wstring& GetName() const = 0;
    virtual std::shared_ptr<IArchivePackageProperty> GetProperty() const = 0;
    /// In the order in which the version names them.
    virtual const std::vector<std::shared_ptr<IArchiveUnit>>& GetArchiveUnits() const = 0;

    virtual ~IArchivePackage();
};

namespace http {

/// An archive package, as the platform sends it.
struct ORLOHTTPPayloadArchivePackage
{
    std::wstring packageId;
    std::wstring packageName;
    std::wstring desc;
    int version = 0;
    std::wstring receiver;
    std::wstring receiverName;
    std::wstring projectId;
    std::wstring createTime;
    std::wstring sharer;
    std::wstring sharerName;
    bool enable = false;
};

/// An archive unit in a version of a package. The name is spelled so in the platform's terms.
struct ORLOHTTPPayloadArchiveUint
{
    std::wstring resourceId; ///< the id of the unit's version, in decimal
    std::wstring integratePackageId;
    std::wstring type;
};

struct ORLOHTTPPayloadArchivePackageVersion
{
    int id = 0;
    int version = 0;
    std::wstring ownerId;
    std::wstring ownerName;
    std::wstring packageId;
    std::vector<ORLOHTTPPayloadArchiveUint> contents;
};

struct ORLOHTTPPayloadArchiveUnitVersion
{
    int id = 0;
    int version = 0;
    std::wstring integrateStatus;
    std::wstring packageId; ///< of the integrate package
    std::wstring integratePackageName;
    std::wstring creationTime;
    std::vector<int> datasetVersions; ///< ids of versions
};

struct ORLOHTTPPayloadArchivePackageAck
{
    int code = 0;
    std::wstring msg;
    std::vector<ORLOHTTPPayloadArchivePackage> packages;
};

struct ORLOHTTPPayloadArchivePackageVersionAck
{
    int code = 0;
    std::wstring msg;
    std::vector<ORLOHTTPPayloadArchivePackageVersion> versions;
};

struct ORLOHTTPPayloadArchiveUnitVersionAck
{
    int code = 0;
    std::wstring msg;
    std::vector<ORLOHTTPPayloadArchiveUnitVersion> versions;
};

struct ORLOHTTPPayloadArchiveUnitStandardCodeAck
{
    int code = 0;
    std::wstring msg;
    std::map<int, std::vector<std::wstring>> standardCodes; ///< by the ids of unit versions
};

} // namespace http
} // namespace orlo
