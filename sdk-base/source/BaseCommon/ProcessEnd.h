#pragma once

#include <BaseCommon/Export.h>

namespace orlo {

/// What the libraries do when the process ends, in an order of their own, whichever of them was used first: main returns while their
/// threads still work, and the first thing to go must not be taken for a failure of the work.
class ORLO_BASE_API ProcessEnd
{
public:
    enum class Step {
        silenceReports, ///< no host is told of any progress any more
        breakOffJobs,   ///< no job starts any more, and those that run know that what fails from now on is no failure of theirs
        breakOffCalls,  ///< no operation begins any more, and those under way are cancelled
        awaitJobs,
        awaitCalls,
    };

    /// What is to be done at a step; it must not throw, and may be done twice. One piece of work for each step, the first one stays. Where
    /// the end has begun already, as a host's thread may use a library for the first time while the process ends, it is done at once.
    /// Threads: any.
    static void at(Step step, void (*work)());
    static bool hasBegun();

    /// A static that somebody makes behind what its work needs, so that it goes before that: the first of them to go begins the end.
    struct ORLO_BASE_API Watch
    {
        Watch() = default;
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
    };
};

} // namespace orlo
