#include "JobText.h"
#include "support/LogCapture.h"

#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const wchar_t* moduleJobWords = L"E@orlo::UploadModuleJobEntity::fromJsonForCloudify ";
const JobFieldTexts wholeModuleJob{
    {"createTime", "1700000000123"},    {"moduleId", R"("m-1")"},        {"spaceType", R"("projects")"},
    {"spaceTypeParameter", R"("p-1")"}, {"resourceType", R"("module")"}, {"categoryId", R"("c-5")"},
    {"fileName", R"("门 一")"},         {"folderId", R"("")"},           {"localFilePath", R"("/home/库/门.vmd")"},
    {"specialty", R"("zok")"}};

TEST(ModuleJobJson, holdsTheIdAndTheFieldsInOrder)
{
    const UploadModuleJobEntity job(L"m-1", L"f-1", L"projects", "p-1", L"module", L"c-5", L"zok", L"/home/库/门.vmd", L"门 \"一\"");
    EXPECT_EQ(job.ToJson(), R"({"jobId":")" + job.JobId() + R"(","cloudifyFile":{"createTime":)" + std::to_string(job.GetCreateTime()) +
                                R"(,"moduleId":"m-1","spaceType":"projects","spaceTypeParameter":"p-1","resourceType":"module",)"
                                R"("categoryId":"c-5","fileName":"门 \"一\"","folderId":"f-1","localFilePath":"/home/库/门.vmd",)"
                                R"("specialty":"zok"}})");
}

TEST(ModuleJobJson, ofAnEmptyJobHasAllKeys)
{
    const UploadModuleJobEntity job;
    EXPECT_EQ(job.ToJson(), R"({"jobId":")" + job.JobId() + R"(","cloudifyFile":{"createTime":)" + std::to_string(job.GetCreateTime()) +
                                R"(,"moduleId":"","spaceType":"","spaceTypeParameter":"","resourceType":"","categoryId":"","fileName":"",)"
                                R"("folderId":"","localFilePath":"","specialty":""}})");
}

TEST(ModuleJobJson, isReadIntoTheGetters)
{
    UploadModuleJobEntity job;
    ASSERT_TRUE(job.LoadFromJson(jobText(with(wholeModuleJob, "folderId", R"("夹")"))));
    EXPECT_EQ(job.JobId(), "j-1");
    EXPECT_EQ(job.GetCreateTime(), 1700000000123);
    EXPECT_EQ(job.GetProjectId(), "p-1");
    EXPECT_EQ(job.GetFolderId(), L"夹");
    EXPECT_EQ(job.GetLocalFilePath(), L"/home/库/门.vmd");
}

class ModuleJobJsonText : public testing::TestWithParam<NamedJobText>
{};

TEST_P(ModuleJobJsonText, comesBackByteForByte)
{
    expectComesBack<UploadModuleJobEntity>(GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    ModuleJobJson, ModuleJobJsonText,
    testing::Values(
        NamedJobText{
            "whole",
            R"({"jobId":"j-1","cloudifyFile":{"createTime":1700000000123,"moduleId":"m-1","spaceType":"projects","spaceTypeParameter":"p-1",)"
            R"("resourceType":"module","categoryId":"c-5","fileName":"门 一","folderId":"","localFilePath":"/home/库/门.vmd","specialty":"zok"}})"},
        NamedJobText{"empty",
                     R"({"jobId":"","cloudifyFile":{"createTime":0,"moduleId":"","spaceType":"","spaceTypeParameter":"","resourceType":"",)"
                     R"("categoryId":"","fileName":"","folderId":"","localFilePath":"","specialty":""}})"},
        NamedJobText{
            "largest_numbers_and_signs",
            R"({"jobId":"\"j\"","cloudifyFile":{"createTime":9223372036854775807,"moduleId":"\"m\"","spaceType":"𠀋","spaceTypeParameter":"图",)"
            R"("resourceType":"a\u0000b","categoryId":"\\","fileName":"\t","folderId":"f","localFilePath":"C:\\库\\a.vmd","specialty":"/"}})"},
        NamedJobText{
            "smallest_numbers_and_a_zero",
            R"({"jobId":"j","cloudifyFile":{"createTime":-9223372036854775808,"moduleId":"m","spaceType":"s","spaceTypeParameter":"a\u0000b",)"
            R"("resourceType":"r","categoryId":"c","fileName":"n","folderId":"","localFilePath":"","specialty":"\n"}})"}),
    nameOfText);

class UnreadableModuleJob : public testing::TestWithParam<UnreadableField>
{};

TEST_P(UnreadableModuleJob, isRefusedWhereTheKeyIsMissingOrTheValueIsOfAnotherType)
{
    expectRefusals<UploadModuleJobEntity>(wholeModuleJob, GetParam(), moduleJobWords);
}

INSTANTIATE_TEST_SUITE_P(ModuleJobJson, UnreadableModuleJob,
                         testing::Values(UnreadableField{"createTime", L"parse cloudify m_jobCreateTime failed.", noLongNumbers},
                                         UnreadableField{"moduleId", L"parse cloudify m_moduleId failed.", noTexts},
                                         UnreadableField{"spaceType", L"parse cloudify m_spaceType failed.", noTexts},
                                         UnreadableField{"spaceTypeParameter", L"parse cloudify m_spaceTypeParameter failed.", noTexts},
                                         UnreadableField{"resourceType", L"parse cloudify m_resourceType failed.", noTexts},
                                         UnreadableField{"categoryId", L"parse cloudify m_categoryId failed.", noTexts},
                                         UnreadableField{"fileName", L"parse cloudify m_fileName failed.", noTexts},
                                         UnreadableField{"folderId", L"parse cloudify m_folderId failed.", noTexts},
                                         UnreadableField{"localFilePath", L"parse cloudify m_localFilePath failed.", noTexts},
                                         UnreadableField{"specialty", L"parse cloudify m_specialty failed.", noTexts}),
                         nameOfField);

TEST(ModuleJobJson, withoutTheFieldsIsRefused)
{
    EXPECT_THAT(refusalOf<UploadModuleJobEntity>(R"({"jobId":"j-1"})"),
                ElementsAre(moduleJobWords + std::wstring(L"parse cloudify failed.")));
}

TEST(ModuleJobJson, thatIsNoneOrHasNoIdIsRefusedWithoutWords)
{
    const LogCapture log;
    UploadModuleJobEntity job;
    const std::string whole = jobText(wholeModuleJob);
    for (const std::string& text :
         {std::string(), whole.substr(0, whole.size() - 1), std::string(R"({"cloudifyFile":{}})"), std::string(R"({"jobId":[]})")})
        EXPECT_FALSE(job.LoadFromJson(text)) << text;
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ModuleJobJson, ofAFileJobIsNotThatOfAModuleJob)
{
    EXPECT_THAT(
        refusalOf<UploadModuleJobEntity>(R"({"jobId":"j-1","cloudifyFile":{"createTime":1,"projectId":"p","fileName":"","fileId":"",)"
                                         R"("folderId":"","localFilePath":"","dsId":"","dsVersion":-1}})"),
        ElementsAre(moduleJobWords + std::wstring(L"parse cloudify m_moduleId failed.")));
}

} // namespace
} // namespace orlo::test
