#include "support/ChildProcess.h"
#include "support/DemoPlatform.h"
#include "support/Sql.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <numeric>
#include <regex>
#include <set>
#include <sstream>

// The programs and links of the papers. The programs are built from the papers' own text.
namespace {

using orlo::platform::addProject;
using orlo::platform::LocalPlatform;
using orlo::platform::Options;
using orlo::test::ChildProcess;
using orlo::test::DemoPlatform;
using orlo::test::readFile;
using orlo::test::runProgram;
using orlo::test::RunResult;
using orlo::test::sqlTexts;
using orlo::test::TempFolder;
using orlo::test::writeFile;
using testing::HasSubstr;
using testing::IsEmpty;

const std::filesystem::path root = SOURCE_TREE;

const char* const papers[] = {"README.md",          "CONTRIBUTING.md",        "CHANGELOG.md",
                              "docs/host-guide.md", "docs/local-platform.md", "docs/architecture.md"};

void addDemoProject(LocalPlatform& platform, const std::string& name)
{
    platform.change(addProject, {name, "demo-account"});
}

/// What two threads print may come in any order.
std::string sortedLines(const std::string& text)
{
    std::istringstream lines(text);
    std::multiset<std::string> sorted;
    for (std::string line; std::getline(lines, line);)
        sorted.insert(line + "\n");
    return std::accumulate(sorted.begin(), sorted.end(), std::string());
}

/// The blocks of a paper that quote a file of the tree: name of the file, text.
std::vector<std::pair<std::string, std::string>> quotations(const std::string& paper)
{
    const std::string text = readFile(root / paper);
    const std::regex block("<!-- from: (\\S+) -->\n```\\w*\n([^`]*)```\n");
    std::vector<std::pair<std::string, std::string>> found;
    for (std::sregex_iterator match(text.begin(), text.end(), block), end; match != end; ++match)
        found.emplace_back((*match)[1], (*match)[2]);
    return found;
}

/// The links of a paper to files that don't exist.
std::vector<std::string> brokenLinks(const std::string& paper)
{
    const std::string text = readFile(root / paper);
    const std::regex link(R"(\]\(([^)#:]+)\))");
    std::vector<std::string> broken;
    for (std::sregex_iterator match(text.begin(), text.end(), link), end; match != end; ++match)
        if (!std::filesystem::exists((root / paper).parent_path() / (*match)[1].str()))
            broken.push_back((*match)[1]);
    return broken;
}

TEST(Readme, FirstProgramListsTheProjects)
{
    DemoPlatform platform;
    addDemoProject(platform, "滨江医院一期");
    addDemoProject(platform, "Riverside School");
    const RunResult run = runProgram({FIRST_PROGRAM, platform.url()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("滨江医院一期\nRiverside School\n", run.output);
}

TEST(Readme, FirstProgramTellsThePlatformsReason)
{
    orlo::platform::Fault fault;
    fault.path = "/projects";
    fault.status = 403;
    fault.body = R"({"code":40300,"message":"closed for today"})";
    DemoPlatform platform;
    platform.faults().add(fault);
    const RunResult run = runProgram({FIRST_PROGRAM, platform.url()}, ChildProcess::Errors::joined);
    EXPECT_EQ(1, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("\n{\"code\":40300,\"message\":\"closed for today\"}\n"));
}

TEST(Readme, FirstProgramCreatesAProjectWhereThereIsNone)
{
    const DemoPlatform platform;
    const RunResult first = runProgram({FIRST_PROGRAM, platform.url()}, ChildProcess::Errors::joined);
    EXPECT_EQ(0, first.exitCode);
    EXPECT_EQ("No project yet; creating one. Run me again to find it.\nMy first project\n", first.output);
    const RunResult second = runProgram({FIRST_PROGRAM, platform.url()}, ChildProcess::Errors::joined);
    EXPECT_EQ(0, second.exitCode);
    EXPECT_EQ("My first project\n", second.output);
}

TEST(Readme, FirstProgramGoesWhereTheEnvironmentSays)
{
    DemoPlatform platform;
    platform.change(orlo::platform::addUser, {"ana", "ana-account", "ana-token"});
    platform.change(addProject, {"Riverside School", "ana-account"});
    const RunResult run = runProgram(
        {"env", "ORLO_URL=" + platform.url(), "ORLO_USER=ana", "ORLO_ACCOUNT=ana-account", "ORLO_TOKEN=ana-token", FIRST_PROGRAM});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Riverside School\n", run.output);
}

TEST(HostGuide, SettingsOfTheEnvironmentAreShownWithoutTheToken)
{
    const RunResult run = runProgram({"env", "ORLO_URL=https://platform.example", "ORLO_USER=ana", "ORLO_TOKEN=a-very-secret-token",
                                      "ORLO_PROXY=", "ORLO_TIMEOUT=7", FROM_ENVIRONMENT});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("ana at https://platform.example, waiting up to 7 s, without a proxy\n", run.output);
}

TEST(HostGuide, SettingsOfTheEnvironmentAreWantedWhole)
{
    const RunResult run = runProgram({"env", "-u", "ORLO_URL", "-u", "ORLO_TOKEN", FROM_ENVIRONMENT}, ChildProcess::Errors::joined);
    EXPECT_EQ(2, run.exitCode);
    EXPECT_EQ("set ORLO_URL and ORLO_TOKEN\n", run.output);
}

TEST(HostGuide, SmallHostListsProjectsAndAdvises)
{
    const TempFolder folder;
    DemoPlatform platform;
    addDemoProject(platform, "滨江医院一期");
    const RunResult run = runProgram({SMALL_HOST, platform.url(), folder.path().string()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("滨江医院一期\nno-such-project: refused with status 404\n", run.output);
}

TEST(HostGuide, SmallHostAdvisesToTryAgainWhereNobodyListens)
{
    const TempFolder folder;
    DemoPlatform platform;
    platform.stop();
    const RunResult run = runProgram({SMALL_HOST, platform.url(), folder.path().string()}, ChildProcess::Errors::joined);
    EXPECT_EQ(1, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("projects: try again later\n"));
}

TEST(HostGuide, OwnLoggerSeesNoSecret)
{
    const RunResult run = runProgram({OWN_LOGGER});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("info  项目 opened with ***\n", run.output);
}

/// A platform with the project "p-1", in a folder together with the host's local files.
class UploadLater : public testing::Test
{
protected:
    void SetUp() override { platform.start(); }

    Options options() const { return {folder.path("platform").string(), 0, true}; }

    /// Makes the project and gives the id of its root folder, while nobody else has the database open.
    std::string seedProject() const
    {
        LocalPlatform(options()).change(addProject, {"滨江医院一期", "demo-account", "p-1"});
        return sqlTexts(folder.path("platform/platform.db"), "SELECT id FROM folder ORDER BY rank LIMIT 1").at(0);
    }

    RunResult upload(const std::string& folderId, const std::string& file) const
    {
        return runProgram({UPLOAD_LATER, platform.url(), folder.path("host").string(), "p-1", folderId, folder.path(file).u8string()});
    }

    const TempFolder folder;
    const std::string rootFolder = seedProject();
    LocalPlatform platform{options()};
};

TEST_F(UploadLater, HandsAFileToAJobAndTellsItsEnd)
{
    writeFile(folder.path("平面图.dwg"), "the drawing");
    const RunResult run = upload(rootFolder, "平面图.dwg");
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("accepted\nuploaded\n", sortedLines(run.output));
    const std::vector<orlo::platform::StoredFile> files = platform.ask(orlo::platform::storedFiles);
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ("平面图.dwg", files[0].fileName);
    EXPECT_EQ("the drawing", platform.ask(orlo::platform::contentOf, files[0].remotePath));
}

TEST_F(UploadLater, TellsTheReasonOfAFailure)
{
    writeFile(folder.path("plan.dwg"), "the drawing");
    const RunResult run = upload("no-such-folder", "plan.dwg");
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("accepted\n"));
    EXPECT_THAT(run.output, HasSubstr("上传文件失败：{\"code\":40400,\"message\":\"no such folder: no-such-folder\""));
}

TEST_F(UploadLater, KeepTryingUploadsWhatFailedAtFirst)
{
    orlo::platform::Fault fault;
    fault.path = "/file/doc/upload/url/with/filename";
    fault.status = 401; // one that the retry policy doesn't repeat
    platform.faults().add(fault);
    writeFile(folder.path("plan.dwg"), "the drawing");
    const RunResult run =
        runProgram({KEEP_TRYING, platform.url(), folder.path("host").string(), "p-1", rootFolder, folder.path("plan.dwg").u8string()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("plan.dwg will be tried again\nplan.dwg is uploaded\n", run.output);
    EXPECT_EQ(1u, platform.ask(orlo::platform::storedFiles).size());
}

TEST_F(UploadLater, KeepTryingGivesUpWhatThePlatformRefuses)
{
    writeFile(folder.path("plan.dwg"), "the drawing");
    const RunResult run = runProgram(
        {KEEP_TRYING, platform.url(), folder.path("host").string(), "p-1", "no-such-folder", folder.path("plan.dwg").u8string()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("plan.dwg was given up\n", run.output);
}

TEST_F(UploadLater, AcceptsNoFileThatIsNotThere)
{
    const RunResult run = upload(rootFolder, "gone.dwg");
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("not accepted\n", run.output);
}

TEST(HostGuide, FileBackBringsWhatUploadLaterTook)
{
    const TempFolder folder;
    const Options options{folder.path("platform").string(), 0, true};
    const auto database = [&](const char* query) { return sqlTexts(folder.path("platform/platform.db"), query).at(0); };
    const auto runHere = [&](const char* program, const std::vector<std::string>& arguments) {
        LocalPlatform platform(options);
        platform.start();
        std::vector<std::string> command{program, platform.url(), folder.path("host").string()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return runProgram(command, ChildProcess::Errors::joined);
    };
    LocalPlatform(options).change(addProject, {"滨江医院一期", "demo-account", "p-1"});
    writeFile(folder.path("平面图.dwg"), "the drawing");
    const std::string rootFolder = database("SELECT id FROM folder ORDER BY rank LIMIT 1");
    ASSERT_EQ(0, runHere(UPLOAD_LATER, {"p-1", rootFolder, folder.path("平面图.dwg").u8string()}).exitCode);
    const std::filesystem::path back = folder.path("回来.dwg");
    const RunResult run = runHere(FILE_BACK, {database("SELECT id FROM dataset"), back.u8string()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("version 1, 11 bytes, WIP\nversion 1 is back\n", run.output);
    EXPECT_EQ("the drawing", readFile(back));
    const RunResult none = runHere(FILE_BACK, {"no-such-dataset", back.u8string()});
    EXPECT_EQ(1, none.exitCode);
    EXPECT_THAT(none.output, HasSubstr("no such dataset: no-such-dataset"));
}

TEST(Papers, QuoteTheTreeAsItStands)
{
    std::size_t count = 0;
    for (const char* paper : papers)
        for (const auto& [file, text] : quotations(paper)) {
            ++count;
            EXPECT_NE(std::string::npos, readFile(root / file).find(text)) << paper << " quotes in " << file << ":\n" << text;
        }
    EXPECT_GE(count, 5u) << "the quotations of CONTRIBUTING.md were not found";
}

TEST(Papers, LinkToFilesThatExist)
{
    for (const char* paper : papers)
        EXPECT_THAT(brokenLinks(paper), IsEmpty()) << paper;
}

} // namespace
