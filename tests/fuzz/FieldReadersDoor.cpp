#include "Doors.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloNetwork/WebRequest.h>
#include <OrloProjectManager/NetworkProject/Call/FieldText.h>
#include <OrloProjectManager/NetworkProject/Projects/DatasetReaders.h>
#include <OrloProjectManager/NetworkProject/Projects/FolderReaders.h>
#include <OrloProjectManager/NetworkProject/Projects/ProjectReaders.h>
#include <OrloProjectManager/NetworkProject/Teams/TeamReaders.h>

#include <optional>

namespace orlo::fuzz {

namespace {

using web::json::value;

/// As a web function gets it.
std::optional<value> answerOf(std::string_view body)
{
    try {
        web::http::http_response response(web::http::status_codes::OK);
        response.set_body(std::string(body), "application/json");
        return OrloWebService::ReadJson(response);
    }
    catch (const std::exception&) { // no JSON
        return std::nullopt;
    }
}

void requireText(const std::string& text)
{
    require(utils::isValidUtf8(text), "a text that was read is UTF-8");
}

void check(const DatasetInfo& record)
{
    requireText(record.id);
    requireText(record.modelingDatasetId);
}

void check(const http::ORLOHTTPPayloadDataset& record)
{
    requireText(record.id);
    toDatasetInfo(record);
}

void check(const http::ORLOHTTPPayloadDatasetVersion& record)
{
    for (const std::string* text : {&record.dataSetId, &record.verify, &record.verifyStatus, &record.metaInfo, &record.viewingInfo,
                                    &record.rawData, &record.rawDataFile, &record.refInfoFile})
        requireText(*text);
}

void check(const http::ORLOProjectStandardProperty& record)
{
    requireText(record.propertyId);
    requireText(record.valueType);
}

void check(const http::ORLOHTTPPayloadProject& record)
{
    for (const auto& property : record.standardProperties)
        check(property);
}

void check(const http::ORLOHTTPPayloadFolder& /*record*/)
{}
void check(const http::ORLOHTTPPayloadSpecialty& /*record*/)
{}
void check(const CollaborationTeamInfo& /*record*/)
{}

template <class Record>
void readAll(const RecordTable<Record>& table, const value& answer)
{
    Record record;
    table.read(answer, record);
    check(record);
    std::vector<Record> records;
    require(table.readList(answer, records) == answer.is_array(), "an array is a list, and nothing else is");
    require(records.size() == (answer.is_array() ? answer.size() : 0), "each element gives a record");
    for (const Record& element : records)
        check(element);
}

void readVersion(const value& answer)
{
    http::ORLOHTTPPayloadDatasetVersion version;
    OrloPayloadProcessor::readDatasetVersion(answer, version);
    check(version);
    for (const wchar_t* key : {L"id", L"Properties", L"datasetFilePath", L"fileUrlWithSAS"})
        requireText(fieldText(answer, key));
}

void readTables(const value& answer)
{
    using namespace OrloPayloadProcessor;
    readAll(datasetInfoFields(), answer);
    readAll(datasetFields(), answer);
    readAll(datasetVersionFields(), answer);
    readAll(folderFields(), answer);
    readAll(teamFields(), answer);
    readAll(projectFields(), answer);
    readAll(standardPropertyFields(), answer);
    readAll(specialtyFields(), answer);
    readVersion(answer);
}

} // namespace

void fieldReaders(std::string_view bytes)
{
    const std::optional<value> answer = answerOf(bytes);
    if (!answer)
        return;
    OrloWebService::IsMarkedSuccess(*answer);
    readTables(*answer);
    if (const value* const data = memberOf(*answer, L"data"))
        readTables(*data);
    http::HttpMessage message;
    http::ParseErrorBody(message, utils::toWstring(std::string(bytes)));
}

} // namespace orlo::fuzz
