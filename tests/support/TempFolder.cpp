#include "TempFolder.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orlo::test {

TempFolder::TempFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "orlo-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    m_path = name;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::filesystem::path TempFolder::path(const std::string& utf8Name) const
{
    return m_path / std::filesystem::u8path(utf8Name);
}

std::wstring TempFolder::wide() const
{
    return utils::fromPath(m_path);
}

std::wstring TempFolder::wide(const std::string& utf8Name) const
{
    return utils::fromPath(path(utf8Name));
}

LocalRoot::LocalRoot(const TempFolder& folder)
{
    utils::setLocalRoot(folder.wide());
}

LocalRoot::~LocalRoot()
{
    utils::setLocalRoot({});
}

std::string readFile(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

void writeFile(const std::filesystem::path& file, const std::string& content)
{
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out.flush())
        throw std::runtime_error("can't write " + file.string());
}

std::vector<std::string> filesBelow(const std::filesystem::path& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (at->is_regular_file() && at->path().extension() != ".alive")
            files.push_back(at->path().lexically_relative(folder).u8string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace orlo::test
