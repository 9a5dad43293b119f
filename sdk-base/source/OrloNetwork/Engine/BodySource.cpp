#include "BodySource.h"

#include "Failure.h"
#include "Workers.h"

#include <algorithm>

namespace orlo::http {

namespace {

constexpr std::size_t pieceSize = std::size_t{64} << 10;

void throwEnded()
{
    throw transportFailure(0, "Unexpected end of request body stream encountered before Content-Length satisfied.");
}

} // namespace

BodySource::BodySource(const concurrency::streams::istream& stream, std::int64_t size) : m_buffer(stream.streambuf()), m_left(size)
{}

std::optional<std::size_t> BodySource::read(char* room, std::size_t size, const Wake& wake)
{
    if (m_left == 0)
        return 0;
    if (m_left > 0)
        size = static_cast<std::size_t>(std::min<std::int64_t>(m_left, static_cast<std::int64_t>(size)));
    std::optional<std::size_t> given = m_given == m_got && !m_asked ? borrow(room, size) : std::nullopt;
    if (!given)
        given = ask(room, size, wake);
    if (!given)
        return given;
    if (*given == 0 && m_left > 0)
        throwEnded();
    m_left = *given == 0 ? 0 : m_left > 0 ? m_left - static_cast<std::int64_t>(*given) : m_left;
    return given;
}

std::optional<std::size_t> BodySource::borrow(char* room, std::size_t size)
{
    std::uint8_t* bytes = nullptr;
    std::size_t count = 0;
    if (!m_buffer.acquire(bytes, count) || !bytes)
        return std::nullopt;
    count = std::min(count, size);
    std::copy(bytes, bytes + count, room);
    m_buffer.release(bytes, count);
    return count > 0 ? std::optional(count) : std::nullopt;
}

std::optional<std::size_t> BodySource::ask(char* room, std::size_t size, const Wake& wake)
{
    if (m_given == m_got) {
        if (!m_asked) {
            m_piece.resize(pieceSize);
            m_asked = m_buffer.getn(m_piece.data(), m_piece.size());
        }
        if (wake && !m_asked->is_done()) {
            m_asked->then(
                [wake](const pplx::task<std::size_t>& got) {
                    try {
                        got.get();
                    }
                    catch (...) { // it is looked at when the transfer goes on
                    }
                    wake();
                },
                pplx::task_options(Workers::atOnce()));
            return std::nullopt;
        }
        m_given = 0;
        m_got = 0;
        const pplx::task<std::size_t> asked = *m_asked;
        m_asked.reset();
        m_got = asked.get();
    }
    const std::size_t count = std::min(size, m_got - m_given);
    std::copy_n(m_piece.data() + m_given, count, room);
    m_given += count;
    return count;
}

} // namespace orlo::http
