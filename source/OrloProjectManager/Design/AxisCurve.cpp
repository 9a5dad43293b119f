#include "AxisCurve.h"

#include "../NetworkProject/Design/ConfigTexts.h"
#include "JsonSink.h"
#include "Point3dMath.h"

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

const std::string curveTypeKey = "curveType";
const std::string curveIdKey = "id";
const std::string curveNameKey = "name";
const std::string startTagVisKey = "startTagVis";
const std::string endTagVisKey = "endTagVis";
const std::string extKey = "ext";
const std::string startExtKey = "startExt";
const std::string endExtKey = "endExt";
const std::string lenKey = "len";
const std::string dirKey = "dir";
const std::string curveKey = "curve";
const std::string startPtKey = "startPt";
const std::string endPtKey = "endPt";
const std::string middlePtKey = "middlePt";

/// The lengths and heights that read as 0 where they are missing, in the order in which they are stored.
struct Length
{
    std::string key;
    double AxisCurveState::*member;
};

const Length lengths[] = {
    {"startElbowLength", &AxisCurveState::startElbowLength},
    {"endElbowLength", &AxisCurveState::endElbowLength},
    {"verticalMin", &AxisCurveState::verticalMin},
    {"verticalMax", &AxisCurveState::verticalMax},
    {"diameter", &AxisCurveState::diameter},
    {"min", &AxisCurveState::min},
    {"max", &AxisCurveState::max},
};

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
    return readText(in, curveTypeKey, text) ? curveTypeTexts().valueOf(text) : CurveType::Line;
}

template <class Out>
bool AxisCurveState::write(Out& out, CurveType type) const
{
    out.Add(curveTypeKey, utils::toString(curveTypeTexts().textOf(type)));
    out.Add(curveIdKey, utils::toString(id));
    out.Add(curveNameKey, utils::toString(name));
    out.AddBool(startTagVisKey, startTagVis);
    out.AddBool(endTagVisKey, endTagVis);
    bool isWhole = out.Add(startExtKey, startExt);
    isWhole = out.Add(endExtKey, endExt) && isWhole;
    for (const Length& length : lengths)
        isWhole = out.Add(length.key, this->*length.member) && isWhole;
    return isWhole;
}

bool AxisCurveState::read(const JsonWrapper& in, CurveType type)
{
    if (storedCurveType(in) != type || !readText(in, curveIdKey, id) || !readText(in, curveNameKey, name))
        return false;
    startTagVis = readOr<bool>(&JsonWrapper::GetBool, in, startTagVisKey, false);
    endTagVis = readOr<bool>(&JsonWrapper::GetBool, in, endTagVisKey, false);
    const double ext = readNumberOr(in, extKey, 3000.0); // older writers told one length for both ends
    startExt = readNumberOr(in, startExtKey, ext);
    endExt = readNumberOr(in, endExtKey, ext);
    for (const Length& length : lengths)
        this->*length.member = readNumberOr(in, length.key, 0.0);
    return true;
}

template <class Out>
bool AxisLine::tell(Out& out) const
{
    const bool isWhole = writeShared(out) && isFinite(m_startPt) && isFinite(m_endPt);
    // Both are told as the points give them, whatever direction the line was given.
    Point3d dir = m_endPt - m_startPt;
    out.Add(lenKey, dir.length());
    dir.normalize();
    addPoint(out, dirKey, dir);
    addObject(out, curveKey, [this](Out& curve) {
        addPoint(curve, startPtKey, m_startPt);
        addPoint(curve, endPtKey, m_endPt);
    });
    return isWhole;
}

bool AxisLine::DeserializeFromJson(const JsonWrapper& in)
{
    JsonWrapper curve;
    if (!readShared(in) || !in.Get(curveKey, curve) || !readPoint(curve, startPtKey, m_startPt) || !readPoint(curve, endPtKey, m_endPt))
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
    addObject(out, curveKey, [this](Out& curve) {
        addPoint(curve, startPtKey, m_startPt);
        addPoint(curve, endPtKey, m_endPt);
        addPoint(curve, middlePtKey, m_middlePt);
    });
    return isWhole;
}

bool AxisArc::DeserializeFromJson(const JsonWrapper& in)
{
    if (!readShared(in))
        return false;
    JsonWrapper curve;
    if (in.Get(curveKey, curve)) {
        readPoint(curve, startPtKey, m_startPt);
        readPoint(curve, endPtKey, m_endPt);
        readPoint(curve, middlePtKey, m_middlePt);
    }
    return true;
}

template bool AxisLine::tell(JsonWrapper& out) const;
template bool AxisLine::tell(JsonWriter& out) const;
template bool AxisArc::tell(JsonWrapper& out) const;
template bool AxisArc::tell(JsonWriter& out) const;

} // namespace orlo
