#include "JobQueue.h"

#include "JobLog.h"
#include "JobRun.h"

#include <BaseCommon/Text.h>

#include <typeinfo>
#include <utility>

namespace orlo {

namespace {

// A job that names others as more urgent gives way so often, then it runs: new ones could come for ever.
constexpr unsigned mostPasses = 8;

bool isBefore(const IJobEntity& left, const IJobEntity& right)
{
    try {
        return left < right;
    }
    catch (...) {
        return false;
    }
}

bool isCanRun(IJobEntity& job, const std::string& id, const IJobEntity::List& running, const IJobEntity::List& others)
{
    try {
        return job.IsCanRun(running, others);
    }
    catch (...) {
        log::error(L"job " + utils::toWstring(id) + L" can't say whether it may run: " + wordsOfCaught());
        return false;
    }
}

std::shared_ptr<IJobEntity> priorityJobOf(const IJobEntity& job)
{
    try {
        return job.GetPriorityJob();
    }
    catch (...) {
        return nullptr;
    }
}

} // namespace

bool JobQueue::Before::operator()(const Entry* left, const Entry* right) const
{
    if (isBefore(*left->job.entity, *right->job.entity))
        return true;
    if (isBefore(*right->job.entity, *left->job.entity))
        return false;
    return left->number < right->number;
}

void JobQueue::add(const Job& job)
{
    const auto [position, isNew] = m_entries.try_emplace(job.entity.get());
    if (!isNew)
        return;
    Entry& entry = position->second;
    entry.job = job;
    entry.number = ++m_lastNumber;
    entry.place = m_waiting.size();
    m_waiting.push_back(job.entity);
    entry.position = classOf(entry).untried.insert(&entry);
}

void JobQueue::remove(const IJobEntity& entity)
{
    if (Entry* const entry = find(&entity))
        take(*entry);
}

void JobQueue::retryAll()
{
    ++m_round;
    for (auto& [type, jobs] : m_classes) {
        if (jobs.untried.empty())
            jobs.untried.swap(jobs.refused);
        else
            jobs.untried.merge(jobs.refused);
    }
}

bool JobQueue::hasUntried() const
{
    return firstUntried() != nullptr;
}

Job JobQueue::takeRunnable(const IJobEntity::List& running, const std::atomic<bool>& isStopped)
{
    for (Entry* entry = firstUntried(); entry != nullptr && !isStopped; entry = firstUntried()) {
        if (mayRun(*entry, running))
            return take(preferredTo(*entry, running));
        refuse(*entry);
    }
    return {};
}

JobQueue::Class& JobQueue::classOf(const Entry& entry)
{
    const IJobEntity& entity = *entry.job.entity;
    return m_classes[typeid(entity)];
}

JobQueue::Entry* JobQueue::firstUntried() const
{
    Entry* first = nullptr;
    for (const auto& [type, jobs] : m_classes) {
        Entry* const head = jobs.untried.empty() ? nullptr : *jobs.untried.begin();
        if (head && (!first || std::pair(head->job.createTime, head->number) < std::pair(first->job.createTime, first->number)))
            first = head;
    }
    return first;
}

JobQueue::Entry* JobQueue::find(const IJobEntity* entity)
{
    const auto found = m_entries.find(entity);
    return found == m_entries.end() ? nullptr : &found->second;
}

// One step only: two jobs may name each other.
JobQueue::Entry& JobQueue::preferredTo(Entry& entry, const IJobEntity::List& running)
{
    const std::shared_ptr<IJobEntity> wanted = priorityJobOf(*entry.job.entity);
    Entry* const other = find(wanted.get());
    if (!other || other == &entry || isRefused(*other) || entry.passes == mostPasses)
        return entry;
    if (!mayRun(*other, running)) {
        refuse(*other);
        return entry;
    }
    ++entry.passes;
    return *other;
}

// The job's own place is hidden from it.
bool JobQueue::mayRun(Entry& entry, const IJobEntity::List& running)
{
    if (!mayRunNow(entry.job.account))
        return false;
    const std::size_t place = entry.place;
    const std::shared_ptr<IJobEntity> entity = entry.job.entity;
    m_waiting[place].swap(m_waiting.back());
    m_waiting.pop_back();
    const bool result = isCanRun(*entity, entry.job.id, running, m_waiting);
    m_waiting.push_back(entity);
    m_waiting[place].swap(m_waiting.back());
    return result;
}

void JobQueue::refuse(Entry& entry)
{
    Class& jobs = classOf(entry);
    // They are refused in order, so the end is the place.
    entry.position = jobs.refused.insert(jobs.refused.end(), jobs.untried.extract(entry.position));
    entry.refusedIn = m_round;
}

Job JobQueue::take(Entry& entry)
{
    Class& jobs = classOf(entry);
    (isRefused(entry) ? jobs.refused : jobs.untried).erase(entry.position);
    swapPlaces(entry.place, m_waiting.size() - 1);
    m_waiting.pop_back();
    Job job = std::move(entry.job);
    m_entries.erase(job.entity.get());
    return job;
}

void JobQueue::swapPlaces(std::size_t first, std::size_t second)
{
    find(m_waiting[first].get())->place = second;
    find(m_waiting[second].get())->place = first;
    m_waiting[first].swap(m_waiting[second]);
}

} // namespace orlo
