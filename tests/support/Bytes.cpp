#include "Bytes.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <random>

namespace orlo::test {

std::string incompressible(std::size_t size)
{
    std::mt19937 random(12345);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 24); });
    return bytes;
}

std::string patterned(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 256) & 0xFF);
    return bytes;
}

std::string gzipOf(const std::string& content)
{
    constexpr int withGzipHeader = MAX_WBITS + 16;
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, withGzipHeader, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string compressed(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

std::string gunzip(const std::string& compressed)
{
    constexpr int withGzipHeader = MAX_WBITS + 16;
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, withGzipHeader), Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
    stream.avail_in = static_cast<uInt>(compressed.size());
    std::string content;
    int result = Z_OK;
    while (result == Z_OK) {
        char piece[65536];
        stream.next_out = reinterpret_cast<Bytef*>(piece);
        stream.avail_out = sizeof piece;
        result = inflate(&stream, Z_NO_FLUSH);
        content.append(piece, sizeof piece - stream.avail_out);
    }
    EXPECT_EQ(result, Z_STREAM_END);
    EXPECT_EQ(stream.avail_in, 0U);
    inflateEnd(&stream);
    return content;
}

} // namespace orlo::test
