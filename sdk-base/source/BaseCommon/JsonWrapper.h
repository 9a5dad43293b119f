#pragma once

#include <BaseCommon/Export.h>

#include <rapidjson/fwd.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

/// Writer and reader of JSON documents whose members keep the order in which they were added.
///
/// A wrapper refers to a place in a document: copies of a wrapper, and the wrappers that operator[] and Get hand out, all see and change
/// the same document and keep it alive. A wrapper of something that isn't there refers to nothing: it reads as null, and Add and Parse on
/// it return false. Nothing here throws for its input.
///
/// Narrow text is UTF-8; bytes that aren't are replaced with U+FFFD on their way in, so every text written here can be read again.
/// A document may be read by several threads at once, or used by one.
class ORLO_BASE_API JsonWrapper
{
public:
    using Allocator = rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>;

    /// A document of its own, null at first; the first Add with a key makes it an object, the first Add without one an array.
    JsonWrapper();
    /// Refers to the caller's document, which must live as long as the wrapper and all that come from it. With null: nothing.
    explicit JsonWrapper(rapidjson::Document* document);
    /// A value that stands alone until it is added somewhere, in the memory of `allocator`, which must live as long as the wrapper and
    /// all that come from it. With null: a document of its own.
    JsonWrapper(Allocator* allocator, rapidjson::Type type);
    JsonWrapper(const JsonWrapper& other);
    JsonWrapper(JsonWrapper&& other) noexcept;
    JsonWrapper& operator=(const JsonWrapper& other);
    JsonWrapper& operator=(JsonWrapper&& other) noexcept;
    virtual ~JsonWrapper();

    /// Replaces the value with the one that the text holds. False leaves it as it was: no JSON, no UTF-8, nested deeper than 1000, or a
    /// number beyond the largest double. Other numbers are read to the last bit.
    bool Parse(const std::string& text);
    /// The value as JSON without blanks; "null" for nothing. Doubles are written with as many digits as reading them back needs.
    std::string ToString() const;

    /// The member of that name; nothing if there is none, or if this is no object.
    JsonWrapper operator[](const std::string& key) const;

    /// Sets a member: a new one goes to the end, one of the same name is replaced where it stands. A null value becomes an object first.
    /// Returns: false if this is neither an object nor null, and for a double that JSON can't hold (infinity, NaN).
    /// The forms with a wrapper take a copy of its value; given an rvalue that stands alone in the same memory they move it in, and
    /// leave null in its place.
    bool Add(const std::string& key, const std::string& value);
    bool Add(const std::string& key, const char* value);
    bool Add(const std::string& key, const JsonWrapper& value);
    bool Add(const std::string& key, JsonWrapper&& value);
    bool Add(const std::string& key, int value);
    bool Add(const std::string& key, double value);
    bool Add(const std::string& key, long long value);
    bool Add(const std::string& key, bool value) = delete; // would be taken for a number: AddBool
    bool AddBool(const std::string& key, bool value);
    bool AddEmptySubArray(const std::string& key);
    bool AddEmptySubObject(const std::string& key);

    /// Appends an element. A null value becomes an array first. False if this is neither an array nor null.
    bool Add(const JsonWrapper& value);
    bool Add(JsonWrapper&& value);

    /// Reads a member. False, with `out` left alone, if it is missing or of another type: an int or long long wants an integer in its
    /// range, a double any number, a string a string, a wrapper anything.
    bool Get(const std::string& key, int& out) const;
    bool Get(const std::string& key, double& out) const;
    bool Get(const std::string& key, std::string& out) const;
    bool Get(const std::string& key, long long& out) const;
    bool Get(const std::string& key, JsonWrapper& out) const;
    bool GetBool(const std::string& key, bool& out) const;
    /// Reads a member of any type as text: a string as it is, anything else as JSON.
    bool GetValueAsString(const std::string& key, std::string& out) const;
    /// Reads an element of an array.
    bool Get(int index, JsonWrapper& out) const;

    /// The number of elements; 0 if this is no array.
    int GetArraySize() const;
    bool IsArray() const;
    bool HasMember(const std::string& key) const;
    /// The memory of the document, for values that are to be added to it; null for nothing.
    Allocator* GetAllocator() const;

private:
    struct Root;

    // Steps from the root, as positions. Most places are near it.
    class Path
    {
    public:
        unsigned size() const { return m_size; }
        unsigned operator[](unsigned i) const { return i < m_near.size() ? m_near[i] : m_far[i - m_near.size()]; }
        void push_back(unsigned step)
        {
            if (m_size < m_near.size())
                m_near[m_size] = step;
            else
                m_far.push_back(step);
            ++m_size;
        }

    private:
        unsigned m_size = 0;
        std::array<unsigned, 7> m_near{};
        std::vector<unsigned> m_far;
    };

    JsonWrapper(const JsonWrapper& parent, rapidjson::Value* value, unsigned index);
    rapidjson::Value* value() const;
    const rapidjson::Value* member(const std::string& key) const;
    bool isMovableInto(const JsonWrapper& target) const;
    bool setMember(const std::string& key, rapidjson::Value& newValue);
    bool append(rapidjson::Value& element);

    std::shared_ptr<Root> m_root;
    // Pointers go stale when an object or array grows; positions don't, as nothing is removed.
    Path m_path;
    // What they lead to, for as long as nothing has changed since then.
    rapidjson::Value* m_value = nullptr;
    unsigned long long m_changes = 0;
};

} // namespace orlo
