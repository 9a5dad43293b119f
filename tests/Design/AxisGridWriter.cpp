// A host which leaves main while its threads write and read axis grids. That is no operation which the end of the process would wait for;
// the threads go on until the library's statics are gone, and then for some more rounds.
//
//   AxisGridWriter

#include "LateEnd.h"

#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/IAxisGrid.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

/// What a program leaves behind when it ends in the middle of its work is no leak.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options()
{
    return "report_thread_leaks=0";
}

namespace {

std::shared_ptr<orlo::IAxisGrid> newGrid()
{
    const auto grid = orlo::IAxisGrid::Create();
    const auto line = orlo::IAxisLine::Create();
    line->SetId(L"line");
    line->SetEndPt({6000.0, 0.0, 0.0});
    grid->AddCurve(line);
    const auto arc = orlo::IAxisArc::Create();
    arc->SetId(L"arc");
    grid->AddCurve(arc);
    return grid;
}

/// The axes of a grid as they are written; empty where it can't be.
std::string textOf(orlo::IAxisGrid& grid)
{
    orlo::JsonWrapper document;
    return grid.SerializeToJson(document) ? document["data"]["axis"].ToString() : std::string();
}

std::string textOfReadAgain(orlo::IAxisGrid& grid)
{
    orlo::JsonWrapper document;
    grid.SerializeToJson(document);
    const auto read = orlo::IAxisGrid::Create();
    return read->LoadLinesAndArcs(document["data"]) ? textOf(*read) : std::string();
}

std::atomic<long> rounds{0};

void awaitRounds(long count)
{
    for (const long wanted = rounds + count; rounds < wanted;)
        std::this_thread::yield();
}

/// Ends the process at once if a text isn't as it was in the beginning.
void writeForEver()
{
    const auto grid = newGrid();
    for (const std::string expected = textOf(*grid);; ++rounds) {
        if (expected.empty() || textOf(*grid) != expected || textOfReadAgain(*grid) != expected)
            std::_Exit(3);
    }
}

void goOnForSomeRounds()
{
    if (orlo::IOrloBridge::m_pBridge) // the library's statics are still there
        std::_Exit(4);
    awaitRounds(100);
}

} // namespace

int main()
{
    doAtLast = &goOnForSomeRounds;
    for (int i = 0; i < 3; ++i)
        std::thread(writeForEver).detach();
    awaitRounds(10);
}
