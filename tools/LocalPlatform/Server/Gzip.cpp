#include "Gzip.h"

#include "Answer.h"

namespace orlo::platform {

namespace {

constexpr std::size_t pieceSize = 1024 * 1024;
constexpr int gzipWindow = MAX_WBITS + 16; // a gzip head and tail, no other

void setInput(z_stream& stream, std::string_view bytes)
{
    stream.next_in = reinterpret_cast<const Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
}

void setOutput(z_stream& stream, std::vector<unsigned char>& buffer)
{
    stream.next_out = buffer.data();
    stream.avail_out = static_cast<uInt>(buffer.size());
}

void handOver(const z_stream& stream, const std::vector<unsigned char>& buffer, const Sink& sink)
{
    sink({reinterpret_cast<const char*>(buffer.data()), buffer.size() - stream.avail_out});
}

} // namespace

GzipReader::GzipReader(Sink sink) : m_sink(std::move(sink)), m_buffer(pieceSize)
{
    if (inflateInit2(&m_stream, gzipWindow) != Z_OK)
        throw std::runtime_error("can't unpack");
}

GzipReader::~GzipReader()
{
    inflateEnd(&m_stream);
}

void GzipReader::step()
{
    if (m_ended) // several streams in a row are one content
        inflateReset(&m_stream);
    setOutput(m_stream, m_buffer);
    const int outcome = inflate(&m_stream, Z_NO_FLUSH);
    m_ended = outcome == Z_STREAM_END;
    if (!m_ended && outcome != Z_OK && outcome != Z_BUF_ERROR)
        throw Refusal(400, "the body is no gzip stream");
    handOver(m_stream, m_buffer, m_sink);
}

void GzipReader::feed(std::string_view packed)
{
    setInput(m_stream, packed);
    do
        step();
    while (m_stream.avail_in > 0 || (m_stream.avail_out == 0 && !m_ended));
}

void GzipReader::finish() const
{
    if (!m_ended)
        throw Refusal(400, "the body ends before its gzip stream does");
}

GzipWriter::GzipWriter(Sink sink) : m_sink(std::move(sink)), m_buffer(pieceSize)
{
    if (deflateInit2(&m_stream, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("can't pack");
}

GzipWriter::~GzipWriter()
{
    deflateEnd(&m_stream);
}

void GzipWriter::run(std::string_view bytes, int flush)
{
    setInput(m_stream, bytes);
    do {
        setOutput(m_stream, m_buffer);
        deflate(&m_stream, flush);
        handOver(m_stream, m_buffer, m_sink);
    } while (m_stream.avail_out == 0);
}

} // namespace orlo::platform
