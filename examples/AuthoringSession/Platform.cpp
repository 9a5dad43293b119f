#include "Platform.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>

#include <LocalPlatform/LocalPlatform.h>
#include <LocalPlatform/Store/Store.h>
#include <LocalPlatform/World.h>
#include <system_error>

namespace session {

using namespace orlo::utils;
using orlo::platform::LocalPlatform;

namespace {

std::filesystem::path pathOf(const std::string& kept)
{
    return kept.empty() ? std::filesystem::temp_directory_path() / makePath(L"AuthoringSession-" + generateGuid())
                        : std::filesystem::absolute(makePath(toWstring(kept)));
}

} // namespace

SessionFolder::SessionFolder(const std::string& kept) : m_path(pathOf(kept)), m_isKept(!kept.empty())
{
    std::filesystem::create_directories(m_path);
    m_pictures = m_isKept ? path(L"pictures") : orlo::FilePath::Combine(getLocalAppDataPath(), L"AuthoringSession/pictures");
}

SessionFolder::~SessionFolder()
{
    std::error_code ignored;
    if (!m_isKept)
        std::filesystem::remove_all(m_path, ignored);
}

std::wstring SessionFolder::path(const std::wstring& name) const
{
    return fromPath(m_path / makePath(name));
}

Platform::Platform(const std::string& url, const SessionFolder& folder) : m_url(url)
{
    if (!m_url.empty())
        return;
    orlo::platform::Options options;
    options.dataFolder = toString(folder.path(L"platform"));
    options.seedDemo = true;
    m_own = std::make_unique<LocalPlatform>(options);
    m_own->change(orlo::platform::setQuota, "demo-account", 500, 100);
    m_own->change(orlo::platform::addStandardComponents);
    m_own->change(orlo::platform::addStandardTemplates);
    m_own->start();
    m_url = m_own->url();
}

Platform::~Platform() = default;

std::wstring Platform::url() const
{
    return toWstring(m_url);
}

void Platform::addDatasetFile(const std::string& datasetId, const std::string& path, const std::string& bytes) const
{
    m_own->change(orlo::platform::addDatasetFile, datasetId, path, bytes);
}

void Platform::addColleague() const
{
    m_own->change(orlo::platform::addUser, {"li", "li-account", "li-token"});
}

void Platform::share(const std::string& projectId, const std::string& teamId, const std::string& datasetId) const
{
    m_own->change([&](orlo::platform::World& world) {
        orlo::platform::ShareSeed share;
        share.shareId = world.tables.text("SELECT id FROM team WHERE projectId = ? ORDER BY rank", projectId).value();
        share.consumedId = teamId;
        share.name = "一审";
        share.contents = {{datasetId, 1}};
        orlo::platform::addShare(world, share);
    });
}

std::wstring Platform::publicComponent(const std::string& name) const
{
    return m_own->ask([&](const orlo::platform::World& world) {
        return toWstring(world.tables
                             .text("SELECT c.componentId FROM publicComponentVersion c JOIN componentEdition e ON e.id = c.editionId "
                                   "WHERE e.name = ?",
                                   name)
                             .value());
    });
}

void Platform::startDataset(const std::string& datasetId, const std::string& templateId) const
{
    m_own->change(orlo::platform::addSampleFile, {datasetId, templateId});
}

void Platform::addModuleCategory(const std::string& projectId, const std::string& name) const
{
    m_own->change(orlo::platform::addModuleCategory, {"projects", projectId, "beam", "tree", name});
}

void Platform::bundle(const std::string& projectId, const std::string& datasetId) const
{
    m_own->change([&](orlo::platform::World& world) {
        orlo::platform::ArchivePackageSeed package;
        package.projectId = projectId;
        package.name = "一期竣工";
        package.receiverName = "档案馆";
        orlo::platform::ArchiveUnitSeed unit;
        unit.projectId = projectId;
        unit.name = "建筑图纸";
        unit.datasetVersions = {
            static_cast<int>(world.tables.integer("SELECT id FROM version WHERE dataSetId = ? AND version = 1", datasetId).value())};
        orlo::platform::addArchiveVersion(world, orlo::platform::addArchivePackage(world, package),
                                          {orlo::platform::addArchiveUnit(world, unit)});
    });
}

void Platform::slowUploadsDown() const
{
    constexpr int tenMinutes = 600000;
    orlo::platform::Fault slow;
    slow.kind = orlo::platform::FaultKind::Delay;
    slow.method = "PUT";
    slow.path = "/blobs/";
    slow.prefix = true;
    slow.calls = -1;
    slow.delayMilliseconds = tenMinutes;
    m_own->faults().add(slow);
}

} // namespace session
