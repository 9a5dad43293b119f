#include "support/FileProcess.h"
#include "support/TempFolder.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace orlo;
using namespace orlo::utils;
using orlo::test::readFile;
using orlo::test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

class Files : public testing::Test
{
protected:
    fs::path at(const std::string& name) const { return m_folder.path(name); }
    std::wstring wide(const std::string& name) const { return m_folder.wide(name); }

    std::size_t entries() const
    {
        const fs::directory_iterator begin(m_folder.path());
        return static_cast<std::size_t>(std::distance(begin, fs::directory_iterator()));
    }

    // A folder so deep that its path has more than `length` characters.
    std::wstring deepFolder(std::size_t length) const
    {
        std::wstring path = m_folder.wide();
        while (path.size() <= length)
            path = FilePath::Combine(path, L"很长的文件夹名字 a long folder name");
        return path;
    }

    test::TempFolder m_folder;
};

fs::perms permissionsOf(const fs::path& path)
{
    return fs::status(path).permissions();
}

} // namespace

TEST(FilePathTest, TakesPathsApartAtEitherSeparator)
{
    const FilePath posix(L"/data/项目/plan.final.dwg");
    EXPECT_EQ(posix.GetDirectoryName(), L"/data/项目");
    EXPECT_EQ(posix.GetFileName(), L"plan.final.dwg");
    EXPECT_EQ(posix.GetExtension(), L".dwg");
    EXPECT_EQ(posix.GetFileNameWithoutExtension(), L"plan.final");

    const FilePath windows(L"C:\\data\\项目\\plan.dwg");
    EXPECT_EQ(windows.GetDirectoryName(), L"C:\\data\\项目");
    EXPECT_EQ(windows.GetFileName(), L"plan.dwg");
    EXPECT_EQ(windows.GetExtension(), L".dwg");
    EXPECT_EQ(windows.GetFileNameWithoutExtension(), L"plan");
}

TEST(FilePathTest, PathsWithoutFolderOrName)
{
    EXPECT_EQ(FilePath(L"plan.dwg").GetDirectoryName(), L"");
    EXPECT_EQ(FilePath(L"/plan.dwg").GetDirectoryName(), L"/");
    EXPECT_EQ(FilePath(L"/a//plan.dwg").GetDirectoryName(), L"/a");
    EXPECT_EQ(FilePath(L"/a/").GetDirectoryName(), L"/a");
    EXPECT_EQ(FilePath(L"/a/").GetFileName(), L"");
    EXPECT_EQ(FilePath(L"").GetDirectoryName(), L"");
    EXPECT_EQ(FilePath(L"").GetFileName(), L"");
    EXPECT_EQ(FilePath(L"").GetExtension(), L"");
    EXPECT_EQ(getFileName(L"a\\b/c.txt"), L"c.txt");
}

TEST(FilePathTest, ADotAtTheHeadOrTheEndIsNoExtension)
{
    EXPECT_EQ(FilePath(L"/a.b/plan").GetExtension(), L"");
    EXPECT_EQ(FilePath(L"/a.b/plan").GetFileNameWithoutExtension(), L"plan");
    EXPECT_EQ(FilePath(L".profile").GetExtension(), L"");
    EXPECT_EQ(FilePath(L".profile").GetFileNameWithoutExtension(), L".profile");
    EXPECT_EQ(FilePath(L"plan.").GetExtension(), L"");
    EXPECT_EQ(FilePath(L"plan.").GetFileNameWithoutExtension(), L"plan.");
}

TEST(FilePathTest, CombinesWithOneSeparator)
{
    EXPECT_EQ(FilePath::Combine(L"/a", L"b"), L"/a" + SeparatorChar() + L"b");
    EXPECT_EQ(FilePath::Combine(L"/a/", L"/b"), L"/a" + SeparatorChar() + L"b");
    EXPECT_EQ(FilePath::Combine(L"/a\\/", L"\\b/c"), L"/a" + SeparatorChar() + L"b/c");
    EXPECT_EQ(FilePath::Combine(L"/", L"b"), SeparatorChar() + L"b");
    EXPECT_EQ(FilePath::Combine(L"", L"b"), L"b");
    EXPECT_EQ(FilePath::Combine(L"a", L""), L"a");
    EXPECT_EQ(FilePath::Combine(L"", L""), L"");
}

