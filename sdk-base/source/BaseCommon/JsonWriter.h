#pragma once

#include <BaseCommon/Export.h>

#include <memory>
#include <string>

namespace orlo {

class JsonWrapper;

/// Writes an object as JSON text, member by member, with no document in between: for what has members by the hundred thousand.
/// What is told goes out as it comes, a key that is told twice too. Texts are UTF-8; bytes that aren't become U+FFFD.
/// Used by one thread.
class ORLO_BASE_API JsonWriter
{
public:
    /// Begins the object.
    JsonWriter();
    ~JsonWriter();
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void Add(const std::string& key, const std::string& value);
    void Add(const std::string& key, const char* value) { Add(key, std::string(value)); }
    void Add(const std::string& key, int value);
    void Add(const std::string& key, bool value) = delete; // would be taken for a number: AddBool
    void AddBool(const std::string& key, bool value);
    /// Returns: false for a number that JSON can't hold (infinity, NaN), which is left out.
    bool Add(const std::string& key, double value);

    void StartObject(const std::string& key);
    void StartArray(const std::string& key);
    /// Elements of an array.
    void StartObject();
    void Add(const JsonWrapper& element);
    void EndObject();
    void EndArray();

    /// Ends the object that was begun first.   Returns: the text, once.
    std::string Done();

private:
    struct Text;
    std::unique_ptr<Text> m_text;
};

} // namespace orlo
