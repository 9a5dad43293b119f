#include "FieldReaders.h"

#include <BaseCommon/Text.h>

#include <limits>

namespace orlo {

namespace {

std::int64_t truncated(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2^63: the first that no longer fits
    if (number >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return number == number ? static_cast<std::int64_t>(number) : 0;
}

template <class Element>
bool readElements(const web::json::value& value, std::vector<Element>& field)
{
    if (!value.is_array())
        return false;
    field.clear();
    for (const web::json::value& element : value.as_array()) {
        Element read{};
        if (readField(element, read))
            field.push_back(std::move(read));
    }
    return true;
}

} // namespace

bool readField(const web::json::value& value, std::wstring& field)
{
    if (!value.is_string())
        return false;
    field = utils::fromNative(value.as_string());
    return true;
}

bool readField(const web::json::value& value, std::string& field)
{
    if (!value.is_string())
        return false;
    field = validUtf8(value.as_string());
    return true;
}

bool readField(const web::json::value& value, bool& field)
{
    if (!value.is_boolean())
        return false;
    field = value.as_bool();
    return true;
}

bool readField(const web::json::value& value, int& field)
{
    if (!value.is_integer() || !value.as_number().is_int32())
        return false;
    field = value.as_number().to_int32();
    return true;
}

bool readField(const web::json::value& value, std::int64_t& field)
{
    if (!value.is_number())
        return false;
    const web::json::number& number = value.as_number();
    field = number.is_integral() && number.is_int64() ? number.to_int64() : truncated(number.to_double());
    return true;
}

bool readField(const web::json::value& value, double& field)
{
    if (!value.is_number())
        return false;
    field = value.as_double();
    return true;
}

bool readInteger(const web::json::value& value, std::int64_t& field)
{
    return value.is_integer() && readField(value, field);
}

bool readField(const web::json::value& value, std::vector<std::wstring>& field)
{
    return readElements(value, field);
}

bool readField(const web::json::value& value, std::vector<int>& field)
{
    return readElements(value, field);
}

std::string validUtf8(const utility::string_t& text)
{
    std::string utf8 = utils::fromNativeToUtf8(text);
    return utils::isValidUtf8(utf8) ? utf8 : utils::toString(utils::toWstring(utf8));
}

const web::json::value* memberOf(const web::json::value& value, const utility::string_t& key)
{
    if (!value.is_object())
        return nullptr;
    const web::json::object& object = value.as_object();
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &found->second;
}

const web::json::value* memberOf(const web::json::value& value, const wchar_t* key)
{
    return memberOf(value, utils::toNative(std::wstring(key)));
}

const web::json::value* firstOfData(const web::json::value& answer)
{
    const web::json::value* const data = memberOf(answer, L"data");
    return data && data->is_array() && data->size() != 0 ? &data->at(0) : nullptr;
}

} // namespace orlo