TEST(FilePathTest, NativeSeparatorsReplaceBoth)
{
    EXPECT_EQ(SeparatorChar().size(), 1U);
    EXPECT_EQ(toNativeSeparators(L"\\Veltrin/PermissionToken"), SeparatorChar() + L"Veltrin" + SeparatorChar() + L"PermissionToken");
}

TEST(FilePathTest, NormalisingTurnsBackslashesAndCollapsesRuns)
{
    const std::pair<std::string, std::string> rows[] = {
        {"a\\b\\\\c//d", "a/b/c/d"},
        {"/a/b", "/a/b"},
        {"//a", "/a"},
        {"\\\\server\\share\\\\x", "//server/share/x"},
        {"\\a", "/a"},
        {"", ""},
        {"结\\构", "结/构"},
    };
    for (const auto& [from, to] : rows) {
        std::string path = from;
        NormailizeFilePath(path);
        EXPECT_EQ(path, to) << from;
    }
}

TEST(FilePathTest, TellsWhatLiesInsideAFolder)
{
    EXPECT_TRUE(isPathInside(L"/cache/ds", L"/cache/ds/f/x.bin"));
    EXPECT_TRUE(isPathInside(L"/cache/ds/", L"/cache/./ds/f/../x.bin"));
    EXPECT_TRUE(isPathInside(L"/", L"/x"));
    EXPECT_TRUE(isPathInside(L"C:\\cache", L"C:/cache/x"));
    EXPECT_TRUE(isPathInside(L"", L"x"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"/cache/ds"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"/cache/ds/"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"/cache/ds2/x"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"/cache/ds/../x"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"/cache/ds/f/..\\..\\../x"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"/cache/ds/../../../../../x"));
    EXPECT_FALSE(isPathInside(L"/cache/ds", L"cache/ds/x"));
    EXPECT_FALSE(isPathInside(L"", L"../x"));
    EXPECT_FALSE(isPathInside(L"", L"/x"));
    EXPECT_FALSE(isPathInside(L"/", L"x"));
}

TEST(FilePathTest, PathsKeepTextBeyondAsciiWithoutALocale)
{
    const std::wstring text = L"/tmp/项目 \U0001F3D7/平面图.dwg";
    EXPECT_EQ(fromPath(makePath(text)), text);
    EXPECT_EQ(makePath(text).u8string(), "/tmp/\xE9\xA1\xB9\xE7\x9B\xAE \xF0\x9F\x8F\x97/\xE5\xB9\xB3\xE9\x9D\xA2\xE5\x9B\xBE.dwg");
}

TEST(FilePathTest, APathWithANulLiesNowhere)
{
    EXPECT_FALSE(isPathInside(L"/cache", std::wstring(L"/cache/a\0b", 10)));
    EXPECT_FALSE(isPathInside(L"/cache", std::wstring(L"/x\0/../cache/a", 14)));
    EXPECT_FALSE(isPathInside(std::wstring(L"/cache\0", 7), std::wstring(L"/cache\0/a", 9)));
    EXPECT_TRUE(holdsNul(std::wstring(L"\0", 1)));
    EXPECT_FALSE(holdsNul(L""));
}

TEST(FilePathTest, TellsWhatWindowsTakesForMoreOrLessThanAName)
{
    for (const wchar_t* name :
         {L"plan.dwg", L"图 一.dwg", L".hidden", L"..a", L"console", L"com", L"com10", L"lpt", L"null", L"a'b", L"con1"})
        EXPECT_TRUE(isNameOnWindows(name)) << toString(name);
    for (const wchar_t* name :
         {L"",        L".",        L"..",      L"...", L"a.",   L"a ",       L".. ",       L"C:",     L"C:x",    L"a:stream",
          L"a/b",     L"a\\b",     L"a*",      L"a?",  L"a|b",  L"<a>",      L"\"a\"",     L"a\tb",   L"con",    L"NUL",
          L"nul.txt", L"Con .txt", L"aux.a.b", L"prn", L"COM1", L"lpt9.dwg", L"com\x00B9", L"CONIN$", L"conout$"})
        EXPECT_FALSE(isNameOnWindows(name)) << toString(name);
    EXPECT_FALSE(isNameOnWindows(std::wstring(L"a\0", 2)));
}

