#include "support/WireTest.h"

#include <BaseCommon/NativeText.h>
#include <OrloProjectManager/Design/SpaceConfig.h>

#include <cpprest/json.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace orlo::test {
namespace {

using web::json::json_exception;
using web::json::value;

value parsed(const std::string& text)
{
    return value::parse(utils::toNative(text));
}

/// An answer of the platform around the text of a document.
value answerWith(const std::string& document, int version = 7)
{
    value answer = parsed(R"({"scopeEntityId":"p-1"})");
    answer[utils::toNative(std::string("version"))] = value::number(version);
    answer[utils::toNative(std::string("configValue"))] = value::string(utils::toNative(document));
    return answer;
}

std::string documentOf(const std::string& nodes)
{
    return R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SpaceConfig","data":[)" + nodes + "]}";
}

std::shared_ptr<ISpaceConfigItem> onlyNode(const std::string& node)
{
    const auto config = parseSpaceConfig(answerWith(documentOf(node)));
    return config && config->GetItems().size() == 1 ? config->GetItems().front() : nullptr;
}

class SpaceConfigReadTest : public testing::Test
{
protected:
    void expectNoItems(const std::string& document, const Lines& lines)
    {
        log.clear();
        const auto config = parseSpaceConfig(answerWith(document, 12));
        ASSERT_NE(config, nullptr) << document;
        EXPECT_EQ(config->GetVersion(), 12) << document;
        EXPECT_TRUE(config->GetItems().empty()) << document;
        EXPECT_EQ(log.lines(), lines) << document;
    }

    LogCapture log;
};

TEST_F(SpaceConfigReadTest, readsATreeInTheOrderOfTheDocument)
{
    const auto config = parseSpaceConfig(
        answerWith(documentOf(R"({"id":"s","spaceName":"场地 🏗","spaceType":"Site","spaceDescription":"d-s","subSpaces":[)"
                              R"({"id":"b2","spaceName":"B2","spaceType":"Building","spaceDescription":"","subSpaces":[)"
                              R"({"id":"f","spaceName":"F","spaceType":"Floor","spaceDescription":"",)"
                              R"("attachValues":{"ArchitectureLevel":"0.000","StructureLevel":"-0.050"}}]},)"
                              R"({"id":"b1","spaceName":"B1","spaceType":"Region"}]},{"id":"t","spaceName":"T","spaceType":"Site"})")));
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->GetVersion(), 7);
    ASSERT_EQ(config->GetItems().size(), 2u);
    const ISpaceConfigItem& site = *config->GetItems()[0];
    EXPECT_EQ(site.GetId(), L"s");
    EXPECT_EQ(site.GetName(), L"场地 🏗");
    EXPECT_EQ(site.GetDescription(), L"d-s");
    EXPECT_EQ(static_cast<int>(site.GetType()), 0);
    EXPECT_EQ(site.GetArchitectureLevel(), L"");
    EXPECT_EQ(site.GetStructureLevel(), L"");
    ASSERT_EQ(site.GetSubSpaces().size(), 2u);
    EXPECT_EQ(site.GetSubSpaces()[0]->GetId(), L"b2");
    EXPECT_EQ(static_cast<int>(site.GetSubSpaces()[0]->GetType()), 1);
    EXPECT_EQ(site.GetSubSpaces()[1]->GetId(), L"b1");
    EXPECT_EQ(static_cast<int>(site.GetSubSpaces()[1]->GetType()), 2);
    ASSERT_EQ(site.GetSubSpaces()[0]->GetSubSpaces().size(), 1u);
    const ISpaceConfigItem& floor = *site.GetSubSpaces()[0]->GetSubSpaces()[0];
    EXPECT_EQ(static_cast<int>(floor.GetType()), 3);
    EXPECT_EQ(floor.GetArchitectureLevel(), L"0.000");
    EXPECT_EQ(floor.GetStructureLevel(), L"-0.050");
    EXPECT_EQ(config->GetItems()[1]->GetId(), L"t");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceConfigReadTest, anEmptyTreeIsReadInSilence)
{
    expectNoItems(documentOf(""), {});
}

