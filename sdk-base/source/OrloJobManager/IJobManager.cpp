#include <OrloJobManager/IJobManager.h>
#include <OrloLogging/ILogManager.h>

namespace orlo {

IJobManager::IJobManager() = default;
IJobManager::~IJobManager() = default;

bool IJobManager::Start(const JobManagerOptions&)
{
    ILogManager::Get()->LogErrorAt(__FILE__, __LINE__, "orlo::IJobManager::Start", L"the job database is not available in this version",
                                   L"[ORLOSDK]");
    return false;
}

void IJobManager::Stop()
{}

IJobManager* IJobManager::Get() noexcept
{
    return nullptr;
}

} // namespace orlo
