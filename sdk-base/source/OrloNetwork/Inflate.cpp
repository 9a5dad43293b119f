#include "Inflate.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace orlo::http {

namespace {

class Inflater
{
public:
    explicit Inflater(const std::vector<unsigned char>& compressed)
    {
        constexpr int anyHeader = MAX_WBITS + 32;
        if (inflateInit2(&m_stream, anyHeader) != Z_OK)
            throw std::runtime_error("a compressed answer can't be inflated");
        // zlib never writes to its input
        m_stream.next_in = const_cast<unsigned char*>(compressed.data());
        m_left = compressed.size();
        feed();
    }

    ~Inflater() { inflateEnd(&m_stream); }

    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    bool hasInput() const { return m_stream.avail_in > 0 || m_left > 0; }

    /// Inflates into the room given; what was written, 0 at the end of the last member.
    size_t read(unsigned char* room, size_t size)
    {
        const uInt offered = static_cast<uInt>(std::min<size_t>(size, std::numeric_limits<uInt>::max()));
        m_stream.next_out = room;
        m_stream.avail_out = offered;
        while (m_stream.avail_out == offered && !m_finished)
            step();
        return offered - m_stream.avail_out;
    }

private:
    /// The input counts in 32 bits.
    void feed()
    {
        const uInt piece = static_cast<uInt>(std::min<size_t>(m_left, std::numeric_limits<uInt>::max()));
        m_stream.avail_in = piece;
        m_left -= piece;
    }

    void step()
    {
        if (m_stream.avail_in == 0)
            feed();
        if (m_stream.avail_in == 0)
            throw std::runtime_error("a compressed answer is cut short");
        const int result = inflate(&m_stream, Z_NO_FLUSH);
        if (result == Z_STREAM_END)
            endMember();
        else if (result != Z_OK)
            throw std::runtime_error("a compressed answer is broken");
    }

    void endMember()
    {
        if (m_stream.avail_in == 0)
            feed();
        m_finished = m_stream.avail_in == 0;
        if (!m_finished && inflateReset(&m_stream) != Z_OK)
            throw std::runtime_error("a compressed answer is broken");
    }

    z_stream m_stream{};
    size_t m_left = 0;
    bool m_finished = false;
};

} // namespace

std::vector<unsigned char> inflateAll(const std::vector<unsigned char>& compressed, std::size_t limit)
{
    std::vector<unsigned char> inflated;
    Inflater inflater(compressed);
    size_t used = 0;
    while (true) {
        if (used == inflated.size())
            inflated.resize(std::min(limit, std::max<size_t>(inflated.size() * 2, std::max<size_t>(compressed.size() * 2, 4096))));
        if (used == inflated.size()) {
            // The room is used up to the limit: one more byte is one too many.
            unsigned char beyond = 0;
            if (inflater.read(&beyond, 1) != 0)
                throw std::runtime_error("a compressed answer is too large");
            break;
        }
        const size_t got = inflater.read(inflated.data() + used, inflated.size() - used);
        if (got == 0)
            break;
        used += got;
    }
    inflated.resize(used);
    return inflated;
}

} // namespace orlo::http
