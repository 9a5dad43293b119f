#include "JsonText.h"

#include <BaseCommon/Text.h>

#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

namespace orlo {

namespace {

using rapidjson::Document;
using rapidjson::SizeType;
using rapidjson::Value;

constexpr unsigned deepestNesting = 1000;

template <class Number>
std::errc readWhole(std::string_view text, Number& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr != end ? std::errc::invalid_argument : result.ec;
}

// Whether the text of a number other than 0 tells one below 1.
bool isBelowOne(std::string_view number)
{
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, mark);
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    const auto first = static_cast<std::int64_t>(digits.find_first_of("123456789"));
    std::string_view power = number.substr(std::min(mark + 1, number.size()));
    power.remove_prefix(!power.empty() && power.front() == '+' ? 1 : 0);
    std::int64_t exponent = 0;
    if (readWhole(power, exponent) == std::errc::result_out_of_range)
        return power.front() == '-';
    // The digits before the point count up, the zeros behind it down.
    const std::int64_t places = first < point ? point - first : point - first + 1;
    return exponent <= -places; // their sum may not fit
}

// What is too small for a double is 0, what is too large no number.
bool readDouble(std::string_view text, double& number)
{
    const std::errc failure = readWhole(text, number);
    if (failure == std::errc::result_out_of_range && isBelowOne(text))
        number = text.front() == '-' ? -0.0 : 0.0;
    else if (failure != std::errc())
        return false;
    return std::isfinite(number);
}

bool isWholeNumber(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '.' || c == 'e' || c == 'E'; });
}

// Stands between the parser and the document: refuses what is nested too deep, for others that read the text after us, repairs the
// lone surrogates that the parser lets through as escapes, and reads the numbers, which the parser at its full precision gets wrong.
class ParseGuard : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ParseGuard>
{
public:
    explicit ParseGuard(Document& target) : m_target(target) {}

    bool Default() { return false; } // the events that read numbers never come
    bool Null() { return m_target.Null(); }
    bool Bool(bool value) { return m_target.Bool(value); }
    bool RawNumber(const char* text, SizeType size, bool /*copy*/)
    {
        const std::string_view number(text, size);
        std::int64_t negative = 0;
        std::uint64_t natural = 0;
        double fraction = 0;
        if (!isWholeNumber(number))
            return readDouble(number, fraction) && m_target.Double(fraction);
        if (readWhole(number, natural) == std::errc())
            return m_target.Uint64(natural);
        if (readWhole(number, negative) == std::errc())
            return m_target.Int64(negative);
        return readDouble(number, fraction) && m_target.Double(fraction);
    }
    bool Key(const char* text, SizeType size, bool copy) { return String(text, size, copy); }
    bool StartObject() { return enter() && m_target.StartObject(); }
    bool StartArray() { return enter() && m_target.StartArray(); }
    bool EndObject(SizeType count) { return leave() && m_target.EndObject(count); }
    bool EndArray(SizeType count) { return leave() && m_target.EndArray(count); }
    bool String(const char* text, SizeType size, bool /*copy*/)
    {
        constexpr char firstOfSurrogates = '\xED'; // the text itself is sound, its escapes needn't be
        if (std::memchr(text, firstOfSurrogates, size) == nullptr)
            return m_target.String(text, size, false);
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
template <class Handler>
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
        else if (value.IsString())
            m_handler.String(value.GetString(), value.GetStringLength(), true); // its memory may be that of another document
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

bool TextWriter::Double(double number)
{
    std::array<char, 32> digits;
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    Prefix(rapidjson::kNumberType);
    append(text);
    if (isWholeNumber(text)) // it stays a fraction for those who tell the two apart
        append(".0");
    return true;
}

void TextWriter::raw(std::string_view json)
{
    Prefix(rapidjson::kObjectType);
    append(json);
}

void TextWriter::append(std::string_view text)
{
    std::copy(text.begin(), text.end(), os_->Push(text.size()));
}

bool parseJson(const std::string& text, Document& out)
{
    constexpr unsigned flags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    // The stream ends at the first NUL, so one inside would hide what follows it. The parser's own check of the encoding reads past the
    // end of a text that stops within a character.
    if (text.size() >= std::numeric_limits<SizeType>::max() || text.find('\0') != std::string::npos || !utils::isValidUtf8(text))
        return false;
    // The document's texts stay where they are in a copy of the whole.
    auto* const copy = static_cast<char*>(out.GetAllocator().Malloc(text.size() + 1));
    if (copy == nullptr)
        return false;
    *std::copy(text.begin(), text.end(), copy) = '\0';
    bool isGood = false;
    auto generate = [&](Document& document) {
        rapidjson::Reader reader;
        rapidjson::InsituStringStream stream(copy);
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
    TextWriter writer(buffer);
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
