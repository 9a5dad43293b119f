#include "Chapters.h"
#include "Host.h"
#include "Platform.h"
#include "SessionLog.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <iostream>
#include <optional>
#include <string>

namespace {

constexpr const char* usage = R"(usage: AuthoringSession [--url URL]
  Lives a short day of an authoring application.
  --url URL   a local platform that runs already; without it, one is started here
)";

/// The platform's address, empty for one of our own; nothing for arguments that make no sense.
std::optional<std::string> readUrl(int argc, char** argv)
{
    if (argc == 1)
        return std::string();
    if (argc == 3 && std::string(argv[1]) == "--url")
        return std::string(argv[2]);
    return std::nullopt;
}

void live(const std::string& url)
{
    using namespace session;
    Story story;
    story.title(L"A session of an authoring application");

    story.chapter(L"Setting up");
    const SessionFolder folder;
    const Platform platform(url, folder);
    setHostUp(platform.url(), folder.path(L"host"));
    story.say((platform.isOurOwn() ? L"Started a platform at " : L"Using the platform at ") + platform.url());
    signIn();
    story.say(L"Signed in as " + orlo::UserSession::GetInstance()->GetId());

    const auto hospital = projects(story);
    folders(story, *hospital);
    spaces(story, *hospital);
    files(story, *hospital, platform, folder.path(L"drawings"));
    resources(story);
    failures(story);

    story.chapter(L"The end of the day");
    orlo::UserSession::SignOut();
    story.say(L"Signed out.");
}

} // namespace

int main(int argc, char** argv)
{
    const std::optional<std::string> url = readUrl(argc, argv);
    if (!url) {
        std::cerr << usage;
        return 2;
    }
    const auto log = std::make_shared<session::SessionLog>();
    orlo::ILogManager::Install(log);
    try {
        live(*url);
        return 0;
    }
    catch (const std::exception& failure) {
        std::cerr << "The session failed: " << failure.what() << "\nThe library's log:\n";
        for (const std::wstring& line : log->lines())
            std::cerr << "  " << orlo::utils::toString(line) << "\n";
        return 1;
    }
}
