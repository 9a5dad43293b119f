#include "Doors.h"

#include <OrloNetwork/Body/Inflate.h>

#include <zlib.h>

#include <algorithm>
#include <optional>
#include <string>

namespace orlo::fuzz {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t limit = 16384;

std::optional<Bytes> inflated(const Bytes& compressed, std::size_t most)
{
    try {
        return http::inflateAll(compressed, most);
    }
    catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

/// One member with as small a window as there is, since its memory is what takes the time here.
Bytes deflated(const Bytes& bytes, bool gzip)
{
    constexpr int smallestWindow = 9;
    z_stream stream{};
    require(deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzip ? smallestWindow + 16 : smallestWindow, 1, Z_FIXED) == Z_OK, "zlib works");
    Bytes out(deflateBound(&stream, bytes.size()) + 64);
    stream.next_in = const_cast<unsigned char*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = ::deflate(&stream, Z_FINISH);
    out.resize(out.size() - stream.avail_out);
    deflateEnd(&stream);
    require(result == Z_STREAM_END, "zlib deflates");
    return out;
}

void checkForeign(const Bytes& bytes)
{
    const auto found = inflated(bytes, limit);
    if (!found)
        return;
    require(found->size() <= limit, "the bound holds");
    require(inflated(bytes, found->size()) == found, "the bound itself is not beyond it");
    require(found->empty() || !inflated(bytes, found->size() - 1), "one byte beyond the bound is refused");
}

void checkOwn(const Bytes& bytes, bool gzip, std::size_t cut)
{
    Bytes member = deflated(bytes, gzip);
    require(inflated(member, bytes.size()) == bytes, "what was deflated comes back");
    const Bytes part(member.begin(), member.begin() + static_cast<std::ptrdiff_t>(cut % member.size()));
    require(!inflated(part, limit), "a stream that is cut short is refused");
    if (!gzip)
        return;
    const Bytes second(member);
    member.insert(member.end(), second.begin(), second.end());
    const auto both = inflated(member, limit);
    require(both && both->size() == 2 * bytes.size() &&
                std::equal(bytes.begin(), bytes.end(), both->begin() + static_cast<std::ptrdiff_t>(bytes.size())),
            "the second member comes too");
}

} // namespace

// The first byte says what is done with the others.
void inflate(std::string_view bytes)
{
    if (bytes.empty())
        return checkForeign({});
    const auto first = static_cast<unsigned char>(bytes.front());
    const Bytes rest(bytes.begin() + 1, bytes.end());
    if (first % 4 != 0)
        return checkForeign(rest);
    const std::size_t cut = rest.empty() ? 0 : first + std::size_t{rest.front()};
    checkOwn(rest, first % 8 == 0, cut);
}

} // namespace orlo::fuzz
