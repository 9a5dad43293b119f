#include "JsonText.h"

#include <BaseCommon/NativeText.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace orlo::http {

namespace {

/// Counts before anything is made of it. The text need not be sound: one that isn't is refused later.
class Counter
{
public:
    explicit Counter(std::string_view text)
    {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c == '"')
                i = endOfString(text, i);
            else if (c == '{' || c == '[')
                ++m_objectsAndArrays;
            else if (c == ',')
                ++m_values;
        }
    }

    bool isWithinBounds(std::size_t bytes) const
    {
        return m_objectsAndArrays <= std::min<std::size_t>(2000000, 250000 + bytes / 16) && m_values + m_objectsAndArrays <= 8000000;
    }

private:
    static std::size_t endOfString(std::string_view text, std::size_t i)
    {
        for (++i; i < text.size() && text[i] != '"'; ++i)
            i += text[i] == '\\' ? 1 : 0;
        return i;
    }

    std::size_t m_objectsAndArrays = 0;
    std::size_t m_values = 0; ///< but for the first of each object and array
};

} // namespace

web::json::value parseJson(const std::string& utf8)
{
    constexpr std::size_t alwaysWithin = 250000; // there is a byte to each object, and more to each value
    if (utf8.size() > alwaysWithin && !Counter(utf8).isWithinBounds(utf8.size()))
        throw web::json::json_exception("the answer holds too many values");
    return web::json::value::parse(utils::toNative(utf8));
}

} // namespace orlo::http
