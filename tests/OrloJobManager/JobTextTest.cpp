#include "JobsTest.h"

#include <BaseCommon/Text.h>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// Rows whose JSON somebody else wrote, or a broken disk.
class JobText : public JobsTest
{
protected:
    JobText()
    {
        saved("good");
        IJobManager::Stop();
    }

    void addRow(const std::string& id, const std::string& json) const
    {
        std::string hex;
        for (const char byte : json) {
            constexpr const char* digits = "0123456789ABCDEF";
            hex += {digits[static_cast<unsigned char>(byte) >> 4], digits[static_cast<unsigned char>(byte) & 15]};
        }
        sqlRun(database(), "INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES ('" + id + "', 'test job', CAST(X'" + hex +
                               "' AS TEXT), 1000, 2)");
    }

    static std::string jobText(const std::string& id, const std::string& createTime, const std::string& more)
    {
        return R"({"jobId":")" + id + R"(","createTime":)" + createTime + R"(,"name":")" + id + "\"" + more + "}";
    }

    /// Starts over the rows that are there and runs what can be read.
    void expectKept(const Names& ids)
    {
        ASSERT_TRUE(IJobManager::Start({}));
        ASSERT_TRUE(becomesIdle());
        EXPECT_EQ(sqlTexts(database(), "SELECT id FROM job ORDER BY rank"), ids);
        for (const std::string& id : ids)
            EXPECT_EQ(log.count(L"E [ORLOSDK]the row of job " + utils::toWstring(id) + L" is left alone: it can't be read"), 1u) << id;
        EXPECT_EQ(log.lines().size(), ids.size());
    }
};

TEST_F(JobText, numbersThatAreHardToReadHarmNoJob)
{
    addRow("tiny", jobText("tiny", "1", R"(,"more":[1.11111111111111111111E-335,1.11111111111111111e-2147483639])"));
    addRow("nothing", jobText("nothing", "2", R"(,"more":[0e67,-0e-67,5e-324])"));
    addRow("long", jobText("long", "3", ",\"more\":[0." + std::string(100000, '7') + "]"));
    expectKept({});
    EXPECT_THAT(TestJob::ran(), UnorderedElementsAre("good", "tiny", "nothing", "long"));
}

TEST_F(JobText, aRowWithANumberThatNothingCanHoldIsKept)
{
    addRow("beyond", jobText("beyond", "1", R"(,"more":[1e999])"));
    addRow("time", jobText("time", "1.11111111111111111111E-335", ""));
    addRow("late", jobText("late", "99999999999999999999", ""));
    expectKept({"beyond", "time", "late"});
    EXPECT_THAT(TestJob::ran(), ElementsAre("good"));
}

TEST_F(JobText, aRowThatEndsWithinACharacterIsKept)
{
    addRow("tail", jobText("tail", "1", "") + "\xF0");
    addRow("text", R"({"jobId":"text","createTime":1,"name":"a wall)" + std::string("\xE6\x96"));
    addRow("key", R"({"jobId":"key","createTime":1,"name)" + std::string("\xF0\x9F\x98"));
    addRow("nul", jobText("nul", "1", "") + std::string("\0{}", 3));
    expectKept({"tail", "text", "key", "nul"});
    EXPECT_THAT(TestJob::ran(), ElementsAre("good"));
}

TEST_F(JobText, aKeptRowIsThereForTheNextStartToo)
{
    addRow("tail", jobText("tail", "1", "") + "\xF0");
    for (int i = 0; i < 3; ++i) {
        log.clear();
        expectKept({"tail"});
        EXPECT_TRUE(IJobManager::Stop());
    }
    EXPECT_EQ(sqlTexts(database(), "SELECT hex(substr(json, -1)) FROM job"), Names({"F0"}));
}

} // namespace
} // namespace orlo::test
