#include "ProjectReaders.h"

#include "ProjectTexts.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>

#include <array>
#include <charconv>

namespace orlo::OrloPayloadProcessor {

using http::ORLOHTTPPayloadProject;
using http::ORLOHTTPPayloadSpecialty;
using http::ORLOProjectStandardProperty;
using web::json::value;

namespace {

void readStatus(const value& json, ORLOHTTPPayloadProject& project)
{
    if (std::wstring text; readField(json, text))
        project.status = projectStatusTexts().valueOf(text);
}

void readGridType(const value& json, ORLOHTTPPayloadProject& project)
{
    if (std::wstring text; readField(json, text))
        project.gridType = projectGridTypeTexts().valueOf(text);
}

void readStandardProperties(const value& json, ORLOHTTPPayloadProject& project)
{
    standardPropertyFields().readList(json, project.standardProperties);
}

void readSize(const value& json, ORLOHTTPPayloadProject& project)
{
    readInteger(json, project.size);
}

void readIntValue(const value& json, ORLOProjectStandardProperty& property)
{
    if (std::int64_t number = 0; readInteger(json, number))
        property.value = std::to_wstring(number);
}

/// As "%f" writes it, whatever decimal point the host's locale has.
std::wstring sixDecimals(double number)
{
    std::array<char, 400> digits; // the longest double has 309 digits before the point
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, 6).ptr;
    return {digits.data(), end};
}

void readDoubleValue(const value& json, ORLOProjectStandardProperty& property)
{
    if (json.is_double())
        property.value = sixDecimals(json.as_double());
}

} // namespace

const RecordTable<ORLOHTTPPayloadProject>& projectFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadProject>{
        {L"creationTime", &ORLOHTTPPayloadProject::creationTime},
        {L"description", &ORLOHTTPPayloadProject::description},
        {L"id", &ORLOHTTPPayloadProject::id},
        {L"name", &ORLOHTTPPayloadProject::name},
        {L"owner", &ORLOHTTPPayloadProject::owner},
        {L"status", readStatus},
        {L"gridType", readGridType},
        {L"standardProperties", readStandardProperties},
        {L"size", readSize},
    });
    return table;
}

const RecordTable<ORLOProjectStandardProperty>& standardPropertyFields()
{
    // A later key that is present wins.
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOProjectStandardProperty>{
        {L"propertyId", &ORLOProjectStandardProperty::propertyId},
        {L"valueType", &ORLOProjectStandardProperty::valueType},
        {L"stringValue", &ORLOProjectStandardProperty::value},
        {L"intValue", readIntValue},
        {L"doubleValue", readDoubleValue},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadSpecialty>& specialtyFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadSpecialty>{
        {L"id", &ORLOHTTPPayloadSpecialty::id},
        {L"name", &ORLOHTTPPayloadSpecialty::name},
        {L"projectId", &ORLOHTTPPayloadSpecialty::projectId},
        {L"description", &ORLOHTTPPayloadSpecialty::description},
        {L"type", &ORLOHTTPPayloadSpecialty::type},
    });
    return table;
}

} // namespace orlo::OrloPayloadProcessor
