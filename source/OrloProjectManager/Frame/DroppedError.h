#pragma once

#include <BaseCommon/ErrorCode.h>

namespace orlo {

/// The ErrorCode of a short form: it lives for one call, and nobody reads it.
///
///     Projects GetAllProjects() override { return GetAllProjects(DroppedError()); }
class DroppedError
{
public:
    operator ErrorCode&() { return m_error; }

private:
    ErrorCode m_error;
};

} // namespace orlo
