#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlo::platform::json {

/// Text as a JSON string, quotes included.
std::string quote(const std::string& text);
std::string array(const std::vector<std::string>& texts);

/// A JSON object put together member by member, in the order of the calls.
class Object
{
public:
    Object& text(const std::string& key, const std::string& value);
    Object& number(const std::string& key, std::int64_t value);
    Object& flag(const std::string& key, bool value);
    /// The value is JSON already.
    Object& raw(const std::string& key, const std::string& value);
    std::string str() const;

private:
    std::string m_members;
};

/// True if the text is one JSON value in good UTF-8.
bool isJson(const std::string& text);
bool isJsonObject(const std::string& text);
bool isJsonArray(const std::string& text);

/// The JSON object of a request. A missing key where one is needed, or a value of another type, is refused with 400.
class Body
{
public:
    explicit Body(const std::string& text);
    ~Body();

    std::string text(const std::string& key) const;
    std::string filledText(const std::string& key) const;
    std::string textOr(const std::string& key, const std::string& fallback) const;
    std::int64_t integer(const std::string& key) const;
    std::int64_t integerOr(const std::string& key, std::int64_t fallback) const;
    bool flagOr(const std::string& key, bool fallback) const;
    std::vector<std::string> texts(const std::string& key) const;
    /// JSON text of the member, empty if there is none.
    std::string rawOr(const std::string& key, const std::string& fallback) const;
    bool has(const std::string& key) const;

private:
    struct Tree;
    std::unique_ptr<Tree> m_tree;
};

/// The whole body as an array; anything else is refused with 400.
std::vector<std::string> readTextArray(const std::string& text);
std::vector<std::int64_t> readIntegerArray(const std::string& text);

} // namespace orlo::platform::json
