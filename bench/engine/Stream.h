#pragma once

#include <openssl/ssl.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace orlo::bench {

/// A file that is sent often: open, and mapped whole, until the process ends.
struct OpenFile
{
    int descriptor = -1;
    std::string_view bytes;
};

/// The server's end of a connection, blocking. A failure is an end: the connection is of no use then.
class Stream
{
public:
    virtual ~Stream() = default;

    /// Returns: how many bytes came; 0 at the end.
    virtual std::size_t read(char* to, std::size_t room) = 0;
    /// The same for bytes that nobody wants to see.
    virtual std::size_t discard(std::size_t count) = 0;
    virtual bool write(std::string_view bytes) = 0;
    virtual bool write(std::string_view head, const OpenFile& file) = 0;
    /// Says goodbye, where the protocol has a word for it.
    virtual void end() = 0;
};

std::unique_ptr<Stream> plainStream(int socket);

/// Null if the handshake fails.
std::unique_ptr<Stream> tlsStream(int socket, SSL_CTX* context);

} // namespace orlo::bench
