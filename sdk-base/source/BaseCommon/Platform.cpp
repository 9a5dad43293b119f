#include "Platform.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

#include <openssl/crypto.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <utility>

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>
#include <windows.h>
#else
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <pwd.h>
#include <stdlib.h> // secure_getenv
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace orlo::utils {

namespace {

// Longer than any system takes, so that each call fails before it looks anywhere.
std::filesystem::path impossiblePath()
{
    constexpr std::size_t tooLong = 40000;
    return std::filesystem::path("/" + std::string(tooLong, '0'));
}

} // namespace

#if defined(_WIN32)

namespace {

// Owns a handle of the system; also what a failed call gives.
class Handle
{
public:
    explicit Handle(HANDLE handle) : m_handle(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }
    bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return m_handle; }
    HANDLE detach() { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }
    bool close() { return !isOpen() || CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE)) != 0; }

private:
    HANDLE m_handle;
};

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE openPath(const std::wstring& path, DWORD access, DWORD share, DWORD disposition)
{
    return CreateFileW(toSystemPath(path).c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool writeAll(HANDLE file, std::string_view bytes)
{
    constexpr std::size_t largestStep = 1U << 30;
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), largestStep)), &written, nullptr) == 0)
            return false;
        bytes.remove_prefix(written);
    }
    return true;
}

HANDLE handleOf(long long number)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(number));
}

std::wstring fullPathOf(const std::wstring& path)
{
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(size == 0 ? 0 : GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full;
}

std::wstring localAppData()
{
    PWSTR found = nullptr;
    std::wstring folder;
    if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_CREATE, nullptr, &found)))
        folder = found;
    CoTaskMemFree(found);
    std::error_code error;
    return folder.empty() ? fromSystemPath(std::filesystem::temp_directory_path(error)) : folder;
}

constexpr wchar_t longPathHead[] = L"\\\\?\\";
constexpr wchar_t longNetworkHead[] = L"\\\\?\\UNC\\";

} // namespace

bool setHiddenAttribute(const std::wstring& path)
{
    const std::filesystem::path systemPath = toSystemPath(path);
    const DWORD attributes = GetFileAttributesW(systemPath.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && SetFileAttributesW(systemPath.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN) != 0;
}

unsigned long currentProcessId()
{
    return GetCurrentProcessId();
}

std::optional<std::wstring> environmentVariable(const char* name)
{
    const std::wstring wideName = toWstring(name);
    std::wstring value;
    DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0); // with the NUL at the end
    if (size == 0)
        return std::nullopt;
    // It may have grown meanwhile.
    do {
        value.resize(size);
        size = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    } while (size > value.size());
    value.resize(size);
    return value;
}

std::size_t memoryLimit()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? static_cast<std::size_t>(status.ullTotalPhys) : std::size_t{1} << 30;
}

void expectFilling(void*, std::size_t)
{}

std::filesystem::path toSystemPath(const std::wstring& text)
{
    if (holdsNul(text))
        return impossiblePath();
    // Folders are limited to 248 characters unless the path carries this head, which in turn wants it absolute and in normal form.
    if (text.size() < 240 || text.compare(0, 4, longPathHead) == 0)
        return std::filesystem::path(text);
    const std::wstring full = fullPathOf(text);
    if (full.empty())
        return std::filesystem::path(text);
    if (full.compare(0, 2, L"\\\\") == 0)
        return std::filesystem::path(longNetworkHead + full.substr(2));
    return std::filesystem::path(longPathHead + full);
}

std::wstring fromSystemPath(const std::filesystem::path& path)
{
    const std::wstring text = path.native();
    if (text.compare(0, 8, longNetworkHead) == 0)
        return L"\\\\" + text.substr(8);
    return text.compare(0, 4, longPathHead) == 0 ? text.substr(4) : text;
}

std::wstring userDataFolder()
{
    return localAppData();
}
std::wstring userCacheFolder()
{
    return localAppData();
}
std::wstring userStateFolder()
{
    return localAppData();
}

bool flushFile(const std::wstring& path)
{
    const Handle file(openPath(path, GENERIC_WRITE, shareAll, OPEN_EXISTING));
    return file.isOpen() && FlushFileBuffers(file.get()) != 0;
}

bool flushFolder(const std::wstring&)
{
    return true;
}

