-- The data as the first local platform wrote it.
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

INSERT INTO setting VALUES ('signingKey', '00');
INSERT INTO user VALUES ('demo-token', 'demo', 'demo-account');
INSERT INTO project (id, name, description, owner, status, templateId, size, creationTime)
    VALUES ('p1', 'Tower', '', 'demo-account', 'Ongoing', '', 0, '2024-05-01T08:30:00.000Z');
INSERT INTO folder (id, projectId, parentId, name, folderType, teamId) VALUES ('f1', 'p1', '', 'Tower', 'Root', '');
INSERT INTO dataset (id, projectId, folderId, teamId, modelingDatasetId, name, nameSpace, schemaDefinition, type, specialtyId, ownerId,
        description, creationTime)
    VALUES ('d1', 'p1', 'f1', '', 'm1', 'a', '', '', 'zok', '', '', '', '2024-05-01T08:30:00.000Z');
INSERT INTO version (dataSetId, version, dataSetSourceFile, displayVersion, creationTime, status, description, verifyStatus, metaInfo, size)
    VALUES ('d1', 1, 'old.zok', 'V1', '2024-05-01T08:30:00.000Z', 'WIP', '', 'Success', '', 7);
PRAGMA user_version = 1;
