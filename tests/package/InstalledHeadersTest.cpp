#include "support/ChildProcess.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>

// Which headers a host finds in an install tree, and that each stands by itself there.
namespace {

namespace fs = std::filesystem;
using orlo::test::ChildProcess;
using orlo::test::quoted;
using orlo::test::readFile;
using orlo::test::runInShell;
using orlo::test::runProgram;
using orlo::test::RunResult;
using orlo::test::TempFolder;

using Names = std::set<std::string>;

Names headersBelow(const fs::path& folder)
{
    Names names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".h")
            names.insert(entry.path().lexically_relative(folder).generic_u8string());
    return names;
}

Names listedHeaders()
{
    Names names;
    std::istringstream list(HOST_HEADERS);
    for (std::string name; std::getline(list, name, '|');)
        names.insert(name);
    return names;
}

class InstalledHeaders : public testing::Test
{
protected:
    void SetUp() override
    {
        const RunResult install =
            runProgram({CMAKE_PROGRAM, "--install", BUILD_TREE, "--prefix", m_folder.path().string()}, ChildProcess::Errors::joined);
        ASSERT_EQ(0, install.exitCode) << install.output;
    }

    fs::path includes() const { return m_folder.path("include"); }

    /// Each header in a source of its own, twice, for its guard; a few compilers at once.
    RunResult compileAlone(const Names& headers) const
    {
        fs::create_directories(m_folder.path("alone"));
        for (const std::string& header : headers) {
            std::string name = header;
            std::replace(name.begin(), name.end(), '/', '_');
            orlo::test::writeFile(m_folder.path("alone") / (name + ".cpp"), "#include <" + header + ">\n#include <" + header + ">\n");
        }
        const std::string compile = quoted(CXX_COMPILER) + " -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I " +
                                    quoted(includes().string()) + " " + quoted("{}");
        return runInShell("cd " + quoted(m_folder.path("alone").string()) + " && ls | xargs -P " +
                              std::to_string(std::max(1U, std::thread::hardware_concurrency())) + " -I {} " + compile,
                          ChildProcess::Errors::joined);
    }

private:
    TempFolder m_folder;
};

TEST_F(InstalledHeaders, areThoseOfTheFaceAndTheListedOnesOfTheSupportLibraries)
{
    Names expected = listedHeaders();
    ASSERT_GE(expected.size(), 25u);
    const Names face = headersBelow(fs::path(SOURCE_TREE) / "include");
    expected.insert(face.begin(), face.end());
    EXPECT_EQ(expected, headersBelow(includes()));
}

TEST_F(InstalledHeaders, includeNothingOfOursThatIsNotInstalled)
{
    const Names installed = headersBelow(includes());
    for (const std::string& header : installed) {
        std::istringstream text(readFile(includes() / header));
        for (std::string line; std::getline(text, line);) {
            const bool isOurs = line.rfind("#include <BaseCommon/", 0) == 0 || line.rfind("#include <Orlo", 0) == 0;
            EXPECT_NE(line.rfind("#include \"", 0), 0u) << header << ": " << line;
            if (isOurs) {
                EXPECT_EQ(installed.count(line.substr(10, line.find('>') - 10)), 1u) << header << ": " << line;
            }
        }
    }
}

TEST_F(InstalledHeaders, compileAlone)
{
    const RunResult run = compileAlone(headersBelow(includes()));
    EXPECT_EQ(0, run.exitCode) << run.output;
}

TEST_F(InstalledHeaders, areMissedWhereTheyAreNotThere)
{
    EXPECT_NE(0, compileAlone({"BaseCommon/Platform.h"}).exitCode) << "the compiler looks into the source tree";
}

} // namespace
