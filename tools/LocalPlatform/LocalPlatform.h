#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlo::platform {

/// The platform's REST services in one process, on the loopback interface: for people who try the library out, and for tests that want a
/// server with a memory. All text is UTF-8. Every call below may come from any thread, before `start`, while it runs and after `stop`.
/// Calls throw `std::runtime_error` (or a class below it) when they can't do their work, with the reason in `what()`.

struct Options
{
    /// Keeps platform.db and blobs; made if missing. Empty: the database lives in memory, blobs in a temporary folder, and both end with
    /// the platform.
    std::string dataFolder{};
    int port = 0;          ///< 0: a free port, chosen at the first `start` and kept for the next ones.
    bool seedDemo = false; ///< Registers the user "demo" with account "demo-account" and token "demo-token".
};

struct User
{
    std::string userId{};
    std::string accountId{}; ///< Owner of what the user creates, and the {userId} of the permission path.
    std::string accessToken{};
};

struct ProjectSeed
{
    std::string name{};
    std::string ownerAccountId{};
    std::string id{}; ///< Empty: a new one is made.
    std::string status = "Ongoing";
    std::string description{};
    std::string gridType{}; ///< "TYPE_ONE", "TYPE_TWO" or empty: no key in the answer.
    std::int64_t size = 0;
    bool archived = false;
};

struct FolderSeed
{
    std::string parentId{}; ///< The project of the folder is that of its parent.
    std::string name{};
    std::string folderType = "OtherFiles";
    std::string teamId{};
    std::string id{}; ///< Empty: a new one is made.
};

struct DatasetSeed
{
    std::string name{};
    std::string folderId{}; ///< Folder or team is needed; the linked folder of the team is taken when only the team is given.
    std::string teamId{};
    std::string type = "workunit";
    std::string specialtyId{};
    std::string ownerId{};
    std::string description{};
    std::string id{};                ///< Empty: a new one is made.
    std::string modelingDatasetId{}; ///< Empty: a new one is made.
};

struct FontSeed
{
    std::string projectId{};
    std::string name{};
    std::string bytes{}; ///< The font file; "resourceBytes" is its length.
    std::string fileType = "ttf";
    std::string fontFrom = "Project";
    std::string uploader{};
    std::string id{}; ///< Empty: a new one is made.
};

enum class FaultKind {
    Delay,             ///< Waits `delayMilliseconds`, then goes on; another fault may strike the same call after it.
    Status,            ///< Answers `status` with `body`, or with an envelope that names the status when `body` is empty.
    ResetBeforeAnswer, ///< The connection is reset (RST) before the first byte of the answer.
    ResetAfterBytes,   ///< The connection is reset after `bytes` bytes of the answer, head included.
    CutBody,           ///< Content-Length tells the whole body, `bytes` bytes of it are sent, then the connection is closed.
    Stall,             ///< After `bytes` bytes of the body nothing moves for `delayMilliseconds`, then the call goes on.
    Garbage            ///< Status 200, Content-Type application/json, and a `body` that is no JSON.
};

struct Fault
{
    FaultKind kind = FaultKind::Status;
    std::string path{};        ///< Decoded, without the query: "/projects". Calls under "/_control/" are never struck.
    std::string method{};      ///< Empty: every method.
    bool prefix = false;       ///< True: `path` is the beginning of the paths that are struck.
    int calls = 1;             ///< How many calls are struck; below 0: all of them.
    int status = 503;          ///< Status
    std::string body{};        ///< Status, Garbage
    std::size_t bytes = 0;     ///< ResetAfterBytes, CutBody, Stall
    int delayMilliseconds = 0; ///< Delay, Stall
    bool carryOut = false;     ///< True: the call does its work before the fault eats the answer. Faults with `bytes` always do.
    /// True: `bytes` counts what was read of the request's body, which is never stored when the connection ends there. For the faults with
    /// `bytes`, the method "PUT" and paths below "/blobs/".
    bool ofRequest = false;
};

/// A file in the store: an upload whose bytes have come, or a seeded one.
struct StoredFile
{
    std::string remotePath{};
    std::string fileName{};
    std::string fileId{}; ///< Uploads by Arkiv only, as is `versionIndex`.
    int versionIndex = 0;
    std::int64_t length = 0;
};

/// What "/v1/upload" was asked for.
struct Translation
{
    std::string dataSetId{};
    int versionId = 0;
    std::string toType{};
};

