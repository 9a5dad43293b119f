#include "Chapters.h"
#include "Host.h"
#include "Platform.h"
#include "SessionLog.h"
#include "Trace.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>
#include <string>

namespace {

constexpr const char* usage = R"(usage: AuthoringSession [--url URL] [--data DIR [--crash]] [--explain] [--trace FILE]
  Lives a short day of an authoring application.
  --url URL    a local platform that runs already; without it, that of ORLO_URL; without both, one is started here
  --data DIR   keeps everything in DIR, so that the next session finds it again; without it, the pictures alone are kept, with the
               data of your applications
  --crash      kills the session in the middle of its uploads; the next one with the same DIR finishes them. Not with --url or ORLO_URL
  --explain    names the source of each chapter and the library's call behind each line, and what to try next
  --trace FILE writes each request into FILE, for the trace viewer of a browser
  --help, --version
  With --url or ORLO_URL, the user and the way to the platform are those of ORLO_TOKEN, ORLO_USER, ORLO_ACCOUNT, ORLO_CA, ORLO_PROXY and
  ORLO_TIMEOUT (seconds); without ORLO_TOKEN and so on, the demo user of a local platform.
)";

constexpr int failed = 1;
constexpr int wrongArguments = 2;

struct Arguments
{
    std::string url;  ///< empty for a platform of our own
    std::string data; ///< empty where nothing is kept
    bool crashes = false;
    bool explains = false;
    std::string trace; ///< empty for none
    orlo::HostSettings settings;
};

/// What the arguments leave open. A platform of our own has users of its own, whatever the environment says.
void readEnvironment(Arguments& arguments)
{
    const orlo::HostSettings told = orlo::configFromEnvironment(session::demoSettings());
    if (arguments.url.empty())
        arguments.url = session::addressIn(told);
    if (arguments.crashes && !arguments.url.empty())
        throw CLI::ValidationError("--crash", "wants a platform of its own, and ORLO_URL names another");
    arguments.settings = arguments.url.empty() ? session::demoSettings() : told;
}

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
    app.add_flag("--explain", arguments.explains);
    app.add_option("--trace", arguments.trace)->check(filled);
    app.set_version_flag("--version", "AuthoringSession " ORLO_VERSION);
    try {
        app.parse(argc, argv);
        readEnvironment(arguments);
    }
    catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : wrongArguments;
    }
    return std::nullopt;
}

void sayWhatToTryNext(session::Story& story)
{
    if (!story.explains())
        return;
    story.say(L"");
    story.say(L"What to try next:");
    story.say(L"  scripts/demo --data DIR --crash   a power cut in the middle of uploads; without --crash, the next day finishes them");
    story.say(L"  build/dev/bin/orlo-local-platform --port 8080");
    story.say(
        L"                                    a platform that stays; ORLO_URL=http://127.0.0.1:8080 scripts/demo lives the day there");
    story.say(L"  README.md                         \"A first program\", which is where your own may begin");
    story.say(L"  docs/host-guide.md                how an application links the library, sets it up and copes with failures");
}

void live(const Arguments& arguments)
{
    using namespace session;
    if (!arguments.trace.empty())
        traceInto(arguments.trace);
    Story story(arguments.explains);
    story.title(L"A session of an authoring application");

    story.chapter(L"Setting up", "examples/AuthoringSession/Host.cpp");
    const SessionFolder folder(arguments.data);
    Pictures pictures(folder.pictures());
    const Platform platform(arguments.url, folder);
    setHostUp(arguments.settings, platform.url(), folder.path(L"host"));
    story.say((platform.isOurOwn() ? L"Started a platform at " : L"Using the platform at ") + platform.url(),
              L"OrloConfigManager::Configure");
    signIn();
    story.say(L"Signed in as " + orlo::UserSession::GetInstance()->GetId(), L"UserSession::SignIn");

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

    story.chapter(L"The end of the day", __FILE__);
    orlo::UserSession::SignOut();
    story.say(L"Signed out.", L"UserSession::SignOut");
    story.say(L"Pictures of the day, for a browser:");
    for (const std::wstring& path : pictures.paths())
        story.say(L"  " + path);
    sayWhatToTryNext(story);
}

} // namespace

int main(int argc, char** argv)
{
    const auto log = std::make_shared<session::SessionLog>();
    try {
        orlo::ILogManager::Install(log);
        Arguments arguments;
        if (const std::optional<int> exitCode = readArguments(argc, argv, arguments))
            return *exitCode;
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