TEST_F(Files, TellsFilesFromFolders)
{
    writeFile(at("平面\xF0\x9F\x8F\x97.dwg"), "x");
    fs::create_directory(at("目录"));
    EXPECT_TRUE(fileExists(wide("平面\xF0\x9F\x8F\x97.dwg")));
    EXPECT_TRUE(hasFile(wide("平面\xF0\x9F\x8F\x97.dwg")));
    EXPECT_FALSE(hasDirectory(wide("平面\xF0\x9F\x8F\x97.dwg")));
    EXPECT_FALSE(fileExists(wide("目录")));
    EXPECT_FALSE(hasFile(wide("目录")));
    EXPECT_TRUE(hasDirectory(wide("目录")));
    for (const std::wstring& missing : {wide("none"), std::wstring(), wide(std::string(300, 'n'))}) {
        EXPECT_FALSE(fileExists(missing));
        EXPECT_FALSE(hasFile(missing));
        EXPECT_FALSE(hasDirectory(missing));
    }
}

TEST_F(Files, APathWithANulIsRefusedByEveryCallAndTheFileInFrontOfItStays)
{
    writeFile(at("a"), "untouched");
    writeFile(at("from"), "x");
    fs::create_directory(at("folder"));
    for (const wchar_t* end : {L"", L".dwg", L"/b", L"/../from"}) {
        const std::wstring cut = wide("a") + std::wstring(1, L'\0') + end;
        EXPECT_FALSE(fileExists(cut) || hasFile(cut) || hasDirectory(cut));
        EXPECT_FALSE(createDirectory(cut) || createDirectoryRecursively(cut));
        EXPECT_FALSE(copyFile(wide("from"), cut) || moveFile(wide("from"), cut) || copyFile(cut, wide("b")) || moveFile(cut, wide("b")));
        EXPECT_FALSE(removeFile(cut) || removeEmptyDirectory(cut));
        EXPECT_FALSE(writeFileAtomically(cut, "y") || writeNewFile(cut, "y", false) || renameOver(wide("from"), cut) ||
                     renameOver(cut, wide("b")));
        EXPECT_FALSE(flushFile(cut) || flushFolder(cut) || setHiddenAttribute(cut));
        EXPECT_FALSE(FileLock().acquire(cut, 0));
        EXPECT_EQ(md5(cut), "");
        std::string bytes = "old";
        EXPECT_FALSE(readWholeFile(cut, bytes));
        EXPECT_EQ(bytes, "old");
        std::wstring taken = cut;
        EXPECT_FALSE(GenerateNewFile(taken));
        EXPECT_EQ(taken, cut);
        std::ofstream(makePath(cut)) << "y";
        removeHalfMadeFiles(cut);
    }
    const std::wstring folder = wide("folder") + std::wstring(1, L'\0');
    std::vector<std::wstring> files;
    EXPECT_FALSE(hasDirectory(folder) || removeEmptyDirectory(folder) || getSubFiles(folder, files));
    EXPECT_EQ(readFile(at("a")), "untouched");
    EXPECT_EQ(entries(), 3U);
}

TEST_F(Files, ALocalRootWithANulGivesNoPlaceForAnything)
{
    fs::create_directory(at("root"));
    setLocalRoot(wide("root") + std::wstring(L"\0/x", 3));
    const std::wstring temp = getTempPath();
    std::wstring path;
    EXPECT_TRUE(GenerateNewFile(path)); // a name only
    EXPECT_FALSE(writeFileAtomically(path, "x"));
    setLocalRoot(L"");
    EXPECT_FALSE(hasDirectory(temp));
    EXPECT_TRUE(fs::is_empty(at("root")));
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, SeesWhereLinksLead)
{
    const test::TempFolder outside;
    fs::create_directories(at("cache/ds/real"));
    writeFile(at("cache/ds/real/file"), "x");
    writeFile(outside.path("file"), "x");
    fs::create_directory_symlink(outside.path(), at("cache/ds/out"));
    fs::create_directory_symlink("real", at("cache/ds/in"));
    fs::create_directory_symlink(outside.path("none"), at("cache/ds/nowhere"));
    fs::create_directory_symlink("loop", at("cache/ds/loop"));
    fs::create_symlink(outside.path("file"), at("cache/ds/fileOut"));
    fs::create_symlink("real/file", at("cache/ds/fileIn"));
    fs::create_directory_symlink(at("cache"), at("way"));
    for (const std::string folder : {"cache/ds", "way/ds", "cache/none/../ds"}) {
        SCOPED_TRACE(folder);
        const auto leads = [&](const std::string& path) { return leadsInside(wide(folder), wide(folder + "/" + path)); };
        const auto lies = [&](const std::string& path) { return isPlaceInside(wide(folder), wide(folder + "/" + path)); };
        for (const char* path : {"real", "real/file", "in", "in/file", "new/deep/file", "real/../in/file", "new/../in/file", "fileIn"})
            EXPECT_TRUE(leads(path) && lies(path)) << path;
        for (const char* path :
             {"out/file", "out/new/file", "in/../out/file", "new/../out/file", "out/../x", "nowhere/x", "loop/x", "../x"})
            EXPECT_FALSE(leads(path) || lies(path)) << path;
        for (const char* path : {"out", "nowhere", "loop", "fileOut"})
            EXPECT_TRUE(!leads(path) && lies(path)) << path;
        EXPECT_FALSE(leadsInside(wide(folder), wide(folder)) || isPlaceInside(wide(folder), wide(folder)));
        EXPECT_FALSE(lies("new/x/.."));
        // To some systems "\\" is a separator, to others part of a name: the folder itself lies inside for neither.
        for (const char* path : {"new\\x/../", "new\\x/../.", "new\\x/..//", "new\\x/.././"})
            EXPECT_FALSE(lies(path)) << path;
        EXPECT_TRUE(lies("in/") && lies("new/x/"));
        EXPECT_FALSE(lies("out/") || lies("out/."));
    }
    // The same place by another way is another text.
    EXPECT_FALSE(leadsInside(wide("way"), wide("cache/ds")));
}

