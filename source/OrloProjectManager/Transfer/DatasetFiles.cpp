#include "../Frame/Retried.h"
#include "../NetworkProject/Call/Refusal.h"
#include "../NetworkProject/Projects/VersionWeb.h"
#include "../NetworkProject/Transfer/LocalFiles.h"
#include "../NetworkProject/Transfer/StreamWeb.h"
#include "../NetworkProject/Transfer/TransferWeb.h"
#include "WaitingTransfer.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/Files.h>
#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/DatasetFiles.h>

#include <filesystem>
#include <optional>

namespace orlo {

namespace {

constexpr const char* versionListing = "orlo::DatasetFiles::listVersions";
constexpr const char* versionDownload = "orlo::DatasetFiles::downloadVersion";
constexpr int firstVersion = 1;

bool refuseVersion(ErrorCode& error, const std::wstring& words)
{
    return refuse(error, error::badInput, words);
}

/// An answer without an error that was no success either leaves the ErrorCode clear.
bool refuseUnlessTold(ErrorCode& error, const std::wstring& words)
{
    return error.isClear() ? refuseVersion(error, words) : false;
}

bool hasDatasetId(const std::string& datasetId, ErrorCode& error)
{
    return !datasetId.empty() || refuse(error, error::emptyParameter, L"datasetId is empty");
}

/// None with the reason in `error`.
std::optional<VersionOfFile> findVersion(const std::string& datasetId, int number, ErrorCode& error)
{
    auto found = fetched(&OrloWebService::GetVersionOfFile, error, datasetId, number);
    const int told = found ? found->record.version : number;
    if (!found) {
        refuseUnlessTold(error, L"the platform gave no version");
    }
    else if (told < 0 || (number >= 0 && told != number)) {
        refuseVersion(error, L"the platform didn't tell of the version that it was asked for");
        found.reset();
    }
    return found;
}

DatasetFileVersion toFileVersion(const VersionOfFile& found)
{
    const http::ORLOHTTPPayloadDatasetVersion& record = found.record;
    DatasetFileVersion version;
    version.number = record.version;
    version.id = record.id;
    version.displayVersion = record.displayVersion;
    version.status = record.status;
    version.creationTime = record.creationTime;
    version.sourceFile = record.dataSetSourceFile;
    version.size = record.size < 0 ? -1 : record.size;
    return version;
}

/// The HTTP status that an ErrorCode tells of; 0 for none.
int statusIn(const ErrorCode& error)
{
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    return failure && error.GetValue() == error::errorStatus ? failure->GetCode() : 0;
}

bool isMissing(const ErrorCode& error)
{
    return statusIn(error) == 404;
}

using DatasetFileVersions = std::vector<DatasetFileVersion>;

DatasetFileVersions versionsDownFrom(const std::string& datasetId, int newest, int atMost, ErrorCode& error)
{
    DatasetFileVersions versions;
    ErrorCode missing;
    int number = newest;
    for (int asked = 0; asked < atMost; ++asked) {
        if (const auto found = findVersion(datasetId, number, error)) {
            versions.push_back(toFileVersion(*found));
            number = found->record.version;
        }
        else if (!isMissing(error)) {
            return {};
        }
        else {
            missing = error;
            error.Clear();
        }
        if (number <= firstVersion)
            break;
        --number;
    }
    if (versions.empty())
        error = missing;
    return versions;
}

/// A file under a name that nobody knows, which goes unless it gets its own.
class ArrivingFile
{
public:
    explicit ArrivingFile(const std::wstring& target) : m_path(utils::halfMadeNameBeside(target)) {}
    ~ArrivingFile() { utils::removeFile(m_path); }
    ArrivingFile(const ArrivingFile&) = delete;
    ArrivingFile& operator=(const ArrivingFile&) = delete;

