#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <limits>
#include <string>
#include <string_view>

// What JsonWrapper needs of RapidJSON beyond the values themselves. For this library only.
namespace orlo {

// A text as valid UTF-8, without a copy where it is valid already. Refers to the text it was made of.
class ValidText
{
public:
    ValidText(const char* text, std::size_t size) : m_view(text, size) { repair(); }
    explicit ValidText(const std::string& text) : m_view(text) { repair(); }
    ValidText(const ValidText&) = delete;
    ValidText& operator=(const ValidText&) = delete;

    const char* data() const { return m_view.data(); }
    rapidjson::SizeType size() const { return static_cast<rapidjson::SizeType>(m_view.size()); }
    bool fits() const { return m_view.size() < std::numeric_limits<rapidjson::SizeType>::max(); }
    rapidjson::Value reference() const { return rapidjson::Value(rapidjson::StringRef(data(), size())); }

private:
    void repair();

    std::string_view m_view;
    std::string m_repaired;
};

/// Writes doubles with the fewest digits that read back as the same value, which the library's own way misses at times.
class TextWriter : public rapidjson::Writer<rapidjson::StringBuffer>
{
public:
    using Writer::Writer;

    bool Double(double number);
    /// A value that is JSON already.
    void raw(std::string_view json);

private:
    void append(std::string_view text);
};

/// Reads JSON into the document's memory; the document holds the value only if it returns true. Refuses what is nested deeper than 1000.
bool parseJson(const std::string& text, rapidjson::Document& out);

/// The value as JSON without blanks; "null" for a null pointer.
std::string jsonText(const rapidjson::Value* value);

/// Copies a value of any depth into the document.
void copyJson(const rapidjson::Value& value, rapidjson::Document& out);

} // namespace orlo
