#include "JobStore.h"

#include "JobCopies.h"
#include "JobLog.h"
#include "JobReplacement.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <map>
#include <stdexcept>
#include <utility>

namespace orlo {

namespace {

constexpr unsigned openingMilliseconds = 5000;

struct Stores
{
    std::mutex mutex;
    std::map<std::wstring, std::weak_ptr<JobStore>> byPath;
    std::shared_ptr<JobStore> managers;
    /// Keeps the connection from one save to the next while no manager runs.
    std::shared_ptr<JobStore> latest;
};

Stores& stores()
{
    static Stores& instance = utils::neverDestroyed(new Stores);
    return instance;
}

std::shared_ptr<JobStore> storeAt(Stores& known, const std::wstring& path)
{
    std::weak_ptr<JobStore>& entry = known.byPath[path];
    std::shared_ptr<JobStore> store = entry.lock();
    if (!store)
        entry = store = std::make_shared<JobStore>(path);
    return store;
}

std::wstring number(std::size_t value)
{
    return utils::toWstring(static_cast<long long>(value));
}

} // namespace

std::shared_ptr<JobStore> JobStore::at(const std::wstring& path)
{
    const std::lock_guard lock(stores().mutex);
    return storeAt(stores(), path);
}

std::shared_ptr<JobStore> JobStore::current()
{
    Stores& known = stores();
    const std::lock_guard lock(known.mutex);
    if (known.managers)
        return known.managers;
    known.latest = storeAt(known, currentPath());
    return known.latest;
}

std::wstring JobStore::currentPath()
{
    return FilePath::Combine(utils::getLocalDbCachePath(), L"jobs.db");
}

void JobStore::setManagers(std::shared_ptr<JobStore> store)
{
    const std::lock_guard lock(stores().mutex);
    stores().managers = std::move(store);
    stores().latest.reset();
}

bool JobStore::open()
{
    return attempt(L"can't be opened", [](JobDatabase&) {});
}

void JobStore::close()
{
    const std::lock_guard lock(m_mutex);
    m_database.reset();
}

std::optional<std::string> JobStore::put(const JobRow& row)
{
    {
        const std::lock_guard lock(m_handoverMutex);
        if (m_expectsHandovers)
            m_awaited.insert(row.id);
    }
    std::string account;
    if (attempt(L"can't take a job", [&](JobDatabase& database) { account = database.put(row); }))
        return account;
    handedOver(row.id);
    return std::nullopt;
}

bool JobStore::erase(const std::string& id)
{
    handedOver(id);
    return attempt(L"can't drop a job", [&](JobDatabase& database) { database.erase(id); });
}

std::optional<bool> JobStore::contains(const std::string& id)
{
    std::optional<bool> result;
    attempt(L"can't be read", [&](JobDatabase& database) { result = database.contains(id); });
    return result;
}

bool JobStore::setAttempts(const std::string& id, unsigned attempts)
{
    return attempt(L"can't note an attempt", [&](JobDatabase& database) { database.setAttempts(id, attempts); });
}

std::optional<std::vector<JobRow>> JobStore::rowsAfter(std::int64_t rank, std::size_t atMost)
{
    std::optional<std::vector<JobRow>> result;
    attempt(L"can't be read", [&](JobDatabase& database) { result = database.rowsAfter(rank, atMost); });
    return result;
}

std::optional<JobStore::Mark> JobStore::mark()
{
    Mark mark;
    const std::wstring failure = tryTo([&](JobDatabase& database) {
        mark.dataVersion = database.dataVersion();
        mark.opened = m_opened;
    });
    const bool isNews = failure != std::exchange(m_lastMarkFailure, failure);
    if (failure.empty())
        return mark;
    if (isNews)
        log::error(L"the job database can't be looked at: " + failure + L", " + m_path);
    return std::nullopt;
}

void JobStore::expectHandovers(bool expected)
{
    const std::lock_guard lock(m_handoverMutex);
    m_expectsHandovers = expected;
    m_awaited.clear();
}

void JobStore::handedOver(const std::string& id)
{
    const std::lock_guard lock(m_handoverMutex);
    m_awaited.erase(id);
}

bool JobStore::awaitsHandover(const std::string& id) const
{
    const std::lock_guard lock(m_handoverMutex);
    return m_awaited.count(id) != 0;
}

bool JobStore::attempt(const wchar_t* what, const Work& work)
{
    const std::wstring failure = tryTo(work);
    if (!failure.empty())
        log::error(std::wstring(L"the job database ") + what + L": " + failure + L", " + m_path);
    return failure.empty();
}

// What there is to tell is told without the lock: a host's logger may come back here.
std::wstring JobStore::tryTo(const Work& work)
{
    std::wstring failure;
    std::vector<std::wstring> lines;
    {
        const std::lock_guard lock(m_mutex);
        try {
            run(work);
        }
        catch (...) {
            failure = wordsOfCaught();
        }
        lines.swap(m_lines);
    }
    for (const std::wstring& line : lines)
        log::error(line);
    return failure;
}

// A second time with a new connection: if damage showed up only now, or if another process replaced the file meanwhile, in which case
// what was just written went with the old one.
void JobStore::run(const Work& work)
{
    try {
        JobDatabase& first = database();
        work(first);
        if (first.isInPlace())
            return;
    }
    catch (const DamagedDatabase&) {
        if (!m_database)
            throw;
        m_database->keepAsItIs();
    }
    m_database.reset();
    work(database());
}

JobDatabase& JobStore::database()
{
    if (m_database && !m_database->isInPlace())
        m_database.reset();
    if (!m_database)
        reopen();
    return *m_database;
}

// Processes open a database one after the other: only so can one of them replace it. One that had to wait too long makes nothing.
void JobStore::reopen()
{
    utils::FileLock opening;
    const bool isAlone = opening.acquire(m_path + L".opening", openingMilliseconds);
    if (isAlone && isReplacementUnfinished(m_path))
        replace(L"its replacement was begun and not ended");
    if (!isAlone && isReplacementUnfinished(m_path))
        throw std::runtime_error("another process replaces it");
    try {
        if (isEmptied(m_path))
            throw DamagedDatabase("it is empty");
        m_database.emplace(m_path);
    }
    catch (const DamagedDatabase&) {
        if (!isAlone)
            throw;
        replace(wordsOfCaught());
        m_database.emplace(m_path);
    }
    ++m_opened;
}

void JobStore::replace(const std::wstring& reason)
{
    const std::wstring name = setAside(m_path);
    m_lines.push_back(L"the job database is damaged: " + reason + L"; it was set aside as " + name);
    if (const std::optional<Salvage> salvage = replaceSetAside(m_path, name))
        tell(*salvage);
}

void JobStore::tell(const Salvage& salvage)
{
    m_lines.push_back(L"jobs read from the damaged database: " + number(salvage.rows.size()) +
                      (salvage.lost ? L"; known to be lost: " + number(*salvage.lost) : L"; how many more it held can't be told"));
    const std::size_t orphans = copiesWithoutRow(FilePath(m_path).GetDirectoryName(), salvage.rows);
    if (orphans > 0)
        m_lines.push_back(L"copies of files beside the job database that no job names any more: " + number(orphans));
}

} // namespace orlo
