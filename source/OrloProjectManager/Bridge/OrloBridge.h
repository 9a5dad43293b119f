#pragma once

#include <BaseCommon/IOrloBridge.h>

namespace orlo {

/// What sibling libraries reach of this one. One object exists while the library is loaded, and `m_pBridge` points to it.
class OrloBridge final : public IOrloBridge
{
public:
    OrloBridge() { m_pBridge = this; }
    ~OrloBridge() override { m_pBridge = nullptr; }

    bool UpsertDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& value, const std::wstring& versionId) override;
    std::wstring GetDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& versionId) override;
    bool GetSpaceConfig(const std::wstring& modelingId, int version, std::wstring& configText, ErrorCode& error) override;
    bool GetSpaceConfigAllVersions(const std::wstring& modelingId, std::vector<int>& versions, ErrorCode& error) override;
    bool GetAxisGridConfig(const std::wstring& modelingId, int version, std::string& configText, ErrorCode& error) override;
    bool GetAxisGridAllVersions(const std::wstring& modelingId, std::vector<int>& versions, ErrorCode& error) override;
    std::wstring GetProjectIdByModelingId(ErrorCode& error, const std::wstring& modelingId) override;
    bool CreateVersionByNumber(ErrorCode& error, const std::wstring& datasetId, int versionNum, const std::wstring& metaInfo,
                               bool published, const std::wstring& description) override;
    bool MarkPublish(const std::string& datasetId, int version, const std::wstring& text, ErrorCode& error) override;
    bool TriggerSightlineTranslateWorkerByUploadJob(ErrorCode& error, const std::string& dsId, int dsVersion,
                                                    const std::wstring& toType) override;
    std::wstring GetFamilyFileUrl(ErrorCode& error, const std::wstring& projectId, const std::wstring& familyId,
                                  const std::wstring& familyVersion) override;
};

} // namespace orlo
