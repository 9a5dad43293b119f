#include "AxisGrid.h"

#include "AxisCurve.h"
#include "Point3dMath.h"

#include <BaseCommon/JsonWrapper.h>
#include <OrloLogging/Log.h>

#include <rapidjson/rapidjson.h>

#include <cmath>
#include <utility>

namespace orlo {

IAxisGrid::IAxisGrid() = default;
IAxisGrid::~IAxisGrid() = default;

std::shared_ptr<IAxisGrid> IAxisGrid::Create()
{
    return std::make_shared<AxisGrid>();
}

std::vector<IAxisCurve*> AxisGrid::GetCurves() const
{
    std::vector<IAxisCurve*> curves;
    curves.reserve(m_curves.size());
    for (const auto& [id, curve] : m_curves)
        curves.push_back(curve.get());
    return curves;
}

IAxisCurve* AxisGrid::GetCurve(const std::wstring& id) const
{
    const auto found = m_curves.find(id);
    return found == m_curves.end() ? nullptr : found->second.get();
}

void AxisGrid::AddCurve(std::shared_ptr<IAxisCurve> curve)
{
    if (!curve)
        return;
    std::wstring id = curve->GetId();
    m_curves.insert_or_assign(std::move(id), std::move(curve));
}

void AxisGrid::RemoveCurve(const std::wstring& id)
{
    m_curves.erase(id);
}

namespace {

/// How far from 1 the cosine of two directions may be that still count as parallel.
constexpr double parallelTolerance = 1e-6;

Point3d inPlan(const Point3d& point)
{
    return {point.x, point.y, 0.0};
}

bool areParallel(Point3d a, Point3d b)
{
    a.normalize();
    b.normalize();
    return !(std::abs(std::abs(a.dot(b)) - 1.0) > parallelTolerance);
}

} // namespace

double AxisGrid::GetDistance(const std::wstring& a, const std::wstring& b) const
{
    const auto* const from = dynamic_cast<const IAxisLine*>(GetCurve(a));
    const auto* const to = dynamic_cast<const IAxisLine*>(GetCurve(b));
    if (!from || !to || !areParallel(from->GetDir(), to->GetDir()))
        return 0.0;
    // The heights count for what is parallel and not for the distance, and the point on the other line is its end: both are intended.
    Point3d along = inPlan(from->GetEndPt() - from->GetStartPt());
    const Point3d across = inPlan(to->GetEndPt() - from->GetStartPt());
    along.normalize();
    const double length = across.length();
    const double share = across.dot(along);
    return std::sqrt(length * length - share * share);
}

bool AxisGrid::loadCurve(const JsonWrapper& in)
{
    std::shared_ptr<IAxisCurve> curve;
    switch (storedCurveType(in)) {
    case CurveType::Line:
        curve = std::make_shared<AxisLine>();
        break;
    case CurveType::Arc:
        curve = std::make_shared<AxisArc>();
        break;
    case CurveType::None:
        return false;
    }
    const bool isWhole = curve->DeserializeFromJson(in);
    AddCurve(std::move(curve));
    return isWhole;
}

bool AxisGrid::loadCurves(const JsonWrapper& array, const wchar_t* failure)
{
    bool areWhole = true;
    JsonWrapper curve;
    for (int i = 0; !isFull() && array.Get(i, curve); ++i) {
        if (loadCurve(curve))
            continue;
        areWhole = false;
        if (failure)
            log::error(failure);
    }
    return areWhole;
}

bool AxisGrid::LoadLinesAndArcs(const JsonWrapper& data)
{
    const JsonWrapper axis = data["axis"];
    const auto load = [&](const char* key, const wchar_t* failure) {
        if (!axis.HasMember(key))
            return true;
        const JsonWrapper curves = axis[key];
        if (!curves.IsArray())
            log::error(L"Invalid axis config data: json lines is not an array!"); // of arcs too, and that is intended
        return curves.IsArray() && loadCurves(curves, failure);
    };
    const bool hasLines = load("lines", L"load axis line error!");
    const bool hasArcs = load("arcs", L"load axis arc error!");
    return hasLines && hasArcs && !isFull();
}

bool AxisGrid::SerializeToJson(JsonWrapper& out)
{
    out.Add("appKey", "BIM-MODEL");
    out.Add("schemaVersion", 3);
    out.Add("schemaKey", "GridConfig");

    const auto fresh = [&out](rapidjson::Type type) { return JsonWrapper(out.GetAllocator(), type); };
    JsonWrapper lines = fresh(rapidjson::kArrayType);
    JsonWrapper arcs = fresh(rapidjson::kArrayType);
    bool isWhole = true;
    for (const auto& [id, curve] : m_curves) {
        JsonWrapper object = fresh(rapidjson::kObjectType);
        isWhole = curve->SerializeToJson(object) && isWhole;
        const CurveType type = curve->GetCurveType();
        if (type == CurveType::Line)
            lines.Add(std::move(object));
        else if (type == CurveType::Arc)
            arcs.Add(std::move(object));
    }
    JsonWrapper axis = fresh(rapidjson::kObjectType);
    axis.Add("lines", std::move(lines));
    axis.Add("arcs", std::move(arcs));
    if (m_id.empty())
        m_id = utils::toString(utils::generateGuid());
    JsonWrapper data = fresh(rapidjson::kObjectType);
    data.Add("axis", std::move(axis));
    data.Add("id", m_id);
    out.Add("data", std::move(data));
    return isWhole;
}

} // namespace orlo
