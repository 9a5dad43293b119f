#include "Stream.h"

#include <openssl/bio.h>

#include <algorithm>
#include <cstring>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace orlo::bench {

namespace {

constexpr std::size_t smallFile = std::size_t{64} << 10;
constexpr std::size_t largePiece = std::size_t{1} << 20;

std::size_t orNothing(ssize_t count)
{
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

class PlainStream : public Stream
{
public:
    explicit PlainStream(int socket) : m_socket(socket) {}
    ~PlainStream() override { ::close(m_socket); }

    PlainStream(const PlainStream&) = delete;
    PlainStream& operator=(const PlainStream&) = delete;

    std::size_t read(char* to, std::size_t room) override { return orNothing(::recv(m_socket, to, room, 0)); }

    /// The kernel drops them without copying them anywhere.
    std::size_t discard(std::size_t count) override
    {
        return orNothing(::recv(m_socket, nullptr, std::min(count, 4 * largePiece), MSG_TRUNC));
    }

    bool write(std::string_view bytes) override { return send(bytes, 0); }

    bool write(std::string_view head, const OpenFile& file) override
    {
        if (file.bytes.size() <= smallFile)
            return sendTogether(head, file.bytes);
        if (!send(head, MSG_MORE))
            return false;
        const auto end = static_cast<off_t>(file.bytes.size());
        for (off_t sent = 0; sent < end;) {
            if (::sendfile(m_socket, file.descriptor, &sent, static_cast<std::size_t>(end - sent)) <= 0)
                return false;
        }
        return true;
    }

    void end() override {}

private:
    bool send(std::string_view bytes, int flags) const
    {
        while (!bytes.empty()) {
            const std::size_t count = orNothing(::send(m_socket, bytes.data(), bytes.size(), flags | MSG_NOSIGNAL));
            if (count == 0)
                return false;
            bytes.remove_prefix(count);
        }
        return true;
    }

    bool sendTogether(std::string_view head, std::string_view body) const
    {
        iovec parts[] = {{const_cast<char*>(head.data()), head.size()}, {const_cast<char*>(body.data()), body.size()}};
        const std::size_t sent = orNothing(::writev(m_socket, parts, 2));
        if (sent == 0)
            return false;
        return sent < head.size() ? send(head.substr(sent), MSG_MORE) && send(body, 0) : send(body.substr(sent - head.size()), 0);
    }

    int m_socket;
};

class TlsStream : public Stream
{
public:
    /// Between the records and the socket lies a buffer for each direction, so that a record doesn't cost a call of the kernel.
    /// OpenSSL's own reading ahead would move what is left of the buffer for every record.
    TlsStream(int socket, SSL_CTX* context) : m_socket(socket), m_tls(SSL_new(context))
    {
        BIO* const buffers = BIO_new(BIO_f_buffer());
        BIO_set_write_buffer_size(buffers, largePiece / 4);
        BIO_set_read_buffer_size(buffers, largePiece / 4);
        BIO_push(buffers, BIO_new_socket(socket, BIO_NOCLOSE));
        SSL_set_bio(m_tls, buffers, buffers);
    }
    ~TlsStream() override
    {
        SSL_free(m_tls);
        ::close(m_socket);
    }

    TlsStream(const TlsStream&) = delete;
    TlsStream& operator=(const TlsStream&) = delete;

    bool accept() { return SSL_accept(m_tls) == 1; }

    std::size_t read(char* to, std::size_t room) override
    {
        std::size_t count = 0;
        return SSL_read_ex(m_tls, to, room, &count) == 1 ? count : 0;
    }

    std::size_t discard(std::size_t count) override
    {
        thread_local std::vector<char> waste(largePiece / 4);
        return read(waste.data(), std::min(count, waste.size()));
    }

    bool write(std::string_view bytes) override { return put(bytes) && flush(); }

    bool write(std::string_view head, const OpenFile& file) override
    {
        if (file.bytes.size() <= smallFile) {
            thread_local std::string whole;
            return write(whole.assign(head).append(file.bytes));
        }
        if (!put(head))
            return false;
        for (std::string_view rest = file.bytes; !rest.empty(); rest.remove_prefix(std::min(rest.size(), largePiece))) {
            if (!put(rest.substr(0, largePiece)))
                return false;
        }
        return flush();
    }

    void end() override
    {
        SSL_shutdown(m_tls);
        flush();
    }

private:
    bool put(std::string_view bytes) const
    {
        std::size_t count = 0;
        return SSL_write_ex(m_tls, bytes.data(), bytes.size(), &count) == 1;
    }
    bool flush() const { return BIO_flush(SSL_get_wbio(m_tls)) == 1; }

    int m_socket;
    SSL* m_tls;
};

} // namespace

std::unique_ptr<Stream> plainStream(int socket)
{
    return std::make_unique<PlainStream>(socket);
}

std::unique_ptr<Stream> tlsStream(int socket, SSL_CTX* context)
{
    auto stream = std::make_unique<TlsStream>(socket, context);
    return stream->accept() ? std::move(stream) : nullptr;
}

} // namespace orlo::bench
