#include <BaseCommon/IOrloEventManager.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace orlo::test {
namespace {

class Board : public IOrloEventManager
{
public:
    int Subscribe(int, Listener listener) override
    {
        m_listeners.push_back(std::move(listener));
        return static_cast<int>(m_listeners.size());
    }
    bool Unsubscribe(int) override { return false; }
    void PostEvent(int eventType, const std::wstring& value) override
    {
        for (const Listener& listener : m_listeners)
            listener(eventType, value);
    }

private:
    std::vector<Listener> m_listeners;
};

TEST(EventManager, isNullUntilAHostInstallsOne)
{
    EXPECT_EQ(IOrloEventManager::Get(), nullptr);
}

TEST(EventManager, isTheOneThatTheHostInstalledUntilItTakesItAway)
{
    Board board;
    IOrloEventManager::Install(&board);
    EXPECT_EQ(IOrloEventManager::Get(), &board);
    IOrloEventManager::Install(nullptr);
    EXPECT_EQ(IOrloEventManager::Get(), nullptr);
}

TEST(EventManager, handsAnEventToWhoeverListens)
{
    Board board;
    IOrloEventManager::Install(&board);
    std::vector<std::pair<int, std::wstring>> heard;
    board.Subscribe(4, [&](int type, const std::wstring& value) { heard.emplace_back(type, value); });
    IOrloEventManager::Get()->PostEvent(4, L"module_m1_7");
    EXPECT_EQ(heard, (std::vector<std::pair<int, std::wstring>>{{4, L"module_m1_7"}}));
    IOrloEventManager::Install(nullptr);
}

} // namespace
} // namespace orlo::test
