#include "Schema.h"

#include <SQLiteCpp/Transaction.h>

#include <array>
#include <stdexcept>
#include <string>

namespace orlo::platform {

namespace {

// A step is never changed once data was written with it: a new schema is a new step.
constexpr const char* firstSchema = R"sql(
CREATE TABLE setting (name TEXT PRIMARY KEY, value TEXT NOT NULL);

CREATE TABLE user (accessToken TEXT PRIMARY KEY, userId TEXT NOT NULL, accountId TEXT NOT NULL);

CREATE TABLE quota (accountId TEXT PRIMARY KEY, projectNumber INTEGER NOT NULL, spaceSize INTEGER NOT NULL);

CREATE TABLE project (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    name TEXT NOT NULL,
    description TEXT NOT NULL,
    owner TEXT NOT NULL,
    status TEXT NOT NULL,
    templateId TEXT NOT NULL,
    gridType TEXT,
    standardProperties TEXT,
    size INTEGER NOT NULL,
    sample INTEGER NOT NULL DEFAULT 0,
    archived INTEGER NOT NULL DEFAULT 0,
    creationTime TEXT NOT NULL);

CREATE TABLE folder (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    parentId TEXT NOT NULL,
    name TEXT NOT NULL,
    folderType TEXT NOT NULL,
    teamId TEXT NOT NULL);
CREATE INDEX folderByProject ON folder (projectId);
CREATE INDEX folderByParent ON folder (parentId);

CREATE TABLE team (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    description TEXT NOT NULL,
    status TEXT NOT NULL,
    linkedFolderId TEXT NOT NULL);
CREATE INDEX teamByProject ON team (projectId);

CREATE TABLE specialty (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    description TEXT NOT NULL,
    type TEXT NOT NULL);
CREATE INDEX specialtyByProject ON specialty (projectId);

CREATE TABLE permission (
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    accountId TEXT NOT NULL,
    resource TEXT NOT NULL,
    permissionTypes TEXT NOT NULL,
    PRIMARY KEY (projectId, accountId, resource));

CREATE TABLE dataset (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    folderId TEXT NOT NULL REFERENCES folder (id) ON DELETE CASCADE,
    teamId TEXT NOT NULL,
    modelingDatasetId TEXT NOT NULL UNIQUE,
    name TEXT NOT NULL,
    nameSpace TEXT NOT NULL,
    schemaDefinition TEXT NOT NULL,
    codeVersion INTEGER NOT NULL DEFAULT 0,
    tipVersion INTEGER NOT NULL DEFAULT 0,
    type TEXT NOT NULL,
    specialtyId TEXT NOT NULL,
    ownerId TEXT NOT NULL,
    description TEXT NOT NULL,
    status TEXT NOT NULL DEFAULT 'draft',
    creationTime TEXT NOT NULL);
CREATE INDEX datasetByFolder ON dataset (folderId);
CREATE INDEX datasetByProject ON dataset (projectId);

CREATE TABLE version (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    dataSetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    dataSetSourceFile TEXT NOT NULL,
    displayVersion TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    status TEXT NOT NULL,
    description TEXT NOT NULL,
    verifyStatus TEXT NOT NULL,
    metaInfo TEXT NOT NULL,
    size INTEGER NOT NULL,
    UNIQUE (dataSetId, version));

CREATE TABLE config (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    configType TEXT NOT NULL,
    version INTEGER NOT NULL,
    configValue TEXT NOT NULL,
    author TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    UNIQUE (projectId, configType, version));

CREATE TABLE font (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    fileType TEXT NOT NULL,
    fontFrom TEXT NOT NULL,
    createTime TEXT NOT NULL,
    uploader TEXT NOT NULL,
    resourceBytes TEXT NOT NULL,
    blobId TEXT NOT NULL);
CREATE INDEX fontByProject ON font (projectId);
)sql";

// A stored file has a length once its bytes have come; before that it is a grant. The blob's id is its name in the blob folder.
constexpr const char* files = R"sql(
CREATE TABLE storedFile (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    blobId TEXT NOT NULL UNIQUE,
    remotePath TEXT NOT NULL UNIQUE,
    fileName TEXT NOT NULL,
    folderId TEXT REFERENCES folder (id) ON DELETE CASCADE,
    fileId TEXT,
    versionIndex INTEGER,
    length INTEGER,
    creationTime TEXT NOT NULL,
    UNIQUE (fileId, versionIndex));
CREATE INDEX storedFileByFolder ON storedFile (folderId);

CREATE TABLE datasetFile (
    datasetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    path TEXT NOT NULL,
    blobId TEXT NOT NULL,
    PRIMARY KEY (datasetId, path));

CREATE TABLE drawingBinding (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    dwgId TEXT NOT NULL,
    dwgVersion INTEGER NOT NULL,
    datasetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    datasetVersion INTEGER NOT NULL,
    UNIQUE (dwgId, dwgVersion, datasetId, datasetVersion));
CREATE INDEX drawingBindingByDataset ON drawingBinding (datasetId);

CREATE TABLE translation (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    dataSetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    versionId INTEGER NOT NULL,
    toType TEXT NOT NULL);
CREATE INDEX translationByDataset ON translation (dataSetId);
)sql";

