#pragma once

#include "Story.h"

#include <string>
#include <vector>

namespace session {

/// The pictures of a session, in a folder that stays. The next session there draws them anew.
class Pictures
{
public:
    explicit Pictures(std::wstring folder) : m_folder(std::move(folder)) {}

    void keep(Story& story, const std::wstring& name, const std::string& document);
    const std::vector<std::wstring>& paths() const { return m_paths; }

private:
    std::wstring m_folder;
    std::vector<std::wstring> m_paths;
};

} // namespace session
