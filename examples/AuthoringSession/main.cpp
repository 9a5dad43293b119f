#include "Chapters.h"
#include "Host.h"
#include "Platform.h"
#include "SessionLog.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>
#include <string>

namespace {

constexpr const char* usage = R"(usage: AuthoringSession [--url URL] [--data DIR [--crash]]
  Lives a short day of an authoring application.
  --url URL    a local platform that runs already; without it, one is started here
  --data DIR   keeps everything in DIR, so that the next session finds it again; without it, the pictures alone are kept, with the
               data of your applications
  --crash      kills the session in the middle of its uploads; the next one with the same DIR finishes them. Not with --url
)";

constexpr int failed = 1;
constexpr int wrongArguments = 2;

struct Arguments
{
    std::string url;  ///< empty for a platform of our own
    std::string data; ///< empty where nothing is kept
    bool crashes = false;
};

/// Returns the exit code, where the program ends here: after the help, or because of wrong arguments.
std::optional<int> readArguments(int argc, const char* const* argv, Arguments& arguments)
{
    CLI::App app;
    app.formatter_fn([](const CLI::App*, const std::string&, CLI::AppFormatMode) { return usage; });
    app.failure_message(CLI::FailureMessage::help);
    const CLI::Validator filled([](const std::string& text) { return text.empty() ? "must not be empty" : ""; }, {});
    CLI::Option* const url = app.add_option("--url", arguments.url)->check(filled);
    CLI::Option* const data = app.add_option("--data", arguments.data)->check(filled);
    app.add_flag("--crash", arguments.crashes)->needs(data)->excludes(url);
    try {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : wrongArguments;
    }
    return std::nullopt;
}

void live(const Arguments& arguments)
{
    using namespace session;
    Story story;
    story.title(L"A session of an authoring application");

    story.chapter(L"Setting up");
    const SessionFolder folder(arguments.data);
    Pictures pictures(folder.pictures());
    const Platform platform(arguments.url, folder);
    setHostUp(platform.url(), folder.path(L"host"));
    story.say((platform.isOurOwn() ? L"Started a platform at " : L"Using the platform at ") + platform.url());
    signIn();
    story.say(L"Signed in as " + orlo::UserSession::GetInstance()->GetId());

    earlierJobs(story);
    const auto hospital = projects(story);
    folders(story, *hospital);
    spaces(story, *hospital, pictures);
    design(story, *hospital, pictures);
    permissions(story, *hospital, platform);
    files(story, *hospital, platform, folder.path(L"drawings"));
    teamwork(story, *hospital, platform);
    if (arguments.crashes)
        crashAmidJobs(story, *hospital, platform, folder.path(L"drawings"));
    jobs(story, *hospital, folder.path(L"drawings"));
    libraries(story, *hospital, platform, folder.path(L"drawings"));
    resources(story);
    failures(story);

    story.chapter(L"The end of the day");
    orlo::UserSession::SignOut();
    story.say(L"Signed out.");
    story.say(L"Pictures of the day, for a browser:");
    for (const std::wstring& path : pictures.paths())
        story.say(L"  " + path);
}

} // namespace

int main(int argc, char** argv)
{
    const auto log = std::make_shared<session::SessionLog>();
    try {
        Arguments arguments;
        if (const std::optional<int> exitCode = readArguments(argc, argv, arguments))
            return *exitCode;
        orlo::ILogManager::Install(log);
        live(arguments);
        return 0;
    }
    catch (const std::exception& failure) {
        std::cerr << "The session failed: " << failure.what() << "\nThe library's log:\n";
        for (const std::wstring& line : log->lines())
            std::cerr << "  " << orlo::utils::toString(line) << "\n";
        return failed;
    }
}
