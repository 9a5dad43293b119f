#include "Json.h"

#include "../Server/Answer.h"

#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace orlo::platform::json {

namespace {

// Iterative: a deeply nested body must not exhaust the stack. Numbers as texts: the parser's own reading of them rounds, and breaks on
// exponents beyond all bounds.
constexpr unsigned parseFlags =
    rapidjson::kParseValidateEncodingFlag | rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;

template <class Number>
bool readWhole(std::string_view text, Number& number)
{
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && read == end;
}

// A document that reads its numbers itself, and refuses those that no double can hold.
class Tree : public rapidjson::Document
{
public:
    bool RawNumber(const char* text, rapidjson::SizeType size, bool /*copy*/)
    {
        const std::string_view number(text, size);
        std::uint64_t natural = 0;
        std::int64_t integer = 0;
        if (readWhole(number, natural))
            return Uint64(natural);
        if (readWhole(number, integer))
            return Int64(integer);
        const double fraction = std::strtod(text, nullptr);
        return std::isfinite(fraction) && Double(fraction);
    }
};

bool parse(const std::string& text, rapidjson::Document& document)
{
    Tree tree;
    bool isGood = false;
    auto generate = [&](rapidjson::Document&) {
        rapidjson::Reader reader;
        rapidjson::MemoryStream bytes(text.data(), text.size());
        rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
        isGood = !reader.Parse<parseFlags>(stream, tree).IsError() && bytes.Tell() == text.size();
        return isGood;
    };
    tree.Populate(generate);
    if (isGood)
        document.Swap(tree);
    return isGood;
}

std::string serialised(const rapidjson::Value& value)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

std::string textOf(const rapidjson::Value& value)
{
    return {value.GetString(), value.GetStringLength()};
}

[[noreturn]] void refuseType(const std::string& key, const char* type)
{
    throw Refusal(400, "\"" + key + "\" must be " + type);
}

rapidjson::Document parsedArray(const std::string& text)
{
    rapidjson::Document document;
    if (!parse(text, document) || !document.IsArray())
        throw Refusal(400, "the body must be a JSON array");
    return document;
}

} // namespace

std::string quote(const std::string& text)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    return {buffer.GetString(), buffer.GetSize()};
}

std::string array(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : ",") + quote(text);
    return "[" + all + "]";
}

Object& Object::text(const std::string& key, const std::string& value)
{
    return raw(key, quote(value));
}

Object& Object::number(const std::string& key, std::int64_t value)
{
    return raw(key, std::to_string(value));
}

Object& Object::flag(const std::string& key, bool value)
{
    return raw(key, value ? "true" : "false");
}

Object& Object::raw(const std::string& key, const std::string& value)
{
    m_members += (m_members.empty() ? "" : ",") + quote(key) + ":" + value;
    return *this;
}

std::string Object::str() const
{
    return "{" + m_members + "}";
}

bool isJson(const std::string& text)
{
    rapidjson::Document document;
    return parse(text, document);
}

bool isJsonObject(const std::string& text)
{
    rapidjson::Document document;
    return parse(text, document) && document.IsObject();
}

bool isJsonArray(const std::string& text)
{
    rapidjson::Document document;
    return parse(text, document) && document.IsArray();
}

struct Body::Tree
{
    rapidjson::Document document;

    const rapidjson::Value* find(const std::string& key) const
    {
        const auto found = document.FindMember(rapidjson::Value(rapidjson::StringRef(key.data(), key.size())));
        return found == document.MemberEnd() ? nullptr : &found->value;
    }
};

Body::Body(const std::string& text) : m_tree(std::make_unique<Tree>())
{
    if (!parse(text, m_tree->document) || !m_tree->document.IsObject())
        throw Refusal(400, "the body must be a JSON object");
}

Body::~Body() = default;

std::string Body::text(const std::string& key) const
{
    if (!has(key))
        throw Refusal(400, "\"" + key + "\" is missing");
    return textOr(key, {});
}

std::string Body::filledText(const std::string& key) const
{
    std::string value = text(key);
    if (value.empty())
        throw Refusal(400, "\"" + key + "\" is empty");
    return value;
}

std::string Body::textOr(const std::string& key, const std::string& fallback) const
{
    const rapidjson::Value* value = m_tree->find(key);
    if (!value)
        return fallback;
    if (!value->IsString())
        refuseType(key, "a string");
    return textOf(*value);
}

std::int64_t Body::integer(const std::string& key) const
{
    if (!has(key))
        throw Refusal(400, "\"" + key + "\" is missing");
    return integerOr(key, 0);
}

std::int64_t Body::integerOr(const std::string& key, std::int64_t fallback) const
{
    const rapidjson::Value* value = m_tree->find(key);
    if (!value)
        return fallback;
    if (!value->IsInt64())
        refuseType(key, "an integer");
    return value->GetInt64();
}

bool Body::flagOr(const std::string& key, bool fallback) const
{
    const rapidjson::Value* value = m_tree->find(key);
    if (!value)
        return fallback;
    if (!value->IsBool())
        refuseType(key, "a boolean");
    return value->GetBool();
}

std::vector<std::string> Body::texts(const std::string& key) const
{
    const rapidjson::Value* value = m_tree->find(key);
    if (!value || !value->IsArray())
        refuseType(key, "an array of strings");
    return readTextArray(serialised(*value));
}

std::string Body::rawOr(const std::string& key, const std::string& fallback) const
{
    const rapidjson::Value* value = m_tree->find(key);
    return value ? serialised(*value) : fallback;
}

bool Body::has(const std::string& key) const
{
    return m_tree->find(key) != nullptr;
}

std::vector<std::string> readTextArray(const std::string& text)
{
    std::vector<std::string> all;
    const rapidjson::Document document = parsedArray(text);
    for (const rapidjson::Value& value : document.GetArray()) {
        if (!value.IsString())
            throw Refusal(400, "the array must hold strings only");
        all.push_back(textOf(value));
    }
    return all;
}

std::vector<std::int64_t> readIntegerArray(const std::string& text)
{
    std::vector<std::int64_t> all;
    const rapidjson::Document document = parsedArray(text);
    for (const rapidjson::Value& value : document.GetArray()) {
        if (!value.IsInt64())
            throw Refusal(400, "the array must hold integers only");
        all.push_back(value.GetInt64());
    }
    return all;
}

} // namespace orlo::platform::json
