#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <OrloLogging/ILogManager.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/NotOnTerminal.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

// The default logger below a folder of the test's, with what it writes to stderr.
class DefaultLoggerTest : public testing::Test
{
protected:
    DefaultLoggerTest() { testing::internal::CaptureStderr(); }
    ~DefaultLoggerTest() override
    {
        if (m_capturing)
            stderrText();
    }

    std::string stderrText()
    {
        m_capturing = false;
        return testing::internal::GetCapturedStderr();
    }
    static std::filesystem::path logFile() { return utils::makePath(utils::getLogPath()) / "orlo.log"; }
    static std::vector<std::string> logLines() { return linesOf(readFile(logFile())); }

    TempFolder m_folder;
    LocalRoot m_root{m_folder};
    ILogManager* m_log = ILogManager::Get();

private:
    bool m_capturing = true;
};

TEST_F(DefaultLoggerTest, opensItsFileAtTheFirstLine)
{
    EXPECT_FALSE(std::filesystem::exists(logFile()));
    m_log->LogInfo(L"first");
    EXPECT_TRUE(std::filesystem::exists(logFile()));
}

TEST_F(DefaultLoggerTest, writesOneLineForEachMessageAtOnce)
{
    m_log->LogInfo(L"[ORLOSDK]进度");
    m_log->LogWarning(L"soft");
    m_log->LogError(L"hard");
    m_log->LogErrorAt("source/ProjectManager.cpp", 12, "orlo::ProjectManager::Load", L"why", L"[ORLOSDK]");
    const auto lines = logLines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_THAT(lines[0], testing::EndsWith(" info [ORLOSDK]进度"));
    EXPECT_THAT(lines[1], testing::EndsWith(" warning soft"));
    EXPECT_THAT(lines[2], testing::EndsWith(" error hard"));
    EXPECT_THAT(lines[3], testing::EndsWith(" error [ORLOSDK]orlo::ProjectManager::Load (source/ProjectManager.cpp:12) - why"));
}

TEST_F(DefaultLoggerTest, writesToStderrFromWarningUp)
{
    m_log->LogInfo(L"quiet");
    m_log->LogWarning(L"soft");
    m_log->LogErrorAt("f", 1, "g", L"hard", L"");
    const auto lines = linesOf(stderrText());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], testing::EndsWith(" warning soft"));
    EXPECT_THAT(lines[1], testing::EndsWith(" error g (f:1) - hard"));
}

TEST_F(DefaultLoggerTest, keepsLinesOffTheTerminalForAsLongAsItIsAskedTo)
{
    {
        const log::NotOnTerminal quiet;
        log::error(L"of no concern");
        log::warning(L"of no concern either");
        const log::NotOnTerminal again;
    }
    log::error(L"hard");
    {
        const log::NotOnTerminal loud(false);
        log::error(L"harder");
    }
    EXPECT_EQ(logLines().size(), 4u) << "the file has them all";
    EXPECT_THAT(logLines().at(0), testing::EndsWith(" error [ORLOSDK]of no concern"));
    EXPECT_THAT(linesOf(stderrText()), testing::ElementsAre(testing::EndsWith("]hard"), testing::EndsWith("]harder")));
}

TEST_F(DefaultLoggerTest, keepsNoLineOfAnotherThreadOffTheTerminal)
{
    const log::NotOnTerminal quiet;
    std::thread([] { log::error(L"of another call"); }).join();
    EXPECT_THAT(linesOf(stderrText()), testing::ElementsAre(testing::EndsWith("]of another call")));
}

TEST_F(DefaultLoggerTest, keepsNothingBackWhereStderrIsTheWholeLog)
{
    writeFile(m_folder.path("file"), "no folder");
    utils::setLocalRoot(m_folder.wide("file"));
    const log::NotOnTerminal quiet;
    log::error(L"told all the same");
    EXPECT_THAT(stderrText(), HasSubstr("told all the same"));
}

TEST_F(DefaultLoggerTest, tellsAnInstalledLoggerEveryLine)
{
    const LogCapture captured;
    const log::NotOnTerminal quiet;
    log::error(L"by contract");
    EXPECT_TRUE(captured.has(L"E [ORLOSDK]by contract"));
}

TEST_F(DefaultLoggerTest, aMessageCanNotForgeALine)
{
    m_log->LogInfo(L"body\n2030-01-01 error forged\r\nagain\x1B[2J\x2028\x202E\x85\ttab" + std::wstring(1, L'\0') + L"end");
    const auto lines = logLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0], testing::EndsWith(R"(body\n2030-01-01 error forged\r\nagain\u001b[2J\u2028\u202e\u0085\ttab\u0000end)"));
}

TEST_F(DefaultLoggerTest, aFunctionNameOrATagCanNotForgeALine)
{
    m_log->LogErrorAt("f\n", 1, "g\n", L"m", L"[T\n]");
    EXPECT_EQ(logLines().size(), 1u);
}

TEST_F(DefaultLoggerTest, doesNotReadAMessageAsAFormat)
{
    m_log->LogInfo(L"{} {0} %s %n {:d}");
    EXPECT_THAT(logLines().at(0), testing::EndsWith(" info {} {0} %s %n {:d}"));
}

TEST_F(DefaultLoggerTest, cutsVeryLongMessagesAndSaysHowMuch)
{
    m_log->LogInfo(std::wstring(16384, L'x'));
    m_log->LogInfo(std::wstring(16384, L'y') + L"zzz");
    const auto lines = logLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], testing::EndsWith(" info " + std::string(16384, 'x')));
    EXPECT_THAT(lines[1], testing::EndsWith(" info " + std::string(16384, 'y') + "... (3 more characters)"));
}

