#include "support/ChildProcess.h"
#include "support/DemoPlatform.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

// What `cmake --install` hands to hosts, tried as a host would.
namespace {

namespace fs = std::filesystem;
using orlo::test::ChildProcess;
using orlo::test::DemoPlatform;
using orlo::test::quoted;
using orlo::test::readFile;
using orlo::test::runInShell;
using orlo::test::runProgram;
using orlo::test::RunResult;
using orlo::test::TempFolder;
using testing::HasSubstr;
using testing::Not;

class Package : public testing::Test
{
protected:
    void SetUp() override
    {
        const fs::path first = m_folder.path() / "first";
        const RunResult install =
            runProgram({CMAKE_PROGRAM, "--install", BUILD_TREE, "--prefix", first.string()}, ChildProcess::Errors::joined);
        ASSERT_EQ(0, install.exitCode) << install.output;
        fs::rename(first, prefix()); // an install tree may be moved
        fs::copy(CONSUMER, host());
    }

    fs::path prefix() const { return m_folder.path() / "moved prefix"; }
    fs::path libraries() const { return prefix() / LIBRARY_FOLDER; }
    fs::path headers() const { return prefix() / "include"; }
    fs::path host() const { return m_folder.path() / "host"; }

    /// Runs commands of the shell in the folder of the host.
    RunResult inHost(const std::string& commands) const
    {
        return runInShell("cd " + quoted(host().string()) + " && export CMAKE_GENERATOR=Ninja CXXFLAGS=" + quoted(CONSUMER_FLAGS) + " && " +
                              commands,
                          ChildProcess::Errors::joined);
    }

    void expectHostWorks(const std::string& command) const
    {
        DemoPlatform platform;
        platform.change(orlo::platform::addProject, {"滨江医院一期", "demo-account"});
        const RunResult run = inHost(command + " " + platform.url() + " local");
        EXPECT_EQ(0, run.exitCode);
        EXPECT_THAT(run.output, HasSubstr("滨江医院一期\nno-such-project: refused with status 404\n"));
    }

private:
    TempFolder m_folder;
};

TEST_F(Package, BuildsAndRunsAHostThroughFindPackage)
{
    // The package may lean on nothing that a host doesn't have.
    const RunResult build = inHost(quoted(CMAKE_PROGRAM) + " -S . -B build -DCMAKE_PREFIX_PATH=" + quoted(prefix().string()) +
                                   " -DCMAKE_DISABLE_FIND_PACKAGE_cpprestsdk=ON -DCMAKE_DISABLE_FIND_PACKAGE_RapidJSON=ON"
                                   " -DCMAKE_DISABLE_FIND_PACKAGE_OpenSSL=ON -DCMAKE_DISABLE_FIND_PACKAGE_spdlog=ON && " +
                                   quoted(CMAKE_PROGRAM) + " --build build");
    ASSERT_EQ(0, build.exitCode) << build.output;
    expectHostWorks("build/SmallHost");
}

TEST_F(Package, BuildsAndRunsAHostThroughPkgConfig)
{
    // pkg-config would escape the blank in the prefix for make; a plain shell line needs a prefix without one.
    const fs::path plain = host() / "prefix";
    fs::rename(prefix(), plain);
    const fs::path folder = plain / LIBRARY_FOLDER;
    const RunResult build = inHost("PKG_CONFIG_PATH=" + quoted((folder / "pkgconfig").string()) + " sh -e build.sh");
    ASSERT_EQ(0, build.exitCode) << build.output;
    expectHostWorks("LD_LIBRARY_PATH=" + quoted(folder.string()) + " ./SmallHost");
}

TEST_F(Package, LibrariesFindEachOtherWithoutHelp)
{
    for (const char* library : {"ProjectManager", "Common", "Logging", "Auth", "Network", "JobManager"}) {
        const fs::path file = libraries() / (std::string("libOrlo") + library + ".so");
        const RunResult run = runProgram({"env", "-u", "LD_LIBRARY_PATH", "ldd", file.string()});
        EXPECT_EQ(0, run.exitCode) << library;
        EXPECT_THAT(run.output, HasSubstr("libBaseCommon.so.0 => " + libraries().string())) << library;
        EXPECT_THAT(run.output, Not(HasSubstr("not found"))) << library;
    }
}

TEST_F(Package, RefusesAHostThatWantsALaterVersion)
{
    const std::string file = (host() / "CMakeLists.txt").string();
    orlo::test::writeFile(file,
                          "cmake_minimum_required(VERSION 3.16)\nproject(Late NONE)\nfind_package(OrloProjectManager 0.2 REQUIRED)\n");
    const RunResult run = inHost(quoted(CMAKE_PROGRAM) + " -S . -B build -DCMAKE_PREFIX_PATH=" + quoted(prefix().string()));
    EXPECT_NE(0, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("version: 0.1.0"));
}

TEST_F(Package, HoldsEveryHeaderOfTheFace)
{
    const fs::path face = fs::path(SOURCE_TREE) / "include";
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(face)) {
        if (!entry.is_regular_file())
            continue;
        ++count;
        EXPECT_TRUE(fs::exists(headers() / entry.path().lexically_relative(face))) << entry.path();
    }
    EXPECT_GT(count, 10u);
}

TEST_F(Package, KeepsTheHeadersOfForeignLibrariesAway)
{
    for (const char* header : {"OrloNetwork/NetworkCommon.h", "BaseCommon/Text.h", "OrloJobManager/IJobManager.h"})
        EXPECT_TRUE(fs::exists(headers() / header)) << header;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(headers())) {
        if (entry.is_regular_file()) {
            EXPECT_THAT(readFile(entry.path()), Not(HasSubstr("#include <cpprest/"))) << entry.path();
            EXPECT_THAT(readFile(entry.path()), Not(HasSubstr("#include <spdlog/"))) << entry.path();
        }
    }
    EXPECT_FALSE(fs::exists(headers() / "BaseCommon/Platform.h"));
}

TEST_F(Package, NamesNoFolderOfTheBuild)
{
    for (const fs::path& folder : {libraries() / "cmake/OrloProjectManager", libraries() / "pkgconfig"})
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            EXPECT_THAT(readFile(entry.path()), Not(HasSubstr(SOURCE_TREE))) << entry.path();
            EXPECT_THAT(readFile(entry.path()), Not(HasSubstr("/first/"))) << entry.path();
        }
}

} // namespace
