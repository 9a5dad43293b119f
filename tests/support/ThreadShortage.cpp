#include "ThreadShortage.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

namespace {

std::atomic<bool> shortage{false};

using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

} // namespace

// Stands before the system's own function, for this program and the libraries that it loads.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                                                     void* (*start)(void*), void* argument) noexcept
{
    if (shortage)
        return EAGAIN;
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return create(thread, attributes, start, argument);
}

namespace orlo::test {

ThreadShortage::ThreadShortage()
{
    shortage = true;
}

ThreadShortage::~ThreadShortage()
{
    shortage = false;
}

} // namespace orlo::test
