#include "LocalPlatform.h"

#include "BlobStore.h"
#include "Clock.h"
#include "Datasets.h"
#include "Faults.h"
#include "Ids.h"
#include "Projects.h"
#include "RequestLog.h"
#include "Routes.h"
#include "Server.h"
#include "Signing.h"
#include "Store.h"
#include "Users.h"

#include <filesystem>

namespace orlo::platform {

namespace {

std::filesystem::path dataFolder(const Options& options)
{
    std::filesystem::path folder = std::filesystem::u8path(options.dataFolder);
    if (!folder.empty())
        std::filesystem::create_directories(folder);
    return folder;
}

std::string databaseFile(const std::filesystem::path& folder)
{
    return folder.empty() ? ":memory:" : (folder / "platform.db").u8string();
}

/// Made once and kept with the data, so that a signed address survives a restart.
std::string signingKey(Tables& tables)
{
    tables.run("INSERT OR IGNORE INTO setting (name, value) VALUES ('signingKey', ?)", toHex(randomBytes(32)));
    return fromHex(*tables.text("SELECT value FROM setting WHERE name = 'signingKey'"));
}

bool isControl(const std::string& path)
{
    return path.compare(0, 10, "/_control/") == 0;
}

} // namespace

class LocalPlatform::Core
{
public:
    explicit Core(const Options& options)
        : m_folder(dataFolder(options)),
          m_store(databaseFile(m_folder)),
          m_blobs(m_folder.empty() ? std::filesystem::path() : m_folder / "blobs"),
          m_signer(m_store.transact(signingKey)),
          m_server({[this](const Call& call) { return noteCall(call); }, [this](Call& call) { return answer(call); }}),
          m_port(options.port)
    {
        addProjectRoutes(m_router);
        addFolderRoutes(m_router);
        addDatasetRoutes(m_router);
        addVersionRoutes(m_router);
        addConfigRoutes(m_router);
        addFontRoutes(m_router);
        addControlRoutes(m_router);
    }

    void start()
    {
        const std::lock_guard lock(m_lifeMutex);
        if (m_running)
            return;
        const int port = m_server.start(m_port);
        m_running = true;
        m_port = port;
        const std::lock_guard urlLock(m_urlMutex);
        m_url = "http://127.0.0.1:" + std::to_string(port);
    }

    void stop()
    {
        const std::lock_guard lock(m_lifeMutex);
        m_server.stop();
        m_running = false;
    }

    std::string url() const
    {
        const std::lock_guard lock(m_urlMutex);
        return m_url;
    }

    /// Runs `work(world)` as one transaction. Work without a result gives true, since a transaction always has one.
    template <typename Work>
    auto transact(const Work& work)
    {
        return m_store.transact([&](Tables& tables) {
            World world{tables, m_blobs, m_signer, m_clock, m_faults, m_requests, url()};
            return work(world);
        });
    }

    template <typename Work>
    void change(const Work& work)
    {
        transact([&](World& world) {
            work(world);
            return true;
        });
    }

    FaultBook& faults() { return m_faults; }
    RequestLog& requests() { return m_requests; }
    Clock& clock() { return m_clock; }

private:
    Strike noteCall(const Call& call)
    {
        const std::string path = call.target.path();
        if (isControl(path))
            return {};
        m_requests.note(call.method, path);
        return m_faults.strike(call.method, path);
    }

    Answer answer(Call& call)
    {
        return transact([&](World& world) {
            const Route& route = m_router.find(call);
            if (route.access == Access::Token)
                call.caller = userOfToken(world, call.accessToken);
            return route.handler(call, world);
        });
    }

