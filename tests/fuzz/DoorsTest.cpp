#include "Doors.h"

#include "Mutations.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

namespace orlo::fuzz {
namespace {

using Door = void (*)(std::string_view);

std::vector<std::string> seedsOf(const std::string& door)
{
    std::vector<std::wstring> files;
    utils::getSubFiles(utils::toWstring(FUZZ_SEEDS "/" + door), files);
    std::vector<std::string> seeds(files.size());
    for (std::size_t i = 0; i < files.size(); ++i)
        EXPECT_TRUE(utils::readWholeFile(files[i], seeds[i]));
    return seeds;
}

std::string shown(const std::string& text)
{
    std::string hex;
    for (const char byte : text) {
        constexpr const char* digits = "0123456789abcdef";
        hex += {digits[static_cast<unsigned char>(byte) >> 4], digits[static_cast<unsigned char>(byte) & 15]};
    }
    return hex;
}

/// The exact bytes, with nothing behind them that could be read by mistake.
void feed(Door door, const std::string& text)
{
    const std::vector<char> bytes(text.begin(), text.end());
    ASSERT_NO_THROW(door(std::string_view(bytes.data(), bytes.size()))) << "fed with the bytes " << shown(text);
}

void feedAll(const std::string& name, Door door)
{
    constexpr int changes = 4000;
    const std::vector<std::string> seeds = seedsOf(name);
    ASSERT_GE(seeds.size(), 3U);
    feed(door, {});
    for (const std::string& seed : seeds)
        feed(door, seed);
    Mutations mutations(seeds);
    for (int i = 0; i < changes && !testing::Test::HasFailure(); ++i)
        feed(door, mutations.next());
}

TEST(FuzzDoors, DatasetUri)
{
    feedAll("DatasetUri", &datasetUri);
}

TEST(FuzzDoors, FieldReaders)
{
    feedAll("FieldReaders", &fieldReaders);
}

TEST(FuzzDoors, Inflate)
{
    feedAll("Inflate", &inflate);
}

TEST(FuzzDoors, JobRow)
{
    feedAll("JobRow", &jobRow);
}

TEST(FuzzDoors, JsonText)
{
    feedAll("JsonText", &jsonText);
}

TEST(FuzzDoors, Redaction)
{
    feedAll("Redaction", &redaction);
}

TEST(FuzzDoors, AxisGrid)
{
    feedAll("AxisGrid", &axisGrid);
}

TEST(FuzzDoors, SpaceDocument)
{
    feedAll("SpaceDocument", &spaceDocument);
}

TEST(FuzzDoors, TokenFile)
{
    feedAll("TokenFile", &tokenFile);
}

} // namespace
} // namespace orlo::fuzz
