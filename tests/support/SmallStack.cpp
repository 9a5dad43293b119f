#include "SmallStack.h"

#include <pthread.h>
#include <stdexcept>

namespace orlo::test {

namespace {

void* runWork(void* work)
{
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

} // namespace

void onSmallStack(const std::function<void()>& work)
{
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, 512 * 1024);
    pthread_t thread{};
    const int failure = ::pthread_create(&thread, &attributes, runWork, const_cast<std::function<void()>*>(&work));
    ::pthread_attr_destroy(&attributes);
    if (failure != 0)
        throw std::runtime_error("can't start a thread");
    ::pthread_join(thread, nullptr);
}

} // namespace orlo::test
