#include "JobFields.h"

namespace orlo {

std::string JobFields::toJson(const std::string& jobId)
{
    m_document.Add(idKey, jobId);
    m_document.Add(fieldsKey, m_fields);
    return m_document.ToString();
}

JobFieldReader::JobFieldReader(const JsonWrapper& document, const CallSite& site) : m_site(site)
{
    if (!document.Get(JobFields::fieldsKey, m_fields))
        refuse(L"parse cloudify failed.");
}

bool JobFieldReader::get(const char* key, std::wstring& field) const
{
    std::string text;
    if (!m_fields.Get(key, text))
        return false;
    field = utils::toWstring(text);
    return true;
}

bool JobFieldReader::get(const char* key, std::int64_t& field) const
{
    long long number = 0;
    if (!m_fields.Get(key, number))
        return false;
    field = number;
    return true;
}

void JobFieldReader::refuse(const wchar_t* words)
{
    log::errorAt(m_site, words);
    m_good = false;
}

} // namespace orlo
