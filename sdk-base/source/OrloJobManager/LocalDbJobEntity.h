#pragma once

#include <OrloJobManager/JobEntity.h>

#include <functional>

namespace orlo {

/// A job with a row in the local job database. The database is not available in this version, so both operations log that
/// and return false.
class ORLO_JOB_API LocalDbJobEntity : public JobEntity
{
public:
    LocalDbJobEntity();
    ~LocalDbJobEntity() override;

    bool remove() override;
    bool save() override;
};

/// Makes an empty job, which LoadFromJson fills.
using JobEntityFactory = std::function<std::shared_ptr<LocalDbJobEntity>()>;

/// Registers the class behind a job type key for as long as the object lives: a static of the library that has the class.
class ORLO_JOB_API JobEntityRegistration
{
public:
    /// A key that is taken stays with its first owner.   Threads: any; static initialisers included.
    JobEntityRegistration(std::string jobTypeKey, JobEntityFactory factory);
    ~JobEntityRegistration();

    JobEntityRegistration(const JobEntityRegistration&) = delete;
    JobEntityRegistration& operator=(const JobEntityRegistration&) = delete;

private:
    std::string m_jobTypeKey;
    bool m_owner;
};

/// Returns: an empty job of the class behind the key; null for an unknown key.   Threads: any.
ORLO_JOB_API std::shared_ptr<LocalDbJobEntity> makeJobEntity(const std::string& jobTypeKey);

} // namespace orlo
