#include "DamagedJobs.h"

#include <SQLiteCpp/Database.h>

#include <random>
#include <set>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// What is read of a damaged database.
class DamagedDatabase : public DamagedJobs
{
protected:
    /// What the lines say.
    std::size_t toldAs(const std::wstring& words) const
    {
        for (const std::wstring& line : log.lines()) {
            const std::size_t at = line.find(words);
            if (at != std::wstring::npos)
                return std::stoul(line.substr(at + words.size()));
        }
        ADD_FAILURE() << "nothing is told";
        return 0;
    }
    std::size_t read() const { return toldAs(L"jobs read from the damaged database: "); }
    std::size_t lost() const { return toldAs(L"known to be lost: "); }

    /// The database and its log as they are while another process works, with the jobs 201 to 230 in the log only.
    void fillWithLog() const
    {
        fill();
        SQLite::Database other(database().u8string(), SQLite::OPEN_READWRITE);
        other.exec("PRAGMA journal_mode = WAL");
        for (int job = 201; job <= 230; ++job)
            other.exec(insertion(job, job));
        fs::copy_file(database(), folder.path("kept"));
        fs::copy_file(logFile(), folder.path("kept-wal"));
    }
    void putBack() const
    {
        const auto over = fs::copy_options::overwrite_existing;
        fs::remove(jobsFolder() / "jobs.db-shm");
        fs::copy_file(folder.path("kept"), database(), over);
        fs::copy_file(folder.path("kept-wal"), logFile(), over);
    }
};

TEST_F(DamagedDatabase, thatWasCutKeepsTheRowsInFrontOfTheCut)
{
    fill();
    const Names all = wholeRows();
    const std::string bytes = readFile(database());
    const std::size_t pages = bytes.size() / pageSize;
    ASSERT_GT(pages, 30u);
    for (const std::size_t cut : {std::size_t(1), std::size_t(2), std::size_t(5), std::size_t(20), pages - 1}) {
        SCOPED_TRACE(cut);
        forgetDamage();
        writeFile(database(), bytes.substr(0, bytes.size() - cut * pageSize));
        EXPECT_TRUE(opens());
        const Names expected = rowsOutside(all, bytes, bytes.size() - cut * pageSize, bytes.size());
        EXPECT_EQ(wholeRows(), expected);
        EXPECT_EQ(read(), expected.size());
        EXPECT_EQ(readFile(aside()), bytes.substr(0, bytes.size() - cut * pageSize));
    }
    EXPECT_THAT(wholeRows(), IsEmpty());
}

TEST_F(DamagedDatabase, thatLostItsLastRowsSaysHowMany)
{
    fill();
    const std::string bytes = readFile(database());
    // The last page holds jobs: it is the one that was added last.
    const Names expected = rowsOutside(wholeRows(), bytes, bytes.size() - pageSize, bytes.size());
    ASSERT_LT(expected.size(), 200u);
    writeFile(database(), bytes.substr(0, bytes.size() - pageSize));
    EXPECT_TRUE(opens());
    expectLines(L"database disk image is malformed", expected.size(), L"; known to be lost: " + std::to_wstring(200 - expected.size()));
}

TEST_F(DamagedDatabase, thatWasCutInsideAPageKeepsTheRowsInFrontOfTheCut)
{
    fill();
    const Names all = wholeRows();
    const std::string bytes = readFile(database());
    for (const std::size_t cut : {std::size_t(1), std::size_t(700), std::size_t(3000)}) {
        SCOPED_TRACE(cut);
        forgetDamage();
        writeFile(database(), bytes.substr(0, bytes.size() - pageSize - cut));
        EXPECT_TRUE(opens());
        // A row is in front of the cut with all that follows its JSON in it: two numbers and the account.
        const std::size_t end = bytes.size() - pageSize - cut;
        EXPECT_EQ(wholeRows(), rowsOutside(all, bytes, end > 600 ? end - 540 : 0, bytes.size()));
    }
}

TEST_F(DamagedDatabase, losesOnlyTheRowsOfAPageThatWasErased)
{
    fill();
    const Names all = wholeRows();
    const std::string bytes = readFile(database());
    std::size_t known = 0;
    for (std::size_t page = 1; page < bytes.size() / pageSize; ++page) {
        SCOPED_TRACE(page);
        forgetDamage();
        std::string damaged = bytes;
        damaged.replace(page * pageSize, pageSize, std::string(pageSize, '\0'));
        writeFile(database(), damaged);
        EXPECT_TRUE(opens());
        const Names expected = rowsOutside(all, bytes, page * pageSize, (page + 1) * pageSize);
        EXPECT_EQ(wholeRows(), expected);
        if (fs::exists(aside())) {
            EXPECT_EQ(read(), expected.size());
            EXPECT_EQ(lost(), 200 - expected.size());
            known += lost();
        }
    }
    EXPECT_EQ(known, 200u) << "each row stands in one page";
}

