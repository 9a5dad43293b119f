#include "LocalPlatform.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <optional>
#include <pthread.h>
#include <string>
#include <vector>

namespace {

using orlo::platform::LocalPlatform;
using orlo::platform::Options;
using orlo::platform::User;

constexpr int failed = 1;
constexpr int wrongArguments = 2;

struct Arguments
{
    Options options;
    std::vector<User> users;
};

User readUser(const std::string& text)
{
    const std::size_t first = text.find(':');
    const std::size_t second = text.find(':', first == std::string::npos ? first : first + 1);
    if (second == std::string::npos)
        throw CLI::ValidationError("--user", "wants ID:ACCOUNT:TOKEN");
    return {text.substr(0, first), text.substr(first + 1, second - first - 1), text.substr(second + 1)};
}

/// Returns the exit code, where the program ends here: after the help, or because of wrong arguments.
std::optional<int> readArguments(int argc, const char* const* argv, Arguments& arguments)
{
    CLI::App app("A collaboration platform on this machine, on 127.0.0.1 only.", "orlo-local-platform");
    app.failure_message(CLI::FailureMessage::help);
    app.set_version_flag("--version", "orlo-local-platform " ORLO_VERSION);
    app.footer("Its first line tells its address; it runs until Ctrl-C or SIGTERM.\n"
               "docs/local-platform.md tells what it knows, and how it is prepared and made to fail.");
    app.add_option("--data", arguments.options.dataFolder, "keep everything in DIR; without it, nothing is kept")->type_name("DIR");
    app.add_option("--port", arguments.options.port, "port; 0, which is the default, takes a free one")->type_name("N");
    const auto addUsers = [&](const std::vector<std::string>& words) {
        for (const std::string& word : words)
            arguments.users.push_back(readUser(word));
    };
    app.add_option_function<std::vector<std::string>>("--user", addUsers,
                                                      "register a user, may stand several times; without any, demo:demo-account:demo-token")
        ->type_name("ID:ACCOUNT:TOKEN")
        ->allow_extra_args(false);
    try {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : wrongArguments;
    }
    arguments.options.seedDemo = arguments.users.empty();
    return std::nullopt;
}

sigset_t endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

void runUntilSignalled(const Arguments& arguments)
{
    // Blocked before any thread starts, so that only sigwait sees them.
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    LocalPlatform platform(arguments.options);
    platform.change(orlo::platform::addStandardComponents);
    platform.change(orlo::platform::addStandardTemplates);
    for (const User& user : arguments.users)
        platform.change(orlo::platform::addUser, user);
    platform.start();
    std::cout << "listening on " << platform.url() << std::endl;
    int received = 0;
    sigwait(&signals, &received);
    platform.stop();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        Arguments arguments;
        if (const std::optional<int> exitCode = readArguments(argc, argv, arguments))
            return *exitCode;
        runUntilSignalled(arguments);
        return 0;
    }
    catch (const std::exception& error) {
        std::cerr << "orlo-local-platform: " << error.what() << "\n";
        return failed;
    }
}
