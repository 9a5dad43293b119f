#include <OrloProjectManager/NetworkProject/Projects/DatasetReaders.h>
#include <OrloProjectManager/NetworkProject/Projects/ProjectReaders.h>
#include <OrloProjectManager/Projects/Project.h>

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace orlo::test {
namespace {

using http::ORLOHTTPPayloadDataset;
using http::ORLOHTTPPayloadProject;
using http::ORLOHTTPPayloadSpecialty;
using http::ORLOProjectStandardProperty;

template <class Record>
Record readAs(const RecordTable<Record>& fields, const std::string& text)
{
    Record record{};
    fields.read(web::json::value::parse(utils::toNative(text)), record);
    return record;
}

ORLOHTTPPayloadProject project(const std::string& text)
{
    return readAs(OrloPayloadProcessor::projectFields(), text);
}

std::wstring propertyValue(const std::string& text)
{
    return readAs(OrloPayloadProcessor::standardPropertyFields(), text).value;
}

TEST(ProjectReader, readsEveryFieldUnderItsKey)
{
    const ORLOHTTPPayloadProject read =
        project(R"({"creationTime":"2024-03-01T08:00:00Z","description":"描述","id":"p-1","name":"示例","owner":"u-9",)"
                R"("status":"Completed","templateId":"t-1","gridType":"TYPE_TWO","size":5000000000,)"
                R"("standardProperties":[{"propertyId":"a","valueType":"String","stringValue":"x"}]})");
    EXPECT_EQ(read.creationTime, L"2024-03-01T08:00:00Z");
    EXPECT_EQ(read.description, L"描述");
    EXPECT_EQ(read.id, L"p-1");
    EXPECT_EQ(read.name, L"示例");
    EXPECT_EQ(read.owner, L"u-9");
    EXPECT_EQ(static_cast<int>(read.status), 2);
    EXPECT_EQ(static_cast<int>(read.gridType), 1);
    EXPECT_EQ(read.size, 5000000000);
    ASSERT_EQ(read.standardProperties.size(), 1u);
    EXPECT_EQ(read.standardProperties[0].propertyId, "a");
    EXPECT_EQ(read.standardProperties[0].valueType, "String");
    EXPECT_EQ(read.standardProperties[0].value, L"x");
}

TEST(ProjectReader, neverReadsTheTemplateId)
{
    EXPECT_EQ(project(R"({"templateId":"t-1"})").templateId, L"");
}

TEST(ProjectReader, defaultsStatusAndGridTypeToMinusOneAndSizeToZero)
{
    for (const char* text : {"{}", R"({"status":0,"gridType":1,"size":"7"})", R"({"status":"Gone","gridType":"","size":7.5})",
                             R"({"status":null,"gridType":null,"size":null})", R"({"size":1e999})"}) {
        const ORLOHTTPPayloadProject read = project(text);
        EXPECT_EQ(static_cast<int>(read.status), -1) << text;
        EXPECT_EQ(static_cast<int>(read.gridType), -1) << text;
        EXPECT_EQ(read.size, 0) << text;
    }
}

TEST(ProjectReader, standardPropertiesOfAnotherTypeAreNone)
{
    EXPECT_TRUE(project(R"({"standardProperties":{"a":1}})").standardProperties.empty());
    EXPECT_TRUE(project(R"({"standardProperties":"x"})").standardProperties.empty());
    EXPECT_EQ(project(R"({"standardProperties":[7,null]})").standardProperties.size(), 2u);
}

TEST(StandardPropertyReader, writesAnIntegerInDecimalDigits)
{
    EXPECT_EQ(propertyValue(R"({"intValue":-42})"), L"-42");
    EXPECT_EQ(propertyValue(R"({"intValue":5000000000})"), L"5000000000");
    EXPECT_EQ(propertyValue(R"({"intValue":0})"), L"0");
}

TEST(StandardPropertyReader, writesADoubleWithSixDecimals)
{
    EXPECT_EQ(propertyValue(R"({"doubleValue":2.5})"), L"2.500000");
    EXPECT_EQ(propertyValue(R"({"doubleValue":-0.0000004})"), L"-0.000000");
    EXPECT_EQ(propertyValue(R"({"doubleValue":1e21})"), L"1000000000000000000000.000000");
    EXPECT_EQ(propertyValue(R"({"doubleValue":0.1234567})"), L"0.123457");
    EXPECT_EQ(propertyValue(R"({"doubleValue":1.7976931348623157e308})").size(), 316u);
}

TEST(StandardPropertyReader, writesTheDecimalPointOfJsonWhateverTheHostsLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8") && !std::setlocale(LC_ALL, "fr_FR.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    const std::wstring value = propertyValue(R"({"doubleValue":2.5})");
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(value, L"2.500000");
}

TEST(StandardPropertyReader, aLaterKeyThatIsPresentWins)
{
    EXPECT_EQ(propertyValue(R"({"doubleValue":2.5,"intValue":7,"stringValue":"s"})"), L"2.500000");
    EXPECT_EQ(propertyValue(R"({"intValue":7,"stringValue":"s"})"), L"7");
    EXPECT_EQ(propertyValue(R"({"stringValue":"s"})"), L"s");
}

TEST(StandardPropertyReader, aKeyOfAnotherTypeLeavesTheEarlierValue)
{
    EXPECT_EQ(propertyValue(R"({"stringValue":"s","intValue":"7","doubleValue":true})"), L"s");
    EXPECT_EQ(propertyValue(R"({"stringValue":"s","intValue":7.5})"), L"s");
    EXPECT_EQ(propertyValue(R"({"stringValue":"s","doubleValue":3})"), L"s");
    EXPECT_EQ(propertyValue(R"({"stringValue":3})"), L"");
}

TEST(StandardProperties, takeTheirTypeFromTheText)
{
    std::vector<ORLOProjectStandardProperty> records;
    for (const char* type : {"String", "Integer", "Long", "Double", "DateTime", "Boolean", "Code", "Enum", "EnumValue", "string", ""})
        records.push_back({"id", type, L"value"});
    const StandardProperties properties = toStandardProperties(records);
    std::vector<int> types;
    for (const ProjectStandardProperty& property : properties) {
        types.push_back(static_cast<int>(property.valueType));
        EXPECT_EQ(property.propertyId, "id");
        EXPECT_EQ(property.value, L"value");
    }
    EXPECT_EQ(types, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, -1, -1}));
}

