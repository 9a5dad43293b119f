#include "Xml.h"
#include "support/ChildProcess.h"
#include "support/DemoPlatform.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <set>

namespace {

using orlo::platform::Fault;
using orlo::platform::LocalPlatform;
using orlo::test::ChildProcess;
using orlo::test::DemoPlatform;
using orlo::test::filesBelow;
using orlo::test::readFile;
using orlo::test::runProgram;
using orlo::test::RunResult;
using orlo::test::TempFolder;
using orlo::test::XmlReading;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAreArray;

/// Runs the sample, with a folder of the test's for the data of the user's applications.
class AuthoringSession : public testing::Test
{
protected:
    RunResult runSample(const std::vector<std::string>& arguments = {}, ChildProcess::Errors errors = ChildProcess::Errors::apart) const
    {
        std::vector<std::string> command = {"env", "XDG_DATA_HOME=" + usersData.path().u8string(), AUTHORING_SESSION};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return runProgram(command, errors);
    }
    RunResult runAgainst(const LocalPlatform& platform, ChildProcess::Errors errors = ChildProcess::Errors::apart) const
    {
        return runSample({"--url", platform.url()}, errors);
    }

    const TempFolder usersData;
};

/// The chapter of that title, with its number.
std::string chapter(const RunResult& run, const std::string& title)
{
    const std::size_t begin = run.output.find("\n" + title + "\n");
    if (begin == std::string::npos)
        return "no chapter " + title + " in " + run.output;
    return run.output.substr(begin + 1, run.output.find("\n\n", begin) - begin);
}

TEST_F(AuthoringSession, TellsItsStoryAgainstAPlatformOfItsOwn)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Started a platform at http://127.0.0.1:"));
    EXPECT_THAT(run.output, HasSubstr("Signed in as demo\n"));
    EXPECT_THAT(run.output, HasSubstr("All my projects, 2 of them:\n     - 滨江医院一期\n     - Riverside School\n"));
    EXPECT_THAT(run.output, HasSubstr("Loaded by its id: 滨江医院一期, ongoing\n"));
    EXPECT_THAT(run.output, Not(HasSubstr("What an earlier session left")));
    EXPECT_THAT(run.output, HasSubstr("Projects: 2 used of 500\n"));
    EXPECT_THAT(run.output, HasSubstr("   └─ 默认团队\n      └─ [结构模型]\n"));
    EXPECT_THAT(run.output, HasSubstr("         ├─ 建筑未命名楼层 at 0.000\n"
                                      "         ├─ 二层 at 3.600\n         └─ 地下一层 at -4.200\n"));
    EXPECT_THAT(run.output, HasSubstr("Versions kept by the platform: 2\n"));
    EXPECT_THAT(run.output, HasSubstr("Downloaded it again; the bytes are the same.\n"));
    EXPECT_THAT(run.output, HasSubstr("Published that version.\n"));
    EXPECT_THAT(run.output, HasSubstr("Downloaded twelve blocks of a model at once; the bytes are the same.\n"));
    EXPECT_THAT(run.output, HasSubstr("Space:    2621440 used of 100\n"));
    EXPECT_THAT(run.output, HasSubstr("the platform answered with an error status (404)"));
    EXPECT_THAT(run.output, HasSubstr("in its own words: data.name is empty\n"));
    EXPECT_THAT(run.output, HasSubstr("Signed out.\n"));
}

