#include "AxisGrid.h"

#include "AxisCurve.h"
#include "JsonSink.h"
#include "Point3dMath.h"

#include <OrloLogging/Log.h>

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
    m_curves.insert_or_assign(m_curves.end(), std::move(id), std::move(curve)); // stored grids are in this order
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

namespace {

bool addCurve(JsonWrapper& array, IAxisCurve& curve)
{
    JsonWrapper object(array.GetAllocator(), rapidjson::kObjectType);
    const bool isWhole = curve.SerializeToJson(object);
    array.Add(std::move(object));
    return isWhole;
}

bool addCurve(JsonWriter& array, IAxisCurve& curve)
{
    const auto* const own = dynamic_cast<const IStoredCurve*>(&curve);
    if (!own) { // a class of the host's
        JsonWrapper object(nullptr, rapidjson::kObjectType);
        const bool isWhole = curve.SerializeToJson(object);
        array.Add(object);
        return isWhole;
    }
    array.StartObject();
    const bool isWhole = own->write(array);
    array.EndObject();
    return isWhole;
}

} // namespace

template <class Out>
bool AxisGrid::tell(Out& out)
{
    if (m_id.empty())
        m_id = utils::toString(utils::generateGuid());
    std::map<CurveType, std::vector<IAxisCurve*>> curves;
    for (IAxisCurve* const curve : GetCurves())
        curves[curve->GetCurveType()].push_back(curve);
    bool areWhole = true;
    const auto addCurves = [&](Out& axis, const char* key, CurveType type) {
        addArray(axis, key, [&](Out& array) {
            for (IAxisCurve* const curve : curves[type])
                areWhole = addCurve(array, *curve) && areWhole;
        });
    };
    out.Add("appKey", "BIM-MODEL");
    out.Add("schemaVersion", 3);
    out.Add("schemaKey", "GridConfig");
    addObject(out, "data", [&](Out& data) {
        addObject(data, "axis", [&](Out& axis) {
            addCurves(axis, "lines", CurveType::Line);
            addCurves(axis, "arcs", CurveType::Arc);
        });
        data.Add("id", m_id);
    });
    return areWhole;
}

template bool AxisGrid::tell(JsonWrapper& out);
template bool AxisGrid::tell(JsonWriter& out);

} // namespace orlo
