#pragma once

#include "Arc.h"

#include <string>

namespace session {

/// A text as it may stand in XML, in UTF-8. Characters that XML doesn't know become U+FFFD.
std::string xmlText(const std::wstring& text);

/// About how wide a text is.
double widthOf(const std::wstring& text, double size);

/// A picture in SVG that grows with what is drawn on it. It is drawn as on paper: y goes up, and later things cover earlier ones.
/// The look of a thing is the name of one in the style sheet, in Svg.cpp.
class SvgPicture
{
public:
    void line(const Spot& from, const Spot& to, const char* look);
    void arc(const Arc& arc, const char* look);
    void circle(const Spot& centre, double radius, const char* look);
    void block(const Spot& lowerLeft, const Spot& upperRight, const char* look);
    /// Around a point.
    void text(const Spot& middle, double size, const std::wstring& text);

    /// title: stands below the picture.
    std::string document(const std::wstring& title) const;

private:
    double width() const { return m_high.x - m_low.x; }
    double height() const { return m_high.y - m_low.y; }
    void makeRoomFor(const Spot& spot);

    std::string m_shapes;
    bool m_isEmpty = true;
    Spot m_low;
    Spot m_high;
};

} // namespace session