TEST_F(Files, MakesFolders)
{
    EXPECT_TRUE(createDirectory(wide("一")));
    EXPECT_TRUE(createDirectory(wide("一")));
    EXPECT_FALSE(createDirectory(wide("none/below")));
    EXPECT_TRUE(createDirectoryRecursively(wide("a/b/c")));
    EXPECT_TRUE(createDirectoryRecursively(wide("a/b/c/")));
    EXPECT_TRUE(fs::is_directory(at("a/b/c")));
    writeFile(at("file"), "x");
    EXPECT_FALSE(createDirectory(wide("file")));
    EXPECT_FALSE(createDirectoryRecursively(wide("file/below")));
    EXPECT_FALSE(createDirectory(L""));
    EXPECT_FALSE(createDirectoryRecursively(L""));
}

TEST_F(Files, CopyReplacesTheTargetAndLeavesNothingElse)
{
    writeFile(at("from"), "new content");
    writeFile(at("to"), "old");
    EXPECT_TRUE(copyFile(wide("from"), wide("to")));
    EXPECT_EQ(readFile(at("to")), "new content");
    EXPECT_EQ(readFile(at("from")), "new content");
    EXPECT_EQ(entries(), 2U);
}

TEST_F(Files, CopyOntoItselfKeepsTheContent)
{
    writeFile(at("same"), "content");
    EXPECT_TRUE(copyFile(wide("same"), wide("same")));
    EXPECT_EQ(readFile(at("same")), "content");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, CopyThatCannotBeDoneLeavesNothing)
{
    writeFile(at("from"), "x");
    fs::create_directory(at("folder"));
    EXPECT_FALSE(copyFile(wide("none"), wide("to")));
    EXPECT_FALSE(copyFile(wide("folder"), wide("to")));
    EXPECT_FALSE(copyFile(wide("from"), wide("folder")));
    EXPECT_FALSE(copyFile(wide("from"), wide("none/to")));
    EXPECT_FALSE(copyFile(wide("from"), L""));
    EXPECT_EQ(entries(), 2U);
}

TEST_F(Files, MoveReplacesTheTarget)
{
    writeFile(at("from"), "new");
    writeFile(at("目标"), "old");
    EXPECT_TRUE(moveFile(wide("from"), wide("目标")));
    EXPECT_EQ(readFile(at("目标")), "new");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, MoveThatCannotBeDoneKeepsTheSource)
{
    writeFile(at("from"), "x");
    fs::create_directory(at("folder"));
    EXPECT_FALSE(moveFile(wide("from"), wide("none/to")));
    EXPECT_FALSE(moveFile(wide("from"), wide("folder")));
    EXPECT_FALSE(moveFile(wide("from"), L""));
    EXPECT_FALSE(moveFile(wide("none"), wide("to")));
    EXPECT_FALSE(moveFile(wide("folder"), wide("to")));
    EXPECT_EQ(readFile(at("from")), "x");
    EXPECT_EQ(entries(), 2U);
}

