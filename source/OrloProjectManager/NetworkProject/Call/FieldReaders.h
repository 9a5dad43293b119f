#pragma once

#include <BaseCommon/NativeText.h>

#include <cpprest/json.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace orlo {

// Reading of one field. False means that the JSON value has another type than the field; the field is then as it was.

bool readField(const web::json::value& value, std::wstring& field);
bool readField(const web::json::value& value, std::string& field); ///< as UTF-8
bool readField(const web::json::value& value, bool& field);
bool readField(const web::json::value& value, int& field);          ///< integers that fit 32 bits
bool readField(const web::json::value& value, std::int64_t& field); ///< any number; a fraction is cut off
bool readField(const web::json::value& value, double& field);       ///< any number

/// For the 64-bit fields that take integers alone.
bool readInteger(const web::json::value& value, std::int64_t& field);

/// The texts of an array; elements of another type are left out.
bool readField(const web::json::value& value, std::vector<std::wstring>& field);
/// The integers of an array; elements of another type are left out.
bool readField(const web::json::value& value, std::vector<int>& field);

/// A text of the JSON library, which lets half a surrogate pair through, as UTF-8; what is none becomes U+FFFD.
std::string validUtf8(const utility::string_t& text);

/// A member of an object; null where the value is no object or has no such member.
const web::json::value* memberOf(const web::json::value& value, const utility::string_t& key);
const web::json::value* memberOf(const web::json::value& value, const wchar_t* key);

/// The first element of an answer's array "data"; null where there is none.
const web::json::value* firstOfData(const web::json::value& answer);

/// Reads one member; false where it is missing or has another type. The key is one that memberOf takes.
template <class Key, class Field>
bool readMember(const web::json::value& value, const Key& key, Field& field)
{
    const web::json::value* const member = memberOf(value, key);
    return member && readField(*member, field);
}

/// The fields of a record, told once: the key of each beside its member, in the order in which they are read.
template <class Record>
class RecordTable
{
public:
    class Row
    {
    public:
        /// A field that reads as its own type does.
        template <class Field>
        Row(const wchar_t* key, Field Record::*field)
            : Row(key, [field](const web::json::value& value, Record& record) { readField(value, record.*field); })
        {}

        /// A field that is read in a way of its own.
        Row(const wchar_t* key, std::function<void(const web::json::value&, Record&)> read)
            : m_key(utils::toNative(std::wstring(key))), m_read(std::move(read))
        {}

        void read(const web::json::value& object, Record& record) const
        {
            if (const web::json::value* const value = memberOf(object, m_key))
                m_read(*value, record);
        }

    private:
        utility::string_t m_key;
        std::function<void(const web::json::value&, Record&)> m_read;
    };

    RecordTable(std::initializer_list<Row> rows) : m_rows(rows) {}

    /// A missing key, or a value of another type, leaves the field as it is.
    void read(const web::json::value& object, Record& record) const
    {
        for (const Row& row : m_rows)
            row.read(object, record);
    }

    /// Appends one record for each element of an array, in order. Any other value adds nothing and gives false.
    bool readList(const web::json::value& array, std::vector<Record>& records) const
    {
        if (!array.is_array())
            return false;
        records.reserve(records.size() + array.size());
        for (const web::json::value& element : array.as_array())
            read(element, records.emplace_back());
        return true;
    }

private:
    std::vector<Row> m_rows;
};

} // namespace orlo
