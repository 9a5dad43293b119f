#include "LocalPlatform.h"

#include "Core.h"

namespace orlo::platform {

LocalPlatform::LocalPlatform(const Options& options) : m_core(std::make_unique<Core>(options))
{
    if (options.seedDemo)
        change(addUser, {"demo", "demo-account", "demo-token"});
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

FaultBook& LocalPlatform::faults()
{
    return m_core->faults();
}

RequestLog& LocalPlatform::requests()
{
    return m_core->requests();
}

Transfers& LocalPlatform::transfers()
{
    return m_core->transfers();
}

Clock& LocalPlatform::clock()
{
    return m_core->clock();
}

void LocalPlatform::transact(const std::function<void(World&)>& work) const
{
    m_core->transact([&](World& world) {
        work(world);
        return true;
    });
}

} // namespace orlo::platform
