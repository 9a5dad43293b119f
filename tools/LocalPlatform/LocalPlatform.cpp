#include "LocalPlatform.h"

#include "Core.h"
#include "Routes/Datasets.h"
#include "Routes/Files.h"
#include "Routes/Projects.h"
#include "Routes/Users.h"

namespace orlo::platform {

namespace {

std::unique_ptr<StagedBlob> staged(const World& world, const std::string& bytes)
{
    auto blob = world.blobs.stage();
    blob->append(bytes);
    return blob;
}

} // namespace

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

void LocalPlatform::revokeToken(const std::string& accessToken)
{
    m_core->change([&](World& world) { setRevoked(world, accessToken, true); });
}

void LocalPlatform::expireTokenIn(const std::string& accessToken, std::int64_t seconds)
{
    m_core->change([&](World& world) { expireIn(world, accessToken, seconds); });
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

void LocalPlatform::addFile(const std::string& remotePath, const std::string& bytes)
{
    m_core->change([&](World& world) { seedFile(world, remotePath, *staged(world, bytes)); });
}

std::string LocalPlatform::addDatasetFile(const std::string& datasetId, const std::string& path, const std::string& bytes)
{
    return m_core->transact([&](World& world) { return seedDatasetFile(world, datasetId, path, *staged(world, bytes)); });
}

std::string LocalPlatform::blob(const std::string& remotePath) const
{
    return m_core->transact([&](World& world) { return world.blobs.get(blobOfPath(world, remotePath)); });
}

std::vector<StoredFile> LocalPlatform::blobs() const
{
    return m_core->transact(storedFiles);
}

std::vector<Translation> LocalPlatform::translations() const
{
    return m_core->transact(platform::translations);
}

void LocalPlatform::setSignedLifetime(std::int64_t seconds)
{
    m_core->transfers().setSignedLifetime(seconds);
}

void LocalPlatform::setGzipAnswers(bool on)
{
    m_core->transfers().setGzipAnswers(on);
}

void LocalPlatform::setPlainPutAnswer(const std::string& body)
{
    m_core->transfers().setPlainPutAnswer(body);
}

std::size_t LocalPlatform::openDownloads() const
{
    return m_core->transfers().openDownloads();
}

std::size_t LocalPlatform::peakDownloads() const
{
    return m_core->transfers().peakDownloads();
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
    m_core->transfers().clearPeak();
}

} // namespace orlo::platform
