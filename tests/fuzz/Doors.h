#pragma once

#include <stdexcept>
#include <string_view>

// The doors through which text and bytes of others come into the library. A door takes any bytes at all and looks at what becomes of
// them: the fuzz targets feed it what libFuzzer thinks of, the ordinary tests its seeds and changes of them.
namespace orlo::fuzz {

/// What must hold for all input didn't.
class Finding : public std::logic_error
{
public:
    using std::logic_error::logic_error;
};

inline void require(bool holds, const char* what)
{
    if (!holds)
        throw Finding(what);
}

void jsonText(std::string_view bytes);
void jobRow(std::string_view bytes);
void tokenFile(std::string_view bytes);
void fieldReaders(std::string_view bytes);
void spaceDocument(std::string_view bytes);
void axisGrid(std::string_view bytes);
void inflate(std::string_view bytes);
void redaction(std::string_view bytes);
void datasetUri(std::string_view bytes);

} // namespace orlo::fuzz
