#include "TokenText.h"

#include <BaseCommon/JsonText.h>
#include <BaseCommon/JsonWrapper.h>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace orlo::utils {

namespace {

constexpr int formatVersion = 1;

// An entry that lacks something is passed over; the others are still good.
void readEntry(const JsonWrapper& entry, Tokens& tokens)
{
    std::string user;
    std::string dataset;
    std::string token;
    if (entry.Get("user", user) && entry.Get("dataset", dataset) && entry.Get("token", token))
        tokens[{user, dataset}] = token;
}

std::string quoted(const std::string& text)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    return {buffer.GetString(), buffer.GetSize()};
}

std::string unquoted(const std::string& json)
{
    JsonWrapper document;
    std::string text;
    document.Parse("{\"text\":" + json + "}");
    document.Get("text", text);
    return text;
}

// What an entry begins with, up to its token. It can't stand inside of a text, whose quotation marks are escaped.
std::string beginningOf(const std::string& userId, const std::string& datasetId)
{
    return "{\"user\":" + quoted(userId) + ",\"dataset\":" + quoted(datasetId) + ",\"token\":";
}

std::size_t endOfQuoted(const std::string& text, std::size_t begin)
{
    std::size_t at = begin + 1;
    while (text[at] != '"')
        at += text[at] == '\\' ? 2 : 1;
    return at + 1;
}

} // namespace

bool parseTokens(const std::string& text, Tokens& tokens)
{
    JsonWrapper document;
    JsonWrapper entries;
    int version = 0;
    if (!document.Parse(text) || !document.Get("version", version) || version != formatVersion || !document.Get("tokens", entries) ||
        !entries.IsArray())
        return false;
    JsonWrapper entry;
    for (int i = 0; entries.Get(i, entry); ++i)
        readEntry(entry, tokens);
    return true;
}

TokenText::TokenText(const Tokens& tokens)
{
    for (const auto& [holder, token] : tokens)
        m_entries += (m_entries.empty() ? "" : ",") + beginningOf(holder.first, holder.second) + quoted(token) + "}";
}

TokenText::Entry TokenText::entryOf(const std::string& userId, const std::string& datasetId) const
{
    const std::string beginning = beginningOf(userId, datasetId);
    const std::size_t found = m_entries.find(beginning);
    if (found == std::string::npos)
        return {0, 0, 0};
    const std::size_t token = found + beginning.size();
    return {found, token, endOfQuoted(m_entries, token) + 1};
}

std::string TokenText::find(const std::string& userId, const std::string& datasetId) const
{
    const Entry entry = entryOf(userId, datasetId);
    return entry.end == 0 ? std::string() : unquoted(m_entries.substr(entry.token, entry.end - 1 - entry.token));
}

void TokenText::put(const std::string& userId, const std::string& datasetId, const std::string& token)
{
    const Entry entry = entryOf(userId, datasetId);
    if (entry.end != 0)
        m_entries.replace(entry.token, entry.end - 1 - entry.token, quoted(token));
    else
        m_entries += (m_entries.empty() ? "" : ",") + beginningOf(userId, datasetId) + quoted(token) + "}";
}

bool TokenText::drop(const std::string& userId, const std::string& datasetId)
{
    const Entry entry = entryOf(userId, datasetId);
    if (entry.end == 0)
        return false;
    const bool isLast = entry.end == m_entries.size();
    const std::size_t begin = isLast && entry.begin > 0 ? entry.begin - 1 : entry.begin;
    m_entries.erase(begin, entry.end - begin + (isLast ? 0 : 1)); // with the comma behind it, or before it
    return true;
}

std::string TokenText::headOf(const std::string& revision)
{
    return "{\"version\":" + std::to_string(formatVersion) + ",\"revision\":" + quoted(revision) + ",\"tokens\":[";
}

std::string TokenText::wholeText(const std::string& revision) const
{
    const std::string head = headOf(revision);
    std::string text;
    text.reserve(head.size() + m_entries.size() + 2);
    return text.append(head).append(m_entries).append("]}");
}

} // namespace orlo::utils
