#include "ArchiveReaders.h"

#include "../Call/FieldReaders.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo::OrloPayloadProcessor {

using http::ORLOHTTPPayloadArchivePackage;
using http::ORLOHTTPPayloadArchivePackageAck;
using http::ORLOHTTPPayloadArchivePackageVersion;
using http::ORLOHTTPPayloadArchivePackageVersionAck;
using http::ORLOHTTPPayloadArchiveUint;
using http::ORLOHTTPPayloadArchiveUnitStandardCodeAck;
using http::ORLOHTTPPayloadArchiveUnitVersion;
using http::ORLOHTTPPayloadArchiveUnitVersionAck;

namespace {

constexpr int archiveSuccess = 10000;

void readEnable(const web::json::value& json, ORLOHTTPPayloadArchivePackage& package)
{
    std::wstring status;
    package.enable = readField(json, status) && status == L"enable";
}

const RecordTable<ORLOHTTPPayloadArchivePackage>& archivePackageFields()
{
    using Package = ORLOHTTPPayloadArchivePackage;
    static const auto& table = utils::neverDestroyed(new const RecordTable<Package>{
        {L"packageId", &Package::packageId},
        {L"packageName", &Package::packageName},
        {L"desc", &Package::desc},
        {L"version", &Package::version},
        {L"receiver", &Package::receiver},
        {L"receiverName", &Package::receiverName},
        {L"projectId", &Package::projectId},
        {L"createTime", &Package::createTime},
        {L"sharer", &Package::sharer},
        {L"sharerName", &Package::sharerName},
        {L"status", readEnable},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadArchiveUint>& archiveUintFields()
{
    using Unit = ORLOHTTPPayloadArchiveUint;
    static const auto& table = utils::neverDestroyed(new const RecordTable<Unit>{
        {L"resourceId", &Unit::resourceId},
        {L"integratePackageId", &Unit::integratePackageId},
        {L"type", &Unit::type},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadArchivePackageVersion>& archivePackageVersionFields()
{
    using Version = ORLOHTTPPayloadArchivePackageVersion;
    static const auto& table = utils::neverDestroyed(new const RecordTable<Version>{
        {L"id", &Version::id},
        {L"version", &Version::version},
        {L"ownerId", &Version::ownerId},
        {L"ownerName", &Version::ownerName},
        {L"packageId", &Version::packageId},
        {L"content", [](const web::json::value& json, Version& version) { archiveUintFields().readList(json, version.contents); }},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadArchiveUnitVersion>& archiveUnitVersionFields()
{
    using Version = ORLOHTTPPayloadArchiveUnitVersion;
    static const auto& table = utils::neverDestroyed(new const RecordTable<Version>{
        {L"id", &Version::id},
        {L"version", &Version::version},
        {L"integrateStatus", &Version::integrateStatus},
        {L"packageId", &Version::packageId},
        {L"integratePackageName", &Version::integratePackageName},
        {L"creationTime", &Version::creationTime},
        {L"datasetVersions", &Version::datasetVersions},
    });
    return table;
}

/// What all four answers have in common.
template <class Ack, class ReadData>
bool readArchiveAck(const web::json::value& body, Ack& ack, const ReadData& readData)
{
    ack = Ack();
    if (body.is_null())
        return false;
    readMember(body, L"code", ack.code);
    readMember(body, L"msg", ack.msg);
    const web::json::value* const data = memberOf(body, L"data");
    if (ack.code == archiveSuccess && data)
        readData(*data);
    return true;
}

/// Calls `use` with each element of a member; with none where the member is no array.
template <class Use>
void forEachIn(const web::json::value& object, const wchar_t* key, const Use& use)
{
    const web::json::value* const list = memberOf(object, key);
    if (!list || !list->is_array())
        return;
    for (const web::json::value& element : list->as_array())
        use(element);
}

} // namespace

bool readArchivePackages(const web::json::value& body, ORLOHTTPPayloadArchivePackageAck& ack)
{
    return readArchiveAck(body, ack, [&](const web::json::value& data) { archivePackageFields().readList(data, ack.packages); });
}

bool readArchivePackageVersions(const web::json::value& body, ORLOHTTPPayloadArchivePackageVersionAck& ack)
{
    return readArchiveAck(body, ack, [&](const web::json::value& data) { archivePackageVersionFields().readList(data, ack.versions); });
}

bool readArchiveUnitVersions(const web::json::value& body, ORLOHTTPPayloadArchiveUnitVersionAck& ack)
{
    return readArchiveAck(body, ack, [&](const web::json::value& data) { archiveUnitVersionFields().readList(data, ack.versions); });
}

bool readArchiveStandardCodes(const web::json::value& body, ORLOHTTPPayloadArchiveUnitStandardCodeAck& ack)
{
    return readArchiveAck(body, ack, [&](const web::json::value& data) {
        forEachIn(data, L"vos", [&](const web::json::value& version) {
            int versionId = 0;
            if (!readMember(version, L"versionId", versionId))
                return;
            std::vector<std::wstring>& codes = ack.standardCodes[versionId];
            forEachIn(version, L"scs", [&](const web::json::value& code) {
                if (std::wstring text; readMember(code, L"sv", text))
                    codes.push_back(std::move(text));
            });
        });
    });
}

} // namespace orlo::OrloPayloadProcessor
