#include "UploadJobHosts.h"

#include <cstdlib>
#include <future>
#include <map>
#include <set>

// A host leaves in every way there is while its files are on their way. What it had handed over is on the platform, or has its row and its
// copy, and the next host does it.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

/// A way of leaving: what the host is told, one line after the other, behind its start. The last line ends it.
struct Way
{
    const char* name;
    const char* start;
    std::vector<std::string> lines;
};

const std::vector<Way> ways = {
    {"returnsFromMain", "start", {"leave"}},
    {"exitsOnAnotherThread", "start", {"exit-elsewhere"}},
    {"stopsImpatientlyAndReturns", "start-impatient", {"stop", "leave"}},
    {"stopsImpatientlyAndSignsOut", "start-impatient", {"stop", "sign-out", "leave"}},
    {"signsOutWhileStopWaits", "start", {"stop-and-sign-out", "leave"}},
};

/// Tells a host to go, and waits until it has.   Returns: its exit code.
int leave(ChildProcess& host, const Way& way)
{
    for (std::size_t i = 0; i + 1 < way.lines.size(); ++i)
        host.ask(way.lines[i]);
    host.tell(way.lines.back());
    return host.wait();
}

/// Told once, by a thread that may still be telling when the test is over.
class Signal
{
public:
    void give() const { m_promise->set_value(); }
    bool comes() const { return m_future.wait_for(std::chrono::seconds(20)) == std::future_status::ready; }
    void wait() const { m_future.wait(); }

private:
    std::shared_ptr<std::promise<void>> m_promise = std::make_shared<std::promise<void>>();
    std::shared_future<void> m_future = m_promise->get_future().share();
};

/// Holds a request up at a moment, for as long as the test wants.
class Barrier
{
public:
    Gateway::Watch at(int request, Gateway::Moment moment) const
    {
        return [reached = m_reached, opened = m_opened, request, moment](int number, Gateway::Moment now) {
            if (number != request || now != moment)
                return true;
            reached.give();
            opened.wait();
            return false;
        };
    }
    bool isReached() const { return m_reached.comes(); }
    void open() const { m_opened.give(); }

private:
    Signal m_reached;
    Signal m_opened;
};

/// The requests of an upload.
enum Request { authority = 1, put, dataset, version };

class UploadJobExit : public UploadJobHosts
{
protected:
    /// The job is as it was handed over, and the next host carries it out.
    void expectTheJobIsThereAndGoesOn()
    {
        EXPECT_THAT(copiesOfRows(), ElementsAre("图.dwg"));
        finish();
        EXPECT_TRUE(place.holds("图.dwg", "bytes"));
        EXPECT_EQ(copies(), 0u);
    }
};

class UploadJobExitIn : public UploadJobExit, public testing::WithParamInterface<std::tuple<Way, Request, Gateway::Moment>>
{};

TEST_P(UploadJobExitIn, aRequestLosesNothing)
{
    const auto& [way, request, moment] = GetParam();
    ChildProcess host(process());
    ASSERT_EQ(host.ask("projects"), "yes"); // what the request has made goes after the job manager's
    Barrier barrier;
    gateway.watch(barrier.at(request, moment));
    ASSERT_EQ(host.ask(way.start), "yes");
    ASSERT_EQ(host.ask("upload " + localFile("图.dwg", "bytes")), "yes");
    ASSERT_TRUE(barrier.isReached());
    if (way.lines.front() == "stop-and-sign-out") { // it waits for the answer, which comes without a user
        host.tell("stop-and-sign-out");
        barrier.open();
        host.tell("leave");
        EXPECT_EQ(host.wait(), 0);
    }
    else {
        EXPECT_EQ(leave(host, way), 0);
        barrier.open();
    }
    expectTheJobIsThereAndGoesOn();
}

std::string nameOf(const testing::TestParamInfo<std::tuple<Way, Request, Gateway::Moment>>& tested)
{
    static const std::map<Request, std::string> requests{
        {authority, "TheAuthority"}, {put, "ThePut"}, {dataset, "TheDataset"}, {version, "TheVersion"}};
    const auto& [way, request, moment] = tested.param;
    return way.name + ("In" + requests.at(request)) + (moment == Gateway::Moment::asked ? "Asked" : "CarriedOut");
}

INSTANTIATE_TEST_SUITE_P(UploadJobExit, UploadJobExitIn,
                         testing::Combine(testing::ValuesIn(ways), testing::Values(authority, put, dataset, version),
                                          testing::Values(Gateway::Moment::asked, Gateway::Moment::carriedOut)),
                         nameOf);

