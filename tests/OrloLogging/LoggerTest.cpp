#include "support/LogCapture.h"

#include <OrloLogging/ILogManager.h>
#include <OrloLogging/SecretGuard.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

class Throwing : public ILogManager
{
public:
    void LogInfo(const std::wstring&) override { throw std::runtime_error("no"); }
    void LogWarning(const std::wstring&) override { throw 7; }
    void LogError(const std::wstring&) override { throw std::bad_alloc(); }
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring&, const std::wstring&) override { throw "no"; }
};

// Counts its lines, and tells when it goes.
class Counting : public ILogManager
{
public:
    Counting(std::atomic<int>& lines, std::atomic<int>& gone) : m_lines(lines), m_gone(gone) {}
    ~Counting() override { ++m_gone; }
    void LogInfo(const std::wstring&) override { ++m_lines; }
    void LogWarning(const std::wstring&) override { ++m_lines; }
    void LogError(const std::wstring&) override { ++m_lines; }
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring&, const std::wstring&) override { ++m_lines; }

private:
    std::atomic<int>& m_lines;
    std::atomic<int>& m_gone;
};

class LoggerTest : public testing::Test
{
protected:
    ~LoggerTest() override { ILogManager::Install(nullptr); }
};

TEST_F(LoggerTest, handsEveryKindOfLineToTheInstalledLogger)
{
    const LogCapture log;
    ILogManager::Get()->LogInfo(L"[ORLOSDK]BEGIN TO GetFileAsync.");
    ILogManager::Get()->LogWarning(L"[ORLOSDK]soft");
    ILogManager::Get()->LogError(L"[ORLOSDK]OrloWebService::GetAllProjects - code:500");
    ILogManager::Get()->LogErrorAt("ProjectManager", 12, "orlo::ProjectManager::GetAllProjects", L"message", L"[ORLOSDK]");

    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"I [ORLOSDK]BEGIN TO GetFileAsync.", L"W [ORLOSDK]soft",
                                                      L"E [ORLOSDK]OrloWebService::GetAllProjects - code:500",
                                                      L"E@orlo::ProjectManager::GetAllProjects message"}));
    const LogEntry last = log.entries().back();
    EXPECT_EQ(last.source, "ProjectManager");
    EXPECT_EQ(last.line, 12);
    EXPECT_EQ(last.tag, L"[ORLOSDK]");
}

TEST_F(LoggerTest, passesMessagesOnByteForByte)
{
    const LogCapture log;
    const std::wstring odd = L"传入 \U0001F600 \xFFFD\ttab\r\nline " + std::wstring(1, L'\0') + L"{} %s {0}";
    ILogManager::Get()->LogInfo(odd);
    EXPECT_EQ(log.entries().at(0).message, odd);
}

TEST_F(LoggerTest, clearsEveryKindOfLineOfSecrets)
{
    SecretGuard::protect(L"guarded-text");
    const LogCapture log;
    ILogManager::Get()->LogInfo(L"guarded-text");
    ILogManager::Get()->LogWarning(L"\"accessToken\":\"abc\"");
    ILogManager::Get()->LogError(L"https://s.example/f?sig=abc");
    ILogManager::Get()->LogErrorAt("f", 1, "g", L"Bearer abcdef0123456789", L"[T]");
    EXPECT_EQ(log.lines(),
              (std::vector<std::wstring>{L"I ***", L"W \"accessToken\":\"***\"", L"E https://s.example/f?***", L"E@g Bearer ***"}));
}

// A platform may give out tokens of one character; masked wherever it stands, it would mangle every line.
TEST_F(LoggerTest, clearsLinesOfTheShortestSecretsWhereACredentialStands)
{
    SecretGuard::protect(L"a");
    const LogCapture log;
    ILogManager::Get()->LogInfo(L"a bad Bearer a, or \"accessToken\":\"a\", or Authorization: Bearer a");
    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"I a bad Bearer ***, or \"accessToken\":\"***\", or Authorization: ***"}));
}

TEST_F(LoggerTest, nothingThrownByALoggerComesBack)
{
    ILogManager::Install(std::make_shared<Throwing>());
    EXPECT_NO_THROW(ILogManager::Get()->LogInfo(L"a"));
    EXPECT_NO_THROW(ILogManager::Get()->LogWarning(L"a"));
    EXPECT_NO_THROW(ILogManager::Get()->LogError(L"a"));
    EXPECT_NO_THROW(ILogManager::Get()->LogErrorAt("f", 1, "g", L"a", L"t"));
}

TEST_F(LoggerTest, isTheSameObjectWhateverIsInstalled)
{
    ILogManager* const before = ILogManager::Get();
    ASSERT_NE(before, nullptr);
    const LogCapture log;
    EXPECT_EQ(ILogManager::Get(), before);
}

TEST_F(LoggerTest, lettingGoOfALoggerDestroysIt)
{
    std::atomic<int> lines{0};
    std::atomic<int> gone{0};
    ILogManager::Install(std::make_shared<Counting>(lines, gone));
    ILogManager::Get()->LogInfo(L"one");
    EXPECT_EQ(gone, 0);
    ILogManager::Install(nullptr);
    EXPECT_EQ(gone, 1);
    EXPECT_EQ(lines, 1);
}

TEST_F(LoggerTest, theFacadeIsNotInstalledIntoItself)
{
    const LogCapture log;
    ILogManager::Install(std::shared_ptr<ILogManager>(ILogManager::Get(), [](ILogManager*) {}));
    ILogManager::Get()->LogInfo(L"still here");
    EXPECT_TRUE(log.has(L"I still here"));
}

TEST_F(LoggerTest, isReplacedWhileOtherThreadsLog)
{
    constexpr int perThread = 2000;
    std::atomic<int> lines{0};
    std::atomic<int> gone{0};
    ILogManager::Install(std::make_shared<Counting>(lines, gone));
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i) {
        writers.emplace_back([] {
            for (int n = 0; n < perThread; ++n)
                ILogManager::Get()->LogError(L"line");
        });
    }
    for (int i = 0; i < 500; ++i)
        ILogManager::Install(std::make_shared<Counting>(lines, gone));
    for (std::thread& writer : writers)
        writer.join();
    ILogManager::Install(nullptr);
    EXPECT_EQ(lines, 3 * perThread);
    EXPECT_EQ(gone, 501);
}

TEST_F(LoggerTest, aCaptureCountsFindsAndForgets)
{
    LogCapture log;
    ILogManager::Get()->LogInfo(L"same");
    ILogManager::Get()->LogInfo(L"same");
    ILogManager::Get()->LogErrorAt("source.cpp", 1, "f", L"other", L"[TAG]");
    EXPECT_EQ(log.count(L"I same"), 2u);
    EXPECT_FALSE(log.has(L"I sam"));
    EXPECT_TRUE(log.holds(L"sam"));
    EXPECT_TRUE(log.holds(L"[TAG]"));
    EXPECT_TRUE(log.holds(L"source.cpp"));
    log.clear();
    EXPECT_TRUE(log.entries().empty());
}

} // namespace
} // namespace orlo::test