const char* const designChapter = "5. Axis grid and building items\n"
                                  "   Drew the axes 1 to 10, A to K and the arcs R1 and R2, and stored the grid.\n"
                                  "   Read the last version of the grid, 1: 20 straight axes and 2 arcs\n"
                                  "   From axis 1 to axis 2: 8400 mm\n"
                                  "   From axis A to axis K: 64800 mm\n"
                                  "   Moved axis 1 by 600 mm to the left.\n"
                                  "   Stored it again. The grid in hand is version 1 still.\n"
                                  "   Versions of the grid: 1, 2\n"
                                  "   Read the last version of the grid, 2: 20 straight axes and 2 arcs\n"
                                  "   From axis 1 to axis 2: 9000 mm\n"
                                  "   Building items at revision 0: none\n"
                                  "   Added the item 门诊楼.\n"
                                  "   Building items at revision 1:\n"
                                  "     - 门诊楼, version 1: 门诊\n"
                                  "   Changing the item with revision 0 was refused (40900), in the platform's words: the revision is 1 "
                                  "now, not 0\n"
                                  "   Changed the item with revision 1.\n"
                                  "   Building items at revision 2:\n"
                                  "     - 门诊楼, version 2: 门诊和急诊\n"
                                  "   Gave it an elevation set, and read version 1: 一层 at 0 mm, 二层 at 3600 mm\n"
                                  "   Bound the dataset 结构模型 to it; each now tells the other's id.\n";

TEST_F(AuthoringSession, TellsOfAxesAndBuildingItems)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ(designChapter, chapter(run, "5. Axis grid and building items"));
}

TEST_F(AuthoringSession, TellsOfThemAtAnAddressToo)
{
    const DemoPlatform platform;
    const RunResult run = runAgainst(platform);
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ(designChapter, chapter(run, "5. Axis grid and building items"));
}

TEST_F(AuthoringSession, FailsWhenADatasetCannotBeBound)
{
    DemoPlatform platform;
    Fault fault;
    fault.path = "/design/config/data/bind";
    fault.status = 403;
    fault.body = "closed for today";
    platform.faults().add(fault);
    const RunResult run = runAgainst(platform, ChildProcess::Errors::joined);
    EXPECT_EQ(1, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("The session failed: the dataset could not be bound: the platform answered with an error status "
                                      "(403), in its own words: closed for today\n"));
}

/// The pictures of a session in a folder, which its last lines name.
void expectPictures(const RunResult& run, const std::filesystem::path& folder)
{
    const std::filesystem::path spaces = folder / "spaces.svg";
    const std::filesystem::path grid = folder / "axis-grid.svg";
    EXPECT_THAT(run.output, EndsWith("   Signed out.\n   Pictures of the day, for a browser:\n     " + spaces.u8string() + "\n     " +
                                     grid.u8string() + "\n"));
    const XmlReading ofSpaces(readFile(spaces));
    EXPECT_EQ("", ofSpaces.fault());
    EXPECT_THAT(ofSpaces.texts("text"), ElementsAre("未命名场地", "未命名楼栋", "未命名区域", "地下一层  -4.200", "建筑未命名楼层  0.000",
                                                    "二层  3.600", "空间: the spaces, version 2, levels in metres"));
    const XmlReading ofGrid(readFile(grid));
    EXPECT_EQ("", ofGrid.fault());
    std::multiset<std::string> names;
    for (const char* name : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "A", "B", "C", "D", "E", "F", "G", "H", "J", "K"})
        names.insert({name, name}); // at both ends
    names.insert({"R1", "R2", "轴网: the axis grid, version 2; 1 unit is 100 mm"});
    EXPECT_THAT(ofGrid.texts("text"), UnorderedElementsAreArray(names));
    EXPECT_EQ(22u, ofGrid.values("path", "d").size());
}

TEST_F(AuthoringSession, LeavesItsPicturesAmongTheUsersData)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    expectPictures(run, usersData.path("AuthoringSession/pictures"));
    EXPECT_THAT(filesBelow(usersData.path()),
                ElementsAre("AuthoringSession/pictures/axis-grid.svg", "AuthoringSession/pictures/spaces.svg"));
}