TEST_F(SpaceConfigReadTest, keepsTheVersionThatWasAnswered)
{
    for (const int version : {0, -3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ(parseSpaceConfig(answerWith(documentOf(""), version))->GetVersion(), version);
}

std::shared_ptr<ISpaceConfig> ofVersion(const std::string& version)
{
    return parseSpaceConfig(
        parsed(R"({"scopeEntityId":"p-1","configValue":"{\"schemaVersion\":1,\"data\":[]}","version":)" + version + "}"));
}

TEST_F(SpaceConfigReadTest, aVersionMayBeWrittenWithAFractionOfZeros)
{
    EXPECT_EQ(ofVersion("3.0")->GetVersion(), 3);
    EXPECT_EQ(ofVersion("-3.000")->GetVersion(), -3);
    EXPECT_EQ(ofVersion("3e2")->GetVersion(), 300);
    EXPECT_EQ(ofVersion("2147483647.0")->GetVersion(), 2147483647);
}

TEST_F(SpaceConfigReadTest, aVersionThatIsNoWholeNumberOf32BitsThrows)
{
    for (const char* version : {"3.5", "-0.1", "2147483648", "2147483648.0", "-2147483649", "18446744073709551615", "1e999", "-1e999"})
        EXPECT_THROW(ofVersion(version), json_exception) << version;
}

TEST_F(SpaceConfigReadTest, aDocumentWithoutASchemaVersionHasNoItems)
{
    const Lines line{L"E [ORLOSDK]Invalid space config data: no schema version"};
    expectNoItems(R"({"schemaKey":"SpaceConfig","data":[{"id":"a","spaceName":"","spaceType":"Site"}]})", line);
    for (const char* document : {"{}", "[]", "7", "null", "\"text\"", R"({"schemaversion":1,"data":[]})"})
        expectNoItems(document, line);
}

TEST_F(SpaceConfigReadTest, theSchemaVersionIsLookedAtBeforeTheData)
{
    expectNoItems("{}", {L"E [ORLOSDK]Invalid space config data: no schema version"});
    expectNoItems(R"({"schemaVersion":2})", {L"E [ORLOSDK]Invalid space config data: schema version isn't support"});
}

TEST_F(SpaceConfigReadTest, aDocumentOfAnotherSchemaVersionHasNoItems)
{
    for (const char* version : {"2", "0", "-1", "4294967297", "1e999", "-1e999", "0.5"})
        expectNoItems(std::string(R"({"schemaVersion":)") + version + R"(,"data":[{"id":"a","spaceName":"","spaceType":"Site"}]})",
                      {L"E [ORLOSDK]Invalid space config data: schema version isn't support"});
}

TEST_F(SpaceConfigReadTest, aDocumentWithoutDataHasNoItems)
{
    expectNoItems(R"({"schemaVersion":1})", {L"E [ORLOSDK]Invalid space config data: no data"});
    expectNoItems(R"({"schemaVersion":1,"Data":[]})", {L"E [ORLOSDK]Invalid space config data: no data"});
}

TEST_F(SpaceConfigReadTest, dataThatIsNoArrayIsEmptyInSilence)
{
    for (const char* data : {"{}", R"({"id":"a"})", "\"text\"", "7", "true", "null"})
        expectNoItems(std::string(R"({"schemaVersion":1,"data":)") + data + "}", {});
}

TEST_F(SpaceConfigReadTest, looksAtNoOtherKeyOfTheDocument)
{
    EXPECT_EQ(parseSpaceConfig(answerWith(R"({"schemaVersion":1,"data":[{"id":"a","spaceName":"","spaceType":"Site","extra":[1]}],)"
                                          R"("appKey":7,"schemaKey":"GridConfig"})"))
                  ->GetItems()
                  .size(),
              1u);
}

TEST_F(SpaceConfigReadTest, aSpaceTypeOutsideTheTableReadsAsSite)
{
    for (const char* type : {"", "floor", "Room", "楼层"}) {
        const auto node = onlyNode(std::string(R"({"id":"a","spaceName":"n","spaceType":")") + type + "\"}");
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(static_cast<int>(node->GetType()), 0) << type;
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceConfigReadTest, aNameThatIsNoTextReadsAsEmpty)
{
    for (const char* name : {"null", "7", "true", "{}", "[\"n\"]"}) {
        const auto node = onlyNode(std::string(R"({"id":"a","spaceType":"Floor","spaceName":)") + name + "}");
        ASSERT_NE(node, nullptr) << name;
        EXPECT_EQ(node->GetName(), L"") << name;
        EXPECT_EQ(static_cast<int>(node->GetType()), 3);
    }
}

TEST_F(SpaceConfigReadTest, aDescriptionThatIsMissingOrNoTextReadsAsEmpty)
{
    for (const char* member : {"", R"(,"spaceDescription":null)", R"(,"spaceDescription":7)", R"(,"spaceDescription":[])"}) {
        const auto node = onlyNode(std::string(R"({"id":"a","spaceName":"n","spaceType":"Site")") + member + "}");
        ASSERT_NE(node, nullptr) << member;
        EXPECT_EQ(node->GetDescription(), L"") << member;
    }
}

TEST_F(SpaceConfigReadTest, subSpacesThatAreNoArrayReadAsNoChildren)
{
    for (const char* children : {"{}", "null", "7", "\"text\"", R"({"id":"b","spaceName":"","spaceType":"Site"})", "[]"}) {
        const auto node = onlyNode(std::string(R"({"id":"a","spaceName":"n","spaceType":"Site","subSpaces":)") + children + "}");
        ASSERT_NE(node, nullptr) << children;
        EXPECT_TRUE(node->GetSubSpaces().empty()) << children;
    }
}

TEST_F(SpaceConfigReadTest, levelsThatAreMissingOrNoTextReadAsEmpty)
{
    for (const char* levels : {"null", "7", "[]", "[\"0.000\"]", "\"0.000\"", "{}", R"({"ArchitectureLevel":0,"StructureLevel":null})",
                               R"({"architectureLevel":"1","structureLevel":"2"})"}) {
        const auto node = onlyNode(std::string(R"({"id":"a","spaceName":"n","spaceType":"Floor","attachValues":)") + levels + "}");
        ASSERT_NE(node, nullptr) << levels;
        EXPECT_EQ(node->GetArchitectureLevel(), L"") << levels;
        EXPECT_EQ(node->GetStructureLevel(), L"") << levels;
    }
}

TEST_F(SpaceConfigReadTest, oneLevelWithoutTheOtherIsRead)
{
    EXPECT_EQ(onlyNode(R"({"id":"a","spaceName":"","spaceType":"Floor","attachValues":{"StructureLevel":"3"}})")->GetStructureLevel(),
              L"3");
    EXPECT_EQ(onlyNode(R"({"id":"a","spaceName":"","spaceType":"Floor","attachValues":{"ArchitectureLevel":"3"}})")->GetArchitectureLevel(),
              L"3");
}

TEST_F(SpaceConfigReadTest, levelsAreNeitherParsedNorRounded)
{
    for (const char* level : {"-0.050", "1e3", "  3.0 ", "+0", "3,5", "三", "999999999999999999999.00000000000000001"}) {
        const auto node = onlyNode(std::string(R"({"id":"a","spaceName":"","spaceType":"Floor","attachValues":{"ArchitectureLevel":")") +
                                   level + R"(","StructureLevel":")" + level + "\"}}");
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(utils::toString(node->GetArchitectureLevel()), level);
        EXPECT_EQ(utils::toString(node->GetStructureLevel()), level);
    }
}

TEST_F(SpaceConfigReadTest, anInnerNodeKeepsItsLevels)
{
    const auto node =
        onlyNode(R"({"id":"a","spaceName":"","spaceType":"Building","attachValues":{"ArchitectureLevel":"1","StructureLevel":"2"},)"
                 R"("subSpaces":[{"id":"b","spaceName":"","spaceType":"Floor"}]})");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetArchitectureLevel(), L"1");
    EXPECT_EQ(node->GetStructureLevel(), L"2");
    EXPECT_EQ(node->GetSubSpaces().size(), 1u);
}

TEST_F(SpaceConfigReadTest, readsTheEscapesOfJson)
{
    const auto node = onlyNode(R"({"id":"\u0000a\"\\\/\b\f\n\r\t","spaceName":"\u4e2d\ud83c\udfe2","spaceType":"\u0046loor"})");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetId(), std::wstring(L"\0a\"\\/\b\f\n\r\t", 10));
    EXPECT_EQ(node->GetName(), L"中🏢");
    EXPECT_EQ(static_cast<int>(node->GetType()), 3);
}

