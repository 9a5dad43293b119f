// The server that the engine's benchmark asks: as little work as can be for each request, so that it isn't what is measured.
//
//   OrloBenchOrigin --data DIR
//
// Serves the files below DIR. Prints a line "listening on" with the ports of http, http that closes after each answer, https, https
// that closes, and of the control, and the file with the authority of its certificate.

#include "../Help.h"
#include "Certificates.h"
#include "Platform.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace orlo::bench;

constexpr int threadsOfPort = 32; ///< more than any client has connections

[[noreturn]] void giveUp(const char* words)
{
    std::fprintf(stderr, "OrloBenchOrigin: %s\n", words);
    std::exit(1);
}

/// What a port speaks.
struct Manner
{
    SSL_CTX* context = nullptr; ///< null for http
    bool closes = false;
    bool isControl = false;
};

/// The value of a header, or nothing. Field names are compared as they are mostly written, or all small.
std::string_view header(std::string_view head, std::string_view name, std::string_view small)
{
    for (const std::string_view written : {name, small}) {
        const std::size_t at = head.find(written);
        if (at == std::string_view::npos)
            continue;
        const std::size_t begin = head.find_first_not_of(' ', at + written.size());
        return head.substr(begin, head.find('\r', begin) - begin);
    }
    return {};
}

/// The requests of one connection, one after the other.
class Conversation
{
public:
    Conversation(Platform& platform, Stream& stream, const Manner& manner) : m_platform(platform), m_stream(stream), m_manner(manner) {}

    void run()
    {
        while (readHead() && answer() && !m_last) {
        }
        if (m_last)
            m_stream.end();
    }

private:
    bool readMore()
    {
        char piece[16 * 1024];
        const std::size_t count = m_stream.read(piece, sizeof piece);
        m_read.append(piece, count);
        return count > 0;
    }

    bool readHead()
    {
        std::size_t end = 0;
        while ((end = m_read.find("\r\n\r\n")) == std::string::npos) {
            if (!readMore())
                return false;
        }
        m_head = m_read.substr(0, end + 2);
        m_read.erase(0, end + 4);
        return true;
    }

    Request readRequest() const
    {
        const std::size_t space = m_head.find(' ');
        Request request;
        request.method = m_head.substr(0, space);
        request.path = m_head.substr(space + 1, m_head.find(' ', space + 1) - space - 1);
        request.base = m_manner.context ? "https://" : "http://";
        request.base += header(m_head, "\r\nHost:", "\r\nhost:");
        return request;
    }

    bool answer()
    {
        Request request = readRequest();
        const std::string_view connection = header(m_head, "\r\nConnection:", "\r\nconnection:");
        m_last = m_manner.closes || connection == "close" || connection == "Close";
        if (!header(m_head, "\r\nTransfer-Encoding:", "\r\ntransfer-encoding:").empty()) {
            m_last = true;
            return send({411, {}});
        }
        return readBody(request) && send(m_manner.isControl ? m_platform.answerToControl(request) : m_platform.answerTo(request));
    }

    bool readBody(Request& request)
    {
        const std::string length(header(m_head, "\r\nContent-Length:", "\r\ncontent-length:"));
        const std::uint64_t size = std::strtoull(length.c_str(), nullptr, 10);
        if (!header(m_head, "\r\nExpect:", "\r\nexpect:").empty() && !m_stream.write("HTTP/1.1 100 Continue\r\n\r\n"))
            return false;
        if (Platform::takesBody(request)) {
            const std::string begun = take(std::min<std::uint64_t>(size, m_read.size()));
            return m_platform.takeBody(m_stream, begun, size);
        }
        while (m_read.size() < size) {
            if (!readMore())
                return false;
        }
        request.body = take(size);
        return true;
    }

    std::string take(std::size_t count)
    {
        std::string taken = m_read.substr(0, count);
        m_read.erase(0, count);
        return taken;
    }

    bool send(const Answer& answer)
    {
        char head[256];
        const int size = std::snprintf(head, sizeof head, "HTTP/1.1 %d %s\r\nContent-Type: %s\r\nContent-Length: %zu\r\n%s\r\n",
                                       answer.status, answer.status == 200 ? "OK" : "Refused",
                                       answer.file ? "application/octet-stream" : "application/json;charset=UTF-8",
                                       answer.file ? answer.file->bytes.size() : answer.json.size(), m_last ? "Connection: close\r\n" : "");
        const std::string_view text(head, static_cast<std::size_t>(size));
        return answer.file ? m_stream.write(text, *answer.file) : m_stream.write(std::string(text) + answer.json);
    }

    Platform& m_platform;
    Stream& m_stream;
    Manner m_manner;
    std::string m_read;
    std::string m_head;
    bool m_last = false;
};

void serve(Platform& platform, int listener, const Manner& manner)
{
    for (;;) {
        const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        if (!manner.isControl)
            platform.countConnection();
        if (const auto stream = manner.context ? tlsStream(socket, manner.context) : plainStream(socket))
            Conversation(platform, *stream, manner).run();
    }
}

/// Each thread takes a connection and keeps to it: nothing is handed over. Returns the port.
int listenOn(Platform& platform, const Manner& manner)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(listener, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // The request is there when the connection is, which saves a wake-up.
    ::setsockopt(listener, IPPROTO_TCP, TCP_DEFER_ACCEPT, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const auto generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener, generic, size) != 0 || ::listen(listener, 1024) != 0 || ::getsockname(listener, generic, &size) != 0)
        giveUp("can't listen");
    for (int i = 0; i < (manner.isControl ? 2 : threadsOfPort); ++i)
        std::thread([&platform, listener, manner] { serve(platform, listener, manner); }).detach();
    return ntohs(address.sin_port);
}

constexpr const char* help = R"(--data DIR
  The server that OrloEngineBench starts: it serves the files below DIR, until it is killed. Its first line tells the ports of http, of
  http that closes after each answer, of https, of https that closes, and of the control, and the file with the certificate to trust.)";

} // namespace

int main(int argc, char** argv)
{
    if (orlo::bench::answersForItself(argc, argv, "OrloBenchOrigin", help))
        return 0;
    if (argc != 3 || std::string_view(argv[1]) != "--data")
        giveUp("say --data DIR");
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    std::signal(SIGPIPE, SIG_IGN);
    // Buffers of connections come and go; asking the kernel for them each time would cost more than the request.
    ::mallopt(M_MMAP_THRESHOLD, 64 << 20);
    ::mallopt(M_TRIM_THRESHOLD, 512 << 20);
    const std::string caFile = std::string(argv[2]) + "/ca.pem";
    SSL_CTX* const context = serverContext(caFile);
    Platform platform(argv[2]);
    const int ports[] = {listenOn(platform, {}), listenOn(platform, {nullptr, true}), listenOn(platform, {context}),
                         listenOn(platform, {context, true}), listenOn(platform, {nullptr, true, true})};
    std::printf("listening on %d %d %d %d %d %s\n", ports[0], ports[1], ports[2], ports[3], ports[4], caFile.c_str());
    std::fflush(stdout);
    for (;;)
        ::pause();
}
