#pragma once

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

#include <string>

namespace orlo {

/// The fields of a job as its JSON holds them: the id on top, all others in one object below it.
class JobFields
{
public:
    static constexpr const char* idKey = "jobId";
    static constexpr const char* fieldsKey = "cloudifyFile";

    JobFields() : m_fields(m_document.GetAllocator(), rapidjson::kObjectType) {}

    template <class Number>
    JobFields& add(const char* key, Number number)
    {
        m_fields.Add(key, number);
        return *this;
    }
    JobFields& add(const char* key, std::int64_t number)
    {
        m_fields.Add(key, static_cast<long long>(number));
        return *this;
    }
    JobFields& add(const char* key, const std::string& text)
    {
        m_fields.Add(key, text);
        return *this;
    }
    JobFields& add(const char* key, const std::wstring& text) { return add(key, utils::toString(text)); }

    std::string toJson(const std::string& jobId);

private:
    JsonWrapper m_document;
    JsonWrapper m_fields;
};

/// Reads what JobFields wrote, one field after the other, and stops at the first that is missing or of another type.
class JobFieldReader
{
public:
    /// site: whose log lines these are.
    JobFieldReader(const JsonWrapper& document, const CallSite& site);

    /// words: what is logged if the field is missing.
    template <class Field>
    JobFieldReader& read(const char* key, Field& field, const wchar_t* words)
    {
        if (m_good && !get(key, field))
            refuse(words);
        return *this;
    }

    bool good() const { return m_good; }

private:
    bool get(const char* key, std::string& field) const { return m_fields.Get(key, field); }
    bool get(const char* key, std::wstring& field) const;
    bool get(const char* key, int& field) const { return m_fields.Get(key, field); }
    bool get(const char* key, std::int64_t& field) const;
    void refuse(const wchar_t* words);

    CallSite m_site;
    JsonWrapper m_fields;
    bool m_good = true;
};

} // namespace orlo
