#pragma once

#include <OrloJobManager/Export.h>

#include <typeinfo>

namespace orlo {

/// Shared objects of the process, one for each type, so that libraries which don't know each other meet at the same one.
/// Owns nothing.   Threads: any, for all operations; static initialisers of other libraries included.
class ORLO_JOB_API GeneralInstanceCreator
{
public:
    GeneralInstanceCreator(const GeneralInstanceCreator&) = delete;
    GeneralInstanceCreator& operator=(const GeneralInstanceCreator&) = delete;

    /// Never null; valid until the process is gone.
    static GeneralInstanceCreator* Get() noexcept;

    /// Returns: the object kept under the type; null if there is none.
    void* getInstance(const std::type_info& type) const;

    /// Keeps the object under the type, in place of an earlier one; null removes it.
    void setInstance(const std::type_info& type, void* instance);

private:
    GeneralInstanceCreator() = default;
    ~GeneralInstanceCreator() = default;
};

} // namespace orlo
