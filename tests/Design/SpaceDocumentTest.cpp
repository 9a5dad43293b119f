#include "CallerTree.h"
#include "support/SmallStack.h"
#include "support/WireTest.h"

#include <BaseCommon/NativeText.h>
#include <OrloProjectManager/Design/SpaceConfig.h>

#include <cpprest/json.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace orlo::test {
namespace {

using HttpClient::stringifySpaceConfig;
using web::json::value;

class SpaceDocumentTest : public testing::Test
{
protected:
    /// The document with everything around its nodes as it must be.
    static std::wstring documentOf(const std::wstring& nodes)
    {
        return LR"({"appKey":"BIM-MODEL","data":[)" + nodes + LR"(],"schemaKey":"SpaceConfig","schemaVersion":1})";
    }

    void expectRefused(const std::shared_ptr<ISpaceConfig>& config, const std::wstring& why)
    {
        log.clear();
        EXPECT_EQ(stringifySpaceConfig(config), L"");
        EXPECT_EQ(log.lines(), Lines{L"E@orlo::HttpClient::stringifySpaceConfig "
                                     L"[END_API_IMPLEMENTATION][A generic exception caught] message[" +
                                     why + L"]"});
    }

    LogCapture log;
    CallerTree tree;
};

TEST_F(SpaceDocumentTest, anEmptyTreeHasAnEmptyArray)
{
    EXPECT_EQ(stringifySpaceConfig(tree.shared()), LR"({"appKey":"BIM-MODEL","data":[],"schemaKey":"SpaceConfig","schemaVersion":1})");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpaceDocumentTest, aLeafHasItsLevelsAndSortedKeys)
{
    CallerNode& floor = tree.addRoot(L"f-1", SpaceType::Floor);
    floor.name = L"一层";
    floor.description = L"ground floor";
    floor.architectureLevel = L"0.000";
    floor.structureLevel = L"-0.050";
    EXPECT_EQ(stringifySpaceConfig(tree.shared()),
              documentOf(LR"({"attachValues":{"ArchitectureLevel":"0.000","StructureLevel":"-0.050"},"id":"f-1",)"
                         LR"("spaceDescription":"ground floor","spaceName":"一层","spaceType":"Floor"})"));
}

TEST_F(SpaceDocumentTest, aNodeWithChildrenHasThemInOrderAndNoLevels)
{
    CallerNode& site = tree.addRoot(L"s", SpaceType::Site);
    site.architectureLevel = L"9";
    site.structureLevel = L"8";
    tree.addChild(site, L"b2", SpaceType::Building);
    tree.addChild(site, L"b1", SpaceType::Region);
    EXPECT_EQ(stringifySpaceConfig(tree.shared()),
              documentOf(LR"({"id":"s","spaceDescription":"","spaceName":"","spaceType":"Site","subSpaces":[)"
                         LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                         LR"("id":"b2","spaceDescription":"","spaceName":"","spaceType":"Building"},)"
                         LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                         LR"("id":"b1","spaceDescription":"","spaceName":"","spaceType":"Region"}]})"));
}

TEST_F(SpaceDocumentTest, theKindOfANodeDecidesNothing)
{
    CallerNode& floor = tree.addRoot(L"f", SpaceType::Floor);
    tree.addChild(floor, L"s", SpaceType::Site);
    EXPECT_EQ(stringifySpaceConfig(tree.shared()),
              documentOf(LR"({"id":"f","spaceDescription":"","spaceName":"","spaceType":"Floor","subSpaces":[)"
                         LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                         LR"("id":"s","spaceDescription":"","spaceName":"","spaceType":"Site"}]})"));
}

TEST_F(SpaceDocumentTest, aKindOutsideTheTableIsAnEmptyText)
{
    tree.addRoot(L"a", static_cast<SpaceType>(4));
    tree.addRoot(L"b", static_cast<SpaceType>(-1));
    EXPECT_EQ(stringifySpaceConfig(tree.shared()), documentOf(LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                                                              LR"("id":"a","spaceDescription":"","spaceName":"","spaceType":""},)"
                                                              LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                                                              LR"("id":"b","spaceDescription":"","spaceName":"","spaceType":""})"));
}

TEST_F(SpaceDocumentTest, severalRootsAndLevelsCloseWhereTheyShould)
{
    CallerNode& a = tree.addRoot(L"a");
    CallerNode& b = tree.addChild(a, L"b");
    tree.addChild(b, L"c");
    tree.addChild(a, L"d");
    tree.addRoot(L"e");
    const std::wstring leaf = LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},"id":")";
    const std::wstring rest = LR"(","spaceDescription":"","spaceName":"","spaceType":"Site")";
    EXPECT_EQ(stringifySpaceConfig(tree.shared()),
              documentOf(LR"({"id":"a)" + rest + LR"(,"subSpaces":[{"id":"b)" + rest + LR"(,"subSpaces":[)" + leaf + L"c" + rest + L"}]}," +
                         leaf + L"d" + rest + L"}]}," + leaf + L"e" + rest + L"}"));
}

TEST_F(SpaceDocumentTest, aNodeThatStandsAtTwoPlacesIsWrittenTwice)
{
    CallerNode& a = tree.addRoot(L"a");
    CallerNode& b = tree.addRoot(L"b");
    CallerNode& shared = tree.addChild(a, L"x");
    tree.addChild(shared, L"y");
    b.subSpaces.push_back(CallerTree::shared(shared));
    a.subSpaces.push_back(CallerTree::shared(shared));
    const std::wstring text = stringifySpaceConfig(tree.shared());
    std::size_t count = 0;
    for (std::size_t at = text.find(LR"("id":"x")"); at != std::wstring::npos; at = text.find(LR"("id":"x")", at + 1))
        ++count;
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(log.lines(), Lines{});
}

value textOf(const std::wstring& text)
{
    return value::string(utils::toNative(text));
}

value objectOf(std::vector<std::pair<const char*, value>> members)
{
    std::vector<std::pair<utility::string_t, value>> fields;
    for (auto& [key, member] : members)
        fields.emplace_back(utils::toNative(std::string(key)), std::move(member));
    return value::object(std::move(fields));
}

// What stands inside the texts is escaped as cpprestsdk does it, whose form of the document is the one that is stored.
TEST_F(SpaceDocumentTest, escapesAsTheJsonLibraryDoes)
{
    std::wstring controls;
    for (wchar_t c = 0; c < 0x20; ++c)
        controls += c;
    for (const std::wstring& text : {std::wstring(L"quote \" backslash \\ solidus / end"), controls, std::wstring(L"a\0b", 3),
                                     std::wstring(L"\x7F\x80\x9F\xA0\x2028\x2029\xFEFF"), std::wstring(L"未命名楼栋"),
                                     std::wstring(L"🏢👩\x200D🔧"), std::wstring(L"\\u0041 \\n <&>'"), std::wstring(10000, L'层')}) {
        CallerTree one;
        CallerNode& node = one.addRoot(text, SpaceType::Floor);
        node.name = text;
        node.description = text;
        node.architectureLevel = text;
        node.structureLevel = text;
        const value expected = objectOf(
            {{"appKey", textOf(L"BIM-MODEL")},
             {"schemaVersion", value::number(1)},
             {"schemaKey", textOf(L"SpaceConfig")},
             {"data", value::array({objectOf(
                          {{"id", textOf(text)},
                           {"spaceName", textOf(text)},
                           {"spaceType", textOf(L"Floor")},
                           {"spaceDescription", textOf(text)},
                           {"attachValues", objectOf({{"ArchitectureLevel", textOf(text)}, {"StructureLevel", textOf(text)}})}})})}});
        EXPECT_EQ(stringifySpaceConfig(one.shared()), utils::fromNative(expected.serialize()));
    }
}

TEST_F(SpaceDocumentTest, escapesAreWrittenAsStoredDocumentsHaveThem)
{
    CallerNode& node = tree.addRoot(L"\"\\/\b\f\n\r\t\x01\x1F\x7F");
    node.name = L"中🏢";
    EXPECT_EQ(stringifySpaceConfig(tree.shared()),
              documentOf(LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},"id":"\"\\/\b\f\n\r\t\u0001\u001F)"
                         L"\x7F"
                         LR"(","spaceDescription":"","spaceName":"中🏢","spaceType":"Site"})"));
}