    std::filesystem::path m_folder;
    Store m_store;
    BlobStore m_blobs;
    Signer m_signer;
    Clock m_clock;
    FaultBook m_faults;
    RequestLog m_requests;
    Router m_router;
    Server m_server;
    std::mutex m_lifeMutex;
    bool m_running = false;
    int m_port;
    mutable std::mutex m_urlMutex;
    std::string m_url;
};

LocalPlatform::LocalPlatform(const Options& options) : m_core(std::make_unique<Core>(options))
{
    if (options.seedDemo)
        addUser({"demo", "demo-account", "demo-token"});
}

LocalPlatform::~LocalPlatform()
{
    stop();
}

void LocalPlatform::start()
{
    m_core->start();
}

void LocalPlatform::stop()
{
    m_core->stop();
}

std::string LocalPlatform::url() const
{
    return m_core->url();
}

void LocalPlatform::addUser(const User& user)
{
    m_core->change([&](World& world) { platform::addUser(world, user); });
}

void LocalPlatform::setQuota(const std::string& accountId, int projectNumber, int spaceSize)
{
    m_core->change([&](World& world) { platform::setQuota(world, accountId, projectNumber, spaceSize); });
}

void LocalPlatform::setPersonal(const std::string& accountId)
{
    m_core->change([&](World& world) { platform::setPersonal(world, accountId); });
}

void LocalPlatform::grantPermission(const std::string& projectId, const std::string& accountId, const std::string& resource,
                                    const std::vector<std::string>& permissionTypes)
{
    m_core->change([&](World& world) { platform::grantPermission(world, projectId, accountId, resource, permissionTypes); });
}

std::string LocalPlatform::addProject(const ProjectSeed& seed)
{
    return m_core->transact([&](World& world) { return createProject(world, NewProject{seed, {}, false}); });
}

std::string LocalPlatform::addSampleProject(const std::string& name, const std::string& id)
{
    NewProject project;
    project.seed.name = name;
    project.seed.id = id;
    project.sample = true;
    return m_core->transact([&](World& world) { return createProject(world, project); });
}

std::string LocalPlatform::addFolder(const FolderSeed& seed)
{
    return m_core->transact([&](World& world) { return createFolder(world, seed); });
}

std::string LocalPlatform::addDataset(const DatasetSeed& seed)
{
    return m_core->transact([&](World& world) { return createDataset(world, seed); });
}

std::string LocalPlatform::addSpecialty(const std::string& projectId, const std::string& type, const std::string& name,
                                        const std::string& id)
{
    return m_core->transact([&](World& world) { return createSpecialty(world, projectId, type, name, id); });
}

std::string LocalPlatform::addFont(const FontSeed& seed)
{
    return m_core->transact([&](World& world) { return createFont(world, seed); });
}

void LocalPlatform::setStandardProperties(const std::string& projectId, const std::string& jsonArray)
{
    m_core->change([&](World& world) { platform::setStandardProperties(world, projectId, jsonArray); });
}

void LocalPlatform::setGridType(const std::string& projectId, const std::string& gridType)
{
    m_core->change([&](World& world) { platform::setGridType(world, projectId, gridType); });
}

void LocalPlatform::setProjectSize(const std::string& projectId, std::int64_t size)
{
    m_core->change([&](World& world) { platform::setProjectSize(world, projectId, size); });
}

void LocalPlatform::setArchived(const std::string& projectId, bool archived)
{
    m_core->change([&](World& world) { platform::setArchived(world, projectId, archived); });
}

int LocalPlatform::addFault(const Fault& fault)
{
    return m_core->faults().add(fault);
}

int LocalPlatform::faultCount(int id) const
{
    return m_core->faults().count(id);
}

void LocalPlatform::clearFaults()
{
    m_core->faults().clear();
}

void LocalPlatform::moveClock(std::int64_t seconds)
{
    m_core->clock().move(seconds);
}

std::string LocalPlatform::now() const
{
    return m_core->clock().text();
}

std::size_t LocalPlatform::requestCount(const std::string& method, const std::string& pathPrefix) const
{
    return m_core->requests().count(method, pathPrefix);
}

void LocalPlatform::clearRequestCounts()
{
    m_core->requests().clear();
}

} // namespace orlo::platform
