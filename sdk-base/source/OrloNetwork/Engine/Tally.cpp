#include "Tally.h"

#include <BaseCommon/Interruption.h>

#include <algorithm>

namespace orlo::http {

namespace {

/// More than any disk holds: a length that an answer makes up must not overflow the sum of many.
constexpr std::uint64_t largestBelieved = std::uint64_t{1} << 50;

std::shared_ptr<ProgressMeter> meterOfThisWork()
{
    const auto work = Interruption::current();
    return work ? work->meter() : nullptr;
}

} // namespace

Tally::Tally(ProgressMeter::Kind kind, bool hasBody)
    : m_meter(meterOfThisWork()),
      m_attempts(m_meter ? Attempts::current() : nullptr),
      m_out{kind},
      m_in{hasBody ? ProgressMeter::Kind::ofCall : kind} // a store's words about a file are none
{}

void Tally::count(const Body& body, std::int64_t done, std::int64_t inAll)
{
    if (m_attempts)
        m_attempts->count(m_meter, body.kind, done, inAll);
    else
        m_meter->count(body.kind, done, inAll);
}

void Tally::expect(Body& body, std::int64_t size)
{
    if (!m_meter || size <= 0)
        return;
    body.expected = size;
    count(body, 0, size);
}

/// What is more than was expected wasn't known of.
void Tally::grow(Body& body, std::size_t bytes)
{
    if (!m_meter)
        return;
    body.done += static_cast<std::int64_t>(bytes);
    const std::int64_t more = std::max<std::int64_t>(body.done - body.expected, 0);
    body.expected += more;
    count(body, static_cast<std::int64_t>(bytes), more);
}

void Tally::settle(Body& body)
{
    if (!m_meter)
        return;
    count(body, 0, body.done - body.expected);
    body.expected = body.done;
}

void Tally::begin(std::int64_t sizeOfBody)
{
    expect(m_out, sizeOfBody);
}

void Tally::sent(std::size_t bytes)
{
    grow(m_out, bytes);
}

void Tally::headArrived(const web::http::http_response& response, bool hasBody)
{
    if (m_meter && hasBody && response.headers().has(web::http::header_names::content_length))
        expect(m_in, static_cast<std::int64_t>(std::min<std::uint64_t>(response.headers().content_length(), largestBelieved)));
}

void Tally::received(std::size_t bytes)
{
    grow(m_in, bytes);
}

void Tally::endedWell()
{
    settle(m_out);
    settle(m_in);
}

} // namespace orlo::http
