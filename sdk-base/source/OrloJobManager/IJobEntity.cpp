#include "IJobEntity.h"

namespace orlo {

IJobEntity::IJobEntity() = default;
IJobEntity::~IJobEntity() = default;

} // namespace orlo
