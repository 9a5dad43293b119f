#include "ArchiveWeb.h"

#include "../Call/WebCall.h"
#include "ArchiveReaders.h"

#include <OrloLogging/Log.h>
#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

using namespace OrloPayloadProcessor;

namespace {

constexpr const wchar_t* archivePackagesPath = L"/archive-assignment/project/{projectId}/packages";
constexpr const wchar_t* archiveVersionsPath = L"/v2/search/archive-packages/versions";
constexpr const wchar_t* unitVersionsPath = L"/search/integrate-packages/versions";
constexpr const wchar_t* standardCodesPath = L"/integrate-packages/versions/standard/code";

bool notDoneFor(const wchar_t* name, const wchar_t* missing)
{
    log::error(std::wstring(name) + L"()未正常执行：" + missing + L"为空");
    return false;
}

template <class Ack>
bool fetchArchive(ErrorCode& error, Ack& out, const WebCall& call, bool (*read)(const web::json::value&, Ack&))
{
    WebAnswer answer = call.send(error);
    return answer.ok() && read(answer.body(), out);
}

} // namespace

bool GetArchivePackageListByProjectId(ErrorCode& error, http::ORLOHTTPPayloadArchivePackageAck& out, const std::wstring& projectId)
{
    constexpr const wchar_t* name = L"OrloWebService::GetArchivePackageListByProjectId";
    if (projectId.empty())
        return notDoneFor(name, L"projectId");
    if (!GetCurrentUserInfo())
        return notDoneFor(name, L"orloUserInfo");
    WebCall call(name, service::project, methods::GET, archivePackagesPath);
    return fetchArchive(error, out, call.place(L"{projectId}", projectId), &readArchivePackages);
}

bool GetArchiveUnitListByArchivePackageId(ErrorCode& error, http::ORLOHTTPPayloadArchivePackageVersionAck& out,
                                          const std::vector<std::wstring>& packageIds)
{
    constexpr const wchar_t* name = L"OrloWebService::GetArchiveUnitListByArchivePackageId";
    if (packageIds.empty())
        return notDoneFor(name, L"packageId");
    WebCall call(name, service::project, methods::POST, archiveVersionsPath);
    return fetchArchive(error, out, call.body(jsonTexts(packageIds)), &readArchivePackageVersions);
}

bool GetArchiveUnitVersionById(ErrorCode& error, http::ORLOHTTPPayloadArchiveUnitVersionAck& out, const std::vector<std::wstring>& unitIds)
{
    constexpr const wchar_t* name = L"OrloWebService::GetArchiveUnitVersionById";
    if (unitIds.empty())
        return notDoneFor(name, L"UnitId");
    WebCall call(name, service::project, methods::POST, unitVersionsPath);
    return fetchArchive(error, out, call.body(jsonTexts(unitIds)), &readArchiveUnitVersions);
}

bool GetArchiveUnitStandardCode(ErrorCode& error, http::ORLOHTTPPayloadArchiveUnitStandardCodeAck& out,
                                const std::vector<int>& unitVersionIds)
{
    WebCall call(L"OrloWebService::GetArchiveUnitStandardCode", service::project, methods::POST, standardCodesPath);
    call.body(web::json::value::array({unitVersionIds.begin(), unitVersionIds.end()}));
    return fetchArchive(error, out, call, &readArchiveStandardCodes);
}

} // namespace orlo::OrloWebService
