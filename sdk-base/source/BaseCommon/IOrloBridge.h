#pragma once

#include <BaseCommon/Export.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// Keys under which a dataset version remembers the configuration versions that it was built on.
enum class DatasetMetaKey : int {
    SpaceConfigVersion = 0,
    AxisGridVersions = 1,
    BuildingItemVersions = 2,
    BuildingItemElevationSetVersions = 3,
    BuildingItemAxisGridVersions = 4,
    BuildingItemCoordinateVersions = 5
};

/// The way of sibling libraries to the project library, which they must not link.
/// Test `m_pBridge` before each use: it is null before the project library is loaded and after it is unloaded.
/// Every operation blocks the caller and leaves the reason of a failure in its ErrorCode, as far as there is one. It stays clear for an
/// unknown modeling id, a project that can't be loaded, an answer without what was asked for, and a status below 400 that isn't 200;
/// the log tells of most of these.
class ORLO_BASE_API IOrloBridge
{
public:
    IOrloBridge();
    virtual ~IOrloBridge();

    IOrloBridge(const IOrloBridge&) = delete;
    IOrloBridge& operator=(const IOrloBridge&) = delete;

    virtual bool UpsertDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& value, const std::wstring& versionId) = 0;
    virtual std::wstring GetDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& versionId) = 0;

    /// The configurations of the project that a modeling id belongs to.
    /// Returns: false where there is no such project, or where it or its configuration can't be read. The lists of versions give true for
    /// a project whose list can't be read, too; the ErrorCode tells.
    virtual bool GetSpaceConfig(const std::wstring& modelingId, int version, std::wstring& configText, ErrorCode& error) = 0;
    virtual bool GetSpaceConfigAllVersions(const std::wstring& modelingId, std::vector<int>& versions, ErrorCode& error) = 0;
    virtual bool GetAxisGridConfig(const std::wstring& modelingId, int version, std::string& configText, ErrorCode& error) = 0;
    virtual bool GetAxisGridAllVersions(const std::wstring& modelingId, std::vector<int>& versions, ErrorCode& error) = 0;

    /// Returns: the project id; empty on failure.
    virtual std::wstring GetProjectIdByModelingId(ErrorCode& error, const std::wstring& modelingId) = 0;

    /// published: true marks the new version as published, false as work in progress.
    virtual bool CreateVersionByNumber(ErrorCode& error, const std::wstring& datasetId, int versionNum, const std::wstring& metaInfo,
                                       bool published, const std::wstring& description) = 0;

    virtual bool MarkPublish(const std::string& datasetId, int version, const std::wstring& text, ErrorCode& error) = 0;

    virtual bool TriggerSightlineTranslateWorkerByUploadJob(ErrorCode& error, const std::string& dsId, int dsVersion,
                                                            const std::wstring& toType) = 0;

    /// Returns: the address of a family file; empty on failure.
    virtual std::wstring GetFamilyFileUrl(ErrorCode& error, const std::wstring& projectId, const std::wstring& familyId,
                                          const std::wstring& familyVersion) = 0;

    /// The one bridge of the process, or null.
    static IOrloBridge* m_pBridge;
};

} // namespace orlo
