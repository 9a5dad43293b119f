#pragma once

#include <openssl/x509_vfy.h>

#include <memory>
#include <string>

namespace orlo::http {

/// The certificates of a PEM file, read once for as long as the same file is asked for: parsing a bundle takes longer
/// than the request that it serves. Throws std::runtime_error for a file that can't be read,
/// holds no certificate or a broken one.
std::shared_ptr<X509_STORE> certificatesOf(const std::wstring& caFile);

} // namespace orlo::http
