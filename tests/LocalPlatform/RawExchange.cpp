#include "RawExchange.h"

#include <gtest/gtest.h>

namespace orlo::platform::test {

int RawReply::status() const
{
    return bytes.compare(0, 9, "HTTP/1.1 ") == 0 ? std::stoi(bytes.substr(9, 3)) : 0;
}

std::string RawReply::body() const
{
    const std::size_t end = bytes.find("\r\n\r\n");
    return end == std::string::npos ? std::string() : bytes.substr(end + 4);
}

std::unique_ptr<orlo::test::Connection> connectTo(const std::string& url)
{
    return orlo::test::connectTo(std::stoi(url.substr(url.rfind(':') + 1)));
}

RawReply readAll(orlo::test::Connection& connection)
{
    RawReply reply;
    while (connection.read(reply.bytes))
        ;
    reply.reset = connection.wasReset();
    return reply;
}

RawReply exchange(const std::string& url, const std::string& request)
{
    const auto connection = connectTo(url);
    EXPECT_TRUE(connection->write(request));
    return readAll(*connection);
}

} // namespace orlo::platform::test
