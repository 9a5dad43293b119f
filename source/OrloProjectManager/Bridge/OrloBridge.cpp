#include "OrloBridge.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/ProjectWeb.h"
#include "../NetworkProject/Projects/VersionWeb.h"
#include "../NetworkProject/Resources/ComponentWeb.h"
#include "../NetworkProject/Transfer/TranslationWeb.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>
#include <OrloProjectManager/Projects/IWorkUnit.h>

#include <new>

namespace orlo {

namespace {

/// From the library's load to its unload. The object itself stays where it is when the process ends: a sibling's thread may have the
/// pointer in its hand.
class Installation
{
public:
    Installation() { new (m_place) OrloBridge; }
    ~Installation() { IOrloBridge::m_pBridge = nullptr; }

private:
    alignas(OrloBridge) unsigned char m_place[sizeof(OrloBridge)];
};

Installation installation;

/// Asks the project of a modeling id; false where there is none.
template <class Ask>
bool askProject(const CallSite& site, const std::wstring& modelingId, ErrorCode& error, const Ask& ask)
{
    const auto project = ICollaborationProjectManager::Get()->GetProjectByModelingId(utils::toString(modelingId), error);
    if (project)
        return ask(*project);
    log::errorAt(site, L"null pointer to project");
    return false;
}

} // namespace

bool OrloBridge::UpsertDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& value, const std::wstring& versionId)
{
    return CallFrame(ORLO_HERE("orlo::OrloBridge::UpsertDatasetMeta")).runDirect(error, [&] {
        return OrloWebService::UpsertDatasetMeta(error, key, value, versionId);
    });
}

std::wstring OrloBridge::GetDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& versionId)
{
    return CallFrame(ORLO_HERE("orlo::OrloBridge::GetDatasetMeta")).runDirect(error, [&] {
        return OrloWebService::GetDatasetMeta(error, key, versionId);
    });
}

bool OrloBridge::GetSpaceConfig(const std::wstring& modelingId, int version, std::wstring& configText, ErrorCode& error)
{
    return askProject(ORLO_HERE("orlo::OrloBridge::GetSpaceConfig"), modelingId, error,
                      [&](ICollaborationProject& project) { return project.GetSpaceConfig(version, configText, error); });
}

bool OrloBridge::GetSpaceConfigAllVersions(const std::wstring& modelingId, std::vector<int>& versions, ErrorCode& error)
{
    return askProject(ORLO_HERE("orlo::OrloBridge::GetSpaceConfigAllVersions"), modelingId, error, [&](ICollaborationProject& project) {
        versions = project.GetSpaceConfigVersions(error);
        return true;
    });
}

bool OrloBridge::GetAxisGridConfig(const std::wstring& modelingId, int version, std::string& configText, ErrorCode& error)
{
    return askProject(ORLO_HERE("orlo::OrloBridge::GetAxisGridConfig"), modelingId, error,
                      [&](ICollaborationProject& project) { return project.GetAxisGridConfig(version, configText, error); });
}

bool OrloBridge::GetAxisGridAllVersions(const std::wstring& modelingId, std::vector<int>& versions, ErrorCode& error)
{
    return askProject(ORLO_HERE("orlo::OrloBridge::GetAxisGridAllVersions"), modelingId, error, [&](ICollaborationProject& project) {
        versions = project.GetAxisGridConfigVersions(error);
        return true;
    });
}

std::wstring OrloBridge::GetProjectIdByModelingId(ErrorCode& error, const std::wstring& modelingId)
{
    return CallFrame(ORLO_HERE("orlo::OrloBridge::GetProjectIdByModelingId")).run(error, [&] {
        return retried(&OrloWebService::getProjectIdByModelingId, error, utils::toString(modelingId));
    });
}

bool OrloBridge::CreateVersionByNumber(ErrorCode& error, const std::wstring& datasetId, int versionNum, const std::wstring& metaInfo,
                                       bool published, const std::wstring& description)
{
    return CallFrame(ORLO_HERE("orlo::OrloBridge::CreateVersionByNumber")).run(error, [&] {
        return retried(&OrloWebService::CreateVersionByNumber, error, datasetId, versionNum, metaInfo, published, description);
    });
}

bool OrloBridge::MarkPublish(const std::string& datasetId, int version, const std::wstring& text, ErrorCode& error)
{
    return IWorkUnit::MarkPublish(datasetId, version, text, error);
}

bool OrloBridge::TriggerSightlineTranslateWorkerByUploadJob(ErrorCode& error, const std::string& dsId, int dsVersion,
                                                            const std::wstring& toType)
{
    return CallFrame(ORLO_HERE("orlo::OrloBridge::TriggerSightlineTranslateWorkerByUploadJob")).run(error, [&] {
        return retried(&OrloWebService::TriggerSightlineTranslateWorkerByUploadJob, error, dsId, dsVersion, toType);
    });
}

std::wstring OrloBridge::GetFamilyFileUrl(ErrorCode& error, const std::wstring& projectId, const std::wstring& familyId,
                                          const std::wstring& familyVersion)
{
    return CallFrame(ORLO_HERE("orlo::OrloBridge::GetFamilyFileUrl")).run(error, [&] {
        return retried(&OrloWebService::GetFamilyFileUrl, error, projectId, familyId, familyVersion);
    });
}

} // namespace orlo