TEST_F(SpaceConfigReadTest, aNodeWithoutWhatItMustHaveThrows)
{
    for (const char* node : {R"({"spaceName":"n","spaceType":"Site"})", R"({"id":"a","spaceType":"Site"})", R"({"id":"a","spaceName":"n"})",
                             R"({"id":7,"spaceName":"n","spaceType":"Site"})", R"({"id":null,"spaceName":"n","spaceType":"Site"})",
                             R"({"id":"a","spaceName":"n","spaceType":0})", R"({"id":"a","spaceName":"n","spaceType":null})", "{}", "7",
                             "null", "\"a\"", "[]", R"({"id":"a","spaceName":"n","spaceType":"Site"},7)"}) {
        EXPECT_THROW(parseSpaceConfig(answerWith(documentOf(node))), json_exception) << node;
        const std::string parent = R"({"id":"p","spaceName":"","spaceType":"Site","subSpaces":[)" + std::string(node) + "]}";
        EXPECT_THROW(parseSpaceConfig(answerWith(documentOf(parent))), json_exception) << parent;
    }
}

TEST_F(SpaceConfigReadTest, aSchemaVersionThatIsNoNumberThrows)
{
    for (const char* version : {"\"1\"", "null", "true", "[1]", "{}"})
        EXPECT_THROW(parseSpaceConfig(answerWith(std::string(R"({"schemaVersion":)") + version + R"(,"data":[]})")), json_exception)
            << version;
}

