#include "JsonWriter.h"

#include <BaseCommon/JsonText.h>
#include <BaseCommon/JsonWrapper.h>

#include <cmath>

namespace orlo {

struct JsonWriter::Text
{
    void string(const std::string& text)
    {
        const ValidText valid(text);
        writer.String(valid.data(), valid.size(), false);
    }

    rapidjson::StringBuffer buffer;
    TextWriter writer{buffer};
};

JsonWriter::JsonWriter() : m_text(std::make_unique<Text>())
{
    StartObject();
}

JsonWriter::~JsonWriter() = default;

void JsonWriter::Add(const std::string& key, const std::string& value)
{
    m_text->string(key);
    m_text->string(value);
}

void JsonWriter::Add(const std::string& key, int value)
{
    m_text->string(key);
    m_text->writer.Int(value);
}

void JsonWriter::AddBool(const std::string& key, bool value)
{
    m_text->string(key);
    m_text->writer.Bool(value);
}

bool JsonWriter::Add(const std::string& key, double value)
{
    if (!std::isfinite(value))
        return false;
    m_text->string(key);
    return m_text->writer.Double(value);
}

void JsonWriter::StartObject(const std::string& key)
{
    m_text->string(key);
    StartObject();
}

void JsonWriter::StartArray(const std::string& key)
{
    m_text->string(key);
    m_text->writer.StartArray();
}

void JsonWriter::StartObject()
{
    m_text->writer.StartObject();
}

void JsonWriter::Add(const JsonWrapper& element)
{
    m_text->writer.raw(element.ToString());
}

void JsonWriter::EndObject()
{
    m_text->writer.EndObject();
}

void JsonWriter::EndArray()
{
    m_text->writer.EndArray();
}

std::string JsonWriter::Done()
{
    EndObject();
    return std::string(m_text->buffer.GetString(), m_text->buffer.GetSize());
}

} // namespace orlo
