#pragma once

#include <cstdint>
#include <optional>

// What a program of the tests does to its own process.
namespace orlo::test {

/// Ends as one that somebody else has killed: nothing is run, nothing flushed.
[[noreturn]] void killOwnProcess();

/// Writes to the standard output without its streams, which go before the process does.
void say(const char* words);

/// For a thread that is to be there as long as the process.
[[noreturn]] void waitForEver();

/// Files can't grow beyond so many bytes; a write that tries fails. Empty: as large as they like again.   Returns: whether it holds.
bool limitFileSize(std::optional<std::uint64_t> bytes);

/// Gives up the rights of the system's administrator.   Returns: false if it still has them.
bool dropRights();

} // namespace orlo::test
