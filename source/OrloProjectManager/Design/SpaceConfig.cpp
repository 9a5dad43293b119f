#include "SpaceConfig.h"

#include "../Frame/CallFrame.h"
#include "../NetworkProject/Call/FieldReaders.h"
#include "../NetworkProject/Design/ConfigTexts.h"
#include "../NetworkProject/Design/ConfigWeb.h"

#include <cmath>
#include <limits>
#include <utility>

namespace orlo {

using Items = std::vector<std::shared_ptr<ISpaceConfigItem>>;
using web::json::value;

ISpaceConfigItem::ISpaceConfigItem() = default;
ISpaceConfigItem::ISpaceConfigItem(const ISpaceConfigItem&) = default;
ISpaceConfigItem& ISpaceConfigItem::operator=(const ISpaceConfigItem&) = default;
ISpaceConfigItem::~ISpaceConfigItem() = default;

ISpaceConfig::ISpaceConfig() = default;
ISpaceConfig::ISpaceConfig(const ISpaceConfig&) = default;
ISpaceConfig& ISpaceConfig::operator=(const ISpaceConfig&) = default;
ISpaceConfig::~ISpaceConfig() = default;

SpaceConfigItem::SpaceConfigItem(std::wstring id, SpaceType type, std::wstring name, std::wstring architectureLevel,
                                 std::wstring structureLevel, std::wstring description, Items&& subSpaces)
    : m_id(std::move(id)),
      m_name(std::move(name)),
      m_architectureLevel(std::move(architectureLevel)),
      m_structureLevel(std::move(structureLevel)),
      m_description(std::move(description)),
      m_type(type),
      m_subSpaces(std::exchange(subSpaces, {}))
{}

SpaceConfig::SpaceConfig(int version, std::wstring scopeEntityId, Items items)
    : m_version(version), m_scopeEntityId(std::move(scopeEntityId)), m_items(std::move(items))
{}

namespace {

// The keys as the JSON library has them, since a tree of many nodes asks for each many times.
const utility::string_t idKey = _XPLATSTR("id");
const utility::string_t nameKey = _XPLATSTR("spaceName");
const utility::string_t typeKey = _XPLATSTR("spaceType");
const utility::string_t descriptionKey = _XPLATSTR("spaceDescription");
const utility::string_t subSpacesKey = _XPLATSTR("subSpaces");
const utility::string_t levelsKey = _XPLATSTR("attachValues");
const utility::string_t architectureLevelKey = _XPLATSTR("ArchitectureLevel");
const utility::string_t structureLevelKey = _XPLATSTR("StructureLevel");

template <class Key>
const value& required(const value& object, const Key& key)
{
    const value* const member = memberOf(object, key);
    if (!member)
        throw web::json::json_exception("Key not found");
    return *member;
}

template <class Field, class Key>
Field requiredField(const value& object, const Key& key)
{
    Field field{};
    if (!readField(required(object, key), field))
        throw web::json::json_exception("not of the expected type");
    return field;
}

/// Also written with a fraction of zeros, as some writers of JSON do.
int requiredWholeNumber(const value& object, const wchar_t* key)
{
    const auto number = requiredField<double>(object, key);
    if (number != std::trunc(number) || number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        throw web::json::json_exception("not a whole number of 32 bits");
    return static_cast<int>(number);
}

Items readItems(const value& array);

std::shared_ptr<ISpaceConfigItem> readItem(const value& node)
{
    std::wstring name;
    readField(required(node, nameKey), name);
    std::wstring description;
    readMember(node, descriptionKey, description);
    std::wstring architectureLevel;
    std::wstring structureLevel;
    if (const value* const levels = memberOf(node, levelsKey)) {
        readMember(*levels, architectureLevelKey, architectureLevel);
        readMember(*levels, structureLevelKey, structureLevel);
    }
    const value* const subSpaces = memberOf(node, subSpacesKey);
    return std::make_shared<SpaceConfigItem>(
        requiredField<std::wstring>(node, idKey), spaceTypeTexts().valueOf(requiredField<std::wstring>(node, typeKey)), std::move(name),
        std::move(architectureLevel), std::move(structureLevel), std::move(description), subSpaces ? readItems(*subSpaces) : Items());
}

/// The recursion is as deep as cpprestsdk reads JSON, which is 128 levels.
Items readItems(const value& array)
{
    Items items;
    if (!array.is_array())
        return items;
    items.reserve(array.size());
    for (const value& node : array.as_array())
        items.push_back(readItem(node));
    return items;
}

Items readDocument(const value& document)
{
    const value* const schemaVersion = memberOf(document, L"schemaVersion");
    if (!schemaVersion) {
        log::error(L"Invalid space config data: no schema version");
        return {};
    }
    if (requiredField<std::int64_t>(document, L"schemaVersion") != 1) {
        log::error(L"Invalid space config data: schema version isn't support");
        return {};
    }
    const value* const data = memberOf(document, L"data");
    if (!data) {
        log::error(L"Invalid space config data: no data");
        return {};
    }
    return readItems(*data);
}

} // namespace

std::shared_ptr<ISpaceConfig> parseSpaceConfig(const value& answer)
{
    auto scopeEntityId = requiredField<std::wstring>(answer, L"scopeEntityId");
    const int version = requiredWholeNumber(answer, L"version");
    const value& configValue = required(answer, L"configValue");
    return std::make_shared<SpaceConfig>(version, std::move(scopeEntityId), readDocument(value::parse(configValue.as_string())));
}

namespace HttpClient {

std::wstring stringifySpaceConfig(std::shared_ptr<ISpaceConfig> config)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::stringifySpaceConfig")).runAlone([&](ErrorCode&) {
        return spaceDocumentOf(config.get());
    });
}

bool updateSpaceConfig(const std::wstring& configText, const std::wstring& projectId)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::updateSpaceConfig")).runDirectAlone([&](ErrorCode& error) {
        return OrloWebService::UpdateSpaceConfig(error, configText, projectId);
    });
}

} // namespace HttpClient

} // namespace orlo
