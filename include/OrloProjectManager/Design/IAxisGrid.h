#pragma once

#include <OrloProjectManager/Design/Point3d.h>
#include <OrloProjectManager/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

class JsonWrapper;

enum class CurveType : std::uint8_t { None = 0, Line = 1, Arc = 2 };

/// A named construction axis, as it is drawn on plans: a curve with extensions past its ends, elbows, bubbles and a range of heights.
/// Lengths are in the unit of the authoring application. An object is used from one thread at a time, and sends nothing.
class ORLO_PROJECT_API IAxisCurve
{
public:
    IAxisCurve();
    virtual ~IAxisCurve();

    IAxisCurve(const IAxisCurve&) = delete;
    IAxisCurve& operator=(const IAxisCurve&) = delete;

    virtual CurveType GetCurveType() const = 0;
    /// Adds the members of the curve's stored form. The id goes out as it stands, an empty one too.
    /// Returns: false if a number that is to be stored is not finite, which JSON can't tell. The length of a line is computed and
    /// counts for nothing: beyond the largest double it is left out, and the result is true.
    virtual bool SerializeToJson(JsonWrapper& out) = 0;
    /// Reads the stored form.   Returns: false where something is missing that it can't do without; what was read before that stays.
    virtual bool DeserializeFromJson(const JsonWrapper& in) = 0;
    /// A curve without an id gets a new GUID here.
    virtual std::wstring GetId() = 0;
    /// A curve stays in its grid under the id with which it was added.
    virtual void SetId(const std::wstring& id) = 0;
    virtual const std::wstring& GetName() const = 0;
    virtual void SetName(const std::wstring& name) = 0;
    /// Whether the bubble at an end is shown.
    virtual bool GetStartTagVis() const = 0;
    virtual void SetStartTagVis(bool isVisible) = 0;
    virtual bool GetEndTagVis() const = 0;
    virtual void SetEndTagVis(bool isVisible) = 0;
    /// The length by which the axis runs on past an end.
    virtual double GetStartExt() const = 0;
    virtual void SetStartExt(double length) = 0;
    virtual double GetEndExt() const = 0;
    virtual void SetEndExt(double length) = 0;
    virtual double GetStartElbowLength() const = 0;
    virtual void SetStartElbowLength(double length) = 0;
    virtual double GetEndElbowLength() const = 0;
    virtual void SetEndElbowLength(double length) = 0;
    virtual double GetVerticalMin() const = 0;
    virtual void SetVerticalMin(double height) = 0;
    virtual double GetVerticalMax() const = 0;
    virtual void SetVerticalMax(double height) = 0;
    /// Of the bubbles.
    virtual double GetDiameter() const = 0;
    virtual void SetDiameter(double diameter) = 0;
    virtual double GetMin() const = 0;
    virtual void SetMin(double value) = 0;
    virtual double GetMax() const = 0;
    virtual void SetMax(double value) = 0;
};

/// A straight axis.
class ORLO_PROJECT_API IAxisLine : public virtual IAxisCurve
{
public:
    /// A new line: no id, no name, both bubbles shown, extensions and diameter 3000.
    [[nodiscard]] static std::shared_ptr<IAxisLine> Create();

    virtual const Point3d& GetStartPt() const = 0;
    virtual void SetStartPt(const Point3d& point) = 0;
    virtual const Point3d& GetEndPt() const = 0;
    virtual void SetEndPt(const Point3d& point) = 0;
    /// The direction from start to end as it was loaded or set: setting the points doesn't change it.
    virtual const Point3d& GetDir() const = 0;
    virtual void SetDir(const Point3d& direction) = 0;
    /// The extension at the start.
    virtual double GetExt() const = 0;

    CurveType GetCurveType() const override;
};

/// A curved axis through three points.
class ORLO_PROJECT_API IAxisArc : public virtual IAxisCurve
{
public:
    /// A new arc, with the values of a new line.
    [[nodiscard]] static std::shared_ptr<IAxisArc> Create();

    virtual const Point3d& GetStartPt() const = 0;
    virtual void SetStartPt(const Point3d& point) = 0;
    virtual const Point3d& GetEndPt() const = 0;
    virtual void SetEndPt(const Point3d& point) = 0;
    virtual const Point3d& GetMiddlePt() const = 0;
    virtual void SetMiddlePt(const Point3d& point) = 0;

    CurveType GetCurveType() const override;
};

/// The axes of a project, each under its id. Sends nothing; ICollaborationProject reads and stores it.
/// The raw pointers that it hands out live as long as their curve stays in the grid, and the grid itself.
class ORLO_PROJECT_API IAxisGrid
{
public:
    /// A new grid: empty, version 0, no id.
    [[nodiscard]] static std::shared_ptr<IAxisGrid> Create();

    IAxisGrid();
    virtual ~IAxisGrid();

    IAxisGrid(const IAxisGrid&) = delete;
    IAxisGrid& operator=(const IAxisGrid&) = delete;

    /// In the ascending order of their ids.
    virtual std::vector<IAxisCurve*> GetCurves() const = 0;
    /// Null if there is none of that id.
    virtual IAxisCurve* GetCurve(const std::wstring& id) const = 0;
    /// Replaces the curve of the same id. A curve without an id gets one; null adds nothing.
    virtual void AddCurve(std::shared_ptr<IAxisCurve> curve) = 0;
    virtual void RemoveCurve(const std::wstring& id) = 0;
    /// The distance in plan between two parallel lines, which may run opposite ways. Their directions are those of GetDir.
    /// Returns: 0 where an id is unknown, a curve is no line, or the lines aren't parallel; it may be NaN for lines upon one another.
    virtual double GetDistance(const std::wstring& a, const std::wstring& b) const = 0;
    /// The version under which the platform stored it; storing it again doesn't change this.
    virtual int GetVersion() const = 0;
    virtual std::string GetId() const = 0;
    /// Adds the members of the stored document, schema version 3. A grid without an id gets a new GUID, and keeps it.
    /// Returns: false if a curve couldn't be written whole.
    virtual bool SerializeToJson(JsonWrapper& out) = 0;
    /// Adds the curves of the "data" of a stored document of schema version 3.
    /// Returns: false if something couldn't be read, which is logged; the rest is there. False too, without a line in the log, once
    /// the grid holds 500,000 curves: it takes no more then.
    virtual bool LoadLinesAndArcs(const JsonWrapper& data) = 0;
};

} // namespace orlo
