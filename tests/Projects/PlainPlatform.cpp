#include "PlainPlatform.h"

#include "support/Waiting.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <mutex>
#include <thread>

namespace orlo::test {

class PlainPlatform::Listener
{
public:
    explicit Listener(std::string folders) : m_folders(std::move(folders))
    {
        m_server.set_keep_alive_max_count(1);
        m_server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
            const std::string line = request.method + ' ' + request.target;
            response.set_content(line == "GET /folder/byproject?projectId=p-1" ? m_folders : "[]", "application/json");
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(line);
            return httplib::Server::HandlerResponse::Handled;
        });
        m_port = m_server.bind_to_any_port("127.0.0.1");
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
        EXPECT_TRUE(waitUntil([this] { return m_server.is_running(); }));
    }

    ~Listener()
    {
        m_server.stop();
        m_thread.join();
    }

    int port() const { return m_port; }

    std::vector<std::string> requests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    const std::string m_folders;
    httplib::Server m_server;
    int m_port = 0;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_requests;
    std::thread m_thread;
};

PlainPlatform::PlainPlatform(std::string folders) : m_listener(std::make_unique<Listener>(std::move(folders)))
{}

PlainPlatform::~PlainPlatform() = default;

std::string PlainPlatform::url() const
{
    return "http://127.0.0.1:" + std::to_string(m_listener->port());
}

std::vector<std::string> PlainPlatform::requests() const
{
    return m_listener->requests();
}

} // namespace orlo::test
