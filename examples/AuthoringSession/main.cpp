#include "Chapters.h"
#include "Host.h"
#include "Platform.h"
#include "SessionLog.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr const char* usage = R"(usage: AuthoringSession [--url URL] [--data DIR [--crash]]
  Lives a short day of an authoring application.
  --url URL    a local platform that runs already; without it, one is started here
  --data DIR   keeps everything in DIR, so that the next session finds it again; without it, nothing is kept
  --crash      kills the session in the middle of its uploads; the next one with the same DIR finishes them. Not with --url
)";

struct Arguments
{
    std::string url;  ///< empty for a platform of our own
    std::string data; ///< empty where nothing is kept
    bool crashes = false;

    bool makeSense() const { return !crashes || (url.empty() && !data.empty()); }
};

/// Nothing for arguments that make no sense.
std::optional<Arguments> readArguments(const std::vector<std::string>& words)
{
    Arguments arguments;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool hasValue = i + 1 < words.size() && !words[i + 1].empty();
        if (words[i] == "--crash")
            arguments.crashes = true;
        else if (words[i] == "--url" && hasValue)
            arguments.url = words[++i];
        else if (words[i] == "--data" && hasValue)
            arguments.data = words[++i];
        else
            return std::nullopt;
    }
    return arguments.makeSense() ? std::make_optional(arguments) : std::nullopt;
}

void live(const Arguments& arguments)
{
    using namespace session;
    Story story;
    story.title(L"A session of an authoring application");

    story.chapter(L"Setting up");
    const SessionFolder folder(arguments.data);
    const Platform platform(arguments.url, folder);
    setHostUp(platform.url(), folder.path(L"host"));
    story.say((platform.isOurOwn() ? L"Started a platform at " : L"Using the platform at ") + platform.url());
    signIn();
    story.say(L"Signed in as " + orlo::UserSession::GetInstance()->GetId());

    earlierJobs(story);
    const auto hospital = projects(story);
    folders(story, *hospital);
    spaces(story, *hospital);
    files(story, *hospital, platform, folder.path(L"drawings"));
    if (arguments.crashes)
        crashAmidJobs(story, *hospital, platform, folder.path(L"drawings"));
    jobs(story, *hospital, folder.path(L"drawings"));
    resources(story);
    failures(story);

    story.chapter(L"The end of the day");
    orlo::UserSession::SignOut();
    story.say(L"Signed out.");
}

} // namespace

int main(int argc, char** argv)
{
    const std::optional<Arguments> arguments = readArguments({argv + 1, argv + argc});
    if (!arguments) {
        std::cerr << usage;
        return 2;
    }
    const auto log = std::make_shared<session::SessionLog>();
    orlo::ILogManager::Install(log);
    try {
        live(*arguments);
        return 0;
    }
    catch (const std::exception& failure) {
        std::cerr << "The session failed: " << failure.what() << "\nThe library's log:\n";
        for (const std::wstring& line : log->lines())
            std::cerr << "  " << orlo::utils::toString(line) << "\n";
        return 1;
    }
}
