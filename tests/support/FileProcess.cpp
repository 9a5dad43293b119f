#include "FileProcess.h"

#include "Waiting.h"

#include <gtest/gtest.h>

namespace orlo::test {

FileProcess::FileProcess(const TempFolder& root) : ChildProcess({ORLO_FILE_HOST, root.path().u8string()})
{}

LivingProcess::LivingProcess(const TempFolder& root) : FileProcess(root)
{
    EXPECT_EQ(ask("live"), "yes");
}

std::filesystem::file_time_type writtenNow(const std::filesystem::path& path)
{
    const auto timeOf = [](const std::filesystem::path& written) {
        writeFile(written, "x");
        return std::filesystem::last_write_time(written);
    };
    const auto first = timeOf(path);
    EXPECT_TRUE(waitUntil([&] { return timeOf(path) > first; }));
    const auto time = std::filesystem::last_write_time(path);
    // What is written from now on has a later time again.
    const std::filesystem::path next = path.string() + ".next";
    EXPECT_TRUE(waitUntil([&] { return timeOf(next) > time; }));
    std::filesystem::remove(next);
    return time;
}

} // namespace orlo::test
