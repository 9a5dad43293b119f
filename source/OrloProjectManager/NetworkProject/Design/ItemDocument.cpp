#include "ItemDocument.h"

#include "ConfigTexts.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>

namespace orlo {

namespace {

int schemaVersionOf(ConfigType type)
{
    return type == ConfigType::ItemGridConfig ? 4 : 1;
}

} // namespace

std::optional<std::wstring> itemDocument(ConfigType type, const std::wstring& content)
{
    if (!schemaKeyTexts().knows(type))
        return std::wstring();
    JsonWrapper document;
    document.Add("appKey", "BIM-MODEL");
    document.Add("schemaVersion", schemaVersionOf(type));
    document.Add("schemaKey", utils::toString(schemaKeyTexts().textOf(type)));
    document.AddEmptySubObject("data");
    if (!document["data"].Parse(utils::toString(content)))
        return std::nullopt;
    return utils::toWstring(document.ToString());
}

} // namespace orlo
