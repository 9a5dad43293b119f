#pragma once

namespace orlo {

class JobStore;

/// Removes the private copies of files that processes left behind which are gone: those that no row names, last written before every
/// living process began. Only for the process that holds the jobs.   Nothing throws.
void removeStrayCopies(JobStore& store);

} // namespace orlo