TEST_F(SpaceConfigReadTest, anAnswerWithoutItsThreeMembersThrows)
{
    for (const char* answer :
         {R"({"version":1,"configValue":"{}"})", R"({"scopeEntityId":"p","configValue":"{}"})", R"({"scopeEntityId":"p","version":1})",
          R"({"scopeEntityId":7,"version":1,"configValue":"{}"})", R"({"scopeEntityId":"p","version":"1","configValue":"{}"})",
          R"({"scopeEntityId":"p","version":null,"configValue":"{}"})", R"({"scopeEntityId":"p","version":1,"configValue":{}})",
          R"({"scopeEntityId":"p","version":1,"configValue":null})", R"({"scopeEntityId":"p","version":1,"configValue":7})", "{}", "[]",
          "7", "null", "\"text\""})
        EXPECT_THROW(parseSpaceConfig(parsed(answer)), json_exception) << answer;
}

TEST_F(SpaceConfigReadTest, aDocumentThatIsNoJsonThrows)
{
    for (const char* document : {"", " ", "{", "{}}", R"({"schemaVersion":1,"data":[})", "<html>", "{'a':1}", R"({"a":"\ud83c"})",
                                 "{\"a\":\"\x01\"}", "nul", "[1,]"})
        EXPECT_THROW(parseSpaceConfig(answerWith(document)), json_exception) << document;
}

/// A chain of nodes, one inside the other.
std::string chain(std::size_t depth)
{
    std::string text;
    for (std::size_t i = 0; i + 1 < depth; ++i)
        text += R"({"id":"n","spaceName":"","spaceType":"Region","subSpaces":[)";
    text += R"({"id":"last","spaceName":"","spaceType":"Floor"})";
    for (std::size_t i = 0; i + 1 < depth; ++i)
        text += "]}";
    return text;
}

std::size_t depthOf(const ISpaceConfig& config)
{
    std::size_t depth = 0;
    for (const auto* level = &config.GetItems(); !level->empty(); level = &level->front()->GetSubSpaces())
        ++depth;
    return depth;
}

TEST_F(SpaceConfigReadTest, readsAsDeepAsJsonIsRead)
{
    // The document takes two levels, each node but the last two, and the last one one.
    EXPECT_EQ(depthOf(*parseSpaceConfig(answerWith(documentOf(chain(63))))), 63u);
}

TEST_F(SpaceConfigReadTest, aDocumentThatIsNestedDeeperThrows)
{
    for (const std::size_t depth : {64u, 65u, 500u, 5000u})
        EXPECT_THROW(parseSpaceConfig(answerWith(documentOf(chain(depth)))), json_exception) << depth;
    EXPECT_THROW(parseSpaceConfig(answerWith(std::string(1000000, '['))), json_exception);
}

TEST_F(SpaceConfigReadTest, readsManyNodesSideBySide)
{
    std::string nodes;
    for (int i = 0; i < 10000; ++i)
        nodes += (i ? "," : "") + std::string(R"({"id":")") + std::to_string(i) + R"(","spaceName":"","spaceType":"Floor"})";
    const auto config = parseSpaceConfig(answerWith(documentOf(nodes)));
    ASSERT_EQ(config->GetItems().size(), 10000u);
    EXPECT_EQ(config->GetItems().back()->GetId(), L"9999");
}

} // namespace
} // namespace orlo::test