TEST_F(Files, MoveCrossesFileSystems)
{
    const fs::path elsewhere = test::otherFileSystem(m_folder.path());
    if (elsewhere.empty())
        GTEST_SKIP() << "no second file system to write to";
    const test::TempFolder far(elsewhere);
    const fs::path other = far.path("file");
    writeFile(other, "far away");
    writeFile(at("to"), "old");
    EXPECT_TRUE(moveFile(fromPath(other), wide("to")));
    EXPECT_EQ(readFile(at("to")), "far away");
    EXPECT_FALSE(fs::exists(other));
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, RemovesFilesAndEmptyFoldersOnly)
{
    writeFile(at("folder-file"), "x");
    fs::create_directories(at("full/inner"));
    EXPECT_FALSE(removeFile(wide("full")));
    EXPECT_FALSE(removeEmptyDirectory(wide("full")));
    EXPECT_FALSE(removeEmptyDirectory(wide("folder-file")));
    EXPECT_TRUE(removeFile(wide("folder-file")));
    EXPECT_FALSE(removeFile(wide("folder-file")));
    EXPECT_TRUE(removeEmptyDirectory(wide("full/inner")));
    EXPECT_FALSE(removeEmptyDirectory(wide("full/inner")));
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, ListsTheRegularFilesOfAFolder)
{
    writeFile(at("b.txt"), "x");
    writeFile(at("文件"), "x");
    writeFile(at("a.txt"), "x");
    fs::create_directory(at("folder"));
    writeFile(at("folder/inner"), "x");
    std::vector<std::wstring> files{L"old"};
    EXPECT_TRUE(getSubFiles(m_folder.wide(), files));
    EXPECT_THAT(files, ElementsAre(wide("a.txt"), wide("b.txt"), wide("文件")));
}

TEST_F(Files, AFolderThatCannotBeListedGivesNothing)
{
    std::vector<std::wstring> files{L"old"};
    EXPECT_FALSE(getSubFiles(wide("none"), files));
    EXPECT_THAT(files, IsEmpty());
    EXPECT_FALSE(getSubFiles(L"", files));
}

TEST_F(Files, AnEmptyPathBecomesANewNameInTheTemporaryFolder)
{
    const test::LocalRoot root(m_folder);
    std::wstring first;
    std::wstring second;
    EXPECT_TRUE(GenerateNewFile(first));
    EXPECT_TRUE(GenerateNewFile(second));
    EXPECT_EQ(FilePath(first).GetDirectoryName(), getTempPath());
    EXPECT_NE(first, second);
    EXPECT_FALSE(fs::exists(makePath(first)));
}

TEST_F(Files, ATakenNameIsNumberedInFrontOfItsExtension)
{
    std::wstring path = wide("平面.dwg");
    EXPECT_TRUE(GenerateNewFile(path));
    EXPECT_EQ(path, wide("平面.dwg"));
    EXPECT_EQ(entries(), 0U);

    writeFile(at("平面.dwg"), "x");
    writeFile(at("平面 (1).dwg"), "x");
    EXPECT_TRUE(GenerateNewFile(path));
    EXPECT_EQ(path, wide("平面 (2).dwg"));

    fs::create_symlink(at("nowhere"), at("link"));
    path = wide("link");
    EXPECT_TRUE(GenerateNewFile(path));
    EXPECT_EQ(path, wide("link (1)"));
}

TEST_F(Files, ANameThatNoFileCanHaveIsRefused)
{
    std::wstring path = wide(std::string(300, 'n'));
    const std::wstring before = path;
    EXPECT_FALSE(GenerateNewFile(path));
    EXPECT_EQ(path, before);
}