TEST_F(SpaceDocumentTest, aWideValueThatIsNoCharacterBecomesTheReplacementCharacter)
{
    tree.addRoot(std::wstring(1, static_cast<wchar_t>(0xD800)));
    EXPECT_NE(stringifySpaceConfig(tree.shared()).find(L"\"id\":\"\xFFFD\""), std::wstring::npos);
}

TEST_F(SpaceDocumentTest, aNullConfigGivesAnEmptyText)
{
    expectRefused(nullptr, L"the space configuration is null");
}

TEST_F(SpaceDocumentTest, aNullNodeGivesAnEmptyText)
{
    CallerNode& site = tree.addRoot(L"s");
    tree.addChild(site, L"b");
    site.subSpaces.push_back(nullptr);
    expectRefused(tree.shared(), L"a node of the space tree is null");

    CallerTree nullRoot;
    nullRoot.addNullRoot();
    expectRefused(nullRoot.shared(), L"a node of the space tree is null");
}

TEST_F(SpaceDocumentTest, aNodeThatContainsItselfGivesAnEmptyText)
{
    CallerNode& site = tree.addRoot(L"s");
    site.subSpaces.push_back(CallerTree::shared(site));
    expectRefused(tree.shared(), L"a node of the space tree contains itself");
}

TEST_F(SpaceDocumentTest, aNodeThatContainsItselfFurtherDownGivesAnEmptyText)
{
    CallerNode& site = tree.addRoot(L"s");
    CallerNode& building = tree.addChild(site, L"b");
    CallerNode& floor = tree.addChild(building, L"f");
    floor.subSpaces.push_back(CallerTree::shared(building));
    expectRefused(tree.shared(), L"a node of the space tree contains itself");
}

