#include "HttpExchange.h"

#include "Sockets.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>

namespace orlo::test {

namespace {

bool sameName(const std::string& a, const std::string& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    });
}

// Takes the text up to the line end out of what came; waits for it.
std::optional<std::string> takeLine(Connection& connection)
{
    std::string& pending = connection.pending();
    std::size_t searched = 0;
    std::size_t end = 0;
    while ((end = pending.find("\r\n", searched)) == std::string::npos) {
        searched = pending.empty() ? 0 : pending.size() - 1;
        if (!connection.read(pending))
            return std::nullopt;
    }
    std::string line = pending.substr(0, end);
    pending.erase(0, end + 2);
    return line;
}

bool takeBytes(Connection& connection, std::size_t count, std::string& out)
{
    std::string& pending = connection.pending();
    while (pending.size() < count) {
        if (!connection.read(pending))
            return false;
    }
    out.append(pending, 0, count);
    pending.erase(0, count);
    return true;
}

bool parseRequestLine(const std::string& line, Request& request)
{
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string::npos || first == last || line.substr(last + 1) != "HTTP/1.1")
        return false;
    request.method = line.substr(0, first);
    request.target = line.substr(first + 1, last - first - 1);
    return !request.method.empty() && request.target.find(' ') == std::string::npos;
}

bool readHeaders(Connection& connection, Headers& headers)
{
    for (;;) {
        const auto line = takeLine(connection);
        if (!line)
            return false;
        if (line->empty())
            return true;
        const std::size_t colon = line->find(':');
        if (colon == std::string::npos || colon == 0)
            return false;
        const std::size_t value = line->find_first_not_of(" \t", colon + 1);
        const std::size_t end = line->find_last_not_of(" \t");
        headers.emplace_back(line->substr(0, colon), value == std::string::npos ? "" : line->substr(value, end - value + 1));
    }
}

std::optional<std::size_t> parseLength(const std::string& text, int base)
{
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text.c_str(), &end, base);
    if (text.empty() || *end != '\0')
        return std::nullopt;
    return static_cast<std::size_t>(value);
}

bool readChunks(Connection& connection, std::string& body)
{
    for (;;) {
        const auto line = takeLine(connection);
        const auto size = line ? parseLength(*line, 16) : std::nullopt;
        if (!size || !takeBytes(connection, *size, body))
            return false;
        const auto end = takeLine(connection);
        if (!end || !end->empty())
            return false;
        if (*size == 0)
            return true;
    }
}

bool readBody(Connection& connection, Request& request)
{
    if (sameName(request.header("Transfer-Encoding"), "chunked"))
        return readChunks(connection, request.body);
    if (!request.hasHeader("Content-Length"))
        return true;
    const auto length = parseLength(request.header("Content-Length"), 10);
    return length && takeBytes(connection, *length, request.body);
}

bool takesBody(const std::string& method, int status)
{
    return method != "HEAD" && status != 204 && status != 304;
}

} // namespace

bool Request::hasHeader(const std::string& name) const
{
    return std::any_of(headers.begin(), headers.end(), [&](const auto& header) { return sameName(header.first, name); });
}

std::string Request::header(const std::string& name) const
{
    const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& header) { return sameName(header.first, name); });
    return found == headers.end() ? std::string() : found->second;
}

std::string Reply::wire(const std::string& method) const
{
    std::string text = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\n";
    if (!contentType.empty())
        text += "Content-Type: " + contentType + "\r\n";
    for (const auto& [name, value] : headers)
        text.append(name).append(": ").append(value).append("\r\n");
    if (status != 204 && status != 304)
        text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    text += "\r\n";
    if (takesBody(method, status))
        text += body;
    return text;
}

ReadResult readRequest(Connection& connection, Request& request)
{
    const auto line = takeLine(connection);
    if (!line)
        return connection.pending().empty() ? ReadResult::end : ReadResult::malformed;
    if (!parseRequestLine(*line, request) || !readHeaders(connection, request.headers) || !readBody(connection, request))
        return ReadResult::malformed;
    return ReadResult::request;
}

} // namespace orlo::test
