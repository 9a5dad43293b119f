#pragma once

#include <OrloProjectManager/Design/IAxisGrid.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orlo {

class JsonWriter;

class AxisGrid final : public IAxisGrid
{
public:
    AxisGrid() = default;
    AxisGrid(int version, std::string id) : m_version(version), m_id(std::move(id)) {}

    std::vector<IAxisCurve*> GetCurves() const override;
    IAxisCurve* GetCurve(const std::wstring& id) const override;
    void AddCurve(std::shared_ptr<IAxisCurve> curve) override;
    void RemoveCurve(const std::wstring& id) override;
    double GetDistance(const std::wstring& a, const std::wstring& b) const override;
    int GetVersion() const override { return m_version; }
    std::string GetId() const override { return m_id; }
    bool SerializeToJson(JsonWrapper& out) override { return tell(out); }
    /// The same as text at once.
    bool write(JsonWriter& out) { return tell(out); }
    bool LoadLinesAndArcs(const JsonWrapper& data) override;

    /// Adds the curves of an array, each of the kind that it tells itself. One that breaks off half way is there with what it got.
    /// failure: what is logged for each that isn't whole; null for nothing.   Returns: whether all are whole.
    bool loadCurves(const JsonWrapper& array, const wchar_t* failure);
    /// No drawing has as many axes: an answer that tells so many is no grid, and must not take all memory.
    bool isFull() const { return m_curves.size() >= 500000; }

private:
    bool loadCurve(const JsonWrapper& in);
    template <class Out>
    bool tell(Out& out);

    std::map<std::wstring, std::shared_ptr<IAxisCurve>> m_curves;
    int m_version = 0;
    std::string m_id;
};

/// Reads the platform's answer about one version, whose document has one of three schema versions. What is wrong with it is logged.
/// Returns: null for an answer or a document that can't be read; curves that can't be read don't count.
std::shared_ptr<IAxisGrid> parseAxisGrid(const std::string& answer);

/// The document text of a grid. None if a curve couldn't be written whole.
std::optional<std::string> axisGridDocument(IAxisGrid& grid);

} // namespace orlo
