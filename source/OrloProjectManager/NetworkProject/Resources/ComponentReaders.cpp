#include "ComponentReaders.h"

#include "../Call/FieldReaders.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloLogging/Log.h>

#include <utility>

namespace orlo::OrloWebService {

namespace {

using ComponentTable = RecordTable<Component>;

const RecordTable<Category>& categoryFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<Category>{
        {L"id", &Category::id},
        {L"parentId", &Category::parentId},
        {L"name", &Category::name},
        {L"weight", &Category::weight},
        {L"count", &Category::count},
        {L"level", &Category::level},
        {L"code", &Category::code},
        {L"parentCode", &Category::parentCode},
    });
    return table;
}

const RecordTable<Cutline>& cutlineFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<Cutline>{
        {L"id", &Cutline::id},
        {L"name", &Cutline::name},
        {L"thumbnail", &Cutline::thumbnail},
        {L"placeholderType", &Cutline::placeholderType},
    });
    return table;
}

const ComponentTable& foundFields()
{
    static const auto& table = utils::neverDestroyed(new const ComponentTable{
        {L"id", &Component::id},
        {L"categoryCode", &Component::categoryCode},
        {L"publicComponentId", &Component::publicComponentId},
        {L"name", &Component::name},
        {L"thumbnail", &Component::thumbnail},
        {L"version", &Component::version},
        {L"status", &Component::status},
    });
    return table;
}

const ComponentTable& renewableFields()
{
    static const auto& table = utils::neverDestroyed(new const ComponentTable{
        {L"id", &Component::id},
        {L"categoryCode", &Component::categoryCode},
        {L"name", &Component::name},
        {L"thumbnail", &Component::thumbnail},
        {L"version", &Component::version},
        {L"status", &Component::status},
    });
    return table;
}

const ComponentTable& upgradedFields()
{
    static const auto& table = utils::neverDestroyed(new const ComponentTable{
        {L"id", &Component::id},
        {L"categoryCode", &Component::categoryCode},
        {L"publicComponentId", &Component::publicComponentId},
        {L"name", &Component::name},
        {L"version", &Component::version},
    });
    return table;
}

/// Intended: the one key stands in both fields, and "publicComponentId" isn't read.
void readChangedId(const web::json::value& id, Component& component)
{
    std::int64_t number = 0;
    if (!readField(id, number))
        return;
    component.id = std::to_wstring(number);
    component.publicComponentId = component.id;
}

const ComponentTable& changedFields()
{
    static const auto& table = utils::neverDestroyed(new const ComponentTable{
        {L"id", readChangedId},
        {L"version", &Component::version},
        {L"name", &Component::name},
        {L"updateStatus", &Component::updateStatus},
    });
    return table;
}

void readThumbnails(const web::json::value& rows, Component& component)
{
    if (!rows.is_array())
        return;
    for (const web::json::value& row : rows.as_array()) {
        std::wstring size;
        readMember(row, L"size", size);
        if (size.empty())
            log::error(L"size is empty, maybe response json not normal.");
        else
            readMember(row, L"thumbnails", component.thumbnails[size]);
    }
}

const ComponentTable& detailFields()
{
    static const auto& table = utils::neverDestroyed(new const ComponentTable{
        {L"id", &Component::id},
        {L"publicComponentId", &Component::publicComponentId},
        {L"version", &Component::version},
        {L"name", &Component::name},
        {L"source", &Component::source},
        {L"categoryId", &Component::categoryId},
        {L"categoryCode", &Component::categoryCode},
        {L"status", &Component::status},
        {L"familyTypeNames", &Component::familyTypeNames},
        {L"thumbnail", &Component::thumbnail},
        {L"thumbnailSizes", readThumbnails},
        {L"updateStatus", &Component::updateStatus},
    });
    return table;
}

Component componentOf(const ComponentTable& fields, const web::json::value& object)
{
    Component component;
    fields.read(object, component);
    return component;
}

} // namespace

bool readCategories(const web::json::value& array, std::vector<Category>& categories)
{
    return categoryFields().readList(array, categories);
}

bool readFoundComponents(const web::json::value& array, std::vector<Component>& components)
{
    return foundFields().readList(array, components);
}

bool readRenewableComponents(const web::json::value& array, std::vector<Component>& components)
{
    return renewableFields().readList(array, components);
}

bool readChangedComponents(const web::json::value& array, std::vector<Component>& components)
{
    return changedFields().readList(array, components);
}

bool readCutlines(const web::json::value& array, std::vector<Cutline>& cutlines)
{
    return cutlineFields().readList(array, cutlines);
}

Component readDetailedComponent(const web::json::value& object)
{
    return componentOf(detailFields(), object);
}

Component readUpgradedComponent(const web::json::value& object)
{
    return componentOf(upgradedFields(), object);
}

Component readUploadedComponent(const web::json::value& object)
{
    return componentOf(foundFields(), object);
}

} // namespace orlo::OrloWebService
