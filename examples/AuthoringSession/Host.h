#pragma once

#include <string>

namespace session {

/// Tells the libraries where the services are and where local files may lie.
void setHostUp(const std::wstring& platformUrl, const std::wstring& localFolder);

/// Signs the demo user in, whom every local platform knows.
void signIn();

/// A colleague's turn at the machine; Platform::addColleague makes it known.
void signInColleague();

/// Whose turn it is.
std::wstring who();

} // namespace session
