#pragma once

#include "JobCancel.h"

#include <OrloJobManager/IJobEntity.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <typeindex>
#include <unordered_map>

namespace orlo {

/// A job with what it told of itself when it was added.
struct Job
{
    std::string id;
    std::int64_t createTime = 0;
    std::shared_ptr<IJobEntity> entity;
    /// That handed it over; empty where nobody was signed in then.
    std::string account;
    std::shared_ptr<JobCancel> cancel;
};

/// The jobs that wait, and the choice of the one that starts next. Calls the jobs' own operations, so it must be used without a lock that
/// those could want. Not for two threads at once.
///
/// A job that may not start now isn't asked again before retryAll, so that ten thousand of them don't ask each other ten thousand times.
class JobQueue
{
public:
    void add(const Job& job);
    /// Takes a job out again, if it is there.
    void remove(const IJobEntity& entity);
    /// A job has ended, so those that had to wait for it may be asked again.
    void retryAll();
    bool hasUntried() const;

    /// Takes out the first job that may start beside the running ones; stops looking when it is told to.
    /// Returns: a job without an entity if there is none.
    Job takeRunnable(const IJobEntity::List& running, const std::atomic<bool>& isStopped);

private:
    struct Entry;
    struct Before
    {
        bool operator()(const Entry* left, const Entry* right) const;
    };
    // Multisets, since they lose nothing even if a class orders its jobs in a way that makes no sense.
    using Order = std::multiset<Entry*, Before>;

    struct Entry
    {
        Job job;
        std::uint64_t number = 0;
        /// Where it stands in the list of those that wait.
        std::size_t place = 0;
        /// How often a job that it named itself went first.
        unsigned passes = 0;
        std::uint64_t refusedIn = 0;
        Order::iterator position;
    };
    /// The jobs of one class: operator < says nothing about those of another.
    struct Class
    {
        Order untried;
        Order refused;
    };

    Class& classOf(const Entry& entry);
    bool isRefused(const Entry& entry) const { return entry.refusedIn == m_round; }
    Entry* firstUntried() const;
    Entry* find(const IJobEntity* entity);
    Entry& preferredTo(Entry& entry, const IJobEntity::List& running);
    bool mayRun(Entry& entry, const IJobEntity::List& running);
    void refuse(Entry& entry);
    Job take(Entry& entry);
    void swapPlaces(std::size_t first, std::size_t second);

    std::unordered_map<const IJobEntity*, Entry> m_entries;
    std::map<std::type_index, Class> m_classes;
    /// What IsCanRun is shown; kept up to date, since making it anew costs a step for each job that waits.
    IJobEntity::List m_waiting;
    std::uint64_t m_round = 1;
    std::uint64_t m_lastNumber = 0;
};

} // namespace orlo
