#pragma once

#include <memory>
#include <stdexcept>
#include <string>

namespace orlo::platform {

class FileBody;

/// What a route answers: a status and a body. JSON unless `contentType` says otherwise.
struct Answer
{
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
    std::shared_ptr<FileBody> file{}; ///< Sent instead of `body`.
    std::string contentEncoding{};    ///< Of the file; empty: as it is.
    std::string contentMd5{};         ///< Of the file; empty: not told.
};

/// A call that is refused: thrown by routes and seeding calls, answered as an envelope without data.
class Refusal : public std::runtime_error
{
public:
    Refusal(int status, const std::string& message) : std::runtime_error(message), m_status(status) {}
    int status() const { return m_status; }

private:
    int m_status;
};

/// {"code":10000,"message":"OK","data":...}; `data` is JSON text.
Answer enveloped(const std::string& data);
/// An envelope without data.
Answer done();
/// An envelope with the id of what was made.
Answer idAnswer(const std::string& id);
/// The JSON text without an envelope.
Answer bare(std::string json);
/// {"code":<status>00,"message":...,"data":null}
Answer refused(int status, const std::string& message);

} // namespace orlo::platform
