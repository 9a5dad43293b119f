#include "support/PlatformHost.h"

#include <BaseCommon/ErrorCode.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <gtest/gtest.h>

// A grid from the one who draws it to the one who measures it, through a platform.
namespace orlo::test {
namespace {

class AxisGridSession : public testing::Test
{
protected:
    std::shared_ptr<ICollaborationProject> load() { return ICollaborationProject::Load(L"p-1", error); }

    static std::shared_ptr<IAxisLine> line(const std::wstring& id, double x)
    {
        auto axis = IAxisLine::Create();
        axis->SetId(id);
        axis->SetName(L"轴" + id);
        axis->SetStartPt({x, 0.0, 0.0});
        axis->SetEndPt({x, 24000.0, 0.0});
        return axis;
    }

    PlatformHost host;
    ErrorCode error;
    std::shared_ptr<ICollaborationProject> author = load();
};

TEST_F(AxisGridSession, aGridIsStoredLoadedAndMeasured)
{
    const auto drawn = IAxisGrid::Create();
    drawn->AddCurve(line(L"1", 0.0));
    drawn->AddCurve(line(L"2", 7200.125));
    const auto arc = IAxisArc::Create();
    arc->SetName(L"弧");
    arc->SetMiddlePt({0.1, 0.2, 0.3});
    drawn->AddCurve(arc);
    EXPECT_EQ(drawn->GetDistance(L"1", L"2"), 0.0) << "a line that was drawn has no direction yet";
    ASSERT_TRUE(author->UpdateAxisGrid(drawn.get(), error)) << error.GetValue();

    const auto reader = load();
    IAxisGrid* const read = reader->GetAxisGridConfig(-1, error);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetVersion(), 1);
    EXPECT_EQ(read->GetCurves().size(), 3u);
    EXPECT_DOUBLE_EQ(read->GetDistance(L"1", L"2"), 7200.125);
    EXPECT_EQ(read->GetCurve(L"2")->GetName(), L"轴2");
    const auto* const readArc = dynamic_cast<IAxisArc*>(read->GetCurve(arc->GetId()));
    ASSERT_NE(readArc, nullptr);
    EXPECT_EQ(readArc->GetMiddlePt().y, 0.2);
}

TEST_F(AxisGridSession, whatIsRememberedIsFoundToBeStale)
{
    const auto grid = IAxisGrid::Create();
    ASSERT_TRUE(author->UpdateAxisGrid(grid.get(), error));
    const auto reader = load();
    IAxisGrid* const first = reader->GetAxisGridConfig(-1, error);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(reader->GetAxisGridConfig(-1, error), first) << "nothing has changed";

    grid->AddCurve(line(L"1", 0.0));
    ASSERT_TRUE(author->UpdateAxisGrid(grid.get(), error));
    IAxisGrid* const second = reader->GetAxisGridConfig(-1, error);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->GetVersion(), 2);
    EXPECT_EQ(second->GetCurves().size(), 1u);
    EXPECT_EQ(reader->GetAxisGridConfigVersions(error), (std::vector<int>{1, 2}));

    IAxisGrid* const again = reader->GetAxisGridConfig(1, error);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->GetVersion(), 1);
    EXPECT_EQ(reader->GetAxisGridConfig(3, error), nullptr) << "there is no such version";
    EXPECT_FALSE(error.isClear());
}

} // namespace
} // namespace orlo::test