// A token is good until it expires, in seconds of the platform's clock, or is revoked.
constexpr const char* tokenEnds = R"sql(
ALTER TABLE user ADD COLUMN revoked INTEGER NOT NULL DEFAULT 0;
ALTER TABLE user ADD COLUMN expires INTEGER;
)sql";

// Who may write or read a dataset for how long, in seconds of the platform's clock.
constexpr const char* monitors = R"sql(
CREATE TABLE monitor (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    token TEXT NOT NULL UNIQUE,
    datasetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    userId TEXT NOT NULL,
    kind INTEGER NOT NULL,
    expires INTEGER NOT NULL);
CREATE INDEX monitorByDataset ON monitor (datasetId);
)sql";

// Who belongs to a team, and what teams let each other see. Every project has its owner in its teams.
constexpr const char* teams = R"sql(
CREATE TABLE teamMember (
    teamId TEXT NOT NULL REFERENCES team (id) ON DELETE CASCADE,
    accountId TEXT NOT NULL,
    PRIMARY KEY (teamId, accountId));
INSERT INTO teamMember (teamId, accountId) SELECT team.id, project.owner FROM team JOIN project ON project.id = team.projectId;

CREATE TABLE trust (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    teamId TEXT NOT NULL REFERENCES team (id) ON DELETE CASCADE,
    trustedTeamId TEXT NOT NULL REFERENCES team (id) ON DELETE CASCADE,
    resourceType TEXT NOT NULL,
    resourceId TEXT NOT NULL,
    UNIQUE (teamId, trustedTeamId, resourceType, resourceId));

CREATE TABLE share (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    shareId TEXT NOT NULL REFERENCES team (id) ON DELETE CASCADE,
    consumedId TEXT NOT NULL REFERENCES team (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    status TEXT NOT NULL);

CREATE TABLE shareContent (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    recordId TEXT NOT NULL REFERENCES share (id) ON DELETE CASCADE,
    datasetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    UNIQUE (recordId, datasetId, version));
)sql";

// Issues with the versions that they concern, and what users are told.
constexpr const char* issues = R"sql(
CREATE TABLE issue (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    teamId TEXT NOT NULL REFERENCES team (id) ON DELETE CASCADE,
    userId TEXT NOT NULL,
    title TEXT NOT NULL,
    description TEXT NOT NULL,
    elementId TEXT NOT NULL,
    elementName TEXT NOT NULL,
    file TEXT NOT NULL,
    camera TEXT NOT NULL,
    markCoordinate TEXT NOT NULL,
    memo TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    updateTime TEXT NOT NULL);

CREATE TABLE issueDataset (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    issueId INTEGER NOT NULL REFERENCES issue (id) ON DELETE CASCADE,
    versionId INTEGER NOT NULL REFERENCES version (id) ON DELETE CASCADE,
    isCurrent INTEGER NOT NULL);
CREATE INDEX issueDatasetByIssue ON issueDataset (issueId);

CREATE TABLE message (
    messageId INTEGER PRIMARY KEY AUTOINCREMENT,
    receiver TEXT NOT NULL,
    title TEXT NOT NULL,
    content TEXT NOT NULL,
    projectId TEXT NOT NULL,
    datasetId TEXT NOT NULL,
    messageType TEXT NOT NULL,
    messageStatus TEXT NOT NULL,
    resourceId TEXT NOT NULL,
    resourceType TEXT NOT NULL,
    senderId TEXT NOT NULL,
    senderAction TEXT NOT NULL,
    sendTime TEXT NOT NULL);
CREATE INDEX messageByReceiver ON message (receiver);
)sql";

// Building items, whose changes each begin a revision of the project's; their configurations; datasets bound to them. What versions of
// datasets were built on.
constexpr const char* buildingItems = R"sql(
ALTER TABLE project ADD COLUMN itemRevision INTEGER NOT NULL DEFAULT 0;

CREATE TABLE buildingItem (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    birthTime TEXT NOT NULL,
    removedAt INTEGER);
CREATE INDEX buildingItemByProject ON buildingItem (projectId);

