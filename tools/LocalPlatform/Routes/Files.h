#pragma once

#include "../Seeds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orlo::platform {

class StagedBlob;

/// A file that somebody wants to upload.
struct Grant
{
    std::string fileName{};
    std::string filePath{};
    std::string folderId{};   ///< By Arkiv only: the folder that counts the versions of its files.
    bool isOfLibrary = false; ///< By Arkiv, but in no folder: each upload is a file of its own.
};

/// Makes room for an upload; returns the blob's id.
std::string grantUpload(World& world, const Grant& grant);
/// Takes the bytes that came for a granted upload. Sent again they replace the first ones, and count as the same version.
void storeUpload(World& world, const std::string& blobId, StagedBlob& staged);

/// The address under which the blob may be read ("GET") or written ("PUT") for a while.
std::string signedAddress(const World& world, const std::string& method, const std::string& blobId);

/// Blobs whose bytes have come; the others are refused with 404.
std::string blobOfPath(const World& world, const std::string& remotePath);
std::string blobOfFile(World& world, const std::string& fileId, int versionIndex);
std::string blobOfSeed(World& world, const std::string& datasetId, const std::string& seed);

/// No value if the store has no such file.
std::optional<std::int64_t> lengthOfPath(World& world, const std::string& remotePath);
std::optional<std::int64_t> lengthOfFile(World& world, const std::string& fileId, std::int64_t versionIndex);

std::string remotePathOf(World& world, const std::string& blobId);

/// `addFile` and `addDatasetFile` for bytes that came in.
void storeFile(World& world, const std::string& remotePath, StagedBlob& staged);
std::string storeDatasetFile(World& world, const std::string& datasetId, const std::string& path, StagedBlob& staged);

/// All versions of a file by Arkiv; refused with 404 if the project has no such file.
void removeFile(World& world, const std::string& projectId, const std::string& fileId);
void removeBlobsOfProject(World& world, const std::string& projectId);

} // namespace orlo::platform
