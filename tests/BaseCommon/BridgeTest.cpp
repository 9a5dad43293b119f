#include <BaseCommon/Callbacks.h>
#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/IOrloBridge.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

TEST(Bridge, isNullUntilTheProjectLibraryIsLoaded)
{
    EXPECT_EQ(IOrloBridge::m_pBridge, nullptr);
}

TEST(Bridge, numbersTheMetaKeysFromZero)
{
    EXPECT_EQ(static_cast<int>(DatasetMetaKey::SpaceConfigVersion), 0);
    EXPECT_EQ(static_cast<int>(DatasetMetaKey::AxisGridVersions), 1);
    EXPECT_EQ(static_cast<int>(DatasetMetaKey::BuildingItemVersions), 2);
    EXPECT_EQ(static_cast<int>(DatasetMetaKey::BuildingItemElevationSetVersions), 3);
    EXPECT_EQ(static_cast<int>(DatasetMetaKey::BuildingItemAxisGridVersions), 4);
    EXPECT_EQ(static_cast<int>(DatasetMetaKey::BuildingItemCoordinateVersions), 5);
}

class Handler : public IOrloFileCallback
{
public:
    explicit Handler(bool& gone) : m_gone(gone) {}
    ~Handler() override { m_gone = true; }

    void on_complete(int, const std::wstring& body, const std::string&, std::shared_ptr<OrloCallbackContext>, ErrorCode&) override
    {
        lastBody = body;
    }
    void on_complete(int, const std::wstring&, const std::vector<unsigned char>& data, const std::string&,
                     std::shared_ptr<OrloCallbackContext>, ErrorCode&) override
    {
        lastData = data;
    }

    std::wstring lastBody;
    std::vector<unsigned char> lastData;

private:
    bool& m_gone;
};

TEST(Callbacks, bothFormsOfAFileCallbackAreReachable)
{
    bool gone = false;
    Handler handler(gone);
    ErrorCode error;
    IOrloFileCallback& callback = handler;
    callback.on_complete(200, L"text", "PutFile", nullptr, error);
    callback.on_complete(200, L"", std::vector<unsigned char>{1, 2}, "GetFile", nullptr, error);
    EXPECT_EQ(handler.lastBody, L"text");
    EXPECT_EQ(handler.lastData, (std::vector<unsigned char>{1, 2}));
}

TEST(Callbacks, aContextKeepsItsHandlerAndStartsWithoutAFurtherStep)
{
    bool gone = false;
    {
        OrloCallbackContext context(std::make_shared<Handler>(gone));
        EXPECT_FALSE(context.propagate);
        EXPECT_FALSE(gone);
        context.propagate = true;
        EXPECT_TRUE(context.propagate);
    }
    EXPECT_TRUE(gone);
}

} // namespace
} // namespace orlo::test
