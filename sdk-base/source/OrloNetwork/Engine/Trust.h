#pragma once

#include "Curl.h"

#include <openssl/x509_vfy.h>

#include <memory>
#include <string>

namespace orlo::http {

/// Whose certificates are believed.
struct Trust
{
    std::shared_ptr<X509_STORE> store;
    std::string name; ///< no two have the same
};

/// The certificates of a PEM file, read once for as long as the same file is asked for: parsing a bundle takes longer
/// than the request that it serves. Throws std::runtime_error for a file that can't be read,
/// holds no certificate or a broken one.
std::shared_ptr<const Trust> trustInFile(const std::wstring& caFile);
/// The system's, read once in the process.
std::shared_ptr<const Trust> trustInSystem();

/// The trust must live as long as the handle's transfer and the connection that it makes.
void applyTo(CURL* easy, const Trust& trust);

/// For every transfer, over TLS or not: a handle that has made sessions of its own before would lose their memory.
void shareSessions(CURL* easy);

} // namespace orlo::http