class ThrowingNode : public CallerNode
{
public:
    explicit ThrowingNode(std::function<void()> raise) : m_raise(std::move(raise)) {}
    const std::wstring& GetName() const override
    {
        m_raise();
        return name;
    }

private:
    std::function<void()> m_raise;
};

TEST_F(SpaceDocumentTest, nothingThatACallersNodeThrowsComesOut)
{
    ThrowingNode broken([] { throw std::runtime_error("no name today"); });
    tree.addRoot(L"s").subSpaces.push_back(CallerTree::shared(broken));
    expectRefused(tree.shared(), L"no name today");
}

TEST_F(SpaceDocumentTest, somethingElseThanAnExceptionDoesNotComeOutEither)
{
    ThrowingNode broken([] { throw 7; });
    tree.addRoot(L"s").subSpaces.push_back(CallerTree::shared(broken));
    EXPECT_EQ(stringifySpaceConfig(tree.shared()), L"");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::HttpClient::stringifySpaceConfig [END_API_IMPLEMENTATION]unknown exception occurred"});
}

TEST_F(SpaceDocumentTest, aTreeOfAnyDepthIsWrittenOnASmallStack)
{
    constexpr int depth = 5000;
    CallerNode* node = &tree.addRoot(L"n", SpaceType::Region);
    for (int i = 1; i < depth; ++i)
        node = &tree.addChild(*node, L"n", SpaceType::Region);
    std::wstring expected;
    for (int i = 1; i < depth; ++i)
        expected += LR"({"id":"n","spaceDescription":"","spaceName":"","spaceType":"Region","subSpaces":[)";
    expected += LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                LR"("id":"n","spaceDescription":"","spaceName":"","spaceType":"Region"})";
    for (int i = 1; i < depth; ++i)
        expected += L"]}";
    std::wstring written;
    onSmallStack([&] { written = stringifySpaceConfig(tree.shared()); });
    EXPECT_TRUE(written == documentOf(expected)) << "written: " << written.size() << " characters";
    EXPECT_EQ(log.lines(), Lines{});
}

// Reading and writing, one after the other.

std::wstring rewritten(const std::wstring& document)
{
    value answer = objectOf({{"scopeEntityId", textOf(L"p")}, {"version", value::number(1)}, {"configValue", textOf(document)}});
    return stringifySpaceConfig(parseSpaceConfig(answer));
}

TEST_F(SpaceDocumentTest, whatWasWrittenReadsAndWritesTheSame)
{
    CallerNode& site = tree.addRoot(L"s \"1\"", SpaceType::Site);
    site.name = L"场地\n🏗";
    CallerNode& floor = tree.addChild(tree.addChild(site, L"b", SpaceType::Building), L"f", SpaceType::Floor);
    floor.architectureLevel = L"-0.050";
    tree.addRoot(L"t", SpaceType::Region).description = L"\\";
    const std::wstring text = stringifySpaceConfig(tree.shared());
    EXPECT_NE(text, L"");
    EXPECT_EQ(rewritten(text), text);
}

