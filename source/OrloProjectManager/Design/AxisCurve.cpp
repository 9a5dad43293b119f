#include "AxisCurve.h"

#include "../NetworkProject/Design/ConfigTexts.h"
#include "JsonSink.h"
#include "Point3dMath.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

IAxisCurve::IAxisCurve() = default;
IAxisCurve::~IAxisCurve() = default;

std::shared_ptr<IAxisLine> IAxisLine::Create()
{
    return std::make_shared<AxisLine>();
}

CurveType IAxisLine::GetCurveType() const
{
    return CurveType::Line;
}

std::shared_ptr<IAxisArc> IAxisArc::Create()
{
    return std::make_shared<AxisArc>();
}

CurveType IAxisArc::GetCurveType() const
{
    return CurveType::Arc;
}

namespace {

/// One of the lengths and heights that read as 0 where they are missing.
struct Length
{
    std::string key;
    double AxisCurveState::*member;
};

struct CurveKeys
{
    const std::string type = "curveType";
    const std::string id = "id";
    const std::string name = "name";
    const std::string startTagVis = "startTagVis";
    const std::string endTagVis = "endTagVis";
    const std::string ext = "ext";
    const std::string startExt = "startExt";
    const std::string endExt = "endExt";
    const std::string len = "len";
    const std::string dir = "dir";
    const std::string curve = "curve";
    const std::string startPt = "startPt";
    const std::string endPt = "endPt";
    const std::string middlePt = "middlePt";
    /// In the order in which they are stored.
    const Length lengths[7] = {
        {"startElbowLength", &AxisCurveState::startElbowLength},
        {"endElbowLength", &AxisCurveState::endElbowLength},
        {"verticalMin", &AxisCurveState::verticalMin},
        {"verticalMax", &AxisCurveState::verticalMax},
        {"diameter", &AxisCurveState::diameter},
        {"min", &AxisCurveState::min},
        {"max", &AxisCurveState::max},
    };
};

/// Curves are read and written outside of all frames: nothing waits for a thread of the host's that does it while main returns.
const CurveKeys& curveKeys()
{
    static const auto& keys = utils::neverDestroyed(new const CurveKeys);
    return keys;
}

bool readText(const JsonWrapper& in, const std::string& key, std::wstring& text)
{
    std::string narrow;
    if (!in.Get(key, narrow))
        return false;
    text = utils::toWstring(narrow);
    return true;
}

template <class Value>
Value readOr(bool (JsonWrapper::*get)(const std::string&, Value&) const, const JsonWrapper& in, const std::string& key, Value otherwise)
{
    (in.*get)(key, otherwise);
    return otherwise;
}

double readNumberOr(const JsonWrapper& in, const std::string& key, double otherwise)
{
    return readOr<double>(&JsonWrapper::Get, in, key, otherwise);
}

template <class Out>
void addPoint(Out& out, const std::string& key, const Point3d& point)
{
    addObject(out, key, [&](Out& object) { addCoordinates(object, point); });
}

/// What a point lacks stays as it was.   Returns: false if there is no such member.
bool readPoint(const JsonWrapper& in, const std::string& key, Point3d& point)
{
    JsonWrapper object;
    if (!in.Get(key, object))
        return false;
    point.DeserializeFromJson(object);
    return true;
}

} // namespace

CurveType storedCurveType(const JsonWrapper& in)
{
    std::wstring text;
    return readText(in, curveKeys().type, text) ? curveTypeTexts().valueOf(text) : CurveType::Line;
}

template <class Out>
bool AxisCurveState::write(Out& out, CurveType type) const
{
    const CurveKeys& keys = curveKeys();
    out.Add(keys.type, utils::toString(curveTypeTexts().textOf(type)));
    out.Add(keys.id, utils::toString(id));
    out.Add(keys.name, utils::toString(name));
    out.AddBool(keys.startTagVis, startTagVis);
    out.AddBool(keys.endTagVis, endTagVis);
    bool isWhole = out.Add(keys.startExt, startExt);
    isWhole = out.Add(keys.endExt, endExt) && isWhole;
    for (const Length& length : keys.lengths)
        isWhole = out.Add(length.key, this->*length.member) && isWhole;
    return isWhole;
}

bool AxisCurveState::read(const JsonWrapper& in, CurveType type)
{
    const CurveKeys& keys = curveKeys();
    if (storedCurveType(in) != type || !readText(in, keys.id, id) || !readText(in, keys.name, name))
        return false;
    startTagVis = readOr<bool>(&JsonWrapper::GetBool, in, keys.startTagVis, false);
    endTagVis = readOr<bool>(&JsonWrapper::GetBool, in, keys.endTagVis, false);
    const double ext = readNumberOr(in, keys.ext, 3000.0); // older writers told one length for both ends
    startExt = readNumberOr(in, keys.startExt, ext);
    endExt = readNumberOr(in, keys.endExt, ext);
    for (const Length& length : keys.lengths)
        this->*length.member = readNumberOr(in, length.key, 0.0);
    return true;
}

template <class Out>
bool AxisLine::tell(Out& out) const
{
    const bool isWhole = writeShared(out) && isFinite(m_startPt) && isFinite(m_endPt);
    // Both are told as the points give them, whatever direction the line was given.
    Point3d dir = m_endPt - m_startPt;
    out.Add(curveKeys().len, dir.length());
    dir.normalize();
    addPoint(out, curveKeys().dir, dir);
    addObject(out, curveKeys().curve, [this](Out& curve) {
        addPoint(curve, curveKeys().startPt, m_startPt);
        addPoint(curve, curveKeys().endPt, m_endPt);
    });
    return isWhole;
}

bool AxisLine::DeserializeFromJson(const JsonWrapper& in)
{
    const CurveKeys& keys = curveKeys();
    JsonWrapper curve;
    if (!readShared(in) || !in.Get(keys.curve, curve) || !readPoint(curve, keys.startPt, m_startPt) ||
        !readPoint(curve, keys.endPt, m_endPt))
        return false;
    m_dir = m_endPt - m_startPt;
    m_len = m_dir.length();
    m_dir.normalize();
    return true;
}

template <class Out>
bool AxisArc::tell(Out& out) const
{
    const bool isWhole = writeShared(out) && isFinite(m_startPt) && isFinite(m_endPt) && isFinite(m_middlePt);
    addObject(out, curveKeys().curve, [this](Out& curve) {
        addPoint(curve, curveKeys().startPt, m_startPt);
        addPoint(curve, curveKeys().endPt, m_endPt);
        addPoint(curve, curveKeys().middlePt, m_middlePt);
    });
    return isWhole;
}

bool AxisArc::DeserializeFromJson(const JsonWrapper& in)
{
    const CurveKeys& keys = curveKeys();
    if (!readShared(in))
        return false;
    JsonWrapper curve;
    if (in.Get(keys.curve, curve)) {
        readPoint(curve, keys.startPt, m_startPt);
        readPoint(curve, keys.endPt, m_endPt);
        readPoint(curve, keys.middlePt, m_middlePt);
    }
    return true;
}

template bool AxisLine::tell(JsonWrapper& out) const;
template bool AxisLine::tell(JsonWriter& out) const;
template bool AxisArc::tell(JsonWrapper& out) const;
template bool AxisArc::tell(JsonWriter& out) const;

} // namespace orlo
