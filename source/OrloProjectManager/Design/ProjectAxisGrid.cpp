#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Design/ConfigWeb.h"
#include "../Projects/Project.h"
#include "AxisCurve.h"
#include "AxisGrid.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace orlo {

namespace {

constexpr int lastVersion = -1;

bool isOfVersion(const std::shared_ptr<IAxisGrid>& grid, int version)
{
    return grid && grid->GetVersion() == version;
}

/// Whether nothing in it is of a class of the host's, which may have reasons of its own.
bool isOurs(const IAxisGrid& grid)
{
    if (!dynamic_cast<const AxisGrid*>(&grid))
        return false;
    const std::vector<IAxisCurve*> curves = grid.GetCurves();
    return std::all_of(curves.begin(), curves.end(), [](const IAxisCurve* curve) { return dynamic_cast<const IStoredCurve*>(curve); });
}

std::string documentOf(IAxisGrid* grid)
{
    if (!grid)
        throw std::invalid_argument("the axis grid is null");
    if (auto document = axisGridDocument(*grid))
        return *document;
    throw std::invalid_argument(isOurs(*grid) ? "the axis grid holds a number that is not finite"
                                              : "the axis grid couldn't be written whole");
}

} // namespace

int Project::wantedAxisGrid(const std::shared_ptr<IAxisGrid>& remembered, int version)
{
    if (!remembered || version != lastVersion)
        return version;
    const std::vector<int> versions = GetAxisGridConfigVersions();
    return versions.empty() ? lastVersion : versions.back();
}

bool Project::GetAxisGridConfig(int version, std::string& configText, ErrorCode& error)
{
    const CallFrame frame(ORLO_HERE("orlo::Project::GetAxisGridConfig"));
    const auto remembered = std::atomic_load(&m_axisGrid);
    const int wanted = wantedAxisGrid(remembered, version);
    if (isOfVersion(remembered, wanted)) {
        ErrorCode failure; // intended: what came in isn't looked at where nothing is fetched
        const bool done = frame.run(failure, [&] {
            configText = documentOf(remembered.get()); // a host may have put curves of its own into it
            return true;
        });
        if (!done)
            error = failure;
        return done;
    }
    return frame.run(error, [&] {
        auto answer = fetched(&OrloWebService::GetAxisGridConfig, error, m_id, wanted);
        if (!answer)
            return false;
        configText = std::move(*answer);
        return true;
    });
}

IAxisGrid* Project::GetAxisGridConfig(int version, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetAxisGridConfig")).run(error, [&]() -> IAxisGrid* {
        const auto remembered = std::atomic_load(&m_axisGrid);
        const int wanted = wantedAxisGrid(remembered, version);
        if (isOfVersion(remembered, wanted))
            return remembered.get();
        std::atomic_store(&m_axisGrid, std::shared_ptr<IAxisGrid>()); // stays so if what comes can't be parsed
        const auto answer = fetched(&OrloWebService::GetAxisGridConfig, error, m_id, wanted);
        const auto grid = answer ? parseAxisGrid(*answer) : nullptr;
        std::atomic_store(&m_axisGrid, grid);
        return grid.get();
    });
}

bool Project::UpdateAxisGrid(IAxisGrid* grid, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::UpdateAxisGrid")).run(error, [&] {
        return retried(&OrloWebService::UpdateProjectConfig, error, utils::toWstring(documentOf(grid)), m_id, ConfigType::GridConfig);
    });
}

std::vector<int> Project::GetAxisGridConfigVersions(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetAxisGridConfigVersions")).run(error, [&] {
        std::vector<int> versions;
        retried(&OrloWebService::GetAxisGridConfigVersions, error, versions, m_id);
        return versions;
    });
}

} // namespace orlo
