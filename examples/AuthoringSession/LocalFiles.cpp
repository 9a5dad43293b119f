#include "LocalFiles.h"

#include <BaseCommon/Files.h>

namespace session {

using namespace orlo;

std::string drawingBytes(std::size_t size, unsigned seed)
{
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

std::wstring makeFile(Story& story, const std::wstring& folder, const std::wstring& name, const std::string& bytes)
{
    const std::wstring path = FilePath::Combine(folder, name);
    story.expect(utils::createDirectoryRecursively(folder) && utils::writeFileAtomically(path, bytes), L"the file could not be made");
    return path;
}

bool hasBytes(const std::wstring& path, const std::string& bytes)
{
    std::string found;
    return utils::readWholeFile(path, found) && found == bytes;
}

} // namespace session