class LocalPlatform
{
public:
    /// Opens or makes the data; nothing listens yet.
    explicit LocalPlatform(const Options& options = {});
    ~LocalPlatform();
    LocalPlatform(const LocalPlatform&) = delete;
    LocalPlatform& operator=(const LocalPlatform&) = delete;

    /// Listens on 127.0.0.1. A second call while running does nothing.
    void start();
    /// Ends every open call and joins every thread. May be started again.
    void stop();
    /// "http://127.0.0.1:PORT", the base address of every service key. Empty before the first `start`.
    std::string url() const;

    /// A token that is known already changes hands, and is good again.
    void addUser(const User& user);
    /// The token gets the status 401 from now on.
    void revokeToken(const std::string& accessToken);
    /// In so many seconds of the platform's clock; 0 or less: at once.
    void expireTokenIn(const std::string& accessToken, std::int64_t seconds);
    /// Limits of an organisation's account, as "/resource/limit" tells them; a further project than `projectNumber` is refused.
    void setQuota(const std::string& accountId, int projectNumber, int spaceSize);
    /// An account without limits ("data": null), which every account is at first.
    void setPersonal(const std::string& accountId);
    /// The account's row for one resource; an empty list takes it away. `permissionTypes`: "Read", "Write", "SoftWrite".
    void grantPermission(const std::string& projectId, const std::string& accountId, const std::string& resource,
                         const std::vector<std::string>& permissionTypes);

    /// Each returns the id. A project gets the folders, the team and the rest that a project made over REST gets.
    std::string addProject(const ProjectSeed& seed);
    std::string addSampleProject(const std::string& name, const std::string& id = {});
    std::string addFolder(const FolderSeed& seed);
    std::string addDataset(const DatasetSeed& seed);
    std::string addSpecialty(const std::string& projectId, const std::string& type, const std::string& name, const std::string& id = {});
    std::string addFont(const FontSeed& seed);

    /// Puts a file into the store under a remote path of the caller's choice, in place of the one that has it.
    void addFile(const std::string& remotePath, const std::string& bytes);
    /// The file that the seed `path` names for ".../blockFiles/readSAS". Returns the path of its signed addresses, for faults.
    std::string addDatasetFile(const std::string& datasetId, const std::string& path, const std::string& bytes);

    /// `jsonArray`: the value of "standardProperties", sent as it is. Empty text: no key in the answer.
    void setStandardProperties(const std::string& projectId, const std::string& jsonArray);
    /// "TYPE_ONE", "TYPE_TWO"; empty text: no key in the answer.
    void setGridType(const std::string& projectId, const std::string& gridType);
    void setProjectSize(const std::string& projectId, std::int64_t size);
    void setArchived(const std::string& projectId, bool archived);

    /// Returns the fault's id. The oldest fault that matches and has calls left strikes. Throws `std::invalid_argument` for a status
    /// outside 200 to 599, a negative delay or a path without a slash at its head.
    int addFault(const Fault& fault);
    /// How often the fault has struck; 0 for an unknown id. Counts are kept until `clearFaults`.
    int faultCount(int id) const;
    void clearFaults();

    /// The bytes stored under a remote path ("fileOSSPath"); throws if there is none.
    std::string blob(const std::string& remotePath) const;
    /// In the order in which they were asked for. Files of datasets and fonts don't count.
    std::vector<StoredFile> blobs() const;
    /// In the order of their calls.
    std::vector<Translation> translations() const;

    /// Of addresses that are handed out from now on; 900 at first. 0 or less: expired as soon as made.
    void setSignedLifetime(std::int64_t seconds);
    /// Signed downloads are packed for clients that accept it. Off at first.
    void setGzipAnswers(bool on);
    /// What a signed PUT answers that isn't one by Arkiv; empty at first.
    void setPlainPutAnswer(const std::string& body);

    /// Signed GETs whose last bytes haven't been handed out yet, and how many there were at once since `clearRequestCounts`.
    std::size_t openDownloads() const;
    std::size_t peakDownloads() const;

    /// Moves the platform's clock, back with a negative number. It goes on ticking from there.
    void moveClock(std::int64_t seconds);
    /// The clock's time, as records carry it: "2024-05-01T08:30:00.000Z".
    std::string now() const;

    /// Calls received so far, refused and struck ones too, control calls not. Empty method: every method. The prefix is a decoded path.
    std::size_t requestCount(const std::string& method, const std::string& pathPrefix) const;
    void clearRequestCounts();

private:
    class Core;
    std::unique_ptr<Core> m_core;
};

} // namespace orlo::platform
