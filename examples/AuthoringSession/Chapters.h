#pragma once

#include "Pictures.h"
#include "Platform.h"
#include "Story.h"

#include <OrloProjectManager/Projects/ICollaborationFolder.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <memory>

namespace session {

/// Creates a project, finds it in the list, and loads it again by its id.
std::shared_ptr<orlo::ICollaborationProject> projects(Story& story);

/// Walks the folder tree, creates a dataset and finds the team's folder.
void folders(Story& story, orlo::ICollaborationProject& project);

/// Reads the tree of spaces, adds a floor and a basement, draws them, and lists the versions.
void spaces(Story& story, orlo::ICollaborationProject& project, Pictures& pictures);

/// Stores a grid of axes, reads it again, measures and draws it; adds a building item, loses a race for it, and gives it what it needs.
void design(Story& story, orlo::ICollaborationProject& project, Pictures& pictures);

/// Uploads files, brings them back, singly and a dozen at once, compares the bytes, and publishes one as a version of a dataset.
void files(Story& story, orlo::ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder);

/// Two users want to write one dataset: one does, the other reads and is told why; a right is given back, and another taken away. Only on a
/// platform of our own.
void permissions(Story& story, orlo::ICollaborationProject& project, const Platform& platform);

/// A team with a colleague, what another team shares with it, and an issue from its beginning to its end, with the messages about it. Only
/// on a platform of our own.
void teamwork(Story& story, orlo::ICollaborationProject& project, const Platform& platform);

/// Uploads what an earlier session handed to jobs and didn't live to upload; silent if there is nothing.
void earlierJobs(Story& story);

/// Hands files to jobs, is told when each of them ends, and shows the folder with the new datasets.
void jobs(Story& story, orlo::ICollaborationProject& project, const std::wstring& localFolder);

/// The same, but the process is killed while some of the files wait. Only on a platform of our own.
[[noreturn]] void crashAmidJobs(Story& story, orlo::ICollaborationProject& project, const Platform& platform,
                                const std::wstring& localFolder);

/// Takes components from the public catalogue, hands a template and a module to jobs and brings the template back, lists what is bundled
/// for the archive. Only on a platform of our own.
void libraries(Story& story, orlo::ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder);

/// Reads what the account may use and what of it is used.
void resources(Story& story);

/// Does two things wrong on purpose and looks at what the library says.
void failures(Story& story);

/// Draws the project's folders with their datasets.
void showFolders(Story& story, orlo::ICollaborationProject& project);

/// Draws one folder with its datasets and what is below it; `call` gave it.
void showFolder(Story& story, const orlo::ICollaborationFolder& folder, const std::wstring& call);

/// The first folder of the project, as the platform has it now. Valid until the project's folders are read again.
const orlo::ICollaborationFolder& firstFolder(Story& story, orlo::ICollaborationProject& project);

/// The first dataset of the project that is in draft.
orlo::DatasetInfo firstDraft(Story& story, orlo::ICollaborationProject& project);

} // namespace session
