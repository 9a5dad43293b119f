#pragma once

#include <OrloProjectManager/Design/IAxisGrid.h>

#include <functional>
#include <string>
#include <utility>

namespace orlo::test {

/// A grid class of a host's own, with a stored form of its own. What it has to implement and no test asks for is empty.
class HostGrid : public IAxisGrid
{
public:
    using Write = std::function<bool(JsonWrapper&)>;

    explicit HostGrid(Write write) : m_write(std::move(write)) {}

    std::vector<IAxisCurve*> GetCurves() const override { return {}; }
    IAxisCurve* GetCurve(const std::wstring& /*id*/) const override { return nullptr; }
    void AddCurve(std::shared_ptr<IAxisCurve> /*curve*/) override {}
    void RemoveCurve(const std::wstring& /*id*/) override {}
    double GetDistance(const std::wstring& /*a*/, const std::wstring& /*b*/) const override { return 0; }
    int GetVersion() const override { return 0; }
    std::string GetId() const override { return {}; }
    bool SerializeToJson(JsonWrapper& out) override { return m_write(out); }
    bool LoadLinesAndArcs(const JsonWrapper& /*data*/) override { return false; }

private:
    Write m_write;
};

} // namespace orlo::test
