#include "DatasetReaders.h"

#include "../Call/TextTable.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

using http::ORLOHTTPPayloadDataset;
using http::ORLOHTTPPayloadDatasetVersion;

DatasetKind datasetKindOf(const std::wstring& type)
{
    static const auto& table = utils::neverDestroyed(new const TextTable<DatasetKind>({{DatasetKind::Standard, L"workunit"},
                                                                                       {DatasetKind::Standard, L"standard"},
                                                                                       {DatasetKind::Standard, L"zok"},
                                                                                       {DatasetKind::NoneStandard, L"noneStandard"},
                                                                                       {DatasetKind::NoneStandard, L"cloudify"},
                                                                                       {DatasetKind::NoneStandard, L"dwg"}},
                                                                                      DatasetKind::Other));
    return table.valueOf(type);
}

DatasetInfo toDatasetInfo(const ORLOHTTPPayloadDataset& record)
{
    DatasetInfo info;
    info.id = record.id;
    info.modelingDatasetId = record.modelingDatasetId;
    info.name = record.name;
    info.type = datasetKindOf(record.type);
    info.description = record.description;
    info.ownerId = record.ownerId;
    info.specialtyId = record.specialtyId;
    info.teamId = record.teamId;
    info.projectId = record.projectId;
    return info;
}

namespace OrloPayloadProcessor {

namespace {

void readKind(const web::json::value& json, DatasetInfo& info)
{
    if (std::wstring text; readField(json, text))
        info.type = datasetKindOf(text);
}

void readRefInfo(const web::json::value& json, ORLOHTTPPayloadDatasetVersion& version)
{
    if (std::string text; readField(json, text))
        version.refInfo = std::make_shared<std::string>(std::move(text));
}

} // namespace

const RecordTable<DatasetInfo>& datasetInfoFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<DatasetInfo>{
        {L"id", &DatasetInfo::id},
        {L"modelingDatasetId", &DatasetInfo::modelingDatasetId},
        {L"name", &DatasetInfo::name},
        {L"type", readKind},
        {L"description", &DatasetInfo::description},
        {L"ownerId", &DatasetInfo::ownerId},
        {L"specialtyId", &DatasetInfo::specialtyId},
        {L"teamId", &DatasetInfo::teamId},
        {L"projectId", &DatasetInfo::projectId},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadDataset>& datasetFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadDataset>{
        {L"folderId", &ORLOHTTPPayloadDataset::folderId},
        {L"id", &ORLOHTTPPayloadDataset::id},
        {L"name", &ORLOHTTPPayloadDataset::name},
        {L"nameSpace", &ORLOHTTPPayloadDataset::nameSpace},
        {L"schemaDefinition", &ORLOHTTPPayloadDataset::schemaDefinition},
        {L"codeVersion", &ORLOHTTPPayloadDataset::codeVersion},
        {L"tipVersion", &ORLOHTTPPayloadDataset::tipVersion},
        {L"type", &ORLOHTTPPayloadDataset::type},
        {L"specialtyId", &ORLOHTTPPayloadDataset::specialtyId},
        {L"ownerId", &ORLOHTTPPayloadDataset::ownerId},
        {L"description", &ORLOHTTPPayloadDataset::description},
        {L"teamId", &ORLOHTTPPayloadDataset::teamId},
        {L"projectId", &ORLOHTTPPayloadDataset::projectId},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadDatasetVersion>& datasetVersionFields()
{
    using Version = ORLOHTTPPayloadDatasetVersion;
    // Intended: `versionStatus` has no row. Of "size" and "length" the first wins, so it is read last.
    static const auto& table = utils::neverDestroyed(new const RecordTable<Version>{
        {L"id", &Version::id},
        {L"version", &Version::version},
        {L"dataSetId", &Version::dataSetId},
        {L"dataSetSourceFile", &Version::dataSetSourceFile},
        {L"displayVersion", &Version::displayVersion},
        {L"creationTime", &Version::creationTime},
        {L"status", &Version::status},
        {L"verify", &Version::verify},
        {L"verifyStatus", &Version::verifyStatus},
        {L"metaInfo", &Version::metaInfo},
        {L"viewingInfo", &Version::viewingInfo},
        {L"rawData", &Version::rawData},
        {L"rawDataFile", &Version::rawDataFile},
        {L"refInfoFile", &Version::refInfoFile},
        {L"refInfo", readRefInfo},
        {L"suiteCount", &Version::suiteCount},
        {L"length", &Version::size},
        {L"size", &Version::size},
    });
    return table;
}

void readDatasetVersion(const web::json::value& value, ORLOHTTPPayloadDatasetVersion& version)
{
    const web::json::value* const data = memberOf(value, L"data");
    datasetVersionFields().read(data && data->is_object() ? *data : value, version);
}

} // namespace OrloPayloadProcessor
} // namespace orlo
