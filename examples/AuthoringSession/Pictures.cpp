#include "Pictures.h"

#include <BaseCommon/Files.h>

namespace session {

using namespace orlo;

void Pictures::keep(Story& story, const std::wstring& name, const std::string& document)
{
    const std::wstring path = FilePath::Combine(m_folder, name);
    story.expect(utils::createDirectoryRecursively(m_folder) && utils::writeFileAtomically(path, document),
                 L"the picture could not be made: " + path);
    m_paths.push_back(path);
}

} // namespace session
