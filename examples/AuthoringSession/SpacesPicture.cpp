#include "SpacesPicture.h"

#include "Svg.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <locale>
#include <sstream>

namespace session {

using namespace orlo;

namespace {

using SpaceItems = std::vector<std::shared_ptr<ISpaceConfigItem>>;

// Every storey has the same height here, whatever its level.
constexpr double storeyHeight = 40.0;
constexpr double leastWidth = 160.0;
constexpr double letterSize = 14.0;
constexpr double gap = 16.0;

/// A space with its storeys in a stack, and beside that the spaces below it that are no storeys. The ground is at the height 0.
struct Block
{
    std::wstring name;
    SpaceItems storeys;
    std::vector<Block> beside;
    double width = 0.0;
    double top = 0.0;
    double bottom = 0.0;
};

bool isFloor(const std::shared_ptr<ISpaceConfigItem>& space)
{
    return space->GetType() == SpaceType::Floor;
}

bool isBasement(const std::shared_ptr<ISpaceConfigItem>& storey)
{
    return heightOf(storey->GetArchitectureLevel()).value_or(0.0) < 0.0;
}

std::wstring labelOf(const ISpaceConfigItem& storey)
{
    return storey.GetArchitectureLevel().empty() ? storey.GetName() : storey.GetName() + L"  " + storey.GetArchitectureLevel();
}

double widthFor(const std::wstring& words)
{
    return std::max(leastWidth, widthOf(words, letterSize) + 2.0 * gap);
}

double widthOfStack(const SpaceItems& storeys)
{
    double width = 0.0;
    for (const auto& storey : storeys)
        width = std::max(width, widthFor(labelOf(*storey)));
    return width;
}

Block blockOf(const std::wstring& name, const SpaceItems& spaces)
{
    Block block{name, storeysFromBelow(spaces), {}};
    for (const auto& space : spaces) {
        if (!isFloor(space))
            block.beside.push_back(blockOf(space->GetName(), space->GetSubSpaces()));
    }
    const auto basements = std::count_if(block.storeys.begin(), block.storeys.end(), isBasement);
    block.bottom = -storeyHeight * static_cast<double>(basements);
    block.top = block.bottom + storeyHeight * static_cast<double>(block.storeys.size());
    block.width = block.storeys.empty() ? gap : widthOfStack(block.storeys) + 2.0 * gap;
    for (const Block& other : block.beside) {
        block.width += other.width + gap;
        block.bottom = std::min(block.bottom, other.bottom);
        block.top = std::max(block.top, other.top);
    }
    block.width = std::max(block.width, widthFor(name));
    block.bottom -= gap;
    block.top += 2.0 * gap; // the name stands there
    return block;
}

void drawStack(SvgPicture& picture, const SpaceItems& storeys, double left)
{
    const double right = left + widthOfStack(storeys);
    double bottom = -storeyHeight * static_cast<double>(std::count_if(storeys.begin(), storeys.end(), isBasement));
    for (const auto& storey : storeys) {
        picture.block({left, bottom}, {right, bottom + storeyHeight}, isBasement(storey) ? "basement" : "storey");
        picture.text({0.5 * (left + right), bottom + 0.5 * storeyHeight}, letterSize, labelOf(*storey));
        bottom += storeyHeight;
    }
}

void drawInside(SvgPicture& picture, const Block& block, double left);

void drawBlock(SvgPicture& picture, const Block& block, double left)
{
    picture.block({left, block.bottom}, {left + block.width, block.top}, "block");
    picture.text({left + 0.5 * block.width, block.top - gap}, letterSize, block.name);
    drawInside(picture, block, left);
}

void drawInside(SvgPicture& picture, const Block& block, double left)
{
    double next = left + gap;
    if (!block.storeys.empty()) {
        drawStack(picture, block.storeys, next);
        next += widthOfStack(block.storeys) + gap;
    }
    for (const Block& other : block.beside) {
        drawBlock(picture, other, next);
        next += other.width + gap;
    }
}

} // namespace

std::optional<double> heightOf(const std::wstring& level)
{
    std::wstring text = level;
    utils::strReplace(text, L"±", L"");
    utils::strReplace(text, L"−", L"-"); // the sign of typesetters
    std::istringstream in(utils::toString(text));
    in.imbue(std::locale::classic());
    double height = 0.0;
    return in >> height ? std::optional(height) : std::nullopt;
}

SpaceItems storeysFromBelow(const SpaceItems& spaces)
{
    SpaceItems storeys;
    std::copy_if(spaces.begin(), spaces.end(), std::back_inserter(storeys), isFloor);
    const auto height = [](const std::shared_ptr<ISpaceConfigItem>& storey) {
        return heightOf(storey->GetArchitectureLevel()).value_or(std::numeric_limits<double>::infinity());
    };
    std::stable_sort(storeys.begin(), storeys.end(), [&](const auto& a, const auto& b) { return height(a) < height(b); });
    return storeys;
}

std::string spacesPicture(const ISpaceConfig& spaces)
{
    const Block all = blockOf({}, spaces.GetItems());
    SvgPicture picture;
    drawInside(picture, all, 0.0);
    picture.line({0.0, 0.0}, {all.width, 0.0}, "ground");
    return picture.document(L"空间: the spaces, version " + std::to_wstring(spaces.GetVersion()) + L", levels in metres");
}

} // namespace session
