#include "JobText.h"
#include "support/LogCapture.h"

#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const wchar_t* fileJobWords = L"E@orlo::UploadFileJobEntity::fromJsonForCloudify ";
const JobFieldTexts wholeFileJob{{"createTime", "1700000000123"}, {"projectId", R"("p-1")"}, {"fileName", R"("图 一.dwg")"},
                                 {"fileId", R"("d-3")"},          {"folderId", R"("f-1")"},  {"localFilePath", R"("/home/库/图 一.dwg")"},
                                 {"dsId", R"("ds-4")"},           {"dsVersion", "7"}};

TEST(FileJobJson, holdsTheIdAndTheFieldsInOrder)
{
    const UploadFileJobEntity job("p-1", L"f-1", L"/home/库/图 \"一\".dwg", L"图 \"一\".dwg", "d-3", "ds-4", 7);
    EXPECT_EQ(job.ToJson(), R"({"jobId":")" + job.JobId() + R"(","cloudifyFile":{"createTime":)" + std::to_string(job.GetCreateTime()) +
                                R"(,"projectId":"p-1","fileName":"图 \"一\".dwg","fileId":"d-3","folderId":"f-1",)"
                                R"("localFilePath":"/home/库/图 \"一\".dwg","dsId":"ds-4","dsVersion":7}})");
}

TEST(FileJobJson, ofAnEmptyJobHasAllKeys)
{
    const UploadFileJobEntity job;
    EXPECT_EQ(job.ToJson(), R"({"jobId":")" + job.JobId() + R"(","cloudifyFile":{"createTime":)" + std::to_string(job.GetCreateTime()) +
                                R"(,"projectId":"","fileName":"","fileId":"","folderId":"","localFilePath":"","dsId":"","dsVersion":-1}})");
}

TEST(FileJobJson, isReadIntoTheGetters)
{
    UploadFileJobEntity job;
    ASSERT_TRUE(job.LoadFromJson(jobText(wholeFileJob)));
    EXPECT_EQ(job.JobId(), "j-1");
    EXPECT_EQ(job.GetCreateTime(), 1700000000123);
    EXPECT_EQ(job.GetProjectId(), "p-1");
    EXPECT_EQ(job.GetFolderId(), L"f-1");
    EXPECT_EQ(job.GetLocalFilePath(), L"/home/库/图 一.dwg");
    EXPECT_TRUE(job.isFile());
}

class FileJobJsonText : public testing::TestWithParam<NamedJobText>
{};