TEST(ProjectObject, hasTheFieldsOfItsRecord)
{
    ORLOHTTPPayloadProject record = project(R"({"id":"p-1","name":"n","status":"Suspended","gridType":"TYPE_ONE","size":9})");
    const auto made = toProject(std::move(record));
    EXPECT_EQ(made->GetId(), L"p-1");
    EXPECT_EQ(made->GetName(), L"n");
    EXPECT_EQ(static_cast<int>(made->GetStatus()), 1);
    EXPECT_EQ(static_cast<int>(made->GetGridType()), 0);
    EXPECT_EQ(made->GetSize(), 9);
}

TEST(DatasetReader, readsEveryFieldUnderItsKey)
{
    const auto read = readAs(OrloPayloadProcessor::datasetFields(),
                             R"({"folderId":"f","id":"d","modelingDatasetId":"m","name":"名","nameSpace":"ns","schemaDefinition":"sd",)"
                             R"("codeVersion":3,"tipVersion":4,"type":"dwg","specialtyId":"s","ownerId":"o","description":"x",)"
                             R"("teamId":"t","projectId":"p"})");
    EXPECT_EQ(read.folderId, L"f");
    EXPECT_EQ(read.id, "d");
    EXPECT_EQ(read.modelingDatasetId, "");
    EXPECT_EQ(read.name, L"名");
    EXPECT_EQ(read.nameSpace, L"ns");
    EXPECT_EQ(read.schemaDefinition, L"sd");
    EXPECT_EQ(read.codeVersion, 3);
    EXPECT_EQ(read.tipVersion, 4);
    EXPECT_EQ(read.type, L"dwg");
    EXPECT_EQ(read.specialtyId, L"s");
    EXPECT_EQ(read.ownerId, L"o");
    EXPECT_EQ(read.description, L"x");
    EXPECT_EQ(read.teamId, L"t");
    EXPECT_EQ(read.projectId, L"p");
}

TEST(DatasetReader, aDatasetInfoCopiesTheRecordAndFindsTheKind)
{
    ORLOHTTPPayloadDataset record;
    record.id = "d";
    record.modelingDatasetId = "m";
    record.name = L"n";
    record.type = L"cloudify";
    record.description = L"x";
    record.ownerId = L"o";
    record.specialtyId = L"s";
    record.teamId = L"t";
    record.projectId = L"p";
    const DatasetInfo info = toDatasetInfo(record);
    EXPECT_EQ(info.id, "d");
    EXPECT_EQ(info.modelingDatasetId, "m");
    EXPECT_EQ(info.name, L"n");
    EXPECT_EQ(static_cast<int>(info.type), 1);
    EXPECT_EQ(info.description, L"x");
    EXPECT_EQ(info.ownerId, L"o");
    EXPECT_EQ(info.specialtyId, L"s");
    EXPECT_EQ(info.teamId, L"t");
    EXPECT_EQ(info.projectId, L"p");
}

TEST(SpecialtyReader, readsStringsAlone)
{
    const auto read =
        readAs(OrloPayloadProcessor::specialtyFields(), R"({"id":"s-1","name":"结构","projectId":"p-1","description":7,"type":"ZIM"})");
    EXPECT_EQ(read.id, L"s-1");
    EXPECT_EQ(read.name, L"结构");
    EXPECT_EQ(read.projectId, L"p-1");
    EXPECT_EQ(read.description, L"");
    EXPECT_EQ(read.type, L"ZIM");
}

} // namespace
} // namespace orlo::test
