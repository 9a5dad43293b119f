// A grid of 10,000 axes: the platform's answer read into a grid, and the grid's document written; and the same texts parsed and written by
// RapidJSON alone, at the precision that a grid needs.

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

/// The platform's answer, in which the document is a text.
const std::string& gridAnswer()
{
    static const std::string text = [] {
        JsonWrapper answer;
        answer.Add("version", 1);
        answer.Add("configValue", gridDocument());
        answer.Add("id", "grid");
        return answer.ToString();
    }();
    return text;
}

void loadAndWriteGrid(benchmark::State& state)
{
    const std::string& answer = gridAnswer();
    for (auto _ : state) {
        const auto grid = parseAxisGrid(answer);
        if (!grid || grid->GetCurves().size() != axisCount || axisGridDocument(*grid).value().size() != gridDocument().size())
            return state.SkipWithError("not read and written");
    }
}

void parseAndWriteByRapidJson(benchmark::State& state)
{
    const std::string& answer = gridAnswer();
    for (auto _ : state) {
        constexpr unsigned flags = rapidjson::kParseFullPrecisionFlag;
        rapidjson::Document outer;
        rapidjson::Document document;
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        if (outer.Parse<flags>(answer.c_str(), answer.size()).HasParseError() ||
            document.Parse<flags>(outer["configValue"].GetString(), outer["configValue"].GetStringLength()).HasParseError() ||
            !document.Accept(writer))
            return state.SkipWithError("not parsed and written");
        benchmark::DoNotOptimize(std::string(buffer.GetString(), buffer.GetSize()));
    }
}

/// What an axis of a loaded grid holds, in bytes.
void memoryOfAnAxis(benchmark::State& state)
{
    double bytes = 0;
    for (auto _ : state) {
        gridAnswer();
        const std::size_t before = mallinfo2().uordblks;
        const auto grid = parseAxisGrid(gridAnswer());
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
