#include "support/TempFolder.h"

#include <OrloProjectManager/Transfer/CachePlace.h>

#include <gtest/gtest.h>

namespace orlo {
namespace {

class CachePlaceTest : public testing::Test
{
protected:
    /// What is asked for, relative to the cache; "refused" where it lies outside.
    std::wstring placeOf(const std::wstring& uri, const std::string& dsId = "d") const
    {
        DatasetUri parsed;
        CachePlace place;
        if (!parse(uri, parsed) || !findPlace(cache, dsId, parsed, place))
            return L"refused";
        return place.folder.substr(cache.size()) + L" " + place.file.substr(cache.size());
    }

    const test::TempFolder folder;
    const std::wstring cache = folder.wide();
};

TEST_F(CachePlaceTest, isBelowTheFolderOfTheDataset)
{
    EXPECT_EQ(placeOf(L"blocks/drawings/plan.dwg?f=1"), L"/d/blocks /d/blocks/drawings/plan.dwg");
    EXPECT_EQ(placeOf(L"图块/平面图.dwg?f="), L"/d/图块 /d/图块/平面图.dwg");
    EXPECT_EQ(placeOf(L"blocks/plan.dwg?f=1", ""), L"/blocks /blocks/plan.dwg");
}

TEST_F(CachePlaceTest, anAddressThatLeadsOutIsRefused)
{
    for (const wchar_t* uri :
         {L"../x?f=1", L"blocks/../../x?f=1", L"blocks\\..\\..\\x/..\\..\\y?f=1", L"/?f=1", L"blocks", L"blocks/plan.dwg", L"plan.dwg?f=1"})
        EXPECT_EQ(placeOf(uri), L"refused") << uri;
    EXPECT_EQ(placeOf(L"blocks/plan.dwg?f=1", "../d"), L"refused");
    EXPECT_EQ(placeOf(std::wstring(L"x/..\0/plan.dwg?f=1", 19)), L"refused");
}

// Found by the fuzz target.
TEST_F(CachePlaceTest, aFolderThatIsToldBehindTheMarkLeadsOutNeither)
{
    EXPECT_EQ(placeOf(L"plan.dwg?f=..\\..\\..\\x/y"), L"refused");
    EXPECT_EQ(placeOf(std::wstring(L"plan.dwg?f=\0/y", 14)), L"refused");
    EXPECT_EQ(placeOf(L"plan.dwg?f=a/b"), L"/d/plan.dwg?f=a /d/plan.dwg");
}

} // namespace
} // namespace orlo
