#include "DatasetReaders.h"

#include "TextTable.h"

namespace orlo {

using http::ORLOHTTPPayloadDataset;

DatasetKind datasetKindOf(const std::wstring& type)
{
    static const TextTable<DatasetKind> table({{DatasetKind::Standard, L"workunit"},
                                               {DatasetKind::Standard, L"standard"},
                                               {DatasetKind::Standard, L"zok"},
                                               {DatasetKind::NoneStandard, L"noneStandard"},
                                               {DatasetKind::NoneStandard, L"cloudify"},
                                               {DatasetKind::NoneStandard, L"dwg"}},
                                              DatasetKind::Other);
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

} // namespace

const RecordTable<DatasetInfo>& datasetInfoFields()
{
    static const RecordTable<DatasetInfo> table{
        {L"id", &DatasetInfo::id},
        {L"modelingDatasetId", &DatasetInfo::modelingDatasetId},
        {L"name", &DatasetInfo::name},
        {L"type", readKind},
        {L"description", &DatasetInfo::description},
        {L"ownerId", &DatasetInfo::ownerId},
        {L"specialtyId", &DatasetInfo::specialtyId},
        {L"teamId", &DatasetInfo::teamId},
        {L"projectId", &DatasetInfo::projectId},
    };
    return table;
}

const RecordTable<ORLOHTTPPayloadDataset>& datasetFields()
{
    static const RecordTable<ORLOHTTPPayloadDataset> table{
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
    };
    return table;
}

} // namespace OrloPayloadProcessor
} // namespace orlo
