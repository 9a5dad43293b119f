#include "Svg.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

namespace session {

namespace {

const char* const styleSheet = R"(
    .axis { fill: none; stroke: #b03a2e; }
    .bubble { fill: #ffffff; stroke: #b03a2e; }
    .block { fill: #f1f4f6; stroke: #8a9aa6; }
    .storey { fill: #cfe2ef; stroke: #3d5a6c; }
    .basement { fill: #d9d2c5; stroke: #6b5d45; }
    .ground { fill: none; stroke: #222222; }
    text { fill: #222222; stroke: none; font-family: sans-serif; text-anchor: middle; }
  )";

const double quarter = std::acos(0.0);

std::string number(double value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.setf(std::ios::fixed);
    text.precision(2);
    text << std::round(value * 100.0) / 100.0 + 0.0; // no "-0.00"
    return text.str();
}

std::string attribute(const char* name, const std::string& value)
{
    return std::string(" ") + name + "=\"" + value + "\"";
}

std::string attribute(const char* name, double value)
{
    return attribute(name, number(value));
}

/// y goes down in SVG.
std::string place(const Spot& spot)
{
    return number(spot.x) + " " + number(-spot.y);
}

std::string shape(const char* name, const std::string& attributes, const char* look)
{
    return std::string("  <") + name + attributes + attribute("class", look) + "/>\n";
}

/// Words with their middle at a point.
std::string label(const Spot& middle, double size, const std::wstring& words)
{
    constexpr double baseline = 0.35; // letters stand on it, so it lies below their middle
    return "  <text" + attribute("x", middle.x) + attribute("y", -middle.y + baseline * size) + attribute("font-size", size) + ">" +
           xmlText(words) + "</text>\n";
}

bool isNoXml(wchar_t character)
{
    return (character < 0x20 && character != L'\t' && character != L'\n' && character != L'\r') || character == 0xFFFE ||
           character == 0xFFFF;
}

} // namespace

std::string xmlText(const std::wstring& text)
{
    std::wstring escaped;
    for (const wchar_t character : text) {
        switch (character) {
        case L'&':
            escaped += L"&amp;";
            break;
        case L'<':
            escaped += L"&lt;";
            break;
        case L'>':
            escaped += L"&gt;";
            break;
        case L'"':
            escaped += L"&quot;";
            break;
        case L'\'':
            escaped += L"&apos;";
            break;
        default:
            escaped += isNoXml(character) ? static_cast<wchar_t>(0xFFFD) : character;
        }
    }
    return orlo::utils::toString(escaped);
}

double widthOf(const std::wstring& text, double size)
{
    constexpr wchar_t firstWide = 0x2E80; // where the scripts of East Asia begin
    double width = 0.0;
    for (const wchar_t character : text)
        width += character < firstWide ? 0.6 * size : size;
    return width;
}

void SvgPicture::makeRoomFor(const Spot& spot)
{
    m_low = m_isEmpty ? spot : Spot{std::min(m_low.x, spot.x), std::min(m_low.y, spot.y)};
    m_high = m_isEmpty ? spot : Spot{std::max(m_high.x, spot.x), std::max(m_high.y, spot.y)};
    m_isEmpty = false;
}

void SvgPicture::line(const Spot& from, const Spot& to, const char* look)
{
    makeRoomFor(from);
    makeRoomFor(to);
    m_shapes += shape("path", attribute("d", "M " + place(from) + " L " + place(to)), look);
}

void SvgPicture::arc(const Arc& arc, const char* look)
{
    makeRoomFor(arc.at(arc.from));
    makeRoomFor(arc.at(arc.to()));
    // It reaches farthest where it crosses the axes of its centre.
    const double least = std::min(arc.from, arc.to());
    const double most = std::max(arc.from, arc.to());
    for (double crossing = std::ceil(least / quarter); crossing * quarter < most; ++crossing)
        makeRoomFor(arc.at(crossing * quarter));
    const char* const isLarge = std::abs(arc.sweep) > 2.0 * quarter ? "1" : "0";
    const char* const isClockwise = arc.sweep < 0.0 ? "1" : "0";
    m_shapes += shape("path",
                      attribute("d", "M " + place(arc.at(arc.from)) + " A " + number(arc.radius) + " " + number(arc.radius) + " 0 " +
                                         isLarge + " " + isClockwise + " " + place(arc.at(arc.to()))),
                      look);
}

void SvgPicture::circle(const Spot& centre, double radius, const char* look)
{
    makeRoomFor(centre - Spot{radius, radius});
    makeRoomFor(centre + Spot{radius, radius});
    m_shapes += shape("circle", attribute("cx", centre.x) + attribute("cy", -centre.y) + attribute("r", radius), look);
}

void SvgPicture::block(const Spot& lowerLeft, const Spot& upperRight, const char* look)
{
    makeRoomFor(lowerLeft);
    makeRoomFor(upperRight);
    const Spot size = upperRight - lowerLeft;
    m_shapes +=
        shape("rect",
              attribute("x", lowerLeft.x) + attribute("y", -upperRight.y) + attribute("width", size.x) + attribute("height", size.y), look);
}

void SvgPicture::text(const Spot& middle, double size, const std::wstring& text)
{
    const Spot half{0.5 * widthOf(text, size), 0.5 * size};
    makeRoomFor(middle - half);
    makeRoomFor(middle + half);
    m_shapes += label(middle, size, text);
}

std::string SvgPicture::document(const std::wstring& title) const
{
    const double extent = std::max({width(), height(), 1.0});
    const double margin = 0.05 * extent;
    const double titleSize = 0.025 * extent;
    const Spot below{m_low.x + 0.5 * width(), m_low.y - margin};
    const double wide = std::max(width(), widthOf(title, titleSize)) + 2.0 * margin;
    const std::string box =
        number(below.x - 0.5 * wide) + " " + number(-m_high.y - margin) + " " + number(wide) + " " + number(height() + 3.0 * margin);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg" + attribute("xmlns", "http://www.w3.org/2000/svg") +
           attribute("viewBox", box) + attribute("stroke-width", 0.0015 * extent) + ">\n  <title>" + xmlText(title) +
           "</title>\n  <style>" + styleSheet + "</style>\n" + m_shapes + label(below, titleSize, title) + "</svg>\n";
}

} // namespace session
