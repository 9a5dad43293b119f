#pragma once

#include <OrloProjectManager/Design/IAxisGrid.h>

#include <functional>
#include <string>
#include <utility>

namespace orlo::test {

/// A curve class of a host's own, of any type and with a stored form of its own. What it has to implement and no test asks for is empty.
class HostCurve : public IAxisCurve
{
public:
    using Write = std::function<bool(JsonWrapper&)>;

    HostCurve(CurveType type, std::wstring id, Write write) : m_type(type), m_id(std::move(id)), m_write(std::move(write)) {}

    CurveType GetCurveType() const override { return m_type; }
    bool SerializeToJson(JsonWrapper& out) override { return m_write(out); }
    bool DeserializeFromJson(const JsonWrapper& /*in*/) override { return false; }
    std::wstring GetId() override { return m_id; }
    void SetId(const std::wstring& id) override { m_id = id; }
    const std::wstring& GetName() const override { return m_id; }
    void SetName(const std::wstring& /*name*/) override {}
    bool GetStartTagVis() const override { return false; }
    void SetStartTagVis(bool /*isVisible*/) override {}
    bool GetEndTagVis() const override { return false; }
    void SetEndTagVis(bool /*isVisible*/) override {}
    double GetStartExt() const override { return 0; }
    void SetStartExt(double /*length*/) override {}
    double GetEndExt() const override { return 0; }
    void SetEndExt(double /*length*/) override {}
    double GetStartElbowLength() const override { return 0; }
    void SetStartElbowLength(double /*length*/) override {}
    double GetEndElbowLength() const override { return 0; }
    void SetEndElbowLength(double /*length*/) override {}
    double GetVerticalMin() const override { return 0; }
    void SetVerticalMin(double /*height*/) override {}
    double GetVerticalMax() const override { return 0; }
    void SetVerticalMax(double /*height*/) override {}
    double GetDiameter() const override { return 0; }
    void SetDiameter(double /*diameter*/) override {}
    double GetMin() const override { return 0; }
    void SetMin(double /*value*/) override {}
    double GetMax() const override { return 0; }
    void SetMax(double /*value*/) override {}

private:
    CurveType m_type;
    std::wstring m_id;
    Write m_write;
};

} // namespace orlo::test
