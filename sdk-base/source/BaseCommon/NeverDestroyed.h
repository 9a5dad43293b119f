#pragma once

namespace orlo::utils {

/// For what a process makes once and any thread may touch: tables, managers, stores, the logger. Main may return, or a host call `exit`,
/// while transfers, jobs and lines of the log are under way; what was destroyed with the statics then would be used all the same. So it is
/// made at its first use and left to the system.
///
///     static Marks& marks = utils::neverDestroyed(new Marks);
template <class T>
T& neverDestroyed(T* object) noexcept
{
    return *object;
}

} // namespace orlo::utils
