#include "support/ChildProcess.h"
#include "support/RawServer.h"
#include "support/ScriptedServer.h"
#include "support/TempFolder.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

class BridgeUnloadTest : public testing::Test
{
protected:
    std::vector<std::string> command(const std::string& url, const std::vector<std::string>& commands) const
    {
        std::vector<std::string> whole{BRIDGE_HOST, BRIDGE_PLUGIN, BRIDGE_LIBRARY, folder.path().string(), url};
        whole.insert(whole.end(), commands.begin(), commands.end());
        return whole;
    }

    /// What the host said, after its end without a fault.
    std::string said(const std::vector<std::string>& commands) const
    {
        const RunResult result = runProgram(command(server.url(), commands));
        EXPECT_EQ(result.exitCode, 0);
        return result.output;
    }

    TempFolder folder;
    ScriptedServer server;
};

TEST_F(BridgeUnloadTest, theBridgeIsThereFromLoadToUnload)
{
    EXPECT_EQ(said({"look", "load", "look", "unload", "look", "load", "look", "unload", "look", "load", "look"}), "no bridge, not loaded\n"
                                                                                                                  "bridge, loaded\n"
                                                                                                                  "no bridge, not loaded\n"
                                                                                                                  "bridge, loaded\n"
                                                                                                                  "no bridge, not loaded\n"
                                                                                                                  "bridge, loaded\n");
}

TEST_F(BridgeUnloadTest, aLibraryThatHasWorkedCanBeUnloadedAndLoadedAgain)
{
    server.always("GET", "/version/version-1/meta?key=AxisGridVersions").reply(200, "[1,2]");
    server.always("GET", "/projects?scenario=DEFAULT").reply(200, R"([{"id":"p-1"},{"id":"p-2"}])");
    EXPECT_EQ(said({"load", "set-up", "meta", "projects", "unload", "look", "load", "meta", "projects", "unload", "look"}),
              "\"[1,2]\"\n2 projects\nno bridge, not loaded\n\"[1,2]\"\n2 projects\nno bridge, not loaded\n");
}

TEST_F(BridgeUnloadTest, anErrorOutlivesTheLibrary)
{
    server.expect("GET", "/version/version-1/meta?key=AxisGridVersions").reply(403, "not yours");
    EXPECT_EQ(said({"load", "set-up", "meta", "unload", "look", "error", "load", "refused", "unload", "look", "error"}),
              "\"\"\nno bridge, not loaded\n-402653182 not yours\n"
              "no bridge, not loaded\n3892314113 projectId or familyId or familyVersion is empty\n");
}

TEST_F(BridgeUnloadTest, aTransferUnderWayGoesOnWhenTheLibraryIsUnloaded)
{
    RawServer slow(RawAnswer::stall("HTTP/1.1 500 Internal Server Error\r\nContent-Length: 0\r\n\r\n"));
    ChildProcess host(command(slow.url(), {"load", "set-up", "download", "unload", "look", "wait"}));
    EXPECT_EQ(host.readLine(), "bridge, loaded");
    EXPECT_TRUE(waitUntil([&] { return slow.requests().size() == 1; }));
    slow.release();
    host.tell("go on");
    EXPECT_EQ(host.wait(), 0);
}

TEST_F(BridgeUnloadTest, aJobGoesOnWhenTheLibraryIsUnloaded)
{
    std::ofstream(folder.path("drawing")) << "lines";
    RawServer busy(RawAnswer::bytes("HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\n\r\n"));
    ChildProcess host(command(busy.url(), {"load", "set-up", "job", "unload", "look", "wait"}));
    EXPECT_EQ(host.readLine(), "1");
    EXPECT_EQ(host.readLine(), "bridge, loaded");
    EXPECT_TRUE(waitUntil([&] { return !busy.requests().empty(); }));
    host.tell("go on");
    EXPECT_EQ(host.wait(), 0);
}

} // namespace
} // namespace orlo::test
