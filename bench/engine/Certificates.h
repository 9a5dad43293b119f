#pragma once

#include <openssl/ssl.h>

#include <string>

namespace orlo::bench {

/// Makes an authority and a certificate for this machine's loopback address, writes the authority's to a file, and gives the
/// context of a server with the other one: OpenSSL's defaults, and nothing written to disk but that file.
SSL_CTX* serverContext(const std::string& caFile);

} // namespace orlo::bench