TEST_P(FileJobJsonText, comesBackByteForByte)
{
    expectComesBack<UploadFileJobEntity>(GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    FileJobJson, FileJobJsonText,
    testing::Values(
        NamedJobText{"whole",
                     R"({"jobId":"j-1","cloudifyFile":{"createTime":1700000000123,"projectId":"p-1","fileName":"图 一.dwg","fileId":"d-3",)"
                     R"("folderId":"f-1","localFilePath":"/home/库/图 一.dwg","dsId":"ds-4","dsVersion":7}})"},
        NamedJobText{
            "empty",
            R"({"jobId":"","cloudifyFile":{"createTime":0,"projectId":"","fileName":"","fileId":"","folderId":"","localFilePath":"",)"
            R"("dsId":"","dsVersion":-1}})"},
        NamedJobText{
            "largest_numbers_and_signs",
            R"({"jobId":"\"j\"","cloudifyFile":{"createTime":9223372036854775807,"projectId":"p\\1","fileName":"\"a\"\t\n\u0001.dwg",)"
            R"("fileId":"/","folderId":"𠀋","localFilePath":"C:\\库\\a.dwg","dsId":"a\u0000b","dsVersion":2147483647}})"},
        NamedJobText{
            "smallest_numbers_and_a_zero",
            R"({"jobId":"j","cloudifyFile":{"createTime":-9223372036854775808,"projectId":"p","fileName":"a\u0000b","fileId":"图",)"
            R"("folderId":"","localFilePath":"","dsId":"","dsVersion":-2147483648}})"}),
    nameOfText);

class UnreadableFileJob : public testing::TestWithParam<UnreadableField>
{};

TEST_P(UnreadableFileJob, isRefusedWhereTheKeyIsMissingOrTheValueIsOfAnotherType)
{
    expectRefusals<UploadFileJobEntity>(wholeFileJob, GetParam(), fileJobWords);
}

INSTANTIATE_TEST_SUITE_P(FileJobJson, UnreadableFileJob,
                         testing::Values(UnreadableField{"createTime", L"parse cloudify m_jobCreateTime failed.", noLongNumbers},
                                         UnreadableField{"projectId", L"parse cloudify m_projectId failed.", noTexts},
                                         UnreadableField{"fileName", L"parse cloudify m_fileName failed.", noTexts},
                                         UnreadableField{"fileId", L"parse cloudify m_fileId failed.", noTexts},
                                         UnreadableField{"folderId", L"parse cloudify m_folderId failed.", noTexts},
                                         UnreadableField{"localFilePath", L"parse cloudify m_localFilePath failed.", noTexts},
                                         UnreadableField{"dsId", L"parse cloudify m_localFilePath failed.", noTexts},
                                         UnreadableField{"dsVersion",
                                                         L"parse cloudify m_dsVersion failed.",
                                                         {"\"7\"", "null", "1.5", "2147483648", "-2147483649", "[]"}}),
                         nameOfField);

TEST(FileJobJson, readingStopsAtTheFirstKeyThatIsMissing)
{
    EXPECT_THAT(refusalOf<UploadFileJobEntity>(jobText(without(without(wholeFileJob, "fileName"), "dsVersion"))),
                ElementsAre(fileJobWords + std::wstring(L"parse cloudify m_fileName failed.")));
}

TEST(FileJobJson, withoutTheFieldsIsRefused)
{
    EXPECT_THAT(refusalOf<UploadFileJobEntity>(R"({"jobId":"j-1","createTime":1})"),
                ElementsAre(fileJobWords + std::wstring(L"parse cloudify failed.")));
}

TEST(FileJobJson, fieldsThatAreNoObjectHaveNoKeys)
{
    for (const char* fields : {"5", "null", "\"text\"", "[]"}) {
        EXPECT_THAT(refusalOf<UploadFileJobEntity>(std::string(R"({"jobId":"j-1","cloudifyFile":)") + fields + "}"),
                    ElementsAre(fileJobWords + std::wstring(L"parse cloudify m_jobCreateTime failed.")));
    }
}

TEST(FileJobJson, thatIsNoneOrHasNoIdIsRefusedWithoutWords)
{
    const LogCapture log;
    UploadFileJobEntity job;
    const std::string id = job.JobId();
    const std::string whole = jobText(wholeFileJob);
    for (const std::string& text :
         {std::string(), std::string("{\"jobId\":"), whole.substr(0, whole.size() - 1), std::string("[]"), std::string("5"),
          std::string(R"({"cloudifyFile":{}})"), std::string(R"({"jobId":7,"cloudifyFile":{}})")})
        EXPECT_FALSE(job.LoadFromJson(text)) << text;
    EXPECT_EQ(job.JobId(), id);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FileJobJson, mayHoldMoreKeysThanTheJobKnows)
{
    UploadFileJobEntity job;
    JobFieldTexts more = wholeFileJob;
    more.insert(more.begin(), {"mvd", "[1]"});
    EXPECT_TRUE(job.LoadFromJson(jobText(more)));
    EXPECT_EQ(job.ToJson(), jobText(wholeFileJob));
}

TEST(FileJobJson, saysNothingOfTheTemplate)
{
    UploadFileJobEntity file;
    UploadFileJobEntity sheet;
    ASSERT_TRUE(file.LoadFromJson(jobText(wholeFileJob)));
    ASSERT_TRUE(sheet.LoadFromJson(jobText(wholeFileJob)));
    sheet.setTemplate(L"ZOK");
    EXPECT_EQ(sheet.ToJson(), file.ToJson());
}

TEST(FileJobJson, loadingNeverTouchesWhetherTheJobIsThatOfATemplate)
{
    UploadFileJobEntity file;
    UploadFileJobEntity sheet;
    sheet.setTemplate(L"ZOK");
    ASSERT_TRUE(file.LoadFromJson(jobText(wholeFileJob)));
    ASSERT_TRUE(sheet.LoadFromJson(jobText(wholeFileJob)));
    EXPECT_TRUE(file.isFile());
    EXPECT_FALSE(sheet.isFile());
}

} // namespace
} // namespace orlo::test
