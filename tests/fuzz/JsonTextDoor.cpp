#include "Doors.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>

#include <cmath>
#include <cstdlib>

namespace orlo::fuzz {

namespace {

std::string trimmed(const std::string& text)
{
    constexpr const char* blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// A text that is a number alone reads as the C library reads it.
void checkNumber(const JsonWrapper& document, const std::string& text)
{
    JsonWrapper holder;
    holder.Add("v", document);
    double read = 0;
    if (!holder.Get("v", read))
        return;
    const double expected = std::strtod(trimmed(text).c_str(), nullptr);
    require(std::isfinite(read) && read == expected, "a number is read as it stands");
    require(expected != 0 || trimmed(text) == "-0" || std::signbit(read) == std::signbit(expected), "a zero keeps its sign");
}

} // namespace

void jsonText(std::string_view bytes)
{
    const std::string text(bytes);
    JsonWrapper document;
    if (!document.Parse(text)) {
        require(document.ToString() == "null", "a refused text leaves the value as it was");
        return;
    }
    require(utils::isValidUtf8(text), "only UTF-8 is read");
    const std::string written = document.ToString();
    require(utils::isValidUtf8(written), "UTF-8 is written");
    JsonWrapper again;
    require(again.Parse(written), "what is written can be read");
    require(again.ToString() == written, "what was read back is written as before");
    checkNumber(document, text);
}

} // namespace orlo::fuzz
