#include "Doors.h"
#include "Silence.h"

#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/AxisGrid.h>

namespace orlo::fuzz {

namespace {

std::shared_ptr<IAxisGrid> gridOf(const std::string& document)
{
    JsonWrapper answer;
    answer.Add("version", 3);
    answer.Add("configValue", document);
    answer.Add("id", "grid");
    return parseAxisGrid(answer.ToString());
}

} // namespace

void axisGrid(std::string_view bytes)
{
    Silence::install();
    parseAxisGrid(std::string(bytes)); // as the platform's whole answer
    const auto grid = gridOf(std::string(bytes));
    if (!grid)
        return;
    require(grid->GetVersion() == 3, "the version is that of the answer");
    const auto written = axisGridDocument(*grid);
    require(written.has_value(), "what was read can be written");
    JsonWrapper document;
    require(grid->SerializeToJson(document) && document.ToString() == *written, "the document and the text are the same");
    const auto again = gridOf(*written);
    require(again != nullptr, "a document that was written can be read");
    require(again->GetCurves().size() == grid->GetCurves().size(), "no curve is lost");
    require(axisGridDocument(*again) == written, "a document that was read back is written as before");
}

} // namespace orlo::fuzz
