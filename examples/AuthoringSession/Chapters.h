#pragma once

#include "Story.h"

namespace session {

/// Creates a project, finds it in the list, and loads it again by its id.
void projects(Story& story);

/// Reads what the account may use and what of it is used.
void resources(Story& story);

/// Does two things wrong on purpose and looks at what the library says.
void failures(Story& story);

} // namespace session
