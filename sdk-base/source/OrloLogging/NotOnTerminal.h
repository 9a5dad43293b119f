#pragma once

#include <OrloLogging/Export.h>

namespace orlo::log {

/// While one lives, the lines of its thread stay off the terminal: the default logger writes them into its file alone. An installed logger
/// is told of them as of all others. For lines that belong into the log by contract and would alarm a user without need.
class ORLO_LOGGING_API NotOnTerminal
{
public:
    /// applies: false for one that changes nothing.
    explicit NotOnTerminal(bool applies = true);
    ~NotOnTerminal();
    NotOnTerminal(const NotOnTerminal&) = delete;
    NotOnTerminal& operator=(const NotOnTerminal&) = delete;

    /// Whether one lives on this thread that applies.
    static bool isInForce();

private:
    const bool m_applies;
};

} // namespace orlo::log
