#include "Interruption.h"

#include <exception>
#include <utility>

namespace orlo {

namespace {

// A plain pointer: it may be asked for while the thread's own objects go.
thread_local Interruption::Scope* innermost = nullptr;

} // namespace

Interruption::Interruption() = default;
Interruption::~Interruption() = default;

std::shared_ptr<Interruption> Interruption::within(const Bounds& bounds)
{
    auto part = std::make_shared<Interruption>();
    part->m_isAwaited = bounds.isAwaited;
    part->m_outer = bounds.outer;
    part->m_token = bounds.token;
    part->m_meter = bounds.meter || !bounds.outer ? bounds.meter : bounds.outer->m_meter;
    part->listenTo(bounds.outer, part->m_byOuter, part);
    part->listenTo(bounds.token, part->m_byToken, part);
    return part;
}

void Interruption::listenTo(const std::shared_ptr<Interruption>& other, std::optional<Listener>& listener,
                            const std::shared_ptr<Interruption>& self)
{
    if (!other)
        return;
    listener.emplace(other, [weak = std::weak_ptr(self)] {
        if (const auto part = weak.lock())
            part->request();
    });
}

void Interruption::request()
{
    Listeners listeners;
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_isRequested, true))
            return;
        listeners.swap(m_listeners);
        m_requested.notify_all();
    }
    // Without the lock: what is broken off may come back at once.
    for (const auto& [number, heard] : listeners) {
        try {
            heard();
        }
        catch (const std::exception&) { // no memory to wake this one with: it sees it at its next step; the others hear it all the same
        }
    }
}

bool Interruption::isRequested() const
{
    const std::lock_guard lock(m_mutex);
    return m_isRequested;
}

bool Interruption::isCancelled() const
{
    return (m_token && m_token->isRequested()) || (m_outer && m_outer->isCancelled());
}

bool Interruption::waitFor(std::chrono::milliseconds atMost) const
{
    std::unique_lock lock(m_mutex);
    return m_requested.wait_for(lock, atMost, [this] { return m_isRequested; });
}

std::shared_ptr<Interruption> Interruption::current() noexcept
{
    return innermost ? innermost->m_interruption : nullptr;
}

Interruption::Scope::Scope(std::shared_ptr<Interruption> interruption)
    : m_interruption(std::move(interruption)), m_outer(std::exchange(innermost, this))
{}

// A host may keep one in an object, and put another in its place.
Interruption::Scope::~Scope()
{
    Scope** link = &innermost;
    while (*link && *link != this)
        link = &(*link)->m_outer;
    if (*link)
        *link = m_outer;
}

Interruption::Listener::Listener(std::shared_ptr<Interruption> interruption, std::function<void()> heard)
    : m_interruption(std::move(interruption))
{
    if (!m_interruption)
        return;
    {
        const std::lock_guard lock(m_interruption->m_mutex);
        if (!m_interruption->m_isRequested) {
            m_number = ++m_interruption->m_lastNumber;
            m_interruption->m_listeners.emplace(m_number, std::move(heard));
            return;
        }
    }
    heard();
}

Interruption::Listener::~Listener()
{
    if (!m_interruption)
        return;
    std::function<void()> heard; // goes without the lock
    const std::lock_guard lock(m_interruption->m_mutex);
    const auto found = m_interruption->m_listeners.find(m_number);
    if (found == m_interruption->m_listeners.end())
        return;
    heard = std::move(found->second);
    m_interruption->m_listeners.erase(found);
}

} // namespace orlo
