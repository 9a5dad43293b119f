// Who may include whom. Calls and includes run down, never up.

#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

/// What lies below a folder of the tree, and below which others the files lie that it may include.
struct Room
{
    std::string folder;
    std::vector<std::string> reaches;
};

const std::string face = "include/OrloProjectManager/";
const std::string top = "source/OrloProjectManager/";
const std::string frame = "source/OrloProjectManager/Frame/";
const std::string web = "source/OrloProjectManager/NetworkProject/";
const std::string ground = "sdk-base/source/";
const std::string base = "sdk-base/source/BaseCommon/";
const std::string common = "sdk-base/source/OrloCommon/";
const std::string logging = "sdk-base/source/OrloLogging/";
const std::string auth = "sdk-base/source/OrloAuth/";
const std::string network = "sdk-base/source/OrloNetwork/";
const std::string jobs = "sdk-base/source/OrloJobManager/";
const std::string platform = "tools/LocalPlatform/";

/// A file belongs to the last room whose folder it lies in; each may include its own.
const std::vector<Room>& rooms()
{
    static const std::vector<Room> rooms{
        {base, {}},
        {common, {base}},
        {logging, {base}},
        {auth, {base, logging}},
        {network, {base, common, logging, auth}},
        {jobs, {base, logging, auth}},
        {face, {base}},
        {top, {face, frame, web, ground}},
        {frame, {face, web, ground}},
        {web, {face, ground}},
        // It reads what the client sends with a stack of its own.
        {platform, {platform + "Routes/", platform + "Server/", platform + "Store/"}},
        {platform + "Routes/", {platform, platform + "Server/", platform + "Store/"}},
        {platform + "Server/", {platform + "Store/", platform}},
        {platform + "Store/", {platform + "Server/", platform}},
    };
    return rooms;
}

bool liesBelow(const std::string& file, const std::string& folder)
{
    return file.rfind(folder, 0) == 0;
}

const Room* roomOf(const std::string& file)
{
    const auto found = std::find_if(rooms().rbegin(), rooms().rend(), [&](const Room& room) { return liesBelow(file, room.folder); });
    return found == rooms().rend() ? nullptr : &*found;
}

bool mayReach(const Room& from, const std::string& file)
{
    const Room* const to = roomOf(file);
    if (!to || to == &from)
        return true;
    return std::any_of(from.reaches.begin(), from.reaches.end(),
                       [&](const std::string& folder) { return folder == to->folder || (folder == ground && liesBelow(file, ground)); });
}

/// The file of the tree that an include leads to; empty for one of the system.
std::string target(const fs::path& root, const fs::path& file, const std::string& directive)
{
    const std::size_t begin = directive.find_first_of("<\"");
    if (begin == std::string::npos)
        return {};
    const std::string name = directive.substr(begin + 1, directive.find_first_of(">\"", begin + 1) - begin - 1);
    std::vector<fs::path> candidates;
    if (directive[begin] == '"')
        candidates.push_back(file.parent_path() / name);
    for (const char* folder : {"include", "source", "sdk-base/source", "tools"})
        candidates.push_back(root / folder / name);
    for (const fs::path& candidate : candidates) {
        if (fs::is_regular_file(candidate))
            return candidate.lexically_normal().lexically_relative(root).generic_u8string();
    }
    return {};
}

struct Look
{
    std::size_t includes = 0; ///< those that lead to files of the tree
    std::vector<std::string> offenders;
};

Look lookAt(const fs::path& root)
{
    Look look;
    for (const char* folder : {"include", "source", "sdk-base", "tools"}) {
        if (!fs::exists(root / folder))
            continue;
        for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
            const std::string file = entry.path().lexically_relative(root).generic_u8string();
            const Room* const room = roomOf(file);
            const fs::path extension = entry.path().extension();
            if (!room || (extension != ".h" && extension != ".cpp"))
                continue;
            std::istringstream text(readFile(entry.path()));
            for (std::string line; std::getline(text, line);) {
                const std::string reached = line.rfind("#include", 0) == 0 ? target(root, entry.path(), line) : std::string();
                look.includes += reached.empty() ? 0 : 1;
                if (!reached.empty() && !mayReach(*room, reached))
                    look.offenders.push_back(file + " -> " + reached);
            }
        }
    }
    std::sort(look.offenders.begin(), look.offenders.end());
    return look;
}

TEST(Floors, noIncludeRunsUp)
{
    const Look look = lookAt(fs::u8path(ORLO_SOURCE_ROOT));
    EXPECT_THAT(look.offenders, IsEmpty());
    EXPECT_GT(look.includes, 900U) << "the tree was not found";
}

TEST(Floors, anIncludeThatRunsUpIsFound)
{
    const TempFolder folder;
    const auto make = [&](const std::string& file, const std::string& text) {
        fs::create_directories(folder.path(file).parent_path());
        writeFile(folder.path(file), text);
    };
    make("include/OrloProjectManager/Teams/Face.h", "#include <OrloProjectManager/Frame/CallFrame.h>\n#include <BaseCommon/Text.h>\n");
    make("source/OrloProjectManager/Frame/CallFrame.h", "#include <string>\n#include \"../NetworkProject/Web.h\"\n");
    make("source/OrloProjectManager/Frame/Retried.h", "#include \"../Teams/Team.h\"\n");
    make("source/OrloProjectManager/NetworkProject/Web.h", "#include \"../Frame/CallFrame.h\"\n#include <OrloNetwork/WebRequest.h>\n");
    make("source/OrloProjectManager/NetworkProject/Teams/TeamWeb.cpp", "#include \"../../Teams/Team.h\"\n");
    make("source/OrloProjectManager/Teams/Team.h", "#include \"../Frame/CallFrame.h\"\n#include <BaseCommon/Text.h>\n");
    make("sdk-base/source/BaseCommon/Text.h", "#include <OrloNetwork/WebRequest.h>\n");
    make("sdk-base/source/OrloNetwork/WebRequest.h", "#include <OrloProjectManager/Teams/Face.h>\n#include <BaseCommon/Text.h>\n");
    make("tools/LocalPlatform/Store/Store.h", "#include \"../Routes/Routes.h\"\n#include <BaseCommon/Text.h>\n");
    make("tools/LocalPlatform/Routes/Routes.h", "#include \"../Server/Router.h\"\n");
    make("tools/LocalPlatform/Server/Router.h", "#include <vector>\n");
    EXPECT_THAT(lookAt(folder.path("")).offenders,
                ElementsAre("include/OrloProjectManager/Teams/Face.h -> source/OrloProjectManager/Frame/CallFrame.h",
                            "sdk-base/source/BaseCommon/Text.h -> sdk-base/source/OrloNetwork/WebRequest.h",
                            "sdk-base/source/OrloNetwork/WebRequest.h -> include/OrloProjectManager/Teams/Face.h",
                            "source/OrloProjectManager/Frame/Retried.h -> source/OrloProjectManager/Teams/Team.h",
                            "source/OrloProjectManager/NetworkProject/Teams/TeamWeb.cpp -> source/OrloProjectManager/Teams/Team.h",
                            "source/OrloProjectManager/NetworkProject/Web.h -> source/OrloProjectManager/Frame/CallFrame.h",
                            "tools/LocalPlatform/Store/Store.h -> sdk-base/source/BaseCommon/Text.h",
                            "tools/LocalPlatform/Store/Store.h -> tools/LocalPlatform/Routes/Routes.h"));
}

} // namespace
} // namespace orlo::test