    const std::wstring& path() const { return m_path; }
    /// Below 0 where there is none.
    std::int64_t size() const
    {
        std::error_code failed;
        const auto size = std::filesystem::file_size(utils::makePath(m_path), failed);
        return failed ? -1 : static_cast<std::int64_t>(size);
    }

private:
    const std::wstring m_path;
};

/// Where the store told about an upload, the version is named by a JSON text, with the path in it.
std::wstring placeInStore(const std::wstring& sourceFile)
{
    JsonWrapper told;
    std::string path;
    if (sourceFile.empty() || sourceFile.front() != L'{' || !told.Parse(utils::toString(sourceFile)))
        return sourceFile;
    told.Get("remoteFilePath", path);
    return utils::toWstring(path);
}

/// A document's own version is what the record tells, or else the number of the dataset's, if the size can show that it isn't.
bool findDocumentAddress(const VersionOfFile& version, const std::wstring& fileId, std::wstring& address, ErrorCode& error)
{
    const bool isTold = version.documentVersion >= 0;
    if (!isTold && version.record.size < 0)
        return refuseVersion(error, L"the platform tells neither the version of the document nor its size");
    const int documentVersion = isTold ? version.documentVersion : version.record.version;
    return retried(&OrloWebService::GetDocumentDownloadAddress, error, address, fileId, documentVersion);
}

bool findAddress(const VersionOfFile& version, std::wstring& address, ErrorCode& error)
{
    const std::wstring place = placeInStore(version.record.dataSetSourceFile);
    if (place.empty())
        return refuseVersion(error, L"the version has no file");
    const bool isPath = place.find(L'/') != std::wstring::npos;
    const bool isFound =
        isPath ? retried(&OrloWebService::GetDownloadAddress, error, address, place) : findDocumentAddress(version, place, address, error);
    return (isFound && !address.empty()) || refuseUnlessTold(error, L"the platform gave no address of the file");
}

std::wstring bytesText(std::int64_t size)
{
    return utils::toWstring(static_cast<long long>(size));
}

/// wanted: below 0, or empty, for what nobody told.
bool isAsTold(const ArrivingFile& file, std::int64_t wantedSize, const std::string& wantedMd5, ErrorCode& error)
{
    if (wantedSize >= 0 && file.size() != wantedSize)
        return refuseVersion(error, L"the file is another than the version tells: " + bytesText(file.size()) + L" bytes instead of " +
                                        bytesText(wantedSize));
    if (!wantedMd5.empty() && utils::md5(file.path()) != wantedMd5)
        return refuseVersion(error, L"the file is another than the store tells: its MD5 isn't " + utils::toWstring(wantedMd5));
    return true;
}

bool bringBytes(const VersionOfFile& version, const std::wstring& address, const std::wstring& target, ErrorCode& error)
{
    const ArrivingFile file(target);
    const auto md5 = fetched(&OrloWebService::GetFileFromUrl, error, address, file.path());
    if (!md5)
        return refuseUnlessTold(error, L"the store gave no file");
    if (!isAsTold(file, version.record.size, *md5, error))
        return false;
    return utils::renameOver(file.path(), target) || refuse(error, error::exception, L"the file can't be moved to its place");
}

bool bringVersion(const std::string& datasetId, int number, const std::wstring& target, ErrorCode& error)
{
    const auto version = findVersion(datasetId, number, error);
    std::wstring address;
    return version && findAddress(*version, address, error) && bringBytes(*version, address, target, error);
}

/// Whether a file may be made there, or replaced.
bool isPlaceForFile(const std::wstring& path)
{
    const std::wstring folder = FilePath(path).GetDirectoryName();
    return !utils::holdsNul(path) && !utils::hasDirectory(path) && !FilePath(path).GetFileName().empty() &&
           (folder.empty() || utils::hasDirectory(folder));
}

PromiseData failedVersion(int status, const ErrorCode& error)
{
    log::errorAt(ORLO_HERE(versionDownload), error.GetErrorMessage());
    return {false, status, error.GetErrorMessage()};
}

PromiseData broughtVersion(const std::string& datasetId, int number, std::wstring target, ErrorCode& error)
{
    constexpr int refused = 400;
    if (!hasDatasetId(datasetId, error))
        return failedVersion(refused, error);
    prepareLocalFiles();
    if (target.empty())
        utils::GenerateNewFile(target);
    if (!isPlaceForFile(target)) {
        refuseVersion(error, L"invalid file path");
        return failedVersion(refused, error);
    }
    if (bringVersion(datasetId, number, target, error))
        return {true, 200, target};
    const int status = statusIn(error);
    return failedVersion(status ? status : utils::Caught::known, error);
}

} // namespace

namespace DatasetFiles {

DatasetFileVersions listVersions(const std::string& datasetId, int newest, int atMost, ErrorCode& error)
{
    return CallFrame(ORLO_HERE(versionListing)).run(error, [&] {
        if (!hasDatasetId(datasetId, error))
            return DatasetFileVersions();
        if (atMost <= 0) {
            refuseVersion(error, L"atMost is not above 0");
            return DatasetFileVersions();
        }
        return versionsDownFrom(datasetId, newest, atMost, error);
    });
}

DatasetFileVersions listVersions(const std::string& datasetId, ErrorCode& error)
{
    return listVersions(datasetId, -1, usualRequests, error);
}

std::future<PromiseData> downloadVersion(const std::string& datasetId, int version, const std::wstring& localPath, ErrorCode& error)
{
    return startTransfer(ORLO_HERE(versionDownload), error, [=](const auto& outcome) {
        settleByWaiting(*outcome, ORLO_HERE(versionDownload),
                        [&](ErrorCode& own) { return broughtVersion(datasetId, version, localPath, own); });
    });
}

} // namespace DatasetFiles

} // namespace orlo
