#include "support/ChildProcess.h"
#include "support/DemoPlatform.h"

#include <gmock/gmock.h>

namespace {

using orlo::platform::Fault;
using orlo::platform::LocalPlatform;
using orlo::test::ChildProcess;
using orlo::test::DemoPlatform;
using orlo::test::runProgram;
using orlo::test::RunResult;
using testing::HasSubstr;
using testing::Not;

RunResult runAgainst(const LocalPlatform& platform, ChildProcess::Errors errors = ChildProcess::Errors::apart)
{
    return runProgram({AUTHORING_SESSION, "--url", platform.url()}, errors);
}

TEST(AuthoringSession, TellsItsStoryAgainstAPlatformOfItsOwn)
{
    const RunResult run = runProgram({AUTHORING_SESSION});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Started a platform at http://127.0.0.1:"));
    EXPECT_THAT(run.output, HasSubstr("Signed in as demo\n"));
    EXPECT_THAT(run.output, HasSubstr("All my projects, 2 of them:\n     - 滨江医院一期\n     - Riverside School\n"));
    EXPECT_THAT(run.output, HasSubstr("Loaded by its id: 滨江医院一期, ongoing\n"));
    EXPECT_THAT(run.output, Not(HasSubstr("What an earlier session left")));
    EXPECT_THAT(run.output, HasSubstr("Projects: 2 used of 500\n"));
    EXPECT_THAT(run.output, HasSubstr("   └─ 默认团队\n      └─ [结构模型]\n"));
    EXPECT_THAT(run.output, HasSubstr("         ├─ 建筑未命名楼层 at 0.000\n         └─ 二层 at 3.600\n"));
    EXPECT_THAT(run.output, HasSubstr("Versions kept by the platform: 2\n"));
    EXPECT_THAT(run.output, HasSubstr("Downloaded it again; the bytes are the same.\n"));
    EXPECT_THAT(run.output, HasSubstr("Published that version.\n"));
    EXPECT_THAT(run.output, HasSubstr("Downloaded twelve blocks of a model at once; the bytes are the same.\n"));
    EXPECT_THAT(run.output, HasSubstr("Space:    2621440 used of 100\n"));
    EXPECT_THAT(run.output, HasSubstr("the platform answered with an error status (404)"));
    EXPECT_THAT(run.output, HasSubstr("in its own words: data.name is empty\n"));
    EXPECT_THAT(run.output, HasSubstr("Signed out.\n"));
}

TEST(AuthoringSession, TellsHowTwoUsersShareADataset)
{
    const RunResult run = runProgram({AUTHORING_SESSION});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("5. Two users, one model\n"
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

TEST(AuthoringSession, TellsWhatTeamsSharesAndIssuesAreFor)
{
    const RunResult run = runProgram({AUTHORING_SESSION});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("7. A team, a share, an issue\n"
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

TEST(AuthoringSession, HandsFilesToJobsAndIsToldWhenTheyEnd)
{
    const RunResult run = runProgram({AUTHORING_SESSION});
    EXPECT_EQ(0, run.exitCode);
    const std::string chapter = run.output.substr(run.output.find("8. Jobs\n"), run.output.find("\n9. ") - run.output.find("8. Jobs\n"));
    EXPECT_THAT(chapter, HasSubstr("8. Jobs\n   Handed over 立面图.dwg\n   Handed over structure.ifc\n   Handed over schedule.xlsx\n"));
    for (const char* name : {"立面图.dwg", "structure.ifc", "schedule.xlsx"}) {
        EXPECT_THAT(chapter, HasSubstr("   " + std::string(name) + " has been uploaded.\n"));
        EXPECT_THAT(chapter, HasSubstr("─ [" + std::string(name) + "]\n"));
    }
    EXPECT_THAT(chapter, HasSubstr("   Process\n   ├─ [一层平面图.dwg]\n"));
}

TEST(AuthoringSession, SaysWhyAJobFailed)
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

TEST(AuthoringSession, UsesThePlatformAtAnAddress)
{
    DemoPlatform platform;
    const RunResult run = runAgainst(platform);
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Using the platform at " + platform.url()));
    EXPECT_EQ(2u, platform.requests().count("POST", "/v3/projects"));
}

TEST(AuthoringSession, SaysThatAPersonalAccountHasNoLimits)
{
    DemoPlatform platform;
    platform.change(orlo::platform::setPersonal, "demo-account");
    EXPECT_THAT(runAgainst(platform).output, HasSubstr("A personal account has no limits.\n"));
}

TEST(AuthoringSession, WritesUtf8InTheCLocale)
{
    const DemoPlatform platform;
    const RunResult run = runProgram({"env", "LC_ALL=C", AUTHORING_SESSION, "--url", platform.url()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("Created 滨江医院一期 with the id "));
}

TEST(AuthoringSession, FailsWithTheReasonAndTheLogWhenThePlatformRefuses)
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

TEST(AuthoringSession, ExplainsItselfWhenItIsCalledWrongly)
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
    for (std::vector<std::string> words : wrong) {
        SCOPED_TRACE(testing::PrintToString(words));
        words.insert(words.begin(), AUTHORING_SESSION);
        const RunResult run = runProgram(words, ChildProcess::Errors::joined);
        EXPECT_EQ(2, run.exitCode);
        EXPECT_THAT(run.output, HasSubstr("usage: AuthoringSession [--url URL] [--data DIR [--crash]]"));
    }
}

TEST(AuthoringSession, TellsItsOptions)
{
    const RunResult run = runProgram({AUTHORING_SESSION, "--help"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, testing::StartsWith("usage: AuthoringSession [--url URL] [--data DIR [--crash]]"));
}

} // namespace
