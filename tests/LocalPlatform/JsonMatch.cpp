#include "JsonMatch.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <sstream>

namespace orlo::platform::test {

namespace {

using rapidjson::Value;

bool isWildcard(const std::string& expected)
{
    return expected == "<id>" || expected == "<time>" || expected == "<text>" || expected == "<number>";
}

/// In the shape, "x" stands for a hexadecimal digit in lower case, "9" for a digit, all else for itself.
bool hasShape(const std::string& text, const std::string& shape)
{
    const auto fits = [](char c, char form) {
        const bool digit = c >= '0' && c <= '9';
        return form == '9' ? digit : form == 'x' ? digit || (c >= 'a' && c <= 'f') : c == form;
    };
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), fits);
}

bool matchesWildcard(const Value& actual, const std::string& expected)
{
    if (expected == "<number>")
        return actual.IsInt64() && actual.GetInt64() > 0;
    if (!actual.IsString() || actual.GetStringLength() == 0)
        return false;
    if (expected == "<text>")
        return true;
    return hasShape(actual.GetString(), expected == "<id>" ? "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx" : "9999-99-99T99:99:99.999Z");
}

std::string compare(const Value& actual, const Value& expected, const std::string& at);

std::string compareObjects(const Value& actual, const Value& expected, const std::string& at)
{
    for (const auto& member : expected.GetObject()) {
        const std::string key = member.name.GetString();
        if (!actual.HasMember(key.c_str()))
            return at + "." + key + " is missing";
        std::string difference = compare(actual[key.c_str()], member.value, at + "." + key);
        if (!difference.empty())
            return difference;
    }
    for (const auto& member : actual.GetObject()) {
        if (!expected.HasMember(member.name))
            return at + "." + member.name.GetString() + " is not expected";
    }
    return {};
}

std::string compareArrays(const Value& actual, const Value& expected, const std::string& at)
{
    if (actual.Size() != expected.Size())
        return at + " has " + std::to_string(actual.Size()) + " elements";
    for (rapidjson::SizeType i = 0; i < expected.Size(); ++i) {
        std::string difference = compare(actual[i], expected[i], at + "." + std::to_string(i));
        if (!difference.empty())
            return difference;
    }
    return {};
}

std::string compare(const Value& actual, const Value& expected, const std::string& at)
{
    if (expected.IsString() && isWildcard(expected.GetString()))
        return matchesWildcard(actual, expected.GetString()) ? "" : at + " is no " + expected.GetString();
    if (actual.IsObject() && expected.IsObject())
        return compareObjects(actual, expected, at);
    if (actual.IsArray() && expected.IsArray())
        return compareArrays(actual, expected, at);
    return actual == expected ? "" : at + " differs";
}

} // namespace

std::string jsonDifference(const std::string& actual, const std::string& expected)
{
    rapidjson::Document left;
    rapidjson::Document right;
    if (left.Parse(actual.c_str()).HasParseError())
        return "no JSON: " + actual;
    if (right.Parse(expected.c_str()).HasParseError())
        return "the expected text is no JSON";
    const std::string difference = compare(left, right, "body");
    return difference.empty() ? "" : difference + " in " + actual;
}

std::string jsonText(const std::string& json, const std::string& path)
{
    rapidjson::Document document;
    document.Parse(json.c_str());
    const Value* value = document.HasParseError() ? nullptr : &document;
    std::istringstream steps(path);
    for (std::string step; value && std::getline(steps, step, '.');) {
        if (value->IsObject())
            value = value->HasMember(step.c_str()) ? &(*value)[step.c_str()] : nullptr;
        else if (value->IsArray() && std::stoul(step) < value->Size())
            value = &(*value)[static_cast<rapidjson::SizeType>(std::stoul(step))];
        else
            value = nullptr;
    }
    if (!value || !value->IsString()) {
        ADD_FAILURE() << "no text at " << path << " in " << json;
        return {};
    }
    return value->GetString();
}

} // namespace orlo::platform::test
