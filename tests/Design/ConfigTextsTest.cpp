#include <OrloProjectManager/NetworkProject/Design/ConfigTexts.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

TEST(SpaceTypeTexts, haveFourRowsInBothDirections)
{
    const wchar_t* const texts[] = {L"Site", L"Building", L"Region", L"Floor"};
    for (int value = 0; value < 4; ++value) {
        EXPECT_EQ(spaceTypeTexts().textOf(static_cast<SpaceType>(value)), texts[value]);
        EXPECT_EQ(static_cast<int>(spaceTypeTexts().valueOf(texts[value])), value);
    }
}

TEST(SpaceTypeTexts, aTextOutsideTheTableReadsAsSite)
{
    for (const wchar_t* text : {L"", L"site", L"FLOOR", L"Floor ", L"Room", L"-1", L"楼层"})
        EXPECT_EQ(static_cast<int>(spaceTypeTexts().valueOf(text)), 0) << text;
}

TEST(SpaceTypeTexts, aValueOutsideTheTableWritesAnEmptyText)
{
    EXPECT_EQ(spaceTypeTexts().textOf(static_cast<SpaceType>(4)), L"");
    EXPECT_EQ(spaceTypeTexts().textOf(static_cast<SpaceType>(-1)), L"");
    EXPECT_EQ(spaceTypeTexts().textOf(static_cast<SpaceType>(4)), L"") << "the second lookup of an unknown value";
}

TEST(ConfigScopeTexts, haveOneRow)
{
    EXPECT_EQ(configScopeTexts().textOf(static_cast<ConfigScope>(0)), L"Project");
    EXPECT_EQ(configScopeTexts().textOf(static_cast<ConfigScope>(1)), L"");
    EXPECT_EQ(configScopeTexts().textOf(static_cast<ConfigScope>(-1)), L"");
}

TEST(ConfigTypeTexts, giveTheLastPartOfAnAddress)
{
    const wchar_t* const texts[] = {L"SpaceConfig", L"GridConfig", L"SubItem", L"SpaceConfig", L"GridConfig", L"Coordinate"};
    for (int value = 0; value < 6; ++value)
        EXPECT_EQ(configTypeTexts().textOf(static_cast<ConfigType>(value)), texts[value]) << value;
    EXPECT_EQ(configTypeTexts().textOf(static_cast<ConfigType>(6)), L"");
    EXPECT_EQ(configTypeTexts().textOf(static_cast<ConfigType>(-1)), L"");
}

TEST(ConfigTypeTexts, readFourTextsBack)
{
    EXPECT_EQ(static_cast<int>(configTypeTexts().valueOf(L"SpaceConfig")), 0);
    EXPECT_EQ(static_cast<int>(configTypeTexts().valueOf(L"GridConfig")), 1);
    EXPECT_EQ(static_cast<int>(configTypeTexts().valueOf(L"SubItem")), 2);
    EXPECT_EQ(static_cast<int>(configTypeTexts().valueOf(L"Coordinate")), 5);
}

TEST(SchemaKeyTexts, areThoseOfTheConfigurationsOfItems)
{
    const wchar_t* const texts[] = {L"SubItem", L"ElevationSet", L"GridConfig", L"Coordinate"};
    for (int value = 2; value < 6; ++value)
        EXPECT_EQ(schemaKeyTexts().textOf(static_cast<ConfigType>(value)), texts[value - 2]) << value;
    for (const int value : {-1, 0, 1, 6})
        EXPECT_FALSE(schemaKeyTexts().knows(static_cast<ConfigType>(value))) << value;
}

TEST(ConfigTypes, haveTheNumbersThatHostsStore)
{
    EXPECT_EQ(static_cast<int>(ConfigType::SpaceConfig), 0);
    EXPECT_EQ(static_cast<int>(ConfigType::GridConfig), 1);
    EXPECT_EQ(static_cast<int>(ConfigType::SubItem), 2);
    EXPECT_EQ(static_cast<int>(ConfigType::ItemElevationSet), 3);
    EXPECT_EQ(static_cast<int>(ConfigType::ItemGridConfig), 4);
    EXPECT_EQ(static_cast<int>(ConfigType::Coordinate), 5);
    EXPECT_EQ(static_cast<int>(ConfigScope::Project), 0);
}

} // namespace
} // namespace orlo::test
