#include "support/Patterns.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace orlo;

TEST(Uuid, NewOnesAreLowerCaseVersionFour)
{
    for (int i = 0; i < 200; ++i)
        EXPECT_THAT(uuid::newUUIDV4(), orlo::test::FitsPattern("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
}

TEST(Uuid, NewOnesDiffer)
{
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i)
        seen.insert(uuid::newUUIDV4());
    EXPECT_EQ(seen.size(), 1000U);
}

TEST(Uuid, GeneratedGuidIsWideAndValid)
{
    const std::wstring guid = utils::generateGuid();
    EXPECT_EQ(guid.size(), 36U);
    EXPECT_TRUE(uuid::IsValidGUID(utils::toString(guid)));
    EXPECT_NE(guid, utils::generateGuid());
}

TEST(Uuid, AcceptsEitherCaseAndAnyVersion)
{
    EXPECT_TRUE(uuid::IsValidGUID("8d78b598-f02a-40ad-9984-17126a4d3b38"));
    EXPECT_TRUE(uuid::IsValidGUID("8D78B598-F02A-40AD-9984-17126A4D3B38"));
    EXPECT_TRUE(uuid::IsValidGUID("00000000-0000-0000-0000-000000000000"));
}

TEST(Uuid, RefusesEverythingElse)
{
    for (const char* text :
         {"", "8d78b598", "8d78b598f02a40ad998417126a4d3b38", "{8d78b598-f02a-40ad-9984-17126a4d3b38}",
          "8d78b598-f02a-40ad-9984-17126a4d3b3", "8d78b598-f02a-40ad-9984-17126a4d3b388", "8d78b598-f02a-40ad-9984-17126a4d3b3g",
          "8d78b598-f02a-40ad-9984_17126a4d3b38", " 8d78b598-f02a-40ad-9984-17126a4d3b3", "8d78b5-98f02a-40ad-9984-17126a4d3b38",
          "--------------------------------------", "8d78b598-f02a-40ad-9984-17126a4d\xE7\xBB\x93"})
        EXPECT_FALSE(uuid::IsValidGUID(text)) << text;
    EXPECT_FALSE(uuid::IsValidGUID(std::string("8d78b598-f02a-40ad-9984-17126a4d3b38\0", 37)));
}