/// The way alone, for what takes no request along.
class UploadJobExitWay : public UploadJobExit, public testing::WithParamInterface<Way>
{};

TEST_P(UploadJobExitWay, betweenTwoRequestsLosesNothing)
{
    for (const Request request : {authority, put, dataset}) {
        SCOPED_TRACE(request);
        const std::string name = "图-" + std::to_string(request) + ".dwg";
        ChildProcess host(process());
        const Signal answered;
        gateway.watch([answered, request](int number, Gateway::Moment moment) {
            if (number == request && moment == Gateway::Moment::answered)
                answered.give();
            return true;
        });
        ASSERT_EQ(host.ask(GetParam().start), "yes");
        ASSERT_EQ(host.ask("upload " + localFile(name, "bytes")), "yes");
        ASSERT_TRUE(answered.comes());
        EXPECT_EQ(leave(host, GetParam()), 0);
        finish();
        EXPECT_TRUE(place.holds(name, "bytes"));
        EXPECT_EQ(copies(), 0u);
    }
}

TEST_P(UploadJobExitWay, inThePauseBeforeARepetitionLosesNothing)
{
    for (const Request request : {authority, put, dataset, version}) {
        SCOPED_TRACE(request);
        const std::string name = "图-" + std::to_string(request) + ".dwg";
        ChildProcess host(process());
        const Signal dropped;
        gateway.watch([dropped, request](int number, Gateway::Moment moment) {
            if (number == request && moment == Gateway::Moment::asked)
                dropped.give();
            return number < request;
        });
        ASSERT_EQ(host.ask("pause-long"), "yes");
        ASSERT_EQ(host.ask(GetParam().start), "yes");
        ASSERT_EQ(host.ask("upload " + localFile(name, "bytes")), "yes");
        ASSERT_TRUE(dropped.comes());
        if (GetParam().lines.front() != "stop-and-sign-out") { // that would wait for the end of the pause
            EXPECT_EQ(leave(host, GetParam()), 0);
            EXPECT_THAT(copiesOfRows(), ElementsAre(name));
        }
        host.kill();
        finish();
        EXPECT_TRUE(place.holds(name, "bytes"));
    }
}

INSTANTIATE_TEST_SUITE_P(UploadJobExit, UploadJobExitWay, testing::ValuesIn(ways),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// How often the hosts leave: as often as ORLO_EXITS says, or 3 times for each way and order.
int wantedExits()
{
    const char* const wanted = std::getenv("ORLO_EXITS");
    return wanted ? std::atoi(wanted) : 3;
}

/// Whether the first request comes before the job manager starts.
enum class Order { startFirst, requestFirst };

class UploadJobExits : public UploadJobHosts, public testing::WithParamInterface<std::tuple<Way, Order>>
{
protected:
    /// One life of a host.
    void live(const std::string& head, std::set<std::string>& accepted)
    {
        constexpr int files = 60;
        const auto& [way, order] = GetParam();
        ChildProcess host(process());
        if (order == Order::requestFirst) {
            ASSERT_EQ(host.ask("projects"), "yes");
        }
        ASSERT_EQ(host.ask(way.start), "yes");
        ASSERT_EQ(host.ask("upload-many " + std::to_string(files) + " " + head), std::to_string(files));
        for (int i = 0; i < files; ++i)
            accepted.insert(head + std::to_string(i));
        ASSERT_EQ(leave(host, way), 0);
    }

    /// By their names, with the right bytes.
    std::set<std::string> filesOnThePlatform() const
    {
        std::set<std::string> names;
        for (const auto& [name, bytes] : place.contents()) {
            EXPECT_EQ(name, bytes);
            names.insert(name);
        }
        return names;
    }
};

TEST_P(UploadJobExits, loseNothingThatWasAccepted)
{
    std::set<std::string> accepted;
    for (int i = 0; i < wantedExits() && !HasFailure(); ++i) {
        live("plan-" + std::to_string(i) + "-", accepted);
        EXPECT_THAT(copiesOfRows(), SizeIs(rows().size()));
    }
    finish();
    EXPECT_EQ(filesOnThePlatform(), accepted);
    EXPECT_EQ(copies(), 0u);
}

INSTANTIATE_TEST_SUITE_P(UploadJobExit, UploadJobExits,
                         testing::Combine(testing::ValuesIn(ways), testing::Values(Order::startFirst, Order::requestFirst)),
                         [](const auto& tested) {
                             return std::get<0>(tested.param).name +
                                    std::string(std::get<1>(tested.param) == Order::startFirst ? "StartFirst" : "RequestFirst");
                         });

} // namespace
} // namespace orlo::test
