#include "Files.h"

#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <string_view>

namespace fs = std::filesystem;

namespace orlo {

namespace {

constexpr wchar_t separators[] = L"/\\";

std::size_t nameBegin(const std::wstring& path)
{
    const std::size_t separator = path.find_last_of(separators);
    return separator == std::wstring::npos ? 0 : separator + 1;
}

// Where the extension's dot stands in a file name, else the name's end. A dot at the head hides a file, it begins no extension.
std::size_t extensionBegin(const std::wstring& name)
{
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring::npos || dot == 0 || dot + 1 == name.size() ? name.size() : dot;
}

} // namespace

FilePath::FilePath(const std::wstring& path) : m_path(path)
{}
FilePath::~FilePath() = default;

std::wstring FilePath::GetDirectoryName() const
{
    const std::size_t separator = m_path.find_last_of(separators);
    if (separator == std::wstring::npos)
        return {};
    const std::size_t last = m_path.find_last_not_of(separators, separator);
    return m_path.substr(0, last == std::wstring::npos ? 1 : last + 1);
}

std::wstring FilePath::GetFileName() const
{
    return m_path.substr(nameBegin(m_path));
}

std::wstring FilePath::GetExtension() const
{
    const std::wstring name = GetFileName();
    return name.substr(extensionBegin(name));
}

std::wstring FilePath::GetFileNameWithoutExtension() const
{
    const std::wstring name = GetFileName();
    return name.substr(0, extensionBegin(name));
}

std::wstring FilePath::Combine(const std::wstring& first, const std::wstring& second)
{
    if (first.empty() || second.empty())
        return first + second;
    const std::size_t end = first.find_last_not_of(separators);
    const std::size_t begin = second.find_first_not_of(separators);
    std::wstring joined = first.substr(0, end == std::wstring::npos ? 0 : end + 1) + utils::SeparatorChar();
    return begin == std::wstring::npos ? joined : joined.append(second, begin, std::wstring::npos);
}

} // namespace orlo

namespace orlo::utils {

namespace {

fs::file_type typeOf(const std::wstring& path)
{
    std::error_code error;
    return path.empty() ? fs::file_type::not_found : fs::status(makePath(path), error).type();
}

// Unlike typeOf it sees a link whose target is gone, and tells a name that can't be asked for from one that is free.
bool isNameFree(const std::wstring& path)
{
    std::error_code error;
    return fs::symlink_status(makePath(path), error).type() == fs::file_type::not_found;
}

constexpr std::wstring_view halfMadeHead = L".~";

std::wstring numbered(const std::wstring& stem, int number, const std::wstring& extension)
{
    return stem + L" (" + toWstring(number) + L")" + extension;
}

std::wstring folderOf(const std::wstring& path)
{
    const std::wstring folder = FilePath(path).GetDirectoryName();
    return folder.empty() ? L"." : folder;
}

// The steps of a path with "." and ".." taken out. An absolute one begins with an empty step.
std::vector<std::wstring> stepsOf(const std::wstring& path)
{
    std::vector<std::wstring> steps;
    const bool isAbsolute = !path.empty() && (path.front() == L'/' || path.front() == L'\\');
    if (isAbsolute)
        steps.emplace_back();
    for (std::size_t begin = 0, end = 0; begin <= path.size(); begin = end + 1) {
        end = std::min(path.find_first_of(L"/\\", begin), path.size());
        const std::wstring step = path.substr(begin, end - begin);
        if (step.empty() || step == L".")
            continue;
        if (step != L".." || steps.empty() || steps.back() == L"..")
            steps.push_back(step);
        else if (!steps.back().empty())
            steps.pop_back();
    }
    return steps;
}

// What Windows takes for a device in whatever folder, whatever stands behind the dot.
bool isDevice(const std::wstring& name)
{
    const std::wstring stem = LowerString(name.substr(0, name.find(L'.')));
    const std::wstring bare = stem.substr(0, stem.find_last_not_of(L' ') + 1);
    for (const wchar_t* device : {L"con", L"prn", L"aux", L"nul", L"conin$", L"conout$"}) {
        if (bare == device)
            return true;
    }
    constexpr std::wstring_view digits = L"0123456789\x00B9\x00B2\x00B3";
    return bare.size() == 4 && (bare.compare(0, 3, L"com") == 0 || bare.compare(0, 3, L"lpt") == 0) &&
           digits.find(bare.back()) != std::wstring_view::npos;
}

// Whether a step of a path can name something below a folder.
bool isName(const std::wstring& step)
{
#if defined(_WIN32)
    return isNameOnWindows(step);
#else
    return !step.empty() && step != L"..";
#endif
}

// Where the system comes to at the end of a path. What isn't there counts as a folder that may be made. Empty at a link to nothing.
fs::path whereItLeads(const fs::path& path)
{
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    fs::path at = whole.root_path();
    for (const fs::path& step : whole.relative_path()) {
        const fs::path next = step == ".." ? at.parent_path() : step == "." || step.empty() ? at : at / step;
        at = fs::symlink_status(next, error).type() == fs::file_type::symlink ? fs::canonical(next, error) : next;
        if (at.empty())
            return {};
    }
    return at;
}

bool isBelow(const fs::path& folder, const fs::path& path)
{
    const auto [outer, inner] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return !folder.empty() && path.is_absolute() && outer == folder.end() && inner != path.end();
}

// Piece by piece from a buffer that stays in the processor's cache: the text's memory is touched once, and not cleared before.
bool readStream(std::ifstream& file, std::size_t expectedSize, std::string& bytes)
{
    bytes.reserve(expectedSize);
    expectFilling(bytes.data(), bytes.capacity());
    const std::size_t room = std::clamp<std::size_t>(expectedSize, 4096, std::size_t{256} * 1024);
    const std::unique_ptr<char[]> piece(new char[room]);
    while (file.read(piece.get(), static_cast<std::streamsize>(room)), file.gcount() > 0)
        bytes.append(piece.get(), static_cast<std::size_t>(file.gcount()));
    return file.eof() && !file.bad();
}

std::string hexDigits(const unsigned char* bytes, unsigned count)
{
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 0x0FU];
    }
    return text;
}

