#pragma once

#include "Faults.h"
#include "Listener.h"
#include "Router.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace orlo::platform {

/// Reads requests with cpp-httplib and lets `Answering` answer them.
class Server : private httplib::Server
{
public:
    /// What the server needs to know of the platform.
    struct Answering
    {
        std::function<Strike(Call&)> strike; ///< Notes the call, and tells what befalls it.
        std::function<Answer(Call&)> answer;
    };

    explicit Server(Answering answering);
    ~Server() override;

    /// Returns the port.
    int start(int port);
    void stop();

private:
    bool serve(Connection& connection);
    static HandlerResponse refuseLength(httplib::Response& response);
    void handleUpload(const httplib::Request& request, httplib::Response& response);
    void handle(const httplib::Request& request, httplib::Response& response, RequestBody* stream);
    Answer answerStruck(Call& call, const Strike& strike);
    Answer answer(Call& call) const;
    Answer answerInTime(Call& call);
    /// False if the server stopped meanwhile.
    bool wait(std::chrono::milliseconds delay);

    Answering m_answering;
    Listener m_listener;
    std::mutex m_mutex;
    std::condition_variable m_stopped;
    bool m_stopping = true;
};

} // namespace orlo::platform
