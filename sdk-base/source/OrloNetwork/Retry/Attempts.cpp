#include "Attempts.h"

#include <utility>

namespace orlo::http {

namespace {

thread_local const Attempts::Scope* innermostAttempts = nullptr;

constexpr ProgressMeter::Kind kinds[] = {ProgressMeter::Kind::ofCall, ProgressMeter::Kind::ofFile};

std::size_t indexOf(ProgressMeter::Kind kind)
{
    return static_cast<std::size_t>(kind);
}

} // namespace

void Attempts::begin()
{
    ++m_number;
    const std::lock_guard lock(m_mutex);
    for (const ProgressMeter::Kind kind : kinds) {
        const Counted failed = std::exchange(m_counted[indexOf(kind)], {});
        if (m_meter)
            m_meter->count(kind, -failed.done, -failed.inAll);
    }
}

void Attempts::count(const std::shared_ptr<ProgressMeter>& meter, ProgressMeter::Kind kind, std::int64_t done, std::int64_t inAll)
{
    const std::lock_guard lock(m_mutex);
    m_meter = meter;
    m_counted[indexOf(kind)].done += done;
    m_counted[indexOf(kind)].inAll += inAll;
    m_meter->count(kind, done, inAll);
}

std::shared_ptr<Attempts> Attempts::current() noexcept
{
    return innermostAttempts ? innermostAttempts->m_attempts : nullptr;
}

Attempts::Scope::Scope(std::shared_ptr<Attempts> attempts)
    : m_attempts(std::move(attempts)), m_outer(std::exchange(innermostAttempts, this))
{}

Attempts::Scope::~Scope()
{
    innermostAttempts = m_outer;
}

} // namespace orlo::http
