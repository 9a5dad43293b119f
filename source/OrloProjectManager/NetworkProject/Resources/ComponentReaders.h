#pragma once

#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>

#include <cpprest/json.h>

#include <vector>

// What the platform tells of components. Each operation has its own selection of their fields, and reads no other.
namespace orlo::OrloWebService {

// Lists: false, and nothing appended, for what is no array.

bool readCategories(const web::json::value& array, std::vector<Category>& categories);
bool readFoundComponents(const web::json::value& array, std::vector<Component>& components);
bool readRenewableComponents(const web::json::value& array, std::vector<Component>& components);
bool readChangedComponents(const web::json::value& array, std::vector<Component>& components);
bool readCutlines(const web::json::value& array, std::vector<Cutline>& cutlines);

/// A row of thumbnails that tells no size is logged and left out.
Component readDetailedComponent(const web::json::value& object);
Component readUpgradedComponent(const web::json::value& object);
/// An uploaded component is told like one that was found.
Component readUploadedComponent(const web::json::value& object);

} // namespace orlo::OrloWebService
