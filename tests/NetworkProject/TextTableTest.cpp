#include "support/Threads.h"

#include <OrloProjectManager/NetworkProject/Call/TextTable.h>
#include <OrloProjectManager/NetworkProject/Projects/DatasetReaders.h>
#include <OrloProjectManager/NetworkProject/Projects/ProjectTexts.h>

#include <gtest/gtest.h>

#include <vector>

namespace orlo::test {
namespace {

enum class Fruit : int { None = 0, Apple = 1, Pear = 2, Quince = 9 };

const TextTable<Fruit> fruits({{Fruit::Apple, L"Apple"}, {Fruit::Pear, L"Pear"}}, Fruit::None);

TEST(TextTable, findsValuesByTextAndTextsByValue)
{
    EXPECT_EQ(fruits.valueOf(L"Apple"), Fruit::Apple);
    EXPECT_EQ(fruits.valueOf(L"Pear"), Fruit::Pear);
    EXPECT_EQ(fruits.textOf(Fruit::Apple), L"Apple");
    EXPECT_EQ(fruits.textOf(Fruit::Pear), L"Pear");
}

TEST(TextTable, answersAnUnknownTextWithTheUnknownValueAndAnUnknownValueWithNoText)
{
    EXPECT_EQ(fruits.valueOf(L"Quince"), Fruit::None);
    EXPECT_EQ(fruits.valueOf(L""), Fruit::None);
    EXPECT_EQ(fruits.textOf(Fruit::Quince), L"");
}

TEST(TextTable, comparesExactly)
{
    EXPECT_EQ(fruits.valueOf(L"apple"), Fruit::None);
    EXPECT_EQ(fruits.valueOf(L"Apple "), Fruit::None);
    EXPECT_EQ(fruits.valueOf(std::wstring(L"Apple\0", 6)), Fruit::None);
}

TEST(TextTable, ofTwoTextsForOneValueGivesTheFirst)
{
    const TextTable<Fruit> table({{Fruit::Apple, L"Apple"}, {Fruit::Apple, L"Malus"}}, Fruit::None);
    EXPECT_EQ(table.textOf(Fruit::Apple), L"Apple");
    EXPECT_EQ(table.valueOf(L"Malus"), Fruit::Apple);
}

TEST(TextTable, anUnknownKeyIsNotRemembered)
{
    EXPECT_EQ(fruits.textOf(Fruit::Quince), L"");
    EXPECT_FALSE(fruits.knows(Fruit::Quince));
    EXPECT_TRUE(fruits.knows(Fruit::Apple));
}

TEST(TextTable, isLookedUpFromManyThreadsAtOnce)
{
    inThreads(4, [](int thread) {
        for (int i = 0; i < 200; ++i) {
            EXPECT_EQ(fruits.valueOf(std::to_wstring(i % (10 + thread))), Fruit::None);
            EXPECT_EQ(fruits.valueOf(L"Apple"), Fruit::Apple);
        }
    });
}

TEST(ProjectTexts, readTheStatusOfAProject)
{
    EXPECT_EQ(static_cast<int>(projectStatusTexts().valueOf(L"Ongoing")), 0);
    EXPECT_EQ(static_cast<int>(projectStatusTexts().valueOf(L"Suspended")), 1);
    EXPECT_EQ(static_cast<int>(projectStatusTexts().valueOf(L"Completed")), 2);
    EXPECT_EQ(static_cast<int>(projectStatusTexts().valueOf(L"ongoing")), -1);
    EXPECT_EQ(projectStatusTexts().textOf(static_cast<ProjectStatus>(1)), L"Suspended");
    EXPECT_EQ(projectStatusTexts().textOf(static_cast<ProjectStatus>(3)), L"");
}

TEST(ProjectTexts, readTheGridType)
{
    EXPECT_EQ(static_cast<int>(projectGridTypeTexts().valueOf(L"TYPE_ONE")), 0);
    EXPECT_EQ(static_cast<int>(projectGridTypeTexts().valueOf(L"TYPE_TWO")), 1);
    EXPECT_EQ(static_cast<int>(projectGridTypeTexts().valueOf(L"TYPE_THREE")), -1);
}

TEST(ProjectTexts, sendAnUnknownScenarioAsTheDefault)
{
    EXPECT_EQ(textOf(static_cast<ProjectScenario>(0)), L"DEFAULT");
    EXPECT_EQ(textOf(static_cast<ProjectScenario>(1)), L"ARCHIVE");
    EXPECT_EQ(textOf(static_cast<ProjectScenario>(2)), L"OWNER");
    EXPECT_EQ(textOf(static_cast<ProjectScenario>(3)), L"DEFAULT");
    EXPECT_EQ(textOf(static_cast<ProjectScenario>(-1)), L"DEFAULT");
}

TEST(ProjectTexts, knowTheSpecialties)
{
    EXPECT_EQ(static_cast<int>(specialtyTexts().valueOf(L"Unknown")), 0);
    EXPECT_EQ(static_cast<int>(specialtyTexts().valueOf(L"ZOK")), 1);
    EXPECT_EQ(static_cast<int>(specialtyTexts().valueOf(L"ZIM")), 2);
    EXPECT_EQ(static_cast<int>(specialtyTexts().valueOf(L"ZUTA")), 3);
    EXPECT_EQ(static_cast<int>(specialtyTexts().valueOf(L"ZEB")), 4);
    EXPECT_EQ(static_cast<int>(specialtyTexts().valueOf(L"zok")), 0);
    EXPECT_EQ(textOf(static_cast<SpecialtyType>(4)), L"ZEB");
    EXPECT_EQ(textOf(static_cast<SpecialtyType>(0)), L"Unknown");
    EXPECT_EQ(textOf(static_cast<SpecialtyType>(5)), L"Unknown");
    EXPECT_EQ(textOf(static_cast<SpecialtyType>(-1)), L"Unknown");
}

TEST(DatasetKindTexts, sortTheTypesOfDatasetsIntoThreeKinds)
{
    for (const wchar_t* text : {L"workunit", L"standard", L"zok"})
        EXPECT_EQ(static_cast<int>(datasetKindOf(text)), 2) << text;
    for (const wchar_t* text : {L"noneStandard", L"cloudify", L"dwg"})
        EXPECT_EQ(static_cast<int>(datasetKindOf(text)), 1) << text;
    for (const wchar_t* text : {L"", L"Workunit", L"ZOK", L"nonestandard", L"DWG", L"rvt", L"图纸"})
        EXPECT_EQ(static_cast<int>(datasetKindOf(text)), 0) << text;
}

} // namespace
} // namespace orlo::test
