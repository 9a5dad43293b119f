#include "TransferFixture.h"

#include <LocalPlatform/Server/Answer.h>
#include <LocalPlatform/Server/Gzip.h>

namespace orlo::platform::test {
namespace {

/// "hello" as the gzip command packs it.
const std::string packedHello("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03\xcb\x48\xcd\xc9\xc9\x07\x00\x86\xa6\x10\x36\x05\x00\x00\x00", 25);

std::string unpacked(const std::string& packed, std::size_t pieceSize)
{
    std::string bytes;
    GzipReader reader([&](std::string_view piece) { bytes.append(piece); });
    for (std::size_t at = 0; at < packed.size(); at += pieceSize)
        reader.feed(std::string_view(packed).substr(at, pieceSize));
    reader.finish();
    return bytes;
}

TEST(Gzip, ReadsAStreamInPiecesOfAnySize)
{
    for (const std::size_t size : {1u, 2u, 7u, 25u})
        EXPECT_EQ(unpacked(packedHello, size), "hello");
}

TEST(Gzip, ReadsSeveralStreamsAsOneContent)
{
    EXPECT_EQ(unpacked(packedHello + packedHello, 9), "hellohello");
}

TEST(Gzip, RefusesWhatIsNoWholeStream)
{
    for (std::size_t length = 0; length < packedHello.size(); ++length)
        EXPECT_THROW(unpacked(packedHello.substr(0, length), 5), Refusal) << length;
    EXPECT_THROW(unpacked("hello", 5), Refusal);
    EXPECT_THROW(unpacked(packedHello + "x", 100), Refusal);
    std::string wrongSum = packedHello;
    wrongSum[17] = 'x';
    EXPECT_THROW(unpacked(wrongSum, 100), Refusal);
}

TEST(Gzip, BringsBackWhatItPacked)
{
    const std::string one = noise(1024 * 1024);
    for (const std::string& bytes : {std::string(), std::string(5'000'000, 'a'), one, one + one + "x"})
        EXPECT_TRUE(unpacked(gzipped(bytes), 4096) == bytes) << bytes.size();
}

} // namespace
} // namespace orlo::platform::test
