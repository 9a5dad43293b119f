#include <OrloJobManager/GeneralInstanceCreator.h>
#include <OrloJobManager/LocalDbJobEntity.h>

#include <map>
#include <mutex>
#include <utility>

namespace orlo {

namespace {

struct Registry
{
    std::mutex mutex;
    std::map<std::string, JobEntityFactory> factories;
};

// One registry for the process: it is kept where every library that has jobs finds it, and never destroyed, since
// registrations come and go with the statics of those libraries.
Registry& registry()
{
    static Registry* const instance = [] {
        auto* const creator = GeneralInstanceCreator::Get();
        if (void* const known = creator->getInstance(typeid(LocalDbJobEntity)))
            return static_cast<Registry*>(known);
        auto* const made = new Registry;
        creator->setInstance(typeid(LocalDbJobEntity), made);
        return made;
    }();
    return *instance;
}

} // namespace

JobEntityRegistration::JobEntityRegistration(std::string jobTypeKey, JobEntityFactory factory)
    : m_jobTypeKey(std::move(jobTypeKey)), m_owner(false)
{
    const std::lock_guard lock(registry().mutex);
    m_owner = registry().factories.emplace(m_jobTypeKey, std::move(factory)).second;
}

JobEntityRegistration::~JobEntityRegistration()
{
    if (!m_owner)
        return;
    const std::lock_guard lock(registry().mutex);
    registry().factories.erase(m_jobTypeKey);
}

std::shared_ptr<LocalDbJobEntity> makeJobEntity(const std::string& jobTypeKey)
{
    JobEntityFactory factory;
    {
        const std::lock_guard lock(registry().mutex);
        const auto found = registry().factories.find(jobTypeKey);
        if (found != registry().factories.end())
            factory = found->second;
    }
    return factory ? factory() : nullptr;
}

} // namespace orlo
