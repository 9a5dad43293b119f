#include "FieldText.h"

#include "FieldReaders.h"

#include <set>

namespace orlo {

namespace {

bool holdsStructure(const std::wstring& key)
{
    const std::set<std::wstring> keys{L"Properties", L"Representations", L"Shapes", L"mesh", L"geometry", L"standardCodeIndex", L"Matrix"};
    return keys.count(key) != 0;
}

} // namespace

std::string fieldText(const web::json::value& object, const wchar_t* key)
{
    const web::json::value* const field = memberOf(object, key);
    if (!field)
        return {};
    std::string text;
    if (!readField(*field, text) && (field->is_array() || field->is_object()) && holdsStructure(key))
        text = validUtf8(field->serialize());
    return text;
}

} // namespace orlo
