#include <OrloProjectManager/Design/SpaceConfig.h>

#include <cpprest/json.h>

#include <benchmark/benchmark.h>
#include <string>

namespace orlo::bench {
namespace {

constexpr int buildings = 99;
constexpr int floorsOfBuilding = 100;
constexpr size_t nodeCount = 1 + buildings + size_t{buildings} * floorsOfBuilding;

std::string nodeHead(const std::string& id, const std::string& name, const std::string& type)
{
    return R"({"id":"9c0e5c3a-52f4-4a3c-8d54-)" + id + R"(","spaceName":")" + name + R"(","spaceType":")" + type +
           R"(","spaceDescription":"")";
}

std::string floorText(int building, int floor)
{
    const std::string level = std::to_string(floor * 3) + ".600";
    return nodeHead(std::to_string(100000000000 + building * 1000 + floor), "第" + std::to_string(floor) + "层", "Floor") +
           R"(,"attachValues":{"ArchitectureLevel":")" + level + R"(","StructureLevel":")" + level + R"("}})";
}

std::string buildingText(int building)
{
    std::string floors;
    for (int floor = 0; floor < floorsOfBuilding; ++floor)
        floors += (floor ? "," : "") + floorText(building, floor);
    return nodeHead(std::to_string(200000000000 + building), std::to_string(building) + "号楼", "Building") + R"(,"subSpaces":[)" + floors +
           "]}";
}

/// The body of an answer about a site of 10,000 nodes.
utility::string_t makeAnswer()
{
    std::string all;
    for (int building = 0; building < buildings; ++building)
        all += (building ? "," : "") + buildingText(building);
    const std::string document = R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SpaceConfig","data":[)" +
                                 nodeHead("300000000000", "场地", "Site") + R"(,"subSpaces":[)" + all + "]}]}";
    web::json::value answer;
    answer["scopeEntityId"] = web::json::value::string("3f2504e0-4f89-41d3-9a0c-0305e82c3301");
    answer["version"] = web::json::value::number(7);
    answer["configValue"] = web::json::value::string(document);
    return answer.serialize();
}

const utility::string_t& answerText()
{
    static const utility::string_t text = makeAnswer();
    return text;
}

size_t countNodes(const std::vector<std::shared_ptr<ISpaceConfigItem>>& items)
{
    size_t count = items.size();
    for (const auto& item : items)
        count += countNodes(item->GetSubSpaces());
    return count;
}

/// A received answer brought to the objects that a host is handed.
void readSpaceConfig(benchmark::State& state)
{
    if (countNodes(parseSpaceConfig(web::json::value::parse(answerText()))->GetItems()) != nodeCount)
        return state.SkipWithError("nodes are missing");
    for (auto _ : state)
        benchmark::DoNotOptimize(parseSpaceConfig(web::json::value::parse(answerText())));
}

/// The same text brought to JSON, the document inside it too, with no object made of it.
void parseTwice(benchmark::State& state)
{
    for (auto _ : state) {
        const web::json::value answer = web::json::value::parse(answerText());
        benchmark::DoNotOptimize(web::json::value::parse(answer.at("configValue").as_string()));
    }
}

BENCHMARK(readSpaceConfig)
    ->Name("GetSpaceConfig/library")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.3);
BENCHMARK(parseTwice)
    ->Name("GetSpaceConfig/cpprestsdk")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.3);

} // namespace
} // namespace orlo::bench
