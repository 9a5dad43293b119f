#include "IFileJob.h"

namespace orlo {

IFileJob::IFileJob() = default;
IFileJob::~IFileJob() = default;

} // namespace orlo
