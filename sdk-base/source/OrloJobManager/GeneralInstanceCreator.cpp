#include "GeneralInstanceCreator.h"

#include <BaseCommon/NeverDestroyed.h>

#include <map>
#include <mutex>
#include <typeindex>

namespace orlo {

namespace {

struct State
{
    std::mutex mutex;
    std::map<std::type_index, void*> instances;
};

// Made at the first use and never destroyed: initialisers and destructors of statics come here in any order.
State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

} // namespace

GeneralInstanceCreator* GeneralInstanceCreator::Get() noexcept
{
    static GeneralInstanceCreator& creator = utils::neverDestroyed(new GeneralInstanceCreator);
    return &creator;
}

void* GeneralInstanceCreator::getInstance(const std::type_info& type) const
{
    const std::lock_guard lock(state().mutex);
    const auto found = state().instances.find(type);
    return found == state().instances.end() ? nullptr : found->second;
}

void GeneralInstanceCreator::setInstance(const std::type_info& type, void* instance)
{
    const std::lock_guard lock(state().mutex);
    if (instance)
        state().instances[type] = instance;
    else
        state().instances.erase(type);
}

} // namespace orlo