TEST_F(DamagedDatabase, withoutAHeadKeepsAllRows)
{
    fill();
    const Names all = wholeRows();
    const std::string bytes = readFile(database());
    for (const std::size_t size : {std::size_t(16), std::size_t(100), pageSize}) {
        SCOPED_TRACE(size);
        forgetDamage();
        std::string damaged = bytes;
        damaged.replace(0, size, std::string(size, '\xee'));
        writeFile(database(), damaged);
        EXPECT_TRUE(opens());
        EXPECT_EQ(wholeRows(), all);
        expectLines(L"file is not a database", 200, L"; known to be lost: 0");
    }
}

TEST_F(DamagedDatabase, ofTheFirstSchemaHasNoAccounts)
{
    sqlRun(database(), firstSchema);
    sqlRun(database(), R"sql(INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES
('id2', 'test job', '{"jobId":"id2","createTime":2,"name":"second"}', 2, 2),
('id1', 'test job', '{"jobId":"id1","createTime":1,"name":"first"}', 1, 0))sql");
    std::string bytes = readFile(database());
    bytes.replace(0, 16, std::string(16, 'x'));
    writeFile(database(), bytes);
    EXPECT_TRUE(opens());
    EXPECT_THAT(wholeRows(), ElementsAre("id2|test job|{\"jobId\":\"id2\",\"createTime\":2,\"name\":\"second\"}|2|2|",
                                         "id1|test job|{\"jobId\":\"id1\",\"createTime\":1,\"name\":\"first\"}|1|0|"));
}

TEST_F(DamagedDatabase, aRowThatWasAlteredIsNotTaken)
{
    fill();
    const Names all = wholeRows();
    std::string bytes = readFile(database());
    const auto damageBehind = [&bytes](const std::string& words, const std::string& damage) {
        bytes.replace(bytes.find(words) + words.size(), damage.size(), damage);
    };
    damageBehind("\"name\":\"job 20 xxx", std::string(3, '\0'));
    damageBehind("\"name\":\"job 40 xxx", "\xee\xee");
    damageBehind("\"name\":\"job 60 xxx", "\"x\"");
    bytes.replace(0, 16, std::string(16, 'x'));
    writeFile(database(), bytes);
    EXPECT_TRUE(opens());
    Names expected = all;
    for (const std::size_t row : {59, 39, 19})
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(row));
    EXPECT_EQ(wholeRows(), expected);
    expectLines(L"file is not a database", 197, L"; known to be lost: 3");
}

TEST_F(DamagedDatabase, aLongRowIsReadWithItsFurtherPagesOrNotAtAll)
{
    fill();
    const std::string longRow = R"sql(INSERT INTO job (id, typeKey, json, createTime, jobType)
SELECT 'long', 'test job', '{"jobId":"long","createTime":1,"name":"' || replace(hex(zeroblob(10000)), '00', 'LONG') || '"}', 1, 2)sql";
    sqlRun(database(), longRow);
    const Names all = wholeRows();
    ASSERT_THAT(all.back(), SizeIs(testing::Gt(40000u)));
    const std::string bytes = readFile(database());
    std::string damaged = bytes;
    damaged.replace(0, pageSize, std::string(pageSize, 'x'));
    writeFile(database(), damaged);
    EXPECT_TRUE(opens());
    EXPECT_EQ(wholeRows(), all);
    const std::size_t first = bytes.find("LONGLONG") / pageSize;
    const std::size_t last = bytes.rfind("LONGLONG") / pageSize;
    for (const std::size_t page : {first + 2, last}) {
        SCOPED_TRACE(page);
        forgetDamage();
        std::string more = damaged;
        more.replace(page * pageSize, pageSize, std::string(pageSize, '\0'));
        writeFile(database(), more);
        EXPECT_TRUE(opens());
        EXPECT_EQ(wholeRows(), Names(all.begin(), all.end() - 1));
        expectLines(L"file is not a database", 200, L"; known to be lost: 1");
    }
}

TEST_F(DamagedDatabase, givesNeitherJobsThatEndedNorRowsAsTheyWereBefore)
{
    std::vector<std::shared_ptr<TestJob>> jobs;
    for (int n = 0; n < 60; ++n)
        jobs.push_back(saved("job " + std::to_string(n) + std::string(400, 'x')));
    for (std::size_t n = 0; n < jobs.size(); ++n) {
        jobs[n]->name = "job " + std::to_string(n) + std::string(600, 'y');
        EXPECT_TRUE(n % 10 == 0 ? jobs[n]->save() : jobs[n]->remove());
    }
    const Names all = wholeRows();
    ASSERT_THAT(all, SizeIs(6));
    jobs.clear(); // they know where their rows are
    closeDatabase();
    std::string bytes = readFile(database());
    bytes.replace(0, 16, std::string(16, '\0'));
    writeFile(database(), bytes);
    EXPECT_TRUE(opens());
    EXPECT_EQ(wholeRows(), all);
    expectLines(L"file is not a database", 6, L"; known to be lost: 0");
}

