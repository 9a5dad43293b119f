#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/VersionWeb.h"
#include "../NetworkProject/Resources/ArchiveWeb.h"
#include "../Projects/Project.h"
#include "ArchivePackage.h"

namespace orlo {

namespace {

/// The units that packages name.
struct NamedArchiveUnits
{
    http::ORLOHTTPPayloadArchivePackageVersionAck answer;
    NewestArchiveVersions newest; ///< of the answer
    ArchiveUnitVersions unitVersions;
};

/// Intended: an empty id goes along.
std::vector<std::wstring> idsOf(const std::vector<http::ORLOHTTPPayloadArchivePackage>& packages)
{
    std::vector<std::wstring> ids;
    ids.reserve(packages.size());
    for (const http::ORLOHTTPPayloadArchivePackage& package : packages)
        ids.push_back(package.packageId);
    return ids;
}

bool getArchiveUnitInPackage(NamedArchiveUnits& units, const std::vector<std::wstring>& packageIds, ErrorCode& error)
{
    if (!OrloWebService::GetArchiveUnitListByArchivePackageId(error, units.answer, packageIds))
        return false;
    units.newest = newestArchiveVersions(units.answer.versions);
    const ArchiveResources resources = archiveResources(units.answer.versions, units.newest);
    http::ORLOHTTPPayloadArchiveUnitVersionAck ack;
    if (!OrloWebService::GetArchiveUnitVersionById(error, ack, resources.integratePackageIds))
        return false;
    units.unitVersions = archiveUnitVersions(std::move(ack.versions), resources.resourceIds);
    return true;
}

bool addArchiveUnitToPackage(ArchivePackages& packages, const NamedArchiveUnits& units, ErrorCode& error)
{
    std::vector<int> datasetVersionIds;
    std::vector<int> unitVersionIds;
    for (const auto& [id, version] : units.unitVersions) {
        datasetVersionIds.insert(datasetVersionIds.end(), version.datasetVersions.begin(), version.datasetVersions.end());
        unitVersionIds.push_back(id);
    }
    http::ORLOHTTPPayloadArchiveUnitStandardCodeAck codes;
    if (!OrloWebService::GetArchiveUnitStandardCode(error, codes, unitVersionIds))
        return false;
    const auto datasetVersions = fetched(&OrloWebService::GetDatasetVersionAccordingMVD, error, datasetVersionIds, "base");
    if (!datasetVersions)
        return false;
    addArchiveUnits(packages, units.newest, units.unitVersions, codes.standardCodes, *datasetVersions);
    return true;
}

} // namespace

bool Project::GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>& out, ErrorCode& error)
{
    const CallFrame frame(ORLO_HERE("orlo::Project::GetArchivePackageList"));
    return frame.runDirect(error, [&] {
        out.clear();
        http::ORLOHTTPPayloadArchivePackageAck ack;
        if (!OrloWebService::GetArchivePackageListByProjectId(error, ack, m_id))
            return false;
        const std::vector<std::wstring> packageIds = idsOf(ack.packages);
        ArchivePackages packages = toArchivePackages(std::move(ack.packages));
        NamedArchiveUnits units;
        ErrorCode reason;
        const bool found = getArchiveUnitInPackage(units, packageIds, reason);
        // Intended: where no units were found the rest is asked for all the same.
        if (!reason.isClear()) {
            ErrorCode second; // of several failures the first is told, the others are in the log
            frame.runDirect(second, [&] { return addArchiveUnitToPackage(packages, units, second); });
            error = reason;
            return false;
        }
        const bool added = addArchiveUnitToPackage(packages, units, error);
        if (!found || !added)
            return false;
        out.assign(packages.begin(), packages.end());
        return true;
    });
}

} // namespace orlo
