#include "support/VirtualSlot.h"

#include <OrloProjectManager/Resources/ProjectFont.h>

#include <gtest/gtest.h>

#include <limits>

namespace orlo::test {
namespace {

TEST(ProjectFontSlots, standInTheOrderOfTheInterface)
{
    // The destructor is the first operation and takes two places.
    expectSlotsBehindDestructor(&IProjectFont::GetId, &IProjectFont::GetName,
                                static_cast<std::wstring (IProjectFont::*)(ErrorCode&)>(&IProjectFont::GetFontDownloadUri),
                                static_cast<std::wstring (IProjectFont::*)()>(&IProjectFont::GetFontDownloadUri),
                                &IProjectFont::GetProjectId, &IProjectFont::GetFileType, &IProjectFont::GetFontFrom,
                                &IProjectFont::GetCreateTime, &IProjectFont::GetUploader, &IProjectFont::GetResourceBytes);
}

TEST(ProjectFont, handsOutTheFieldsOfItsRecord)
{
    const ProjectFont font({L"id", L"name", L"project", L"type", L"from", L"time", L"uploader", L"12"});
    EXPECT_EQ(font.GetId(), L"id");
    EXPECT_EQ(font.GetName(), L"name");
    EXPECT_EQ(font.GetProjectId(), L"project");
    EXPECT_EQ(font.GetFileType(), L"type");
    EXPECT_EQ(font.GetFontFrom(), L"from");
    EXPECT_EQ(font.GetCreateTime(), L"time");
    EXPECT_EQ(font.GetUploader(), L"uploader");
    EXPECT_EQ(font.GetResourceBytes(), 12);
}

std::int64_t bytesOf(const std::wstring& text)
{
    http::ORLOHTTPPayloadFontInfo record;
    record.resourceBytes = text;
    return ProjectFont(record).GetResourceBytes();
}

TEST(ProjectFont, countsItsBytesFromAText)
{
    EXPECT_EQ(bytesOf(L"0"), 0);
    EXPECT_EQ(bytesOf(L"5000000000"), 5000000000);
    EXPECT_EQ(bytesOf(L"-7"), -7);
    EXPECT_EQ(bytesOf(L"9223372036854775807"), std::numeric_limits<std::int64_t>::max());
}

TEST(ProjectFont, aTextWithoutANumberCountsNoBytes)
{
    for (const wchar_t* text : {L"", L"many", L"字节"})
        EXPECT_EQ(bytesOf(text), 0) << text;
}

} // namespace
} // namespace orlo::test
