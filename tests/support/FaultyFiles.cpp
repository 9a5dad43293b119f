#include "FaultyFiles.h"

#include "OwnProcess.h"

#include <sqlite3.h>

#include <atomic>
#include <map>
#include <mutex>
#include <utility>

namespace orlo::test {

namespace {

std::atomic<int> stepsDone{0};
std::atomic<int> flushesDone{0};
std::atomic<int> fullFrom{0};
std::atomic<int> fatalStep{0};
std::atomic<int> calledStep{0};

std::function<void()>& called()
{
    static std::function<void()>& function = *new std::function<void()>;
    return function;
}

sqlite3_vfs original;
sqlite3_vfs faulty;

/// The system's own operations for each kind of file, and ours in their place.
struct Methods
{
    std::mutex mutex;
    std::map<const sqlite3_io_methods*, sqlite3_io_methods*> ours;
    std::map<const sqlite3_io_methods*, const sqlite3_io_methods*> systems;
};

Methods& methods()
{
    static Methods& instance = *new Methods;
    return instance;
}

const sqlite3_io_methods& systemOf(sqlite3_file* file)
{
    const std::lock_guard lock(methods().mutex);
    return *methods().systems.at(file->pMethods);
}

int nextStep()
{
    const int step = ++stepsDone;
    if (step == calledStep)
        called()();
    return step;
}

bool isFull(int step)
{
    return fullFrom != 0 && step >= fullFrom;
}

int writeFile(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset)
{
    const int step = nextStep();
    if (step == fatalStep) {
        systemOf(file).xWrite(file, bytes, size / 2, offset);
        killOwnProcess();
    }
    return isFull(step) ? SQLITE_FULL : systemOf(file).xWrite(file, bytes, size, offset);
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size)
{
    const int step = nextStep();
    if (step == fatalStep)
        killOwnProcess();
    return systemOf(file).xTruncate(file, size);
}

int flushFile(sqlite3_file* file, int flags)
{
    const int step = nextStep();
    ++flushesDone;
    if (step == fatalStep)
        killOwnProcess();
    return isFull(step) ? SQLITE_IOERR_FSYNC : systemOf(file).xSync(file, flags);
}

sqlite3_io_methods* oursFor(const sqlite3_io_methods* systems)
{
    const std::lock_guard lock(methods().mutex);
    sqlite3_io_methods*& ours = methods().ours[systems];
    if (!ours) {
        ours = new sqlite3_io_methods(*systems);
        ours->xWrite = writeFile;
        ours->xTruncate = truncateFile;
        ours->xSync = flushFile;
        methods().systems[ours] = systems;
    }
    return ours;
}

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    const int result = original.xOpen(&original, name, file, flags, outFlags);
    if (file->pMethods)
        file->pMethods = oursFor(file->pMethods);
    return result;
}

int deleteFile(sqlite3_vfs*, const char* name, int syncFolder)
{
    if (nextStep() == fatalStep)
        killOwnProcess();
    return original.xDelete(&original, name, syncFolder);
}

} // namespace

FaultyFiles::FaultyFiles()
{
    reset();
    original = *sqlite3_vfs_find(nullptr);
    faulty = original;
    faulty.zName = "faulty";
    faulty.xOpen = openFile;
    faulty.xDelete = deleteFile;
    sqlite3_vfs_register(&faulty, 1);
}

FaultyFiles::~FaultyFiles()
{
    sqlite3_vfs_unregister(&faulty);
    reset();
}

void FaultyFiles::reset()
{
    stepsDone = 0;
    flushesDone = 0;
    fullFrom = 0;
    fatalStep = 0;
    calledStep = 0;
}

int FaultyFiles::steps() const
{
    return stepsDone;
}

int FaultyFiles::flushes() const
{
    return flushesDone;
}

void FaultyFiles::fillDiskAt(int step)
{
    fullFrom = step;
}

void FaultyFiles::killAt(int step)
{
    fatalStep = step;
}

void FaultyFiles::callAt(int step, std::function<void()> function)
{
    called() = std::move(function);
    calledStep = step;
}

} // namespace orlo::test
