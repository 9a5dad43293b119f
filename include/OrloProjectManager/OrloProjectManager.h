#pragma once

/// The whole face of the library.
///
/// Ids are opaque texts: they are handed back as they came and never taken apart.
/// Times stay the text that the platform sends.
/// Failure is a false or empty result, with the reason in the ErrorCode that the caller hands over last; no exception
/// leaves the library. Values: 0xE8000001 bad input or unusable answer, 0xE8000002 exception or transport failure,
/// 0xE8000005 a required parameter is empty, a negative value an error status, whose body is then the message.
/// A null reference or pointer never crashes; it counts as an exception (0xE8000002).
/// Synchronous operations block their caller, the pauses between retried attempts included.
/// A host sets the configuration, the user's session and, if it likes, its own logger up before the first call.

#include <BaseCommon/ErrorCode.h>
#include <OrloProjectManager/Design/ConfigType.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/Design/ISpaceConfig.h>
#include <OrloProjectManager/Design/Point3d.h>
#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Issues/IIssue.h>
#include <OrloProjectManager/Issues/IIssueManager.h>
#include <OrloProjectManager/Messages/IMessage.h>
#include <OrloProjectManager/Messages/IMessageManager.h>
#include <OrloProjectManager/Permission/IDatasetPermission.h>
#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Projects/DatasetVersion.h>
#include <OrloProjectManager/Projects/FolderRecords.h>
#include <OrloProjectManager/Projects/ICollaborationFolder.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>
#include <OrloProjectManager/Projects/IWorkUnit.h>
#include <OrloProjectManager/Projects/ProjectItemConfig.h>
#include <OrloProjectManager/Projects/ProjectRecords.h>
#include <OrloProjectManager/Projects/Specialty.h>
#include <OrloProjectManager/Projects/StandardProperty.h>
#include <OrloProjectManager/Resources/IArchivePackage.h>
#include <OrloProjectManager/Resources/IModuleManager.h>
#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>
#include <OrloProjectManager/Resources/IProjectFont.h>
#include <OrloProjectManager/Resources/ITemplateManager.h>
#include <OrloProjectManager/Resources/ProjectTemplate.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>
#include <OrloProjectManager/Teams/ICollaborationSharedRecord.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>
#include <OrloProjectManager/Teams/ICollaborationTeamManager.h>
#include <OrloProjectManager/Transfer/DatasetFiles.h>
#include <OrloProjectManager/Transfer/HttpClient.h>
#include <OrloProjectManager/Transfer/ICollaborationFile.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>
#include <OrloProjectManager/Transfer/IFileManager.h>
#include <OrloProjectManager/Transfer/PromiseData.h>
