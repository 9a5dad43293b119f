#pragma once

#include <BaseCommon/Interruption.h>

#include <functional>
#include <memory>
#include <utility>

namespace orlo {

/// Whether the host wants a job no more: he cancelled its token, or has removed it.   Threads: any.
class JobCancel
{
public:
    /// token: null for a job without one.   heard: called once, by whoever cancels; it must own what it uses.
    JobCancel(const std::shared_ptr<Interruption>& token, std::function<void()> heard)
        : m_interruption(Interruption::within({nullptr, token, nullptr, true})), m_listener(m_interruption, std::move(heard))
    {}

    void request() { m_interruption->request(); }
    bool isRequested() const { return m_interruption->isRequested(); }
    /// For what the job does.
    const std::shared_ptr<Interruption>& interruption() const { return m_interruption; }

private:
    const std::shared_ptr<Interruption> m_interruption;
    const Interruption::Listener m_listener;
};

} // namespace orlo
