#include "support/ChildProcess.h"
#include "support/DemoPlatform.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

// The sample for a reader who wants to write such an application, and on a platform that the environment names.
namespace orlo::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::filesystem::path tree = std::filesystem::u8path(SOURCE_TREE);

class ExplainedSession : public testing::Test
{
protected:
    RunResult runWith(std::vector<std::string> environment, const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> command{"env", "XDG_DATA_HOME=" + m_usersData.path().u8string()};
        command.insert(command.end(), environment.begin(), environment.end());
        command.push_back(AUTHORING_SESSION);
        command.insert(command.end(), arguments.begin(), arguments.end());
        return runProgram(command, ChildProcess::Errors::joined);
    }

private:
    const TempFolder m_usersData;
};

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// The text of all headers that a host includes, one after the other.
std::string faceText()
{
    std::string text;
    for (const char* folder : {"include", "sdk-base/source/OrloAuth", "sdk-base/source/OrloCommon", "sdk-base/source/OrloJobManager"})
        for (const auto& entry : std::filesystem::recursive_directory_iterator(tree / folder))
            if (entry.path().extension() == ".h")
                text += readFile(entry.path());
    return text;
}

TEST_F(ExplainedSession, NamesTheSourceOfEachChapter)
{
    const std::vector<std::string> lines = linesOf(runWith({}, {"--explain"}).output);
    int chapters = 0;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        if (!std::regex_match(lines[i], std::regex("[0-9]+\\. .*")))
            continue;
        ++chapters;
        std::smatch source;
        ASSERT_TRUE(std::regex_match(lines[i + 1], source, std::regex("   \\((.*)\\)"))) << lines[i] << "\n" << lines[i + 1];
        EXPECT_TRUE(std::filesystem::exists(tree / source[1].str())) << source[1];
    }
    EXPECT_EQ(chapters, 13);
}

TEST_F(ExplainedSession, NamesTheCallBehindALineAsTheHeadersHaveIt)
{
    const RunResult run = runWith({}, {"--explain"});
    ASSERT_EQ(0, run.exitCode) << run.output;
    const std::string face = faceText();
    const std::regex call("  \\[(\\w+)::(\\w+)(?:, (?:(\\w+)::)?(\\w+))?(?:; [^\\]]*)?\\]");
    std::set<std::string> seen;
    for (const std::string& line : linesOf(run.output)) {
        std::smatch match;
        if (!std::regex_search(line, match, call))
            continue;
        seen.insert(match.str());
        for (const int name : {1, 2, 3, 4})
            EXPECT_THAT(face, HasSubstr(match[name].str())) << line;
    }
    EXPECT_GE(seen.size(), 40u);
    EXPECT_THAT(run.output, AllOf(HasSubstr(" with the id "), HasSubstr("  [ICollaborationProjectManager::CreateProject]\n"),
                                  HasSubstr("Downloaded it again; the bytes are the same.  [IFileManager::DownloadFile]\n")));
}

TEST_F(ExplainedSession, TellsUnits)
{
    const RunResult run = runWith({}, {"--explain"});
    EXPECT_THAT(run.output,
                AllOf(HasSubstr("version 1, levels in metres:"), HasSubstr("; the use in bytes, the limit as the platform counts it]"),
                      HasSubstr("sizes in mm]"), HasSubstr(": 8400 mm  [IAxisGrid::GetDistance]\n")));
}

TEST_F(ExplainedSession, EndsWithWhatToTryNext)
{
    const RunResult run = runWith({}, {"--explain"});
    const std::size_t begin = run.output.find("   What to try next:\n");
    ASSERT_NE(begin, std::string::npos);
    const std::string next = run.output.substr(begin);
    for (const char* file : {"scripts/demo", "README.md", "docs/host-guide.md"}) {
        EXPECT_THAT(next, HasSubstr(file));
        EXPECT_TRUE(std::filesystem::exists(tree / file)) << file;
    }
    EXPECT_THAT(next, HasSubstr("orlo-local-platform --port 8080"));
}

TEST_F(ExplainedSession, IsWhatTheDemoScriptShows)
{
    EXPECT_THAT(readFile(tree / "scripts/demo"), HasSubstr("AuthoringSession\" --explain \"$@\""));
    EXPECT_THAT(runWith({}, {}).output, AllOf(Not(HasSubstr("[I")), Not(HasSubstr("What to try next"))));
}

TEST_F(ExplainedSession, LivesOnThePlatformThatTheEnvironmentNames)
{
    DemoPlatform platform;
    platform.change(platform::addUser, {"ana", "ana-account", "ana-token"});
    const RunResult run = runWith({"ORLO_URL=" + platform.url(), "ORLO_USER=ana", "ORLO_ACCOUNT=ana-account", "ORLO_TOKEN=ana-token"}, {});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, AllOf(HasSubstr("Using the platform at " + platform.url() + "\n"), HasSubstr("Signed in as ana\n"),
                                  Not(HasSubstr("ana-token"))));
    EXPECT_EQ(2u, platform.requests().count("POST", "/v3/projects"));
}

TEST_F(ExplainedSession, PrefersTheAddressOfItsArguments)
{
    DemoPlatform platform;
    const RunResult run = runWith({"ORLO_URL=http://127.0.0.1:1"}, {"--url", platform.url()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Using the platform at " + platform.url() + "\n"));
}

TEST_F(ExplainedSession, HasUsersOfItsOwnOnAPlatformOfItsOwn)
{
    const RunResult run = runWith({"ORLO_USER=ana", "ORLO_TOKEN=ana-token", "ORLO_PROXY=http://127.0.0.1:1", "ORLO_URL="}, {});
    EXPECT_EQ(0, run.exitCode) << run.output;
    EXPECT_THAT(run.output, AllOf(HasSubstr("Started a platform at "), HasSubstr("Signed in as demo\n")));
}

TEST_F(ExplainedSession, WantsAPlatformOfItsOwnToCrashOn)
{
    const TempFolder data;
    const RunResult run = runWith({"ORLO_URL=http://127.0.0.1:1"}, {"--data", data.path().u8string(), "--crash"});
    EXPECT_EQ(2, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Not with --url or ORLO_URL"));
}

} // namespace
} // namespace orlo::test