TEST_F(DefaultLoggerTest, writesNoSecret)
{
    m_log->LogError(LR"({"accessToken":"abc-secret"} https://s.example/f?sig=abc-secret)");
    EXPECT_THAT(readFile(logFile()), HasSubstr(R"({"accessToken":"***"} https://s.example/f?***)"));
    EXPECT_THAT(stderrText(), Not(HasSubstr("abc-secret")));
}

TEST_F(DefaultLoggerTest, keepsThreeFilesOfFiveMebibytes)
{
    const std::wstring message(16000, L'x');
    for (int i = 0; i < 1200; ++i)
        m_log->LogInfo(message);
    std::size_t files = 0;
    for (const auto& file : std::filesystem::directory_iterator(logFile().parent_path())) {
        ++files;
        EXPECT_LE(file.file_size(), 5u * 1024 * 1024) << file.path();
    }
    EXPECT_EQ(files, 3u);
}

// What others may do with each file of the log folder, by its name.
std::map<std::string, std::filesystem::perms> rightsOfOthers(const std::filesystem::path& folder)
{
    std::map<std::string, std::filesystem::perms> rights;
    for (const auto& file : std::filesystem::directory_iterator(folder))
        rights[file.path().filename()] =
            file.status().permissions() & (std::filesystem::perms::group_all | std::filesystem::perms::others_all);
    return rights;
}

constexpr auto nothing = std::filesystem::perms::none;

TEST_F(DefaultLoggerTest, itsFileIsItsOwnersAlone)
{
    m_log->LogInfo(L"first");
    EXPECT_EQ(rightsOfOthers(logFile().parent_path()), (std::map<std::string, std::filesystem::perms>{{"orlo.log", nothing}}));
}

TEST_F(DefaultLoggerTest, rotatedFilesAreTheirOwnersAloneToo)
{
    const std::wstring message(16000, L'x');
    for (int i = 0; i < 1200; ++i)
        m_log->LogInfo(message);
    EXPECT_EQ(rightsOfOthers(logFile().parent_path()),
              (std::map<std::string, std::filesystem::perms>{{"orlo.1.log", nothing}, {"orlo.2.log", nothing}, {"orlo.log", nothing}}));
}

TEST_F(DefaultLoggerTest, takesTheRightsOfOthersFromTheFilesThatItFinds)
{
    for (const char* name : {"orlo.log", "orlo.1.log", "orlo.2.log"}) {
        writeFile(logFile().parent_path() / name, "earlier\n");
        std::filesystem::permissions(logFile().parent_path() / name, std::filesystem::perms(0644));
    }
    m_log->LogInfo(L"later");
    EXPECT_EQ(rightsOfOthers(logFile().parent_path()),
              (std::map<std::string, std::filesystem::perms>{{"orlo.1.log", nothing}, {"orlo.2.log", nothing}, {"orlo.log", nothing}}));
    EXPECT_EQ(logLines().size(), 2u);
    EXPECT_EQ(readFile(logFile().parent_path() / "orlo.2.log"), "earlier\n");
}

TEST_F(DefaultLoggerTest, followsTheLocalRoot)
{
    m_log->LogInfo(L"here");
    const auto first = logFile();
    const TempFolder other;
    const LocalRoot root(other);
    m_log->LogInfo(L"there");
    EXPECT_NE(logFile(), first);
    EXPECT_THAT(readFile(logFile()), HasSubstr("there"));
    EXPECT_THAT(readFile(first), Not(HasSubstr("there")));
}

TEST_F(DefaultLoggerTest, aFolderThatCanNotBeMadeLeavesStderr)
{
    writeFile(m_folder.path("file"), "no folder");
    utils::setLocalRoot(m_folder.wide("file"));
    m_log->LogWarning(L"first");
    m_log->LogWarning(L"second");
    const auto lines = linesOf(stderrText());
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(lines[0], HasSubstr("no log file in "));
    EXPECT_THAT(lines[1], testing::EndsWith(" warning first"));
    EXPECT_THAT(lines[2], testing::EndsWith(" warning second"));
    EXPECT_EQ(readFile(m_folder.path("file")), "no folder");
}

TEST_F(DefaultLoggerTest, aFullDiskLeavesStderr)
{
    std::filesystem::create_symlink("/dev/full", logFile());
    for (int i = 0; i < 100; ++i)
        m_log->LogError(L"line");
    EXPECT_EQ(linesOf(stderrText()).size(), 100u);
}

TEST_F(DefaultLoggerTest, keepsLinesOfManyThreadsApart)
{
    inThreads(4, [this] {
        for (int n = 0; n < 200; ++n)
            m_log->LogInfo(L"0123456789");
    });
    const auto lines = logLines();
    EXPECT_EQ(lines.size(), 800u);
    EXPECT_THAT(lines, testing::Each(testing::EndsWith(" info 0123456789")));
}

TEST_F(DefaultLoggerTest, isThereUntilTheProcessIsGone)
{
    EXPECT_EQ(runProgram({LOG_AT_EXIT_PROGRAM, m_folder.path().string()}).exitCode, 0);
    const auto lines = logLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], testing::EndsWith(" info first words"));
    EXPECT_THAT(lines[1], testing::EndsWith(" warning last words of user-1 to http://127.0.0.1/p below remote"));
}

} // namespace
} // namespace orlo::test
