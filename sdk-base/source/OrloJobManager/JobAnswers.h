#pragma once

#include <BaseCommon/ErrorCode.h>
#include <OrloJobManager/Export.h>

// Ready-made answers to what the job manager asks its host.
namespace orlo {

class IJobEntity;

/// What is to become of a job whose run has failed.
enum class FailedJob { Drop, Keep };

/// Keeps what the same request may bring about later: the network failed (the name of a host, a proxy and a certificate included, and an
/// answer that can't be read, as hotel networks give one), or the platform answered 401, 408, 429 or 5xx. Drops everything else: what the
/// platform refuses (400, 403, 404, 413), a file that is gone, what was cancelled.
/// As JobManagerOptions::onFailure.
ORLO_JOB_API FailedJob keepIfItMaySucceed(const IJobEntity& job, const ErrorCode& error);

/// As JobManagerOptions::mayStart. Whether the network is there too says http::isSignedInAndOnline.
ORLO_JOB_API bool isSomebodySignedIn();

} // namespace orlo
