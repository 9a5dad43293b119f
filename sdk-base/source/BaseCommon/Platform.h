#pragma once

#include <BaseCommon/Export.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// Everything that the library asks of the operating system itself. Nothing here throws.
namespace orlo::utils {

/// Gives a file or folder the hidden attribute. On Linux names with a dot at the head are hidden and there is nothing to set: true if
/// the path is there.
ORLO_BASE_API bool setHiddenAttribute(const std::wstring& path);

ORLO_BASE_API unsigned long currentProcessId();

/// A variable of the environment, whatever the locale; none where it isn't set. Not to be called while another thread changes the
/// environment.
ORLO_BASE_API std::optional<std::wstring> environmentVariable(const char* name);

/// How much memory this process can ever have, in bytes: that of the machine, or less where the process is limited.
ORLO_BASE_API std::size_t memoryLimit();

/// Says that this much memory is about to be filled: a system that can hands it out in large pages, which is several times faster.
ORLO_BASE_API void expectFilling(void* memory, std::size_t bytes);

/// Keeps the library that holds an address in the process, whoever unloads it.   Returns: false for an address in none.
ORLO_BASE_API bool keepLoaded(const void* address);

/// To be called before OpenSSL is used: where nobody has used it before, it is not taken down at the end of the process, while threads may
/// still ask it for random numbers.
ORLO_BASE_API void keepOpenSsl();

/// For a thread that nobody joins, before it says that it is gone: what OpenSSL keeps for it goes now. By itself it would go when the
/// thread is over, which may be while OpenSSL is taken down at the end of the process.
ORLO_BASE_API void forgetOpenSslOfThread();

/// The path in the form that the system takes at any length. Every call of the system gets its path from here. A text with a NUL gives
/// one at which no file can be.
ORLO_BASE_API std::filesystem::path toSystemPath(const std::wstring& text);
ORLO_BASE_API std::wstring fromSystemPath(const std::filesystem::path& path);

/// The user's own places, without a separator at the end; all absolute.
ORLO_BASE_API std::wstring userDataFolder();
ORLO_BASE_API std::wstring userCacheFolder();
ORLO_BASE_API std::wstring userStateFolder();

/// Waits until the file's bytes, or the entries of a folder, are on disk. A system that can't flush folders says true.
ORLO_BASE_API bool flushFile(const std::wstring& path);
ORLO_BASE_API bool flushFolder(const std::wstring& path);

/// Gives the file another name on the same file system, in one step, in place of a file that may stand there.
ORLO_BASE_API bool renameOver(const std::wstring& from, const std::wstring& to);

/// Makes a file that isn't there yet, fills it and flushes it; removed again on failure. A private file is its owner's alone (0600).
ORLO_BASE_API bool writeNewFile(const std::wstring& path, std::string_view bytes, bool isPrivate);

/// Makes the file its owner's alone (0600), an empty one if it isn't there yet. What is no regular file is left alone.
/// Returns: false if it can't be opened for writing, or belongs to somebody else.
ORLO_BASE_API bool makeFilePrivate(const std::wstring& path);

/// A regular file that is open for reading: what becomes of its name meanwhile doesn't matter. Any number of threads may read.
class ORLO_BASE_API OpenFile
{
public:
    /// Of a file that was written to another one is told, unless the system's clock is too coarse to see it.
    struct Version
    {
        bool operator==(const Version& other) const { return size == other.size && changed == other.changed; }
        bool operator!=(const Version& other) const { return !(*this == other); }

        unsigned long long size = 0;
        long long changed = 0; ///< in the system's own units
    };

    OpenFile() = default;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile();

    /// Once for an object.   Returns: false if there is none, or it can't be read.
    bool open(const std::wstring& path);
    bool getVersion(Version& version) const;
    /// Reads on from the place, fewer bytes than asked for at the end.   Returns: false on a failure of the system.
    bool read(unsigned long long place, void* room, std::size_t size, std::size_t& got) const;

private:
    long long m_handle = -1;
};

/// A lock between processes, and between threads, on a file that is made for it and stays. The system drops it when the process ends.
class ORLO_BASE_API FileLock
{
public:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

    /// Takes the lock, waiting up to that many milliseconds for another holder to give it back; gives back what this one held before.
    /// Returns: false if it stays taken, and at once if the file can't be opened.
    bool acquire(const std::wstring& path, unsigned milliseconds);
    void release();
    bool isHeld() const { return m_handle != noHandle; }
    /// Of the last attempt: whether somebody else has the lock. False if the file couldn't be opened.
    bool wasTaken() const { return m_wasTaken; }

private:
    bool open(const std::wstring& path);
    bool tryLock();

    static constexpr long long noHandle = -1;
    long long m_handle = noHandle;
    bool m_wasTaken = false;
};

} // namespace orlo::utils