TEST_F(AuthoringSession, DrawsItsPicturesAnewInAFolderThatIsKept)
{
    const TempFolder kept;
    for (const char* day : {"the first", "the second"}) {
        SCOPED_TRACE(day);
        const RunResult run = runSample({"--data", kept.path().u8string()});
        EXPECT_EQ(0, run.exitCode);
        expectPictures(run, kept.path("pictures"));
    }
    EXPECT_THAT(filesBelow(usersData.path()), IsEmpty());
    EXPECT_THAT(filesBelow(kept.path("pictures")), ElementsAre("axis-grid.svg", "spaces.svg"));
}

TEST_F(AuthoringSession, SaysWhereAPictureCouldNotBeMade)
{
    orlo::test::writeFile(usersData.path("AuthoringSession"), "in the way");
    const RunResult run = runSample({}, ChildProcess::Errors::joined);
    EXPECT_EQ(1, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("The session failed: the picture could not be made: " +
                                      usersData.path("AuthoringSession/pictures/spaces.svg").u8string()));
}

TEST_F(AuthoringSession, TellsHowTwoUsersShareADataset)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("6. Two users, one model\n"
                                      "   demo opens the model, and may write.\n"
                                      "   li opens the model, and may read: demo is writing the dataset.\n"
                                      "   demo closes the model.\n"
                                      "   li opens the model, and may write.\n"
                                      "   li goes home, and leaves the model open.\n"
                                      "   demo opens the model, and may read: li is writing the dataset.\n"
                                      "   demo takes the right to write away.\n"
                                      "   demo opens the model, and may write.\n"
                                      "   li finds that the right to write is gone.\n"
                                      "   li opens the model, and may read: demo is writing the dataset.\n"
                                      "   demo closes the model.\n"));
}

TEST_F(AuthoringSession, TellsWhatTeamsSharesAndIssuesAreFor)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("8. A team, a share, an issue\n"
                                      "   A team is a group of people with a folder of their own. Made the team 机电组\n"
                                      "   li belongs to it now.\n"
                                      "   A share hands versions over to another team. It received \"一审\": 一层平面图.dwg, version 1\n"
                                      "   li reads: 一审 (datasets were shared with the team)\n"
                                      "   li raises an issue on 一层平面图.dwg, at a place in the model: 风管穿梁\n"));
    EXPECT_THAT(run.output, HasSubstr("   demo reads: 风管穿梁 (li: raise)\n"
                                      "   demo: 风管降了 200。 The issue is resolved.\n"
                                      "   li: 好了。 The issue is closed.\n"
                                      "   li: 还差一点。 The issue is open.\n"));
}

TEST_F(AuthoringSession, HandsFilesToJobsAndIsToldWhenTheyEnd)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    const std::string told = chapter(run, "9. Jobs");
    EXPECT_THAT(told, HasSubstr("9. Jobs\n   Handed over 立面图.dwg\n   Handed over structure.ifc\n   Handed over schedule.xlsx\n"));
    for (const char* name : {"立面图.dwg", "structure.ifc", "schedule.xlsx"}) {
        EXPECT_THAT(told, HasSubstr("   " + std::string(name) + " has been uploaded.\n"));
        EXPECT_THAT(told, HasSubstr("─ [" + std::string(name) + "]\n"));
    }
    EXPECT_THAT(told, HasSubstr("   Process\n   ├─ [一层平面图.dwg]\n"));
}

TEST_F(AuthoringSession, TellsWhatTheLibrariesOfAProjectHold)
{
    const RunResult run = runSample();
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ(chapter(run, "10. Libraries of the project"),
              "10. Libraries of the project\n"
              "   Took a door and a column from the public catalogue.\n"
              "   Searched for 柱: 矩形柱 Rectangular column, version 1, comes as 400 x 400, 600 x 600\n"
              "   施工图 has been uploaded.\n"
              "   The project offers the template 施工图, for ZOK\n"
              "   Brought it to this disk for a dataset that begins with it; the bytes are the same.\n"
              "   Modules stand in categories; the first is 梁 Beams\n"
              "   May the module 桁架 come? Yes.\n"
              "   桁架 has been uploaded.\n"
              "   May the module 桁架 come? No: name_exists\n"
              "   Archive package 一期竣工, for 档案馆:\n"
              "     - 建筑图纸: 1 dataset, 1048576 bytes\n");
}

