#include "Kills.h"
#include "UploadJobHosts.h"

#include <BaseCommon/ErrorCode.h>
#include <OrloProjectManager/Resources/ITemplateManager.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>

// A host that hands files over to jobs is killed, and another goes on. The platform lives in this process and outlives both. At the end
// every file that was accepted is there with its bytes; no row is left, and no copy.
namespace orlo::test {
namespace {

using testing::SizeIs;

class UploadJobCrash : public UploadJobHosts
{
protected:
    UploadJobCrash() { place.platform.change(platform::addModuleCategory, {"projects", "p-1", "beam", "tree", "门", "", "c-1"}); }

    /// A host lives its life: the database has held a job then, and can tell which copies no job names.
    void liveBefore() const
    {
        ChildProcess host(process());
        ASSERT_EQ(host.ask("start"), "yes");
        ASSERT_EQ(host.ask("upload " + localFile("earlier.dwg", "bytes")), "yes");
        ASSERT_EQ(host.ask("idle"), "yes");
        ASSERT_EQ(host.ask("stop"), "yes");
    }
    /// A host dies at the point while it hands a file over, and the next one does what is left.
    void dieAndFinish(const std::string& point, const std::string& submission, bool isQuiet = true)
    {
        liveBefore();
        ChildProcess host(process());
        ASSERT_EQ(host.ask("start"), "yes");
        ASSERT_EQ(host.ask("die-at " + point), "yes");
        host.tell(submission);
        EXPECT_EQ(host.wait(), ChildProcess::killed);
        finish(isQuiet);
        EXPECT_EQ(copies(), 0u);
    }
    /// The bytes of the versions of the modules with a name.
    std::vector<std::string> modules(const std::string& name) const
    {
        std::vector<std::string> found;
        for (const platform::StoredModule& module : place.platform.ask(platform::storedModules)) {
            if (module.name == name)
                found.push_back(place.platform.ask(platform::contentOf, module.fileKey));
        }
        return found;
    }
};

/// Where the host dies, and how many datasets, versions of a module or templates there are when the next one is done.
struct Point
{
    const char* name;
    std::size_t uploads;
};

class UploadJobCrashAt : public UploadJobCrash, public testing::WithParamInterface<Point>
{};

TEST_P(UploadJobCrashAt, losesNothingAndLeavesNothing)
{
    dieAndFinish(GetParam().name, "upload-dying " + localFile("图.dwg", "bytes"));
    EXPECT_THAT(place.datasets("图.dwg"), SizeIs(GetParam().uploads));
    EXPECT_EQ(place.holds("图.dwg", "bytes"), GetParam().uploads > 0);
}

TEST_P(UploadJobCrashAt, losesNoModuleAndLeavesNothing)
{
    dieAndFinish(GetParam().name, "upload-module-dying " + localFile("门.vmd", "bytes"));
    EXPECT_EQ(modules("门"), std::vector<std::string>(GetParam().uploads, "bytes"));
}

// A file that was uploaded before its row went is uploaded again: a second dataset, or version of the module.
INSTANTIATE_TEST_SUITE_P(UploadJobCrash, UploadJobCrashAt,
                         testing::Values(Point{"submitted", 0}, Point{"copied", 0}, Point{"saved", 1}, Point{"run", 1}, Point{"upload", 1},
                                         Point{"uploaded", 2}, Point{"removed", 1}, Point{"end", 1}),
                         [](const auto& tested) { return std::string("the_point_") + tested.param.name; });

class TemplateJobCrashAt : public UploadJobCrash, public testing::WithParamInterface<Point>
{};

// Intended: that a job is one of a template is not saved. So what is killed before its end adds no template, and the next host, which takes
// it for a file without a folder, can do nothing with it but let it go.
TEST_P(TemplateJobCrashAt, leavesNothingAndAddsTheTemplateOnceOrNotAtAll)
{
    dieAndFinish(GetParam().name, "upload-template-dying " + localFile("样.dwt", "bytes"), false);
    ErrorCode error;
    std::vector<SamplePlate> templates;
    EXPECT_TRUE(ITemplateManager::Get()->GetAllTemplatesOfProject(L"p-1", templates, error));
    EXPECT_THAT(templates, SizeIs(GetParam().uploads));
    EXPECT_THAT(place.datasets("样.dwt"), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(UploadJobCrash, TemplateJobCrashAt,
                         testing::Values(Point{"submitted", 0}, Point{"copied", 0}, Point{"saved", 0}, Point{"run", 0}, Point{"upload", 0},
                                         Point{"uploaded", 1}, Point{"removed", 1}, Point{"end", 1}),
                         [](const auto& tested) { return std::string("the_point_") + tested.param.name; });

TEST_F(UploadJobCrash, aStrayCopyStaysWhileAProcessLivesThatMayHaveMadeIt)
{
    ChildProcess living(process());
    ASSERT_EQ(living.ask("upload " + localFile("first.dwg", "bytes")), "no"); // saved, but nobody runs it yet
    ChildProcess killed(process());
    ASSERT_EQ(killed.ask("die-at copied"), "yes");
    killed.tell("upload-dying " + localFile("stray.dwg", "bytes"));
    EXPECT_EQ(killed.wait(), ChildProcess::killed);
    EXPECT_EQ(copies(), 2u);
    finish();
    EXPECT_TRUE(place.holds("first.dwg", "bytes"));
    EXPECT_EQ(copies(), 1u);
    living.kill();
    finish();
    EXPECT_EQ(copies(), 0u);
    EXPECT_THAT(place.datasets("stray.dwg"), testing::IsEmpty());
}

TEST_F(UploadJobCrash, afterTheAdditionLosesNothing)
{
    ChildProcess host(process());
    ASSERT_EQ(host.ask("start"), "yes");
    ASSERT_EQ(host.ask("die-at added"), "yes");
    host.tell("upload-dying " + localFile("图.dwg", "bytes"));
    EXPECT_EQ(host.wait(), ChildProcess::killed);
    finish();
    EXPECT_TRUE(place.holds("图.dwg", "bytes"));
    EXPECT_LE(copies(), 1u);
}

TEST_F(UploadJobCrash, inTheMiddleOfAnUploadLosesNothing)
{
    platform::Fault stall;
    stall.kind = platform::FaultKind::Stall;
    stall.path = "/blobs/";
    stall.prefix = true;
    stall.method = "PUT";
    stall.bytes = 1 << 20;
    stall.ofRequest = true;
    stall.delayMilliseconds = 100000;
    const int fault = place.platform.faults().add(stall);
    const std::string bytes(3 << 20, 'x');
    const std::string path = localFile("图.dwg", bytes);
    std::vector<std::string> command = process();
    command.back() = place.platform.url(); // the gateway would take the whole file first
    ChildProcess host(command);
    ASSERT_EQ(host.ask("start"), "yes");
    ASSERT_EQ(host.ask("upload " + path), "yes");
    ASSERT_TRUE(waitUntil([&] { return place.platform.faults().count(fault) == 1; }));
    host.kill();
    EXPECT_THAT(rows(), SizeIs(1));
    finish();
    EXPECT_TRUE(place.holds("图.dwg", bytes));
    EXPECT_THAT(place.datasets("图.dwg"), SizeIs(1));
    EXPECT_EQ(copies(), 0u);
}

/// The host dies at every request of its life, one after the other.
class UploadJobCrashInRequests : public UploadJobCrash, public testing::WithParamInterface<Gateway::Moment>
{
protected:
    struct Life
    {
        bool isAccepted = false;
        bool isWhole = false;
    };

    /// One life of a host, which dies at a moment of a request.
    Life live(int request, const std::string& submission)
    {
        ChildProcess host(process());
        EXPECT_EQ(host.ask("start"), "yes");
        gateway.watch([=, &host](int number, Gateway::Moment moment) {
            const bool isLast = number == request && moment == GetParam();
            if (isLast)
                host.killSoon();
            return !isLast;
        });
        Life life;
        life.isAccepted = host.ask(submission) == "yes";
        host.ask("idle");
        if (gateway.requests() < request) {
            host.ask("stop");
            host.tell("leave");
        } // otherwise it is going to be killed, if it isn't yet
        life.isWhole = host.wait() == 0;
        return life;
    }

    using Prepare = std::function<void(const std::string& name)>;
    /// Whether the platform has the bytes of a file.
    using Holds = std::function<bool(const std::string& name, const std::string& bytes)>;

    int expectNothingLost(const std::string& submission, const Prepare& prepare)
    {
        return expectNothingLost(submission, prepare,
                                 [this](const std::string& name, const std::string& bytes) { return place.holds(name, bytes); });
    }
    /// submission: the command, less the path at its end.   Returns: how many requests there were.
    int expectNothingLost(const std::string& submission, const Prepare& prepare, const Holds& holds)
    {
        liveBefore();
        bool isOver = false;
        int request = 0;
        while (!isOver && request < 60 && !HasFailure()) {
            SCOPED_TRACE(++request);
            const std::string name = "图-" + std::to_string(request) + ".dwg";
            prepare(name);
            const std::string path = localFile(name, "bytes of " + name);
            const Life life = live(request, submission + ' ' + path);
            isOver = life.isWhole;
            const bool wasSaved = !rows().empty();
            finish();
            if (life.isAccepted || wasSaved) {
                EXPECT_TRUE(holds(name, "bytes of " + name));
            }
            EXPECT_EQ(copies(), 0u);
        }
        EXPECT_TRUE(isOver);
        return request - 1;
    }
};

TEST_P(UploadJobCrashInRequests, ofAnUploadNothingIsLost)
{
    EXPECT_EQ(expectNothingLost("upload", [](const std::string&) {}), 4);
    EXPECT_TRUE(place.holds("图-1.dwg", "bytes of 图-1.dwg"));
}

TEST_P(UploadJobCrashInRequests, ofAnUpdateWithADatasetNothingIsLost)
{
    const std::string model = place.addDataset("model");
    ASSERT_TRUE(place.addVersion(model));
    const int requests = expectNothingLost("upload-with " + model, [this](const std::string& name) { place.addDataset(name); });
    EXPECT_GT(requests, 6); // three or more for the listing, four for the job
    EXPECT_THAT(place.datasets("图-" + std::to_string(requests) + ".dwg"), SizeIs(1));
}

TEST_P(UploadJobCrashInRequests, ofAModuleNothingIsLost)
{
    const Holds holds = [this](const std::string& name, const std::string& bytes) {
        const std::vector<std::string> found = modules(name.substr(0, name.find('.')));
        return std::find(found.begin(), found.end(), bytes) != found.end();
    };
    EXPECT_EQ(expectNothingLost(
                  "upload-module", [](const std::string&) {}, holds),
              3);
    EXPECT_TRUE(holds("图-1.dwg", "bytes of 图-1.dwg"));
}

std::string nameOfMoment(const testing::TestParamInfo<Gateway::Moment>& tested)
{
    static const std::map<Gateway::Moment, std::string> names{
        {Gateway::Moment::asked, "asked"}, {Gateway::Moment::carriedOut, "carried_out"}, {Gateway::Moment::answered, "answered"}};
    return names.at(tested.param);
}

INSTANTIATE_TEST_SUITE_P(UploadJobCrash, UploadJobCrashInRequests,
                         testing::Values(Gateway::Moment::asked, Gateway::Moment::carriedOut, Gateway::Moment::answered), nameOfMoment);

TEST_F(UploadJobCrash, atEveryStepOfTheDatabaseNothingIsLost)
{
    bool isOver = false;
    int step = 0;
    std::size_t strays = 0;
    while (!isOver && step < 100 && !HasFailure()) {
        SCOPED_TRACE(++step);
        const std::string name = "图-" + std::to_string(step) + ".dwg";
        const std::string path = localFile(name, "bytes of " + name);
        bool isAccepted = false;
        {
            ChildProcess host(process());
            host.ask("die-at-step " + std::to_string(step));
            host.ask("start");
            isAccepted = host.ask("upload " + path) == "yes";
            host.ask("idle");
            host.ask("stop");
            host.tell("leave");
            isOver = host.wait() == 0;
        }
        finish();
        if (isAccepted) {
            EXPECT_TRUE(place.holds(name, "bytes of " + name));
        }
        // The copies of a database that never held a job stay until it has.
        EXPECT_LE(copies(), strays + 1);
        strays = copies();
    }
    EXPECT_TRUE(isOver);
    EXPECT_GT(step, 5);
    finish();
    EXPECT_EQ(copies(), 0u);
}

TEST_F(UploadJobCrash, atRandomInstantsNothingIsLost)
{
    const int kills = wantedKills();
    const std::vector<std::string> accepted = pouredByKilled(kills, process());
    finish();
    const std::multimap<std::string, std::string> contents = place.contents();
    for (const std::string& name : accepted) {
        std::string bytes;
        for (int n = 0; n < 10000; ++n)
            bytes += name;
        const auto [begin, end] = contents.equal_range(name);
        EXPECT_TRUE(std::any_of(begin, end, [&](const auto& entry) { return entry.second == bytes; })) << name;
    }
    EXPECT_FALSE(accepted.empty());
    EXPECT_EQ(copies(), 0u);
    std::cout << kills << " kills, " << accepted.size() << " files accepted, " << contents.size() << " datasets\n";
}

} // namespace
} // namespace orlo::test
