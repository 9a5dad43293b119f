#include "TokenText.h"

#include <BaseCommon/JsonWrapper.h>

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

std::string textOf(const Tokens& tokens)
{
    JsonWrapper document;
    document.Add("version", formatVersion);
    document.AddEmptySubArray("tokens");
    JsonWrapper entries = document["tokens"];
    for (const auto& [holder, token] : tokens) {
        JsonWrapper entry(document.GetAllocator(), rapidjson::kObjectType);
        entry.Add("user", holder.first);
        entry.Add("dataset", holder.second);
        entry.Add("token", token);
        entries.Add(std::move(entry));
    }
    return document.ToString();
}

} // namespace orlo::utils
