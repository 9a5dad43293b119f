#pragma once

#include "../Retry/Attempts.h"

#include <BaseCommon/ProgressMeter.h>

#include <cpprest/http_msg.h>

#include <cstdint>
#include <memory>

namespace orlo::http {

/// Counts the bodies of one transfer for whoever wants to know how far it is. Does nothing where nobody does.
class Tally
{
public:
    /// For the work that this thread is in.   kind: of the request's body, or of the answer's where it has none.
    Tally(ProgressMeter::Kind kind, bool hasBody);

    /// sizeOfBody: 0 or less where it isn't known.
    void begin(std::int64_t sizeOfBody);
    void sent(std::size_t count);
    void headArrived(const web::http::http_response& response, bool hasBody);
    void received(std::size_t count);
    /// What didn't come isn't waited for any more.
    void endedWell();

private:
    /// A body of one direction.
    struct Body
    {
        ProgressMeter::Kind kind;
        std::int64_t expected = 0;
        std::int64_t done = 0;
    };

    void count(const Body& body, std::int64_t done, std::int64_t inAll);
    void expect(Body& body, std::int64_t size);
    void grow(Body& body, std::size_t count);
    void settle(Body& body);

    const std::shared_ptr<ProgressMeter> m_meter;
    const std::shared_ptr<Attempts> m_attempts;
    Body m_out;
    Body m_in;
};

} // namespace orlo::http
