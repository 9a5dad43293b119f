#include "support/Bytes.h"

#include <OrloNetwork/Body/Inflate.h>

#include <gtest/gtest.h>
#include <zlib.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

constexpr std::size_t plenty = std::size_t{1} << 30;

std::vector<unsigned char> bytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

std::string inflated(const std::string& compressed, std::size_t limit = plenty)
{
    const std::vector<unsigned char> bytes = http::inflateAll(bytesOf(compressed), limit);
    return {bytes.begin(), bytes.end()};
}

std::string complaintOfInflating(const std::string& compressed, std::size_t limit = plenty)
{
    try {
        inflated(compressed, limit);
    }
    catch (const std::runtime_error& e) {
        return e.what();
    }
    return "none";
}

TEST(InflateTest, bringsBackContentOfAllSizes)
{
    for (const std::size_t size : {0U, 1U, 100U, 4095U, 4096U, 4097U, 8192U, 1000000U, 5000000U}) {
        EXPECT_TRUE(inflated(gzipOf(patterned(size))) == patterned(size)) << size;
        EXPECT_TRUE(inflated(gzipOf(incompressible(size))) == incompressible(size)) << size;
        EXPECT_TRUE(inflated(gzipOf(std::string(size, '\0'))) == std::string(size, '\0')) << size;
    }
}

TEST(InflateTest, readsZlibStreamsToo)
{
    const std::string content = patterned(100000);
    std::string compressed(compressBound(content.size()), '\0');
    uLongf size = compressed.size();
    ASSERT_EQ(compress(reinterpret_cast<Bytef*>(compressed.data()), &size, reinterpret_cast<const Bytef*>(content.data()), content.size()),
              Z_OK);
    compressed.resize(size);
    EXPECT_TRUE(inflated(compressed) == content);
}

TEST(InflateTest, readsAllMembers)
{
    std::string compressed;
    std::string content;
    for (int i = 0; i < 20; ++i) {
        compressed += gzipOf(std::to_string(i));
        content += std::to_string(i);
    }
    EXPECT_EQ(inflated(compressed), content);
}

TEST(InflateTest, refusesAStreamThatIsCutAnywhere)
{
    const std::string compressed = gzipOf(std::string(5000, 'x') + patterned(500));
    for (std::size_t size = 0; size < compressed.size(); ++size)
        ASSERT_EQ(complaintOfInflating(compressed.substr(0, size)), "a compressed answer is cut short") << size;
}

TEST(InflateTest, refusesALaterMemberThatIsCut)
{
    const std::string second = gzipOf("second");
    EXPECT_EQ(complaintOfInflating(gzipOf("first") + second.substr(0, second.size() - 1)), "a compressed answer is cut short");
}

TEST(InflateTest, refusesWhatIsNoStream)
{
    EXPECT_EQ(complaintOfInflating("this is text"), "a compressed answer is broken");
    EXPECT_EQ(complaintOfInflating(std::string(1000, '\0')), "a compressed answer is broken");
    EXPECT_EQ(complaintOfInflating(gzipOf("x") + "trailing text"), "a compressed answer is broken");
}

TEST(InflateTest, refusesChangedBytesAnywhere)
{
    const std::string content = patterned(3000);
    const std::string compressed = gzipOf(content);
    // Behind the header, whose time and system nobody checks.
    for (std::size_t at = 10; at < compressed.size(); ++at) {
        std::string changed = compressed;
        changed[at] = static_cast<char>(changed[at] ^ 0x10);
        ASSERT_NE(complaintOfInflating(changed), "none") << at;
    }
}

TEST(InflateTest, takesContentUpToTheLimitAndNotOneByteMore)
{
    const std::string compressed = gzipOf(std::string(10000, 'x'));
    EXPECT_EQ(inflated(compressed, 10000).size(), 10000U);
    EXPECT_EQ(complaintOfInflating(compressed, 9999), "a compressed answer is too large");
    EXPECT_EQ(complaintOfInflating(compressed, 1), "a compressed answer is too large");
    EXPECT_EQ(complaintOfInflating(compressed, 0), "a compressed answer is too large");
    EXPECT_EQ(inflated(gzipOf(""), 0), "");
}

TEST(InflateTest, aSmallAnswerCanNotFillTheMemory)
{
    const std::string bomb = gzipOf(std::string(200 << 20, '\0'));
    EXPECT_EQ(complaintOfInflating(bomb, 1 << 20), "a compressed answer is too large");
}

TEST(InflateTest, aCutStreamAtTheLimitIsStillCut)
{
    const std::string compressed = gzipOf(std::string(10000, 'x'));
    EXPECT_EQ(complaintOfInflating(compressed.substr(0, compressed.size() - 8), 10000), "a compressed answer is cut short");
}

} // namespace
} // namespace orlo::test
