#pragma once

#include <zlib.h>

#include <functional>
#include <string_view>
#include <vector>

namespace orlo::platform {

using Sink = std::function<void(std::string_view)>;

/// Unpacks a gzip stream piece by piece. What is no whole gzip stream is refused with 400.
class GzipReader
{
public:
    explicit GzipReader(Sink sink);
    ~GzipReader();
    GzipReader(const GzipReader&) = delete;
    GzipReader& operator=(const GzipReader&) = delete;

    void feed(std::string_view packed);
    void finish() const;

private:
    void step();

    Sink m_sink;
    z_stream m_stream{};
    bool m_ended = false;
    std::vector<unsigned char> m_buffer;
};

/// Packs bytes into a gzip stream piece by piece.
class GzipWriter
{
public:
    explicit GzipWriter(Sink sink);
    ~GzipWriter();
    GzipWriter(const GzipWriter&) = delete;
    GzipWriter& operator=(const GzipWriter&) = delete;

    void feed(std::string_view bytes) { run(bytes, Z_NO_FLUSH); }
    void finish() { run({}, Z_FINISH); }

private:
    void run(std::string_view bytes, int flush);

    Sink m_sink;
    z_stream m_stream{};
    std::vector<unsigned char> m_buffer;
};

} // namespace orlo::platform
