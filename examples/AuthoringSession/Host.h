#pragma once

#include <OrloNetwork/HostSettings.h>

#include <string>

namespace session {

/// The demo user, whom every local platform knows, and everything else as the library has it.
orlo::HostSettings demoSettings();

/// The address in settings; empty for none.
std::string addressIn(const orlo::HostSettings& settings);

/// Tells the libraries where the services are and where local files may lie, and keeps the user for signIn.
void setHostUp(orlo::HostSettings settings, const std::wstring& platformUrl, const std::wstring& localFolder);

/// Signs the user of the settings in.
void signIn();

/// A colleague's turn at the machine; Platform::addColleague makes it known.
void signInColleague();

/// Whose turn it is.
std::wstring who();

} // namespace session
