#include "AxisGrid.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/JsonWriter.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

namespace orlo {

namespace {

/// Logs why a document can't be read.
bool told(const wchar_t* reason)
{
    log::error(reason);
    return false;
}

/// Groups, each with its curves in "arr". Curves that can't be read aren't told of in this schema.
/// Returns: false if there is no array of that name.
bool loadGroups(AxisGrid& grid, const JsonWrapper& data, const char* key)
{
    const JsonWrapper groups = data[key];
    JsonWrapper group;
    for (int i = 0; groups.Get(i, group); ++i)
        grid.loadCurves(group["arr"], nullptr);
    return groups.IsArray();
}

/// The curves stand in "arr".
void loadFlat(AxisGrid& grid, const JsonWrapper& data)
{
    const JsonWrapper curves = data["arr"];
    if (curves.IsArray())
        grid.loadCurves(curves, L"load axis curve error!");
    else
        log::error(L"Invalid axis config data: json array is not an array!");
}

bool loadSchema(AxisGrid& grid, const JsonWrapper& data, int schemaVersion)
{
    switch (schemaVersion) {
    case 1:
        if (!loadGroups(grid, data, "arrX"))
            return told(L"Invalid axis axisGridPtr config data: arrX is not array");
        return loadGroups(grid, data, "arrY") || told(L"Invalid axis axisGridPtr config data: arrY is not array");
    case 2:
        loadFlat(grid, data);
        return true;
    case 3:
        grid.LoadLinesAndArcs(data);
        return true;
    default:
        return told(L"Invalid axis axisGridPtr config data: schema version isn't support");
    }
}

bool loadDocument(AxisGrid& grid, const JsonWrapper& data, int schemaVersion)
{
    return loadSchema(grid, data, schemaVersion) && (!grid.isFull() || told(L"Invalid axis axisGridPtr response data: config parse error"));
}

/// Parses both texts: that of the platform, and the document within.
bool parseTexts(const std::string& answer, JsonWrapper& outer, JsonWrapper& document)
{
    if (!outer.Parse(answer)) {
        log::info(L"Invalid axis axisGridPtr response data: axis not available");
        return false;
    }
    if (!outer.HasMember("version"))
        return told(L"Invalid axis axisGridPtr response data: no version");
    if (!outer.HasMember("configValue"))
        return told(L"Invalid axis axisGridPtr response data: no config value");
    std::string text;
    if (!outer.Get("configValue", text) || !document.Parse(text))
        return told(L"Invalid axis axisGridPtr response data: config parse error");
    if (!document.HasMember("schemaVersion"))
        return told(L"Invalid axis axisGridPtr config data: no schema version");
    return document.HasMember("data") || told(L"Invalid axis axisGridPtr config data: no data");
}

} // namespace

std::shared_ptr<IAxisGrid> parseAxisGrid(const std::string& answer)
{
    JsonWrapper outer;
    JsonWrapper document;
    if (!parseTexts(answer, outer, document))
        return nullptr;
    int version = 0;
    int schemaVersion = -1;
    std::string id;
    outer.Get("version", version);
    outer.GetValueAsString("id", id);
    document.Get("schemaVersion", schemaVersion);
    auto grid = std::make_shared<AxisGrid>(version, std::move(id));
    return loadDocument(*grid, document["data"], schemaVersion) ? grid : nullptr;
}

std::optional<std::string> axisGridDocument(IAxisGrid& grid)
{
    if (auto* const own = dynamic_cast<AxisGrid*>(&grid)) {
        JsonWriter text;
        return own->write(text) ? std::optional(text.Done()) : std::nullopt;
    }
    JsonWrapper document;
    return grid.SerializeToJson(document) ? std::optional(document.ToString()) : std::nullopt;
}

} // namespace orlo
