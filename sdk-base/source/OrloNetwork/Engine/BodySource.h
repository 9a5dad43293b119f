#pragma once

#include <cpprest/streams.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace orlo::http {

/// Gives the body of a request piece by piece.
class BodySource
{
public:
    using Wake = std::function<void()>;

    BodySource() = default;
    /// size: negative where it isn't known.
    BodySource(const concurrency::streams::istream& stream, std::int64_t size);

    /// wake: as for a transfer.
    /// Returns: how much was given, 0 at the end; none where nothing is there yet, and it is asked for again after `wake`.
    /// Throws what the stream throws, and http_exception for one that ends before its size.
    std::optional<std::size_t> read(char* room, std::size_t size, const Wake& wake);

    bool isSent() const { return m_left == 0; }

private:
    /// What the stream lends of its own.
    std::optional<std::size_t> borrow(char* room, std::size_t size);
    std::optional<std::size_t> ask(char* room, std::size_t size, const Wake& wake);

    concurrency::streams::streambuf<std::uint8_t> m_buffer;
    std::int64_t m_left = 0;
    std::vector<std::uint8_t> m_piece; ///< what was asked of a stream that lends nothing
    std::size_t m_given = 0;           ///< of the piece
    std::size_t m_got = 0;
    std::optional<pplx::task<std::size_t>> m_asked;
};

} // namespace orlo::http
