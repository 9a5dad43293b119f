#pragma once

#include <initializer_list>
#include <map>
#include <string>

namespace orlo {

/// Texts of the wire beside the values of an enumeration. Looked up from any thread.
template <class Value>
class TextTable
{
public:
    struct Row
    {
        Value value;
        const wchar_t* text;
    };

    /// unknown: the value of every text that the table doesn't hold.
    TextTable(std::initializer_list<Row> rows, Value unknown) : m_unknown(unknown)
    {
        for (const Row& row : rows) {
            m_texts.emplace(row.value, row.text);
            m_values.emplace(row.text, row.value);
        }
    }

    Value valueOf(const std::wstring& text) const
    {
        const auto found = m_values.find(text);
        return found == m_values.end() ? m_unknown : found->second;
    }

    /// Empty for a value that the table doesn't hold.
    std::wstring textOf(Value value) const
    {
        const auto found = m_texts.find(value);
        return found == m_texts.end() ? std::wstring() : found->second;
    }

    bool knows(Value value) const { return m_texts.count(value) != 0; }

private:
    std::map<std::wstring, Value> m_values;
    std::map<Value, std::wstring> m_texts;
    Value m_unknown;
};

} // namespace orlo
