#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace orlo::test {

/// Keys and values of a job's fields, the values as JSON.
using JobFieldTexts = std::vector<std::pair<std::string, std::string>>;

/// The JSON of a job, key by key.
inline std::string jobText(const JobFieldTexts& fields)
{
    std::string text;
    for (const auto& [key, value] : fields)
        text += (text.empty() ? "\"" : ",\"") + key + "\":" + value;
    return R"({"jobId":"j-1","cloudifyFile":{)" + text + "}}";
}

inline JobFieldTexts without(const JobFieldTexts& fields, const std::string& key)
{
    JobFieldTexts rest;
    for (const auto& field : fields) {
        if (field.first != key)
            rest.push_back(field);
    }
    return rest;
}

inline JobFieldTexts with(JobFieldTexts fields, const std::string& key, const std::string& value)
{
    for (auto& field : fields) {
        if (field.first == key)
            field.second = value;
    }
    return fields;
}

/// The JSON of a whole job, under a name for the test.
struct NamedJobText
{
    std::string name;
    std::string text;
};

inline std::string nameOfText(const testing::TestParamInfo<NamedJobText>& tested)
{
    return tested.param.name;
}

/// A key of the fields, what is logged where it can't be read, and values that can't be.
struct UnreadableField
{
    std::string key;
    std::wstring words;
    std::vector<std::string> values;
};

inline std::string nameOfField(const testing::TestParamInfo<UnreadableField>& tested)
{
    return tested.param.key;
}

inline const std::vector<std::string> noTexts{"5", "null", "true", "[\"a\"]", "{}"};
inline const std::vector<std::string> noLongNumbers{"\"5\"", "null", "true", "1.5", "9223372036854775808", "{}"};

} // namespace orlo::test
