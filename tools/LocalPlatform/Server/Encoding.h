#pragma once

#include "../Store/OpenFile.h"
#include "../Store/StagedBlob.h"

#include <memory>
#include <string>

namespace orlo::platform {

class BlobStore;
class RequestBody;

/// Writes the body to disk, unpacked. encoding: the request's Content-Encoding; refused with 415 unless it is empty, "identity" or "gzip".
std::unique_ptr<StagedBlob> receive(RequestBody& body, const std::string& encoding, const BlobStore& blobs);

/// A gzip copy of the file, without a name.
OpenFile packed(const OpenFile& file, const BlobStore& blobs);

} // namespace orlo::platform
