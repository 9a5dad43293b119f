// Loads a library and says what that left behind or did: threads, open files, files opened by the library's own start-up.
// The loader itself opens files by other means than the functions below.

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>
#include <sys/socket.h>

namespace {

std::atomic<bool> watching{false};

template <class Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void tell(const char* what)
{
    if (watching)
        std::printf("opened: %s\n", what);
}

std::ptrdiff_t entries(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

} // namespace

#define ORLO_SEEN extern "C" __attribute__((visibility("default")))

ORLO_SEEN int open(const char* path, int flags, ...)
{
    tell(path);
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return next<int (*)(const char*, int, ...)>("open")(path, flags, mode);
}

ORLO_SEEN int open64(const char* path, int flags, ...)
{
    tell(path);
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return next<int (*)(const char*, int, ...)>("open64")(path, flags, mode);
}

ORLO_SEEN std::FILE* fopen(const char* path, const char* mode)
{
    tell(path);
    return next<std::FILE* (*)(const char*, const char*)>("fopen")(path, mode);
}

ORLO_SEEN std::FILE* fopen64(const char* path, const char* mode)
{
    tell(path);
    return next<std::FILE* (*)(const char*, const char*)>("fopen64")(path, mode);
}

ORLO_SEEN int socket(int domain, int type, int protocol) noexcept
{
    tell("a socket");
    return next<int (*)(int, int, int)>("socket")(domain, type, protocol);
}

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const auto threads = entries("/proc/self/task");
    const auto files = entries("/proc/self/fd");
    watching = true;
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL);
    watching = false;
    if (!library) {
        std::cout << dlerror() << '\n';
        return 3;
    }
    std::cout << "threads: " << entries("/proc/self/task") - threads << "\nfiles: " << entries("/proc/self/fd") - files << '\n';
    return 0;
}
