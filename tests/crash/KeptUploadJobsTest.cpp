#include "UploadJobHosts.h"

#include <atomic>

// Hosts that keep what may succeed later are killed, start again without a network, and end amid their pauses.
namespace orlo::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class KeptUploadJobHosts : public UploadJobHosts
{
protected:
    /// A host whose platform is out of reach.
    std::vector<std::string> offlineProcess() const
    {
        std::vector<std::string> command = process();
        command.back() = "http://127.0.0.1:1";
        return command;
    }
    /// How many of the jobs have failed and are kept.
    std::size_t kept() const
    {
        const std::filesystem::path database = std::filesystem::u8path(process()[1]) / "Jobs/jobs.db";
        if (sqlTexts(database, "SELECT 1 FROM sqlite_master WHERE name = 'kept'").empty())
            return 0;
        return sqlTexts(database, "SELECT rank FROM kept WHERE attempts > 0").size();
    }
    bool isUploaded(int number) const
    {
        const std::string name = "plan" + std::to_string(number);
        return place.holds(name, name);
    }
    int uploaded() const
    {
        int count = 0;
        for (int i = 0; i < 20; ++i)
            count += isUploaded(i) ? 1 : 0;
        return count;
    }
};

TEST_F(KeptUploadJobHosts, allFilesSurviveAStartWithoutANetwork)
{
    // The fifth upload doesn't come back before all are handed over; then the host is killed.
    std::atomic<bool> areHandedOver{false};
    {
        ChildProcess host(process());
        ASSERT_EQ(host.ask("start 1"), "yes");
        gateway.watch([&](int number, Gateway::Moment) { return number <= 16 || waitUntil([&] { return areHandedOver.load(); }); });
        ASSERT_EQ(host.ask("upload-many 20 plan"), "20");
        ASSERT_TRUE(waitUntil([&] { return gateway.requests() > 16; }));
        host.killSoon();
        areHandedOver = true;
        host.kill();
    }
    gateway.watch(nullptr);
    ASSERT_EQ(uploaded(), 4);
    ASSERT_THAT(rows(), SizeIs(16));

    {
        ChildProcess offline(offlineProcess());
        ASSERT_EQ(offline.ask("start-keeping 200"), "yes");
        ASSERT_TRUE(waitUntil([&] { return kept() == 16; }));
        EXPECT_THAT(rows(), SizeIs(16));
        EXPECT_THAT(copiesOfRows(), SizeIs(16));
        offline.kill();
    }

    gateway.watch([](int, Gateway::Moment) { return false; });
    ChildProcess next(process());
    ASSERT_EQ(next.ask("start-keeping 200"), "yes");
    ASSERT_TRUE(waitUntil([&] { return gateway.requests() >= 16; }, std::chrono::seconds(60)));
    EXPECT_THAT(rows(), SizeIs(16));
    gateway.watch(nullptr); // the platform is back
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }, std::chrono::seconds(60)));
    EXPECT_EQ(next.ask("stop"), "yes");
    EXPECT_EQ(uploaded(), 20);
    EXPECT_EQ(copies(), 0u);
}

TEST_F(KeptUploadJobHosts, withTheConditionNoneIsEvenStartedWithoutANetwork)
{
    ChildProcess host(offlineProcess());
    ASSERT_EQ(host.ask("start-online"), "yes");
    ASSERT_EQ(host.ask("upload-many 5 plan"), "5");
    EXPECT_EQ(host.ask("idle"), "yes");
    EXPECT_EQ(host.ask("error"), "-") << "nothing was tried";
    EXPECT_EQ(host.ask("stop"), "yes");
    EXPECT_THAT(copiesOfRows(), SizeIs(5));
    ChildProcess next(process());
    ASSERT_EQ(next.ask("start-online"), "yes");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }, std::chrono::seconds(60)));
    EXPECT_EQ(next.ask("stop"), "yes");
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(isUploaded(i)) << i;
}

TEST_F(KeptUploadJobHosts, aHostMayEndAmidThePauses)
{
    for (const char* const end : {"leave", "exit-elsewhere"}) {
        SCOPED_TRACE(end);
        ChildProcess host(offlineProcess());
        ASSERT_EQ(host.ask("start-keeping 3600000"), "yes");
        ASSERT_EQ(host.ask("upload-many 3 plan"), "3");
        ASSERT_TRUE(waitUntil([&] { return host.ask("idle") == "yes"; }));
        host.tell(end);
        EXPECT_EQ(host.wait(), 0);
    }
    EXPECT_THAT(copiesOfRows(), SizeIs(6));
    finish();
    EXPECT_EQ(copies(), 0u);
}

TEST_F(KeptUploadJobHosts, aHostMayEndWhileTheConditionIsAsked)
{
    ChildProcess host(offlineProcess());
    ASSERT_EQ(host.ask("start-online"), "yes");
    ASSERT_EQ(host.ask("upload-many 3 plan"), "3");
    host.tell("exit-elsewhere");
    EXPECT_EQ(host.wait(), 0);
    EXPECT_THAT(copiesOfRows(), SizeIs(3));
}

} // namespace
} // namespace orlo::test