using DigestContext = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

bool feedFile(EVP_MD_CTX* digest, std::ifstream& file)
{
    std::vector<char> block(std::size_t{64} * 1024);
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())), file.gcount() > 0) {
        if (EVP_DigestUpdate(digest, block.data(), static_cast<std::size_t>(file.gcount())) != 1)
            return false;
    }
    return file.eof() && !file.bad();
}

} // namespace

fs::path makePath(const std::wstring& text)
{
    return toSystemPath(text);
}

std::wstring fromPath(const fs::path& path)
{
    return fromSystemPath(path);
}

std::wstring SeparatorChar()
{
    return std::wstring(1, static_cast<wchar_t>(fs::path::preferred_separator));
}

std::wstring toNativeSeparators(const std::wstring& path)
{
    std::wstring native = path;
    const wchar_t separator = SeparatorChar().front();
    std::replace_if(
        native.begin(), native.end(), [](wchar_t c) { return c == L'/' || c == L'\\'; }, separator);
    return native;
}

void NormailizeFilePath(std::string& path)
{
    const bool isNetworkPath = path.compare(0, 2, "\\\\") == 0;
    std::replace(path.begin(), path.end(), '\\', '/');
    path.erase(std::unique(path.begin(), path.end(), [](char a, char b) { return a == '/' && b == '/'; }), path.end());
    if (isNetworkPath)
        path.insert(path.begin(), '/');
}

std::wstring getFileName(const std::wstring& path)
{
    return FilePath(path).GetFileName();
}

bool holdsNul(const std::wstring& text)
{
    return text.find(L'\0') != std::wstring::npos;
}

bool isNameOnWindows(const std::wstring& name)
{
    constexpr wchar_t firstVisible = 0x20;
    const auto isRefused = [](wchar_t c) {
        return c < firstVisible || std::wstring_view(L"<>:\"/\\|?*").find(c) != std::wstring_view::npos;
    };
    return !name.empty() && name.back() != L'.' && name.back() != L' ' && std::none_of(name.begin(), name.end(), isRefused) &&
           !isDevice(name);
}

bool isPathInside(const std::wstring& folder, const std::wstring& path)
{
    const std::vector<std::wstring> outer = stepsOf(folder);
    const std::vector<std::wstring> inner = stepsOf(path);
    if (holdsNul(folder) || holdsNul(path) || inner.size() <= outer.size() || !std::equal(outer.begin(), outer.end(), inner.begin()))
        return false;
    return std::all_of(inner.begin() + static_cast<std::ptrdiff_t>(outer.size()), inner.end(), isName);
}

bool leadsInside(const std::wstring& folder, const std::wstring& path)
{
    return isPathInside(folder, path) && isBelow(whereItLeads(makePath(folder)), whereItLeads(makePath(path)));
}

bool isPlaceInside(const std::wstring& folder, const std::wstring& path)
{
    if (!isPathInside(folder, path))
        return false;
    std::error_code error;
    const fs::path place = fs::absolute(makePath(path), error);
    const fs::path name = place.filename();
    // The system follows what stands before a separator or a dot at the end, and may come back to the folder itself.
    if (name.empty() || name == ".")
        return leadsInside(folder, path);
    return name != ".." && isBelow(whereItLeads(makePath(folder)), whereItLeads(place.parent_path()) / name);
}

bool fileExists(const std::wstring& path)
{
    return typeOf(path) == fs::file_type::regular;
}
bool hasFile(const std::wstring& path)
{
    return typeOf(path) == fs::file_type::regular;
}
bool hasDirectory(const std::wstring& path)
{
    return typeOf(path) == fs::file_type::directory;
}