TEST_F(DamagedDatabase, isReadWithItsLog)
{
    fillWithLog();
    Names all = wholeRows();
    ASSERT_THAT(all, SizeIs(230));
    const std::string bytes = readFile(folder.path("kept"));
    const Names inDatabase(all.begin(), all.begin() + 200);
    const Names inLog(all.begin() + 200, all.end());
    // The fifth page of the database holds early jobs, which the log doesn't have once more.
    const std::size_t page = bytes.find("\"name\":\"job 20 ") / pageSize;
    Names expected = rowsOutside(inDatabase, bytes, page * pageSize, (page + 1) * pageSize);
    const std::size_t lostRows = 200 - expected.size();
    expected.insert(expected.end(), inLog.begin(), inLog.end());
    ASSERT_GT(lostRows, 0u);
    putBack();
    std::string damaged = bytes;
    damaged.replace(page * pageSize, pageSize, std::string(pageSize, '\xee'));
    writeFile(database(), damaged);
    EXPECT_TRUE(opens());
    EXPECT_EQ(wholeRows(), expected);
    EXPECT_EQ(read(), expected.size());
    EXPECT_EQ(lost(), lostRows);
    EXPECT_EQ(readFile(aside()), damaged);
    EXPECT_EQ(readFile(aside().u8string() + "-wal"), readFile(folder.path("kept-wal")));
}

TEST_F(DamagedDatabase, isReadWithTheSoundPartOfItsLog)
{
    fillWithLog();
    const Names all = wholeRows();
    putBack();
    fs::resize_file(logFile(), fs::file_size(logFile()) / 2);
    // What the sound database reads of the same log, and no line is to be told of.
    const Names sound = wholeRows();
    ASSERT_GT(sound.size(), 200u);
    ASSERT_LT(sound.size(), 230u);
    putBack();
    fs::resize_file(logFile(), fs::file_size(logFile()) / 2);
    std::string bytes = readFile(database());
    bytes.replace(0, 100, std::string(100, '\0'));
    writeFile(database(), bytes);
    EXPECT_TRUE(opens());
    EXPECT_EQ(wholeRows(), sound);
}

TEST_F(DamagedDatabase, thatIsEmptyIsReadFromItsLog)
{
    sqlRun(database(), secondSchema);
    {
        SQLite::Database other(database().u8string(), SQLite::OPEN_READWRITE);
        other.exec("PRAGMA journal_mode = WAL");
        other.exec(insertion(1, 200));
        fs::copy_file(logFile(), folder.path("kept-wal"));
    }
    const Names all = wholeRows();
    for (const bool isThere : {true, false}) {
        SCOPED_TRACE(isThere);
        forgetDamage();
        if (isThere)
            writeFile(database(), "");
        fs::copy_file(folder.path("kept-wal"), logFile());
        EXPECT_TRUE(opens());
        EXPECT_EQ(wholeRows(), all);
        expectLines(L"it is empty", 200, L"; known to be lost: 0");
        EXPECT_EQ(readFile(aside().u8string() + "-wal"), readFile(folder.path("kept-wal")));
    }
}

TEST_F(DamagedDatabase, givesNothingButWhatWasInIt)
{
    fill();
    const Names all = wholeRows();
    const std::set<std::string> known(all.begin(), all.end());
    const std::string bytes = readFile(database());
    std::mt19937 random(4711);
    for (int round = 0; round < 25; ++round) {
        SCOPED_TRACE(round);
        forgetDamage();
        std::string damaged = bytes;
        for (int i = 0; i < 20; ++i) {
            const std::size_t length = 1 + random() % 300;
            damaged.replace(random() % (damaged.size() - length), length, std::string(length, static_cast<char>(128 + random() % 128)));
        }
        damaged.replace(0, 16, std::string(16, '\0'));
        writeFile(database(), damaged);
        EXPECT_TRUE(opens());
        const Names rows = wholeRows();
        EXPECT_GT(rows.size(), 20u);
        EXPECT_EQ(std::set<std::string>(rows.begin(), rows.end()).size(), rows.size()) << "none twice";
        for (const std::string& row : rows)
            EXPECT_THAT(known, Contains(row));
    }
}

} // namespace
} // namespace orlo::test