bool renameOver(const std::wstring& from, const std::wstring& to)
{
    return MoveFileExW(toSystemPath(from).c_str(), toSystemPath(to).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

// The user's local folders are closed to other users by what they inherit, so a private file needs nothing more here.
bool writeNewFile(const std::wstring& path, std::string_view bytes, bool /*isPrivate*/)
{
    Handle file(openPath(path, GENERIC_WRITE, 0, CREATE_NEW));
    if (!file.isOpen())
        return false;
    const bool isWritten = writeAll(file.get(), bytes) && FlushFileBuffers(file.get()) != 0;
    if (file.close() && isWritten)
        return true;
    DeleteFileW(toSystemPath(path).c_str());
    return false;
}

// Here too, the folder keeps other users out.
bool makeFilePrivate(const std::wstring& path)
{
    return Handle(openPath(path, GENERIC_WRITE, shareAll, OPEN_ALWAYS)).isOpen();
}

OpenFile::~OpenFile()
{
    const Handle file(handleOf(m_handle));
}

bool OpenFile::open(const std::wstring& path)
{
    Handle file(openPath(path, GENERIC_READ, shareAll, OPEN_EXISTING));
    if (!file.isOpen() || GetFileType(file.get()) != FILE_TYPE_DISK)
        return false;
    m_handle = static_cast<long long>(reinterpret_cast<std::intptr_t>(file.detach()));
    return true;
}

bool OpenFile::getVersion(Version& version) const
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (GetFileInformationByHandle(handleOf(m_handle), &information) == 0)
        return false;
    version.size = (static_cast<unsigned long long>(information.nFileSizeHigh) << 32) | information.nFileSizeLow;
    version.changed =
        (static_cast<long long>(information.ftLastWriteTime.dwHighDateTime) << 32) | information.ftLastWriteTime.dwLowDateTime;
    return true;
}

bool OpenFile::read(unsigned long long place, void* room, std::size_t size, std::size_t& got) const
{
    OVERLAPPED from = {};
    from.Offset = static_cast<DWORD>(place);
    from.OffsetHigh = static_cast<DWORD>(place >> 32);
    DWORD count = 0;
    const bool isRead = ReadFile(handleOf(m_handle), room, static_cast<DWORD>(std::min<std::size_t>(size, 1U << 30)), &count, &from) != 0;
    got = count;
    return isRead || GetLastError() == ERROR_HANDLE_EOF;
}

bool FileLock::open(const std::wstring& path)
{
    Handle file(openPath(path, GENERIC_READ | GENERIC_WRITE, shareAll, OPEN_ALWAYS));
    m_handle = static_cast<long long>(reinterpret_cast<std::intptr_t>(file.detach()));
    return isHeld();
}

bool FileLock::tryLock()
{
    OVERLAPPED range = {};
    return LockFileEx(handleOf(m_handle), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range) != 0;
}

// Closing the handle gives the lock back too, but the system may take its time then.
void FileLock::release()
{
    if (!isHeld())
        return;
    const Handle file(handleOf(m_handle));
    OVERLAPPED range = {};
    UnlockFileEx(file.get(), 0, 1, 0, &range);
    m_handle = noHandle;
}

bool keepLoaded(const void* address)
{
    HMODULE library = nullptr;
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, static_cast<LPCWSTR>(address),
                              &library) != 0;
}

#else

