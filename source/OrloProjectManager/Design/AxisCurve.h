#pragma once

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Design/IAxisGrid.h>

#include <string>

namespace orlo {

class JsonWriter;

/// What the library's own curves offer beside their interface.
class IStoredCurve
{
public:
    /// The members of the stored form, as SerializeToJson adds them, as text at once.
    virtual bool write(JsonWriter& out) const = 0;

protected:
    ~IStoredCurve() = default;
};

/// What lines and arcs have in common, with its stored form.
struct AxisCurveState
{
    template <class Out>
    bool write(Out& out, CurveType type) const;
    /// Returns: false for a curve of another type, and without an id or a name. Every other member has a value for where it is missing.
    bool read(const JsonWrapper& in, CurveType type);

    std::wstring id;
    std::wstring name;
    // A new axis shows its bubbles and has a diameter; a stored one that doesn't tell has not. That is intended.
    bool startTagVis = true;
    bool endTagVis = true;
    double startExt = 3000.0;
    double endExt = 3000.0;
    double startElbowLength = 0.0;
    double endElbowLength = 0.0;
    double verticalMin = 0.0;
    double verticalMax = 0.0;
    double diameter = 3000.0;
    double min = 0.0;
    double max = 0.0;
};

/// The kind of curve that a stored form tells of: a line where it tells nothing.
CurveType storedCurveType(const JsonWrapper& in);

/// Everything of a curve that lines and arcs have alike.
template <class Interface>
class AxisCurve : public Interface, public IStoredCurve
{
public:
    std::wstring GetId() override
    {
        if (m_state.id.empty())
            m_state.id = utils::generateGuid();
        return m_state.id;
    }
    void SetId(const std::wstring& id) override { m_state.id = id; }
    const std::wstring& GetName() const override { return m_state.name; }
    void SetName(const std::wstring& name) override { m_state.name = name; }
    bool GetStartTagVis() const override { return m_state.startTagVis; }
    void SetStartTagVis(bool isVisible) override { m_state.startTagVis = isVisible; }
    bool GetEndTagVis() const override { return m_state.endTagVis; }
    void SetEndTagVis(bool isVisible) override { m_state.endTagVis = isVisible; }
    double GetStartExt() const override { return m_state.startExt; }
    void SetStartExt(double length) override { m_state.startExt = length; }
    double GetEndExt() const override { return m_state.endExt; }
    void SetEndExt(double length) override { m_state.endExt = length; }
    double GetStartElbowLength() const override { return m_state.startElbowLength; }
    void SetStartElbowLength(double length) override { m_state.startElbowLength = length; }
    double GetEndElbowLength() const override { return m_state.endElbowLength; }
    void SetEndElbowLength(double length) override { m_state.endElbowLength = length; }
    double GetVerticalMin() const override { return m_state.verticalMin; }
    void SetVerticalMin(double height) override { m_state.verticalMin = height; }
    double GetVerticalMax() const override { return m_state.verticalMax; }
    void SetVerticalMax(double height) override { m_state.verticalMax = height; }
    double GetDiameter() const override { return m_state.diameter; }
    void SetDiameter(double diameter) override { m_state.diameter = diameter; }
    double GetMin() const override { return m_state.min; }
    void SetMin(double value) override { m_state.min = value; }
    double GetMax() const override { return m_state.max; }
    void SetMax(double value) override { m_state.max = value; }

protected:
    template <class Out>
    bool writeShared(Out& out) const
    {
        return m_state.write(out, this->GetCurveType());
    }
    bool readShared(const JsonWrapper& in) { return m_state.read(in, this->GetCurveType()); }
    double startExt() const { return m_state.startExt; }

private:
    AxisCurveState m_state;
};

class AxisLine final : public AxisCurve<IAxisLine>
{
public:
    const Point3d& GetStartPt() const override { return m_startPt; }
    void SetStartPt(const Point3d& point) override { m_startPt = point; }
    const Point3d& GetEndPt() const override { return m_endPt; }
    void SetEndPt(const Point3d& point) override { m_endPt = point; }
    const Point3d& GetDir() const override { return m_dir; }
    void SetDir(const Point3d& direction) override { m_dir = direction; }
    double GetExt() const override { return startExt(); }
    bool SerializeToJson(JsonWrapper& out) override { return tell(out); }
    bool write(JsonWriter& out) const override { return tell(out); }
    bool DeserializeFromJson(const JsonWrapper& in) override;

private:
    template <class Out>
    bool tell(Out& out) const;

    Point3d m_startPt;
    Point3d m_endPt;
    Point3d m_dir;
    double m_len = 0.0; ///< as loaded; no operation hands it out
};

class AxisArc final : public AxisCurve<IAxisArc>
{
public:
    const Point3d& GetStartPt() const override { return m_startPt; }
    void SetStartPt(const Point3d& point) override { m_startPt = point; }
    const Point3d& GetEndPt() const override { return m_endPt; }
    void SetEndPt(const Point3d& point) override { m_endPt = point; }
    const Point3d& GetMiddlePt() const override { return m_middlePt; }
    void SetMiddlePt(const Point3d& point) override { m_middlePt = point; }
    bool SerializeToJson(JsonWrapper& out) override { return tell(out); }
    bool write(JsonWriter& out) const override { return tell(out); }
    bool DeserializeFromJson(const JsonWrapper& in) override;

private:
    template <class Out>
    bool tell(Out& out) const;

    Point3d m_startPt;
    Point3d m_endPt;
    Point3d m_middlePt;
};

} // namespace orlo
