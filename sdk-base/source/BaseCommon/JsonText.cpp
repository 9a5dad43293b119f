#include <BaseCommon/JsonText.h>
#include <BaseCommon/Text.h>

#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>
#include <vector>

namespace orlo {

namespace {

using rapidjson::Document;
using rapidjson::SizeType;
using rapidjson::Value;

constexpr unsigned deepestNesting = 1000;

// Stands between the parser and the document: refuses what is nested too deep, for others that read the text after us, and repairs the
// lone surrogates that the parser lets through as escapes.
class ParseGuard
{
public:
    explicit ParseGuard(Document& target) : m_target(target) {}

    bool Null() { return m_target.Null(); }
    bool Bool(bool value) { return m_target.Bool(value); }
    bool Int(int value) { return m_target.Int(value); }
    bool Uint(unsigned value) { return m_target.Uint(value); }
    bool Int64(std::int64_t value) { return m_target.Int64(value); }
    bool Uint64(std::uint64_t value) { return m_target.Uint64(value); }
    bool Double(double value) { return m_target.Double(value); }
    bool RawNumber(const char* text, SizeType size, bool copy) { return m_target.RawNumber(text, size, copy); }
    bool Key(const char* text, SizeType size, bool copy) { return String(text, size, copy); }
    bool StartObject() { return enter() && m_target.StartObject(); }
    bool StartArray() { return enter() && m_target.StartArray(); }
    bool EndObject(SizeType count) { return leave() && m_target.EndObject(count); }
    bool EndArray(SizeType count) { return leave() && m_target.EndArray(count); }
    bool String(const char* text, SizeType size, bool /*copy*/)
    {
        const ValidText valid(text, size);
        return m_target.String(valid.data(), valid.size(), true);
    }

private:
    bool enter() { return ++m_depth <= deepestNesting; }
    bool leave()
    {
        --m_depth;
        return true;
    }

    Document& m_target;
    unsigned m_depth = 0;
};

// Tells a value to a handler event by event. RapidJSON's own Accept calls itself for each level, and values can be built to any depth.
template <typename Handler>
class Walk
{
public:
    explicit Walk(Handler& handler) : m_handler(handler) {}

    void run(const Value& root)
    {
        begin(root);
        while (!m_open.empty())
            step();
    }

private:
    struct Level
    {
        const Value* value;
        SizeType next;
    };

    void begin(const Value& value)
    {
        if (value.IsObject())
            m_handler.StartObject();
        else if (value.IsArray())
            m_handler.StartArray();
        if (value.IsObject() || value.IsArray())
            m_open.push_back({&value, 0});
        else if (value.IsDouble() && !std::isfinite(value.GetDouble()))
            m_handler.Null(); // only a document made elsewhere can hold one
        else
            value.Accept(m_handler);
    }

    void step()
    {
        Level& level = m_open.back();
        if (level.value->IsObject())
            stepInObject(level);
        else
            stepInArray(level);
    }

    void stepInObject(Level& level)
    {
        if (level.next == level.value->MemberCount()) {
            m_handler.EndObject(level.next);
            m_open.pop_back();
            return;
        }
        const auto& member = *(level.value->MemberBegin() + static_cast<std::ptrdiff_t>(level.next++));
        m_handler.Key(member.name.GetString(), member.name.GetStringLength(), true);
        begin(member.value);
    }

    void stepInArray(Level& level)
    {
        if (level.next == level.value->Size()) {
            m_handler.EndArray(level.next);
            m_open.pop_back();
            return;
        }
        begin((*level.value)[level.next++]);
    }

    Handler& m_handler;
    std::vector<Level> m_open;
};

} // namespace

void ValidText::repair()
{
    if (utils::isValidUtf8(m_view))
        return;
    m_repaired = utils::toString(utils::toWstring(std::string(m_view)));
    m_view = m_repaired;
}

bool parseJson(const std::string& text, Document& out)
{
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;
    // The stream ends at the first NUL, so one inside would hide what follows it.
    if (text.size() >= std::numeric_limits<SizeType>::max() || text.find('\0') != std::string::npos)
        return false;
    bool isGood = false;
    auto generate = [&](Document& document) {
        rapidjson::Reader reader;
        rapidjson::StringStream stream(text.c_str());
        ParseGuard guard(document);
        isGood = !reader.Parse<flags>(stream, guard).IsError();
        return isGood;
    };
    out.Populate(generate);
    return isGood;
}

std::string jsonText(const Value* value)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    if (value == nullptr)
        writer.Null();
    else
        Walk(writer).run(*value);
    return std::string(buffer.GetString(), buffer.GetSize());
}

void copyJson(const Value& value, Document& out)
{
    auto generate = [&](Document& document) {
        Walk(document).run(value);
        return true;
    };
    out.Populate(generate);
}

} // namespace orlo
