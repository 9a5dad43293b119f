#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orlo {

enum class ProjectStatus : int { Unknown = -1, Ongoing = 0, Suspended = 1, Completed = 2 };

enum class ProjectGridType : int { Unknown = -1, TypeOne = 0, TypeTwo = 1 };

/// Which projects a listing shows: all of the user's, the archived ones, the ones that the user owns.
enum class ProjectScenario : int { Default = 0, Archive = 1, Owner = 2 };

/// The user's quota and what of it is used.
struct ResourceStatus
{
    int projectCount = 0;       ///< projects that the user owns
    int projectNumber = 0;      ///< limit of projects; -1 where the platform names none
    std::int64_t spaceUsed = 0; ///< bytes in the owned projects
    int spaceSize = 0;          ///< limit of space, as the platform counts it; -1 where it names none
};

namespace http {

/// One standard property of a project, as the platform sends it.
struct ORLOProjectStandardProperty
{
    std::string propertyId;
    std::string valueType;
    std::wstring value; ///< always text, whatever the type
};

/// A project, as the platform sends it.
struct ORLOHTTPPayloadProject
{
    std::wstring creationTime;
    std::wstring description;
    std::wstring id;
    std::wstring name;
    std::wstring owner;
    ProjectStatus status = ProjectStatus::Unknown;
    std::wstring templateId; ///< sent only
    ProjectGridType gridType = ProjectGridType::Unknown;
    std::vector<ORLOProjectStandardProperty> standardProperties;
    std::int64_t size = 0;
};

} // namespace http
} // namespace orlo
