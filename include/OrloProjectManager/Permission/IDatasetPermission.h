#pragma once

#include <OrloProjectManager/Export.h>

#include <string>

namespace orlo {

class ErrorCode;

/// What a user may do with a dataset.
enum class EDatasetPermission : int {
    READ_ONLY = 0,  ///< Read. Also where writing couldn't be asked for because the network failed: the user keeps reading.
    SOFT_WRITE = 1, ///< Write, on a token of the platform's kind 3; what that allows is the host's and the platform's matter.
    READ_WRITE = 2, ///< Write, on a token of kind 2.
    FORBID = 3,     ///< Neither: the platform refused both.
    UNKNOWN = 4     ///< Nobody can tell.
};

/// One user at a time may write a dataset that several have open. The right to do so is a token, which the platform grants and this machine
/// keeps in a file for each pair of user and dataset, so that the same user is known again after a restart. A right to read needs no
/// keeping.
///
/// `resultJson` tells the reason, as {"code":10000,"msg":"success"}: the platform's own code and words where it refused, the code -1 where
/// it didn't say, or wasn't reached. Where nobody is signed in it stays as it was. Tokens stand in no log.
/// A failure never changes the kept token; a kill at any instant leaves the old one or the new one.
/// Errors: 0xE8000002 transport or exception; a negative value for an error status.   Threads: any; all block their caller. Two calls for
/// one dataset at once are the platform's to decide; the token that was granted last is kept.
class ORLO_PROJECT_API IDatasetPermission
{
public:
    /// Asks for the right to write, with the token that this user holds already, and keeps what is granted; asks for the right to read
    /// where the platform refuses. Needs a signed-in user.
    /// Returns: what the user may do. UNKNOWN too if the folder of the token file can't be made, or nobody is signed in.
    /// Requests: two that are retried (asking, acknowledging); two more where writing is refused.
    static EDatasetPermission GetDatasetPermission(const std::string& datasetId, std::string& resultJson, ErrorCode& error);

    /// Asks for the right to read alone; needs no user and no file.   Requests: two, retried.
    static bool AskForReadPermission(const std::string& datasetId, std::string& resultJson, ErrorCode& error);

    /// Gives the right to write back, and forgets the token. True once the platform has taken it, even if the file can't be changed then.
    /// Without a kept token nothing is sent, and the code is -1. The last argument has no effect.   Requests: one, retried.
    static bool ReleaseDatasetPermission(const std::string& datasetId, std::string& resultJson, ErrorCode& error, bool unused);

    /// Takes the right to write from whoever has it. The token file stays as it is, also if the right was this user's: the next
    /// GetDatasetPermission sends the stale token, and the platform decides.
    /// Errors: also 0xE8000002 with the answer in words, where it names no single holder or doesn't confirm.   Requests: two, retried.
    static bool ReleaseDatasetPermissionForce(const std::wstring& datasetId, ErrorCode& error);

    /// Whether the right to write is held with the token that this user has kept.
    /// Errors: as above; nobody signed in counts as an exception.   Requests: one, retried.
    static bool IsEditTokenValid(const std::wstring& datasetId, ErrorCode& error);
};

} // namespace orlo
