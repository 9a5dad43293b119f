#pragma once

#include "../Body/SinkBuffer.h"

#include <cpprest/streams.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace orlo::http {

/// Takes the body of an answer piece by piece.
class BodySink
{
public:
    using Wake = std::function<void()>;
    using Flushed = std::function<void(const std::exception_ptr&)>;

    BodySink() = default;
    explicit BodySink(const concurrency::streams::ostream& stream);

    void begin(const web::http::http_response& response) const;
    /// wake: as for a transfer.
    /// Returns: false where the stream hasn't room; the piece wasn't taken then, and is to be given again after `wake`.
    /// Throws what the stream throws.
    bool write(const std::uint8_t* bytes, std::size_t count, const Wake& wake);

    /// Calls back when the stream has taken all, on any thread.
    void flush(const Flushed& flushed);

    std::size_t size() const { return m_size; }

private:
    bool writeToOther(const std::uint8_t* bytes, std::size_t count, const Wake& wake);

    std::shared_ptr<SinkBuffer> m_own;
    /// One of cpprestsdk's or a host's, which may read a piece until its task is done.
    concurrency::streams::streambuf<std::uint8_t> m_other;
    std::vector<std::uint8_t> m_piece;
    pplx::task<std::size_t> m_taken;
    bool m_isTaking = false;
    std::size_t m_size = 0;
};

} // namespace orlo::http
