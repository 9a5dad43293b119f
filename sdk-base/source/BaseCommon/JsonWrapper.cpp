#include "JsonWrapper.h"

#include <BaseCommon/JsonText.h>

#include <rapidjson/document.h>

#include <cmath>
#include <optional>

namespace orlo {

namespace {

using rapidjson::Document;
using rapidjson::SizeType;
using rapidjson::Value;

// Most documents here are small; the library's own 64 KiB would be paid for each of them.
constexpr std::size_t poolChunk = 4096;

// Calls `use` with a copy of the value in that memory.
template <class Use>
bool withCopy(const Value* value, JsonWrapper::Allocator* allocator, Use use)
{
    Document copy(allocator);
    if (value != nullptr)
        copyJson(*value, copy);
    return use(static_cast<Value&>(copy));
}

Value* childAt(Value* parent, unsigned index)
{
    if (parent != nullptr && parent->IsObject() && index < parent->MemberCount())
        return &(parent->MemberBegin() + static_cast<std::ptrdiff_t>(index))->value;
    if (parent != nullptr && parent->IsArray() && index < parent->Size())
        return &(*parent)[index];
    return nullptr;
}

bool findMember(const Value* object, const std::string& key, SizeType& index)
{
    const ValidText name(key);
    if (object == nullptr || !object->IsObject() || !name.fits())
        return false;
    const auto found = object->FindMember(name.reference());
    index = static_cast<SizeType>(found - object->MemberBegin());
    return found != object->MemberEnd();
}

} // namespace

struct JsonWrapper::Root
{
    explicit Root(Allocator* given) : memory(given)
    {
        if (memory == nullptr)
            memory = &ownMemory.emplace(poolChunk);
    }

    std::optional<Allocator> ownMemory;
    Allocator* memory;
    Value ownValue;
    Value* value = &ownValue;
    unsigned long long changes = 0;

