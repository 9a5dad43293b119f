#include "Platform.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

#include <LocalPlatform/LocalPlatform.h>
#include <system_error>

namespace session {

using namespace orlo::utils;
using orlo::platform::LocalPlatform;

SessionFolder::SessionFolder() : m_path(std::filesystem::temp_directory_path() / makePath(L"AuthoringSession-" + generateGuid()))
{
    std::filesystem::create_directories(m_path);
}

SessionFolder::~SessionFolder()
{
    std::error_code ignored;
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
    m_own->setQuota("demo-account", 20, 100);
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
    m_own->addDatasetFile(datasetId, path, bytes);
}

} // namespace session
