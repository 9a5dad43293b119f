#pragma once

#include <BaseCommon/Export.h>

#include <memory>
#include <mutex>
#include <string>

namespace orlo::utils {

/// The write tokens of datasets that this machine's users hold, one for each pair of user and dataset, kept in one file in
/// TokenFolder(). The file is replaced as a whole, so it survives a kill at any instant; it is readable by its owner alone, and several
/// processes may use it at once. A file that can't be understood is set aside under another name. All ids and tokens are opaque UTF-8.
/// What the file held when it was last used is remembered, and read again only where somebody else has written it.
class ORLO_BASE_API PermissionFileHelper
{
public:
    /// The one of this process; never null.
    static PermissionFileHelper* GetInstance();

    /// The folder "Veltrin/PermissionToken" below getLocalAppDataPath(). Not made by this call.
    static std::wstring TokenFolder();

    /// Returns: the token kept for the pair; empty if there is none.
    std::string GetDatasetTokenFromFile(const std::string& userId, const std::string& datasetId);
    /// Keeps a token, in place of the one that the pair may have. False if it isn't on disk, or if it is empty.
    bool WriteTokenToFile(const std::string& userId, const std::string& datasetId, const std::string& token);
    /// Forgets the pair's token. False if there was none, or if the file couldn't be written.
    bool ReleasePermission(const std::string& userId, const std::string& datasetId);

private:
    class File;

    PermissionFileHelper();
    ~PermissionFileHelper();

    std::mutex m_mutex;
    std::unique_ptr<File> m_file;
};

} // namespace orlo::utils
