#include "SecretGuard.h"

#include <BaseCommon/NeverDestroyed.h>

#include <algorithm>
#include <mutex>

namespace orlo {

namespace {

constexpr std::size_t shortestPermission = 8;

/// The latest first, each once.
class Memory
{
public:
    explicit Memory(std::size_t most) : m_most(most) {}

    void remember(const std::wstring& text)
    {
        m_texts.erase(std::remove(m_texts.begin(), m_texts.end(), text), m_texts.end());
        m_texts.insert(m_texts.begin(), text);
        if (m_texts.size() > m_most)
            m_texts.pop_back();
    }
    const std::vector<std::wstring>& texts() const { return m_texts; }

private:
    std::size_t m_most;
    std::vector<std::wstring> m_texts;
};

struct State
{
    std::mutex mutex;
    Memory secrets{16};
    Memory permissions{64};
};

State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

} // namespace

void SecretGuard::protect(const std::wstring& secret)
{
    if (secret.empty())
        return;
    const std::lock_guard lock(state().mutex);
    state().secrets.remember(secret);
}

void SecretGuard::protectPermission(const std::wstring& token)
{
    if (token.size() < shortestPermission)
        return;
    const std::lock_guard lock(state().mutex);
    state().permissions.remember(token);
}

std::vector<std::wstring> SecretGuard::secrets()
{
    const std::lock_guard lock(state().mutex);
    std::vector<std::wstring> all = state().secrets.texts();
    const std::vector<std::wstring>& permissions = state().permissions.texts();
    all.insert(all.end(), permissions.begin(), permissions.end());
    return all;
}

} // namespace orlo
