#include <BaseCommon/BaseConfigManager.h>
#include <OrloCommon/OrloConfigManager.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

class ConfigTest : public testing::Test
{
protected:
    ~ConfigTest() override { OrloConfigManager::Configure({}); }
};

TEST_F(ConfigTest, beforeAnyConfigurationThereAreNoServicesAndThirtySeconds)
{
    EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(L"project"), L"");
    EXPECT_EQ(OrloConfigManager::Get()->httpTimeout(), 30);
    EXPECT_EQ(BaseConfigManager::Get()->GetDefaultRemoteFolder(), "");
}

TEST_F(ConfigTest, givesTheAddressOfAServiceByItsKey)
{
    OrloConfig config;
    config.serviceUrls = {{L"project", L"https://p.example/api"}, {L"module", L"https://m.example"}};
    OrloConfigManager::Configure(config);
    EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(L"project"), L"https://p.example/api");
    EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(L"module"), L"https://m.example");
}

TEST_F(ConfigTest, anUnknownOrDifferentlySpelledKeyHasNoAddress)
{
    OrloConfig config;
    config.serviceUrls = {{L"project", L"https://p.example"}};
    OrloConfigManager::Configure(config);
    EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(L"Project"), L"");
    EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(L""), L"");
}

TEST_F(ConfigTest, aTimeoutOfZeroOrBelowCountsAsThirty)
{
    const auto timeoutFor = [](int seconds) {
        OrloConfig config;
        config.httpTimeoutSeconds = seconds;
        OrloConfigManager::Configure(config);
        return OrloConfigManager::Get()->httpTimeout();
    };
    EXPECT_EQ(timeoutFor(7), 7);
    EXPECT_EQ(timeoutFor(0), 30);
    EXPECT_EQ(timeoutFor(-5), 30);
}

TEST_F(ConfigTest, replacesTheWholeConfiguration)
{
    OrloConfig first;
    first.serviceUrls = {{L"project", L"https://p.example"}};
    first.proxy = L"http://proxy.example:3128";
    OrloConfigManager::Configure(first);
    OrloConfig second;
    second.appVersion = L"2.1";
    OrloConfigManager::Configure(second);

    const auto now = OrloConfigManager::Get()->snapshot();
    EXPECT_EQ(now->appVersion, L"2.1");
    EXPECT_EQ(now->proxy, L"");
    EXPECT_TRUE(now->serviceUrls.empty());
}

TEST_F(ConfigTest, aSnapshotStaysAsItWasTaken)
{
    OrloConfig config;
    config.caFile = L"/etc/one.pem";
    OrloConfigManager::Configure(config);
    const auto before = OrloConfigManager::Get()->snapshot();
    OrloConfigManager::Configure({});
    EXPECT_EQ(before->caFile, L"/etc/one.pem");
}

TEST_F(ConfigTest, handsTheDefaultRemoteFolderToTheBaseLibraryAsUtf8)
{
    OrloConfig config;
    config.defaultRemoteFolder = L"设计/models";
    OrloConfigManager::Configure(config);
    EXPECT_EQ(BaseConfigManager::Get()->GetDefaultRemoteFolder(), "\xE8\xAE\xBE\xE8\xAE\xA1/models");
}

TEST_F(ConfigTest, readersSeeTheOldOrTheNewConfigurationWhole)
{
    OrloConfig odd;
    odd.appVersion = L"odd version of the application";
    odd.proxy = L"odd proxy, long enough for the heap";
    OrloConfig even;
    even.appVersion = L"even version of the application";
    even.proxy = L"even proxy, long enough for the heap";
    OrloConfigManager::Configure(odd);

    std::atomic<bool> done{false};
    std::atomic<int> mixed{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            while (!done) {
                const auto seen = OrloConfigManager::Get()->snapshot();
                mixed += seen->appVersion.substr(0, 3) != seen->proxy.substr(0, 3);
            }
        });
    }
    for (int i = 0; i < 2000; ++i)
        OrloConfigManager::Configure(i % 2 == 0 ? even : odd);
    done = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(mixed, 0);
}

} // namespace
} // namespace orlo::test
