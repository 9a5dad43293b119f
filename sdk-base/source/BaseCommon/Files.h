#pragma once

#include <BaseCommon/Export.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Files and paths. Nothing here throws: a failure is false or an empty text. All functions may be called from any thread.
namespace orlo {

/// Takes a path text apart at "/" and "\" alike, whatever the platform.
class ORLO_BASE_API FilePath
{
public:
    explicit FilePath(const std::wstring& path);
    ~FilePath();

    /// What stands in front of the last separator: "/a/b.txt" gives "/a", "/a" gives "/", "a" gives an empty text.
    std::wstring GetDirectoryName() const;
    /// The end of the file name from its last "." on, with the dot; empty where there is none, or only at the head or the end of the name.
    std::wstring GetExtension() const;
    /// What stands behind the last separator.
    std::wstring GetFileName() const;
    /// The file name less its extension.
    std::wstring GetFileNameWithoutExtension() const;

    /// Joins two paths with exactly one SeparatorChar() between them; separators at the head of `second` are dropped, so that it never
    /// replaces `first`. If one of them is empty the result is the other.
    static std::wstring Combine(const std::wstring& first, const std::wstring& second);

private:
    std::wstring m_path;
};

} // namespace orlo

namespace orlo::utils {

/// The only ways between wide text and the paths of the standard library, which would otherwise go through the C locale.
/// A text with a NUL, where a system call would stop reading, gives a path at which no file can be, so that every call fails. Bytes of a
/// name that are no UTF-8 become U+FFFD on the way back.
ORLO_BASE_API std::filesystem::path makePath(const std::wstring& text);
ORLO_BASE_API std::wstring fromPath(const std::filesystem::path& path);

/// The platform's separator: "/" or "\".
ORLO_BASE_API std::wstring SeparatorChar();

/// Copy with every "/" and "\" turned into SeparatorChar().
ORLO_BASE_API std::wstring toNativeSeparators(const std::wstring& path);

/// Turns every "\" into "/" and runs of separators into one, in place. The two at the head of a network path "\\server" are kept.
ORLO_BASE_API void NormailizeFilePath(std::string& path);

/// What stands behind the last "/" or "\".
ORLO_BASE_API std::wstring getFileName(const std::wstring& path);

/// Whether the text holds a NUL, with which no file can be named.
ORLO_BASE_API bool holdsNul(const std::wstring& text);

/// Whether Windows takes the text for the name of a file or folder, and for nothing else: no drive, stream or device, no end that it drops.
ORLO_BASE_API bool isNameOnWindows(const std::wstring& name);

/// Whether `path` lies below `folder` once "." and ".." are taken out of both. Looks at the texts only, never at the disk;
/// `folder` itself doesn't lie below itself, nor does a path with a NUL. On Windows each name below the folder must be one.
ORLO_BASE_API bool isPathInside(const std::wstring& folder, const std::wstring& path);

/// The same on the disk: wherever links lead to, it is below the folder, which may itself lie behind links. What isn't there yet leads
/// nowhere else; a link to nothing leads out.
ORLO_BASE_API bool leadsInside(const std::wstring& folder, const std::wstring& path);

/// The same, but for the last name, which is not followed: what makes, replaces or removes a file there doesn't either.
ORLO_BASE_API bool isPlaceInside(const std::wstring& folder, const std::wstring& path);

/// Whether a regular file stands at the path (links are followed). The two are the same.
ORLO_BASE_API bool fileExists(const std::wstring& path);
ORLO_BASE_API bool hasFile(const std::wstring& path);
/// Whether a folder stands at the path.
ORLO_BASE_API bool hasDirectory(const std::wstring& path);

/// Makes a folder, in the second form with its missing parents. True if the folder is there afterwards.
ORLO_BASE_API bool createDirectory(const std::wstring& path);
ORLO_BASE_API bool createDirectoryRecursively(const std::wstring& path);

/// Copies a regular file. An existing target is replaced in one step, when the copy is complete and on disk.
ORLO_BASE_API bool copyFile(const std::wstring& from, const std::wstring& to);
/// Moves a regular file, across file systems too. An existing target file is replaced in one step. On failure `from` stays.
ORLO_BASE_API bool moveFile(const std::wstring& from, const std::wstring& to);

/// Removes a file. True only if there was one and it is gone.
ORLO_BASE_API bool removeFile(const std::wstring& path);
/// Removes a folder that is empty. True only if there was one and it is gone.
ORLO_BASE_API bool removeEmptyDirectory(const std::wstring& path);

/// Replaces `out` with the full paths of the regular files that stand directly in the folder, sorted.
/// Returns: false, with `out` empty, if the folder can't be listed.
ORLO_BASE_API bool getSubFiles(const std::wstring& folder, std::vector<std::wstring>& out);

/// Makes `path` the path of a file that isn't there yet: an empty one becomes a new name in getTempPath(), a taken one gets " (1)",
/// " (2)" ... in front of its extension, a free one stays. The file itself is not made.
ORLO_BASE_API bool GenerateNewFile(std::wstring& path);

/// The MD5 of the file's bytes in lower-case hexadecimal digits; empty if the file can't be read.
ORLO_BASE_API std::string md5(const std::wstring& path);

/// Reads a whole regular file; false leaves `out` alone.
ORLO_BASE_API bool readWholeFile(const std::wstring& path, std::string& out);

/// Who may read a file that is made here: as the user's other files, or its owner alone.
enum class FileAccess { usual, ownerOnly };

/// Replaces the file's content. Whenever the process or the machine dies, the old file or the new one is there, never a part;
/// when it returns true the new one is on disk.
/// The new file is made beside the old one under a name of its own.
ORLO_BASE_API bool writeFileAtomically(const std::wstring& path, std::string_view bytes, FileAccess access = FileAccess::usual);

/// A new name beside the file's, under which it can be made until it is whole: a rename brings it to its place then. Empty if no random
/// name can be had.
ORLO_BASE_API std::wstring halfMadeNameBeside(const std::wstring& path);

/// Whether copyFile, moveFile and writeFileAtomically give such names to files until they are whole.
ORLO_BASE_API bool isHalfMadeName(const std::wstring& name);

/// Removes the half-made files that copyFile, moveFile and writeFileAtomically leave in a folder when their process is killed. Only for a
/// folder in which none of them is at work.
ORLO_BASE_API void removeHalfMadeFiles(const std::wstring& folder);

} // namespace orlo::utils
