#pragma once

#include "support/LogCapture.h"

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

/// Lets a job that can't be read be read.   Returns: what is logged.
template <class Entity>
std::vector<std::wstring> refusalOf(const std::string& text)
{
    const LogCapture log;
    Entity job;
    EXPECT_FALSE(job.LoadFromJson(text)) << text;
    return log.lines();
}

/// Without the key, and with each value of another type, the log has one line.
template <class Entity>
void expectRefusals(const JobFieldTexts& whole, const UnreadableField& field, const std::wstring& head)
{
    const std::vector<std::wstring> words{head + field.words};
    EXPECT_EQ(refusalOf<Entity>(jobText(without(whole, field.key))), words);
    for (const std::string& value : field.values)
        EXPECT_EQ(refusalOf<Entity>(jobText(with(whole, field.key, value))), words) << value;
}

/// What is read is written again byte for byte, and nothing is logged.
template <class Entity>
void expectComesBack(const std::string& text)
{
    const LogCapture log;
    Entity job;
    ASSERT_TRUE(job.LoadFromJson(text));
    EXPECT_EQ(job.ToJson(), text);
    EXPECT_EQ(log.lines(), std::vector<std::wstring>{});
}

} // namespace orlo::test