TEST_F(SpaceDocumentTest, aLeafWithEmptyAttachValuesWritesBothLevelsAsEmptyTexts)
{
    EXPECT_EQ(rewritten(LR"({"schemaVersion":1,"data":[{"id":"f","spaceName":"n","spaceType":"Floor","attachValues":{}}]})"),
              documentOf(LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                         LR"("id":"f","spaceDescription":"","spaceName":"n","spaceType":"Floor"})"));
}

TEST_F(SpaceDocumentTest, aLeafWithAnEmptyArrayOfSubSpacesGainsEmptyLevels)
{
    EXPECT_EQ(rewritten(LR"({"schemaVersion":1,"data":[{"id":"f","spaceName":"n","spaceType":"Floor","subSpaces":[]}]})"),
              documentOf(LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                         LR"("id":"f","spaceDescription":"","spaceName":"n","spaceType":"Floor"})"));
}

TEST_F(SpaceDocumentTest, anInnerNodeLosesItsLevels)
{
    EXPECT_EQ(
        rewritten(
            LR"({"schemaVersion":1,"data":[{"id":"b","spaceName":"n","spaceType":"Building","attachValues":{"ArchitectureLevel":"1",)"
            LR"("StructureLevel":"2"},"subSpaces":[{"id":"f","spaceName":"m","spaceType":"Floor","attachValues":{"ArchitectureLevel":"3",)"
            LR"("StructureLevel":"4"}}]}]})"),
        documentOf(
            LR"({"id":"b","spaceDescription":"","spaceName":"n","spaceType":"Building","subSpaces":[{"attachValues":)"
            LR"({"ArchitectureLevel":"3","StructureLevel":"4"},"id":"f","spaceDescription":"","spaceName":"m","spaceType":"Floor"}]})"));
}

TEST_F(SpaceDocumentTest, aSpaceTypeOutsideTheTableBecomesSite)
{
    EXPECT_EQ(rewritten(LR"({"schemaVersion":1,"data":[{"id":"f","spaceName":"n","spaceType":"Room"}]})"),
              documentOf(LR"({"attachValues":{"ArchitectureLevel":"","StructureLevel":""},)"
                         LR"("id":"f","spaceDescription":"","spaceName":"n","spaceType":"Site"})"));
}

TEST_F(SpaceDocumentTest, aDocumentOfAnotherSchemaVersionIsWrittenAsAnEmptyTree)
{
    EXPECT_EQ(rewritten(LR"({"schemaVersion":2,"data":[{"id":"f","spaceName":"n","spaceType":"Floor"}]})"), documentOf(L""));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Invalid space config data: schema version isn't support"});
}

TEST_F(SpaceDocumentTest, theDefaultDocumentKeepsItsMeaning)
{
    EXPECT_EQ(rewritten(LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SpaceConfig","data":[{"id":"1",)"
                        LR"("spaceName":"未命名场地","spaceType":"Site","spaceDescription":"","subSpaces":[{"id":"2",)"
                        LR"("spaceName":"未命名楼栋","spaceType":"Building","spaceDescription":"","subSpaces":[{"id":"3",)"
                        LR"("spaceName":"未命名区域","spaceType":"Region","spaceDescription":"","subSpaces":[{"id":"4",)"
                        LR"("spaceName":"建筑未命名楼层","spaceType":"Floor","spaceDescription":"",)"
                        LR"("attachValues":{"ArchitectureLevel":"0.000","StructureLevel":"-0.050"}}]}]}]}]})"),
              documentOf(LR"({"id":"1","spaceDescription":"","spaceName":"未命名场地","spaceType":"Site","subSpaces":[)"
                         LR"({"id":"2","spaceDescription":"","spaceName":"未命名楼栋","spaceType":"Building","subSpaces":[)"
                         LR"({"id":"3","spaceDescription":"","spaceName":"未命名区域","spaceType":"Region","subSpaces":[)"
                         LR"({"attachValues":{"ArchitectureLevel":"0.000","StructureLevel":"-0.050"},"id":"4","spaceDescription":"",)"
                         LR"("spaceName":"建筑未命名楼层","spaceType":"Floor"}]}]}]})"));
}

} // namespace
} // namespace orlo::test
