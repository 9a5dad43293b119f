#include "PlatformFixture.h"

#include <stdexcept>

namespace orlo::platform::test {
namespace {

using Change = PlatformTest;

TEST_F(Change, IsOneTransactionOfSeveralSeeds)
{
    const std::string font = platform.change([](World& world) {
        addFile(world, "a.bin", "bytes");
        return addFont(world, {addProject(world, {"Tower", "demo-account"}), "F", "glyphs"});
    });
    EXPECT_EQ(platform.ask(contentOf, "a.bin"), "bytes");
    const std::string projectId = jsonText(demo().get("/projects").body, "0.id");
    EXPECT_EQ(jsonText(demo().get("/style-family/font/project/list/" + projectId).body, "data.0.id"), font);
}

TEST_F(Change, ThatThrowsLeavesNothingInTheTables)
{
    const auto fail = [](World& world) {
        addProject(world, {"Tower", "demo-account", "p1"});
        addFile(world, "a.bin", "bytes");
        throw std::logic_error("thought better of it");
    };
    EXPECT_THROW(platform.change(fail), std::logic_error);
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 404);
    EXPECT_TRUE(platform.ask(storedFiles).empty());
    EXPECT_EQ(project("p1"), "p1");
}

} // namespace
} // namespace orlo::platform::test
