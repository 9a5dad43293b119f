#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <LocalPlatform/Server/Answer.h>
#include <LocalPlatform/Store/BlobStore.h>
#include <fstream>

namespace orlo::platform {
namespace {

using orlo::test::TempFolder;

std::ptrdiff_t entriesIn(const std::filesystem::path& folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

std::string textOf(const OpenFile& file)
{
    std::string text;
    file.read([&](std::string_view piece) { text.append(piece); });
    return text;
}

TEST(BlobStore, KeepsBytesUnderTheirId)
{
    const TempFolder folder;
    const BlobStore store(folder.path("块"));
    store.put("a-1", std::string("\0\xff", 2));
    EXPECT_EQ(store.get("a-1"), std::string("\0\xff", 2));
    store.put("a-1", "other");
    EXPECT_EQ(store.get("a-1"), "other");
    store.remove("a-1");
    EXPECT_THROW(store.get("a-1"), Refusal);
    EXPECT_EQ(entriesIn(folder.path("块")), 0);
}

TEST(BlobStore, TakesNoIdThatIsAPath)
{
    const TempFolder folder;
    const BlobStore store(folder.path("blobs"));
    std::ofstream(folder.path("secret")) << "secret";
    EXPECT_THROW(store.get("../secret"), Refusal);
    EXPECT_THROW(store.put("../new", ""), Refusal);
    EXPECT_THROW(store.remove("../secret"), Refusal);
    EXPECT_THROW(store.get(""), Refusal);
    EXPECT_EQ(entriesIn(folder.path("blobs")), 0);
}

TEST(BlobStore, WhatIsBeingWrittenHasNoId)
{
    const TempFolder folder;
    const BlobStore store(folder.path("blobs"));
    store.put("a", "old");
    {
        const auto staged = store.stage();
        staged->append("half");
        EXPECT_EQ(staged->length(), 4);
        EXPECT_EQ(store.get("a"), "old");
    }
    EXPECT_EQ(entriesIn(folder.path("blobs")), 1);
    const auto staged = store.stage();
    staged->append("wh");
    staged->append("ole");
    store.keep(*staged, "a");
    EXPECT_EQ(store.get("a"), "whole");
    EXPECT_EQ(entriesIn(folder.path("blobs")), 1);
}

TEST(BlobStore, AnOpenFileStaysReadable)
{
    const TempFolder folder;
    const BlobStore store(folder.path("blobs"));
    store.put("a", "old");
    const OpenFile file = store.open("a");
    store.put("a", "newer");
    EXPECT_EQ(textOf(file), "old");
    EXPECT_EQ(file.size(), 3);
    store.remove("a");
    EXPECT_EQ(textOf(file), "old");
}

TEST(BlobStore, ClearsAwayWhatAKilledOneWasWriting)
{
    const TempFolder folder;
    std::filesystem::create_directories(folder.path("blobs"));
    std::ofstream(folder.path("blobs") / "b.new") << "half";
    std::ofstream(folder.path("blobs") / "a") << "whole";
    const BlobStore store(folder.path("blobs"));
    EXPECT_EQ(entriesIn(folder.path("blobs")), 1);
    EXPECT_EQ(store.get("a"), "whole");
}

TEST(BlobStore, WithoutAFolderLeavesNothingBehind)
{
    const TempFolder folder;
    ASSERT_EQ(::setenv("TMPDIR", folder.path("").c_str(), 1), 0);
    {
        const BlobStore store({});
        store.put("a", "bytes");
        EXPECT_EQ(store.get("a"), "bytes");
        EXPECT_EQ(entriesIn(folder.path("")), 1);
    }
    EXPECT_EQ(entriesIn(folder.path("")), 0);
    ::unsetenv("TMPDIR");
}

TEST(BlobStore, AFolderThatHasGoneIsTold)
{
    const TempFolder folder;
    const BlobStore store(folder.path("blobs"));
    std::filesystem::remove_all(folder.path("blobs"));
    EXPECT_THROW(store.put("a", "bytes"), std::system_error);
}

} // namespace
} // namespace orlo::platform
