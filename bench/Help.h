#pragma once

#include <cstdio>
#include <cstring>

namespace orlo::bench {

/// Answers --help, -h and --version in the place of the program's first argument, and leaves all others to the program.
/// Returns: whether the program is to end, with success.
inline bool answersForItself(int argc, char** argv, const char* name, const char* help)
{
    const auto isFirst = [&](const char* word) { return argc > 1 && std::strcmp(argv[1], word) == 0; };
    if (isFirst("--version"))
        std::printf("%s %s\n", name, ORLO_VERSION);
    else if (isFirst("--help") || isFirst("-h"))
        std::printf("usage: %s %s\n", name, help);
    else
        return false;
    return true;
}

} // namespace orlo::bench
