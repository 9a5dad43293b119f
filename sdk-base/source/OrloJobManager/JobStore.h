#pragma once

#include "JobDatabase.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace orlo {

struct Salvage;

/// The job database at one place: opened when it is needed, and again if its file was replaced. A damaged one is set aside and a new one
/// begun. Nothing throws; a failure is a line in the log.   Threads: any.
class JobStore
{
public:
    /// Changes when another process may have written.
    struct Mark
    {
        /// How often the database was opened.
        unsigned opened = 0;
        int dataVersion = 0;

        bool operator==(const Mark& other) const { return opened == other.opened && dataVersion == other.dataVersion; }
        bool operator!=(const Mark& other) const { return !(*this == other); }
    };

    /// There is one store for each place, so that all threads share its connection.
    static std::shared_ptr<JobStore> at(const std::wstring& path);
    /// The store of the job manager; while none runs, the one at the place of the moment.
    static std::shared_ptr<JobStore> current();
    /// The place of the moment.
    static std::wstring currentPath();
    /// Makes the store the job manager's; null ends that.
    static void setManagers(std::shared_ptr<JobStore> store);

    explicit JobStore(std::wstring path) : m_path(std::move(path)) {}

    const std::wstring& path() const { return m_path; }

    bool open();
    void close();
    /// Returns: the account that the row has on disk; empty where the row can't be written.
    std::optional<std::string> put(const JobRow& row);
    bool erase(const std::string& id);
    /// Empty where the database can't be read.
    std::optional<bool> contains(const std::string& id);
    bool setAttempts(const std::string& id, unsigned attempts);
    std::optional<std::vector<JobRow>> rowsAfter(std::int64_t rank, std::size_t atMost);
    /// Asked for again and again, by one thread at a time, so a failure is told once until it is another one.
    std::optional<Mark> mark();

    /// From now on the store knows which rows this process saved and hasn't handed to the manager yet: nobody else is to make jobs of
    /// those.
    void expectHandovers(bool expected);
    void handedOver(const std::string& id);
    bool awaitsHandover(const std::string& id) const;

private:
    using Work = std::function<void(JobDatabase&)>;

    bool attempt(const wchar_t* what, const Work& work);
    std::wstring tryTo(const Work& work);
    void run(const Work& work);
    JobDatabase& database();
    void reopen();
    void replace(const std::wstring& reason);
    void tell(const Salvage& salvage);

    const std::wstring m_path;
    std::mutex m_mutex;
    std::optional<JobDatabase> m_database;
    unsigned m_opened = 0;
    /// To be logged when the lock is given back.
    std::vector<std::wstring> m_lines;
    std::wstring m_lastMarkFailure;

    mutable std::mutex m_handoverMutex;
    bool m_expectsHandovers = false;
    std::unordered_set<std::string> m_awaited;
};

} // namespace orlo
