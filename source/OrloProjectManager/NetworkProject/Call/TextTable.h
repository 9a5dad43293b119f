#pragma once

#include <initializer_list>
#include <map>
#include <mutex>
#include <string>

namespace orlo {

/// What happens to a text or value that a table doesn't know: it is answered and forgotten, or it joins the table, as the
/// platform's tables that are looked up with insertion have it.
enum class Unknowns { pass, join };

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
    TextTable(std::initializer_list<Row> rows, Value unknown, Unknowns unknowns = Unknowns::pass) : m_unknown(unknown), m_unknowns(unknowns)
    {
        for (const Row& row : rows) {
            m_texts.emplace(row.value, row.text);
            m_values.emplace(row.text, row.value);
        }
    }

    Value valueOf(const std::wstring& text) const { return lookUp(m_values, text, m_unknown); }

    /// Empty for a value that the table doesn't hold.
    std::wstring textOf(Value value) const { return lookUp(m_texts, value, std::wstring()); }

    bool knows(Value value) const
    {
        const std::lock_guard lock(m_mutex);
        return m_texts.count(value) != 0;
    }

private:
    template <class Map>
    typename Map::mapped_type lookUp(Map& map, const typename Map::key_type& key, const typename Map::mapped_type& unknown) const
    {
        const std::lock_guard lock(m_mutex);
        const auto found = map.find(key);
        if (found != map.end())
            return found->second;
        if (m_unknowns == Unknowns::join)
            map.emplace(key, unknown);
        return unknown;
    }

    mutable std::mutex m_mutex;
    mutable std::map<std::wstring, Value> m_values;
    mutable std::map<Value, std::wstring> m_texts;
    Value m_unknown;
    Unknowns m_unknowns;
};

} // namespace orlo
