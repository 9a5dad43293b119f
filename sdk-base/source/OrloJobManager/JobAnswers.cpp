#include "JobAnswers.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/RequestError.h>
#include <OrloAuth/UserSession.h>

namespace orlo {

namespace {

bool isPassingStatus(int status)
{
    return status == 401 || status == 408 || status == 429 || (status >= 500 && status < 600);
}

/// The numbers of the network's failures are those of the system, of certificates or 0; a caught exception has one of its own.
bool isOfNetwork(const HttpError& failure)
{
    return failure.GetName() == L"generic exception" && failure.GetCode() >= 0 && failure.GetCode() < utils::Caught::known;
}

bool maySucceed(const ErrorCode& error)
{
    if (isCancelled(error))
        return false;
    if (const RequestDetails* const details = requestDetails(error); details && details->failure != NetworkFailure::none)
        return details->failure != NetworkFailure::cancelled;
    const auto* const failure = dynamic_cast<const HttpError*>(error.GetCategory().get());
    return failure && (isPassingStatus(failure->GetCode()) || isOfNetwork(*failure));
}

} // namespace

FailedJob keepIfItMaySucceed(const IJobEntity&, const ErrorCode& error)
{
    return maySucceed(error) ? FailedJob::Keep : FailedJob::Drop;
}

bool isSomebodySignedIn()
{
    return UserSession::GetInstance() != nullptr;
}

} // namespace orlo