CREATE TABLE buildingItemVersion (
    itemId INTEGER NOT NULL REFERENCES buildingItem (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    revision INTEGER NOT NULL,
    configValue TEXT NOT NULL,
    author TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    PRIMARY KEY (itemId, version));

CREATE TABLE itemConfig (
    itemId INTEGER NOT NULL REFERENCES buildingItem (id) ON DELETE CASCADE,
    configType TEXT NOT NULL,
    version INTEGER NOT NULL,
    configValue TEXT NOT NULL,
    author TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    PRIMARY KEY (itemId, configType, version));

CREATE TABLE itemBinding (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    itemId INTEGER NOT NULL REFERENCES buildingItem (id) ON DELETE CASCADE,
    datasetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    UNIQUE (itemId, datasetId));
CREATE INDEX itemBindingByDataset ON itemBinding (datasetId);

CREATE TABLE versionMeta (
    versionId INTEGER NOT NULL REFERENCES version (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (versionId, name));
)sql";

// Components: a public catalogue in categories, and what projects took from it or uploaded. What a version of a component holds is an
// edition, which a project shares with the catalogue. Times are milliseconds of the platform's clock.
constexpr const char* components = R"sql(
CREATE TABLE componentCategory (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    code TEXT NOT NULL UNIQUE,
    parentCode TEXT NOT NULL,
    name TEXT NOT NULL,
    major INTEGER NOT NULL,
    weight REAL NOT NULL);
CREATE INDEX componentCategoryByParent ON componentCategory (parentCode);

CREATE VIEW categoryBelow AS
    WITH RECURSIVE below (top, code) AS (
        SELECT code, code FROM componentCategory
        UNION ALL
        SELECT below.top, category.code FROM below JOIN componentCategory AS category ON category.parentCode = below.code)
    SELECT top, code FROM below;

CREATE TABLE componentEdition (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    projectId TEXT REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    categoryCode TEXT NOT NULL REFERENCES componentCategory (code),
    familyTypes TEXT NOT NULL,
    xml TEXT NOT NULL,
    blobId TEXT);
CREATE INDEX componentEditionByProject ON componentEdition (projectId);

CREATE TABLE publicComponent (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    version INTEGER NOT NULL);

CREATE TABLE publicComponentVersion (
    componentId INTEGER NOT NULL REFERENCES publicComponent (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    editionId INTEGER NOT NULL REFERENCES componentEdition (id) ON DELETE CASCADE,
    PRIMARY KEY (componentId, version));

CREATE TABLE component (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    id INTEGER NOT NULL,
    publicId INTEGER REFERENCES publicComponent (id),
    version INTEGER NOT NULL,
    addedAt INTEGER NOT NULL,
    changedAt INTEGER NOT NULL,
    removed INTEGER NOT NULL DEFAULT 0,
    UNIQUE (projectId, id));

CREATE TABLE componentVersion (
    componentRank INTEGER NOT NULL REFERENCES component (rank) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    editionId INTEGER NOT NULL REFERENCES componentEdition (id) ON DELETE CASCADE,
    PRIMARY KEY (componentRank, version));
CREATE INDEX componentVersionByEdition ON componentVersion (editionId);
)sql";

// Projects that users keep as starting points; the public library of template files, a project's own one, and which of them a dataset
// was started with.
constexpr const char* templates = R"sql(
CREATE TABLE projectTemplate (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    templateName TEXT NOT NULL,
    srcProjectId TEXT NOT NULL,
    accountId TEXT NOT NULL,
    creationTime TEXT NOT NULL);
CREATE INDEX projectTemplateByAccount ON projectTemplate (accountId);

CREATE TABLE publicTemplate (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL,
    specialty TEXT NOT NULL);

CREATE TABLE publicTemplateFile (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    templateId TEXT NOT NULL REFERENCES publicTemplate (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    type TEXT NOT NULL,
    size INTEGER NOT NULL,
    blobId TEXT NOT NULL);
CREATE INDEX publicTemplateFileByTemplate ON publicTemplateFile (templateId);

CREATE TABLE samplePlate (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    uri TEXT NOT NULL,
    samplePlateFrom TEXT NOT NULL,
    specialty TEXT NOT NULL,
    templateId TEXT NOT NULL,
    size INTEGER NOT NULL,
    appVersion TEXT NOT NULL,
    createTime TEXT NOT NULL,
    UNIQUE (projectId, name));

CREATE TABLE sampleFile (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    datasetId TEXT NOT NULL REFERENCES dataset (id) ON DELETE CASCADE,
    samplePlateId TEXT NOT NULL REFERENCES samplePlate (id) ON DELETE CASCADE,
    type TEXT NOT NULL);
CREATE INDEX sampleFileByDataset ON sampleFile (datasetId);
)sql";

// A shelf holds the modules of one resource type in one space, which is a project's or an account's. The file of a module is a stored one.
constexpr const char* modules = R"sql(
CREATE TABLE moduleShelf (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    spaceType TEXT NOT NULL,
    space TEXT NOT NULL,
    resourceType TEXT NOT NULL,
    projectId TEXT REFERENCES project (id) ON DELETE CASCADE,
    UNIQUE (spaceType, space, resourceType));
CREATE INDEX moduleShelfByProject ON moduleShelf (projectId);

CREATE TABLE moduleCategory (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    shelfId INTEGER NOT NULL REFERENCES moduleShelf (id) ON DELETE CASCADE,
    tree TEXT NOT NULL,
    parentId TEXT NOT NULL,
    name TEXT NOT NULL);
CREATE INDEX moduleCategoryByShelf ON moduleCategory (shelfId);

CREATE TABLE moduleFile (
    blobId TEXT PRIMARY KEY REFERENCES storedFile (blobId) ON DELETE CASCADE,
    shelfId INTEGER NOT NULL REFERENCES moduleShelf (id) ON DELETE CASCADE,
    md5 TEXT NOT NULL);
CREATE INDEX moduleFileByShelf ON moduleFile (shelfId);

CREATE TABLE module (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    shelfId INTEGER NOT NULL REFERENCES moduleShelf (id) ON DELETE CASCADE,
    categoryId TEXT NOT NULL,
    name TEXT NOT NULL,
    UNIQUE (shelfId, categoryId, name));

CREATE TABLE moduleVersion (
    moduleId TEXT NOT NULL REFERENCES module (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    blobId TEXT NOT NULL UNIQUE REFERENCES moduleFile (blobId) ON DELETE CASCADE,
    applicationType TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    PRIMARY KEY (moduleId, version));
)sql";

// Archive packages, whose versions name versions of integrate packages; what these point at.
constexpr const char* archives = R"sql(
CREATE TABLE archivePackage (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    description TEXT NOT NULL,
    receiver TEXT NOT NULL,
    receiverName TEXT NOT NULL,
    sharer TEXT NOT NULL,
    sharerName TEXT NOT NULL,
    enabled INTEGER NOT NULL,
    createTime TEXT NOT NULL);
CREATE INDEX archivePackageByProject ON archivePackage (projectId);

CREATE TABLE archiveVersion (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    packageId TEXT NOT NULL REFERENCES archivePackage (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    ownerId TEXT NOT NULL,
    ownerName TEXT NOT NULL,
    UNIQUE (packageId, version));

CREATE TABLE integratePackage (
    id TEXT PRIMARY KEY,
    projectId TEXT NOT NULL REFERENCES project (id) ON DELETE CASCADE,
    name TEXT NOT NULL);
CREATE INDEX integratePackageByProject ON integratePackage (projectId);

CREATE TABLE unitVersion (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    packageId TEXT NOT NULL REFERENCES integratePackage (id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    integrateStatus TEXT NOT NULL,
    creationTime TEXT NOT NULL,
    UNIQUE (packageId, version));

CREATE TABLE archiveContent (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    archiveVersionId INTEGER NOT NULL REFERENCES archiveVersion (id) ON DELETE CASCADE,
    unitVersionId INTEGER NOT NULL REFERENCES unitVersion (id) ON DELETE CASCADE);
CREATE INDEX archiveContentByVersion ON archiveContent (archiveVersionId);
CREATE INDEX archiveContentByUnit ON archiveContent (unitVersionId);

CREATE TABLE unitDataset (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    unitVersionId INTEGER NOT NULL REFERENCES unitVersion (id) ON DELETE CASCADE,
    versionId INTEGER NOT NULL REFERENCES version (id) ON DELETE CASCADE);
CREATE INDEX unitDatasetByUnit ON unitDataset (unitVersionId);
CREATE INDEX unitDatasetByVersion ON unitDataset (versionId);

CREATE TABLE unitStandardCode (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    unitVersionId INTEGER NOT NULL REFERENCES unitVersion (id) ON DELETE CASCADE,
    code TEXT NOT NULL);
CREATE INDEX unitStandardCodeByUnit ON unitStandardCode (unitVersionId);
)sql";

constexpr std::array steps = {firstSchema,   files,      tokenEnds, monitors, teams,   issues,
                              buildingItems, components, templates, modules,  archives};

} // namespace

void migrate(SQLite::Database& database)
{
    const int found = database.execAndGet("PRAGMA user_version").getInt();
    if (found < 0 || static_cast<std::size_t>(found) > steps.size())
        throw std::runtime_error("the data was written by a newer local platform");
    for (std::size_t step = static_cast<std::size_t>(found); step < steps.size(); ++step) {
        SQLite::Transaction transaction(database);
        database.exec(steps[step]);
        database.exec("PRAGMA user_version = " + std::to_string(step + 1));
        transaction.commit();
    }
}

} // namespace orlo::platform