namespace {

// Owns a file descriptor; also what a failed call gives.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }
    bool isOpen() const { return m_number >= 0; }
    int get() const { return m_number; }
    bool close() { return !isOpen() || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

template <class Call>
auto untilNotInterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

int openPath(const std::wstring& path, int flags, mode_t mode = 0)
{
    const std::filesystem::path systemPath = toSystemPath(path);
    return untilNotInterrupted([&] { return ::open(systemPath.c_str(), flags | O_CLOEXEC, mode); });
}

bool writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = untilNotInterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (written < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool flush(int file)
{
    return untilNotInterrupted([&] { return ::fsync(file); }) == 0;
}

std::string homeOfAccount()
{
    char buffer[16384];
    passwd entry = {};
    passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, buffer, sizeof buffer, &found) != 0 || found == nullptr || found->pw_dir == nullptr)
        return {};
    return found->pw_dir;
}

std::string environment(const char* name)
{
    const char* value = ::secure_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string home()
{
    const std::string fromEnvironment = environment("HOME");
    std::string found = fromEnvironment.empty() ? homeOfAccount() : fromEnvironment;
    if (!found.empty() && found.front() == '/')
        return found;
    // An account without a home, as services have it: a place that no other account shares.
    return "/tmp/orlo-" + std::to_string(::geteuid());
}

// A relative path in these variables is to be ignored, by their own definition.
std::wstring baseFolder(const char* variable, const char* belowHome)
{
    std::string folder = environment(variable);
    if (folder.empty() || folder.front() != '/')
        folder = home() + '/' + belowHome;
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return toWstring(folder);
}

} // namespace

bool setHiddenAttribute(const std::wstring& path)
{
    std::error_code error;
    return std::filesystem::exists(toSystemPath(path), error);
}

unsigned long currentProcessId()
{
    return static_cast<unsigned long>(::getpid());
}

std::optional<std::wstring> environmentVariable(const char* name)
{
    const char* value = ::secure_getenv(name);
    return value == nullptr ? std::nullopt : std::optional(toWstring(value));
}

std::size_t memoryLimit()
{
    const auto machine = static_cast<std::size_t>(::sysconf(_SC_PHYS_PAGES)) * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    rlimit limit{};
    const bool limited = ::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    return limited ? std::min(machine, static_cast<std::size_t>(limit.rlim_cur)) : machine;
}

// Whole large pages inside the range only: what lies beside it is somebody else's.
void expectFilling(void* memory, std::size_t bytes)
{
    constexpr std::size_t large = std::size_t{2} << 20;
    std::size_t room = bytes;
    if (std::align(large, large, memory, room))
        ::madvise(memory, room / large * large, MADV_HUGEPAGE);
}

std::filesystem::path toSystemPath(const std::wstring& text)
{
    return holdsNul(text) ? impossiblePath() : std::filesystem::path(toString(text));
}
std::wstring fromSystemPath(const std::filesystem::path& path)
{
    return toWstring(path.native());
}

std::wstring userDataFolder()
{
    return baseFolder("XDG_DATA_HOME", ".local/share");
}
std::wstring userCacheFolder()
{
    return baseFolder("XDG_CACHE_HOME", ".cache");
}
std::wstring userStateFolder()
{
    return baseFolder("XDG_STATE_HOME", ".local/state");
}

bool flushFile(const std::wstring& path)
{
    const Descriptor file(openPath(path, O_RDONLY));
    return file.isOpen() && flush(file.get());
}

bool flushFolder(const std::wstring& path)
{
    const Descriptor folder(openPath(path, O_RDONLY | O_DIRECTORY));
    return folder.isOpen() && (flush(folder.get()) || errno == EINVAL);
}

bool renameOver(const std::wstring& from, const std::wstring& to)
{
    std::error_code error;
    std::filesystem::rename(toSystemPath(from), toSystemPath(to), error);
    return !error;
}

bool writeNewFile(const std::wstring& path, std::string_view bytes, bool isPrivate)
{
    Descriptor file(openPath(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, isPrivate ? 0600 : 0666));
    if (!file.isOpen())
        return false;
    const bool isWritten = writeAll(file.get(), bytes) && flush(file.get());
    if (file.close() && isWritten)
        return true;
    std::error_code error;
    std::filesystem::remove(toSystemPath(path), error);
    return false;
}

bool makeFilePrivate(const std::wstring& path)
{
    // Without O_NONBLOCK a pipe would wait here for its reader.
    const Descriptor file(openPath(path, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK, 0600));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return false;
    const bool isWide = S_ISREG(status.st_mode) && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
    return !isWide || ::fchmod(file.get(), S_IRUSR | S_IWUSR) == 0;
}

OpenFile::~OpenFile()
{
    const Descriptor file(static_cast<int>(m_handle));
}

bool OpenFile::open(const std::wstring& path)
{
    // Without O_NONBLOCK a pipe would wait here for its writer.
    m_handle = openPath(path, O_RDONLY | O_NONBLOCK);
    struct stat status = {};
    return m_handle >= 0 && ::fstat(static_cast<int>(m_handle), &status) == 0 && S_ISREG(status.st_mode);
}

bool OpenFile::getVersion(Version& version) const
{
    struct stat status = {};
    if (::fstat(static_cast<int>(m_handle), &status) != 0)
        return false;
    version.size = static_cast<unsigned long long>(status.st_size);
    version.changed = static_cast<long long>(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    return true;
}

bool OpenFile::read(unsigned long long place, void* room, std::size_t size, std::size_t& got) const
{
    const ssize_t count = untilNotInterrupted([&] { return ::pread(static_cast<int>(m_handle), room, size, static_cast<off_t>(place)); });
    got = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count >= 0;
}

bool FileLock::open(const std::wstring& path)
{
    m_handle = openPath(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0600);
    return isHeld();
}

bool FileLock::tryLock()
{
    return untilNotInterrupted([&] { return ::flock(static_cast<int>(m_handle), LOCK_EX | LOCK_NB); }) == 0;
}

void FileLock::release()
{
    if (isHeld())
        ::close(static_cast<int>(m_handle));
    m_handle = noHandle;
}

bool keepLoaded(const void* address)
{
    Dl_info library{};
    if (::dladdr(address, &library) == 0 || library.dli_fname == nullptr)
        return false;
    void* const handle = ::dlopen(library.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    return handle != nullptr && ::dlclose(handle) == 0;
}

#endif

void keepOpenSsl()
{
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
}

void forgetOpenSslOfThread()
{
    OPENSSL_thread_stop();
}

FileLock::~FileLock()
{
    release();
}

bool FileLock::acquire(const std::wstring& path, unsigned milliseconds)
{
    release();
    m_wasTaken = false;
    if (!open(path))
        return false;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!tryLock()) {
        if (Clock::now() >= end) {
            release();
            m_wasTaken = true;
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace orlo::utils
