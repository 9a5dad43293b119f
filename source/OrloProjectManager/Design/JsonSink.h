#pragma once

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/JsonWriter.h>

#include <rapidjson/rapidjson.h>

#include <string>
#include <utility>

// Two ways to write JSON under the same names: into a document, and as text at once. `tell` is handed what it is to write into.
namespace orlo {

template <class Tell>
void addObject(JsonWrapper& out, const std::string& key, Tell tell)
{
    JsonWrapper object(out.GetAllocator(), rapidjson::kObjectType);
    tell(object);
    out.Add(key, std::move(object));
}

template <class Tell>
void addObject(JsonWriter& out, const std::string& key, Tell tell)
{
    out.StartObject(key);
    tell(out);
    out.EndObject();
}

template <class Tell>
void addArray(JsonWrapper& out, const std::string& key, Tell tell)
{
    JsonWrapper array(out.GetAllocator(), rapidjson::kArrayType);
    tell(array);
    out.Add(key, std::move(array));
}

template <class Tell>
void addArray(JsonWriter& out, const std::string& key, Tell tell)
{
    out.StartArray(key);
    tell(out);
    out.EndArray();
}

} // namespace orlo
