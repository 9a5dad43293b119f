#include "LocalFiles.h"

#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/StrayFiles.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

#include <mutex>
#include <set>

namespace orlo {

namespace {

bool isFirstTimeAt(const std::wstring& folder)
{
    static std::mutex& mutex = utils::neverDestroyed(new std::mutex);
    static auto& known = utils::neverDestroyed(new std::set<std::wstring>);
    const std::lock_guard lock(mutex);
    return known.insert(folder).second;
}

} // namespace

void prepareLocalFiles() noexcept
try {
    utils::tellThatProcessLives();
    if (!isFirstTimeAt(utils::getTempPath()))
        return;
    if (const std::size_t removed = utils::removeStrayTransfers())
        log::info(L"unfinished files of processes that are gone were removed: " + utils::toWstring(static_cast<long long>(removed)));
}
catch (...) { // no memory, or the host's logger; the transfer goes on
}

} // namespace orlo
