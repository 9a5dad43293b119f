#include "support/ChildProcess.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/Project.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <locale>

namespace orlo::test {
namespace {

/// Numbers as many hosts have them: a decimal comma, and points between the thousands.
class Comma : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};
class WideComma : public std::numpunct<wchar_t>
{
    wchar_t do_decimal_point() const override { return L','; }
    wchar_t do_thousands_sep() const override { return L'.'; }
    std::string do_grouping() const override { return "\3"; }
};

class StandardPropertiesLocaleTest : public WireTest
{
protected:
    void TearDown() override
    {
        std::locale::global(m_before);
        std::setlocale(LC_ALL, "C");
    }

    /// A German C locale: an installed one, or one that is made in the test's own folder.
    bool setGermanLocale()
    {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8"}) {
            if (std::setlocale(LC_ALL, name))
                return true;
        }
        const std::string folder = host.folder().path().string();
        const RunResult made = runInShell("localedef -i de_DE -f UTF-8 " + quoted(folder + "/de_DE.UTF-8"), ChildProcess::Errors::joined);
        return made.exitCode == 0 && ::setenv("LOCPATH", folder.c_str(), 1) == 0 && std::setlocale(LC_ALL, "de_DE.UTF-8");
    }

    void expectPointsOnTheWayIn()
    {
        server.expect("GET", "/v2/projects/p-1")
            .reply(
                200,
                R"({"code":10000,"data":{"standardProperties":[{"doubleValue":1234567.5},{"doubleValue":-0.25},{"intValue":1234567}]}})");
        Project project(L"p-1", L"", L"", L"", ProjectStatus{}, ProjectGridType{}, 0);
        std::vector<ProjectStandardProperty> out;
        EXPECT_TRUE(project.GetProjectStandardProperties(out, error));
        ASSERT_EQ(out.size(), 3u);
        EXPECT_EQ(out[0].value, L"1234567.500000");
        EXPECT_EQ(out[1].value, L"-0.250000");
        EXPECT_EQ(out[2].value, L"1234567");
    }

private:
    std::locale m_before;
};

TEST_F(StandardPropertiesLocaleTest, theGlobalLocaleOfCppChangesNothing)
{
    std::locale::global(std::locale(std::locale(std::locale::classic(), new Comma), new WideComma));
    expectPointsOnTheWayIn();
}

TEST_F(StandardPropertiesLocaleTest, aGermanLocaleOfCChangesNothing)
{
    if (!setGermanLocale())
        GTEST_SKIP() << "no German locale is installed, and none can be made here";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    expectPointsOnTheWayIn();
}

} // namespace
} // namespace orlo::test