TEST_F(Files, Md5OfTheBytes)
{
    writeFile(at("empty"), "");
    writeFile(at("abc"), "abc");
    writeFile(at("large"), std::string(200000, 'a'));
    EXPECT_EQ(md5(wide("empty")), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(md5(wide("abc")), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(md5(wide("large")), "561b1994f6baacd6e5eaf4baaa12849f");
    EXPECT_EQ(md5(wide("none")), "");
    EXPECT_EQ(md5(m_folder.wide()), "");
}

TEST_F(Files, ReadsAWholeFile)
{
    const std::string bytes("line\r\n\0\xFF", 8);
    writeFile(at("file"), bytes);
    std::string content = "old";
    EXPECT_TRUE(readWholeFile(wide("file"), content));
    EXPECT_EQ(content, bytes);
    writeFile(at("empty"), "");
    EXPECT_TRUE(readWholeFile(wide("empty"), content));
    EXPECT_EQ(content, "");
}

TEST_F(Files, ReadsAFileThatTellsNoSize)
{
    std::string content;
    EXPECT_TRUE(readWholeFile(L"/proc/self/status", content));
    EXPECT_EQ(content.compare(0, 5, "Name:"), 0);
}

TEST_F(Files, AnUnreadableFileLeavesTheTextAlone)
{
    std::string content = "old";
    EXPECT_FALSE(readWholeFile(wide("none"), content));
    EXPECT_FALSE(readWholeFile(m_folder.wide(), content));
    ASSERT_TRUE(test::makeNamedPipe(at("fifo")));
    EXPECT_FALSE(readWholeFile(wide("fifo"), content));
    EXPECT_EQ(content, "old");
}

TEST_F(Files, WritesAFileInOneStep)
{
    EXPECT_TRUE(writeFileAtomically(wide("文件"), std::string_view("a\0b", 3)));
    EXPECT_EQ(readFile(at("文件")), std::string("a\0b", 3));
    EXPECT_TRUE(writeFileAtomically(wide("文件"), ""));
    EXPECT_EQ(readFile(at("文件")), "");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, AWriteThatCannotBeDoneLeavesNothing)
{
    fs::create_directory(at("folder"));
    EXPECT_FALSE(writeFileAtomically(wide("folder"), "x"));
    EXPECT_FALSE(writeFileAtomically(wide("none/file"), "x"));
    EXPECT_FALSE(writeFileAtomically(L"", "x"));
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, APrivateFileIsItsOwnersAlone)
{
    const test::UsualPermissions permissions;
    EXPECT_TRUE(writeFileAtomically(wide("private"), "x", FileAccess::ownerOnly));
    EXPECT_TRUE(writeFileAtomically(wide("usual"), "x"));
    EXPECT_EQ(permissionsOf(at("private")), fs::perms(0600));
    EXPECT_EQ(permissionsOf(at("usual")), fs::perms(0644));
}

TEST_F(Files, HalfMadeFilesAreRemovedAndOthersStay)
{
    writeFile(at(".~8d78b598-f02a-40ad-9984-17126a4d3b38"), "half");
    writeFile(at("file"), "x");
    writeFile(at(".hidden"), "x");
    writeFile(at(".~lock.plan.odt#"), "x");
    removeHalfMadeFiles(m_folder.wide());
    std::vector<std::wstring> files;
    EXPECT_TRUE(getSubFiles(m_folder.wide(), files));
    EXPECT_THAT(files, ElementsAre(wide(".hidden"), wide(".~lock.plan.odt#"), wide("file")));
}

TEST_F(Files, PathsBeyond260CharactersWork)
{
    const std::wstring folder = deepFolder(700);
    const std::wstring file = FilePath::Combine(folder, L"平面.dwg");
    EXPECT_TRUE(createDirectoryRecursively(folder));
    EXPECT_TRUE(writeFileAtomically(file, "abc"));
    EXPECT_EQ(md5(file), "900150983cd24fb0d6963f7d28e17f72");
    std::wstring copy = file;
    EXPECT_TRUE(GenerateNewFile(copy));
    EXPECT_TRUE(copyFile(file, copy));
    EXPECT_TRUE(moveFile(copy, FilePath::Combine(folder, L"moved")));
    std::vector<std::wstring> files;
    EXPECT_TRUE(getSubFiles(folder, files));
    EXPECT_THAT(files, ElementsAre(FilePath::Combine(folder, L"moved"), file));
}

TEST_F(Files, AKillWhileWritingLeavesTheOldFileOrTheNew)
{
    const std::string even(300000, 'e');
    const std::string odd(200000, 'o');
    ASSERT_TRUE(writeFileAtomically(wide("state"), even));
    for (int round = 0; round < 20; ++round) {
        test::FileProcess child(m_folder);
        child.tell("rewrite " + at("state").u8string());
        for (int seen = 0; seen < 1 + round % 3; ++seen)
            ASSERT_EQ(child.readLine(), "written");
        child.kill();
        EXPECT_EQ(child.wait(), test::ChildProcess::killed);
        const std::string content = readFile(at("state"));
        EXPECT_TRUE(content == even || content == odd) << content.size();
    }
}
