#include "LocalPlatform.h"
#include "Server/Router.h"

#include <csignal>
#include <getopt.h>
#include <iostream>
#include <pthread.h>

namespace {

using orlo::platform::LocalPlatform;
using orlo::platform::Options;
using orlo::platform::User;

constexpr const char* usage = R"(usage: orlo-local-platform [--data DIR] [--port N] [--user ID:ACCOUNT:TOKEN]...
  --data DIR   keep everything in DIR; without it, nothing is kept
  --port N     port on 127.0.0.1; 0, which is the default, takes a free one
  --user ...   register a user; without any, "demo:demo-account:demo-token"
)";

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
        throw std::invalid_argument("--user wants ID:ACCOUNT:TOKEN");
    return {text.substr(0, first), text.substr(first + 1, second - first - 1), text.substr(second + 1)};
}

Arguments readArguments(int argc, char** argv)
{
    const option known[] = {{"data", required_argument, nullptr, 'd'},
                            {"port", required_argument, nullptr, 'p'},
                            {"user", required_argument, nullptr, 'u'},
                            {nullptr, 0, nullptr, 0}};
    Arguments arguments;
    int c = 0;
    while ((c = getopt_long(argc, argv, "", known, nullptr)) != -1) { // NOLINT(concurrency-mt-unsafe): no thread has started yet
        if (c == 'd')
            arguments.options.dataFolder = optarg;
        else if (c == 'p')
            arguments.options.port = orlo::platform::readNumber(optarg, "port");
        else if (c == 'u')
            arguments.users.push_back(readUser(optarg));
        else
            throw std::invalid_argument("unknown option");
    }
    if (optind < argc)
        throw std::invalid_argument(std::string("unexpected argument: ") + argv[optind]);
    arguments.options.seedDemo = arguments.users.empty();
    return arguments;
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
    Arguments arguments;
    try {
        arguments = readArguments(argc, argv);
    }
    catch (const std::exception& error) {
        std::cerr << "orlo-local-platform: " << error.what() << "\n" << usage;
        return 2;
    }
    try {
        runUntilSignalled(arguments);
        return 0;
    }
    catch (const std::exception& error) {
        std::cerr << "orlo-local-platform: " << error.what() << "\n";
        return 1;
    }
}