bool createDirectory(const std::wstring& path)
{
    std::error_code error;
    fs::create_directory(makePath(path), error);
    return hasDirectory(path);
}

bool createDirectoryRecursively(const std::wstring& path)
{
    if (hasDirectory(path))
        return true;
    std::error_code error;
    fs::create_directories(makePath(path), error);
    return hasDirectory(path);
}

bool copyFile(const std::wstring& from, const std::wstring& to)
{
    const std::wstring temporary = halfMadeNameBeside(to);
    if (to.empty() || temporary.empty() || !hasFile(from))
        return false;
    std::error_code error;
    if (fs::copy_file(makePath(from), makePath(temporary), error) && flushFile(temporary) && renameOver(temporary, to))
        return true;
    removeFile(temporary);
    return false;
}

bool moveFile(const std::wstring& from, const std::wstring& to)
{
    if (!hasFile(from) || to.empty())
        return false;
    flushFile(from);
    if (renameOver(from, to))
        return true;
    if (!copyFile(from, to))
        return false;
    removeFile(from);
    return true;
}

bool removeFile(const std::wstring& path)
{
    std::error_code error;
    return !hasDirectory(path) && fs::remove(makePath(path), error) && !error;
}

bool removeEmptyDirectory(const std::wstring& path)
{
    std::error_code error;
    return hasDirectory(path) && fs::remove(makePath(path), error) && !error;
}

bool getSubFiles(const std::wstring& folder, std::vector<std::wstring>& out)
{
    std::vector<std::wstring> files;
    std::error_code error;
    for (fs::directory_iterator at(makePath(folder), error), end; !error && at != end; at.increment(error)) {
        std::error_code entryError;
        if (at->is_regular_file(entryError))
            files.push_back(fromPath(at->path()));
    }
    if (error)
        files.clear();
    std::sort(files.begin(), files.end());
    out = std::move(files);
    return !error;
}

bool GenerateNewFile(std::wstring& path)
{
    if (path.empty()) {
        tellThatProcessLives();
        const std::wstring guid = generateGuid();
        path = guid.empty() ? guid : FilePath::Combine(getTempPath(), guid);
        return !path.empty();
    }
    constexpr int lastNumber = 9999;
    const std::wstring extension = FilePath(path).GetExtension();
    const std::wstring stem = path.substr(0, path.size() - extension.size());
    std::wstring candidate = path;
    for (int number = 1; !isNameFree(candidate); ++number) {
        if (number > lastNumber || typeOf(candidate) == fs::file_type::none)
            return false;
        candidate = numbered(stem, number, extension);
    }
    path = candidate;
    return true;
}

std::string md5(const std::wstring& path)
{
    std::ifstream file;
    if (hasFile(path))
        file.open(makePath(path), std::ios::binary);
    keepOpenSsl();
    const DigestContext digest(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    std::array<unsigned char, EVP_MAX_MD_SIZE> sum{};
    unsigned size = 0;
    if (!file.is_open() || digest == nullptr || EVP_DigestInit_ex(digest.get(), EVP_md5(), nullptr) != 1 || !feedFile(digest.get(), file) ||
        EVP_DigestFinal_ex(digest.get(), sum.data(), &size) != 1)
        return {};
    return hexDigits(sum.data(), size);
}

bool readWholeFile(const std::wstring& path, std::string& out)
try {
    if (!hasFile(path))
        return false;
    std::error_code error;
    const std::uintmax_t size = fs::file_size(makePath(path), error);
    std::ifstream file(makePath(path), std::ios::binary);
    std::string bytes;
    if (error || !file.is_open() || !readStream(file, static_cast<std::size_t>(size), bytes))
        return false;
    out = std::move(bytes);
    return true;
}
catch (const std::exception&) { // a file that is larger than memory
    return false;
}

bool writeFileAtomically(const std::wstring& path, std::string_view bytes, FileAccess access)
{
    const std::wstring temporary = halfMadeNameBeside(path);
    if (path.empty() || temporary.empty() || !writeNewFile(temporary, bytes, access == FileAccess::ownerOnly))
        return false;
    if (!renameOver(temporary, path)) {
        removeFile(temporary);
        return false;
    }
    return flushFolder(folderOf(path));
}

std::wstring halfMadeNameBeside(const std::wstring& path)
{
    const std::wstring guid = generateGuid();
    if (guid.empty())
        return {};
    return path.substr(0, path.size() - getFileName(path).size()).append(halfMadeHead) + guid;
}

bool isHalfMadeName(const std::wstring& name)
{
    return name.compare(0, halfMadeHead.size(), halfMadeHead) == 0 && uuid::IsValidGUID(toString(name.substr(halfMadeHead.size())));
}

void removeHalfMadeFiles(const std::wstring& folder)
{
    std::vector<std::wstring> files;
    getSubFiles(folder, files);
    for (const std::wstring& file : files) {
        if (isHalfMadeName(getFileName(file)))
            removeFile(file);
    }
}

} // namespace orlo::utils
