#pragma once

#include <BaseCommon/Export.h>

#include <functional>
#include <string>

namespace orlo {

/// The host's event board. The libraries post on it and never need it: without a host's own there is none.
class ORLO_BASE_API IOrloEventManager
{
public:
    using Listener = std::function<void(int eventType, const std::wstring& value)>;

    IOrloEventManager();
    virtual ~IOrloEventManager();

    IOrloEventManager(const IOrloEventManager&) = delete;
    IOrloEventManager& operator=(const IOrloEventManager&) = delete;

    /// The board that the host installed, or null.   Threads: any.
    static IOrloEventManager* Get() noexcept;

    /// Makes `manager` the board of the process; null takes it away.
    /// The host keeps the ownership, and the object lives until the last thread that may have got it is done.
    static void Install(IOrloEventManager* manager) noexcept;

    /// Returns: an id by which Unsubscribe ends it.
    virtual int Subscribe(int eventType, Listener listener) = 0;
    virtual bool Unsubscribe(int subscription) = 0;

    /// Hands an event to whoever listens.   Threads: any.
    virtual void PostEvent(int eventType, const std::wstring& value) = 0;
};

} // namespace orlo