    /// A document of the caller's may change without our knowledge.
    bool isOwn() const { return value == &ownValue; }
};

JsonWrapper::JsonWrapper() : JsonWrapper(nullptr, rapidjson::kNullType)
{}

JsonWrapper::JsonWrapper(Document* document)
{
    if (document == nullptr)
        return;
    m_root = std::make_shared<Root>(&document->GetAllocator());
    m_root->value = document;
}

JsonWrapper::JsonWrapper(Allocator* allocator, rapidjson::Type type) : m_root(std::make_shared<Root>(allocator))
{
    m_root->ownValue = Value(type);
}

JsonWrapper::JsonWrapper(const JsonWrapper& parent, Value* value, unsigned index)
    : m_root(parent.m_root), m_path(parent.m_path), m_value(m_root->isOwn() ? value : nullptr), m_changes(m_root->changes)
{
    m_path.push_back(index);
}

JsonWrapper::JsonWrapper(const JsonWrapper& other) = default;
JsonWrapper::JsonWrapper(JsonWrapper&& other) noexcept = default;
JsonWrapper& JsonWrapper::operator=(const JsonWrapper& other) = default;
JsonWrapper& JsonWrapper::operator=(JsonWrapper&& other) noexcept = default;
JsonWrapper::~JsonWrapper() = default;

Value* JsonWrapper::value() const
{
    if (m_root == nullptr)
        return nullptr;
    if (m_value != nullptr && m_changes == m_root->changes)
        return m_value;
    Value* at = m_root->value;
    for (unsigned i = 0; i < m_path.size(); ++i)
        at = childAt(at, m_path[i]);
    return at;
}

JsonWrapper::Allocator* JsonWrapper::GetAllocator() const
{
    return m_root ? m_root->memory : nullptr;
}

bool JsonWrapper::Parse(const std::string& text)
{
    Value* target = value();
    if (target == nullptr)
        return false;
    Document parsed(GetAllocator());
    if (!parseJson(text, parsed))
        return false;
    ++m_root->changes;
    *target = static_cast<Value&>(parsed);
    return true;
}

std::string JsonWrapper::ToString() const
{
    return jsonText(value());
}

const Value* JsonWrapper::member(const std::string& key) const
{
    SizeType index = 0;
    Value* object = value();
    return findMember(object, key, index) ? childAt(object, index) : nullptr;
}

JsonWrapper JsonWrapper::operator[](const std::string& key) const
{
    SizeType index = 0;
    Value* const object = value();
    return findMember(object, key, index) ? JsonWrapper(*this, childAt(object, index), index) : JsonWrapper(nullptr);
}

bool JsonWrapper::isMovableInto(const JsonWrapper& target) const
{
    return m_root != nullptr && target.m_root != nullptr && m_root != target.m_root && m_path.size() == 0 && m_root->isOwn() &&
           m_root->memory == target.m_root->memory;
}

bool JsonWrapper::setMember(const std::string& key, Value& newValue)
{
    const ValidText name(key);
    Value* object = value();
    if (!name.fits() || object == nullptr || !(object->IsNull() || object->IsObject()))
        return false;
    ++m_root->changes;
    if (object->IsNull())
        object->SetObject();
    const auto found = object->FindMember(name.reference());
    if (found != object->MemberEnd()) {
        found->value = newValue;
        return true;
    }
    Value ownName(name.data(), name.size(), *m_root->memory);
    object->AddMember(ownName, newValue, *m_root->memory);
    return true;
}

bool JsonWrapper::append(Value& element)
{
    Value* array = value();
    if (array == nullptr || !(array->IsNull() || array->IsArray()))
        return false;
    ++m_root->changes;
    if (array->IsNull())
        array->SetArray();
    array->PushBack(element, *m_root->memory);
    return true;
}

bool JsonWrapper::Add(const std::string& key, const std::string& text)
{
    const ValidText valid(text);
    if (!valid.fits() || m_root == nullptr)
        return false;
    Value member(valid.data(), valid.size(), *m_root->memory);
    return setMember(key, member);
}

bool JsonWrapper::Add(const std::string& key, const char* text)
{
    return text != nullptr && Add(key, std::string(text));
}

bool JsonWrapper::Add(const std::string& key, const JsonWrapper& other)
{
    return withCopy(other.value(), GetAllocator(), [&](Value& copy) { return setMember(key, copy); });
}

bool JsonWrapper::Add(const std::string& key, JsonWrapper&& other)
{
    if (!other.isMovableInto(*this))
        return Add(key, static_cast<const JsonWrapper&>(other));
    ++other.m_root->changes;
    return setMember(key, *other.value());
}

bool JsonWrapper::Add(const JsonWrapper& other)
{
    return withCopy(other.value(), GetAllocator(), [&](Value& copy) { return append(copy); });
}

bool JsonWrapper::Add(JsonWrapper&& other)
{
    if (!other.isMovableInto(*this))
        return Add(static_cast<const JsonWrapper&>(other));
    ++other.m_root->changes;
    return append(*other.value());
}

bool JsonWrapper::Add(const std::string& key, int number)
{
    Value member(number);
    return setMember(key, member);
}

bool JsonWrapper::Add(const std::string& key, double number)
{
    Value member(number);
    return std::isfinite(number) && setMember(key, member);
}

bool JsonWrapper::Add(const std::string& key, long long number)
{
    Value member(static_cast<std::int64_t>(number));
    return setMember(key, member);
}

bool JsonWrapper::AddBool(const std::string& key, bool flag)
{
    Value member(flag);
    return setMember(key, member);
}

bool JsonWrapper::AddEmptySubArray(const std::string& key)
{
    Value member(rapidjson::kArrayType);
    return setMember(key, member);
}

bool JsonWrapper::AddEmptySubObject(const std::string& key)
{
    Value member(rapidjson::kObjectType);
    return setMember(key, member);
}

bool JsonWrapper::Get(const std::string& key, int& out) const
{
    const Value* found = member(key);
    return found != nullptr && found->IsInt() && (out = found->GetInt(), true);
}

bool JsonWrapper::Get(const std::string& key, double& out) const
{
    const Value* found = member(key);
    return found != nullptr && found->IsNumber() && (out = found->GetDouble(), true);
}

bool JsonWrapper::Get(const std::string& key, std::string& out) const
{
    const Value* found = member(key);
    return found != nullptr && found->IsString() && (out.assign(found->GetString(), found->GetStringLength()), true);
}

bool JsonWrapper::Get(const std::string& key, long long& out) const
{
    const Value* found = member(key);
    return found != nullptr && found->IsInt64() && (out = found->GetInt64(), true);
}

bool JsonWrapper::GetBool(const std::string& key, bool& out) const
{
    const Value* found = member(key);
    return found != nullptr && found->IsBool() && (out = found->GetBool(), true);
}

bool JsonWrapper::GetValueAsString(const std::string& key, std::string& out) const
{
    const Value* found = member(key);
    return Get(key, out) || (found != nullptr && (out = jsonText(found), true));
}

bool JsonWrapper::Get(const std::string& key, JsonWrapper& out) const
{
    SizeType index = 0;
    Value* const object = value();
    return findMember(object, key, index) && (out = JsonWrapper(*this, childAt(object, index), index), true);
}

bool JsonWrapper::Get(int index, JsonWrapper& out) const
{
    Value* const array = value();
    if (index < 0 || array == nullptr || !array->IsArray())
        return false;
    const auto place = static_cast<unsigned>(index);
    Value* const element = childAt(array, place);
    return element != nullptr && (out = JsonWrapper(*this, element, place), true);
}

int JsonWrapper::GetArraySize() const
{
    return IsArray() ? static_cast<int>(value()->Size()) : 0;
}

bool JsonWrapper::IsArray() const
{
    const Value* array = value();
    return array != nullptr && array->IsArray();
}

bool JsonWrapper::HasMember(const std::string& key) const
{
    return member(key) != nullptr;
}

} // namespace orlo
