#include "KillAtCall.h"

#include "OwnProcess.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orlo::test {
namespace {

std::atomic<unsigned> deadly{0};
std::atomic<unsigned> calls{0};

void count()
{
    if (++calls == deadly)
        killOwnProcess();
}

template <class Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

void killAtCall(unsigned number)
{
    calls = 0;
    deadly = number;
}

unsigned callsSince()
{
    return calls;
}

} // namespace orlo::test

#define ORLO_IN_FRONT extern "C" __attribute__((visibility("default")))

ORLO_IN_FRONT ssize_t send(int socket, const void* bytes, std::size_t size, int flags)
{
    orlo::test::count();
    return orlo::test::next<decltype(send)>("send")(socket, bytes, size, flags);
}

ORLO_IN_FRONT ssize_t recv(int socket, void* room, std::size_t size, int flags)
{
    orlo::test::count();
    return orlo::test::next<decltype(recv)>("recv")(socket, room, size, flags);
}

ORLO_IN_FRONT ssize_t write(int file, const void* bytes, std::size_t size)
{
    orlo::test::count();
    return orlo::test::next<decltype(write)>("write")(file, bytes, size);
}

ORLO_IN_FRONT int fsync(int file)
{
    orlo::test::count();
    return orlo::test::next<decltype(fsync)>("fsync")(file);
}

ORLO_IN_FRONT int rename(const char* from, const char* to) noexcept
{
    orlo::test::count();
    return orlo::test::next<decltype(rename)>("rename")(from, to);
}

ORLO_IN_FRONT int open(const char* path, int flags, ...)
{
    orlo::test::count();
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return orlo::test::next<decltype(open)>("open")(path, flags, mode);
}