TEST_F(AuthoringSession, SaysWhyAJobFailed)
{
    DemoPlatform platform;
    Fault fault;
    fault.path = "/file/doc/upload/url/with/filename";
    fault.status = 403;
    fault.body = "the store is closed";
    fault.calls = -1;
    const int id = platform.faults().add(fault);
    const RunResult run = runAgainst(platform, ChildProcess::Errors::joined);
    EXPECT_EQ(1, run.exitCode);
    EXPECT_GE(platform.faults().count(id), 1);
    EXPECT_THAT(run.output,
                HasSubstr("could not be uploaded: the platform could not be reached, or an exception was caught (10011), in its "
                          "own words: 上传文件失败：the store is closed\n"));
    EXPECT_THAT(run.output, HasSubstr("The session failed: a job failed"));
}

TEST_F(AuthoringSession, UsesThePlatformAtAnAddress)
{
    DemoPlatform platform;
    const RunResult run = runAgainst(platform);
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Using the platform at " + platform.url()));
    EXPECT_EQ(2u, platform.requests().count("POST", "/v3/projects"));
}

TEST_F(AuthoringSession, SaysThatAPersonalAccountHasNoLimits)
{
    DemoPlatform platform;
    platform.change(orlo::platform::setPersonal, "demo-account");
    EXPECT_THAT(runAgainst(platform).output, HasSubstr("A personal account has no limits.\n"));
}

TEST_F(AuthoringSession, WritesUtf8InTheCLocale)
{
    const DemoPlatform platform;
    const RunResult run =
        runProgram({"env", "LC_ALL=C", "XDG_DATA_HOME=" + usersData.path().u8string(), AUTHORING_SESSION, "--url", platform.url()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Created 滨江医院一期 with the id "));
}

TEST_F(AuthoringSession, FailsWithTheReasonAndTheLogWhenThePlatformRefuses)
{
    DemoPlatform platform;
    Fault fault;
    fault.path = "/v3/projects";
    fault.status = 403;
    fault.calls = -1;
    platform.faults().add(fault);
    const RunResult run = runAgainst(platform, ChildProcess::Errors::joined);
    EXPECT_EQ(1, run.exitCode);
    EXPECT_THAT(run.output,
                HasSubstr("The session failed: the project could not be created: the platform answered with an error status (403)"));
    EXPECT_THAT(run.output, HasSubstr("fail to create project."));
    EXPECT_THAT(run.output, Not(HasSubstr("Signed out.")));
    EXPECT_THAT(run.output, Not(HasSubstr("demo-token")));
}

TEST_F(AuthoringSession, ExplainsItselfWhenItIsCalledWrongly)
{
    const std::vector<std::vector<std::string>> wrong = {
        {"--nonsense"},
        {"--url"},
        {"--data"},
        {"--url", ""},
        {"--crash"},
        {"--crash", "--url", "http://127.0.0.1:1"},
        {"--crash", "--data", "somewhere", "--url", "http://127.0.0.1:1"},
    };
    for (const std::vector<std::string>& words : wrong) {
        SCOPED_TRACE(testing::PrintToString(words));
        const RunResult run = runSample(words, ChildProcess::Errors::joined);
        EXPECT_EQ(2, run.exitCode);
        EXPECT_THAT(run.output, HasSubstr("usage: AuthoringSession [--url URL] [--data DIR [--crash]]"));
    }
}

TEST_F(AuthoringSession, TellsItsOptions)
{
    const RunResult run = runSample({"--help"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, testing::StartsWith("usage: AuthoringSession [--url URL] [--data DIR [--crash]]"));
}

} // namespace
