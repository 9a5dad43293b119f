// A grid of 10,000 axes: its document read into a grid and written again; and the same text parsed and written by RapidJSON alone.

#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/AxisGrid.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <random>

namespace orlo::bench {
namespace {

constexpr int axisCount = 10000;

/// As a surveyor would hand it over: no round numbers, a name and an id for each axis, every tenth an arc.
const std::string& gridDocument()
{
    static const std::string text = [] {
        std::mt19937_64 random(20261122);
        std::uniform_real_distribution<double> length(-90000.0, 90000.0);
        const auto point = [&] { return Point3d{length(random), length(random), 0.0}; };
        AxisGrid grid(1, "grid");
        for (int i = 0; i < axisCount; ++i) {
            std::shared_ptr<IAxisCurve> curve;
            if (i % 10 == 0) {
                const auto arc = IAxisArc::Create();
                arc->SetStartPt(point());
                arc->SetMiddlePt(point());
                arc->SetEndPt(point());
                curve = arc;
            }
            else {
                const auto line = IAxisLine::Create();
                line->SetStartPt(point());
                line->SetEndPt(point());
                curve = line;
            }
            curve->SetName(L"轴" + std::to_wstring(i));
            curve->SetVerticalMax(length(random));
            grid.AddCurve(curve);
        }
        return axisGridDocument(grid).value();
    }();
    return text;
}

void loadAndWriteGrid(benchmark::State& state)
{
    const std::string& text = gridDocument();
    for (auto _ : state) {
        JsonWrapper document;
        AxisGrid grid(1, "grid");
        if (!document.Parse(text) || !grid.LoadLinesAndArcs(document["data"]))
            return state.SkipWithError("not read");
        if (axisGridDocument(grid).value().size() != text.size())
            return state.SkipWithError("not written");
    }
}

void parseAndWriteByRapidJson(benchmark::State& state)
{
    const std::string& text = gridDocument();
    for (auto _ : state) {
        rapidjson::Document document;
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        if (document.Parse<rapidjson::kParseFullPrecisionFlag>(text.c_str(), text.size()).HasParseError() || !document.Accept(writer))
            return state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(std::string(buffer.GetString(), buffer.GetSize()));
    }
}

/// What an axis of a loaded grid holds, in bytes.
void memoryOfAnAxis(benchmark::State& state)
{
    double bytes = 0;
    for (auto _ : state) {
        AxisGrid grid(1, "grid");
        const std::size_t before = mallinfo2().uordblks;
        {
            JsonWrapper document;
            document.Parse(gridDocument());
            grid.LoadLinesAndArcs(document["data"]);
        }
        bytes = static_cast<double>(mallinfo2().uordblks - before) / axisCount;
    }
    state.counters["bytes"] = bytes;
}

BENCHMARK(loadAndWriteGrid)->Name("AxisGrid/library")->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMicrosecond)->MinTime(0.5);
BENCHMARK(parseAndWriteByRapidJson)
    ->Name("AxisGrid/rapidjson")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.5);
BENCHMARK(memoryOfAnAxis)->Name("AxisGrid/memory of an axis")->Iterations(1);

} // namespace
} // namespace orlo::bench
