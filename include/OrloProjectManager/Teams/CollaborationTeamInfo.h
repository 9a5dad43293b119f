#pragma once

#include <string>

namespace orlo {

enum class CollaborationTeamStatus : int { Working = 0, Paused = 1 };

/// A team, as the platform tells it.
struct CollaborationTeamInfo
{
    std::wstring description;
    std::wstring id;
    std::wstring name;
    std::wstring linkedFolderId;
    std::wstring projectId;
    CollaborationTeamStatus status = CollaborationTeamStatus::Working; ///< Working too where the platform's word isn't known
};

} // namespace orlo
