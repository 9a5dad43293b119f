#include "Inflate.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace orlo::http {

struct Inflater::State
{
    explicit State(unsigned long long most) : left(most)
    {
        constexpr int anyHeader = MAX_WBITS + 32;
        if (inflateInit2(&stream, anyHeader) != Z_OK)
            throw std::runtime_error("a compressed answer can't be inflated");
    }
    ~State() { inflateEnd(&stream); }

    State(const State&) = delete;
    State& operator=(const State&) = delete;

    /// Inflates a part of the input into the room.   Returns: how much was written.
    std::size_t step()
    {
        if (hasEnded && inflateReset(&stream) != Z_OK)
            throw std::runtime_error("a compressed answer is broken");
        stream.next_out = room.data();
        stream.avail_out = static_cast<uInt>(room.size());
        const int result = inflate(&stream, Z_NO_FLUSH);
        hasEnded = result == Z_STREAM_END;
        if (!hasEnded && result != Z_OK && result != Z_BUF_ERROR)
            throw std::runtime_error("a compressed answer is broken");
        const std::size_t written = room.size() - stream.avail_out;
        if (written > left)
            throw std::runtime_error("a compressed answer is too large");
        left -= written;
        return written;
    }

    z_stream stream{};
    unsigned long long left; ///< until the limit
    bool hasEnded = false;   ///< the member at hand; another one may follow
    std::array<unsigned char, 64 << 10> room;
};

Inflater::Inflater(unsigned long long limit) : m_state(std::make_unique<State>(limit))
{}

Inflater::~Inflater() = default;

void Inflater::feed(const unsigned char* bytes, std::size_t count, const Out& out)
{
    State& state = *m_state;
    while (count > 0) {
        // The input counts in 32 bits.
        const auto piece = static_cast<uInt>(std::min<std::size_t>(count, std::numeric_limits<uInt>::max()));
        // zlib never writes to its input
        state.stream.next_in = const_cast<unsigned char*>(bytes);
        state.stream.avail_in = piece;
        // What fills the room may have left something behind it.
        std::size_t written = 0;
        do {
            written = state.step();
            if (written > 0)
                out(state.room.data(), written);
        } while (state.stream.avail_in > 0 || (written == state.room.size() && !state.hasEnded));
        bytes += piece;
        count -= piece;
    }
}

void Inflater::end() const
{
    if (!m_state->hasEnded)
        throw std::runtime_error("a compressed answer is cut short");
}

std::vector<unsigned char> inflateAll(const std::vector<unsigned char>& compressed, std::size_t limit)
{
    std::vector<unsigned char> inflated;
    Inflater inflater(limit);
    inflater.feed(compressed.data(), compressed.size(), [&](const unsigned char* bytes, std::size_t count) {
        if (inflated.capacity() - inflated.size() < count)
            inflated.reserve(std::min(limit, std::max(inflated.size() + count, std::max(2 * inflated.capacity(), 2 * compressed.size()))));
        inflated.insert(inflated.end(), bytes, bytes + count);
    });
    inflater.end();
    return inflated;
}

} // namespace orlo::http
