#include "Drawing.h"

namespace session {

namespace {

void drawBelow(const Drawing& node, const std::wstring& indent, std::vector<std::wstring>& lines)
{
    for (std::size_t i = 0; i < node.below.size(); ++i) {
        const bool isLast = i + 1 == node.below.size();
        lines.push_back(indent + (isLast ? L"└─ " : L"├─ ") + node.below[i].label);
        drawBelow(node.below[i], indent + (isLast ? L"   " : L"│  "), lines);
    }
}

} // namespace

std::vector<std::wstring> linesOf(const Drawing& tree)
{
    std::vector<std::wstring> lines{tree.label};
    drawBelow(tree, L"", lines);
    return lines;
}

} // namespace session
